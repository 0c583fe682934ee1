// The text interface: sets, reads, whole-set reads, ranges and the raw ISP check.
#include "ChannelFixture.h"

#include "common/ia_ioctrl.h"

namespace sensortest {

using TextInterfaceTest = ChannelTest;

TEST_F(TextInterfaceTest, SetThenGetInRequestOrder) {
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.setParameters(std::string("(34,60)junk(2337,90)"), true));
    EXPECT_EQ(std::vector<int32_t>{60}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{90}, setsOf(KEY_SATURATION));
    std::string strOut = "old";
    EXPECT_EQ(1, c.getParameters("(2337,34)", strOut));
    EXPECT_EQ("(2337,90)(34,60)", strOut);
    // A key neither the set nor the ISP knows is dropped from the reply.
    m_objIsp.failCommand(0, 4242, IA_CMD_OPT_GET, -9);
    EXPECT_EQ(1, c.getParameters("(34,4242)", strOut));
    EXPECT_EQ("(34,60)", strOut);
    EXPECT_EQ(SNS_SUCCESS, c.setParameters(std::string(""), true)) << "no pair: nothing to do";

    std::string strText; // one pair more than the set holds: refused as a whole
    for (u32 i = 0; i <= Access::keyValSum(c); ++i) {
        strText += "(34," + std::to_string(i) + ")";
    }
    m_objIsp.clearLog();
    EXPECT_EQ(SNS_FAILED, c.setParameters(strText, false));
    EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty()) << "nothing of a refused text is applied";
}

TEST_F(TextInterfaceTest, MalformedOrOverLongIdListsAreRefusedWholeAndOnlyNumbersAnswered) {
    ISensorController& c = upMini();
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 60, true));
    const auto ids = [](size_t p_nCount, const std::string& p_strId) {
        std::string strText = "(" + p_strId;
        for (size_t i = 1; i < p_nCount; ++i) {
            strText += "," + p_strId;
        }
        return strText + ")";
    };
    const std::string aBad[] = {"",      "()",    "34,2337)", "(34,2337",       " (34)",
                                "(34) ", "(34))", "(3)4)",    ids(1000000, ""), ids(257, "34")};
    std::string strOut = "untouched";
    for (const std::string& strBad : aBad) {
        SCOPED_TRACE(strBad.substr(0, 20));
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(0, c.getParameters(strBad, strOut));
        EXPECT_THAT(::testing::internal::GetCapturedStdout(),
                    HasSubstr(strBad.size() > 100 ? "p_strIds too long"
                                                  : "getParameters fail p_strIds = "));
        EXPECT_EQ("untouched", strOut);
    }
    std::vector<std::string> vecIds;
    EXPECT_TRUE(c.parseSensorParameter("(34)", vecIds));
    EXPECT_EQ(std::vector<std::string>{"34"}, vecIds);
    EXPECT_EQ(1, c.getParameters(ids(256, "34"), strOut));
    EXPECT_EQ(256 * std::string("(34,60)").size(), strOut.size());
    // Not numbers: never read as key 0, as atoi would have them.
    EXPECT_EQ(1, c.getParameters("(abc,34, 2337 ,3x,,0x22)", strOut));
    EXPECT_EQ("(34,60)(2337,128)", strOut);

    m_objIsp.clearLog();
    const std::string strPair = "(34,61)";
    EXPECT_EQ(SNS_FAILED, c.setParameters(strPair + std::string(16 * 1024, ' '), true));
    EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty()) << "nothing of a refused text is applied";
}

TEST_F(TextInterfaceTest, RangesOnlyForRangeCapableDynamicCommands) {
    ISensorController& c = upMini();
    m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER, KEY_BRIGHTNESS});
    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(0, 2, {1, 2, 5}));
    m_objIsp.setAttribute(0, KEY_BRIGHTNESS, attr(0, 2, {1, 2, 5}));
    int nDefault = -1;
    std::string strRange = "x:";
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(2, nDefault);
    EXPECT_EQ("x:1 2 5", strRange);
    strRange.clear();
    EXPECT_FALSE(c.getSensorParamRange(KEY_BRIGHTNESS, nDefault, strRange))
        << "brightness is dynamic but not range-capable";
    EXPECT_FALSE(c.getSensorParamRange(KEY_MIN_SHUTTER, nDefault, strRange)) << "not listed";

    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(1, 2, {1, 2, 5}));
    nDefault = -1;
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(-1, nDefault) << "a continuous range reports no list";
    EXPECT_EQ("", strRange);
}

TEST_F(TextInterfaceTest, AllParametersFromTheFileOrTheCorrectedSet) {
    ISensorController& c = upMini();
    const auto all = [&c](std::string p_strOut) {
        EXPECT_TRUE(c.getAllParameters(p_strOut));
        return p_strOut;
    };
    // The mini style's maximum shutter is 100: the live set, corrected by the ISP.
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 61, true));
    EXPECT_EQ(0u, all("head").find("head(8000,0)(8001,0)"));
    EXPECT_THAT(all(""), HasSubstr("(34,61)"));
    // A style value above 199 answers from the stored file instead.
    const std::string strMerged = "/tmp/merge_style_ch1.xml";
    const std::string strFrom = "id=\"49\" value=\"100\"";
    std::string strStyle = m_objRoot.readFile(strMerged);
    const size_t nAt = strStyle.find(strFrom);
    ASSERT_NE(std::string::npos, nAt);
    m_objRoot.writeFile(strMerged,
                        strStyle.replace(nAt, strFrom.size(), "id=\"49\" value=\"203\""));
    EXPECT_THAT(all(""), HasSubstr("(34,50)")) << "the file still holds the default";
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    EXPECT_THAT(all(""), HasSubstr("(34,61)"));
    ASSERT_TRUE(c.setParamScheme(2));
    EXPECT_EQ("same", all("same")) << "the factory set has no file";
}

TEST_F(TextInterfaceTest, SensorCheckReadsAndWritesTheDiagnosticRecord) {
    ISensorController& c = upMini();
    const auto check = [&c](std::string p_strRequest) {
        const int nResult = c.SensorCheck(p_strRequest);
        return std::make_pair(nResult, p_strRequest);
    };
    std::vector<uint8_t> vecRecord(16, 0);
    vecRecord[12] = 42;
    ASSERT_TRUE(m_objIsp.setRecord(0, 2816, vecRecord));
    EXPECT_EQ(std::make_pair(0, std::string("42")), check("(5,2,7)"));
    EXPECT_EQ(std::make_pair(0, std::string("(5,1,7)")), check("(5,1,7)"));
    const std::vector<uint8_t> vecWritten = m_objIsp.getRecord(0, 2816);
    ASSERT_EQ(16u, vecWritten.size());
    EXPECT_EQ((std::vector<uint8_t>{5, 1, 7}),
              (std::vector<uint8_t>{vecWritten[0], vecWritten[4], vecWritten[8]}));
    m_objIsp.clearLog();
    EXPECT_EQ(std::make_pair(0, std::string("(5,2)")), check("(5,2)")) << "too few fields";
    EXPECT_TRUE(m_objIsp.log().empty());
    m_objIsp.failCommand(0, 2816, -1, -7);
    EXPECT_EQ(-7, check("(1,1,1)").first);
}

} // namespace sensortest
