#include "tools/sensord/SoapEnvelope.h"

#include <algorithm>

#include "platform/XmlText.h"

namespace sensord {

namespace {

// The deepest nesting of start tags, counted without parsing: a start tag
// is '<' followed by a name character; "</" and a "/>" inside a tag (not
// inside a quoted attribute value) close one. Anything else that confuses
// the count makes it larger, never smaller.
int nestingDepth(const std::string& p_strText) {
    int nDepth = 0;
    int nDeepest = 0;
    bool bInTag = false;
    char cQuote = 0;
    for (size_t i = 0; i + 1 < p_strText.size(); ++i) {
        const char c = p_strText[i];
        const char cNext = p_strText[i + 1];
        if (cQuote != 0) {
            cQuote = c == cQuote ? 0 : cQuote;
        } else if (c == '<') {
            bInTag = true;
            if (cNext == '/') {
                --nDepth;
            } else if (cNext != '?' && cNext != '!') {
                nDeepest = std::max(nDeepest, ++nDepth);
            }
        } else if (bInTag && (c == '"' || c == '\'')) {
            cQuote = c;
        } else if (c == '/' && cNext == '>' && bInTag) {
            --nDepth;
        } else if (c == '>') {
            bInTag = false;
        }
    }
    return nDeepest;
}

const TiXmlElement* firstElement(const TiXmlElement* p_pParent) {
    return p_pParent != nullptr ? p_pParent->FirstChildElement() : nullptr;
}

} // namespace

std::string localName(const TiXmlElement& p_objElement) {
    const std::string strName = p_objElement.ValueStr();
    const size_t nColon = strName.find(':');
    return nColon == std::string::npos ? strName : strName.substr(nColon + 1);
}

const TiXmlElement* child(const TiXmlElement* p_pParent, const char* p_szName) {
    for (const TiXmlElement* pChild = firstElement(p_pParent); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        if (localName(*pChild) == p_szName) {
            return pChild;
        }
    }
    return nullptr;
}

std::string elementText(const TiXmlElement* p_pElement) {
    const char* szText = p_pElement != nullptr ? p_pElement->GetText() : nullptr;
    std::string strText = szText != nullptr ? szText : "";
    const size_t nBegin = strText.find_first_not_of(" \t\r\n");
    const size_t nEnd = strText.find_last_not_of(" \t\r\n");
    return nBegin == std::string::npos ? "" : strText.substr(nBegin, nEnd - nBegin + 1);
}

std::string childText(const TiXmlElement* p_pParent, const char* p_szName) {
    return elementText(child(p_pParent, p_szName));
}

bool parseSoap(const std::string& p_strText, SoapRequest& p_stRequest, std::string& p_strWhy) {
    if (nestingDepth(p_strText) > MAX_XML_DEPTH) {
        p_strWhy = "the request nests elements deeper than " + std::to_string(MAX_XML_DEPTH);
        return false;
    }
    parseXmlText(p_stRequest.objDoc, p_strText.data(), p_strText.size(), TIXML_ENCODING_UTF8);
    const TiXmlElement* pRoot = p_stRequest.objDoc.RootElement();
    if (p_stRequest.objDoc.Error() || pRoot == nullptr || localName(*pRoot) != "Envelope") {
        p_strWhy = p_stRequest.objDoc.Error()
                       ? std::string("the request is not well-formed XML: ") +
                             p_stRequest.objDoc.ErrorDesc()
                       : "the request is not a SOAP envelope";
        return false;
    }
    p_stRequest.pHeader = child(pRoot, "Header");
    p_stRequest.pOperation = firstElement(child(pRoot, "Body"));
    if (p_stRequest.pOperation == nullptr) {
        p_strWhy = "the SOAP body names no operation";
        return false;
    }
    return true;
}

TiXmlElement* add(TiXmlElement* p_pParent, const std::string& p_strName,
                  const std::string& p_strText) {
    TiXmlElement objElement(p_strName);
    if (!p_strText.empty()) {
        objElement.InsertEndChild(TiXmlText(p_strText));
    }
    return p_pParent->InsertEndChild(objElement)->ToElement();
}

TiXmlElement* addPath(TiXmlElement* p_pParent, const char* p_szPrefix,
                      const std::string& p_strPath) {
    TiXmlElement* pAt = p_pParent;
    size_t nPos = 0;
    while (nPos <= p_strPath.size()) {
        const size_t nEnd = std::min(p_strPath.find('/', nPos), p_strPath.size());
        const std::string strName = p_szPrefix + p_strPath.substr(nPos, nEnd - nPos);
        TiXmlNode* pLast = pAt->LastChild();
        const bool bReuse = nEnd < p_strPath.size() && pLast != nullptr &&
                            pLast->ToElement() != nullptr && pLast->ValueStr() == strName;
        pAt = bReuse ? pLast->ToElement() : add(pAt, strName);
        nPos = nEnd + 1;
    }
    return pAt;
}

SoapAnswer::SoapAnswer() {
    m_objDoc.InsertEndChild(TiXmlDeclaration("1.0", "UTF-8", ""));
    TiXmlElement objEnvelope("env:Envelope");
    objEnvelope.SetAttribute("xmlns:env", "http://www.w3.org/2003/05/soap-envelope");
    objEnvelope.SetAttribute("xmlns:ter", "http://www.onvif.org/ver10/error");
    objEnvelope.SetAttribute("xmlns:tt", "http://www.onvif.org/ver10/schema");
    objEnvelope.SetAttribute("xmlns:tds", "http://www.onvif.org/ver10/device/wsdl");
    objEnvelope.SetAttribute("xmlns:trt", "http://www.onvif.org/ver10/media/wsdl");
    objEnvelope.SetAttribute("xmlns:timg", "http://www.onvif.org/ver20/imaging/wsdl");
    TiXmlElement* pEnvelope = m_objDoc.InsertEndChild(objEnvelope)->ToElement();
    m_pBody = add(pEnvelope, "env:Body");
}

HttpReply SoapAnswer::reply(int p_nStatus) const {
    TiXmlPrinter objPrinter;
    objPrinter.SetStreamPrinting();
    m_objDoc.Accept(&objPrinter);
    HttpReply stReply;
    stReply.nStatus = p_nStatus;
    stReply.strContentType = "application/soap+xml; charset=utf-8";
    stReply.strBody = objPrinter.CStr();
    return stReply;
}

HttpReply soapFault(int p_nStatus, const char* p_szCode, const char* p_szSubcode,
                    const char* p_szDetail, const std::string& p_strReason) {
    SoapAnswer objAnswer;
    TiXmlElement* pFault = add(objAnswer.body(), "env:Fault");
    TiXmlElement* pCode = add(pFault, "env:Code");
    add(pCode, "env:Value", p_szCode);
    TiXmlElement* pSub = add(pCode, "env:Subcode");
    add(pSub, "env:Value", p_szSubcode);
    if (p_szDetail != nullptr) {
        add(add(pSub, "env:Subcode"), "env:Value", p_szDetail);
    }
    TiXmlElement* pText = add(add(pFault, "env:Reason"), "env:Text", p_strReason);
    pText->SetAttribute("xml:lang", "en");
    return objAnswer.reply(p_nStatus);
}

} // namespace sensord
