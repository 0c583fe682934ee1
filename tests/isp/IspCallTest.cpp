// The ISP call itself: values and records per channel, refusals, fault
// injection, reset and the call log.
#include "IspTestFixture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>
#include <vector>

namespace {

std::vector<uint8_t> words(std::initializer_list<int32_t> p_lstWords) {
    std::vector<uint8_t> vecOut(p_lstWords.size() * 4);
    std::memcpy(vecOut.data(), p_lstWords.begin(), vecOut.size());
    return vecOut;
}

} // namespace

TEST_F(IspTest, ValuesAreStoredPerChannelAndCommand) {
    ASSERT_EQ(set(0, 34, 70), 0);
    ASSERT_EQ(set(1, 34, 20), 0);
    EXPECT_EQ(get(0, 34), 70);
    EXPECT_EQ(get(1, 34), 20);
    EXPECT_EQ(get(3, 34), 50); // built-in brightness
    // Unknown commands are stored like any other; never written reads 0.
    ASSERT_EQ(set(2, 0x7777, -9), 0);
    EXPECT_EQ(get(2, 0x7777), -9);
    EXPECT_EQ(get(2, 0x7778), 0);
    EXPECT_TRUE(sim().setValue(2, 34, 99));
    EXPECT_EQ(get(2, 34), 99);
    EXPECT_EQ(sim().getValue(1, 34), 20);
}

TEST_F(IspTest, RecordCommandsMoveExactlyTheirSize) {
    constexpr uint8_t kCanary = 0xCC;
    const std::array<std::pair<uint32_t, std::size_t>, 10> arrSizes = {{{145, 12},
                                                                        {146, 12},
                                                                        {154, 12},
                                                                        {149, 16},
                                                                        {150, 16},
                                                                        {151, 16},
                                                                        {152, 16},
                                                                        {2816, 16},
                                                                        {2496, 50},
                                                                        {1606, 1}}};
    for (const auto& [nCmd, nSize] : arrSizes) {
        SCOPED_TRACE(nCmd);
        EXPECT_EQ(isp::recordSize(nCmd), nSize);
        std::array<uint8_t, 64> arrBuf;
        arrBuf.fill(kCanary);
        ASSERT_EQ(call(1, nCmd, IA_CMD_OPT_GET, arrBuf.data()), 0);
        EXPECT_TRUE(std::all_of(arrBuf.begin() + nSize, arrBuf.end(),
                                [=](uint8_t b) { return b == kCanary; }));
        for (std::size_t i = 0; i < arrBuf.size(); ++i) {
            arrBuf[i] = static_cast<uint8_t>(i + 1);
        }
        ASSERT_EQ(call(1, nCmd, IA_CMD_OPT_SET, arrBuf.data()), 0);
        EXPECT_EQ(sim().getRecord(1, nCmd),
                  std::vector<uint8_t>(arrBuf.begin(), arrBuf.begin() + nSize));
        EXPECT_NE(sim().getRecord(0, nCmd), sim().getRecord(1, nCmd));
    }
}

TEST_F(IspTest, RecordContentsAndAccessors) {
    EXPECT_EQ(sim().getRecord(0, 145), words({70, 30, 0}));
    std::array<char, 50> arrVersion{};
    ASSERT_EQ(call(0, 2496, IA_CMD_OPT_GET, arrVersion.data()), 0);
    EXPECT_STREQ(arrVersion.data(), "ISP-SIM 1.0");
    // The heat status is one byte: a bool receives it.
    ASSERT_TRUE(sim().setRecord(0, 1606, {1}));
    bool bHeat = false;
    ASSERT_EQ(call(0, 1606, IA_CMD_OPT_GET, &bHeat), 0);
    EXPECT_TRUE(bHeat);
    // Value and record commands are kept apart.
    EXPECT_FALSE(sim().setRecord(0, 1606, {1, 0}));
    EXPECT_FALSE(sim().setRecord(0, 34, {1, 0, 0, 0}));
    EXPECT_FALSE(sim().setValue(0, 145, 1));
    EXPECT_FALSE(sim().getValue(0, 145).has_value());
    EXPECT_TRUE(sim().getRecord(0, 34).empty());
}

TEST_F(IspTest, MalformedCallsAreRefusedWithoutTouchingData) {
    for (int nOption = IA_CMD_OPT_SET; nOption <= IA_CMD_OPT_GET_EXEC_STATUS; ++nOption) {
        EXPECT_NE(call(0, 34, nOption, nullptr), 0);
        EXPECT_NE(call(0, 145, nOption, nullptr), 0);
    }
    EXPECT_NE(call(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, nullptr), 0);
    const std::array<std::pair<int, int>, 6> arrBad = {
        {{0, -1}, {0, 5}, {0, 100}, {-1, 1}, {isp::kChannelCount, 1}, {1000, 0}}};
    for (const auto& [nChannel, nOption] : arrBad) {
        int32_t nValue = 77;
        EXPECT_EQ(call(nChannel, 34, nOption, &nValue), IspSimulator::ERR_INVALID);
        EXPECT_EQ(nValue, 77);
    }
    ia_dynamic_cmd_list_st stList{}; // the dynamic list can only be read
    EXPECT_NE(call(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_SET, &stList), 0);
    EXPECT_FALSE(sim().setValue(isp::kChannelCount, 34, 1));
    EXPECT_FALSE(sim().getValue(-1, 34).has_value());
    EXPECT_EQ(get(0, 34), 50);
}

TEST_F(IspTest, ExecStatusIsSettablePerChannelAndCommand) {
    int32_t nStatus = -1;
    ASSERT_TRUE(sim().setExecStatus(0, 1536, 3));
    ASSERT_EQ(call(0, 1536, IA_CMD_OPT_GET_EXEC_STATUS, &nStatus), 0);
    EXPECT_EQ(nStatus, 3);
    ASSERT_EQ(call(1, 1536, IA_CMD_OPT_GET_EXEC_STATUS, &nStatus), 0);
    EXPECT_EQ(nStatus, 0);
    ASSERT_TRUE(sim().setExecStatus(-1, 1537, 2));
    ASSERT_EQ(call(3, 1537, IA_CMD_OPT_GET_EXEC_STATUS, &nStatus), 0);
    EXPECT_EQ(nStatus, 2);
    EXPECT_FALSE(sim().setExecStatus(9, 1537, 2));
}

TEST_F(IspTest, InjectedFailuresReturnTheCodeAndChangeNothing) {
    ASSERT_EQ(set(0, 34, 1234), 0);
    ASSERT_TRUE(sim().failCommand(0, 34, IA_CMD_OPT_GET, -5));
    sim().clearLog();
    int32_t nValue = 99;
    EXPECT_EQ(call(0, 34, IA_CMD_OPT_GET, &nValue), -5);
    EXPECT_EQ(nValue, 99);
    const auto vecLog = sim().log();
    ASSERT_EQ(vecLog.size(), 1u);
    EXPECT_EQ(vecLog[0].result, -5);
    EXPECT_EQ(vecLog[0].value, 99);
    EXPECT_EQ(get(1, 34), 50);      // other channel
    EXPECT_EQ(set(0, 34, 1300), 0); // other option
    // Any channel and option; a failed SET stores nothing.
    ASSERT_TRUE(sim().failCommand(-1, 2369, -1, 7));
    EXPECT_EQ(set(2, 2369, 10), 7);
    EXPECT_EQ(sim().getValue(2, 2369), 50);
    // The first rule that matches decides.
    ASSERT_TRUE(sim().failCommand(1, 2400, -1, -8));
    ASSERT_TRUE(sim().failCommand(-1, 2400, IA_CMD_OPT_SET, -9));
    EXPECT_EQ(set(1, 2400, 1), -8);
    EXPECT_EQ(set(0, 2400, 1), -9);
    EXPECT_FALSE(sim().failCommand(0, 34, IA_CMD_OPT_GET, 0));
    EXPECT_FALSE(sim().failCommand(0, 34, 5, -1));
    EXPECT_FALSE(sim().failCommand(-2, 34, 1, -1));
    sim().clearFailures();
    EXPECT_EQ(get(0, 34), 1300);
    EXPECT_EQ(set(2, 2369, 10), 0);
}

TEST_F(IspTest, LogKeepsCallsInOrderWithDataAfterTheCall) {
    sim().clearLog();
    ASSERT_EQ(set(1, 34, 10), 0);
    EXPECT_EQ(correct(0, 49, 100), 8);
    std::array<int32_t, 3> arrThr = {1, 2, 3};
    ASSERT_EQ(call(2, 145, IA_CMD_OPT_SET, arrThr.data()), 0);
    EXPECT_NE(call(0, 34, 9, arrThr.data()), 0);
    const auto vecLog = sim().log();
    ASSERT_EQ(vecLog.size(), 4u);
    EXPECT_EQ(vecLog[0].channel, 1);
    EXPECT_EQ(vecLog[0].cmd, 34u);
    EXPECT_EQ(vecLog[0].option, IA_CMD_OPT_SET);
    EXPECT_EQ(vecLog[0].value, 10);
    EXPECT_EQ(vecLog[1].option, IA_CMD_OPT_CORRECT_PARAM);
    EXPECT_EQ(vecLog[1].value, 8);
    EXPECT_EQ(vecLog[2].bytes, words({1, 2, 3}));
    EXPECT_EQ(vecLog[3].result, IspSimulator::ERR_INVALID);
    EXPECT_TRUE(vecLog[3].bytes.empty());
    sim().enableLog(false);
    ASSERT_EQ(set(1, 34, 11), 0);
    EXPECT_EQ(sim().log().size(), 4u);
}

TEST_F(IspTest, LogDropsTheOldestBeyondItsCapacity) {
    sim().clearLog();
    const int nCalls = static_cast<int>(IspSimulator::kLogCapacity) + 5;
    for (int i = 0; i < nCalls; ++i) {
        ASSERT_EQ(set(0, 34, i), 0);
    }
    const auto vecLog = sim().log();
    ASSERT_EQ(vecLog.size(), IspSimulator::kLogCapacity);
    EXPECT_EQ(vecLog.front().value, 5);
    EXPECT_EQ(vecLog.back().value, nCalls - 1);
}

TEST_F(IspTest, ResetRestoresTheProfilesStartingState) {
    ASSERT_EQ(set(0, 34, 1), 0);
    ASSERT_TRUE(sim().setRecord(0, 2496, std::vector<uint8_t>(50, 'x')));
    ASSERT_TRUE(sim().failCommand(-1, 2337, -1, -4));
    ASSERT_TRUE(sim().setLightLevel(0, 0));
    ASSERT_TRUE(sim().setDynamicCommands(0, {34}));
    sim().enableLog(false);
    sim().reset();
    EXPECT_TRUE(sim().log().empty());
    EXPECT_EQ(get(0, 34), 50);
    EXPECT_EQ(get(0, 2337), 50);
    EXPECT_EQ(get(0, 153), 0);
    EXPECT_EQ(sim().getRecord(0, 2496)[0], 'I');
    ia_dynamic_cmd_list_st stList{};
    ASSERT_EQ(call(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &stList), 0);
    EXPECT_EQ(stList.cmd_cnt, 6);
    EXPECT_EQ(sim().log().size(), 4u); // logging is on again
}

TEST_F(IspTest, ConcurrentCallsOnAllChannelsAreSerialised) {
    constexpr int kRounds = 2000;
    sim().clearLog();
    std::vector<std::thread> vecThreads;
    for (int nChannel = 0; nChannel < isp::kChannelCount; ++nChannel) {
        vecThreads.emplace_back([nChannel] {
            for (int i = 0; i < kRounds; ++i) {
                set(nChannel, 34, i);
                int32_t nValue = 0;
                call(nChannel, 34, IA_CMD_OPT_GET, &nValue);
            }
        });
    }
    for (auto& objThread : vecThreads) {
        objThread.join();
    }
    EXPECT_EQ(sim().log().size(), static_cast<std::size_t>(2 * kRounds * isp::kChannelCount));
    for (int nChannel = 0; nChannel < isp::kChannelCount; ++nChannel) {
        EXPECT_EQ(sim().getValue(nChannel, 34), kRounds - 1);
    }
}
