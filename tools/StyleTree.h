// The channel's pruned style read as tabs and their controls, for showing it
// as a tree and for checking values against the items a control offers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/SensorTypes.h"

struct StyleControl {
    u32 nId = 0;
    std::string strName; // "KEY_BRIGHTNESS"
    std::string strType; // "slider", "combo", "button", ...
    bool bHasValue = false;
    int nValue = 0;                        // the style's default
    std::vector<int> vecItems;             // allowed values when the control is a list
    std::vector<std::string> vecItemNames; // beside vecItems: "Auto", "1/25", ...
    std::optional<int> nMin;               // the bounds a slider control gives
    std::optional<int> nMax;
};

struct StyleTab {
    std::string strKey;
    std::string strName;
    std::vector<StyleControl> vecControls;
};

class StyleTree {
public:
    // False with a message when the text is not a style document.
    bool parse(const std::string& p_strXml, std::string& p_strError);
    const std::vector<StyleTab>& tabs() const { return m_vecTabs; }
    // The first control with the id, or null.
    const StyleControl* find(u32 p_nId) const;
    // Every control's id in document order (the order of the parameter sets).
    std::vector<u32> keys() const;

private:
    std::vector<StyleTab> m_vecTabs;
};
