// The field-of-view calibration file, read by channel 1's thread when the
// host asks for the visual channel to follow the thermal one.
#include <string>

#include "FuzzSupport.h"
#include "support/ControllerTestAccess.h"

namespace {

constexpr const char* kCalibrationFile = "/mnt/mtd/hd1/program/config/sync_fov.ini";
constexpr int kSyncFovKey = 8104;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sensorfuzz::FuzzWorld& objWorld = sensorfuzz::FuzzWorld::get();
    objWorld.useSampleDevice("thermal");
    // A lens lets the zoom position reach the ISP.
    ISensorControllerTestAccess::setHasLens(objWorld.channel(), true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    sensorfuzz::FuzzWorld& objWorld = sensorfuzz::FuzzWorld::get();
    objWorld.root().writeFile(kCalibrationFile,
                              std::string(reinterpret_cast<const char*>(p_pData), p_nSize));
    ISensorController& objChannel = objWorld.channel();
    objChannel.sync_fov();
    // The same request through the mailbox that the host's key write fills.
    ISensorController::m_nChanneldDosomething = 1;
    ISensorController::m_nPassKeycmd = kSyncFovKey;
    objChannel.sensorThread();
    return 0;
}
