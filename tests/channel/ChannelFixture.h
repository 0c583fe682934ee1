// A channel brought up end to end on a temporary root, virtual clock and ISP simulator.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "support/ControllerTestAccess.h"
#include "support/RecordingVideoModule.h"
#include "support/TestSupport.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;
using ::testing::HasSubstr;

class ChannelTest : public ::testing::Test {
protected:
    ChannelTest() {
        installClock(m_pClock);
        m_objIsp.loadDefaultProfile();
        m_objIsp.reset();
        ISensorController::m_nChanneldDosomething = -1;
        ISensorController::m_nPassKeycmd = -1;
    }
    ~ChannelTest() override {
        takeDown();
        installClock(nullptr);
    }

    // A device of this type whose styles hold 13 keys: 8000..8004, then an image tab.
    void useMiniDevice(int p_nType, const std::string& p_strDetail);
    // Inits a channel with the module the device's configuration file describes.
    ISensorController& bringUp(int p_nChannel = 1) {
        m_pController = std::make_unique<ISensorController>();
        m_pController->setChannelID(p_nChannel);
        m_pController->setVideoStreamModule(&m_objVideo);
        m_pController->init(deviceModules().at(0));
        return *m_pController;
    }
    // A mini device up with its thread stopped (the test runs the passes) and the log empty.
    ISensorController& upMini(int p_nType = 1, const std::string& p_strDetail = "(max_scheme=2)",
                              int p_nChannel = 1) {
        takeDown();
        useMiniDevice(p_nType, p_strDetail);
        Access::stopThread(bringUp(p_nChannel));
        m_objIsp.clearLog();
        return *m_pController;
    }
    void takeDown() {
        if (m_pController) {
            m_pController->uinit();
            m_pController.reset();
        }
    }

    static std::string schemeFile(int p_nCamera, int p_nScheme) {
        return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_nCamera) + "_" +
               std::to_string(p_nScheme) + ".cfg";
    }
    std::vector<KeyVal> readSet(const std::string& p_strPath) const {
        std::vector<KeyVal> vecSet(m_objRoot.readFile(p_strPath).size() / sizeof(KeyVal));
        EXPECT_EQ(SNS_SUCCESS, keyValFromFile(p_strPath.c_str(), vecSet.data(), vecSet.size()));
        return vecSet;
    }
    void writeSet(const std::string& p_strPath, const std::vector<KeyVal>& p_vecSet) const {
        EXPECT_EQ(SNS_SUCCESS, keyValToFile(p_strPath.c_str(), p_vecSet.data(), p_vecSet.size()));
    }
    static u32 valueOf(const std::vector<KeyVal>& p_vecSet, u32 p_nKey) {
        const auto it = std::find_if(p_vecSet.begin(), p_vecSet.end(),
                                     [p_nKey](const KeyVal& st) { return st.key == p_nKey; });
        EXPECT_NE(p_vecSet.end(), it) << "key " << p_nKey << " not in the set";
        return it == p_vecSet.end() ? 0 : it->value;
    }
    // (key, value) pairs for whole-set comparisons, or the keys alone (value 0).
    static std::vector<std::pair<u32, u32>> pairsOf(const std::vector<KeyVal>& p_vecSet,
                                                    bool p_bKeys = false) {
        std::vector<std::pair<u32, u32>> vecPairs;
        for (const KeyVal& st : p_vecSet) {
            vecPairs.emplace_back(st.key, p_bKeys ? 0 : st.value);
        }
        return vecPairs;
    }
    // What a getter reads into a value starting as p_value; nullopt when it fails.
    template <typename T>
    std::optional<T> read(bool (ISensorController::*p_pGet)(T&), T p_value = T(-7)) const {
        return (m_pController.get()->*p_pGet)(p_value) ? std::optional<T>(p_value) : std::nullopt;
    }
    std::optional<int> param(u32 p_nKey) const { // as getParameter answers it
        int n = -7;
        return m_pController->getParameter(p_nKey, n) ? std::optional<int>(n) : std::nullopt;
    }
    // ISP SET calls of a command on a channel, in order, as values.
    std::vector<int32_t> setsOf(uint32_t p_nCmd, int p_nChannel = 0) const {
        std::vector<int32_t> vecValues;
        for (const IspSimulator::LogEntry& st : m_objIsp.log()) {
            if (st.cmd == p_nCmd && st.channel == p_nChannel && st.option == 0) {
                vecValues.push_back(st.value);
            }
        }
        return vecValues;
    }
    // An attribute record listing p_vecItems (param_type 0) or a plain range 1..100 (1).
    static ia_dynamic_params_attr_st attr(int32_t p_nType, int32_t p_nDefault,
                                          const std::vector<int32_t>& p_vecItems) {
        ia_dynamic_params_attr_st stAttr{p_nType, p_nDefault, 1, 100, int32_t(p_vecItems.size()),
                                         {}};
        std::copy(p_vecItems.begin(), p_vecItems.end(), stAttr.item);
        return stAttr;
    }

    TempDeviceRoot m_objRoot;
    std::shared_ptr<VirtualClock> m_pClock = std::make_shared<VirtualClock>();
    RecordingVideoModule m_objVideo{[] { return std::size_t(0); }}; // accepts every notice
    std::unique_ptr<ISensorController> m_pController;
    IspSimulator& m_objIsp = IspSimulator::instance();
};

} // namespace sensortest
