// Parsing XML text with TinyXML without letting it read past the text.
#pragma once

#include <cstddef>
#include <string>
#include <tinyxml.h>

// TinyXML steps over a multi-byte UTF-8 character as a whole, so a text that
// ends inside one (a lead byte right before the terminator) makes it step
// over the terminator and go on reading whatever memory follows. The text is
// therefore parsed from a copy followed by more NUL bytes than any such step
// spans, where the parser stops as at the end of the text.
inline void parseXmlText(TiXmlDocument& p_objDoc, const char* p_pText, std::size_t p_nLen,
                         TiXmlEncoding p_eEncoding) {
    constexpr std::size_t kPadding = 8; // a UTF-8 sequence is at most 4 bytes
    std::string strPadded(p_pText, p_nLen);
    strPadded.append(kPadding, '\0');
    p_objDoc.Parse(strPadded.c_str(), nullptr, p_eEncoding);
}
