// Channels of a sample device brought up as a host does, their threads on the virtual clock.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "platform/VideoStreamModule.h"
#include "support/TestSupport.h"

namespace sensortest {

// A host video module that accepts every notice and reports no limits.
struct AcceptingVideoModule : VideoStreamModule {
    int notifyParamChange(int, int, int) const override { return 0; }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override {
        out.clear();
        return 0;
    }
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override {
        out = LimitedFramesWDRModeParam();
        out.setLimitFramesModeId(1);
        return 0;
    }
};

// p_nDepth nested elements: "<a><a>...</a></a>".
inline std::string nestedXml(int p_nDepth) {
    std::string strXml;
    for (int i = 0; i < 2 * p_nDepth; ++i) {
        strXml += i < p_nDepth ? "<a>" : "</a>";
    }
    return strXml;
}

// Copies devices/<name> into a fresh root and loads its ISP profile. The channels print a lot:
// their output is shown only when the test fails.
class SampleDevice {
public:
    explicit SampleDevice(const std::string& p_strName) {
        ::testing::internal::CaptureStdout();
        const auto src = std::filesystem::path(sourceDir()) / "devices" / p_strName;
        std::filesystem::copy(src, m_objRoot.path(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
        std::string strError;
        EXPECT_TRUE(isp().loadProfile((src / "isp_profile.xml").string(), &strError)) << strError;
        isp().reset();
        installClock(m_pClock);
        ISensorController::m_nChanneldDosomething = -1;
        ISensorController::m_nPassKeycmd = -1;
    }
    ~SampleDevice() {
        for (auto& pChannel : m_vecChannels) {
            pChannel->uinit();
        }
        m_vecChannels.clear();
        installClock(nullptr);
        isp().loadDefaultProfile();
        const std::string strOutput = ::testing::internal::GetCapturedStdout();
        if (::testing::Test::HasFailure()) {
            std::cout << strOutput;
        }
    }

    // Construct, channel, video module (the device's own unless given), init: its thread runs.
    ISensorController& bringUp(int p_nChannel, const VideoStreamModule* p_pVideo = nullptr) {
        std::vector<ModuleConfigure> vecModules = deviceModules();
        EXPECT_FALSE(vecModules.empty());
        vecModules.resize(std::max<std::size_t>(vecModules.size(), 1)); // else a default one
        auto pChannel = std::make_unique<ISensorController>();
        pChannel->setChannelID(p_nChannel);
        pChannel->setVideoStreamModule(p_pVideo != nullptr ? p_pVideo : &m_objVideo);
        pChannel->init(vecModules[std::min<std::size_t>(p_nChannel - 1, vecModules.size() - 1)]);
        m_vecChannels.push_back(std::move(pChannel));
        return *m_vecChannels.back();
    }
    const TempDeviceRoot& root() const { return m_objRoot; }
    IspSimulator& isp() const { return IspSimulator::instance(); }

private:
    TempDeviceRoot m_objRoot;
    std::shared_ptr<VirtualClock> m_pClock = std::make_shared<VirtualClock>();
    AcceptingVideoModule m_objVideo;
    std::vector<std::unique_ptr<ISensorController>> m_vecChannels;
};

} // namespace sensortest
