// The simulated sensor and clock: day and night through the light level, the
// device's time of day, commands made to fail, the sensor's own values and
// the log of the module's ISP calls.
#include <algorithm>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "tools/ChannelHost.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/ParamNames.h"
#include "tools/Session.h"
#include "tools/SimulatorControl.h"
#include "tools/ToolClock.h"
#include "tools/ValueParsing.h"

namespace {

constexpr int ANY = -1;
constexpr int DEFAULT_FAIL_CODE = -1;
constexpr size_t DEFAULT_LOG_LINES = 10;
constexpr int POLICY_DAY_NIGHT = 2;

struct OptionName {
    const char* szName;
    int nOption;
};
constexpr std::array<OptionName, 6> OPTION_NAMES = {{{"set", IA_CMD_OPT_SET},
                                                     {"get", IA_CMD_OPT_GET},
                                                     {"range", IA_CMD_OPT_GET_PARAM_RNAGE},
                                                     {"correct", IA_CMD_OPT_CORRECT_PARAM},
                                                     {"status", IA_CMD_OPT_GET_EXEC_STATUS},
                                                     {"any", ANY}}};

const char* optionName(int p_nOption) {
    for (const OptionName& stName : OPTION_NAMES) {
        if (stName.nOption == p_nOption) {
            return stName.szName;
        }
    }
    return "?";
}

bool optionFromText(const std::string& p_strText, int& p_nOption) {
    for (const OptionName& stName : OPTION_NAMES) {
        if (p_strText == stName.szName) {
            p_nOption = stName.nOption;
            return true;
        }
    }
    complain("option '%s' is none of set, get, range, correct, status, any", p_strText.c_str());
    return false;
}

// An ISP command given as a number or as a key name (then the key's command).
bool commandArg(Session& p_objSession, const CommandLine& p_objLine, size_t p_nIndex, u32& p_nCmd) {
    int nNumber = 0;
    if (parseInt(p_objLine.arg(p_nIndex), nNumber) && nNumber >= 0) {
        p_nCmd = static_cast<u32>(nNumber);
        return true;
    }
    u32 nKey = 0;
    if (!p_objSession.keyArg(p_objLine, p_nIndex, nKey)) {
        return false;
    }
    p_nCmd = ispCommandOf(nKey);
    return true;
}

// What the light means for the current channel's schemes.
void explainDayNight(Session& p_objSession) {
    SimulatorControl& objSim = p_objSession.simulator();
    const bool bNight = objSim.isNight(p_objSession.ispChannel());
    say("  light level %d: the ISP reports %s", objSim.lightLevel(p_objSession.ispChannel()),
        bNight ? "night (state 1)" : "day (state 0)");
    int nPolicy = 0;
    int nMode = 0;
    p_objSession.controller().getParameter(KEY_SCHEME_MODE, nPolicy);
    p_objSession.controller().getParamMode(nMode);
    if (nPolicy == POLICY_DAY_NIGHT && nMode != 0) {
        say("  the sensor thread moves to scheme %d within a second", bNight ? 1 : 0);
    } else {
        say("  schemes do not follow (policy and mode: %s); set 8000 to 2 in scheme 0 for "
            "day/night",
            p_objSession.schemeSummary().c_str());
    }
}

void setDayOrNight(Session& p_objSession, bool p_bNight) {
    SimulatorControl& objSim = p_objSession.simulator();
    const isp::IspDayNight& stThresholds = objSim.thresholds(p_objSession.ispChannel());
    objSim.setLightLevel(p_bNight ? stThresholds.nightThreshold : stThresholds.dayThreshold);
    explainDayNight(p_objSession);
}

void printLogEntry(const IspSimulator::LogEntry& p_stEntry) {
    const std::string strData =
        p_stEntry.bytes.empty() ? std::to_string(p_stEntry.value)
                                : "record of " + std::to_string(p_stEntry.bytes.size()) + " bytes";
    say("  ch%d %-7s %-36s %s%s", p_stEntry.channel, optionName(p_stEntry.option),
        ispCommandLabel(p_stEntry.cmd).c_str(), strData.c_str(),
        p_stEntry.result != 0 ? (" -> failed " + std::to_string(p_stEntry.result)).c_str() : "");
}

} // namespace

bool cmdSimulator(Session& p_objSession, const CommandLine&) {
    SimulatorControl& objSim = p_objSession.simulator();
    say("  ISP profile %s (%s)", objSim.profileName().c_str(), objSim.profileSource().c_str());
    for (size_t i = 0; i < p_objSession.host().count(); ++i) {
        const int nIsp = p_objSession.host().channel(i).getCameraID() - 1;
        const isp::IspDayNight& stDayNight = objSim.thresholds(nIsp);
        say("  ISP channel %d: %s, light level %d (night at %d or darker, day at %d or brighter)",
            nIsp, objSim.isNight(nIsp) ? "night" : "day", objSim.lightLevel(nIsp),
            stDayNight.nightThreshold, stDayNight.dayThreshold);
    }
    const VXTime stNow = p_objSession.clock().now();
    say("  time of day %02d:%02d:%02d (%s)", stNow.hour, stNow.minute, stNow.second,
        p_objSession.clock().isTimeSet() ? "set with 'time'" : "the machine's clock");
    if (objSim.failures().empty()) {
        say("  no command is made to fail");
    }
    for (const SimulatorControl::Failure& stFailure : objSim.failures()) {
        say("  failing: ISP channel %d, %s, option %s -> %d", stFailure.nIspChannel,
            ispCommandLabel(stFailure.nCmd).c_str(), optionName(stFailure.nOption),
            stFailure.nCode);
    }
    return true;
}

bool cmdDay(Session& p_objSession, const CommandLine&) {
    setDayOrNight(p_objSession, false);
    return true;
}

bool cmdNight(Session& p_objSession, const CommandLine&) {
    setDayOrNight(p_objSession, true);
    return true;
}

bool cmdLight(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        int nLevel = 0;
        if (!p_objSession.intArg(p_objLine, 0, "light level", nLevel)) {
            return false;
        }
        p_objSession.simulator().setLightLevel(nLevel);
    }
    explainDayNight(p_objSession);
    return true;
}

bool cmdTime(Session& p_objSession, const CommandLine& p_objLine) {
    ToolClock& objClock = p_objSession.clock();
    if (p_objLine.argCount() == 1) {
        int nHour = 0;
        int nMinute = 0;
        int nSecond = 0;
        if (p_objLine.arg(0) == "real") {
            objClock.useRealTime();
        } else if (!parseTimeOfDay(p_objLine.arg(0), nHour, nMinute, nSecond) ||
                   !objClock.setTimeOfDay(nHour, nMinute, nSecond)) {
            complain("'%s' is not a time of day such as 07:30 or 18:00:05, nor 'real'",
                     p_objLine.arg(0).c_str());
            return false;
        }
    }
    const VXTime stNow = objClock.now();
    say("  time of day %02d:%02d:%02d (%s)", stNow.hour, stNow.minute, stNow.second,
        objClock.isTimeSet() ? "set" : "the machine's clock");
    return true;
}

bool cmdFail(Session& p_objSession, const CommandLine& p_objLine) {
    SimulatorControl& objSim = p_objSession.simulator();
    if (p_objLine.argCount() == 0) {
        return cmdSimulator(p_objSession, p_objLine);
    }
    if (p_objLine.arg(0) == "clear") {
        if (p_objLine.argCount() > 1) {
            complain("usage: fail clear");
            return false;
        }
        objSim.clearFailures();
        say("  no command is made to fail");
        return true;
    }
    u32 nCmd = 0;
    int nOption = ANY;
    int nCode = DEFAULT_FAIL_CODE;
    if (!commandArg(p_objSession, p_objLine, 0, nCmd) ||
        (p_objLine.argCount() > 1 && !optionFromText(p_objLine.arg(1), nOption)) ||
        (p_objLine.argCount() > 2 && !p_objSession.intArg(p_objLine, 2, "code", nCode))) {
        return false;
    }
    if (nCode == 0) {
        complain("a failure code must not be 0 (0 is success)");
        return false;
    }
    objSim.addFailure({p_objSession.ispChannel(), nCmd, nOption, nCode});
    say("  ISP channel %d: %s now fails %s calls with %d", p_objSession.ispChannel(),
        ispCommandLabel(nCmd).c_str(), optionName(nOption), nCode);
    return true;
}

bool cmdIsp(Session& p_objSession, const CommandLine& p_objLine) {
    u32 nCmd = 0;
    if (!commandArg(p_objSession, p_objLine, 0, nCmd)) {
        return false;
    }
    IspSimulator& objIsp = p_objSession.simulator().isp();
    const int nChannel = p_objSession.ispChannel();
    if (p_objLine.argCount() == 2) {
        int nValue = 0;
        if (!p_objSession.intArg(p_objLine, 1, "value", nValue)) {
            return false;
        }
        if (!objIsp.setValue(nChannel, nCmd, nValue)) {
            complain("command %u moves a record, not one value", nCmd);
            return false;
        }
    }
    const std::optional<int32_t> nValue = objIsp.getValue(nChannel, nCmd);
    if (!nValue) {
        complain("command %u moves a record, not one value", nCmd);
        return false;
    }
    say("  sensor (ISP channel %d): %s = %d", nChannel, ispCommandLabel(nCmd).c_str(), *nValue);
    return true;
}

bool cmdLog(Session& p_objSession, const CommandLine& p_objLine) {
    IspSimulator& objIsp = p_objSession.simulator().isp();
    if (p_objLine.argCount() == 1 && p_objLine.arg(0) == "clear") {
        objIsp.clearLog();
        say("  ISP call log cleared");
        return true;
    }
    int nLines = static_cast<int>(DEFAULT_LOG_LINES);
    if (p_objLine.argCount() == 1 && (!parseInt(p_objLine.arg(0), nLines) || nLines < 1)) {
        complain("'%s' is neither a number of calls nor 'clear'", p_objLine.arg(0).c_str());
        return false;
    }
    const std::vector<IspSimulator::LogEntry> vecLog = objIsp.log();
    const size_t nShown = std::min(vecLog.size(), static_cast<size_t>(nLines));
    say("  the last %zu of %zu ISP calls:", nShown, vecLog.size());
    for (size_t i = vecLog.size() - nShown; i < vecLog.size(); ++i) {
        printLogEntry(vecLog[i]);
    }
    return true;
}
