#include "tools/StyleTree.h"

#include <tinyxml.h>

#include "tools/ValueParsing.h"

namespace {

std::string textAttribute(const TiXmlElement& p_objElement, const char* p_szName) {
    const char* szText = p_objElement.Attribute(p_szName);
    return szText != nullptr ? szText : "";
}

bool intAttribute(const TiXmlElement& p_objElement, const char* p_szName, int& p_nValue) {
    const char* szText = p_objElement.Attribute(p_szName);
    return szText != nullptr && parseInt(szText, p_nValue);
}

StyleControl readControl(const TiXmlElement& p_objElement, int p_nId) {
    StyleControl stControl;
    stControl.nId = static_cast<u32>(p_nId);
    stControl.strName = textAttribute(p_objElement, "name");
    stControl.strType = textAttribute(p_objElement, "type");
    stControl.bHasValue = intAttribute(p_objElement, "value", stControl.nValue);
    int nBound = 0;
    if (intAttribute(p_objElement, "min", nBound)) {
        stControl.nMin = nBound;
    }
    if (intAttribute(p_objElement, "max", nBound)) {
        stControl.nMax = nBound;
    }
    for (const TiXmlElement* pItem = p_objElement.FirstChildElement(); pItem != nullptr;
         pItem = pItem->NextSiblingElement()) {
        int nIndex = 0;
        if (intAttribute(*pItem, "index", nIndex)) {
            stControl.vecItems.push_back(nIndex);
            stControl.vecItemNames.push_back(textAttribute(*pItem, "name"));
        }
    }
    return stControl;
}

// Every element with an id below p_pElement is a control; its children are
// its list items, not further controls.
void collectControls(const TiXmlElement* p_pElement, std::vector<StyleControl>& p_vecControls) {
    for (const TiXmlElement* pChild = p_pElement->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        int nId = 0;
        if (intAttribute(*pChild, "id", nId) && nId >= 0) {
            p_vecControls.push_back(readControl(*pChild, nId));
        } else {
            collectControls(pChild, p_vecControls);
        }
    }
}

} // namespace

bool StyleTree::parse(const std::string& p_strXml, std::string& p_strError) {
    TiXmlDocument objDoc;
    objDoc.Parse(p_strXml.c_str(), nullptr, TIXML_ENCODING_UTF8);
    const TiXmlElement* pRoot = objDoc.RootElement();
    if (objDoc.Error() || pRoot == nullptr) {
        p_strError = std::string("the style is not a readable XML document: ") + objDoc.ErrorDesc();
        return false;
    }
    std::vector<StyleTab> vecTabs;
    for (const TiXmlElement* pTab = pRoot->FirstChildElement(); pTab != nullptr;
         pTab = pTab->NextSiblingElement()) {
        StyleTab stTab;
        const char* szKey = pTab->Attribute("key");
        stTab.strKey = szKey != nullptr ? szKey : pTab->Value();
        stTab.strName = textAttribute(*pTab, "name");
        int nId = 0;
        if (intAttribute(*pTab, "id", nId) && nId >= 0) {
            stTab.vecControls.push_back(readControl(*pTab, nId)); // a control outside any tab
        } else {
            collectControls(pTab, stTab.vecControls);
        }
        vecTabs.push_back(std::move(stTab));
    }
    m_vecTabs = std::move(vecTabs);
    return true;
}

const StyleControl* StyleTree::find(u32 p_nId) const {
    for (const StyleTab& stTab : m_vecTabs) {
        for (const StyleControl& stControl : stTab.vecControls) {
            if (stControl.nId == p_nId) {
                return &stControl;
            }
        }
    }
    return nullptr;
}

std::vector<u32> StyleTree::keys() const {
    std::vector<u32> vecKeys;
    for (const StyleTab& stTab : m_vecTabs) {
        for (const StyleControl& stControl : stTab.vecControls) {
            vecKeys.push_back(stControl.nId);
        }
    }
    return vecKeys;
}
