// The dynamic style: defaults and items from the ISP, style presets, hidden
// controls, and what the search functions find.
#include "ConfigFixture.h"

#include <string>
#include <tinyxml.h>
#include <vector>

#include "config/SensorFile.h"
#include "config/SensorXml.h"

namespace configtest {
namespace {

class DynamicStyleTest : public ConfigTest {
protected:
    void SetUp() override {
        ConfigTest::SetUp();
        isp().setDynamicCommands(0, {});
    }

    void dynamic(uint32_t p_nCmd, int p_nDefault, const std::vector<int>& p_vecItems) {
        m_vecCmds.push_back(p_nCmd);
        isp().setDynamicCommands(0, m_vecCmds);
        isp().setAttribute(0, p_nCmd, listAttr(p_nDefault, p_vecItems));
    }

    static std::string dna(const std::string& p_strStyle, bool p_bShowWDR = true,
                           bool p_bShowLDC = true) {
        std::string strOut = "unchanged";
        EXPECT_EQ(getDnaStyle(1, p_strStyle.c_str(), strOut, p_bShowWDR, p_bShowLDC), SNS_SUCCESS);
        return strOut;
    }

    // Every control with the id, in document order: "value|index,index,...".
    static std::vector<std::string> controls(const std::string& p_strStyle, int p_nId) {
        TiXmlDocument objDoc;
        objDoc.Parse(p_strStyle.c_str());
        std::vector<std::string> vecOut;
        collect(objDoc.RootElement(), p_nId, vecOut);
        return vecOut;
    }

    std::vector<uint32_t> m_vecCmds;

private:
    static void collect(const TiXmlElement* p_pNode, int p_nId,
                        std::vector<std::string>& p_vecOut) {
        for (; p_pNode != nullptr; p_pNode = p_pNode->NextSiblingElement()) {
            const char* szId = p_pNode->Attribute("id");
            if (szId != nullptr && std::atoi(szId) == p_nId) {
                const char* szValue = p_pNode->Attribute("value");
                std::string strText = std::string(szValue ? szValue : "-") + "|";
                for (const TiXmlElement* pItem = p_pNode->FirstChildElement(); pItem != nullptr;
                     pItem = pItem->NextSiblingElement()) {
                    const char* szIndex = pItem->Attribute("index");
                    strText += std::string(szIndex ? szIndex : "?") + ",";
                }
                p_vecOut.push_back(strText);
            }
            collect(p_pNode->FirstChildElement(), p_nId, p_vecOut);
        }
    }
};

using Controls = std::vector<std::string>;

TEST_F(DynamicStyleTest, IspDefaultAndItemsRewriteTheControl) {
    dynamic(2337, 50, {0, 50, 100});
    const std::string strStyle =
        "<Style><Tab key=\"image\"><Control id=\"2337\" value=\"10\">"
        "<Item index=\"0\"/><Item index=\"25\"/><Item index=\"50\"/><Item index=\"75\"/>"
        "<Item index=\"100\"/></Control><Control id=\"34\" value=\"10\"><Item index=\"25\"/>"
        "</Control></Tab></Style>";
    const std::string strOut = dna(strStyle);
    EXPECT_EQ(controls(strOut, 2337), (Controls{"50|0,50,100,"}));
    EXPECT_EQ(controls(strOut, 34), (Controls{"10|25,"}));
}

TEST_F(DynamicStyleTest, NoDynamicCommandsLeaveTheStyleAsItIs) {
    const std::string strStyle =
        "<Style><Tab key=\"a\"><Control id=\"49\" value=\"6\"><Item index=\"1\"/></Control>"
        "</Tab></Style>";
    EXPECT_EQ(controls(dna(strStyle), 49), (Controls{"6|1,"}));
}

TEST_F(DynamicStyleTest, MaxShutterPresetBecomesTheDefaultWhenAllowed) {
    dynamic(49, 3, {3, 6, 12});
    auto styleWith = [](const std::string& p_strValue) {
        return "<Style><Tab key=\"e\"><Control id=\"49\" " + p_strValue +
               "><Item index=\"3\"/><Item index=\"6\"/><Item index=\"7\"/><Item index=\"12\"/>"
               "</Control></Tab></Style>";
    };
    EXPECT_EQ(controls(dna(styleWith("value=\"6\"")), 49), (Controls{"6|3,6,12,"}));
    EXPECT_EQ(controls(dna(styleWith("value=\"7\"")), 49), (Controls{"3|3,6,12,"}));

    ::testing::internal::CaptureStdout();
    const std::string strNoPreset = dna(styleWith("value=\"100\""));
    const std::string strPrinted = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(controls(strNoPreset, 49), (Controls{"3|3,6,12,"}));
    EXPECT_EQ(strPrinted.find("dnaParamList"), std::string::npos);

    // Without "value" the preset is 0, which this ISP does not allow.
    EXPECT_EQ(controls(dna(styleWith("")), 49), (Controls{"3|3,6,12,"}));
}

TEST_F(DynamicStyleTest, PresetPrintsTheItemsItCompares) {
    dynamic(50, 3, {3, 6, 12});
    ::testing::internal::CaptureStdout();
    dna("<Style><Tab key=\"e\"><Control id=\"50\" value=\"6\"/></Tab></Style>");
    const std::string strPrinted = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(strPrinted.find("dnaCmdList.cmd_list[0] = dnaParamList.items_cnt(3)\n"),
              std::string::npos);
    EXPECT_NE(strPrinted.find(" dnaParamList.item[1] = 6 nVal = 6 \n"), std::string::npos);
    EXPECT_EQ(strPrinted.find(" dnaParamList.item[2]"), std::string::npos);
}

TEST_F(DynamicStyleTest, PresetWithoutValueTakesZeroWhenAllowed) {
    dynamic(1537, 6, {0, 6});
    EXPECT_EQ(controls(dna("<Style><Tab key=\"f\"><Control id=\"1537\"><Item index=\"0\"/>"
                           "<Item index=\"5\"/></Control></Tab></Style>"),
                       1537),
              (Controls{"0|0,"}));
}

TEST_F(DynamicStyleTest, PresetIsOnlyForThePresetKeys) {
    dynamic(34, 3, {3, 6});
    EXPECT_EQ(
        controls(dna("<Style><Tab key=\"f\"><Control id=\"34\" value=\"6\"/></Tab></Style>"), 34),
        (Controls{"3|"}));
}

TEST_F(DynamicStyleTest, MaxShutterPresetAbove200BringsItsOwnItems) {
    dynamic(49, 3, {3, 6, 12});
    const std::string strOut =
        dna("<Style><Tab key=\"e\"><Control id=\"49\" value=\"203\"><Item index=\"1\"/>"
            "<Item index=\"3\"/><Item index=\"5\"/><Item index=\"8\"/></Control></Tab></Style>");
    EXPECT_EQ(controls(strOut, 49), (Controls{"3|1,3,5,8,"}));
}

TEST_F(DynamicStyleTest, ControlsAreHiddenByTheFeatureFlags) {
    const std::string strStyle =
        "<Style><Tab key=\"x\"><Control id=\"10\" value=\"0\"/><Control id=\"11\" value=\"0\"/>"
        "<Control id=\"2368\" value=\"0\"/><Control id=\"2369\" value=\"0\"/>"
        "<Control id=\"2048\" value=\"0\"/><Control id=\"2064\" value=\"0\"/></Tab></Style>";
    auto present = [](const std::string& p_strOut) {
        std::string strIds;
        for (int nId : {10, 11, 2368, 2369, 2048, 2064}) {
            if (!controls(p_strOut, nId).empty()) {
                strIds += std::to_string(nId) + " ";
            }
        }
        return strIds;
    };
    EXPECT_EQ(present(dna(strStyle, true, true)), "2368 2369 2048 2064 ");
    EXPECT_EQ(present(dna(strStyle, false, true)), "2048 2064 ");
    EXPECT_EQ(present(dna(strStyle, true, false)), "2368 2369 ");
    setshowBeawayFalg(false);
    EXPECT_EQ(present(dna(strStyle, true, true)), "11 2368 2369 2048 2064 ");

    const std::string strNoWdrMode =
        "<Style><Tab key=\"x\"><Control id=\"2369\" value=\"0\"/><Control id=\"34\" value=\"0\"/>"
        "</Tab></Style>";
    const std::string strOut = dna(strNoWdrMode, false, true);
    EXPECT_TRUE(controls(strOut, 2369).empty());
    EXPECT_EQ(controls(strOut, 34).size(), 1u);
}

TEST_F(DynamicStyleTest, OnlyTheLastControlOfAHiddenKeyIsRemoved) {
    const std::string strOut = dna("<Style><Tab key=\"a\"><Control id=\"10\" value=\"1\"/></Tab>"
                                   "<Tab key=\"b\"><Control id=\"10\" value=\"2\"/></Tab></Style>");
    EXPECT_EQ(controls(strOut, 10), (Controls{"1|"}));
}

TEST_F(DynamicStyleTest, SameKeyInTwoTabsIsRewrittenTwice) {
    dynamic(2368, 1, {0, 1});
    const std::string strStyle =
        "<Style><Tab key=\"a\"><Control id=\"2368\" value=\"2\"><Item index=\"0\"/>"
        "<Item index=\"2\"/></Control></Tab><Tab key=\"b\"><Control id=\"2368\" value=\"0\">"
        "<Item index=\"1\"/><Item index=\"2\"/></Control></Tab></Style>";
    EXPECT_EQ(controls(dna(strStyle), 2368), (Controls{"1|0,", "1|1,"}));

    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem(strStyle.c_str(), TIXML_ENCODING_UTF8));
    TiXmlElement* pFound = nullptr;
    EXPECT_EQ(getNodebyCmdId(objDoc.RootElement(), 2368, pFound), 0);
    ASSERT_NE(pFound, nullptr);
    EXPECT_STREQ(pFound->Attribute("value"), "0");
    int nVal = -1;
    EXPECT_EQ(getDnaValbyCmdId(objDoc.RootElement(), 2368, nVal), 0);
    EXPECT_EQ(nVal, 0);
}

TEST_F(DynamicStyleTest, ItemWithoutIndexStopsThatControl) {
    dynamic(2337, 50, {50});
    const std::string strOut =
        dna("<Style><Tab key=\"a\"><Control id=\"2337\" value=\"0\"><Item index=\"0\"/>"
            "<Item/><Item index=\"25\"/></Control></Tab></Style>");
    EXPECT_EQ(controls(strOut, 2337), (Controls{"50|?,25,"}));
    EXPECT_NE(takeErrorLog().find("SNS_SUCCESS == doDnaStyle(objStyleXmlDoc.RootElement(), "
                                  "dnaCmdList.cmd_list[i], &dnaParamList)"),
              std::string::npos);
}

TEST_F(DynamicStyleTest, IspFailuresAreReportedAndTheRestGoesOn) {
    dynamic(2337, 50, {0, 50});
    const std::string strStyle =
        "<Style><Tab key=\"a\"><Control id=\"2337\" value=\"10\"><Item index=\"0\"/></Control>"
        "<Control id=\"10\" value=\"0\"/></Tab></Style>";

    isp().failCommand(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, -5);
    std::string strOut = dna(strStyle);
    EXPECT_EQ(controls(strOut, 2337), (Controls{"10|0,"}));
    EXPECT_TRUE(controls(strOut, 10).empty());
    EXPECT_NE(takeErrorLog().find("SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, "
                                  "IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, "
                                  "(void*)(&dnaCmdList))"),
              std::string::npos);

    // A refused range leaves a zero record: default 0 and no item allowed.
    isp().clearFailures();
    isp().failCommand(0, 2337, IA_CMD_OPT_GET_PARAM_RNAGE, -6);
    strOut = dna(strStyle);
    EXPECT_EQ(controls(strOut, 2337), (Controls{"0|"}));
    EXPECT_NE(takeErrorLog().find("SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, "
                                  "(ia_cmd_e)dnaCmdList.cmd_list[i], IA_CMD_OPT_GET_PARAM_RNAGE, "
                                  "(void*)(&dnaParamList))"),
              std::string::npos);
}

TEST_F(DynamicStyleTest, AbsurdCountsFromTheIspAreClamped) {
    std::vector<uint32_t> vecCmds;
    for (uint32_t nCmd = 5000; nCmd < 5020; ++nCmd) {
        vecCmds.push_back(nCmd);
        isp().setAttribute(0, nCmd, listAttr(1, {1}));
    }
    isp().setDynamicCommands(0, vecCmds);
    isp().clearLog();
    const std::string strOut = dna("<Style><Tab key=\"a\"><Control id=\"5015\" value=\"0\"/>"
                                   "<Control id=\"5016\" value=\"0\"/></Tab></Style>");
    EXPECT_EQ(controls(strOut, 5015), (Controls{"1|"}));
    EXPECT_EQ(controls(strOut, 5016), (Controls{"0|"}));
    int nRangeCalls = 0;
    for (const IspSimulator::LogEntry& stEntry : isp().log()) {
        nRangeCalls += stEntry.option == IA_CMD_OPT_GET_PARAM_RNAGE ? 1 : 0;
    }
    EXPECT_EQ(nRangeCalls, 16);
    EXPECT_NE(takeErrorLog().find("cmd_cnt(20)"), std::string::npos);

    ia_dynamic_params_attr_st stAttr = listAttr(7, {7});
    stAttr.items_cnt = 1000;
    isp().setDynamicCommands(0, {2337});
    isp().setAttribute(0, 2337, stAttr);
    EXPECT_EQ(controls(dna("<Style><Tab key=\"a\"><Control id=\"2337\" value=\"0\"><Item "
                           "index=\"7\"/><Item index=\"8\"/></Control></Tab></Style>"),
                       2337),
              (Controls{"7|7,"}));
    EXPECT_NE(takeErrorLog().find("items_cnt(1000)"), std::string::npos);

    stAttr.items_cnt = -3;
    isp().setAttribute(0, 2337, stAttr);
    EXPECT_EQ(controls(dna("<Style><Tab key=\"a\"><Control id=\"2337\" value=\"0\"><Item "
                           "index=\"7\"/></Control></Tab></Style>"),
                       2337),
              (Controls{"7|"}));
    EXPECT_NE(takeErrorLog().find("items_cnt(-3)"), std::string::npos);
}

TEST_F(DynamicStyleTest, BrokenStyleGivesAnEmptyDocument) {
    const std::string strOut = dna("<Style><Tab key=\"a\"><Control id=\"10\"></Style>");
    EXPECT_EQ(strOut.find("Control"), std::string::npos);
    EXPECT_NE(takeErrorLog().find("objStyleXmlDoc.LoadMem(szStyle, TIXML_ENCODING_UTF8)"),
              std::string::npos);
    std::string strNull;
    EXPECT_EQ(getDnaStyle(1, nullptr, strNull, true, true), SNS_SUCCESS);
}

TEST_F(DynamicStyleTest, SearchStopsBelowAMatch) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<S><C id=\"49\" value=\"5\"><C id=\"49\" value=\"9\"/></C>"
                               "<C id=\"50\" value=\"4\"/></S>",
                               TIXML_ENCODING_UTF8));
    int nVal = -1;
    getDnaValbyCmdId(objDoc.RootElement(), 49, nVal);
    EXPECT_EQ(nVal, 5);
    nVal = -1;
    getDnaValbyCmdId(objDoc.RootElement(), 51, nVal);
    EXPECT_EQ(nVal, -1);
    EXPECT_EQ(getDnaValbyCmdId(nullptr, 49, nVal), 0);
}

TEST_F(DynamicStyleTest, CustomizedItemsAreClampedToTheRecord) {
    std::string strStyle = "<S><C id=\"49\" value=\"203\">";
    for (int i = 0; i < 70; ++i) {
        strStyle += "<I index=\"" + std::to_string(i + 1) + "\"/>";
    }
    strStyle += "<I/></C></S>";
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem(strStyle.c_str(), TIXML_ENCODING_UTF8));
    ia_dynamic_params_attr_st stAttr{};
    EXPECT_EQ(doCustomizeStyle(objDoc.RootElement(), 49, &stAttr), 0);
    EXPECT_EQ(stAttr.items_cnt, 64);
    EXPECT_EQ(stAttr.min_val, 1);
    EXPECT_EQ(stAttr.max_val, 64);
    EXPECT_EQ(stAttr.item[63], 64);
    EXPECT_NE(takeErrorLog().find("style items beyond the record: 6"), std::string::npos);
}

TEST_F(DynamicStyleTest, EnableListsOfHlcAndBlcAreSwapped) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<S><C id=\"112\" enable_list=\"0\"/><C id=\"128\"/>"
                               "<C id=\"34\" enable_list=\"0\"/></S>",
                               TIXML_ENCODING_UTF8));
    TiXmlElement* pRoot = objDoc.RootElement();
    ModifyNodebyCmdId(pRoot, 112);
    ModifyNodebyCmdId(pRoot, 128);
    ModifyNodebyCmdId(pRoot, 34);
    const TiXmlElement* pHlc = pRoot->FirstChildElement();
    EXPECT_STREQ(pHlc->Attribute("enable_list"), "128");
    EXPECT_STREQ(pHlc->NextSiblingElement()->Attribute("enable_list"), "112");
    EXPECT_STREQ(pHlc->NextSiblingElement()->NextSiblingElement()->Attribute("enable_list"), "0");
}

TEST_F(DynamicStyleTest, DeleteNodeNeedsAnElementParent) {
    TiXmlDocumentEx objDoc;
    ASSERT_TRUE(objDoc.LoadMem("<S><C id=\"1\"/></S>", TIXML_ENCODING_UTF8));
    TiXmlElement* pRoot = objDoc.RootElement();
    EXPECT_EQ(DeleteNode(pRoot, nullptr), -1);
    EXPECT_EQ(DeleteNode(nullptr, pRoot->FirstChildElement()), -1);
    EXPECT_EQ(DeleteNode(pRoot, pRoot), 0);
    EXPECT_EQ(objDoc.RootElement(), pRoot);
    EXPECT_EQ(DeleteNode(pRoot, pRoot->FirstChildElement()), 0);
    EXPECT_EQ(pRoot->FirstChildElement(), nullptr);
}

} // namespace
} // namespace configtest
