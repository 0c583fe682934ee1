// Scheme switching by the host, by day/night and by time windows, and the LPR
// variants, with the thread's passes run by the test.
#include "ChannelFixture.h"
#include "support/ControllerTestAccess.h"

#include "common/SensorKeys.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;

class SchemeTest : public ChannelTest {
protected:
    // A channel with stopped thread and the given windows (start and end as
    // hour*100+minute) written into the scheme files before start-up.
    ISensorController& upWithWindows(int p_nType, const std::vector<std::pair<int, int>>& p_vecWin,
                                     u32 p_nSchemeMode) {
        useMiniDevice(p_nType, "(max_scheme=" + std::to_string(p_vecWin.size()) + ")");
        bringUp(1);
        takeDown();
        for (size_t s = 0; s < p_vecWin.size(); ++s) {
            std::vector<KeyVal> vecSet = readSet(schemeFile(1, static_cast<int>(s)));
            vecSet[0].value = p_nSchemeMode;
            vecSet[1].value = static_cast<u32>(p_vecWin[s].first / 100);
            vecSet[2].value = static_cast<u32>(p_vecWin[s].first % 100);
            vecSet[3].value = static_cast<u32>(p_vecWin[s].second / 100);
            vecSet[4].value = static_cast<u32>(p_vecWin[s].second % 100);
            // Brightness tells the schemes apart in the ISP log.
            for (KeyVal& st : vecSet) {
                if (st.key == KEY_BRIGHTNESS) {
                    st.value = 10 + static_cast<u32>(s);
                }
            }
            writeSet(schemeFile(1, static_cast<int>(s)), vecSet);
        }
        ISensorController& c = bringUp(1);
        Access::stopThread(c);
        m_objIsp.clearLog();
        return c;
    }
    int judge(ISensorController& c, int p_nHour, int p_nMinute, int& p_nSchedule) {
        m_pClock->setTimeOfDay(p_nHour, p_nMinute);
        int nScheme = -1;
        c.judgeCurScheme(nScheme, p_nSchedule);
        return nScheme;
    }
};

TEST_F(SchemeTest, TimeWindowsPickTheLowestMatchingScheme) {
    ISensorController& c = upWithWindows(1, {{0, 2400}, {800, 1800}}, 1);
    int nSchedule = -1;
    EXPECT_EQ(0, judge(c, 7, 59, nSchedule));
    EXPECT_EQ(1, nSchedule);
    EXPECT_EQ(0, judge(c, 8, 0, nSchedule)) << "lowest index first";
    takeDown();

    ISensorController& d = upWithWindows(1, {{0, 0}, {800, 1800}, {2200, 600}}, 1);
    EXPECT_EQ(1, judge(d, 8, 0, nSchedule));
    EXPECT_EQ(1, nSchedule);
    EXPECT_EQ(0, judge(d, 18, 0, nSchedule)) << "the end is outside the window";
    EXPECT_EQ(0, nSchedule);
    EXPECT_EQ(0, judge(d, 23, 0, nSchedule)) << "a window past midnight never matches";
    EXPECT_EQ(0, nSchedule);
}

TEST_F(SchemeTest, ThreadFollowsTimeWindows) {
    ISensorController& c = upWithWindows(1, {{0, 0}, {800, 1800}}, 1);
    EXPECT_TRUE(Access::schemeByTime(c));
    EXPECT_EQ(0, Access::curScheme(c)) << "init's own pass found no window: scheme 0";

    m_pClock->setTimeOfDay(9, 0);
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS));
    c.sensorThread();
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS)) << "no switch within the window";
    m_pClock->setTimeOfDay(18, 0);
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ((std::vector<int32_t>{11, 10}), setsOf(KEY_BRIGHTNESS));
}

TEST_F(SchemeTest, ThreadFollowsDayAndNightAndModeZeroStopsIt) {
    ISensorController& c = upWithWindows(1, {{0, 0}, {0, 0}}, 2);
    EXPECT_TRUE(Access::schemeByDN(c));
    m_objIsp.setValue(0, 153, 0);
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c));
    m_objIsp.setValue(0, 153, 1);
    ASSERT_TRUE(c.setParamMode(0));
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c)) << "manual mode: the thread switches nothing";

    // A field-of-view request for channel 1 is served even in manual mode.
    ISensorController::m_nChanneldDosomething = 1;
    ISensorController::m_nPassKeycmd = static_cast<int>(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV);
    c.sensorThread();
    EXPECT_EQ(-1, ISensorController::m_nChanneldDosomething.load());
    EXPECT_EQ(-1, ISensorController::m_nPassKeycmd.load());

    ASSERT_TRUE(c.setParamMode(1));
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS));
}

TEST_F(SchemeTest, SwitchIsDeferredWhileAResetRuns) {
    ISensorController& c = upWithWindows(1, {{0, 0}, {0, 0}}, 2);
    c.sensorThread();
    ASSERT_EQ(0, Access::curScheme(c));
    m_objIsp.setValue(0, 153, 1);
    Access::setState(c, Access::resettingBit());
    const long long nWaits = m_pClock->waitCount();
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(nWaits, m_pClock->waitCount()) << "during a reset the passes do not pause";
    Access::clearState(c, Access::resettingBit());
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
}

TEST_F(SchemeTest, LprEntersWindowWithAForcedSwitchAndFallsBackToDayNight) {
    ISensorController& c = upWithWindows(8, {{0, 0}, {800, 1800}}, 1);
    ASSERT_TRUE(Access::lprMode(c));
    m_pClock->setTimeOfDay(9, 0);
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
    // Forced: every record applied, including the ones equal to the last scheme.
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(1u, setsOf(KEY_SATURATION).size());
    c.sensorThread();
    EXPECT_EQ(1u, setsOf(KEY_SATURATION).size()) << "staying inside: no further switch";

    // Outside every window, day/night decides through the LPR switch, which
    // sends day/night mode 0 without touching the stored scheme.
    m_pClock->setTimeOfDay(20, 0);
    m_objIsp.setValue(0, 153, 1);
    m_objIsp.clearLog();
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
    EXPECT_EQ(std::vector<int32_t>{0}, setsOf(KEY_DN_MODE));
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS)) << "no comparison in an LPR switch";
    c.sensorThread();
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS)) << "same decision: nothing more";
}

TEST_F(SchemeTest, HostSwitchesAndTheFactorySet) {
    ISensorController& c = upWithWindows(1, {{0, 0}, {0, 0}}, 0);
    ASSERT_EQ(0, Access::curScheme(c));
    EXPECT_TRUE(c.setParamScheme(0));
    EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty())
        << "switching to the current scheme applies nothing";
    EXPECT_TRUE(c.setParamScheme(2)) << "the factory set can be made current";
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(SNS_SUCCESS, c.flush()) << "the factory set is never written";
    EXPECT_FALSE(c.setParamScheme(3)) << "beyond the factory set";
    EXPECT_FALSE(c.setParamScheme(-1));
    int nScheme = -1;
    EXPECT_TRUE(c.getParamScheme(nScheme));
    EXPECT_EQ(2, nScheme);
    EXPECT_EQ(-1, c.getParamSchemeTime(KEY_SCHEME_MODE));
}

TEST_F(SchemeTest, LprSwitchLeavesStoredDayNightModeAlone) {
    ISensorController& c = upWithWindows(8, {{0, 0}, {0, 0}}, 0);
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_DN_MODE, 2, true));
    c.LPR_switch_to(0);
    EXPECT_EQ(0, setsOf(KEY_DN_MODE).back());
    int nValue = -1;
    ASSERT_TRUE(c.getParameter(KEY_DN_MODE, nValue));
    EXPECT_EQ(2, nValue);
}

} // namespace sensortest
