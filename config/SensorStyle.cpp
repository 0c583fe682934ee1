// Style XML: diversity edits of whole tabs, the dynamic style the ISP shapes,
// and the factory parameter set collected from it.
#define SNS_SOURCE_UNIT "SensorFile"

#include "config/SensorFile.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "config/SensorXml.h"

namespace {

// A preset value of 100 in the style means "no preset": the ISP's default stands.
constexpr int STYLE_NO_PRESET = 100;
// A KEY_MAX_SHUTTER preset of 200 and above takes the items from the style
// itself; the default is the preset minus 200.
constexpr int STYLE_OWN_ITEMS = 200;

// Controls whose style "value" presets the ISP's default.
constexpr std::array<u32, 6> PRESET_KEYS = {KEY_MAX_SHUTTER,       KEY_FIX_SHUTTER,
                                            KEY_MIN_SHUTTER,       KEY_MIN_SHUTTER_NIGHT,
                                            KEY_MAX_SHUTTER_NIGHT, KEY_AUTO_FOCUS_NEAR_LIMIT};

const char* const OP_MODIFY = "Modify";
const char* const OP_ADD_AFTER = "AddAfter";
const char* const OP_DELETE = "Delete";

// Decimal attribute text as atoi reads it, without atoi's undefined behaviour
// for numbers beyond int: those are clamped.
int toInt(const char* p_szText) {
    const long nVal = std::strtol(p_szText, nullptr, 10);
    return static_cast<int>(std::clamp<long>(nVal, INT_MIN, INT_MAX));
}

bool isControl(const TiXmlElement* p_pNode, int p_nCmd) {
    const char* szId = p_pNode->Attribute("id");
    return szId != nullptr && toInt(szId) == p_nCmd;
}

// Visits every control with the key p_nCmd: a match's own subtree is not
// searched further, the rest of the tree is. A non-zero result of the visit
// ends the search and is passed up.
template <class Visit> int forEachControl(TiXmlElement* p_pNode, int p_nCmd, Visit&& p_fnVisit) {
    if (p_pNode == nullptr) {
        return 0;
    }
    if (isControl(p_pNode, p_nCmd)) {
        return p_fnVisit(p_pNode);
    }
    for (TiXmlElement* pChild = p_pNode->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        const int nRet = forEachControl(pChild, p_nCmd, p_fnVisit);
        if (nRet != 0) {
            return nRet;
        }
    }
    return 0;
}

// Every control of a style by key, as forEachControl finds them: in document
// order, a control's own subtree not searched for its own key. One walk
// serves all the dynamic commands instead of one walk each. A removal that
// takes a control with it makes the index walk the tree again before its
// next use, so it never hands out a removed element.
class ControlIndex {
public:
    explicit ControlIndex(TiXmlElement* p_pRoot) : m_pRoot(p_pRoot) {}

    // The controls with key p_nCmd, in document order.
    template <class Visit> int forEach(int p_nCmd, Visit&& p_fnVisit) {
        if (m_bStale) {
            rebuild();
        }
        auto it =
            std::lower_bound(m_vecControls.begin(), m_vecControls.end(), p_nCmd,
                             [](const Entry& stEntry, int nCmd) { return stEntry.first < nCmd; });
        for (; it != m_vecControls.end() && it->first == p_nCmd; ++it) {
            const int nRet = p_fnVisit(it->second);
            if (nRet != 0) {
                return nRet;
            }
        }
        return 0;
    }
    TiXmlElement* last(int p_nCmd) {
        TiXmlElement* pLast = nullptr;
        forEach(p_nCmd, [&pLast](TiXmlElement* pMatch) {
            pLast = pMatch;
            return 0;
        });
        return pLast;
    }
    void removeChild(TiXmlNode* p_pParent, TiXmlElement* p_pChild) {
        m_bStale = m_bStale || holdsControl(p_pChild);
        p_pParent->RemoveChild(p_pChild);
    }

private:
    using Entry = std::pair<int, TiXmlElement*>;

    static bool holdsControl(const TiXmlElement* p_pNode) {
        if (p_pNode->Attribute("id") != nullptr) {
            return true;
        }
        for (const TiXmlElement* pChild = p_pNode->FirstChildElement(); pChild != nullptr;
             pChild = pChild->NextSiblingElement()) {
            if (holdsControl(pChild)) {
                return true;
            }
        }
        return false;
    }
    // p_vecPath: the keys of the controls above p_pNode.
    void add(TiXmlElement* p_pNode, std::vector<int>& p_vecPath) {
        const char* szId = p_pNode->Attribute("id");
        const int nId = szId != nullptr ? toInt(szId) : 0;
        if (szId != nullptr) {
            if (std::find(p_vecPath.begin(), p_vecPath.end(), nId) == p_vecPath.end()) {
                m_vecControls.emplace_back(nId, p_pNode);
            }
            p_vecPath.push_back(nId);
        }
        for (TiXmlElement* pChild = p_pNode->FirstChildElement(); pChild != nullptr;
             pChild = pChild->NextSiblingElement()) {
            add(pChild, p_vecPath);
        }
        if (szId != nullptr) {
            p_vecPath.pop_back();
        }
    }
    void rebuild() {
        m_vecControls.clear();
        std::vector<int> vecPath;
        if (m_pRoot != nullptr) {
            add(m_pRoot, vecPath);
        }
        // Stable: document order within a key.
        std::stable_sort(m_vecControls.begin(), m_vecControls.end(),
                         [](const Entry& a, const Entry& b) { return a.first < b.first; });
        m_bStale = false;
    }

    TiXmlElement* m_pRoot;
    std::vector<Entry> m_vecControls;
    bool m_bStale = true;
};

bool allowsItem(const ia_dynamic_params_attr_st& p_stAttr, int p_nItem) {
    const int nCount = std::clamp(p_stAttr.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
    return std::find(p_stAttr.item, p_stAttr.item + nCount, p_nItem) != p_stAttr.item + nCount;
}

// Sets the control's default and removes the list items the ISP does not
// allow (through p_fnRemove); -1 at the first item without "index".
template <class Remove>
int rewriteControl(TiXmlElement* p_pControl, int p_nCmd, const ia_dynamic_params_attr_st& p_stAttr,
                   Remove&& p_fnRemove) {
    SNS_DBG_FOR("doDnaStyle", "_________________cmd(%d) default(%d)__________________\n", p_nCmd,
                p_stAttr.default_val);
    p_pControl->SetAttribute("value", p_stAttr.default_val);
    TiXmlElement* pNext = nullptr;
    for (TiXmlElement* pItem = p_pControl->FirstChildElement(); pItem != nullptr; pItem = pNext) {
        pNext = pItem->NextSiblingElement();
        const char* szIndex = pItem->Attribute("index");
        if (szIndex == nullptr) {
            return -1;
        }
        if (!allowsItem(p_stAttr, toInt(szIndex))) {
            SNS_DBG_FOR("doDnaStyle", "_________________delete comboitem(%s)__________________\n",
                        szIndex);
            p_fnRemove(p_pControl, pItem);
        }
    }
    return 0;
}

// Takes the control's own "index" items as the allowed list.
void takeStyleItems(const TiXmlElement* p_pControl, ia_dynamic_params_attr_st& p_stAttr) {
    int nCount = 0;
    int nDropped = 0;
    for (const TiXmlElement* pItem = p_pControl->FirstChildElement(); pItem != nullptr;
         pItem = pItem->NextSiblingElement()) {
        const char* szIndex = pItem->Attribute("index");
        if (szIndex == nullptr) {
            continue;
        }
        if (nCount < IA_DYNAMIC_ITEM_MAX) {
            p_stAttr.item[nCount++] = toInt(szIndex);
        } else {
            ++nDropped;
        }
    }
    SNS_ASSERT_TEXT_FOR("doCustomizeStyle", nDropped == 0, "items_cnt <= IA_DYNAMIC_ITEM_MAX",
                        "style items beyond the record: %d\n", nDropped);
    p_stAttr.items_cnt = nCount;
    p_stAttr.max_val = nCount > 0 ? p_stAttr.item[nCount - 1] : 0;
    p_stAttr.min_val = p_stAttr.item[0];
}

bool isPresetKey(u32 p_nCmd) {
    return std::find(PRESET_KEYS.begin(), PRESET_KEYS.end(), p_nCmd) != PRESET_KEYS.end();
}

// The style's preset for a preset key becomes the default when the ISP allows
// it; a maximum-shutter preset of 200 and above brings its own item list.
void applyStylePreset(ControlIndex& p_objIndex, int p_nIndex, u32 p_nCmd,
                      ia_dynamic_params_attr_st& dnaParamList) {
    int nVal = 0;
    // As getDnaValbyCmdId: the last control with a "value" gives it.
    p_objIndex.forEach(static_cast<int>(p_nCmd), [&nVal](TiXmlElement* pMatch) {
        if (const char* szValue = pMatch->Attribute("value")) {
            nVal = toInt(szValue);
        }
        return 0;
    });
    if (nVal == STYLE_NO_PRESET) {
        return;
    }
    std::printf("dnaCmdList.cmd_list[%d] = dnaParamList.items_cnt(%d)\n", p_nIndex,
                dnaParamList.items_cnt);
    for (int j = 0; j < dnaParamList.items_cnt; ++j) {
        std::printf(" dnaParamList.item[%d] = %d nVal = %d \n", j, dnaParamList.item[j], nVal);
        if (dnaParamList.item[j] == nVal) {
            dnaParamList.default_val = dnaParamList.item[j];
            break;
        }
    }
    if (nVal >= STYLE_OWN_ITEMS && p_nCmd == KEY_MAX_SHUTTER) {
        p_objIndex.forEach(static_cast<int>(KEY_MAX_SHUTTER),
                           [&dnaParamList](TiXmlElement* pMatch) {
                               takeStyleItems(pMatch, dnaParamList);
                               return 0;
                           });
        dnaParamList.default_val = nVal - STYLE_OWN_ITEMS;
    }
}

// Asks the ISP for the allowed values of one dynamic command and rewrites its
// controls accordingly.
void applyDynamicCmd(int p_channelID, ControlIndex& p_objIndex, int i, u32 p_nCmd) {
    SNS_DBG_FOR("getDnaStyle", "dnaCmdList.cmd_list[%d] = cmd(%d)\n", i, static_cast<int>(p_nCmd));
    ia_dynamic_params_attr_st dnaParamList{};
    const int nRet = ia_ioctrl_v2(p_channelID - 1, static_cast<ia_cmd_e>(p_nCmd),
                                  IA_CMD_OPT_GET_PARAM_RNAGE, &dnaParamList);
    SNS_ASSERT_TEXT_FOR("getDnaStyle", SNS_SUCCESS == nRet,
                        "SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, "
                        "(ia_cmd_e)dnaCmdList.cmd_list[i], IA_CMD_OPT_GET_PARAM_RNAGE, "
                        "(void*)(&dnaParamList))",
                        "");
    clampDynamicParams(dnaParamList);
    if (isPresetKey(p_nCmd)) {
        applyStylePreset(p_objIndex, i, p_nCmd, dnaParamList);
    }
    // As doDnaStyle, through the index.
    const int nDone = p_objIndex.forEach(static_cast<int>(p_nCmd), [&](TiXmlElement* pMatch) {
        return rewriteControl(pMatch, static_cast<int>(p_nCmd), dnaParamList,
                              [&p_objIndex](TiXmlElement* pParent, TiXmlElement* pItem) {
                                  p_objIndex.removeChild(pParent, pItem);
                              });
    });
    SNS_ASSERT_TEXT_FOR("getDnaStyle", SNS_SUCCESS == nDone,
                        "SNS_SUCCESS == doDnaStyle(objStyleXmlDoc.RootElement(), "
                        "dnaCmdList.cmd_list[i], &dnaParamList)",
                        "");
}

// Removes the last control with the key (as getNodebyCmdId and DeleteNode);
// nothing when the style has none.
void hideControl(ControlIndex& p_objIndex, u32 p_nKey) {
    TiXmlElement* pNode = p_objIndex.last(static_cast<int>(p_nKey));
    TiXmlNode* pParent = pNode != nullptr ? pNode->Parent() : nullptr;
    if (pParent != nullptr && pParent->ToElement() != nullptr) {
        p_objIndex.removeChild(pParent, pNode);
    }
}

void hideControls(ControlIndex& p_objIndex, bool p_bShowWDRFalg, bool p_bShowLDCFlag,
                  bool p_bShowBeaway) {
    hideControl(p_objIndex, KEY_EMPTY1);
    if (!p_bShowWDRFalg) {
        hideControl(p_objIndex, KEY_WDR_MODE);
        hideControl(p_objIndex, KEY_WDR_STRG);
    }
    if (!p_bShowLDCFlag) {
        hideControl(p_objIndex, KEY_LDC_SWITCH);
        hideControl(p_objIndex, KEY_LDC_STRG);
    }
    if (p_bShowBeaway) {
        hideControl(p_objIndex, KEY_EMPTY2);
    }
}

bool hasAttribute(const TiXmlElement* p_pNode, const char* p_szName) {
    return p_pNode->Attribute(p_szName) != nullptr;
}

TiXmlElement* findTab(TiXmlElement* p_pFirstTab, const char* p_szTabKey) {
    if (p_szTabKey == nullptr) {
        return nullptr;
    }
    for (TiXmlElement* pTab = p_pFirstTab; pTab != nullptr; pTab = pTab->NextSiblingElement()) {
        // A tab without "key" is outside the format and never chosen.
        const char* szKey = pTab->Attribute("key");
        if (szKey != nullptr && std::strcmp(szKey, p_szTabKey) == 0) {
            return pTab;
        }
    }
    return nullptr;
}

} // namespace

void clampDynamicCmdList(ia_dynamic_cmd_list_st& p_stList) {
    const int nCount = std::clamp(p_stList.cmd_cnt, 0, IA_DYNAMIC_CMD_MAX);
    SNS_ASSERT_TEXT(nCount == p_stList.cmd_cnt,
                    "0 <= dnaCmdList.cmd_cnt && dnaCmdList.cmd_cnt <= IA_DYNAMIC_CMD_MAX",
                    "cmd_cnt(%d)\n", p_stList.cmd_cnt);
    p_stList.cmd_cnt = nCount;
}

void clampDynamicParams(ia_dynamic_params_attr_st& p_stAttr) {
    const int nCount = std::clamp(p_stAttr.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
    SNS_ASSERT_TEXT(nCount == p_stAttr.items_cnt,
                    "0 <= dnaParamList.items_cnt && dnaParamList.items_cnt <= IA_DYNAMIC_ITEM_MAX",
                    "items_cnt(%d)\n", p_stAttr.items_cnt);
    p_stAttr.items_cnt = nCount;
}

int updateStyleTab(TiXmlDocument* doc_style, const char* p_szOperation, const char* p_szTabKey,
                   const TiXmlElement* p_pNewTab) {
    TiXmlElement* pRoot = doc_style != nullptr ? doc_style->RootElement() : nullptr;
    TiXmlElement* tab_node = pRoot != nullptr ? pRoot->FirstChildElement() : nullptr;
    if (tab_node == nullptr) {
        SNS_ASSERT_TEXT(false, "NULL != (tab_node = doc_style->RootElement()->FirstChildElement())",
                        "");
        return 0;
    }
    TiXmlElement* pTab = findTab(tab_node, p_szTabKey);
    if (pTab == nullptr || p_szOperation == nullptr) {
        return 0;
    }
    if (std::strcmp(p_szOperation, OP_DELETE) == 0) {
        pRoot->RemoveChild(pTab);
        return 0;
    }
    const bool bModify = std::strcmp(p_szOperation, OP_MODIFY) == 0;
    if (!bModify && std::strcmp(p_szOperation, OP_ADD_AFTER) != 0) {
        return 0;
    }
    // An edit that brings no new tab is skipped: the style keeps its tab.
    if (p_pNewTab == nullptr) {
        SNS_ASSERT_TEXT(false, "NULL != p_pNewTab", "operation(%s) tab_key(%s)\n", p_szOperation,
                        p_szTabKey);
        return 0;
    }
    pRoot->InsertAfterChild(pTab, *p_pNewTab);
    if (bModify) {
        pRoot->RemoveChild(pTab);
    }
    return 0;
}

int getDnaValbyCmdId(TiXmlElement* p_pNode, int p_nCmd, int& p_nVal) {
    return forEachControl(p_pNode, p_nCmd, [&p_nVal](TiXmlElement* pMatch) {
        if (const char* szValue = pMatch->Attribute("value")) {
            p_nVal = toInt(szValue);
        }
        return 0;
    });
}

int getNodebyCmdId(TiXmlElement* p_pNode, int p_nCmd, TiXmlElement*& p_pFound) {
    return forEachControl(p_pNode, p_nCmd, [&p_pFound](TiXmlElement* pMatch) {
        p_pFound = pMatch;
        return 0;
    });
}

int ModifyNodebyCmdId(TiXmlElement* p_pNode, int p_nCmd) {
    return forEachControl(p_pNode, p_nCmd, [p_nCmd](TiXmlElement* pMatch) {
        if (p_nCmd == static_cast<int>(KEY_HLC_SWITCH)) {
            pMatch->SetAttribute("enable_list", "128");
        } else if (p_nCmd == static_cast<int>(KEY_BLC_SWITCH)) {
            pMatch->SetAttribute("enable_list", "112");
        }
        return 0;
    });
}

int DeleteNode(TiXmlElement* p_pRoot, TiXmlElement* p_pDel) {
    if (p_pRoot == nullptr || p_pDel == nullptr) {
        return -1;
    }
    TiXmlNode* pParent = p_pDel->Parent();
    if (pParent != nullptr && pParent->ToElement() != nullptr) {
        pParent->RemoveChild(p_pDel);
    }
    return 0;
}

int doDnaStyle(TiXmlElement* p_pNode, int p_nCmd, const ia_dynamic_params_attr_st* p_pstAttr) {
    if (p_pstAttr == nullptr) {
        return -1;
    }
    return forEachControl(p_pNode, p_nCmd, [p_nCmd, p_pstAttr](TiXmlElement* pMatch) {
        return rewriteControl(
            pMatch, p_nCmd, *p_pstAttr,
            [](TiXmlElement* pParent, TiXmlElement* pItem) { pParent->RemoveChild(pItem); });
    });
}

int doCustomizeStyle(TiXmlElement* p_pNode, int p_nCmd, ia_dynamic_params_attr_st* p_pstAttr) {
    if (p_pstAttr == nullptr) {
        return 0;
    }
    return forEachControl(p_pNode, p_nCmd, [p_pstAttr](TiXmlElement* pMatch) {
        takeStyleItems(pMatch, *p_pstAttr);
        return 0;
    });
}

namespace {

// The dynamic style as a document: the style parsed, each dynamic command's
// controls rewritten by the ISP's answer, the hidden controls removed. False
// when the style does not parse (the document is then empty).
// With p_bLoaded the document holds the style already (the merged style's own
// document at init) and is not parsed again: it then counts as parsed when it
// has content, as the text it prints to would parse.
bool buildDnaStyle(int p_channelID, const char* p_szStyle, bool p_bLoaded,
                   TiXmlDocumentEx& objStyleXmlDoc, bool p_bShowWDRFalg, bool p_bShowLDCFlag,
                   bool p_bShowBeaway) {
    ia_dynamic_cmd_list_st dnaCmdList{};
    const int nRet =
        ia_ioctrl_v2(p_channelID - 1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &dnaCmdList);
    SNS_ASSERT_TEXT_FOR(
        "getDnaStyle", SNS_SUCCESS == nRet,
        "SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, "
        "IA_CMD_OPT_GET, (void*)(&dnaCmdList))",
        "");
    clampDynamicCmdList(dnaCmdList);

    const bool bParsed = p_bLoaded ? objStyleXmlDoc.FirstChild() != nullptr
                                   : objStyleXmlDoc.LoadMem(p_szStyle, TIXML_ENCODING_UTF8);
    SNS_ASSERT_TEXT_FOR("getDnaStyle", bParsed,
                        "objStyleXmlDoc.LoadMem(szStyle, TIXML_ENCODING_UTF8)", "");
    ControlIndex objIndex(objStyleXmlDoc.RootElement());

    SNS_DBG_FOR("getDnaStyle", "dnaCmdList.cmd_cnt(%d)\n", dnaCmdList.cmd_cnt);
    for (int i = 0; i < dnaCmdList.cmd_cnt; ++i) {
        applyDynamicCmd(p_channelID, objIndex, i, dnaCmdList.cmd_list[i]);
    }
    hideControls(objIndex, p_bShowWDRFalg, p_bShowLDCFlag, p_bShowBeaway);
    return bParsed;
}

} // namespace

int getDnaStyle(int p_channelID, const char* p_szStyle, std::string& strDnaStyle,
                bool p_bShowWDRFalg, bool p_bShowLDCFlag) {
    return getDnaStyle(p_channelID, p_szStyle, strDnaStyle, p_bShowWDRFalg, p_bShowLDCFlag,
                       g_bShoWBeawayFalg);
}

int getDnaStyle(int p_channelID, const char* p_szStyle, std::string& strDnaStyle,
                bool p_bShowWDRFalg, bool p_bShowLDCFlag, bool p_bShowBeaway) {
    TiXmlDocumentEx objStyleXmlDoc;
    buildDnaStyle(p_channelID, p_szStyle, false, objStyleXmlDoc, p_bShowWDRFalg, p_bShowLDCFlag,
                  p_bShowBeaway);
    // The document was parsed from memory and so has no file name of its
    // own: saving it under that name writes nothing, and is left out.
    objStyleXmlDoc.getXmlString(strDnaStyle);
    return SNS_SUCCESS;
}

int style2KeyVal(TiXmlElement* pRootNode, KeyVal* p_pKeyVal, u32* p_pnKeyValNum, u32 p_nCapacity) {
    if (pRootNode == nullptr) {
        return SNS_SUCCESS;
    }
    if (p_pnKeyValNum == nullptr) {
        return SNS_FAILED;
    }
    if (hasAttribute(pRootNode, "id") && hasAttribute(pRootNode, "value")) {
        if (p_pKeyVal == nullptr || *p_pnKeyValNum >= p_nCapacity) {
            return SNS_FAILED;
        }
        p_pKeyVal[*p_pnKeyValNum].key = static_cast<u32>(toInt(pRootNode->Attribute("id")));
        p_pKeyVal[*p_pnKeyValNum].value = static_cast<u32>(toInt(pRootNode->Attribute("value")));
        ++*p_pnKeyValNum;
    }
    for (TiXmlElement* pChild = pRootNode->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        if (style2KeyVal(pChild, p_pKeyVal, p_pnKeyValNum, p_nCapacity) != SNS_SUCCESS) {
            return SNS_FAILED;
        }
    }
    return SNS_SUCCESS;
}

namespace {

// The factory set from the dynamic style built in p_objDoc (see buildDnaStyle).
int collectFctData(int p_channelID, const char* p_szStyle, bool p_bLoaded,
                   TiXmlDocumentEx& objDnaStyleDoc, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
                   u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag,
                   bool p_bShowBeaway) {
    if (p_pnKeyValNum == nullptr) {
        return SNS_FAILED;
    }
    // The set is collected from the dynamic style's document itself: printing
    // it and parsing the text again would give the same controls.
    const bool bBuilt = buildDnaStyle(p_channelID, p_szStyle, p_bLoaded, objDnaStyleDoc,
                                      p_bShowWDRFalg, p_bShowLDCFlag, p_bShowBeaway);
    SNS_ASSERT_TEXT_FOR("getFctData", bBuilt,
                        "objDnaStyleDoc.LoadMem(strDnaStyle.c_str(), TIXML_ENCODING_UTF8)", "");

    *p_pnKeyValNum = 0;
    TiXmlElement* pRootNode = objDnaStyleDoc.RootElement();
    const int nCollected = style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum, p_nCapacity);
    SNS_ASSERT_TEXT_FOR("getFctData", SNS_SUCCESS == nCollected,
                        "SNS_SUCCESS == style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum)",
                        "p_pnKeyValNum(%u)\n", *p_pnKeyValNum);
    return SNS_SUCCESS;
}

} // namespace

int getFctData(int p_channelID, const char* p_szStyle, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
               u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag) {
    return getFctData(p_channelID, p_szStyle, p_pKeyVal, p_pnKeyValNum, p_nCapacity, p_bShowWDRFalg,
                      p_bShowLDCFlag, g_bShoWBeawayFalg);
}

int getFctData(int p_channelID, const char* p_szStyle, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
               u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag, bool p_bShowBeaway) {
    TiXmlDocumentEx objDnaStyleDoc;
    return collectFctData(p_channelID, p_szStyle, false, objDnaStyleDoc, p_pKeyVal, p_pnKeyValNum,
                          p_nCapacity, p_bShowWDRFalg, p_bShowLDCFlag, p_bShowBeaway);
}

int getFctData(int p_channelID, TiXmlDocumentEx& p_objMergedStyle, KeyVal* p_pKeyVal,
               u32* p_pnKeyValNum, u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag,
               bool p_bShowBeaway) {
    return collectFctData(p_channelID, nullptr, true, p_objMergedStyle, p_pKeyVal, p_pnKeyValNum,
                          p_nCapacity, p_bShowWDRFalg, p_bShowLDCFlag, p_bShowBeaway);
}
