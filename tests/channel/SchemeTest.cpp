// Scheme switches by the host, by day/night, by time windows and in LPR mode.
#include "ChannelFixture.h"

namespace sensortest {

using Windows = std::vector<std::pair<int, int>>; // start and end as hour*100+minute

class SchemeTest : public ChannelTest {
protected:
    // Scheme files with these windows and scheme mode, and brightness 10+s in scheme s.
    ISensorController& upWithWindows(int p_nType, const Windows& p_vecWin, u32 p_nSchemeMode) {
        const std::string strDetail = "(max_scheme=" + std::to_string(p_vecWin.size()) + ")";
        upMini(p_nType, strDetail);
        takeDown();
        for (size_t s = 0; s < p_vecWin.size(); ++s) {
            std::vector<KeyVal> vecSet = readSet(schemeFile(1, static_cast<int>(s)));
            const auto [nStart, nEnd] = p_vecWin[s];
            const u32 aValues[] = {p_nSchemeMode,   u32(nStart / 100), u32(nStart % 100),
                                   u32(nEnd / 100), u32(nEnd % 100),   10 + u32(s)};
            for (size_t k = 0; k < 6; ++k) {
                vecSet[k].value = aValues[k]; // the scheme keys, then brightness
            }
            writeSet(schemeFile(1, static_cast<int>(s)), vecSet);
        }
        return upMini(p_nType, strDetail);
    }
    void passAt(ISensorController& c, int p_nHour, int p_nMinute) {
        m_pClock->setTimeOfDay(p_nHour, p_nMinute);
        c.sensorThread();
    }
};

// The lowest matching window wins, its end is outside it, one past midnight
// never matches; started inside a window, its scheme is the first applied.
TEST_F(SchemeTest, TimeWindowsPickTheLowestMatchingScheme) {
    const Windows vecTwo = {{0, 2400}, {800, 1800}}, vecThree = {{0, 0}, {800, 1800}, {2200, 600}};
    const struct {
        const Windows& vecWin;
        int nHour, nMinute, nScheme, nSchedule;
    } aCases[] = {{vecTwo, 7, 59, 0, 1},
                  {vecTwo, 8, 0, 0, 1},
                  {vecThree, 8, 0, 1, 1},
                  {vecThree, 18, 0, 0, 0},
                  {vecThree, 23, 0, 0, 0}};
    for (const auto& stCase : aCases) {
        SCOPED_TRACE(std::to_string(stCase.nHour) + ":" + std::to_string(stCase.nMinute));
        ISensorController& c = upWithWindows(1, stCase.vecWin, 1);
        m_pClock->setTimeOfDay(stCase.nHour, stCase.nMinute);
        int nScheme = -1, nSchedule = -1;
        c.judgeCurScheme(nScheme, nSchedule);
        EXPECT_EQ(std::make_pair(stCase.nScheme, stCase.nSchedule),
                  std::make_pair(nScheme, nSchedule));
        takeDown();
        m_objIsp.clearLog();
        Access::stopThread(bringUp());
        EXPECT_EQ(stCase.nScheme, Access::curScheme(*m_pController));
        EXPECT_EQ(std::vector<int32_t>{10 + stCase.nScheme}, setsOf(KEY_BRIGHTNESS));
    }
}

// In LPR mode a window is entered with a forced switch (every record applied) and
// outside all windows day/night decides through the LPR switch (day/night mode 0 sent).
TEST_F(SchemeTest, ThreadFollowsTimeWindowsAndInLprModeFallsBackToDayNight) {
    for (const int nType : {1, 8}) {
        SCOPED_TRACE(nType == 8 ? "LPR" : "plain");
        ISensorController& c = upWithWindows(nType, {{0, 0}, {800, 1800}}, 1);
        ASSERT_EQ(nType == 8, Access::lprMode(c));
        if (nType == 1) {
            EXPECT_EQ(0, Access::curScheme(c)) << "init's own pass found no window: scheme 0";
        }
        passAt(c, 9, 0);
        EXPECT_EQ(1, Access::curScheme(c));
        EXPECT_EQ(nType == 8 ? 1u : 0u, setsOf(KEY_SATURATION).size());
        passAt(c, 9, 1);
        EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS)) << "no switch inside a window";
        EXPECT_EQ(nType == 8 ? 1u : 0u, setsOf(KEY_SATURATION).size());
        m_objIsp.setValue(0, 153, 1);
        m_objIsp.clearLog();
        passAt(c, 20, 0);
        EXPECT_EQ(nType == 8 ? 1 : 0, Access::curScheme(c));
        EXPECT_EQ(std::vector<int32_t>{nType == 8 ? 11 : 10}, setsOf(KEY_BRIGHTNESS))
            << "no comparison in an LPR switch";
        if (nType == 1) {
            continue;
        }
        EXPECT_EQ(std::vector<int32_t>{0}, setsOf(KEY_DN_MODE));
        c.sensorThread();
        EXPECT_EQ(1u, setsOf(KEY_BRIGHTNESS).size()) << "same decision: nothing more";
        ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_DN_MODE, 2, true));
        c.LPR_switch_to(1);
        EXPECT_EQ(0, setsOf(KEY_DN_MODE).back());
        EXPECT_EQ(2, param(KEY_DN_MODE));
    }
}

// The thread switches by day/night unless manual or resetting; host switches.
TEST_F(SchemeTest, DayNightAndHostSwitchesAndTheFactorySet) {
    ISensorController& c = upWithWindows(1, {{0, 0}, {0, 0}}, 2);
    m_objIsp.setValue(0, 153, 0);
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c));
    m_objIsp.setValue(0, 153, 1);
    ASSERT_TRUE(c.setParamMode(0));
    // A field-of-view request for channel 1 is served even in manual mode.
    ISensorController::m_nChanneldDosomething = 1;
    ISensorController::m_nPassKeycmd = static_cast<int>(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV);
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c)) << "manual mode: the thread switches nothing";
    EXPECT_EQ(-1, ISensorController::m_nChanneldDosomething.load());
    EXPECT_EQ(-1, ISensorController::m_nPassKeycmd.load());
    ASSERT_TRUE(c.setParamMode(1));
    Access::setState(c, Access::resettingBit());
    const long long nWaits = m_pClock->waitCount();
    c.sensorThread();
    EXPECT_EQ(0, Access::curScheme(c)) << "the switch waits until the reset is over";
    EXPECT_EQ(nWaits, m_pClock->waitCount()) << "during a reset the passes do not pause";
    Access::clearState(c, Access::resettingBit());
    c.sensorThread();
    EXPECT_EQ(1, Access::curScheme(c));
    EXPECT_EQ(std::vector<int32_t>{11}, setsOf(KEY_BRIGHTNESS));
    EXPECT_TRUE(c.setParamScheme(1));
    EXPECT_EQ(1u, setsOf(KEY_BRIGHTNESS).size()) << "switching to the current scheme: nothing";
    EXPECT_TRUE(c.setParamScheme(2));
    EXPECT_EQ(50, setsOf(KEY_BRIGHTNESS).back());
    EXPECT_EQ(SNS_SUCCESS, c.flush());
    EXPECT_FALSE(m_objRoot.exists(schemeFile(1, 2))) << "the factory set is never written";
    EXPECT_FALSE(c.setParamScheme(3));
    EXPECT_FALSE(c.setParamScheme(-1));
    EXPECT_EQ(2, read(&ISensorController::getParamScheme));
    EXPECT_EQ(-1, c.getParamSchemeTime(KEY_SCHEME_MODE));
}

} // namespace sensortest
