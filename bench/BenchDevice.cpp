#include "BenchDevice.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "isp/IspSimulator.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"
#include "platform/VXClock.h"

namespace sensorbench {

namespace fs = std::filesystem;

int IdleVideoModule::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int IdleVideoModule::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(1);
    return 0;
}

BenchDevice::BenchDevice(const std::string& p_strName) {
    const fs::path src = fs::path(SENSOR_SOURCE_DIR) / "devices" / p_strName;
    fs::copy(src, m_objRoot.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    std::string strError;
    if (!IspSimulator::instance().loadProfile((src / "isp_profile.xml").string(), &strError)) {
        std::fprintf(stderr, "ISP profile of %s: %s\n", p_strName.c_str(), strError.c_str());
        std::abort();
    }
    IspSimulator::instance().enableLog(false);
    installClock(std::make_shared<VirtualClock>());

    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine);
    std::vector<ModuleConfigure> vecModules;
    ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, objMachine.getHardwareModel(),
                                 objMachine.getHardwareCode(), vecModules);
    if (vecModules.empty()) {
        std::fprintf(stderr, "device %s has no module for its machine\n", p_strName.c_str());
        std::abort();
    }
    m_objModule = vecModules.front();
}

BenchDevice::~BenchDevice() {
    installClock(nullptr);
}

std::unique_ptr<ISensorController> BenchDevice::bringUp() const {
    auto pController = std::make_unique<ISensorController>();
    pController->setChannelID(1);
    pController->setVideoStreamModule(&m_objVideo);
    pController->init(m_objModule);
    return pController;
}

std::string BenchDevice::mergedStyle() const {
    return m_objRoot.readFile("/tmp/merge_style_ch1.xml");
}

} // namespace sensorbench
