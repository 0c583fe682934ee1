// The ISP simulator: values and records per channel, refusals, fault injection,
// the call log, the dynamic list and correction, profiles and day/night state.
#include "isp/IspSimulator.h"
#include "common/ia_ioctrl.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t kGuard = 0xA5A5A5A5u;
constexpr uint32_t kListCmd = IA_CMD_DYNAMIC_PARAMS_CMDS_GET;
constexpr int kAll = isp::kChannelCount;

ia_dynamic_params_attr_st listAttr(std::initializer_list<int32_t> p_lstItems) {
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = static_cast<int32_t>(p_lstItems.size());
    std::copy(p_lstItems.begin(), p_lstItems.end(), stAttr.item);
    return stAttr;
}

const char kTwoChannelProfile[] = R"xml(<SensorProfile name="dual">
  <Command id="34" value="60" min="0" max="100"/>
  <Command id="2528" value="1" items="0 1 2 3"/>
  <Record id="2496" text="LENS 2.3"/>
  <Dynamic id="2368" type="0"><Item value="1"/><Item value="3"/></Dynamic>
  <DayNight dayThreshold="50" nightThreshold="20" level="10"/>
  <Channel index="1">
    <Command id="34" value="40"/>
    <Dynamic id="16" type="1" min="0" max="9" default="4"/>
    <DayNight level="90"/>
  </Channel>
</SensorProfile>)xml";

std::string wrap(const std::string& p_strBody) {
    return "<SensorProfile>" + p_strBody + "</SensorProfile>";
}

// A profile with n dynamic commands.
std::string manyDynamics(int p_nCount) {
    std::string strBody;
    for (int i = 0; i < p_nCount; ++i) {
        strBody += "<Dynamic id=\"" + std::to_string(100 + i) +
                   "\" type=\"0\"><Item value=\"0\"/></Dynamic>";
    }
    return wrap(strBody);
}

// The process-wide simulator, back on the built-in profile before every test.
class IspTest : public ::testing::Test {
protected:
    void SetUp() override { sim().loadDefaultProfile(); }

    static IspSimulator& sim() { return IspSimulator::instance(); }
    static int call(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData) {
        return ia_ioctrl_v2(p_nChannel, static_cast<ia_cmd_e>(p_nCmd), p_nOption, p_pData);
    }
    static int32_t get(int p_nChannel, uint32_t p_nCmd) {
        int32_t nValue = -12345;
        EXPECT_EQ(call(p_nChannel, p_nCmd, IA_CMD_OPT_GET, &nValue), 0);
        return nValue;
    }
    static int set(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue) {
        return call(p_nChannel, p_nCmd, IA_CMD_OPT_SET, &p_nValue);
    }
    static int32_t correct(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue, int p_nExpect = 0) {
        EXPECT_EQ(call(p_nChannel, p_nCmd, IA_CMD_OPT_CORRECT_PARAM, &p_nValue), p_nExpect);
        return p_nValue;
    }
    // A record read through the ISP call, with a guard word after it against overruns.
    template <typename Rec>
    static Rec guarded(int p_nChannel, uint32_t p_nCmd, int p_nOption, int p_nExpect = 0) {
        struct {
            Rec rec{};
            uint32_t guard = kGuard;
        } stRead;
        EXPECT_EQ(call(p_nChannel, p_nCmd, p_nOption, &stRead.rec), p_nExpect);
        EXPECT_EQ(stRead.guard, kGuard);
        return stRead.rec;
    }
    // The channel's dynamic list as the ISP call gives it (at most the record's 16).
    static std::vector<uint32_t> dynamicList(int p_nChannel) {
        const auto stList = guarded<ia_dynamic_cmd_list_st>(p_nChannel, kListCmd, IA_CMD_OPT_GET);
        const int nCount = std::clamp(stList.cmd_cnt, 0, IA_DYNAMIC_CMD_MAX);
        return std::vector<uint32_t>(stList.cmd_list, stList.cmd_list + nCount);
    }
    // The values read through the ISP call at these (channel, command) pairs.
    static std::string values(std::initializer_list<std::pair<int, uint32_t>> p_lstAt) {
        std::string strOut;
        for (const auto& [nChannel, nCmd] : p_lstAt) {
            strOut += (strOut.empty() ? "" : " ") + std::to_string(get(nChannel, nCmd));
        }
        return strOut;
    }
    static ia_dynamic_params_attr_st range(int p_nChannel, uint32_t p_nCmd, int p_nExpect = 0) {
        return guarded<ia_dynamic_params_attr_st>(p_nChannel, p_nCmd, IA_CMD_OPT_GET_PARAM_RNAGE,
                                                  p_nExpect);
    }
    // The log as "channel:cmd:option=value[,record bytes]->result " entries.
    static std::string logText() {
        std::string strOut;
        for (const IspSimulator::LogEntry& stEntry : sim().log()) {
            strOut += std::to_string(stEntry.channel) + ":" + std::to_string(stEntry.cmd) + ":" +
                      std::to_string(stEntry.option) + "=" + std::to_string(stEntry.value);
            for (uint8_t nByte : stEntry.bytes) {
                strOut += "," + std::to_string(nByte);
            }
            strOut += "->" + std::to_string(stEntry.result) + " ";
        }
        return strOut;
    }
};

} // namespace

TEST_F(IspTest, ValuesAndRecordsAreStoredPerChannelAndCommandInTheirSize) {
    ASSERT_EQ(set(0, 34, 70), 0);
    ASSERT_EQ(set(1, 34, 20), 0);
    ASSERT_EQ(set(2, 0x7777, -9), 0); // unknown commands are stored like any other
    EXPECT_TRUE(sim().setValue(2, 34, 99));
    // Channel 3 keeps the built-in brightness; a command never written reads 0.
    EXPECT_EQ(values({{0, 34}, {1, 34}, {3, 34}, {2, 0x7777}, {2, 0x7778}, {2, 34}}),
              "70 20 50 -9 0 99");
    EXPECT_EQ(sim().getRecord(0, 145),
              (std::vector<uint8_t>{70, 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0}));
    bool bHeat = false; // the heat status is one byte: a bool receives it
    ASSERT_TRUE(sim().setRecord(0, 1606, {1}) && call(0, 1606, IA_CMD_OPT_GET, &bHeat) == 0);
    EXPECT_TRUE(bHeat);
    const std::pair<uint32_t, std::size_t> arrSizes[] = {
        {145, 12}, {146, 12}, {154, 12},  {149, 16},  {150, 16},
        {151, 16}, {152, 16}, {2816, 16}, {2496, 50}, {1606, 1}};
    for (const auto& [nCmd, nSize] : arrSizes) {
        std::array<uint8_t, 64> arrBuf;
        arrBuf.fill(0xCC);
        ASSERT_EQ(call(2, nCmd, IA_CMD_OPT_GET, arrBuf.data()), 0);
        EXPECT_EQ(std::count(arrBuf.begin() + nSize, arrBuf.end(), 0xCC), 64 - nSize) << nCmd;
        std::iota(arrBuf.begin(), arrBuf.end(), 1);
        ASSERT_EQ(call(2, nCmd, IA_CMD_OPT_SET, arrBuf.data()), 0);
        EXPECT_EQ(sim().getRecord(2, nCmd),
                  std::vector<uint8_t>(arrBuf.begin(), arrBuf.begin() + nSize));
        EXPECT_NE(sim().getRecord(3, nCmd), sim().getRecord(2, nCmd)) << nCmd;
    }
}

// Calls on a channel that is not there (the module's channel ids count from 1)
// or with an unknown option are refused; failures are injected per rule.
TEST_F(IspTest, BadCallsInjectedFailuresAndExecStatus) {
    for (const auto& [nChannel, nOption] :
         {std::pair{0, -1}, {0, 5}, {0, 100}, {-1, 1}, {kAll, 1}, {1000, 0}}) {
        int32_t nValue = 77;
        EXPECT_EQ(call(nChannel, 34, nOption, &nValue), IspSimulator::ERR_INVALID);
        EXPECT_EQ(nValue, 77);
    }
    EXPECT_EQ(get(0, 34), 50);

    ASSERT_TRUE(sim().setExecStatus(0, 1536, 3) && sim().setExecStatus(-1, 1537, 2)); // -1: all
    EXPECT_FALSE(sim().setExecStatus(9, 1537, 2));
    for (const auto& [nChannel, nCmd, nExpected] :
         {std::array{0, 1536, 3}, {1, 1536, 0}, {3, 1537, 2}}) {
        int32_t nStatus = -1;
        ASSERT_EQ(call(nChannel, nCmd, IA_CMD_OPT_GET_EXEC_STATUS, &nStatus), 0);
        EXPECT_EQ(nStatus, nExpected) << nChannel << "/" << nCmd;
    }

    ASSERT_EQ(set(0, 34, 1234), 0);
    ASSERT_TRUE(sim().failCommand(0, 34, IA_CMD_OPT_GET, -5));
    sim().clearLog();
    int32_t nValue = 99;
    EXPECT_EQ(call(0, 34, IA_CMD_OPT_GET, &nValue), -5);
    EXPECT_EQ(logText(), "0:34:1=99->-5 ") << "the value is left untouched";
    EXPECT_EQ(get(1, 34), 50);      // other channel
    EXPECT_EQ(set(0, 34, 1300), 0); // other option
    // Any channel and option; a failed SET stores nothing.
    ASSERT_TRUE(sim().failCommand(-1, 2369, -1, 7));
    EXPECT_EQ(set(2, 2369, 10), 7);
    EXPECT_EQ(sim().getValue(2, 2369), 50);
    // The first rule that matches decides.
    ASSERT_TRUE(sim().failCommand(1, 2400, -1, -8) &&
                sim().failCommand(-1, 2400, IA_CMD_OPT_SET, -9));
    EXPECT_EQ(std::make_pair(set(1, 2400, 1), set(0, 2400, 1)), std::make_pair(-8, -9));
    sim().clearFailures();
    EXPECT_EQ(get(0, 34), 1300);
    EXPECT_EQ(set(2, 2369, 10), 0);
}

// The log keeps calls in order with the data after the call; reset restores
// the profile's starting state and logging.
TEST_F(IspTest, LogKeepsCallsInOrderAndResetRestoresTheProfile) {
    sim().clearLog();
    ASSERT_EQ(set(1, 34, 10), 0);
    EXPECT_EQ(correct(0, 49, 100), 8);
    std::array<int32_t, 3> arrThr = {1, 2, 3};
    ASSERT_EQ(call(2, 145, IA_CMD_OPT_SET, arrThr.data()), 0);
    EXPECT_NE(call(0, 34, 9, arrThr.data()), 0);
    EXPECT_EQ(logText(),
              "1:34:0=10->0 0:49:3=8->0 2:145:0=0,1,0,0,0,2,0,0,0,3,0,0,0->0 0:34:9=0->-1 ");
    sim().enableLog(false);
    ASSERT_EQ(set(1, 34, 11), 0);
    EXPECT_EQ(sim().log().size(), 4u);

    ASSERT_TRUE(sim().setRecord(0, 2496, std::vector<uint8_t>(50, 'x')) &&
                sim().failCommand(-1, 2337, -1, -4) && sim().setLightLevel(0, 0) &&
                sim().setDynamicCommands(0, {34}));
    sim().reset();
    EXPECT_TRUE(sim().log().empty());
    EXPECT_EQ(values({{0, 34}, {0, 2337}, {0, 153}}), "50 50 0");
    EXPECT_EQ(sim().getRecord(0, 2496)[0], 'I');
    EXPECT_EQ(dynamicList(0).size(), 6u);
    EXPECT_EQ(sim().log().size(), 4u); // logging is on again
}

TEST_F(IspTest, ListRangesAndCorrectionComeFromTheProfileAndStayInsideTheRecords) {
    EXPECT_EQ(dynamicList(0), (std::vector<uint32_t>{16, 49, 2368, 2369, 2464, 2497}));
    EXPECT_EQ(get(0, 49), 6); // a dynamic command without a value starts at its default
    ia_dynamic_params_attr_st stAttr = range(1, 2368);
    EXPECT_EQ(std::make_tuple(stAttr.param_type, stAttr.max_val, stAttr.items_cnt, stAttr.item[2]),
              std::make_tuple(0, 2, 3, 2));
    stAttr = range(1, 2369);
    EXPECT_EQ(std::make_tuple(stAttr.param_type != 0, stAttr.max_val, stAttr.default_val),
              std::make_tuple(true, 100, 50));
    range(1, 34, IspSimulator::ERR_NOT_DYNAMIC);

    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({30, 10, 20})));
    ASSERT_TRUE(sim().setAttribute(0, 4001, listAttr({INT32_MIN, INT32_MAX})));
    ASSERT_TRUE(sim().setAttribute(0, 4002, listAttr({}))); // offers nothing: the value stays
    const std::array<int32_t, 3> arrCases[] = {
        {49, 100, 8},          {49, -3, 1},          {49, 5, 5},     // max shutter list 1..8
        {4000, 15, 10},        {4000, 25, 20},       {4000, 26, 30}, // ties to the lower, any order
        {4001, -1, INT32_MIN}, {4001, 0, INT32_MAX},                 // distances beyond 32 bits
        {2369, 150, 100},      {2369, -5, 0},        {2369, 42, 42}, // WDR strength range 0..100
        {34, 999, 999},        {4002, 17, 17}}; // not dynamic: allowed as it is
    for (const auto& [nCmd, nIn, nOut] : arrCases) {
        EXPECT_EQ(correct(0, nCmd, nIn), nOut) << nCmd << " " << nIn;
    }
    EXPECT_EQ(get(0, 49), 6); // correction never stores

    // Malformed answers and overrides stay inside the records.
    stAttr = listAttr({1});
    stAttr.items_cnt = -5; // a count below zero offers nothing
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 17), 17);
    // A count beyond the record reads only the record's 64 items.
    stAttr.items_cnt = 1000;
    std::iota(stAttr.item, stAttr.item + IA_DYNAMIC_ITEM_MAX, 1000);
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 5000), 1063);
    // A range with min above max cannot correct and says so.
    std::tie(stAttr.param_type, stAttr.min_val, stAttr.max_val) = std::make_tuple(1, 10, 0);
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 5, IspSimulator::ERR_BAD_ATTRIBUTE), 5);

    // Overrides report counts as set, but only what fits is copied.
    std::vector<uint32_t> vecCmds(20);
    std::iota(vecCmds.begin(), vecCmds.end(), 100u);
    ASSERT_TRUE(sim().setDynamicCommands(-1, vecCmds));
    EXPECT_EQ(guarded<ia_dynamic_cmd_list_st>(2, kListCmd, IA_CMD_OPT_GET).cmd_cnt, 20);
    EXPECT_EQ(dynamicList(2), std::vector<uint32_t>(vecCmds.begin(), vecCmds.begin() + 16));
    ia_dynamic_params_attr_st stHuge = listAttr({4, 5});
    stHuge.items_cnt = 65;
    ASSERT_TRUE(sim().setAttribute(1, 34, stHuge));
    EXPECT_EQ(std::make_pair(range(1, 34).items_cnt, range(1, 34).item[1]), std::make_pair(65, 5));
    range(0, 34, IspSimulator::ERR_NOT_DYNAMIC); // only channel 1 got it
    EXPECT_FALSE(sim().setDynamicCommands(kAll, {}) || sim().setAttribute(-3, 34, stHuge));
}

// A profile sets values, records and dynamic answers per channel. A SET outside
// a command's range is refused as a sensor's ISP library refuses it: the plain
// bounds of a profile Command, a dynamic command's items or min..max; a
// channel's own Command replaces the document's bounds.
TEST_F(IspTest, ProfilesFromTextFilesAndTheEnvironmentSetValuesAndRangesPerChannel) {
    std::string strError;
    ASSERT_TRUE(sim().loadProfileText(kTwoChannelProfile, &strError)) << strError;
    EXPECT_EQ(sim().profileName(), "dual");
    // Nothing is left of the built-in profile (2337); level 10 is below the night
    // threshold, channel 1 is bright; a list's first item is its default.
    EXPECT_EQ(values({{0, 34}, {1, 34}, {0, 2337}, {0, 153}, {1, 153}, {0, 2368}}),
              "60 40 0 1 0 1");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(sim().getRecord(1, 2496).data())),
              "LENS 2.3");
    EXPECT_EQ(dynamicList(0), std::vector<uint32_t>{2368});
    EXPECT_EQ(dynamicList(1), std::vector<uint32_t>{16}); // channel 1's list replaces it
    EXPECT_EQ(correct(1, 16, 12), 9);
    constexpr int BAD = IspSimulator::ERR_OUT_OF_RANGE;
    const std::array<int32_t, 5> arrCases[] = {
        // channel, command, value, result, value then
        {0, 34, 101, BAD, 60}, {0, 34, -1, BAD, 60}, {0, 34, 100, 0, 100}, {0, 2528, 7, BAD, 1},
        {0, 2528, 3, 0, 3},    {0, 2368, 2, BAD, 1}, {0, 2368, 3, 0, 3},   {1, 16, 10, BAD, 4},
        {1, 16, 9, 0, 9},      {1, 34, 500, 0, 500}, {1, 4242, -7, 0, -7}};
    for (const auto& [nChannel, nCmd, nValue, nResult, nThen] : arrCases) {
        EXPECT_EQ(set(nChannel, nCmd, nValue), nResult) << nCmd << " " << nValue;
        EXPECT_EQ(get(nChannel, nCmd), nThen) << nCmd << " " << nValue;
    }
    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({}))); // no items: nothing to hold to
    EXPECT_EQ(set(0, 4000, 17), 0);

    sensortest::TempDeviceRoot objRoot;
    objRoot.writeFile("/profiles/dual.xml", kTwoChannelProfile);
    objRoot.writeFile("/profiles/broken.xml", "<SensorProfile>");
    const std::string strGood = objRoot.hostPath("/profiles/dual.xml");
    const std::string strBroken = objRoot.hostPath("/profiles/broken.xml");
    // A simulator made afterwards starts from SENSOR_ISP_PROFILE; a broken one
    // falls back to the built-in sensor.
    ASSERT_EQ(setenv("SENSOR_ISP_PROFILE", strGood.c_str(), 1), 0);
    const IspSimulator objFromEnv;
    ASSERT_EQ(setenv("SENSOR_ISP_PROFILE", strBroken.c_str(), 1), 0);
    const IspSimulator objFallback;
    unsetenv("SENSOR_ISP_PROFILE");
    EXPECT_EQ(objFromEnv.getValue(1, 34), 40);
    EXPECT_EQ(objFallback.profileName(), "builtin");
}

TEST_F(IspTest, BrokenProfilesAreRefusedAndChangeNothing) {
    const std::string strCmd = "<Command id=\"34\" value=";
    std::string strDeep;
    for (int i = 0; i < 300; ++i) {
        strDeep = "<C>" + strDeep + "</C>";
    }
    const std::pair<std::string, std::string> arrCases[] = {
        {"<SensorProfile><Command id=\"34\"", "XML error"},
        {"<Profile/>", "root element"},
        {wrap(strDeep), "nested deeper than 256"},
        {wrap("<Comand id=\"34\" value=\"1\"/>"), "unknown element"},
        {wrap(strCmd + "\"5x\"/>"), "not a number"},
        {wrap(strCmd + "\"1\"/>" + strCmd + "\"2\"/>"), "twice"},
        {wrap(strCmd + "\"5\" min=\"0\" max=\"4\"/>"), "outside its own"},
        {wrap(strCmd + "\"5\" min=\"9\" max=\"1\"/>"), "min <= max"},
        {wrap("<Record id=\"145\" words=\"1 2 3 4\"/>"), "do not fit"},
        {wrap("<Dynamic id=\"16\" type=\"1\" min=\"5\" max=\"1\"/>"), "min <= default <= max"},
        {manyDynamics(17), "more than 16"},
        {wrap("<Channel index=\"8\"/>"), "not a number in 0..7"},
    };
    ASSERT_EQ(set(0, 34, 77), 0);
    for (const auto& [strXml, strExpected] : arrCases) {
        std::string strError;
        EXPECT_FALSE(sim().loadProfileText(strXml, &strError)) << strXml.substr(0, 200);
        EXPECT_NE(strError.find(strExpected), std::string::npos) << strError;
    }
    EXPECT_EQ(get(0, 34), 77);
    EXPECT_EQ(sim().profileName(), "builtin");
    EXPECT_TRUE(sim().loadProfileText(manyDynamics(16)));
}

TEST_F(IspTest, DayNightStateFollowsTheLightWithHysteresis) {
    // Built-in thresholds: night at 30 or below, day at 60 or above. Forcing
    // the state (-1: SET 1) holds until the light crosses a threshold.
    const std::pair<int32_t, int32_t> arrSteps[] = {{45, 0},   {31, 0}, {30, 1}, {45, 1},
                                                    {59, 1},   {60, 0}, {45, 0}, {-100, 1},
                                                    {1000, 0}, {-1, 1}, {45, 1}, {70, 0}};
    for (const auto& [nLevel, nState] : arrSteps) {
        ASSERT_TRUE(nLevel == -1 ? set(0, 153, 1) == 0 : sim().setLightLevel(0, nLevel));
        EXPECT_EQ(get(0, 153), nState) << nLevel;
    }
    ASSERT_TRUE(sim().setLightLevel(1, 10)); // per channel
    EXPECT_EQ(values({{1, 153}, {2, 153}}), "1 0");
    EXPECT_FALSE(sim().setLightLevel(kAll, 0));
}
