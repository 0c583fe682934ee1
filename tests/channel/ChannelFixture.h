// A channel brought up end to end on a temporary root, virtual clock and ISP simulator.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "platform/VideoStreamModule.h"
#include "support/ControllerTestAccess.h"
#include "support/TestSupport.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;
using ::testing::HasSubstr;

// A host video module that accepts every notice and reports no limits.
class AcceptingVideo : public VideoStreamModule {
public:
    int notifyParamChange(int, int, int) const override { return 0; }
    bool isBusy() const override { return false; }
    int getAVStreamParams(std::vector<AVStreamParam>& out) const override;
    int getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const override;
};

class ChannelTest : public ::testing::Test {
protected:
    ChannelTest();
    ~ChannelTest() override;

    // A device of this type whose styles hold 13 keys: 8000..8004, then an image tab.
    void useMiniDevice(int p_nType, const std::string& p_strDetail);
    // Constructs, sets the channel and the video module, and runs init.
    ISensorController& bringUp(int p_nChannel = 1);
    // A mini device up with its thread stopped (the test runs the passes) and the log empty.
    ISensorController& upMini(int p_nType = 1, const std::string& p_strDetail = "(max_scheme=2)",
                              int p_nChannel = 1);
    void takeDown();

    static std::string schemeFile(int p_nCamera, int p_nScheme);
    std::vector<KeyVal> readSet(const std::string& p_strDevicePath) const;
    void writeSet(const std::string& p_strDevicePath, const std::vector<KeyVal>& p_vecSet) const;
    static u32 valueOf(const std::vector<KeyVal>& p_vecSet, u32 p_nKey);
    // (key, value) pairs for whole-set comparisons, or the keys alone (value 0).
    static std::vector<std::pair<u32, u32>> pairsOf(const std::vector<KeyVal>& p_vecSet,
                                                    bool p_bKeys = false) {
        std::vector<std::pair<u32, u32>> vecPairs;
        for (const KeyVal& st : p_vecSet) {
            vecPairs.emplace_back(st.key, p_bKeys ? 0 : st.value);
        }
        return vecPairs;
    }
    // What a getter reads into a value starting as p_start; nullopt when it fails.
    template <typename T>
    std::optional<T> read(bool (ISensorController::*p_pGet)(T&), T p_start = T(-7)) const {
        T value = p_start;
        return (m_pController.get()->*p_pGet)(value) ? std::optional<T>(value) : std::nullopt;
    }
    // The current channel's value of a key, as getParameter answers it.
    std::optional<int> param(u32 p_nKey) const;
    // ISP SET calls of a command on a channel, in order, as values.
    std::vector<int32_t> setsOf(uint32_t p_nCmd, int p_nChannel = 0) const;
    // An attribute record listing p_vecItems (param_type 0) or a plain range (1).
    static ia_dynamic_params_attr_st attr(int32_t p_nType, int32_t p_nDefault,
                                          const std::vector<int32_t>& p_vecItems);

    TempDeviceRoot m_objRoot;
    std::shared_ptr<VirtualClock> m_pClock;
    AcceptingVideo m_objVideo;
    std::unique_ptr<ISensorController> m_pController;
    IspSimulator& m_objIsp;
    std::string m_strDetail; // of the mini device
};

} // namespace sensortest
