// The "(key,value)" text form and the ISP's correction of a set.
#include "ConfigFixture.h"

#include <climits>
#include <string>
#include <vector>

#include "config/SensorKeyVal.h"

namespace configtest {
namespace {

using Pairs = std::vector<std::pair<int, int>>;

Pairs parse(const std::string& p_strText, u32 p_nCapacity = 8, int* p_pnResult = nullptr) {
    std::vector<KeyVal> vecSet(p_nCapacity + 1, KeyVal{0xEEEE, 0xEEEE});
    u32 nCount = 999;
    const int nResult = keyval_str2st(p_strText, vecSet.data(), &nCount, p_nCapacity);
    if (p_pnResult != nullptr) {
        *p_pnResult = nResult;
    }
    EXPECT_LE(nCount, p_nCapacity);
    EXPECT_EQ(vecSet[p_nCapacity].key, 0xEEEEu);
    Pairs vecOut;
    for (u32 i = 0; i < nCount && i < p_nCapacity; ++i) {
        vecOut.emplace_back(static_cast<int>(vecSet[i].key), static_cast<int>(vecSet[i].value));
    }
    return vecOut;
}

TEST(KeyValTextTest, GroupsAreAppendedSigned) {
    KeyVal arrSet[] = {{34, 50}, {49, 0xFFFFFFFFu}};
    std::string strOut = "x";
    keyval_st2str(strOut, arrSet, 2);
    EXPECT_EQ(strOut, "x(34,50)(49,-1)");

    KeyVal arrWide[] = {{0xFFFFFFFFu, 0x80000000u}};
    strOut.clear();
    keyval_st2str(strOut, arrWide, 1);
    EXPECT_EQ(strOut, "(-1,-2147483648)");
    keyval_st2str(strOut, nullptr, 3);
    keyval_st2str(strOut, arrSet, 0);
    EXPECT_EQ(strOut, "(-1,-2147483648)");
}

TEST(KeyValTextTest, GroupsAreReadAndJunkIgnored) {
    EXPECT_EQ(parse("(34,50)(49,6)"), (Pairs{{34, 50}, {49, 6}}));
    EXPECT_EQ(parse("(34,50) junk (49,6)"), (Pairs{{34, 50}, {49, 6}}));
    EXPECT_EQ(parse(""), Pairs{});
    EXPECT_EQ(parse("(34,50)("), (Pairs{{34, 50}}));
    EXPECT_EQ(parse("(34,50)(49,6"), (Pairs{{34, 50}}));
    EXPECT_EQ(parse("(34,-1)( 7, 8)"), (Pairs{{34, -1}, {7, 8}}));
    EXPECT_EQ(parse("(4294967295,4294967294)"), (Pairs{{-1, -2}}));
}

TEST(KeyValTextTest, GroupsThatAreNotTwoIntegersAreSkipped) {
    EXPECT_EQ(parse("(a,b)(34,50)"), (Pairs{{34, 50}}));
    EXPECT_EQ(parse("(34,50)(1)(2 ,3)(,4)(49,6)"), (Pairs{{34, 50}, {49, 6}}));
    // A ")" before the group is text outside it; the group is read once.
    EXPECT_EQ(parse(")(34,50)"), (Pairs{{34, 50}}));
}

TEST(KeyValTextTest, ReadingStopsAtTheCapacity) {
    int nResult = 0;
    EXPECT_EQ(parse("(1,1)(2,2)(3,3)", 2, &nResult), (Pairs{{1, 1}, {2, 2}}));
    EXPECT_EQ(nResult, SNS_FAILED);
    EXPECT_EQ(parse("(1,1)(2,2)", 2, &nResult), (Pairs{{1, 1}, {2, 2}}));
    EXPECT_EQ(nResult, SNS_SUCCESS);
    EXPECT_EQ(parse("(1,1)(x,y)", 1, &nResult), (Pairs{{1, 1}}));
    EXPECT_EQ(nResult, SNS_SUCCESS);
    EXPECT_EQ(parse("(1,1)", 0, &nResult), Pairs{});
    EXPECT_EQ(nResult, SNS_FAILED);
}

class KeyValCorrectTest : public ConfigTest {
protected:
    void SetUp() override {
        ConfigTest::SetUp();
        isp().setDynamicCommands(-1, {});
    }
};

TEST_F(KeyValCorrectTest, DynamicValuesAreReplacedByAllowedOnes) {
    isp().setDynamicCommands(1, {49, 2368, 16});
    isp().setAttribute(1, 49, listAttr(3, {3, 6, 12}));
    isp().setAttribute(1, 2368, listAttr(0, {0, 1}));
    isp().setAttribute(1, 16, listAttr(0, {0, 1}));
    KeyVal arrSet[] = {{8000, 9}, {49, 7}, {2368, 5}, {49, 7}, {34, 999}};
    EXPECT_EQ(keyval_correct(1, arrSet, 5), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].value, 9u);
    EXPECT_EQ(arrSet[1].value, 6u);
    EXPECT_EQ(arrSet[2].value, 1u);
    EXPECT_EQ(arrSet[3].value, 7u); // only the first entry of a key
    EXPECT_EQ(arrSet[4].value, 999u);
    // Key 16 is dynamic but missing from the set: logged, not aborted.
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("[sensor assert] cmd_list[2]=16"), std::string::npos) << strLog;
}

TEST_F(KeyValCorrectTest, FailuresAreReported) {
    KeyVal arrSet[] = {{49, 7}};
    EXPECT_EQ(keyval_correct(0, nullptr, 1), SNS_FAILED);
    EXPECT_NE(takeErrorLog().find("NULL != p_pKeyval"), std::string::npos);

    isp().setDynamicCommands(0, {49});
    isp().setAttribute(0, 49, listAttr(3, {3, 6}));
    isp().failCommand(0, 49, IA_CMD_OPT_CORRECT_PARAM, -4);
    EXPECT_EQ(keyval_correct(0, arrSet, 1), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].value, 7u);
    EXPECT_NE(takeErrorLog().find("SNS_SUCCESS == ia_ioctrl_v2(p_nChannel_id, "
                                  "(ia_cmd_e)p_pKeyval[index].key, IA_CMD_OPT_CORRECT_PARAM, "
                                  "&p_pKeyval[index].value)"),
              std::string::npos);

    isp().failCommand(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, -1, -4);
    EXPECT_EQ(keyval_correct(0, arrSet, 1), SNS_SUCCESS);
    EXPECT_NE(takeErrorLog().find("SNS_SUCCESS == ia_ioctrl_v2(p_nChannel_id, "
                                  "IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, "
                                  "(void*)(&dnaCmdList))"),
              std::string::npos);
}

TEST_F(KeyValCorrectTest, OversizedCommandListIsClamped) {
    std::vector<uint32_t> vecCmds(40, 49);
    isp().setDynamicCommands(0, vecCmds);
    isp().setAttribute(0, 49, listAttr(3, {3, 6}));
    isp().clearLog();
    KeyVal arrSet[] = {{49, 5}};
    EXPECT_EQ(keyval_correct(0, arrSet, 1), SNS_SUCCESS);
    int nCorrections = 0;
    for (const IspSimulator::LogEntry& stEntry : isp().log()) {
        nCorrections += stEntry.option == IA_CMD_OPT_CORRECT_PARAM ? 1 : 0;
    }
    EXPECT_EQ(nCorrections, 16);
    EXPECT_NE(takeErrorLog().find("cmd_cnt(40)"), std::string::npos);
}

} // namespace
} // namespace configtest
