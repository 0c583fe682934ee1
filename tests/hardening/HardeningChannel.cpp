#include "HardeningChannel.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace sensortest {

namespace fs = std::filesystem;

std::string nestedXml(int p_nDepth) {
    std::string strText;
    for (int i = 0; i < p_nDepth; ++i) {
        strText += "<a>";
    }
    for (int i = 0; i < p_nDepth; ++i) {
        strText += "</a>";
    }
    return strText;
}

int AcceptingVideoModule::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int AcceptingVideoModule::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(1);
    return 0;
}

SampleDevice::SampleDevice(const std::string& p_strName)
    : m_pClock(std::make_shared<VirtualClock>()) {
    const fs::path src = fs::path(sourceDir()) / "devices" / p_strName;
    fs::copy(src, m_objRoot.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    std::string strError;
    EXPECT_TRUE(isp().loadProfile((src / "isp_profile.xml").string(), &strError)) << strError;
    isp().reset();
    installClock(m_pClock);
    ISensorController::m_nChanneldDosomething = -1;
    ISensorController::m_nPassKeycmd = -1;
}

SampleDevice::~SampleDevice() {
    for (auto& pChannel : m_vecChannels) {
        pChannel->uinit();
    }
    m_vecChannels.clear();
    installClock(nullptr);
    isp().loadDefaultProfile();
}

ISensorController& SampleDevice::bringUp(int p_nChannel, const VideoStreamModule* p_pVideo) {
    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine);
    std::vector<ModuleConfigure> vecModules;
    ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, objMachine.getHardwareModel(),
                                 objMachine.getHardwareCode(), vecModules);
    EXPECT_FALSE(vecModules.empty());
    const std::size_t nIndex = std::min<std::size_t>(
        static_cast<std::size_t>(p_nChannel - 1), vecModules.empty() ? 0 : vecModules.size() - 1);
    const ModuleConfigure objModule = vecModules.empty() ? ModuleConfigure() : vecModules[nIndex];

    auto pChannel = std::make_unique<ISensorController>();
    pChannel->setChannelID(p_nChannel);
    pChannel->setVideoStreamModule(p_pVideo != nullptr ? p_pVideo : &m_objVideo);
    pChannel->init(objModule);
    m_vecChannels.push_back(std::move(pChannel));
    return *m_vecChannels.back();
}

} // namespace sensortest
