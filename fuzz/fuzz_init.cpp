// A whole channel start-up over fuzzed parameter files and version stamp, as
// a camera meets them after a flash fault.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "config/SensorFile.h"
#include "support/ControllerTestAccess.h"

namespace {

constexpr int kSchemes = 4; // max_scheme of the sample device

std::string schemeFile(int p_nChannel, int p_nScheme) {
    return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_nChannel) + "_" +
           std::to_string(p_nScheme) + ".cfg";
}

void placeFile(const sensortest::TempDeviceRoot& p_objRoot, const std::string& p_strFile,
               FuzzedDataProvider& p_objIn) {
    if (p_objIn.ConsumeBool()) {
        p_objRoot.writeFile(p_strFile, p_objIn.ConsumeRandomLengthString(2048));
    } else {
        std::remove(p_objRoot.hostPath(p_strFile).c_str());
    }
}

u32 stampOnFlash(const sensortest::TempDeviceRoot& p_objRoot) {
    const std::string strStamp = p_objRoot.exists(SENSOR_VERSION_FILE)
                                     ? p_objRoot.readFile(SENSOR_VERSION_FILE)
                                     : std::string();
    u32 nStamp = 0;
    for (std::size_t i = 0; i < 4 && i < strStamp.size(); ++i) {
        nStamp |= static_cast<u32>(static_cast<unsigned char>(strStamp[i])) << (8 * i);
    }
    return strStamp.size() == 4 ? nStamp : ~0u;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sensorfuzz::FuzzWorld::get().useSampleDevice("ipc");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    const sensorfuzz::FuzzWorld& objWorld = sensorfuzz::FuzzWorld::get();
    const sensortest::TempDeviceRoot& objRoot = objWorld.root();
    FuzzedDataProvider objIn(p_pData, p_nSize);
    const int nChannel = objIn.ConsumeBool() ? 2 : 1;
    for (int i = 0; i < kSchemes; ++i) {
        placeFile(objRoot, schemeFile(nChannel, i), objIn);
    }
    placeFile(objRoot, SENSOR_VERSION_FILE, objIn);
    const u32 nStampBefore = stampOnFlash(objRoot);

    {
        auto pChannel = objWorld.bringUp(nChannel);
        std::string strOut;
        pChannel->getAllParameters(strOut);
        pChannel->getParameters("(34,2337,49,8000)", strOut);
        pChannel->sensorThread();

        // A stamp other than the module's own means files of another layout:
        // they are all replaced by whole sets of the current one.
        const u32 nStampAfter = stampOnFlash(objRoot);
        if (nStampBefore != nStampAfter) {
            const u32 nBytes = 8 * ISensorControllerTestAccess::keyValSum(*pChannel);
            for (int i = 0; i < kSchemes; ++i) {
                if (objRoot.readFile(schemeFile(nChannel, i)).size() != nBytes) {
                    std::abort();
                }
            }
        }
    }
    return 0;
}
