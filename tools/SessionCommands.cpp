// The session's own commands: help, leaving, choosing a channel, the overview,
// the module's debug level and pausing.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "controller/ISensorController.h"
#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/VXFile.h"
#include "tools/ChannelHost.h"
#include "tools/CommandHandlers.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DeviceWorkspace.h"
#include "tools/Session.h"
#include "tools/SimulatorControl.h"
#include "tools/ToolClock.h"
#include "tools/ValueParsing.h"

namespace {

constexpr const char* DEBUG_SIGN_FILE = "/tmp/Debug.sign";
constexpr int DEBUG_LEVEL_MIN = -1;
constexpr int DEBUG_LEVEL_MAX = 9;
constexpr double SLEEP_MAX_SEC = 60.0;

// What the module shows at a debug level.
const char* debugLevelMeaning(int p_nLevel) {
    if (p_nLevel < 0) {
        return "nothing, not even failed checks";
    }
    if (p_nLevel <= 3) {
        return "failed checks only";
    }
    if (p_nLevel <= 5) {
        return "failed checks and warnings";
    }
    if (p_nLevel == 6) {
        return "checks, warnings, debug, error and per-key traces";
    }
    return "everything, info lines included";
}

void listCommands() {
    for (const CommandGroup& stGroup : commandGroups()) {
        say("%s:", stGroup.szTitle);
        for (const Command& stCommand : stGroup.vecCommands) {
            say("  %-32s %s", commandUsage(stCommand).c_str(), stCommand.szHelp);
        }
    }
    say("Keys are numbers (34) or names (brightness, KEY_BRIGHTNESS).");
}

// The level the marker file sets, as the module reads it (first line, atoi).
bool readDebugLevel(int& p_nLevel) {
    std::string strText;
    if (readDeviceFile(DEBUG_SIGN_FILE, inputcap::MARKER_FILE_MAX, strText, Oversize::TakePrefix) !=
        ReadStatus::Ok) {
        return false;
    }
    const std::string strLine = strText.substr(0, strText.find('\n'));
    p_nLevel = strLine.empty() ? 1 : std::atoi(strLine.c_str());
    return true;
}

} // namespace

bool cmdHelp(Session&, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 0) {
        listCommands();
        return true;
    }
    const Command* pCommand = findCommand(p_objLine.arg(0));
    if (pCommand == nullptr) {
        complain("unknown command '%s' (type 'help' for the list)", p_objLine.arg(0).c_str());
        return false;
    }
    say("%s: %s", commandUsage(*pCommand).c_str(), pCommand->szHelp);
    return true;
}

bool cmdQuit(Session& p_objSession, const CommandLine&) {
    p_objSession.requestQuit();
    return true;
}

bool cmdChannel(Session& p_objSession, const CommandLine& p_objLine) {
    if (p_objLine.argCount() == 1) {
        int nChannel = 0;
        if (!p_objSession.intArg(p_objLine, 0, "channel", nChannel) ||
            !p_objSession.selectChannel(nChannel)) {
            return false;
        }
    }
    ISensorController& objController = p_objSession.controller();
    say("channel %d of %zu: camera id %d%s, %s", p_objSession.channelNumber(),
        p_objSession.host().count(), objController.getCameraID(),
        objController.isThermalChannel() ? ", thermal" : "", p_objSession.schemeSummary().c_str());
    return true;
}

bool cmdStatus(Session& p_objSession, const CommandLine&) {
    ChannelHost& objHost = p_objSession.host();
    say("device       : %s (root %s)", p_objSession.workspace().source().c_str(),
        p_objSession.workspace().root().c_str());
    say("machine      : type %d, %s, %s", objHost.machine().getDeviceType(),
        objHost.machine().getHardwareModel().c_str(), objHost.machine().getHardwareCode().c_str());
    const int nCurrent = p_objSession.channelNumber();
    for (size_t i = 0; i < objHost.count(); ++i) {
        p_objSession.selectChannel(static_cast<int>(i + 1));
        ISensorController& objController = p_objSession.controller();
        say("channel %zu%s  : camera id %d, sensor type %d, %s, %u user schemes%s", i + 1,
            static_cast<int>(i + 1) == nCurrent ? "*" : " ", objController.getCameraID(),
            objController.getSensorType(), objController.getSensorStatus() == 1 ? "up" : "down",
            objController.getSchemeSum(), objController.isThermalChannel() ? ", thermal" : "");
        say("               %s; module detail %s", p_objSession.schemeSummary().c_str(),
            objHost.module(i).getDetail().c_str());
    }
    p_objSession.selectChannel(nCurrent);
    const VXTime stNow = p_objSession.clock().now();
    say("simulator    : %s, light %d; time of day %02d:%02d:%02d (%s)",
        p_objSession.simulator().isNight(p_objSession.ispChannel()) ? "night" : "day",
        p_objSession.simulator().lightLevel(p_objSession.ispChannel()), stNow.hour, stNow.minute,
        stNow.second, p_objSession.clock().isTimeSet() ? "set" : "machine clock");
    return true;
}

bool cmdDebug(Session&, const CommandLine& p_objLine) {
    const std::string strPath = DeviceRoot::resolve(DEBUG_SIGN_FILE);
    if (p_objLine.argCount() == 1 && p_objLine.arg(0) == "off") {
        std::error_code ec;
        std::filesystem::remove(strPath, ec);
        say("debug level 1 (no %s): %s", DEBUG_SIGN_FILE, debugLevelMeaning(1));
        return true;
    }
    if (p_objLine.argCount() == 1) {
        int nLevel = 0;
        if (!parseInt(p_objLine.arg(0), nLevel) || nLevel < DEBUG_LEVEL_MIN ||
            nLevel > DEBUG_LEVEL_MAX) {
            complain("debug level '%s' is not a number from %d to %d, or off",
                     p_objLine.arg(0).c_str(), DEBUG_LEVEL_MIN, DEBUG_LEVEL_MAX);
            return false;
        }
        // The second line is the abort switch; a tool that aborts on the
        // first failed check would be no use, so it stays off. The marker is
        // replaced, never opened: whatever stood there (a FIFO would block a
        // writer) becomes a regular file, and a reader sees all of it or none.
        const std::string strText = std::to_string(nLevel) + "\n0\n";
        VXFile objFile;
        if (!objFile.open(DEBUG_SIGN_FILE, VXFile::modeWrite | VXFile::modeTruncate) ||
            objFile.write(strText.data(), static_cast<unsigned>(strText.size())) !=
                static_cast<int>(strText.size()) ||
            !objFile.close()) {
            complain("cannot write %s", strPath.c_str());
            return false;
        }
    }
    int nLevel = 1;
    const bool bMarker = readDebugLevel(nLevel);
    say("debug level %d (%s): %s", nLevel, bMarker ? "from /tmp/Debug.sign" : "no /tmp/Debug.sign",
        debugLevelMeaning(nLevel));
    return true;
}

bool cmdSleep(Session&, const CommandLine& p_objLine) {
    char* pEnd = nullptr;
    const std::string& strText = p_objLine.arg(0);
    const double dSeconds = std::strtod(strText.c_str(), &pEnd);
    if (strText.empty() || *pEnd != '\0' || !(dSeconds >= 0.0 && dSeconds <= SLEEP_MAX_SEC)) {
        complain("'%s' is not a number of seconds from 0 to 60", strText.c_str());
        return false;
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(dSeconds));
    return true;
}
