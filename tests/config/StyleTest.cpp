// Style merge, the dynamic style, the factory set and the XML extension, on
// small hand-written documents compared as printed documents.
#include "ConfigFixture.h"

#include <cstring>
#include <tuple>

#include "config/SensorFile.h"
#include "config/SensorXml.h"
#include "config/sensor.h"

namespace configtest {
namespace {

const std::string BASE = "<S><T key='image'/><T key='exp'/><T key='ir'/></S>";

// A document parsed from a text.
struct Doc : TiXmlDocumentEx {
    explicit Doc(const std::string& p_strText) { LoadMem(p_strText.c_str(), TIXML_ENCODING_UTF8); }
    std::string printed() {
        std::string strOut;
        getXmlString(strOut);
        return strOut;
    }
};

// The document as the module prints it ("" for a broken text).
std::string xml(const std::string& p_strText) {
    return Doc(p_strText).printed();
}

class StyleTest : public ConfigTest {
protected:
    // Channel 3's style merged with a diversity document; also what it saved.
    std::string merge(const std::string& p_strDetail, std::string p_strDiversity,
                      const std::string& p_strBase = BASE) {
        ModuleConfig stModule{};
        std::strncpy(stModule.szDetail, p_strDetail.c_str(), sizeof(stModule.szDetail) - 1);
        char* szStyle = newConfigText(p_strBase.size() + 1);
        std::memcpy(szStyle, p_strBase.c_str(), p_strBase.size());
        EXPECT_EQ(mergeStyle(3, &stModule, &szStyle, p_strDiversity.data()), SNS_SUCCESS);
        const std::string strOut = szStyle;
        freeConfigText(szStyle);
        EXPECT_EQ(m_objRoot.readFile("/tmp/merge_style_ch3.xml"), strOut);
        return strOut;
    }
    static std::string dna(const std::string& p_strStyle, bool p_bWdr = true, bool p_bLdc = true) {
        std::string strOut;
        EXPECT_EQ(getDnaStyle(1, p_strStyle.c_str(), strOut, p_bWdr, p_bLdc), SNS_SUCCESS);
        return strOut;
    }
    // The factory set as "(key,value)" groups.
    std::string factory(const std::string& p_strStyle, u32 p_nCapacity = 8, bool p_bWdr = true) {
        std::vector<KeyVal> vecSet(p_nCapacity + 1, KeyVal{0xEE, 0xEE});
        u32 nCount = 99;
        getFctData(1, p_strStyle.c_str(), vecSet.data(), &nCount, p_nCapacity, p_bWdr, true);
        EXPECT_EQ(vecSet[p_nCapacity].key, 0xEEu);
        return text(vecSet.data(), std::min<u32>(nCount, p_nCapacity + 1));
    }
};

TEST_F(StyleTest, DiversityConditionsCompareFiveCharacters) {
    const std::tuple<const char*, const char*, bool> arrCases[] = {
        {"(lensId=2)", "lensId='1,2'", true},  {"(lensId=2)", "lensId='2'", true},
        {"(lensId=2)", "lensId='1,3'", false}, {"(lensId=2)", "ir='2'", false},
        {"(s=123456)", "s='9,123457'", true},  {"(s=123456)", "s='12346'", false},
        {"(lensId=12)", "lensId='1'", false},  {"(ir=1)(lensId=2)", "lensId='2' ir='1'", true}};
    // Applied once at most, even when several conditions hold.
    for (const auto& [szDetail, szCondition, bApplies] : arrCases) {
        EXPECT_EQ(merge(szDetail, std::string("<E ") + szCondition +
                                      "><AddAfter tab_key='exp'><T/></AddAfter></E>"),
                  xml(bApplies ? "<S><T key='image'/><T key='exp'/><T/><T key='ir'/></S>" : BASE))
            << szDetail << " " << szCondition;
    }
}

TEST_F(StyleTest, EditsSeeEarlierEditsSkipWhatIsOutsideTheFormatAndReportBrokenDocuments) {
    EXPECT_EQ(merge("(m=4)", "<A m='4'><Modify tab_key='image'><T key='image' n='2'/></Modify>"
                             "<AddAfter tab_key='image'><T key='wb'/></AddAfter>"
                             "<Delete tab_key='exp'/></A>"
                             "<B m='4'><AddAfter tab_key='wb'><T key='nr'/></AddAfter></B>"),
              xml("<S><T key='image' n='2'/><T key='wb'/><T key='nr'/><T key='ir'/></S>"));
    // Only the first tab of a key is edited; a tab without "key" is never chosen.
    EXPECT_EQ(merge("(m=4)", "<E m='4'><Delete tab_key='a'/></E>",
                    "<S><T/><T key='a' n='1'/><T key='a' n='2'/></S>"),
              xml("<S><T/><T key='a' n='2'/></S>"));
    EXPECT_EQ(merge("(m=1)", "<E m='1'><Modify tab_key='image'/><AddAfter tab_key='ir'/>"
                             "<Rename tab_key='ir'><T/></Rename><Delete tab_key='x'/><Delete/>"
                             "</E><F m='1'/>"),
              xml(BASE));
    expectLogged({"operation(Modify) tab_key(image)", "operation(AddAfter) tab_key(ir)",
                  "NULL != (node_second = node_first->FirstChildElement())"});
    EXPECT_EQ(merge("(m=1)", "<E m='1'/>", "<S><T key='a'></S>"), "");
    EXPECT_TRUE(logged("doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8)"));
    EXPECT_EQ(merge("(m=1)", "<E m='1'><Delete tab_key='ir'/>"), xml(BASE));
    EXPECT_TRUE(logged("NULL != (node_first = doc_style_div.RootElement())"));
    TiXmlDocument objEmpty;
    EXPECT_EQ(updateStyleTab(&objEmpty, "Delete", "a", nullptr), 0);
    EXPECT_TRUE(logged("NULL != (tab_node = doc_style->RootElement()->FirstChildElement())"));
}

TEST_F(StyleTest, IspRewritesDefaultsAndItemsOfEveryMatchAndFeatureFlagsHideControls) {
    dynamic(2337, 50, {0, 50, 100});
    EXPECT_EQ(dna("<S><T><C id='2337' value='10'><I index='0'/><I index='25'/><I index='50'/>"
                  "<I index='75'/><I index='100'/></C><C id='34' value='1'><I index='2'/></C></T>"
                  "<T><C id='2337'><I index='75'/></C></T></S>"),
              xml("<S><T><C id='2337' value='50'><I index='0'/><I index='50'/><I index='100'/>"
                  "</C><C id='34' value='1'><I index='2'/></C></T><T><C id='2337' value='50'/>"
                  "</T></S>"));
    Doc objDoc("<S><C id='7' value='1'><C id='7' value='9'/></C><C id='7' value='2'/></S>");
    TiXmlElement* pFound = nullptr;
    int nVal = -1;
    getNodebyCmdId(objDoc.RootElement(), 7, pFound);
    getDnaValbyCmdId(objDoc.RootElement(), 7, nVal);
    EXPECT_STREQ(pFound->Attribute("value"), "2"); // the last match; nothing below a match
    EXPECT_EQ(nVal, 2);

    const std::string strStyle = "<S><C id='10'/><C id='11'/><C id='2368'/><C id='2369'/>"
                                 "<C id='2048'/><C id='2064'/></S>";
    EXPECT_EQ(dna(strStyle, true, true),
              xml("<S><C id='2368'/><C id='2369'/><C id='2048'/><C id='2064'/></S>"));
    EXPECT_EQ(dna(strStyle, false, false), xml("<S/>"));
    setshowBeawayFalg(false);
    EXPECT_EQ(dna(strStyle, false, true), xml("<S><C id='11'/><C id='2048'/><C id='2064'/></S>"));
    // Without 2368 only 2369 goes; of two controls of a key the last one goes.
    EXPECT_EQ(dna("<S><C id='2369'/><C id='10' n='1'/><C id='10' n='2'/></S>", false),
              xml("<S><C id='10' n='1'/></S>"));
}

TEST_F(StyleTest, StylePresetsOfTheShutterKeys) {
    dynamic(49, 3, {3, 6, 12});
    const std::string strOwn = "<I index='1'/><I index='3'/><I index='6'/>";
    const std::string strAllowed = "<I index='3'/><I index='6'/>";
    const std::pair<std::string, std::string> arrCases[] = {
        {" value='6'", "6'>" + strAllowed},   {" value='7'", "3'>" + strAllowed},
        {" value='100'", "3'>" + strAllowed}, {"", "3'>" + strAllowed},
        {" value='200'", "0'>" + strOwn},     {" value='203'", "3'>" + strOwn}}; // own items
    for (const auto& [strPreset, strResult] : arrCases) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(dna("<S><C id='49'" + strPreset + ">" + strOwn + "</C></S>"),
                  xml("<S><C id='49' value='" + strResult + "</C></S>"));
        EXPECT_EQ(testing::internal::GetCapturedStdout().find("items_cnt(3)") == std::string::npos,
                  strPreset == " value='100'");
    }
    dynamic(1537, 6, {0, 6});
    dynamic(34, 3, {3, 6});
    EXPECT_EQ(dna("<S><C id='1537'/><C id='34' value='6'/></S>"),
              xml("<S><C id='1537' value='0'/><C id='34' value='3'/></S>"));
}

TEST_F(StyleTest, FaultsAreReportedTheRestGoesOnAndAbsurdCountsAreClampedToTheRecords) {
    dynamic(2337, 50, {50});
    EXPECT_EQ(dna("<S><C id='2337'><I index='0'/><I/><I index='2'/></C></S>"),
              xml("<S><C id='2337' value='50'><I/><I index='2'/></C></S>"));
    EXPECT_TRUE(logged("SNS_SUCCESS == doDnaStyle(objStyleXmlDoc.RootElement(), "
                       "dnaCmdList.cmd_list[i], &dnaParamList)"));
    isp().failCommand(0, 2337, IA_CMD_OPT_GET_PARAM_RNAGE, -6); // zero record: nothing allowed
    EXPECT_EQ(dna("<S><C id='2337'><I index='0'/></C></S>"),
              xml("<S><C id='2337' value='0'/></S>"));
    EXPECT_TRUE(logged("(ia_cmd_e)dnaCmdList.cmd_list[i], IA_CMD_OPT_GET_PARAM_RNAGE"));
    isp().failCommand(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, -1, -5);
    EXPECT_EQ(dna("<S><C id='2337'/><C id='10'/></S>"), xml("<S><C id='2337'/></S>"));
    EXPECT_TRUE(logged("SNS_SUCCESS == ia_ioctrl_v2(p_channelID-1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, "
                       "IA_CMD_OPT_GET, (void*)(&dnaCmdList))"));
    EXPECT_EQ(dna("<S><C id='10'></S>"), "");
    EXPECT_TRUE(logged("objStyleXmlDoc.LoadMem(szStyle, TIXML_ENCODING_UTF8)"));

    isp().clearFailures();
    m_vecDynamic.clear();
    for (uint32_t nCmd = 5000; nCmd < 5020; ++nCmd) {
        dynamic(nCmd, 1, {1});
    }
    isp().clearLog();
    EXPECT_EQ(dna("<S><C id='5015'/><C id='5016'/></S>"),
              xml("<S><C id='5015' value='1'/><C id='5016'/></S>"));
    EXPECT_EQ(isp().log().size(), 17u); // the list and 16 ranges
    EXPECT_TRUE(logged("cmd_cnt(20)"));
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = 1000;
    stAttr.item[0] = 7;
    isp().setDynamicCommands(0, {2337});
    isp().setAttribute(0, 2337, stAttr);
    EXPECT_EQ(dna("<S><C id='2337'><I index='7'/><I index='8'/></C></S>"),
              xml("<S><C id='2337' value='0'><I index='7'/></C></S>"));
    EXPECT_TRUE(logged("items_cnt(1000)"));
    std::string strMany = "<C id='49'>";
    for (int i = 1; i <= 70; ++i) {
        strMany += "<I index='" + std::to_string(i) + "'/>";
    }
    Doc objMany(strMany + "</C>");
    EXPECT_EQ(doCustomizeStyle(objMany.RootElement(), 49, &stAttr), 0);
    EXPECT_EQ(stAttr.items_cnt, 64);
    EXPECT_EQ(stAttr.max_val, 64);
    EXPECT_TRUE(logged("style items beyond the record: 6"));
}

// A broken text keeps nothing:
// FuzzRegressionTest.TextsEndingInsideAUtf8CharacterEndAtTheirTerminator.
TEST_F(StyleTest, EnableListsNodeRemovalAndTheXmlDocumentExtension) {
    Doc objDoc("<S><C id='112'/><C id='128'/><C id='34'/></S>");
    TiXmlElement* pRoot = objDoc.RootElement();
    for (int nKey : {112, 128, 34}) {
        ModifyNodebyCmdId(pRoot, nKey);
    }
    EXPECT_EQ(DeleteNode(pRoot, nullptr), -1);
    EXPECT_EQ(DeleteNode(pRoot, pRoot), 0); // no element parent: kept
    EXPECT_EQ(DeleteNode(pRoot, pRoot->LastChild()->ToElement()), 0);
    EXPECT_EQ(objDoc.printed(),
              xml("<S><C id='112' enable_list='128'/><C id='128' enable_list='112'/></S>"));

    Doc objFile("<?xml version=\"1.0\"?><a x='1'><b>t</b></a><z/>");
    EXPECT_FALSE(objFile.SaveFile()); // parsed from memory: no name of its own
    ASSERT_TRUE(objFile.SaveFile("/hd1/x.xml"));
    ASSERT_TRUE(objFile.TiXmlDocument::SaveFile(m_objRoot.hostPath("/hd1/lib.xml").c_str()));
    EXPECT_EQ(m_objRoot.readFile("/hd1/x.xml"), m_objRoot.readFile("/hd1/lib.xml"));
    EXPECT_EQ(objFile.printed(), m_objRoot.readFile("/hd1/lib.xml")); // what the library saves
    EXPECT_FALSE(objFile.LoadMem(nullptr, TIXML_ENCODING_UTF8));
    ASSERT_TRUE(objFile.LoadMem("<q/>", TIXML_ENCODING_UTF8));
    EXPECT_STREQ(objFile.RootElement()->Value(), "q") << "a new text replaces the document";
    ASSERT_TRUE(objFile.LoadFile("/hd1/x.xml", TIXML_ENCODING_UTF8));
    objFile.RootElement()->SetAttribute("x", 3);
    ASSERT_TRUE(objFile.SaveFile());
    EXPECT_TRUE(contains(m_objRoot.readFile("/hd1/x.xml"), "x=\"3\""));
    EXPECT_FALSE(objFile.LoadFile("/hd1", TIXML_ENCODING_UTF8)); // a directory
}

TEST_F(StyleTest, FactorySetFollowsThePrunedDocument) {
    dynamic(2337, 40, {20, 40});
    const std::string strStyle =
        "<S><T key='a' id='300' value='1'><C id='34' value='50'/><C id='2337'/></T>"
        "<T><G id='5'><C id='2368' value='2'/></G><C value='3'/><C id='34' value='-1'/>"
        "<C id='10' value='0'/></T></S>";
    EXPECT_EQ(factory(strStyle), "(300,1)(34,50)(2337,40)(2368,2)(34,-1)");
    EXPECT_EQ(factory(strStyle, 8, false), "(300,1)(34,50)(2337,40)(34,-1)");
    EXPECT_EQ(takeLog(), "");
    EXPECT_EQ(factory(strStyle, 3), "(300,1)(34,50)(2337,40)");
    EXPECT_TRUE(logged("SNS_SUCCESS == style2KeyVal(pRootNode, p_pKeyVal, p_pnKeyValNum)"));
    EXPECT_EQ(factory("<S><C id='1' value='1'>"), "");
    EXPECT_TRUE(logged("objDnaStyleDoc.LoadMem(strDnaStyle.c_str(), TIXML_ENCODING_UTF8)"));
    Doc objOne("<C id='7' value='8'/>");
    KeyVal arrSet[2] = {{1, 1}, {2, 2}};
    u32 nCount = 1; // appended at the count
    EXPECT_EQ(style2KeyVal(objOne.RootElement(), arrSet, &nCount, 2), SNS_SUCCESS);
    EXPECT_EQ(arrSet[1].key, 7u);
    EXPECT_EQ(style2KeyVal(objOne.RootElement(), arrSet, &nCount, 2), SNS_FAILED);
    EXPECT_EQ(nCount, 2u);
}

} // namespace
} // namespace configtest
