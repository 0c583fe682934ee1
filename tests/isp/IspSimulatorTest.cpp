// The ISP simulator: values and records per channel, refusals, fault injection,
// the call log, the dynamic list and correction, profiles and day/night state.
#include "isp/IspSimulator.h"
#include "common/ia_ioctrl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <numeric>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

constexpr uint32_t kListCmd = IA_CMD_DYNAMIC_PARAMS_CMDS_GET;
constexpr int kAll = isp::kChannelCount;
constexpr int kRange = IA_CMD_OPT_GET_PARAM_RNAGE;
using Attr = ia_dynamic_params_attr_st;

Attr listAttr(std::initializer_list<int32_t> p_lstItems) {
    Attr stAttr{};
    stAttr.items_cnt = static_cast<int32_t>(p_lstItems.size());
    std::copy(p_lstItems.begin(), p_lstItems.end(), stAttr.item);
    return stAttr;
}

const char kTwoChannelProfile[] = R"xml(<SensorProfile name="dual">
  <Command id="34" value="60" min="0" max="100"/><Command id="2528" value="1" items="0 1 2 3"/>
  <Record id="2496" text="LENS 2.3"/>
  <Dynamic id="2368" type="0"><Item value="1"/><Item value="3"/></Dynamic>
  <DayNight dayThreshold="50" nightThreshold="20" level="10"/>
  <Channel index="1"><Command id="34" value="40"/><DayNight level="90"/>
    <Dynamic id="16" type="1" min="0" max="9" default="4"/></Channel>
</SensorProfile>)xml";

// The process-wide simulator, back on the built-in profile before every test.
class IspTest : public ::testing::Test {
protected:
    void SetUp() override { sim().loadDefaultProfile(); }

    static IspSimulator& sim() { return IspSimulator::instance(); }
    static int call(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData) {
        return ia_ioctrl_v2(p_nChannel, static_cast<ia_cmd_e>(p_nCmd), p_nOption, p_pData);
    }
    static int set(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue) {
        return call(p_nChannel, p_nCmd, IA_CMD_OPT_SET, &p_nValue);
    }
    static int32_t correct(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue) {
        EXPECT_EQ(call(p_nChannel, p_nCmd, IA_CMD_OPT_CORRECT_PARAM, &p_nValue), 0);
        return p_nValue;
    }
    // What the ISP call gives into filler bytes, with a guard word against overruns.
    template <typename Rec = int32_t>
    static Rec read(int p_nChannel, uint32_t p_nCmd, int p_nOption = IA_CMD_OPT_GET,
                    int p_nExpect = 0) {
        struct {
            Rec rec;
            uint32_t guard = 0xA5A5A5A5u;
        } stRead;
        std::memset(&stRead.rec, 0xCD, sizeof(Rec));
        EXPECT_EQ(call(p_nChannel, p_nCmd, p_nOption, &stRead.rec), p_nExpect);
        EXPECT_EQ(stRead.guard, 0xA5A5A5A5u);
        return stRead.rec;
    }
    // The values read through the ISP call at these (channel, command) pairs.
    static std::string values(std::initializer_list<std::pair<int, uint32_t>> p_lstAt) {
        std::string strOut;
        for (const auto& [nChannel, nCmd] : p_lstAt) {
            strOut += (strOut.empty() ? "" : " ") + std::to_string(read(nChannel, nCmd));
        }
        return strOut;
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

// Values and records (in their size) per channel and command; bad calls (the
// module's channel ids count from 1) touch nothing; failures are injected per
// rule, the first matching rule deciding, and leave the data untouched.
TEST_F(IspTest, ValuesRecordsBadCallsFailuresTheLogAndReset) {
    ASSERT_TRUE(set(0, 34, 70) == 0 && set(1, 34, 20) == 0 && set(2, 0x7777, -9) == 0);
    EXPECT_TRUE(sim().setValue(2, 34, 99));
    EXPECT_EQ(values({{0, 34}, {1, 34}, {3, 34}, {2, 0x7777}, {2, 0x7778}, {2, 34}}),
              "70 20 50 -9 0 99");
    for (const auto& [nCmd, nSize] : {std::pair{145, 12u}, {149, 16u}, {2496, 50u}, {1606, 1u}}) {
        EXPECT_EQ(sim().getRecord(2, nCmd).size(), nSize) << nCmd;
    }
    const auto arrThr = read<std::array<uint8_t, 12>>(0, 145); // the GET stays inside
    EXPECT_EQ(std::make_pair(arrThr[0], arrThr[4]), std::make_pair(uint8_t{70}, uint8_t{30}));
    for (const auto& [nChannel, nOption] :
         {std::pair{0, -1}, {0, 5}, {-1, 1}, {kAll, 1}, {1000, 0}}) {
        EXPECT_EQ(read(nChannel, 34, nOption, IspSimulator::ERR_INVALID), int32_t(0xCDCDCDCD));
    }

    ASSERT_TRUE(sim().failCommand(0, 34, IA_CMD_OPT_GET, -5));
    EXPECT_EQ(read(0, 34, IA_CMD_OPT_GET, -5), int32_t(0xCDCDCDCD));
    EXPECT_EQ(set(0, 34, 13), 0) << "other option";
    ASSERT_TRUE(sim().failCommand(-1, 2369, -1, 7)); // any channel and option
    EXPECT_EQ(set(2, 2369, 10), 7);
    EXPECT_EQ(sim().getValue(2, 2369), 50) << "a failed SET stores nothing";
    ASSERT_TRUE(sim().failCommand(1, 2400, -1, -8) &&
                sim().failCommand(-1, 2400, IA_CMD_OPT_SET, -9));
    EXPECT_EQ(std::make_pair(set(1, 2400, 1), set(0, 2400, 1)), std::make_pair(-8, -9));
    sim().clearFailures();
    EXPECT_EQ(set(2, 2369, 10), 0);
    EXPECT_EQ(values({{0, 34}, {1, 34}}), "13 20");

    // The log keeps calls in order with the data after the call; reset restores
    // the profile's starting state.
    sim().clearLog();
    ASSERT_EQ(set(1, 34, 10), 0);
    EXPECT_EQ(correct(0, 49, 100), 8);
    std::array<int32_t, 3> arrSet = {1, 2, 3};
    ASSERT_EQ(call(2, 145, IA_CMD_OPT_SET, arrSet.data()), 0);
    EXPECT_NE(call(0, 34, 9, arrSet.data()), 0);
    EXPECT_EQ(logText(),
              "1:34:0=10->0 0:49:3=8->0 2:145:0=0,1,0,0,0,2,0,0,0,3,0,0,0->0 0:34:9=0->-1 ");

    ASSERT_TRUE(sim().setRecord(0, 2496, std::vector<uint8_t>(50, 'x')) &&
                sim().failCommand(-1, 2337, -1, -4) && sim().setLightLevel(0, 0) &&
                sim().setDynamicCommands(0, {34}));
    sim().reset();
    EXPECT_TRUE(sim().log().empty());
    EXPECT_EQ(values({{0, 34}, {0, 2337}, {0, 153}}), "50 50 0");
    EXPECT_EQ(sim().getRecord(0, 2496)[0], 'I');
    EXPECT_EQ(read<ia_dynamic_cmd_list_st>(0, kListCmd).cmd_cnt, 6);
}

// Calls on different channels run side by side, and take the failure rules and
// the hook into account with the log off as with it on. Rules, the log switch
// and resets changing on another thread meanwhile lose no call and tear no
// state (the CI runs this under ThreadSanitizer).
TEST_F(IspTest, ChannelsCalledSideBySideWhileRulesTheLogAndResetsChange) {
    sim().enableLog(false);
    ASSERT_TRUE(sim().failCommand(1, 34, IA_CMD_OPT_SET, -6));
    EXPECT_EQ(std::make_pair(set(1, 34, 5), set(0, 34, 5)), std::make_pair(-6, 0));
    sim().clearFailures();
    int nHooked = 0;
    sim().setCallHook([&nHooked](int, uint32_t, int) { ++nHooked; });
    EXPECT_EQ(std::make_pair(set(1, 34, 5), nHooked), std::make_pair(0, 1));
    sim().setCallHook(nullptr);
    EXPECT_EQ(std::make_pair(set(1, 34, 7), nHooked), std::make_pair(0, 1));

    std::atomic<int> nBadResults{0};
    std::vector<std::thread> vecCallers;
    for (int nChannel = 0; nChannel < 4; ++nChannel) {
        vecCallers.emplace_back([&nBadResults, nChannel] {
            for (int32_t i = 0; i < 3000; ++i) {
                int32_t nValue = i % 100;
                const int nSet = set(nChannel, 34, nValue);
                const int nGet = call(nChannel, 34, IA_CMD_OPT_GET, &nValue);
                nBadResults += (nSet != 0 && nSet != -6) + (nGet != 0 && nGet != -6);
            }
        });
    }
    for (int nRound = 0; nRound < 60; ++nRound) {
        sim().enableLog(nRound % 2 == 0);
        ASSERT_TRUE(sim().failCommand(nRound % 4, 34, -1, -6));
        if (nRound % 3 == 0) {
            sim().clearFailures();
        }
        if (nRound % 20 == 19) {
            sim().reset();
        }
        std::this_thread::yield();
    }
    for (std::thread& objCaller : vecCallers) {
        objCaller.join();
    }
    EXPECT_EQ(nBadResults.load(), 0);
    sim().clearFailures();
    sim().enableLog(true);
    sim().clearLog();
    for (int nChannel = 0; nChannel < 4; ++nChannel) {
        ASSERT_EQ(set(nChannel, 34, 10 + nChannel), 0);
    }
    EXPECT_EQ(values({{0, 34}, {1, 34}, {2, 34}, {3, 34}}), "10 11 12 13");
    EXPECT_EQ(sim().log().size(), 8u);
}

TEST_F(IspTest, ListRangesAndCorrectionComeFromTheProfileAndStayInsideTheRecords) {
    EXPECT_EQ(read(0, 49), 6); // a dynamic command without a value starts at its default
    Attr stAttr = read<Attr>(1, 2368, kRange);
    EXPECT_EQ(std::make_tuple(stAttr.param_type, stAttr.max_val, stAttr.items_cnt, stAttr.item[2]),
              std::make_tuple(0, 2, 3, 2));
    read<Attr>(1, 34, kRange, IspSimulator::ERR_NOT_DYNAMIC);

    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({30, 10, 20})));
    const std::array<int32_t, 3> arrCases[] = {{49, 100, 8},   {49, -3, 1},      {4000, 15, 10},
                                               {4000, 25, 20}, // lists: ties to the lower
                                               {4000, 26, 30}, {2369, 150, 100}, {2369, -5, 0},
                                               {34, 999, 999}}; // ranges; not dynamic
    for (const auto& [nCmd, nIn, nOut] : arrCases) {
        EXPECT_EQ(correct(0, nCmd, nIn), nOut) << nCmd << " " << nIn;
    }
    EXPECT_EQ(read(0, 49), 6); // correction never stores

    // A count beyond the record is reported as set; correction reads its 64 items only.
    stAttr = listAttr({});
    stAttr.items_cnt = 1000;
    std::iota(stAttr.item, stAttr.item + IA_DYNAMIC_ITEM_MAX, 1000);
    ASSERT_TRUE(sim().setAttribute(1, 4000, stAttr));
    EXPECT_EQ(correct(1, 4000, 5000), 1063);
    EXPECT_EQ(read<Attr>(1, 4000, kRange).items_cnt, 1000);
    read<Attr>(2, 4000, kRange, IspSimulator::ERR_NOT_DYNAMIC); // only channel 1 got it
    EXPECT_FALSE(sim().setDynamicCommands(kAll, {}) || sim().setAttribute(-3, 34, stAttr));
}

// A profile sets values, records, dynamic answers and light per channel. A SET
// outside a command's range (a profile Command's bounds, a dynamic command's
// items or min..max) is refused as a sensor's ISP library refuses it. The
// day/night state follows the light with hysteresis; a forced state holds until
// the light crosses a threshold. A broken profile changes nothing.
TEST_F(IspTest, ProfilesSetValuesRangesAndLightPerChannel) {
    std::string strError;
    ASSERT_TRUE(sim().loadProfileText(kTwoChannelProfile, &strError)) << strError;
    // Nothing is left of the built-in profile (2337); a list's first item is its default.
    EXPECT_EQ(values({{0, 34}, {1, 34}, {0, 2337}, {0, 153}, {1, 153}, {0, 2368}}),
              "60 40 0 1 0 1");
    EXPECT_EQ(sim().getRecord(1, 2496)[7], '3');                   // "LENS 2.3"
    const auto stList = read<ia_dynamic_cmd_list_st>(1, kListCmd); // channel 1's own list
    EXPECT_EQ(std::make_pair(stList.cmd_cnt, stList.cmd_list[0]), std::make_pair(1, 16u));
    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({}))); // no items: nothing to hold to
    constexpr int BAD = IspSimulator::ERR_OUT_OF_RANGE;
    const std::array<int32_t, 5> arrCases[] = {
        // channel, command, value, result, value then
        {0, 34, 101, BAD, 60}, {0, 34, -1, BAD, 60}, {0, 34, 100, 0, 100}, {0, 2528, 7, BAD, 1},
        {0, 2528, 3, 0, 3},    {0, 2368, 2, BAD, 1}, {0, 2368, 3, 0, 3},   {1, 16, 10, BAD, 4},
        {1, 16, 9, 0, 9},      {1, 34, 500, 0, 500}, {1, 4242, -7, 0, -7}, {0, 4000, 17, 0, 17}};
    for (const auto& [nChannel, nCmd, nValue, nResult, nThen] : arrCases) {
        EXPECT_EQ(set(nChannel, nCmd, nValue), nResult) << nCmd << " " << nValue;
        EXPECT_EQ(read(nChannel, nCmd), nThen) << nCmd << " " << nValue;
    }
    // Light levels on channel 0 (-1: force night); channel 1 stays in daylight.
    const std::pair<int32_t, int32_t> arrLight[] = {{49, 1},   {50, 0}, {21, 0}, {20, 1}, {-100, 1},
                                                    {1000, 0}, {-1, 1}, {30, 1}, {50, 0}};
    for (const auto& [nLevel, nState] : arrLight) {
        ASSERT_TRUE(nLevel == -1 ? set(0, 153, 1) == 0 : sim().setLightLevel(0, nLevel));
        EXPECT_EQ(values({{0, 153}, {1, 153}}), std::to_string(nState) + " 0") << nLevel;
    }
    EXPECT_FALSE(sim().setLightLevel(kAll, 0));

    std::string strDeep;
    for (int i = 0; i < 300; ++i) {
        strDeep = "<C>" + strDeep + "</C>";
    }
    // Refusals leave the profile in force (the tool tests: a broken device profile).
    for (const auto& [strXml, strExpected] :
         {std::pair<std::string, std::string>{"<SensorProfile>" + strDeep + "</SensorProfile>",
                                              "nested deeper than 256"},
          {"<SensorProfile><Channel index=\"8\"/></SensorProfile>", "not a number in 0..7"}}) {
        EXPECT_FALSE(sim().loadProfileText(strXml, &strError)) << strXml.substr(0, 200);
        EXPECT_NE(strError.find(strExpected), std::string::npos) << strError;
    }
    EXPECT_EQ(sim().profileName() + " " + values({{0, 34}}), "dual 100");
}
