// sensorctl: the host application, simulated. Brings up a channel of a sample
// device on the ISP simulator and reports what the controller knows.
#include <cstdio>
#include <cstring>
#include <string>

#include "controller/ISensorController.h"
#include "platform/DeviceRoot.h"
#include "platform/MachineInfo.h"
#include "platform/SystemInfoParser.h"
#include "tools/DeviceWorkspace.h"

namespace {

struct Options {
    std::string strDevice = "ipc";
    std::string strRoot;
    int nChannel = 1;
};

void printUsage() {
    std::printf("usage: sensorctl [--device ipc|dome|thermal|lpr|PATH] [--root DIR] "
                "[--channel N]\n");
}

bool parseOptions(int argc, char** argv, Options& p_stOptions) {
    for (int i = 1; i < argc; ++i) {
        const std::string strArg = argv[i];
        const bool bHasValue = i + 1 < argc;
        if (strArg == "--device" && bHasValue) {
            p_stOptions.strDevice = argv[++i];
        } else if (strArg == "--root" && bHasValue) {
            p_stOptions.strRoot = argv[++i];
        } else if (strArg == "--channel" && bHasValue) {
            p_stOptions.nChannel = std::atoi(argv[++i]);
        } else {
            std::fprintf(stderr, "sensorctl: unknown or incomplete option '%s'\n", strArg.c_str());
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Options stOptions;
    if (!parseOptions(argc, argv, stOptions)) {
        printUsage();
        return 2;
    }
    DeviceWorkspace objWorkspace(stOptions.strDevice, stOptions.strRoot);
    std::string strError;
    if (!objWorkspace.prepare(strError)) {
        std::fprintf(stderr, "sensorctl: %s\n", strError.c_str());
        return 1;
    }
    DeviceRoot::set(objWorkspace.root());

    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine);

    ISensorController objController;
    objController.setChannelID(stOptions.nChannel);
    std::printf("device root : %s\n", objWorkspace.root().c_str());
    std::printf("device type : %d (%s, %s)\n", objMachine.getDeviceType(),
                objMachine.getHardwareModel().c_str(), objMachine.getHardwareCode().c_str());
    std::printf("camera id   : %d\n", objController.getCameraID());
    std::printf("thermal     : %s\n", objController.isThermalChannel() ? "yes" : "no");
    std::printf("status      : %d\n", objController.getSensorStatus());
    return 0;
}
