// The XML document the configuration code works with: the distribution's
// TinyXML document plus the two operations the module needs on top of it,
// parsing from a text in memory and printing the whole document into a string.
// Files are named by device paths and always go through the device root.
#pragma once

#include <string>
#include <tinyxml.h>

class TiXmlDocumentEx : public TiXmlDocument {
public:
    TiXmlDocumentEx() = default;

    // Parses a NUL-terminated text; true on success. A text that does not parse
    // leaves an empty document, never a partly read one.
    bool LoadMem(const char* p_szText, TiXmlEncoding p_eEncoding);

    // The whole document as SaveFile would write it.
    void getXmlString(std::string& p_strOut) const;

    // Loads a device path; the document's own name becomes that device path.
    bool LoadFile(const char* p_szDevicePath, TiXmlEncoding p_eEncoding);

    // Saves under a device path. The file is replaced in one step, so a reader
    // never sees a half-written document.
    bool SaveFile(const char* p_szDevicePath) const;

    // Saves a document's text as getXmlString gave it, the way SaveFile does,
    // for a caller that needs the text itself too and so prints only once.
    static bool saveXmlText(const char* p_szDevicePath, const std::string& p_strText);

    // Saves under the document's own name; a document parsed from memory has
    // none, and then nothing is written.
    bool SaveFile() const;
};
