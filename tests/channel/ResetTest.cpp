// Flush, restore, reset to the last stored set and the factory reset.
#include "ChannelFixture.h"

namespace sensortest {

using ResetTest = ChannelTest;

TEST_F(ResetTest, FlushStoresOnlyValidWindows) {
    ISensorController& c = upMini();
    const struct {
        const char* szWindow;
        int nResult;
    } aCases[] = {{"(8001,18)(8002,0)(8003,8)(8004,0)", SNS_ERR_TIME_ORDER},
                  {"(8001,25)(8003,26)", SNS_ERR_START_TIME},
                  {"(8001,8)(8003,24)(8004,30)", SNS_ERR_END_TIME},
                  {"(8001,8)(8002,30)(8003,18)(8004,0)(34,66)", SNS_SUCCESS}};
    for (const auto& stCase : aCases) {
        ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string(stCase.szWindow), true));
        EXPECT_EQ(stCase.nResult, c.flush()) << stCase.szWindow;
        const std::vector<KeyVal> vecFile = readSet(schemeFile(1, 0));
        EXPECT_EQ(stCase.nResult == SNS_SUCCESS ? 8u : 0u, valueOf(vecFile, 8001))
            << "an invalid window is never stored";
    }
    EXPECT_EQ(66u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 1)), KEY_BRIGHTNESS)) << "only the current scheme";
}

TEST_F(ResetTest, RestoreResendsTheStoredValue) {
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.restore(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS)) << "sent although the ISP has it";
    EXPECT_EQ(SNS_FAILED, c.restore(4242));
    // No lens and no exposure mode in the mini style: nothing to restore.
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
    const auto vecLog = m_objIsp.log();
    EXPECT_EQ(2, std::count_if(vecLog.begin(), vecLog.end(),
                               [](const auto& st) { return st.option == 0; }))
        << "nothing else is applied";
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));
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
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));

    // On a thermal channel every thermal file goes, and the sets come back.
    ISensorController& t = upMini(14, "(max_scheme=2)", 2);
    m_objRoot.writeFile("/mnt/mtd/code/config_file/sensor-thermal3.cfg", "stale");
    EXPECT_TRUE(t.resetParameters());
    EXPECT_FALSE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal3.cfg"));
    EXPECT_TRUE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal0.cfg"));
}

} // namespace sensortest
