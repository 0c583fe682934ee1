// A sample device on a temporary root with the virtual clock in force, and
// channels brought up on it the way a host does.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "controller/ISensorController.h"
#include "platform/ModuleConfigure.h"
#include "platform/VideoStreamModule.h"
#include "support/TestSupport.h"

namespace sensorbench {

// Sends standard output (where the module prints its traces) to /dev/null and
// returns a descriptor of the original standard output for the report; -1
// (reported) when that fails.
int silenceStandardOutput();

class IdleVideoModule : public VideoStreamModule {
public:
    int notifyParamChange(int, int, int) const override { return 0; }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override;
};

class BenchDevice {
public:
    // Copies devices/<name> into a fresh root, loads its ISP profile and
    // installs the virtual clock (init's one-second wait costs nothing).
    // A scale above 1 grows the style to that many times its controls (see
    // scaleStyle).
    explicit BenchDevice(const std::string& p_strName, int p_nStyleScale = 1);
    ~BenchDevice();

    const ModuleConfigure& module() const { return m_objModule; }
    const sensortest::TempDeviceRoot& root() const { return m_objRoot; }
    // Construct, channel p_nChannel, video module, init.
    std::unique_ptr<ISensorController> bringUp(int p_nChannel = 1) const;
    // The merged style the channel's init left on the root.
    std::string mergedStyle() const;
    // Controls (elements with an "id") of the device's style.
    std::size_t controlCount() const;

private:
    sensortest::TempDeviceRoot m_objRoot;
    IdleVideoModule m_objVideo;
    ModuleConfigure m_objModule;
};

} // namespace sensorbench
