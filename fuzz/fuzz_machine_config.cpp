// The machine description (INI) and the module configuration (XML) as the
// host parsers read them, and the detail text they carry through the
// configuration record of a channel.
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "config/sensor.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace {

constexpr const char* kMachineFile = "/mnt/mtd/code/factory_setting/machineinfo.ini";

void readDetailField(const std::string& p_strDetail, const std::string& p_strField) {
    // Buffers of exactly the documented size: a longer copy is an overrun.
    std::array<char, DETAIL_VALUE_MAX + 1> arrValue{};
    getDetailFieldToStr(p_strDetail.c_str(), p_strField.c_str(), arrValue.data());
    u32 nValue = 0;
    getDetailFieldTou32(p_strDetail.c_str(), p_strField.c_str(), &nValue);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The styles of a real device, so that the configuration record is filled
    // with everything it holds on a camera.
    sensorfuzz::FuzzWorld::get().useSampleDevice("thermal");
    return 0;
}

// Input: machine description NUL module configuration NUL detail field name.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_pData, size_t p_nSize) {
    const sensorfuzz::FuzzWorld& objWorld = sensorfuzz::FuzzWorld::get();
    const std::vector<std::string> vecParts = sensorfuzz::splitParts(p_pData, p_nSize, 3);
    objWorld.root().writeFile(kMachineFile, vecParts[0]);
    objWorld.root().writeFile(ModuleConfigureParser::kDevicePath, vecParts[1]);

    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo(kMachineFile, objMachine);
    std::vector<ModuleConfigure> vecModules;
    const bool bMatched = ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath,
                                                       objMachine.getHardwareModel(),
                                                       objMachine.getHardwareCode(), vecModules);
    if (bMatched == vecModules.empty()) {
        std::abort();
    }
    vecModules.resize(std::min<std::size_t>(vecModules.size(), 2));
    for (std::size_t i = 0; i < vecModules.size(); ++i) {
        readDetailField(vecModules[i].getDetail(), vecParts[2]);
        SysConfig stConf{};
        initSysConf(static_cast<int>(i) + 1, vecModules[i], &stConf);
        uinitSysConf(&stConf);
        uinitSysConf(&stConf); // a repeated release frees nothing twice
    }
    return 0;
}
