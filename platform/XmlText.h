// Parsing XML text with TinyXML without letting it read past the text.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <string>
#include <tinyxml.h>

#include "platform/InputLimits.h"

// A '<' followed by this begins an element for TinyXML (a letter, '_', or any
// byte of a multi-byte character).
inline bool startsElement(char p_cNext) {
    const unsigned char cByte = static_cast<unsigned char>(p_cNext);
    return std::isalpha(cByte) != 0 || p_cNext == '_' || cByte >= 0x80;
}

// How deep elements nest in an XML text, counted without parsing it, or
// p_nLimit + 1 as soon as the text goes deeper than p_nLimit. TinyXML parses
// child elements by recursion, so a text nested 100,000 levels deep would
// overflow the stack; callers refuse a text deeper than the limit before
// TinyXML sees it. Comments, CDATA, declarations and quoted attribute values
// are skipped, so a '<' inside them does not count.
inline int xmlDepth(const char* p_pText, std::size_t p_nLen, int p_nLimit) {
    const char* pPos = p_pText;
    const char* const pEnd = p_pText + p_nLen;
    const auto skipPast = [&](const char* p_szEnd) {
        const char* const pEndOfNeedle = p_szEnd + std::strlen(p_szEnd);
        const char* pAt = std::search(pPos, pEnd, p_szEnd, pEndOfNeedle);
        pPos = pAt == pEnd ? pEnd : pAt + (pEndOfNeedle - p_szEnd);
    };
    int nDepth = 0;
    int nMax = 0;
    while (pPos < pEnd) {
        if (*pPos != '<') {
            ++pPos;
            continue;
        }
        const std::size_t nLeft = static_cast<std::size_t>(pEnd - pPos);
        if (nLeft >= 4 && std::strncmp(pPos, "<!--", 4) == 0) {
            skipPast("-->");
        } else if (nLeft >= 9 && std::strncmp(pPos, "<![CDATA[", 9) == 0) {
            skipPast("]]>");
        } else if (nLeft >= 2 && pPos[1] == '/') {
            nDepth = nDepth > 0 ? nDepth - 1 : 0;
            skipPast(">");
        } else if (nLeft < 2 || !startsElement(pPos[1])) {
            skipPast(">"); // a declaration, an instruction or markup TinyXML skips
        } else {
            // A start tag: up to its '>' outside quotes; "/>" closes it at once.
            char cQuote = '\0';
            char cLast = '\0';
            for (++pPos; pPos < pEnd && (cQuote != '\0' || *pPos != '>'); ++pPos) {
                if (cQuote == '\0' && (*pPos == '"' || *pPos == '\'')) {
                    cQuote = *pPos;
                } else if (*pPos == cQuote) {
                    cQuote = '\0';
                }
                cLast = *pPos;
            }
            if (pPos < pEnd) {
                ++pPos;
            }
            if (cLast != '/' && ++nDepth > nMax) {
                nMax = nDepth;
                if (nMax > p_nLimit) {
                    return p_nLimit + 1;
                }
            }
        }
    }
    return nMax;
}

// TinyXML steps over a multi-byte UTF-8 character as a whole, so a text that
// ends inside one (a lead byte right before the terminator) makes it step
// over the terminator and go on reading whatever memory follows. The text is
// therefore parsed from a copy followed by more NUL bytes than any such step
// spans, where the parser stops as at the end of the text.
//
// A text nested deeper than XML_DEPTH_MAX is not parsed: false, and the
// document is left empty. Otherwise true, whatever the parse gave (see Error()).
inline bool parseXmlText(TiXmlDocument& p_objDoc, const char* p_pText, std::size_t p_nLen,
                         TiXmlEncoding p_eEncoding) {
    if (xmlDepth(p_pText, p_nLen, inputcap::XML_DEPTH_MAX) > inputcap::XML_DEPTH_MAX) {
        p_objDoc.Clear();
        return false;
    }
    constexpr std::size_t kPadding = 8; // a UTF-8 sequence is at most 4 bytes
    std::string strPadded(p_pText, p_nLen);
    strPadded.append(kPadding, '\0');
    p_objDoc.Parse(strPadded.c_str(), nullptr, p_eEncoding);
    return true;
}
