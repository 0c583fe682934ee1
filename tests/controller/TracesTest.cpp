// The traces of the set loop and its handlers at debug level 6, byte for byte
// with their colours (source lines masked).
#include "ControllerFixture.h"

#include <regex>

namespace sensortest {
namespace {

// Colour prefix and suffix of the diagnostics.
std::string coloured(int p_nColour, const std::string& p_strText) {
    return "\033[0m\033[" + std::to_string(p_nColour) + "m" + p_strText + "\033[0m";
}

// The red line of one applied record; p_nCmd 0 means the key itself.
std::string setTrace(const std::string& p_strName, int p_nKey, int p_nValue,
                     const std::string& p_strFunc = "&ISensorController::doIaCmd", int p_nCmd = 0) {
    const std::string strBar = "=====================";
    return coloured(31, "=" + strBar + " set " + p_strName + " (" + std::to_string(p_nKey) + "," +
                            std::to_string(p_nValue) + ") func:" + p_strFunc + " ia_cmd:" +
                            std::to_string(p_nCmd == 0 ? p_nKey : p_nCmd) + " " + strBar + "\n");
}

class TracesTest : public ControllerTest {
protected:
    void SetUp() override {
        installAlike(
            makeSet("34=50 145=70 146=40 149=18 150=0 151=6 152=30 224=2 161=0 168=0 8102=0"));
        setDebugLevel(6);
    }
    // What p_fnRun (by default: applying p_vecList) prints.
    std::string printed(std::vector<KeyVal> p_vecList, const std::function<void()>& p_fnRun = {}) {
        CaptureStdout();
        p_fnRun ? p_fnRun() : static_cast<void>(apply(std::move(p_vecList)));
        return std::regex_replace(GetCapturedStdout(), std::regex("line:[0-9]+"), "line:#");
    }
};

TEST_F(TracesTest, AppliedKeysAndDayNightRecordsPrintTheirRowsInRedAboveLevelFive) {
    EXPECT_EQ(printed({{34, 40}}), setTrace("KEY_BRIGHTNESS", 34, 40) + "\n");
    // A twin traces its normal row; long names are cut at 32 characters.
    EXPECT_EQ(printed({{168, 3}, {8102, 4}}),
              setTrace("KEY_IR_MODE", 161, 3) +
                  setTrace("KEY_MIXSTREAM_DISTANCE_WIDTH_OFF", 8102, 4,
                           "&ISensorController::doIaCmd_PanoTuning") +
                  "\n");
    EXPECT_EQ(printed({{146, 30}, {150, 15}}),
              setTrace("KEY_NTD_THR", 146, 30, "&ISensorController::doDNThr") +
                  coloured(0, "m_nCurScheme(0) dn_thr_st.d2n_thr(70) dn_thr_st.n2d_thr(30)  "
                              "dn_thr_st.dn_sensitivity(0)\n") +
                  setTrace("KEY_DTN_M", 150, 15, "&ISensorController::doDNTime") +
                  coloured(0, "m_nCurScheme(0) dn_time_st.d2n_hour(18) dn_time_st.d2n_min(15) "
                              "dn_time_st.n2d_hour(6) dn_time_st.n2d_min(30) \n") +
                  "\n");
    setDebugLevel(5);
    EXPECT_EQ(printed({{34, 41}, {146, 35}}), "\n");
}

TEST_F(TracesTest, RefusedAndUnknownKeysAreReported) {
    m_objIsp.failCommand(-1, 34, -1, -1);
    EXPECT_EQ(printed({{34, 40}}),
              setTrace("KEY_BRIGHTNESS", 34, 40) +
                  coloured(0, "[sensor err] file:ISensorController fun:setParameters line:#\n"
                              "set KEY_BRIGHTNESS (34,40) func:&ISensorController::doIaCmd "
                              "ia_cmd:34 ~~~failed ia_ret=-1\n"));
    // Other codes end the list silently.
    m_objIsp.clearFailures();
    m_objIsp.failCommand(-1, 34, -1, -7);
    EXPECT_EQ(printed({{34, 41}}), setTrace("KEY_BRIGHTNESS", 34, 41));
    // An unknown key is reported step by step and sent as its own command.
    clearRecords();
    EXPECT_EQ(printed({{12, 5}}),
              coloured(0, "cand not find key-cmd while key=12\n") +
                  coloured(31, "[sensor assert] file:ISensorController fun:setParameters "
                               "line:#\n-1 != findFromKeyCmdMap(m_pKeyCmdMap, nKey, "
                               "stKeyCmdTmp)   ~~~Assertion failed.\n") +
                  coloured(31, "p_pKeyval[0].key(12)") + coloured(32, "not find (12) \n") +
                  setTrace("unknow key", 12, 5, "ISensorController::doIaCmd") +
                  coloured(0, "[sensor dbg] file:ISensorController fun:setParameters line:#\n"
                              "SET_KEY_VAL FAILED, m_nCurScheme(0), p_pKeyval[0].key(12), "
                              "p_pKeyval[0].value(5),  maybe jixin\n") +
                  "\n");
    EXPECT_EQ(sent(), "12=5");
    EXPECT_TRUE(
        contains(m_objRoot.readFile("/mnt/mtd/log/SensorError.log"), "p_pKeyval[0].key(12)"));
}

TEST_F(TracesTest, SingleParameterCallsAndSchemeLookupsAreTraced) {
    int nValue = 0;
    u32 nStored = 0;
    EXPECT_EQ(printed({},
                      [&] {
                          ctl().setParameter(34, 41, true);
                          ctl().getParameter(34, nValue);
                          EXPECT_EQ(ctl().getKeyValFromCache(9, 34, nStored), -1);
                      }),
              coloured(0, "[sensor dbg] file:ISensorController fun:setParameter line:#\n"
                          "p_Parameters22222222222(34, 41)\n") +
                  setTrace("KEY_BRIGHTNESS", 34, 41) + "\n" +
                  coloured(0, "[sensor dbg] file:ISensorController fun:getParameter line:#\n"
                              "p_nKey(34)\n") +
                  coloured(0, "can not find val, invalid sheme(9) \n"));
    // Before the first switch the loop's cache and light-type lookups both miss.
    Access::setCurScheme(ctl(), -1);
    const std::string strMiss = coloured(0, "can not find val, invalid sheme(-1) \n");
    EXPECT_EQ(printed({{34, 40}}), strMiss + strMiss + setTrace("KEY_BRIGHTNESS", 34, 40) + "\n");
}

} // namespace
} // namespace sensortest
