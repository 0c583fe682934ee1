// The maximum shutter, moved along the ISP's own list of allowed values; each
// move is stored in the current scheme.
#include <sstream>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/Session.h"

namespace {

// The module takes at most this many values of the ISP's list.
constexpr size_t SHUTTER_LIST_MAX = 30;

// The list as the module reads it.
std::vector<int> shutterList(ISensorController& p_objController) {
    int nDefault = 0;
    std::string strRange;
    std::vector<int> vecList;
    if (p_objController.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange)) {
        std::istringstream objIn(strRange);
        for (int nValue = 0; vecList.size() < SHUTTER_LIST_MAX && objIn >> nValue;) {
            vecList.push_back(nValue);
        }
    }
    return vecList;
}

std::string listText(const std::vector<int>& p_vecList) {
    std::string strText;
    for (size_t i = 0; i < p_vecList.size(); ++i) {
        strText += (i == 0 ? "" : " ") + std::to_string(i) + ":" + std::to_string(p_vecList[i]);
    }
    return strText;
}

bool showPosition(Session& p_objSession, const char* p_szPrefix) {
    ISensorController& objController = p_objSession.controller();
    const std::vector<int> vecList = shutterList(objController);
    if (vecList.empty()) {
        complain("the ISP offers no list of maximum-shutter values on this channel");
        return false;
    }
    int nIndex = -1;
    if (!objController.getShutterValue(nIndex) || nIndex < 0 ||
        static_cast<size_t>(nIndex) >= vecList.size()) {
        complain("the ISP's maximum shutter is not in its list [%s]", listText(vecList).c_str());
        return false;
    }
    say("  %smaximum shutter %d (index %d of [%s])", p_szPrefix,
        vecList[static_cast<size_t>(nIndex)], nIndex, listText(vecList).c_str());
    return true;
}

bool step(Session& p_objSession, bool p_bUp) {
    ISensorController& objController = p_objSession.controller();
    if (!(p_bUp ? objController.shutterUp() : objController.shutterDown())) {
        complain("shutter %s: the ISP's maximum shutter is not in its list, or the write was "
                 "refused; nothing changed",
                 p_bUp ? "up" : "down");
        return false;
    }
    return showPosition(p_objSession, "now ");
}

} // namespace

bool cmdShutter(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 0) {
        return showPosition(p_objSession, "");
    }
    int nIndex = 0;
    if (!p_objSession.intArg(p_objLine, 0, "index", nIndex)) {
        return false;
    }
    const std::vector<int> vecList = shutterList(p_objSession.controller());
    if (nIndex < 0 || static_cast<size_t>(nIndex) >= vecList.size()) {
        complain("index %d is outside the ISP's list [%s]", nIndex, listText(vecList).c_str());
        return false;
    }
    if (!p_objSession.controller().setShutterValue(nIndex)) {
        complain("the module refused maximum shutter %d", vecList[static_cast<size_t>(nIndex)]);
        return false;
    }
    return showPosition(p_objSession, "now ");
}

bool cmdShutterUp(Session& p_objSession, const CommandLine&) {
    return step(p_objSession, true);
}

bool cmdShutterDown(Session& p_objSession, const CommandLine&) {
    return step(p_objSession, false);
}
