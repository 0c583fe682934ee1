#include "tools/CommandTable.h"

#include "tools/CommandHandlers.h"

namespace {

constexpr size_t MANY = 64;

std::vector<CommandGroup> buildGroups() {
    return {
        {"session",
         {
             {"help", "[COMMAND]", "list the commands, or explain one", 0, 1, cmdHelp},
             {"quit", "", "take the channels down and leave (also: exit)", 0, 0, cmdQuit},
             {"exit", "", "the same as quit", 0, 0, cmdQuit},
             {"channel", "[N]", "show or choose the channel the commands act on", 0, 1, cmdChannel},
             {"status", "", "device, channels, scheme, mode, time window and simulator", 0, 0,
              cmdStatus},
             {"debug", "[LEVEL|off]", "show or set the module's debug level (/tmp/Debug.sign)", 0,
              1, cmdDebug},
             {"sleep", "SECONDS", "pause (0.1 to 60 s) while the sensor thread runs", 1, 1,
              cmdSleep},
         }},
        {"parameters",
         {
             {"get", "KEY...", "read parameters by number or name (34, brightness)", 1, MANY,
              cmdGet},
             {"set", "KEY VALUE [nocache]", "set one parameter; shows what changed and was stored",
              2, 3, cmdSet},
             {"sets", "TEXT [nocache]", "set parameters in text form: (34,60)(2337,100)", 1, 2,
              cmdSetText},
             {"gets", "IDS", "read parameters in text form: (34,2337,49)", 1, 1, cmdGetText},
             {"all", "", "every parameter of the current scheme, as the host reads them", 0, 0,
              cmdAll},
             {"range", "KEY", "the values the ISP allows for a shutter, iris or focus key", 1, 1,
              cmdRange},
             {"keycmd", "KEY", "the key-command row: ISP command and handler", 1, 1, cmdKeyCmd},
             {"check", "(A,B,C)", "the raw diagnostic pass-through (B=2 reads)", 1, 1, cmdCheck},
         }},
        {"schemes",
         {
             {"scheme", "[N]", "show the current scheme, or switch to N (the last is factory)", 0,
              1, cmdScheme},
             {"mode", "[auto|manual]", "show or set whether the thread may switch schemes", 0, 1,
              cmdMode},
             {"window", "", "the current scheme's time window and its check", 0, 0, cmdWindow},
             {"judge", "", "which scheme's time window holds the time of day", 0, 0, cmdJudge},
             {"waitscheme", "N [SECONDS]", "wait (default 5 s) until scheme N is current", 1, 2,
              cmdWaitScheme},
         }},
        {"flash and resets",
         {
             {"flush", "", "store the current scheme on flash; shows what changed there", 0, 0,
              cmdFlush},
             {"flash", "[SCHEME [KEY...]]", "what a scheme's file on flash holds", 0, MANY,
              cmdFlash},
             {"restore", "KEY", "send the stored value of a key to the ISP again", 1, 1,
              cmdRestore},
             {"restoreae", "", "send the stored focus and exposure modes again", 0, 0,
              cmdRestoreAe},
             {"resetlast", "", "undo unsaved changes: apply the scheme's file again", 0, 0,
              cmdResetLast},
             {"reset", "", "factory reset of the channel (files removed and rebuilt)", 0, 0,
              cmdReset},
             {"pending", "", "values a refused ISP command kept from the ISP, still to send", 0, 0,
              cmdPending},
         }},
        {"style",
         {
             {"style", "[TAB]", "the pruned style as a tree, with current values", 0, 1, cmdStyle},
             {"uifiles", "[ID]", "the UI common and language file names", 0, 1, cmdUiFiles},
         }},
        {"lens",
         {
             {"zoom", "[POSITION]", "show zoom position and ratio, or move there", 0, 1, cmdZoom},
             {"zoomin", "", "one zoom step in", 0, 0, cmdZoomIn},
             {"zoomout", "", "one zoom step out", 0, 0, cmdZoomOut},
             {"focus", "[POSITION]", "show or set the focus position", 0, 1, cmdFocus},
             {"focusnear", "", "one focus step near", 0, 0, cmdFocusNear},
             {"focusfar", "", "one focus step far", 0, 0, cmdFocusFar},
             {"focusmode", "[MODE]", "show or set the focus mode", 0, 1, cmdFocusMode},
             {"iris", "[VALUE]", "show or set the iris (256..25600; more opens fully)", 0, 1,
              cmdIris},
             {"irisup", "", "one iris step up", 0, 0, cmdIrisUp},
             {"irisdown", "", "one iris step down", 0, 0, cmdIrisDown},
             {"ptz", "STATE", "tell the lens the PTZ run state", 1, 1, cmdPtz},
             {"afstat", "", "the auto-focus statistic", 0, 0, cmdAfStatistic},
             {"execstatus", "CMD", "the ISP's execution status of a command", 1, 1, cmdExecStatus},
             {"version", "", "the lens module's version text", 0, 0, cmdVersion},
             {"lock", "[on|off]", "show or set the zoom/focus lock", 0, 1, cmdLock},
             {"syncfov", "", "align the zoom with the calibration file now", 0, 0, cmdSyncFov},
         }},
        {"shutter",
         {
             {"shutter", "[INDEX]", "the maximum shutter in the ISP's list, or choose one", 0, 1,
              cmdShutter},
             {"shutterup", "", "the next value of the list", 0, 0, cmdShutterUp},
             {"shutterdown", "", "the previous value of the list", 0, 0, cmdShutterDown},
         }},
        {"features", accessorCommands()},
        {"simulator",
         {
             {"sim", "", "the simulated sensor: profile, day or night, time, failures", 0, 0,
              cmdSimulator},
             {"day", "", "bright light: the ISP turns to day", 0, 0, cmdDay},
             {"night", "", "dim light: the ISP turns to night", 0, 0, cmdNight},
             {"light", "[LEVEL]", "show or set the light level", 0, 1, cmdLight},
             {"time", "[HH:MM[:SS]|real]", "show or set the device's time of day", 0, 1, cmdTime},
             {"fail", "[CMD [OPTION] [CODE]|clear]", "make an ISP command fail (or stop that)", 0,
              3, cmdFail},
             {"isp", "CMD [VALUE]", "read or write the sensor's own value of a command", 1, 2,
              cmdIsp},
             {"log", "[N|clear]", "the last N ISP calls (default 10)", 0, 1, cmdLog},
         }},
    };
}

} // namespace

const std::vector<CommandGroup>& commandGroups() {
    static const std::vector<CommandGroup> s_vecGroups = buildGroups();
    return s_vecGroups;
}

const Command* findCommand(const std::string& p_strName) {
    for (const CommandGroup& stGroup : commandGroups()) {
        for (const Command& stCommand : stGroup.vecCommands) {
            if (p_strName == stCommand.szName) {
                return &stCommand;
            }
        }
    }
    return nullptr;
}

std::string commandUsage(const Command& p_stCommand) {
    std::string strUsage = p_stCommand.szName;
    if (*p_stCommand.szArgs != '\0') {
        strUsage += std::string(" ") + p_stCommand.szArgs;
    }
    return strUsage;
}
