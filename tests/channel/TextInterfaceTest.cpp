// The text interface: sets, reads, whole-set reads, ranges and the raw ISP check.
#include "ChannelFixture.h"

#include "common/ia_ioctrl.h"

namespace sensortest {

using TextInterfaceTest = ChannelTest;

// A key neither the set nor the ISP knows is left out of the reply, and so is anything
// not a number (never key 0, as atoi would have it); refused texts apply nothing.
TEST_F(TextInterfaceTest, SetsAndGetsInRequestOrderAndMalformedTextsAreRefusedWhole) {
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.setParameters(std::string("(34,60)junk(2337,90)"), true));
    EXPECT_EQ(std::vector<int32_t>{60}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{90}, setsOf(KEY_SATURATION));
    EXPECT_EQ(SNS_SUCCESS, c.setParameters(std::string(""), true)) << "no pair: nothing to do";
    m_objIsp.failCommand(0, 4242, IA_CMD_OPT_GET, -9);
    const auto times = [](size_t p_nCount, const std::string& p_strText) {
        std::string strOut;
        for (size_t i = 0; i < p_nCount; ++i) {
            strOut += p_strText;
        }
        return strOut;
    };
    std::string strOut = "old";
    for (const auto& [strIds, strReply] : std::vector<std::pair<std::string, std::string>>{
             {"(2337,34)", "(2337,90)(34,60)"},
             {"(34,4242)", "(34,60)"},
             {"(abc,34, 2337 ,3x,,0x22)", "(34,60)(2337,90)"},
             {"(34" + times(255, ",34") + ")", times(256, "(34,60)")}}) {
        EXPECT_EQ(1, c.getParameters(strIds, strOut)) << strIds.substr(0, 20);
        EXPECT_EQ(strReply, strOut);
    }
    std::vector<std::string> vecIds;
    EXPECT_TRUE(c.parseSensorParameter("(34)", vecIds));
    EXPECT_EQ(std::vector<std::string>{"34"}, vecIds);
    strOut = "untouched";
    for (const std::string& strBad : std::vector<std::string>{
             "", "()", "34,2337)", "(34,2337", " (34)", "(34) ", "(34))", "(3)4)",
             "(" + times(999999, ",") + ")", "(34" + times(256, ",34") + ")"}) {
        SCOPED_TRACE(strBad.substr(0, 20));
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(0, c.getParameters(strBad, strOut));
        EXPECT_THAT(::testing::internal::GetCapturedStdout(),
                    HasSubstr(strBad.size() > 100 ? "p_strIds too long"
                                                  : "getParameters fail p_strIds = "));
        EXPECT_EQ("untouched", strOut);
    }
    std::string strTooMany; // one pair more than the set holds
    for (u32 i = 0; i <= Access::keyValSum(c); ++i) {
        strTooMany += "(34," + std::to_string(i) + ")";
    }
    m_objIsp.clearLog();
    EXPECT_EQ(SNS_FAILED, c.setParameters(strTooMany, false));
    EXPECT_EQ(SNS_FAILED, c.setParameters("(34,61)" + std::string(16 * 1024, ' '), true));
    EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty()) << "nothing of a refused text is applied";
}

// Ranges only for range-capable dynamic commands; the diagnostic record read and written.
TEST_F(TextInterfaceTest, RangesAndTheDiagnosticRecordComeFromTheIsp) {
    ISensorController& c = upMini();
    m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER, KEY_BRIGHTNESS});
    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(0, 2, {1, 2, 5}));
    m_objIsp.setAttribute(0, KEY_BRIGHTNESS, attr(0, 2, {1, 2, 5}));
    int nDefault = -1;
    std::string strRange = "x:";
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(std::make_pair(2, std::string("x:1 2 5")), std::make_pair(nDefault, strRange));
    strRange.clear();
    EXPECT_FALSE(c.getSensorParamRange(KEY_BRIGHTNESS, nDefault, strRange)) << "not range-capable";
    EXPECT_FALSE(c.getSensorParamRange(KEY_MIN_SHUTTER, nDefault, strRange)) << "not listed";
    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(1, 2, {1, 2, 5}));
    nDefault = -1;
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(std::make_pair(-1, std::string()), std::make_pair(nDefault, strRange));
    const auto check = [&c](std::string p_strRequest) {
        const int nResult = c.SensorCheck(p_strRequest);
        return std::make_pair(nResult, p_strRequest);
    };
    std::vector<uint8_t> vecRecord(16, 0);
    vecRecord[12] = 42;
    ASSERT_TRUE(m_objIsp.setRecord(0, 2816, vecRecord));
    EXPECT_EQ(std::make_pair(0, std::string("42")), check("(5,2,7)"));
    EXPECT_EQ(std::make_pair(0, std::string("(5,1,7)")), check("(5,1,7)"));
    vecRecord = m_objIsp.getRecord(0, 2816);
    ASSERT_EQ(16u, vecRecord.size());
    EXPECT_EQ((std::vector<uint8_t>{5, 1, 7}),
              (std::vector<uint8_t>{vecRecord[0], vecRecord[4], vecRecord[8]}));
    m_objIsp.clearLog();
    EXPECT_EQ(std::make_pair(0, std::string("(5,2)")), check("(5,2)"));
    EXPECT_TRUE(m_objIsp.log().empty());
    m_objIsp.failCommand(0, 2816, -1, -7);
    EXPECT_EQ(-7, check("(1,1,1)").first);
}

// From the live set, corrected by the ISP, unless a style value is above 199: then
// from the stored file; the factory set has no file.
TEST_F(TextInterfaceTest, AllParametersFromTheFileOrTheCorrectedSet) {
    ISensorController& c = upMini();
    const auto all = [&c](std::string p_strOut) {
        EXPECT_TRUE(c.getAllParameters(p_strOut));
        return p_strOut;
    };
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 61, true));
    EXPECT_EQ(0u, all("head").find("head(8000,0)(8001,0)"));
    EXPECT_THAT(all(""), HasSubstr("(34,61)"));
    const std::string strMerged = "/tmp/merge_style_ch1.xml", strFrom = "id=\"49\" value=\"100\"";
    std::string strStyle = m_objRoot.readFile(strMerged);
    const size_t nAt = strStyle.find(strFrom);
    ASSERT_NE(std::string::npos, nAt);
    m_objRoot.writeFile(strMerged,
                        strStyle.replace(nAt, strFrom.size(), "id=\"49\" value=\"203\""));
    EXPECT_THAT(all(""), HasSubstr("(34,50)")) << "the file still holds the default";
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    EXPECT_THAT(all(""), HasSubstr("(34,61)"));
    ASSERT_TRUE(c.setParamScheme(2));
    EXPECT_EQ("same", all("same"));
}

} // namespace sensortest
