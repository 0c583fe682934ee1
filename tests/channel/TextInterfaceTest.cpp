// The text interface: "(key,value)" sets, "(id,...)" reads, whole-set reads
// and ranges, and the raw ISP pass-through.
#include "ChannelFixture.h"
#include "support/ControllerTestAccess.h"

#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;

class TextInterfaceTest : public ChannelTest {
protected:
    ISensorController& upMini() {
        useMiniDevice(1, "(max_scheme=2)");
        ISensorController& c = bringUp(1);
        Access::stopThread(c);
        m_objIsp.clearLog();
        return c;
    }
};

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
}

TEST_F(TextInterfaceTest, MalformedIdListsAreRefusedAndLeaveTheReply) {
    ISensorController& c = upMini();
    for (const char* szBad :
         {"", "()", "34,2337)", "(34,2337", " (34)", "(34) ", "(34))", "(3)4)"}) {
        std::string strOut = "untouched";
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(0, c.getParameters(szBad, strOut)) << szBad;
        const std::string strPrinted = ::testing::internal::GetCapturedStdout();
        EXPECT_NE(std::string::npos, strPrinted.find("getParameters fail p_strIds = ")) << szBad;
        EXPECT_EQ("untouched", strOut) << szBad;
    }
    std::vector<std::string> vecIds;
    EXPECT_TRUE(c.parseSensorParameter("(34)", vecIds));
    EXPECT_EQ(std::vector<std::string>{"34"}, vecIds);
}

TEST_F(TextInterfaceTest, TooManyPairsAreRefusedAsAWhole) {
    ISensorController& c = upMini();
    std::string strText;
    for (u32 i = 0; i <= Access::keyValSum(c); ++i) {
        strText += "(34," + std::to_string(i) + ")";
    }
    EXPECT_EQ(SNS_FAILED, c.setParameters(strText, false));
    EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty()) << "nothing of a refused text is applied";
}

TEST_F(TextInterfaceTest, RangesOnlyForRangeCapableDynamicCommands) {
    ISensorController& c = upMini();
    ia_dynamic_params_attr_st stAttr{};
    stAttr.param_type = 0;
    stAttr.default_val = 2;
    stAttr.min_val = 1;
    stAttr.max_val = 5;
    stAttr.items_cnt = 3;
    stAttr.item[0] = 1;
    stAttr.item[1] = 2;
    stAttr.item[2] = 5;
    m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER, KEY_BRIGHTNESS});
    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, stAttr);
    m_objIsp.setAttribute(0, KEY_BRIGHTNESS, stAttr);

    int nDefault = -1;
    std::string strRange = "x:";
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(2, nDefault);
    EXPECT_EQ("x:1 2 5", strRange);

    strRange.clear();
    EXPECT_FALSE(c.getSensorParamRange(KEY_BRIGHTNESS, nDefault, strRange))
        << "brightness is dynamic but not range-capable";
    EXPECT_FALSE(c.getSensorParamRange(KEY_MIN_SHUTTER, nDefault, strRange)) << "not listed";

    stAttr.param_type = 1;
    m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, stAttr);
    nDefault = -1;
    EXPECT_TRUE(c.getSensorParamRange(KEY_MAX_SHUTTER, nDefault, strRange));
    EXPECT_EQ(-1, nDefault) << "a continuous range reports no list";
    EXPECT_EQ("", strRange);
}

TEST_F(TextInterfaceTest, AllParametersFromTheFileOrTheCorrectedSet) {
    ISensorController& c = upMini();
    // The mini style's maximum shutter is 100: the live set, corrected by the ISP.
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 61, true));
    std::string strOut = "head";
    EXPECT_TRUE(c.getAllParameters(strOut));
    EXPECT_EQ(0u, strOut.find("head(8000,0)(8001,0)"));
    EXPECT_NE(std::string::npos, strOut.find("(34,61)"));

    // A style value above 199 answers from the stored file instead.
    const std::string strMerged = "/tmp/merge_style_ch1.xml";
    std::string strStyle = m_objRoot.readFile(strMerged);
    const size_t nAt = strStyle.find("id=\"49\" value=\"100\"");
    ASSERT_NE(std::string::npos, nAt);
    strStyle.replace(nAt, std::string("id=\"49\" value=\"100\"").size(), "id=\"49\" value=\"203\"");
    m_objRoot.writeFile(strMerged, strStyle);
    strOut.clear();
    EXPECT_TRUE(c.getAllParameters(strOut));
    EXPECT_NE(std::string::npos, strOut.find("(34,50)")) << "the file still holds the default";
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    strOut.clear();
    EXPECT_TRUE(c.getAllParameters(strOut));
    EXPECT_NE(std::string::npos, strOut.find("(34,61)"));

    ASSERT_TRUE(c.setParamScheme(2));
    strOut = "same";
    EXPECT_TRUE(c.getAllParameters(strOut));
    EXPECT_EQ("same", strOut) << "the factory set has no file";
}

TEST_F(TextInterfaceTest, SensorCheckReadsAndWritesTheDiagnosticRecord) {
    ISensorController& c = upMini();
    std::vector<uint8_t> vecRecord(16, 0);
    vecRecord[12] = 42;
    ASSERT_TRUE(m_objIsp.setRecord(0, 2816, vecRecord));
    std::string strRequest = "(5,2,7)";
    EXPECT_EQ(0, c.SensorCheck(strRequest));
    EXPECT_EQ("42", strRequest);

    strRequest = "(5,1,7)";
    EXPECT_EQ(0, c.SensorCheck(strRequest));
    EXPECT_EQ("(5,1,7)", strRequest);
    const std::vector<uint8_t> vecWritten = m_objIsp.getRecord(0, 2816);
    ASSERT_EQ(16u, vecWritten.size());
    EXPECT_EQ(5, vecWritten[0]);
    EXPECT_EQ(1, vecWritten[4]);
    EXPECT_EQ(7, vecWritten[8]);

    m_objIsp.clearLog();
    strRequest = "(5,2)";
    EXPECT_EQ(0, c.SensorCheck(strRequest)) << "fewer than three fields is malformed";
    EXPECT_TRUE(m_objIsp.log().empty());

    m_objIsp.failCommand(0, 2816, -1, -7);
    strRequest = "(1,1,1)";
    EXPECT_EQ(-7, c.SensorCheck(strRequest));
}

} // namespace sensortest
