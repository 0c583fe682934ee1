// The "(key,value)" text form and the ISP's correction of a set.
#include "ConfigFixture.h"

#include "config/SensorKeyVal.h"

namespace configtest {
namespace {

// The groups read from the text, as text again, and the result.
std::string parse(const std::string& p_strText, u32 p_nCapacity = 8) {
    std::vector<KeyVal> vecSet(p_nCapacity + 1, KeyVal{0xEE, 0xEE});
    u32 nCount = 99;
    const int nResult = keyval_str2st(p_strText, vecSet.data(), &nCount, p_nCapacity);
    EXPECT_EQ(vecSet[p_nCapacity].key, 0xEEu);
    std::string strOut;
    keyval_st2str(strOut, vecSet.data(), std::min(nCount, p_nCapacity));
    return strOut + (nResult == SNS_SUCCESS ? "" : " refused");
}

TEST(KeyValTextTest, GroupsAreWrittenSignedAndAppended) {
    const KeyVal arrSet[] = {{34, 50}, {49, 0xFFFFFFFFu}, {0xFFFFFFFFu, 0x80000000u}};
    std::string strOut = "x";
    keyval_st2str(strOut, arrSet, 3);
    keyval_st2str(strOut, nullptr, 3);
    EXPECT_EQ(strOut, "x(34,50)(49,-1)(-1,-2147483648)");
}

TEST(KeyValTextTest, GroupsAreReadJunkAndBadGroupsSkipped) {
    const std::pair<const char*, const char*> arrCases[] = {
        {"(34,50)(49,6)", "(34,50)(49,6)"},
        {"(34,50) junk (49,6)", "(34,50)(49,6)"},
        {"", ""},
        {"(34,50)(", "(34,50)"},
        {"(34,50)(49,6", "(34,50)"},
        {"( 7, -8)(4294967295,1)", "(7,-8)(-1,1)"},
        {"(a,b)(34,50)(1)(2 ,3)(,4)", "(34,50)"},
        {")(34,50)", "(34,50)"}, // a stray ")" does not make the group count twice
    };
    for (const auto& [szIn, szOut] : arrCases) {
        EXPECT_EQ(parse(szIn), szOut) << szIn;
    }
}

TEST(KeyValTextTest, NeverWritesPastTheCapacity) {
    EXPECT_EQ(parse("(1,1)(2,2)(3,3)", 2), "(1,1)(2,2) refused");
    EXPECT_EQ(parse("(1,1)(2,2)", 2), "(1,1)(2,2)");
    EXPECT_EQ(parse("(1,1)(x,y)", 1), "(1,1)");
    EXPECT_EQ(parse("(1,1)", 0), " refused");
}

using KeyValCorrectTest = ConfigTest;

TEST_F(KeyValCorrectTest, FirstEntryOfEachDynamicKeyIsCorrected) {
    isp().setDynamicCommands(1, {49, 2368, 16});
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = 3;
    stAttr.item[0] = 3, stAttr.item[1] = 6, stAttr.item[2] = 12;
    isp().setAttribute(1, 49, stAttr);
    isp().setAttribute(1, 2368, stAttr);
    KeyVal arrSet[] = {{8000, 9}, {49, 7}, {2368, 11}, {49, 7}, {34, 999}};
    EXPECT_EQ(keyval_correct(1, arrSet, 5), SNS_SUCCESS);
    std::string strOut;
    keyval_st2str(strOut, arrSet, 5);
    EXPECT_EQ(strOut, "(8000,9)(49,6)(2368,12)(49,7)(34,999)");
    EXPECT_TRUE(logged("[sensor assert] cmd_list[2]=16")); // dynamic but not in the set
}

TEST_F(KeyValCorrectTest, FailuresAndAbsurdCountsAreReported) {
    EXPECT_EQ(keyval_correct(0, nullptr, 1), SNS_FAILED);
    EXPECT_TRUE(logged("NULL != p_pKeyval   ~~~Assertion failed."));

    dynamic(49, 3, {3, 6});
    isp().failCommand(0, 49, IA_CMD_OPT_CORRECT_PARAM, -4);
    KeyVal stEntry{49, 5};
    EXPECT_EQ(keyval_correct(0, &stEntry, 1), SNS_SUCCESS);
    EXPECT_EQ(stEntry.value, 5u);
    EXPECT_TRUE(logged("(ia_cmd_e)p_pKeyval[index].key, IA_CMD_OPT_CORRECT_PARAM"));

    isp().clearFailures();
    isp().setDynamicCommands(0, std::vector<uint32_t>(40, 49));
    isp().clearLog();
    EXPECT_EQ(keyval_correct(0, &stEntry, 1), SNS_SUCCESS);
    EXPECT_EQ(stEntry.value, 6u);
    EXPECT_EQ(isp().log().size(), 17u); // the list and 16 corrections
    EXPECT_TRUE(logged("cmd_cnt(40)"));
}

} // namespace
} // namespace configtest
