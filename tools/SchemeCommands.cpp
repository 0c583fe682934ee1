// Schemes and the scheme mode: switching by hand (with what the switch
// applied), the time windows, and waiting for the sensor thread to switch.
#include <chrono>
#include <thread>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/ParamSnapshot.h"
#include "tools/Session.h"
#include "tools/ToolClock.h"
#include "tools/ValueParsing.h"
#include "tools/WindowCheck.h"

namespace {

constexpr int DEFAULT_WAIT_SEC = 5;
constexpr int MAX_WAIT_SEC = 60;
constexpr auto POLL_INTERVAL = std::chrono::milliseconds(50);

int currentScheme(ISensorController& p_objController) {
    int nScheme = -1;
    p_objController.getParamScheme(nScheme);
    return nScheme;
}

bool schemeArg(Session& p_objSession, const CommandLine& p_objLine, int& p_nScheme) {
    const u32 nSum = p_objSession.controller().getSchemeSum();
    if (!p_objSession.intArg(p_objLine, 0, "scheme", p_nScheme)) {
        return false;
    }
    if (p_nScheme < 0 || static_cast<u32>(p_nScheme) > nSum) {
        complain("no scheme %d: choose 0 to %u (%u is the factory set)", p_nScheme, nSum, nSum);
        return false;
    }
    return true;
}

std::string windowVerdict(int p_nCheck) {
    const char* szProblem = windowProblem(p_nCheck);
    return szProblem != nullptr ? std::string(szProblem) + ": flush refuses to store it" : "valid";
}

} // namespace

bool cmdScheme(Session& p_objSession, const CommandLine& p_objLine) {
    ISensorController& objController = p_objSession.controller();
    if (p_objLine.argCount() == 0) {
        say("  %s (user schemes 0 to %u)", p_objSession.schemeSummary().c_str(),
            objController.getSchemeSum() - 1);
        return true;
    }
    int nScheme = 0;
    if (!schemeArg(p_objSession, p_objLine, nScheme)) {
        return false;
    }
    const std::vector<u32> vecKeys = p_objSession.schemeKeys();
    const int nOld = currentScheme(objController);
    const ParamValues vecBefore = snapshot(objController, vecKeys);
    if (!objController.setParamScheme(nScheme)) {
        complain("the module refused to switch to %s", p_objSession.schemeLabel(nScheme).c_str());
        return false;
    }
    say("  %s -> %s", p_objSession.schemeLabel(nOld).c_str(),
        p_objSession.schemeLabel(nScheme).c_str());
    const size_t nChanged = printChanges(vecBefore, snapshot(objController, vecKeys));
    say("  %zu parameter%s differ%s", nChanged, nChanged == 1 ? "" : "s", nChanged == 1 ? "s" : "");
    return true;
}

bool cmdMode(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        const std::string& strMode = p_objLine.arg(0);
        const bool bAuto = strMode == "auto" || strMode == "1";
        if (!bAuto && strMode != "manual" && strMode != "0") {
            complain("mode '%s' is neither auto (1) nor manual (0)", strMode.c_str());
            return false;
        }
        p_objSession.controller().setParamMode(bAuto ? 1 : 0);
    }
    int nMode = 0;
    p_objSession.controller().getParamMode(nMode);
    say("  mode %s: %s", nMode != 0 ? "auto" : "manual",
        nMode != 0 ? "the sensor thread follows the scheme policy"
                   : "the sensor thread switches no scheme");
    return true;
}

bool cmdWindow(Session& p_objSession, const CommandLine&) {
    ISensorController& objController = p_objSession.controller();
    const int nCheck = objController.paramCheck();
    say("  %s: window %02d:%02d to %02d:%02d, %s",
        p_objSession.schemeLabel(currentScheme(objController)).c_str(),
        objController.getParamSchemeTime(KEY_SCHEME_START_HOUR),
        objController.getParamSchemeTime(KEY_SCHEME_START_MIN),
        objController.getParamSchemeTime(KEY_SCHEME_END_HOUR),
        objController.getParamSchemeTime(KEY_SCHEME_END_MIN), windowVerdict(nCheck).c_str());
    return true;
}

bool cmdJudge(Session& p_objSession, const CommandLine&) {
    int nScheme = 0;
    int nSchedule = 0;
    p_objSession.controller().judgeCurScheme(nScheme, nSchedule);
    const VXTime stNow = p_objSession.clock().now();
    if (nSchedule != 0) {
        say("  at %02d:%02d scheme %d's window holds the time", stNow.hour, stNow.minute, nScheme);
    } else {
        say("  at %02d:%02d no scheme's window holds the time: scheme 0 by default", stNow.hour,
            stNow.minute);
    }
    return true;
}

bool cmdWaitScheme(Session& p_objSession, const CommandLine& p_objLine) {
    int nScheme = 0;
    int nSeconds = DEFAULT_WAIT_SEC;
    if (!schemeArg(p_objSession, p_objLine, nScheme)) {
        return false;
    }
    if (p_objLine.argCount() == 2 &&
        (!parseInt(p_objLine.arg(1), nSeconds) || nSeconds < 1 || nSeconds > MAX_WAIT_SEC)) {
        complain("'%s' is not a number of seconds from 1 to %d", p_objLine.arg(1).c_str(),
                 MAX_WAIT_SEC);
        return false;
    }
    ISensorController& objController = p_objSession.controller();
    const auto tStart = std::chrono::steady_clock::now();
    const auto tEnd = tStart + std::chrono::seconds(nSeconds);
    while (currentScheme(objController) != nScheme) {
        if (std::chrono::steady_clock::now() >= tEnd) {
            complain("still %s after %d s", p_objSession.schemeSummary().c_str(), nSeconds);
            return false;
        }
        std::this_thread::sleep_for(POLL_INTERVAL);
    }
    // The scheme becomes current as its switch begins; setting the mode to
    // what it is waits until the switch has applied its whole set.
    int nMode = 1;
    objController.getParamMode(nMode);
    objController.setParamMode(nMode);
    const auto nWaited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - tStart);
    say("  %s is current (after %.1f s)", p_objSession.schemeLabel(nScheme).c_str(),
        static_cast<double>(nWaited.count()) / 1000.0);
    return true;
}
