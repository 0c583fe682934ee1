// The factory parameter set collected from the pruned style.
#include "ConfigFixture.h"

#include <string>
#include <tinyxml.h>
#include <vector>

#include "config/SensorFile.h"
#include "config/SensorXml.h"

namespace configtest {
namespace {

using Pairs = std::vector<std::pair<u32, u32>>;

class FactorySetTest : public ConfigTest {
protected:
    void SetUp() override {
        ConfigTest::SetUp();
        isp().setDynamicCommands(0, {});
    }

    Pairs factory(const std::string& p_strStyle, bool p_bShowWDR = true, u32 p_nCapacity = 170) {
        m_vecSet.assign(p_nCapacity + 1, KeyVal{0xEEEE, 0xEEEE});
        m_nCount = 12345;
        EXPECT_EQ(getFctData(1, p_strStyle.c_str(), m_vecSet.data(), &m_nCount, p_nCapacity,
                             p_bShowWDR, true),
                  SNS_SUCCESS);
        Pairs vecOut;
        for (u32 i = 0; i < m_nCount; ++i) {
            vecOut.emplace_back(m_vecSet[i].key, m_vecSet[i].value);
        }
        return vecOut;
    }

    std::vector<KeyVal> m_vecSet;
    u32 m_nCount = 0;
};

TEST_F(FactorySetTest, ControlsAreCollectedInDocumentOrderParentsFirst) {
    EXPECT_EQ(
        factory("<Style><Tab key=\"a\" id=\"300\" value=\"1\"><Control id=\"34\" value=\"50\"/>"
                "<Control id=\"2337\" value=\"64\"/></Tab></Style>"),
        (Pairs{{300, 1}, {34, 50}, {2337, 64}}));
}

TEST_F(FactorySetTest, ControlWithoutValueIsSkippedButItsChildrenAreNot) {
    EXPECT_EQ(
        factory("<Style><Tab key=\"a\"><Group id=\"5\"><Control id=\"34\" value=\"50\"/>"
                "</Group><Control value=\"3\"/><Control id=\"34\" value=\"51\"/></Tab></Style>"),
        (Pairs{{34, 50}, {34, 51}}));
}

TEST_F(FactorySetTest, SchemeControlsComeFirstAndHiddenKeysAreLeftOut) {
    const std::string strStyle =
        "<Style><Tab key=\"scheme\"><Control id=\"8000\" value=\"0\"/><Control id=\"8001\" "
        "value=\"6\"/></Tab><Tab key=\"x\"><Control id=\"10\" value=\"0\"/><Control id=\"2368\" "
        "value=\"0\"/><Control id=\"2369\" value=\"50\"/><Control id=\"34\" value=\"50\"/>"
        "</Tab></Style>";
    EXPECT_EQ(factory(strStyle, true),
              (Pairs{{8000, 0}, {8001, 6}, {2368, 0}, {2369, 50}, {34, 50}}));
    EXPECT_EQ(factory(strStyle, false), (Pairs{{8000, 0}, {8001, 6}, {34, 50}}));
}

TEST_F(FactorySetTest, DefaultsComeFromTheIsp) {
    isp().setDynamicCommands(0, {2337});
    isp().setAttribute(0, 2337, listAttr(40, {20, 40}));
    EXPECT_EQ(factory("<Style><Tab key=\"a\"><Control id=\"2337\" value=\"64\"/></Tab></Style>"),
              (Pairs{{2337, 40}}));
}

TEST_F(FactorySetTest, NeverWritesPastTheCapacity) {
    const std::string strStyle =
        "<Style><Tab key=\"a\"><Control id=\"1\" value=\"1\"/><Control id=\"2\" value=\"2\"/>"
        "<Control id=\"3\" value=\"3\"/><Control id=\"4\" value=\"4\"/></Tab></Style>";
    EXPECT_EQ(factory(strStyle, true, 3), (Pairs{{1, 1}, {2, 2}, {3, 3}}));
    EXPECT_EQ(m_vecSet[3].key, 0xEEEEu);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("SNS_SUCCESS == style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum)"),
              std::string::npos);
    EXPECT_NE(strLog.find("p_pnKeyValNum(3)"), std::string::npos);

    EXPECT_EQ(factory(strStyle, true, 4).size(), 4u);
    EXPECT_EQ(takeErrorLog(), "");
}

TEST_F(FactorySetTest, BrokenStyleGivesAnEmptySet) {
    EXPECT_EQ(factory("<Style><Control id=\"1\" value=\"1\">"), Pairs{});
    EXPECT_EQ(m_nCount, 0u);
    EXPECT_NE(takeErrorLog().find("objDnaStyleDoc.LoadMem(strDnaStyle.c_str(), "
                                  "TIXML_ENCODING_UTF8)"),
              std::string::npos);
}

TEST_F(FactorySetTest, Style2KeyValAppendsAtTheCount) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<C id=\"7\" value=\"-1\"/>", TIXML_ENCODING_UTF8));
    KeyVal arrSet[3] = {{1, 1}, {2, 2}, {3, 3}};
    u32 nCount = 1;
    EXPECT_EQ(style2KeyVal(objDoc.RootElement(), arrSet, &nCount, 3), SNS_SUCCESS);
    EXPECT_EQ(nCount, 2u);
    EXPECT_EQ(arrSet[0].key, 1u);
    EXPECT_EQ(arrSet[1].key, 7u);
    EXPECT_EQ(arrSet[1].value, 0xFFFFFFFFu);
    EXPECT_EQ(arrSet[2].key, 3u);
    EXPECT_EQ(style2KeyVal(nullptr, arrSet, &nCount, 3), SNS_SUCCESS);
    EXPECT_EQ(style2KeyVal(objDoc.RootElement(), arrSet, &nCount, 2), SNS_FAILED);
    EXPECT_EQ(nCount, 2u);
}

} // namespace
} // namespace configtest
