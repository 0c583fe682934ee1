// The traces of the set loop and its handlers at debug level 6, byte for
// byte with their colours (source lines masked).
#include "ControllerFixture.h"

#include "common/SensorKeys.h"

#include <regex>

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

const std::string SET_BAR = "=====================";

std::string setTrace(const std::string& p_strName, int p_nKey, int p_nValue,
                     const std::string& p_strFunc, int p_nCmd) {
    return coloured(31, "=" + SET_BAR + " set " + p_strName + " (" + std::to_string(p_nKey) + "," +
                            std::to_string(p_nValue) + ") func:" + p_strFunc +
                            " ia_cmd:" + std::to_string(p_nCmd) + " " + SET_BAR + "\n");
}

class TracesTest : public ControllerTest {
protected:
    void SetUp() override {
        const auto vecSet = makeSet({{34, 50},
                                     {145, 70},
                                     {146, 40},
                                     {149, 18},
                                     {150, 0},
                                     {151, 6},
                                     {152, 30},
                                     {224, 2},
                                     {161, 0},
                                     {168, 0},
                                     {8102, 0}});
        install({vecSet, vecSet, vecSet}, 0);
        setDebugLevel(6);
    }
    // What one list prints, with source line numbers masked as "#".
    std::string printed(std::vector<KeyVal> p_vecList) {
        CaptureStdout();
        ctl().setParameters(p_vecList.data(), static_cast<u32>(p_vecList.size()), true);
        return std::regex_replace(GetCapturedStdout(), std::regex("line:[0-9]+"), "line:#");
    }
};

TEST_F(TracesTest, AppliedKeyPrintsItsRowInRed) {
    EXPECT_EQ(printed({{34, 40}}),
              setTrace("KEY_BRIGHTNESS", 34, 40, "&ISensorController::doIaCmd", 34) + "\n");
}

TEST_F(TracesTest, LevelFiveIsSilent) {
    setDebugLevel(5);
    EXPECT_EQ(printed({{34, 40}, {146, 30}}), "\n");
}

TEST_F(TracesTest, TwinTracesItsNormalRowAndLongNamesAreCut) {
    EXPECT_EQ(printed({{168, 3}, {8102, 4}}),
              setTrace("KEY_IR_MODE", 161, 3, "&ISensorController::doIaCmd", 161) +
                  setTrace("KEY_MIXSTREAM_DISTANCE_WIDTH_OFF", 8102, 4,
                           "&ISensorController::doIaCmd_PanoTuning", 8102) +
                  "\n");
}

TEST_F(TracesTest, DayNightRecordsAreTracedAsSent) {
    EXPECT_EQ(printed({{146, 30}, {150, 15}}),
              setTrace("KEY_NTD_THR", 146, 30, "&ISensorController::doDNThr", 146) +
                  coloured(0, "m_nCurScheme(0) dn_thr_st.d2n_thr(70) dn_thr_st.n2d_thr(30)  "
                              "dn_thr_st.dn_sensitivity(0)\n") +
                  setTrace("KEY_DTN_M", 150, 15, "&ISensorController::doDNTime", 150) +
                  coloured(0, "m_nCurScheme(0) dn_time_st.d2n_hour(18) dn_time_st.d2n_min(15) "
                              "dn_time_st.n2d_hour(6) dn_time_st.n2d_min(30) \n") +
                  "\n");
}

TEST_F(TracesTest, RefusedKeyPrintsTheFailureLineForIspErrors) {
    m_objIsp.failCommand(-1, 34, -1, -1);
    EXPECT_EQ(printed({{34, 40}}),
              setTrace("KEY_BRIGHTNESS", 34, 40, "&ISensorController::doIaCmd", 34) +
                  coloured(0, "[sensor err] file:ISensorController fun:setParameters line:#\n"
                              "set KEY_BRIGHTNESS (34,40) func:&ISensorController::doIaCmd "
                              "ia_cmd:34 ~~~failed ia_ret=-1\n"));

    // Other codes end the list silently.
    m_objIsp.clearFailures();
    m_objIsp.failCommand(-1, 34, -1, -7);
    EXPECT_EQ(printed({{34, 41}}),
              setTrace("KEY_BRIGHTNESS", 34, 41, "&ISensorController::doIaCmd", 34));
}

TEST_F(TracesTest, UnknownKeyIsReportedStepByStep) {
    EXPECT_EQ(printed({{12, 5}}),
              coloured(0, "cand not find key-cmd while key=12\n") +
                  coloured(31, "[sensor assert] file:ISensorController fun:setParameters "
                               "line:#\n-1 != findFromKeyCmdMap(m_pKeyCmdMap, nKey, "
                               "stKeyCmdTmp)   ~~~Assertion failed.\n") +
                  coloured(31, "p_pKeyval[0].key(12)") + coloured(32, "not find (12) \n") +
                  setTrace("unknow key", 12, 5, "ISensorController::doIaCmd", 12) +
                  coloured(0, "[sensor dbg] file:ISensorController fun:setParameters line:#\n"
                              "SET_KEY_VAL FAILED, m_nCurScheme(0), p_pKeyval[0].key(12), "
                              "p_pKeyval[0].value(5),  maybe jixin\n") +
                  "\n");
}

TEST_F(TracesTest, InvalidSchemeLookupIsTraced) {
    u32 nValue = 0;
    CaptureStdout();
    EXPECT_EQ(ctl().getKeyValFromCache(9, 34, nValue), -1);
    EXPECT_EQ(GetCapturedStdout(), coloured(0, "can not find val, invalid sheme(9) \n"));

    // Before the first switch the loop's cache and light-type lookups both miss.
    Access::setCurScheme(ctl(), -1);
    const std::string strMiss = coloured(0, "can not find val, invalid sheme(-1) \n");
    EXPECT_EQ(printed({{34, 40}}),
              strMiss + strMiss +
                  setTrace("KEY_BRIGHTNESS", 34, 40, "&ISensorController::doIaCmd", 34) + "\n");
}

TEST_F(TracesTest, SingleParameterCallsAnnounceThemselves) {
    CaptureStdout();
    ctl().setParameter(34, 41, true);
    int nValue = 0;
    ctl().getParameter(34, nValue);
    const std::string strOut =
        std::regex_replace(GetCapturedStdout(), std::regex("line:[0-9]+"), "line:#");
    EXPECT_EQ(strOut,
              coloured(0, "[sensor dbg] file:ISensorController fun:setParameter line:#\n"
                          "p_Parameters22222222222(34, 41)\n") +
                  setTrace("KEY_BRIGHTNESS", 34, 41, "&ISensorController::doIaCmd", 34) + "\n" +
                  coloured(0, "[sensor dbg] file:ISensorController fun:getParameter line:#\n"
                              "p_nKey(34)\n"));
}

} // namespace
} // namespace sensortest
