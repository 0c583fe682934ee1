// Channels of a sample device brought up the way a host does, with their own
// sensor threads running on the virtual clock (so the threads make pass after
// pass without pausing), for the power-cut and concurrency tests.
#pragma once

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
class AcceptingVideoModule : public VideoStreamModule {
public:
    int notifyParamChange(int, int, int) const override { return 0; }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override;
};

// p_nDepth nested elements: "<a><a>...</a></a>".
std::string nestedXml(int p_nDepth);

class SampleDevice {
public:
    // Copies devices/<name> into a fresh root and loads its ISP profile.
    explicit SampleDevice(const std::string& p_strName);
    ~SampleDevice();
    SampleDevice(const SampleDevice&) = delete;
    SampleDevice& operator=(const SampleDevice&) = delete;

    // Construct, channel, video module (this device's own unless one is
    // given), init: the channel's thread runs.
    ISensorController& bringUp(int p_nChannel, const VideoStreamModule* p_pVideo = nullptr);
    const TempDeviceRoot& root() const { return m_objRoot; }
    VirtualClock& clock() const { return *m_pClock; }
    IspSimulator& isp() const { return IspSimulator::instance(); }

private:
    TempDeviceRoot m_objRoot;
    std::shared_ptr<VirtualClock> m_pClock;
    AcceptingVideoModule m_objVideo;
    std::vector<std::unique_ptr<ISensorController>> m_vecChannels;
};

} // namespace sensortest
