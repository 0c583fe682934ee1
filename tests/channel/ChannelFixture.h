// A channel brought up end to end on a temporary device root, with the virtual
// clock and the ISP simulator.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "platform/VideoStreamModule.h"
#include "support/TestSupport.h"

namespace sensortest {

// A video module that accepts everything and remembers what it was told.
class NoticeRecorder : public VideoStreamModule {
public:
    struct Notice {
        int channel;
        int key;
        int value;
    };
    int notifyParamChange(int channel, int key, int value) const override;
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int channel, LimitedFramesWDRModeParam& out) const override;
    std::vector<Notice> notices() const;

private:
    mutable std::mutex m_mutex;
    mutable std::vector<Notice> m_vecNotices;
};

// The keys and defaults of the small style the mini devices use.
struct MiniStyle {
    static std::string style();     // scheme tab first, then an image tab
    static std::string diversity(); // one entry that never applies
};

class ChannelTest : public ::testing::Test {
protected:
    ChannelTest();
    ~ChannelTest() override;

    // Copies a sample device from devices/ into the root.
    void useSampleDevice(const std::string& p_strName);
    // A device of the given type whose style is MiniStyle.
    void useMiniDevice(int p_nType, const std::string& p_strDetail);
    void setDebugLevel(const std::string& p_strMarker);

    // Constructs, sets the channel and the video module, and runs init with
    // the module configuration the device's files describe.
    ISensorController& bringUp(int p_nChannel = 1);
    void takeDown();

    std::string schemeFile(int p_nCamera, int p_nScheme) const;
    std::vector<KeyVal> readSet(const std::string& p_strDevicePath) const;
    void writeSet(const std::string& p_strDevicePath, const std::vector<KeyVal>& p_vecSet) const;
    static u32 valueOf(const std::vector<KeyVal>& p_vecSet, u32 p_nKey);
    // ISP SET calls of a command on a channel, in order, as values.
    std::vector<int32_t> setsOf(uint32_t p_nCmd, int p_nChannel = 0) const;
    std::string errorLog() const;

    TempDeviceRoot m_objRoot;
    std::shared_ptr<VirtualClock> m_pClock;
    NoticeRecorder m_objVideo;
    std::unique_ptr<ISensorController> m_pController;
    IspSimulator& m_objIsp;
};

} // namespace sensortest
