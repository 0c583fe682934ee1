// TinyXML documents of the style files; their reports name the unit that
// handles the style files.
#define SNS_SOURCE_UNIT "SensorFile"

#include "config/SensorXml.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "common/SensorDebug.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/VXFile.h"
#include "platform/XmlText.h"

namespace {

struct FreeDeleter {
    void operator()(char* p_pText) const { std::free(p_pText); }
};

} // namespace

bool TiXmlDocumentEx::LoadMem(const char* p_szText, TiXmlEncoding p_eEncoding) {
    Clear();
    ClearError();
    if (p_szText == nullptr) {
        return false;
    }
    if (!parseXmlText(*this, p_szText, std::strlen(p_szText), p_eEncoding)) {
        SNS_ASSERT_TEXT(false, "xmlDepth(text) <= XML_DEPTH_MAX",
                        "XML refused: elements nested deeper than %d levels\n",
                        inputcap::XML_DEPTH_MAX);
        return false;
    }
    if (Error()) {
        // The parser keeps what it read before the fault; drop it so that a
        // broken text can never pass for a short valid one.
        Clear();
        return false;
    }
    return true;
}

void TiXmlDocumentEx::getXmlString(std::string& p_strOut) const {
    p_strOut.clear();
    char* pBuf = nullptr;
    std::size_t nLen = 0;
    FILE* pStream = open_memstream(&pBuf, &nLen);
    if (pStream == nullptr) {
        return;
    }
    // Printed by the library's own save path, so the text is exactly what a
    // saved file holds.
    TiXmlDocument::SaveFile(pStream);
    std::fclose(pStream);
    std::unique_ptr<char, FreeDeleter> pOwned(pBuf);
    if (pOwned) {
        p_strOut.assign(pOwned.get(), nLen);
    }
}

bool TiXmlDocumentEx::LoadFile(const char* p_szDevicePath, TiXmlEncoding p_eEncoding) {
    if (p_szDevicePath == nullptr) {
        return false;
    }
    // Read like the style files it holds: a regular file of at most their cap.
    std::string strText;
    const ReadStatus eStatus = readDeviceFile(p_szDevicePath, inputcap::STYLE_FILE_MAX, strText);
    if (eStatus != ReadStatus::Ok && eStatus != ReadStatus::Missing) {
        SNS_ASSERT_TEXT(false, "readDeviceFile(filename, STYLE_FILE_MAX)", "file_name(%s) %s\n",
                        p_szDevicePath, describeRead(eStatus, inputcap::STYLE_FILE_MAX).c_str());
    }
    const bool bLoaded = eStatus == ReadStatus::Ok && LoadMem(strText.c_str(), p_eEncoding);
    SetValue(p_szDevicePath);
    return bLoaded;
}

bool TiXmlDocumentEx::SaveFile(const char* p_szDevicePath) const {
    if (p_szDevicePath == nullptr || *p_szDevicePath == '\0') {
        return false;
    }
    std::string strText;
    getXmlString(strText);
    return saveXmlText(p_szDevicePath, strText);
}

bool TiXmlDocumentEx::saveXmlText(const char* p_szDevicePath, const std::string& strText) {
    if (p_szDevicePath == nullptr || *p_szDevicePath == '\0') {
        return false;
    }
    VXFile file;
    if (!file.open(p_szDevicePath, VXFile::modeWrite | VXFile::modeTruncate)) {
        return false;
    }
    const int nWritten = file.write(strText.data(), static_cast<unsigned int>(strText.size()));
    if (nWritten != static_cast<int>(strText.size())) {
        file.discard(); // a cut copy never replaces the file
        return false;
    }
    return file.close();
}

bool TiXmlDocumentEx::SaveFile() const {
    return SaveFile(Value());
}
