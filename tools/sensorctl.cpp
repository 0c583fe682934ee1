// sensorctl: the camera's host application, simulated. Copies a sample device
// into a working root, brings its channels up on the ISP simulator as a host
// does, and takes commands for every operation of the module.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

#include "controller/ISensorController.h"
#include "tools/ChannelHost.h"
#include "tools/CommandLoop.h"
#include "tools/Console.h"
#include "tools/DeviceWorkspace.h"
#include "tools/HostBringUp.h"
#include "tools/Options.h"
#include "tools/Session.h"
#include "tools/SimulatorControl.h"
#include "tools/ToolClock.h"

namespace {

constexpr int EXIT_COMMANDS_FAILED = 1;
constexpr int EXIT_BAD_USE = 2;

void printWorkspace(const DeviceWorkspace& p_objWorkspace, const SimulatorControl& p_objSim) {
    say("sensorctl: device %s, working root %s (%s)", p_objWorkspace.source().c_str(),
        p_objWorkspace.root().c_str(),
        p_objWorkspace.isNew() ? "new copy" : "kept from earlier runs");
    say("ISP profile %s (%s); the module's start-up output follows", p_objSim.profileName().c_str(),
        p_objSim.profileSource().c_str());
}

// The channels as they came up. Reading each style here keeps the module's
// pruning output together with the rest of its start-up output.
void printChannels(Session& p_objSession) {
    ChannelHost& objHost = p_objSession.host();
    std::vector<std::string> vecLines;
    for (size_t i = 0; i < objHost.count(); ++i) {
        p_objSession.selectChannel(static_cast<int>(i + 1));
        ISensorController& objController = p_objSession.controller();
        p_objSession.style();
        const size_t nParameters = p_objSession.schemeKeys().size();
        char szLine[256];
        std::snprintf(szLine, sizeof(szLine), "channel %zu: %s, %s%s, %zu parameters", i + 1,
                      objController.getSensorStatus() == 1 ? "up" : "NOT up",
                      p_objSession.schemeSummary().c_str(),
                      objController.isThermalChannel() ? ", thermal" : "", nParameters);
        vecLines.push_back(szLine);
    }
    say("machine: type %d, %s, %s", objHost.machine().getDeviceType(),
        objHost.machine().getHardwareModel().c_str(), objHost.machine().getHardwareCode().c_str());
    for (const std::string& strLine : vecLines) {
        say("%s", strLine.c_str());
    }
}

int runSession(Session& p_objSession, const Options& p_stOptions) {
    if (!p_objSession.selectChannel(p_stOptions.nChannel)) {
        return EXIT_BAD_USE;
    }
    int nFailed = 0;
    if (!p_stOptions.strScript.empty()) {
        std::ifstream objScript(p_stOptions.strScript);
        if (!objScript) {
            complain("cannot read the script %s", p_stOptions.strScript.c_str());
            return EXIT_BAD_USE;
        }
        nFailed += runCommandStream(p_objSession, objScript, false);
    }
    const bool bInteractive = p_stOptions.vecCommands.empty() && isatty(STDIN_FILENO) != 0;
    if (bInteractive && !p_objSession.quitRequested()) {
        say("type 'help' for the commands, 'quit' to leave");
    }
    if (!p_objSession.quitRequested()) {
        nFailed += p_stOptions.vecCommands.empty()
                       ? runCommandStream(p_objSession, std::cin, bInteractive)
                       : runCommandList(p_objSession, p_stOptions.vecCommands);
    }
    if (nFailed > 0 && !bInteractive) {
        say("%d command%s failed", nFailed, nFailed == 1 ? "" : "s");
    }
    return nFailed > 0 && !bInteractive ? EXIT_COMMANDS_FAILED : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    Options stOptions;
    std::string strError;
    if (!parseOptions(argc, argv, stOptions, strError)) {
        complain("%s", strError.c_str());
        printUsage();
        return EXIT_BAD_USE;
    }
    if (stOptions.bHelp) {
        printUsage();
        return EXIT_SUCCESS;
    }
    HostBringUp objBringUp(stOptions.strDevice, stOptions.strRoot);
    if (!objBringUp.prepareRoot(stOptions.bFresh, strError)) {
        complain("%s", strError.c_str());
        return EXIT_BAD_USE;
    }
    printWorkspace(objBringUp.workspace(), objBringUp.simulator());
    if (!objBringUp.bringUpChannels(strError)) {
        complain("%s", strError.c_str());
        return EXIT_BAD_USE;
    }
    Session objSession(objBringUp.host(), objBringUp.clock(), objBringUp.simulator(),
                       objBringUp.workspace());
    printChannels(objSession);
    return runSession(objSession, stOptions);
}
