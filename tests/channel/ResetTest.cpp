// Flush, restore, reset to the last stored set and the factory reset.
#include "ChannelFixture.h"
#include "support/ControllerTestAccess.h"

#include "common/SensorKeys.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;

class ResetTest : public ChannelTest {
protected:
    ISensorController& upMini(int p_nType = 1, int p_nChannel = 1) {
        useMiniDevice(p_nType, "(max_scheme=2)");
        ISensorController& c = bringUp(p_nChannel);
        Access::stopThread(c);
        m_objIsp.clearLog();
        return c;
    }
};

TEST_F(ResetTest, FlushStoresOnlyValidWindows) {
    ISensorController& c = upMini();
    ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string("(8001,18)(8002,0)(8003,8)(8004,0)"), true));
    EXPECT_EQ(SNS_ERR_TIME_ORDER, c.flush());
    EXPECT_EQ(0u, valueOf(readSet(schemeFile(1, 0)), 8001)) << "an invalid window is never stored";
    ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string("(8001,25)(8003,26)"), true));
    EXPECT_EQ(SNS_ERR_START_TIME, c.flush());
    ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string("(8001,8)(8003,24)(8004,30)"), true));
    EXPECT_EQ(SNS_ERR_END_TIME, c.flush());
    ASSERT_EQ(SNS_SUCCESS,
              c.setParameters(std::string("(8001,8)(8002,30)(8003,18)(8004,0)"), true));
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 66, true));
    EXPECT_EQ(SNS_SUCCESS, c.flush());
    const std::vector<KeyVal> vecFile = readSet(schemeFile(1, 0));
    EXPECT_EQ(8u, valueOf(vecFile, 8001));
    EXPECT_EQ(66u, valueOf(vecFile, KEY_BRIGHTNESS));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 1)), KEY_BRIGHTNESS)) << "only the current scheme";
}

TEST_F(ResetTest, RestoreResendsTheStoredValue) {
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.restore(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS)) << "sent although the ISP has it";
    EXPECT_EQ(SNS_FAILED, c.restore(4242));
    // No lens on this device: only the exposure mode would be restored, and
    // the mini style has none, so the restore fails without a focus command.
    EXPECT_FALSE(c.restoreAeMode());
    EXPECT_TRUE(setsOf(KEY_AUTO_FOCUS_MODE).empty());
}

TEST_F(ResetTest, ResetToLastAppliesExactlyTheUnsavedChanges) {
    ISensorController& c = upMini();
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 70, true));
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_SATURATION, 71, true));
    m_objIsp.clearLog();
    EXPECT_TRUE(c.resetToLastParameters());
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    size_t nSets = 0;
    for (const IspSimulator::LogEntry& st : m_objIsp.log()) {
        nSets += (st.option == 0) ? 1 : 0;
    }
    EXPECT_EQ(2u, nSets) << "nothing else is applied";
    int nValue = 0;
    ASSERT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    EXPECT_EQ(50, nValue);
}

TEST_F(ResetTest, FactoryResetRewritesEverySchemeOfThisChannelOnly) {
    ISensorController& c = upMini();
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 80, true));
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    m_objRoot.writeFile(schemeFile(2, 0), "other camera");
    EXPECT_TRUE(c.resetParameters());
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS));
    EXPECT_EQ("other camera", m_objRoot.readFile(schemeFile(2, 0)));
    EXPECT_EQ(1, c.getSensorStatus());
    int nValue = 0;
    ASSERT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    EXPECT_EQ(50, nValue);
}

TEST_F(ResetTest, FactoryResetOnAThermalChannelRemovesEveryThermalFile) {
    ISensorController& c = upMini(14, 2);
    m_objRoot.writeFile("/mnt/mtd/code/config_file/sensor-thermal3.cfg", "stale");
    EXPECT_TRUE(c.resetParameters());
    EXPECT_FALSE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal3.cfg"));
    EXPECT_TRUE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal0.cfg"));
}

} // namespace sensortest
