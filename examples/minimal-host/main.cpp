// A minimal host: brings up channel 1 of a sample device on the ISP
// simulator, sets brightness and reads it back.
//
//   minimal-host DEVICE_ROOT
//
// DEVICE_ROOT is a writable copy of a sample device (share/sensordll/devices/ipc):
// the module writes its parameter files there.
#include <sensordll/common/SensorKeys.h>
#include <sensordll/controller/ISensorController.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DEVICE_ROOT\n", argv[0]);
        return 2;
    }
    // Every device path of the module lies under the root; the simulator plays
    // the sensor the device describes.
    const std::string strRoot = argv[1];
    setenv("SENSOR_DEVICE_ROOT", strRoot.c_str(), 1);
    setenv("SENSOR_ISP_PROFILE", (strRoot + "/isp_profile.xml").c_str(), 1);

    // The channel's entry of the device's module configuration, as the host
    // framework would hand it over.
    ModuleConfigure objModule;
    objModule.setModuleId(1);
    objModule.setDetail("(max_scheme=4)(lensId=0)(isInfrared=1)");

    ISensorController objChannel;
    objChannel.setChannelID(1);
    if (!objChannel.init(objModule)) {
        std::fprintf(stderr, "channel 1 did not come up\n");
        return 1;
    }
    const int nWanted = 60;
    int nRead = -1;
    const int nResult = objChannel.setParameter(KEY_BRIGHTNESS, nWanted, true);
    const bool bRead = objChannel.getParameter(KEY_BRIGHTNESS, nRead);
    objChannel.uinit();

    std::printf("brightness: set %d -> result %d, read back %d\n", nWanted, nResult, nRead);
    if (nResult != SNS_SUCCESS || !bRead || nRead != nWanted) {
        std::fprintf(stderr, "brightness was not set\n");
        return 1;
    }
    return 0;
}
