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

bool allowsItem(const ia_dynamic_params_attr_st& p_stAttr, int p_nItem) {
    const int nCount = std::clamp(p_stAttr.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
    return std::find(p_stAttr.item, p_stAttr.item + nCount, p_nItem) != p_stAttr.item + nCount;
}

// Sets the control's default and removes the list items the ISP does not
// allow; -1 at the first item without "index".
int rewriteControl(TiXmlElement* p_pControl, int p_nCmd,
                   const ia_dynamic_params_attr_st& p_stAttr) {
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
            p_pControl->RemoveChild(pItem);
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
void applyStylePreset(TiXmlElement* p_pRoot, int p_nIndex, u32 p_nCmd,
                      ia_dynamic_params_attr_st& dnaParamList) {
    int nVal = 0;
    getDnaValbyCmdId(p_pRoot, static_cast<int>(p_nCmd), nVal);
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
        doCustomizeStyle(p_pRoot, KEY_MAX_SHUTTER, &dnaParamList);
        dnaParamList.default_val = nVal - STYLE_OWN_ITEMS;
    }
}

// Asks the ISP for the allowed values of one dynamic command and rewrites its
// controls accordingly.
void applyDynamicCmd(int p_channelID, TiXmlElement* p_pRoot, int i, u32 p_nCmd) {
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
        applyStylePreset(p_pRoot, i, p_nCmd, dnaParamList);
    }
    const int nDone = doDnaStyle(p_pRoot, static_cast<int>(p_nCmd), &dnaParamList);
    SNS_ASSERT_TEXT_FOR("getDnaStyle", SNS_SUCCESS == nDone,
                        "SNS_SUCCESS == doDnaStyle(objStyleXmlDoc.RootElement(), "
                        "dnaCmdList.cmd_list[i], &dnaParamList)",
                        "");
}

// Removes the last control with the key; nothing when the style has none.
void hideControl(TiXmlElement* p_pRoot, u32 p_nKey) {
    TiXmlElement* pNode = nullptr;
    getNodebyCmdId(p_pRoot, static_cast<int>(p_nKey), pNode);
    DeleteNode(p_pRoot, pNode);
}

void hideControls(TiXmlElement* p_pRoot, bool p_bShowWDRFalg, bool p_bShowLDCFlag) {
    hideControl(p_pRoot, KEY_EMPTY1);
    if (!p_bShowWDRFalg) {
        hideControl(p_pRoot, KEY_WDR_MODE);
        hideControl(p_pRoot, KEY_WDR_STRG);
    }
    if (!p_bShowLDCFlag) {
        hideControl(p_pRoot, KEY_LDC_SWITCH);
        hideControl(p_pRoot, KEY_LDC_STRG);
    }
    if (g_bShoWBeawayFalg) {
        hideControl(p_pRoot, KEY_EMPTY2);
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
        return rewriteControl(pMatch, p_nCmd, *p_pstAttr);
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

int getDnaStyle(int p_channelID, const char* p_szStyle, std::string& strDnaStyle,
                bool p_bShowWDRFalg, bool p_bShowLDCFlag) {
    ia_dynamic_cmd_list_st dnaCmdList{};
    const int nRet =
        ia_ioctrl_v2(p_channelID - 1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &dnaCmdList);
    SNS_ASSERT_TEXT(SNS_SUCCESS == nRet,
                    "SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, "
                    "IA_CMD_OPT_GET, (void*)(&dnaCmdList))",
                    "");
    clampDynamicCmdList(dnaCmdList);

    TiXmlDocumentEx objStyleXmlDoc;
    SNS_ASSERT_TEXT(objStyleXmlDoc.LoadMem(p_szStyle, TIXML_ENCODING_UTF8),
                    "objStyleXmlDoc.LoadMem(szStyle, TIXML_ENCODING_UTF8)", "");
    TiXmlElement* pRoot = objStyleXmlDoc.RootElement();

    SNS_DBG("dnaCmdList.cmd_cnt(%d)\n", dnaCmdList.cmd_cnt);
    for (int i = 0; i < dnaCmdList.cmd_cnt; ++i) {
        applyDynamicCmd(p_channelID, pRoot, i, dnaCmdList.cmd_list[i]);
    }
    hideControls(pRoot, p_bShowWDRFalg, p_bShowLDCFlag);

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

int getFctData(int p_channelID, const char* p_szStyle, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
               u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag) {
    if (p_pnKeyValNum == nullptr) {
        return SNS_FAILED;
    }
    std::string strDnaStyle;
    const int nRet =
        getDnaStyle(p_channelID, p_szStyle, strDnaStyle, p_bShowWDRFalg, p_bShowLDCFlag);
    SNS_ASSERT_TEXT(SNS_SUCCESS == nRet,
                    "SNS_SUCCESS == getDnaStyle(p_channelID,p_szStyle, "
                    "strDnaStyle,p_bShowWDRFalg,p_bShowLDCFlag)",
                    "");
    TiXmlDocumentEx objDnaStyleDoc;
    SNS_ASSERT_TEXT(objDnaStyleDoc.LoadMem(strDnaStyle.c_str(), TIXML_ENCODING_UTF8),
                    "objDnaStyleDoc.LoadMem(strDnaStyle.c_str(), TIXML_ENCODING_UTF8)", "");

    *p_pnKeyValNum = 0;
    TiXmlElement* pRootNode = objDnaStyleDoc.RootElement();
    const int nCollected = style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum, p_nCapacity);
    SNS_ASSERT_TEXT(SNS_SUCCESS == nCollected,
                    "SNS_SUCCESS == style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum)",
                    "p_pnKeyValNum(%u)\n", *p_pnKeyValNum);
    return SNS_SUCCESS;
}
