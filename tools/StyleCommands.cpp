// The style the host builds its tuning pages from, pruned by the ISP, shown
// as a tree of tabs and controls with the channel's current values.
#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/ParamNames.h"
#include "tools/ParamSnapshot.h"
#include "tools/Session.h"

namespace {

std::string controlDetail(const StyleControl& p_stControl) {
    std::string strDetail =
        p_stControl.bHasValue ? "default " + std::to_string(p_stControl.nValue) : "no default";
    if (p_stControl.nMin || p_stControl.nMax) {
        strDetail += ", " + (p_stControl.nMin ? std::to_string(*p_stControl.nMin) : "") + ".." +
                     (p_stControl.nMax ? std::to_string(*p_stControl.nMax) : "");
    }
    if (!p_stControl.vecItems.empty()) {
        strDetail += ", items";
        for (const int nItem : p_stControl.vecItems) {
            strDetail += " " + std::to_string(nItem);
        }
    }
    return strDetail;
}

void printTab(ISensorController& p_objController, const StyleTab& p_stTab) {
    say("  tab %s", p_stTab.strKey.c_str());
    for (const StyleControl& stControl : p_stTab.vecControls) {
        const std::optional<int> nValue = snapshot(p_objController, {stControl.nId}).front().second;
        say("    %-40s = %-8s %s", keyLabel(stControl.nId).c_str(), valueText(nValue).c_str(),
            controlDetail(stControl).c_str());
    }
}

} // namespace

bool cmdStyle(Session& p_objSession, const CommandLine& p_objLine) {
    const StyleTree& objStyle = p_objSession.style();
    const bool bOneTab = p_objLine.argCount() == 1;
    bool bFound = false;
    std::string strTabs;
    for (const StyleTab& stTab : objStyle.tabs()) {
        strTabs += " " + stTab.strKey;
        if (!bOneTab || stTab.strKey == p_objLine.arg(0)) {
            printTab(p_objSession.controller(), stTab);
            bFound = true;
        }
    }
    if (bOneTab && !bFound) {
        complain("no tab '%s'; the tabs are:%s", p_objLine.arg(0).c_str(), strTabs.c_str());
        return false;
    }
    if (!bOneTab) {
        say("  %zu tabs, %zu controls", objStyle.tabs().size(), objStyle.keys().size());
    }
    return true;
}

bool cmdUiFiles(Session& p_objSession, const CommandLine& p_objLine) {
    int nId = 0;
    if (p_objLine.argCount() == 1 && !p_objSession.intArg(p_objLine, 0, "file id", nId)) {
        return false;
    }
    ISensorController& objController = p_objSession.controller();
    const std::string strCommon = objController.getUICommonFile(nId);
    const std::string strLanguage = objController.getUILanguageFile(nId);
    say("  id %d: common file '%s', language file '%s'", nId, strCommon.c_str(),
        strLanguage.c_str());
    return true;
}
