// The motorised lens: zoom, focus and iris positions and steps, the lock the
// host sets, the lens module's own reports, and the field-of-view alignment.
#include "controller/ISensorController.h"
#include "platform/SensorZoomFocusParam.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/Session.h"

namespace {

constexpr int RATIO_UNIT = 1000;
// getZoomValue leaves the ratio alone beyond the last breakpoint.
constexpr int RATIO_UNSET = -1;

// One step or one setting: says the module accepted it, or that it was
// refused. Without a lens, or under the lock, the module accepts lens
// commands without sending them.
bool reportDone(bool p_bDone, const char* p_szWhat) {
    if (!p_bDone) {
        complain("%s: refused by the ISP", p_szWhat);
        return false;
    }
    say("  %s: accepted", p_szWhat);
    return true;
}

bool reportRead(bool p_bDone, const char* p_szWhat, long long p_nValue) {
    if (!p_bDone) {
        complain("%s cannot be read: refused by the ISP", p_szWhat);
        return false;
    }
    say("  %s %lld", p_szWhat, p_nValue);
    return true;
}

// A setting given as the first argument, sent through p_fnSet.
template <typename Setter>
bool setFromArg(Session& p_objSession, const CommandLine& p_objLine, const char* p_szWhat,
                Setter p_fnSet) {
    int nValue = 0;
    if (!p_objSession.intArg(p_objLine, 0, p_szWhat, nValue)) {
        return false;
    }
    const std::string strWhat = std::string(p_szWhat) + " " + std::to_string(nValue);
    return reportDone(p_fnSet(p_objSession.controller(), nValue), strWhat.c_str());
}

} // namespace

bool cmdZoom(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        return setFromArg(p_objSession, p_objLine, "zoom position",
                          [](ISensorController& c, int v) { return c.setZoomValue(v); });
    }
    int nPos = 0;
    int nRatio = RATIO_UNSET;
    if (!p_objSession.controller().getZoomValue(nPos, nRatio)) {
        complain("the zoom position cannot be read: refused by the ISP");
        return false;
    }
    if (nRatio == RATIO_UNSET) {
        say("  zoom position %d (no ratio: no lens, or beyond the 16x breakpoint)", nPos);
    } else {
        say("  zoom position %d, ratio %d.%03dx", nPos, nRatio / RATIO_UNIT, nRatio % RATIO_UNIT);
    }
    return true;
}

bool cmdZoomIn(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().zoomIn(), "zoom in");
}

bool cmdZoomOut(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().zoomOut(), "zoom out");
}

bool cmdFocus(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        return setFromArg(p_objSession, p_objLine, "focus position",
                          [](ISensorController& c, int v) { return c.setFocusValue(v); });
    }
    int nValue = 0;
    const bool bRead = p_objSession.controller().getFocusValue(nValue);
    return reportRead(bRead, "focus position", nValue);
}

bool cmdFocusNear(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().focusNear(), "focus near");
}

bool cmdFocusFar(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().focusFar(), "focus far");
}

bool cmdFocusMode(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        return setFromArg(p_objSession, p_objLine, "focus mode",
                          [](ISensorController& c, int v) { return c.setFocusMode(v); });
    }
    int nValue = 0;
    const bool bRead = p_objSession.controller().getFocusMode(nValue);
    return reportRead(bRead, "focus mode", nValue);
}

bool cmdIris(Session& p_objSession, const CommandLine& p_objLine) {
    ISensorController& objController = p_objSession.controller();
    if (p_objLine.argCount() == 1) {
        int nAsked = 0;
        if (!p_objSession.intArg(p_objLine, 0, "iris value", nAsked)) {
            return false;
        }
        if (!objController.setIrisValue(nAsked)) {
            complain("iris %d: refused by the ISP (exposure mode 3 or the position)", nAsked);
            return false;
        }
    }
    int nValue = 0;
    const bool bRead = objController.getIrisValue(nValue);
    return reportRead(bRead, "iris position", nValue);
}

bool cmdIrisUp(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().irisUp(), "iris up");
}

bool cmdIrisDown(Session& p_objSession, const CommandLine&) {
    return reportDone(p_objSession.controller().irisDown(), "iris down");
}

bool cmdPtz(Session& p_objSession, const CommandLine& p_objLine) {
    return setFromArg(p_objSession, p_objLine, "PTZ run state",
                      [](ISensorController& c, int v) { return c.setPTZRunState(v); });
}

bool cmdAfStatistic(Session& p_objSession, const CommandLine&) {
    unsigned int nValue = 0;
    const bool bRead = p_objSession.controller().getAFStatistic(nValue);
    return reportRead(bRead, "auto-focus statistic", nValue);
}

bool cmdExecStatus(Session& p_objSession, const CommandLine& p_objLine) {
    int nCmd = 0;
    if (!p_objSession.intArg(p_objLine, 0, "command", nCmd)) {
        return false;
    }
    int nStatus = 0;
    const std::string strWhat = "execution status of command " + std::to_string(nCmd);
    const bool bRead = p_objSession.controller().getCmdExecStatus(nCmd, nStatus);
    return reportRead(bRead, strWhat.c_str(), nStatus);
}

bool cmdVersion(Session& p_objSession, const CommandLine&) {
    std::string strVersion;
    if (!p_objSession.controller().getCameraVerInf(strVersion)) {
        complain("the lens module's version cannot be read: refused by the ISP");
        return false;
    }
    say("  lens module version '%s'", strVersion.c_str());
    return true;
}

bool cmdLock(Session& p_objSession, const CommandLine& p_objLine) {
    ISensorController& objController = p_objSession.controller();
    SensorZoomFocusParam objParam;
    objController.getSensorZoomFocusParam(objParam);
    if (p_objLine.argCount() == 1) {
        bool bOn = false;
        if (!p_objSession.switchArg(p_objLine, 0, bOn)) {
            return false;
        }
        objParam.setLockZoomFocusEnable(bOn);
        objController.setSensorZoomFocusParam(objParam);
    }
    say("  zoom/focus lock %s%s", objParam.getLockZoomFocusEnable() ? "on" : "off",
        objParam.getLockZoomFocusEnable() ? ": lens commands are answered but not sent" : "");
    return true;
}

bool cmdSyncFov(Session& p_objSession, const CommandLine&) {
    p_objSession.controller().sync_fov();
    say("  field of view aligned from /mnt/mtd/hd1/program/config/sync_fov.ini (one line "
        "printed per line read)");
    return true;
}
