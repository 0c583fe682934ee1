// SOAP 1.2 messages as sensord reads and writes them: the request's envelope
// parsed with TinyXML (bounded in size and depth first), elements found by
// their local names, and answers and faults built as element trees, so that
// every text is escaped by the library.
#pragma once

#include <memory>
#include <string>

#include <tinyxml.h>

#include "tools/sensord/Reply.h"

namespace sensord {

// Elements nested deeper than this are refused before TinyXML (which
// recurses) sees them.
constexpr int MAX_XML_DEPTH = 48;

struct SoapRequest {
    TiXmlDocument objDoc;
    const TiXmlElement* pHeader = nullptr;
    const TiXmlElement* pOperation = nullptr; // the Body's first element
};

// False with the reason when the text is no SOAP envelope with a body.
bool parseSoap(const std::string& p_strText, SoapRequest& p_stRequest, std::string& p_strWhy);

// "tt:Brightness" -> "Brightness"
std::string localName(const TiXmlElement& p_objElement);
// The first child element with the local name, or null.
const TiXmlElement* child(const TiXmlElement* p_pParent, const char* p_szName);
// The trimmed text of the first such child, or "".
std::string childText(const TiXmlElement* p_pParent, const char* p_szName);
std::string elementText(const TiXmlElement* p_pElement);

// Appends a child element (with text when given) and returns it.
TiXmlElement* add(TiXmlElement* p_pParent, const std::string& p_strName,
                  const std::string& p_strText = "");
// The element at a '/'-separated path below p_pParent, each step prefixed
// with p_szPrefix; a step reuses the parent's last child of that name, so
// paths given in schema order build one tree.
TiXmlElement* addPath(TiXmlElement* p_pParent, const char* p_szPrefix,
                      const std::string& p_strPath);

// An envelope around the body content; the caller fills the returned Body.
class SoapAnswer {
public:
    SoapAnswer();
    TiXmlElement* body() { return m_pBody; }
    HttpReply reply(int p_nStatus = 200) const;

private:
    TiXmlDocument m_objDoc;
    TiXmlElement* m_pBody = nullptr;
};

// A SOAP fault: p_szCode "env:Sender" or "env:Receiver", its subcode
// ("ter:InvalidArgVal") and an optional second one ("ter:NoSource").
HttpReply soapFault(int p_nStatus, const char* p_szCode, const char* p_szSubcode,
                    const char* p_szDetail, const std::string& p_strReason);

} // namespace sensord
