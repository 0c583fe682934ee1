// Style merge: diversity conditions on the detail text and the tab edits.
#include "ConfigFixture.h"

#include <cstring>
#include <string>
#include <tinyxml.h>
#include <vector>

#include "config/SensorFile.h"
#include "config/sensor.h"

namespace configtest {
namespace {

constexpr const char* BASE_STYLE = "<Style>"
                                   "<Tab key=\"image\" name=\"Image\"/>"
                                   "<Tab key=\"exposure\" name=\"Exposure\"/>"
                                   "<Tab key=\"ir\" name=\"IR\"/>"
                                   "</Style>";

class StyleMergeTest : public ConfigTest {
protected:
    std::string merge(const std::string& p_strDetail, const std::string& p_strBase,
                      const std::string& p_strDiversity, int p_nChannel = 1) {
        ModuleConfig stModule{};
        std::strncpy(stModule.szDetail, p_strDetail.c_str(), sizeof(stModule.szDetail) - 1);
        char* szStyle = newConfigText(p_strBase.size() + 1);
        std::memcpy(szStyle, p_strBase.data(), p_strBase.size());
        std::vector<char> vecDiversity(p_strDiversity.begin(), p_strDiversity.end());
        vecDiversity.push_back('\0');
        EXPECT_EQ(mergeStyle(p_nChannel, &stModule, &szStyle, vecDiversity.data()), SNS_SUCCESS);
        std::string strOut = szStyle != nullptr ? szStyle : "";
        freeConfigText(szStyle);
        return strOut;
    }

    // "key:name" of each tab in order.
    static std::vector<std::string> tabs(const std::string& p_strStyle) {
        std::vector<std::string> vecTabs;
        TiXmlDocument objDoc;
        objDoc.Parse(p_strStyle.c_str());
        if (objDoc.RootElement() == nullptr) {
            return vecTabs;
        }
        for (const TiXmlElement* pTab = objDoc.RootElement()->FirstChildElement(); pTab != nullptr;
             pTab = pTab->NextSiblingElement()) {
            const char* szKey = pTab->Attribute("key");
            const char* szName = pTab->Attribute("name");
            vecTabs.push_back(std::string(szKey ? szKey : "-") + ":" + (szName ? szName : "-"));
        }
        return vecTabs;
    }

    static std::string addAfterIr(const std::string& p_strConditions) {
        return "<Entry " + p_strConditions +
               "><AddAfter tab_key=\"ir\"><Tab key=\"extra\" name=\"Extra\"/></AddAfter></Entry>";
    }

    const std::vector<std::string> m_vecBaseTabs = {"image:Image", "exposure:Exposure", "ir:IR"};
    const std::vector<std::string> m_vecWithExtra = {"image:Image", "exposure:Exposure", "ir:IR",
                                                     "extra:Extra"};
};

TEST_F(StyleMergeTest, AnAcceptedValueInTheListApplies) {
    EXPECT_EQ(tabs(merge("(lensId=2)", BASE_STYLE, addAfterIr("lensId=\"1,2\""))), m_vecWithExtra);
    EXPECT_EQ(tabs(merge("(lensId=2)", BASE_STYLE, addAfterIr("lensId=\"2\""))), m_vecWithExtra);
    EXPECT_EQ(tabs(merge("(lensId=2)", BASE_STYLE, addAfterIr("lensId=\"1,3\""))), m_vecBaseTabs);
    // A field the detail lacks never holds.
    EXPECT_EQ(tabs(merge("(lensId=2)", BASE_STYLE, addAfterIr("isInfrared=\"2\""))), m_vecBaseTabs);
}

TEST_F(StyleMergeTest, ValuesAreComparedOnTheirFirstFiveCharacters) {
    EXPECT_EQ(tabs(merge("(sensor=123456)", BASE_STYLE, addAfterIr("sensor=\"9,123457\""))),
              m_vecWithExtra);
    EXPECT_EQ(tabs(merge("(sensor=123456)", BASE_STYLE, addAfterIr("sensor=\"12346\""))),
              m_vecBaseTabs);
    EXPECT_EQ(tabs(merge("(lensId=12)", BASE_STYLE, addAfterIr("lensId=\"1\""))), m_vecBaseTabs);
    EXPECT_EQ(tabs(merge("(lensId=1)", BASE_STYLE, addAfterIr("lensId=\"12\""))), m_vecBaseTabs);
}

TEST_F(StyleMergeTest, OneHoldingConditionIsEnoughAndEditsRunOnce) {
    EXPECT_EQ(tabs(merge("(isInfrared=1)(lensId=2)", BASE_STYLE,
                         addAfterIr("lensId=\"2\" isInfrared=\"1\""))),
              m_vecWithExtra);
    EXPECT_EQ(
        tabs(merge("(isInfrared=1)", BASE_STYLE, addAfterIr("lensId=\"2\" isInfrared=\"1\""))),
        m_vecWithExtra);
}

TEST_F(StyleMergeTest, ModifyAddAfterAndDeleteKeepPositions) {
    const std::string strDiversity =
        "<Entry max_scheme=\"4\">"
        "<Modify tab_key=\"image\"><Tab key=\"image\" name=\"Image2\"/></Modify>"
        "<AddAfter tab_key=\"image\"><Tab key=\"wb\" name=\"WB\"/></AddAfter>"
        "<Delete tab_key=\"exposure\"/>"
        "<AddAfter tab_key=\"wb\"><Tab key=\"nr\" name=\"NR\"/></AddAfter>"
        "</Entry>";
    EXPECT_EQ(tabs(merge("(max_scheme=4)", BASE_STYLE, strDiversity)),
              (std::vector<std::string>{"image:Image2", "wb:WB", "nr:NR", "ir:IR"}));
}

TEST_F(StyleMergeTest, EntriesApplyInOrderOnTheEditedStyle) {
    const std::string strDiversity =
        "<A lensId=\"2\"><AddAfter tab_key=\"ir\"><Tab key=\"lens\" name=\"Lens\"/></AddAfter></A>"
        "<B lensId=\"3\"><Delete tab_key=\"image\"/></B>"
        "<C lensId=\"2\"><Modify tab_key=\"lens\"><Tab key=\"lens\" name=\"Lens2\"/></Modify></C>";
    EXPECT_EQ(
        tabs(merge("(lensId=2)", BASE_STYLE, strDiversity)),
        (std::vector<std::string>{"image:Image", "exposure:Exposure", "ir:IR", "lens:Lens2"}));
}

TEST_F(StyleMergeTest, OnlyTheFirstTabOfAKeyIsEdited) {
    const std::string strBase = "<Style><Tab name=\"NoKey\"/><Tab key=\"a\" name=\"A1\"/>"
                                "<Tab key=\"a\" name=\"A2\"/></Style>";
    EXPECT_EQ(tabs(merge("(x=1)", strBase, "<E x=\"1\"><Delete tab_key=\"a\"/></E>")),
              (std::vector<std::string>{"-:NoKey", "a:A2"}));
    EXPECT_EQ(
        tabs(merge("(x=1)", strBase,
                   "<E x=\"1\"><Modify tab_key=\"a\"><Tab key=\"a\" name=\"New\"/></Modify></E>")),
        (std::vector<std::string>{"-:NoKey", "a:New", "a:A2"}));
}

TEST_F(StyleMergeTest, EditsOutsideTheFormatAreSkipped) {
    const std::string strDiversity = "<E x=\"1\">"
                                     "<Modify tab_key=\"image\"/>"
                                     "<AddAfter tab_key=\"ir\"/>"
                                     "<Rename tab_key=\"ir\"><Tab key=\"z\"/></Rename>"
                                     "<Delete tab_key=\"absent\"/>"
                                     "<Delete/>"
                                     "</E>";
    EXPECT_EQ(tabs(merge("(x=1)", BASE_STYLE, strDiversity)), m_vecBaseTabs);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("NULL != p_pNewTab"), std::string::npos);
    EXPECT_NE(strLog.find("operation(Modify) tab_key(image)"), std::string::npos);
    EXPECT_NE(strLog.find("operation(AddAfter) tab_key(ir)"), std::string::npos);
}

TEST_F(StyleMergeTest, ApplyingEntryWithoutEditsIsReported) {
    EXPECT_EQ(tabs(merge("(x=1)", BASE_STYLE, "<E x=\"1\"/>")), m_vecBaseTabs);
    EXPECT_NE(takeErrorLog().find("NULL != (node_second = node_first->FirstChildElement())"),
              std::string::npos);
    EXPECT_EQ(tabs(merge("(x=1)", BASE_STYLE, "<E x=\"2\"/>")), m_vecBaseTabs);
    EXPECT_EQ(takeErrorLog(), "");
}

TEST_F(StyleMergeTest, MergedFileHoldsTheMergedText) {
    const std::string strMerged = merge("(lensId=2)", BASE_STYLE, addAfterIr("lensId=\"2\""), 3);
    EXPECT_EQ(m_objRoot.readFile("/tmp/merge_style_ch3.xml"), strMerged);
    EXPECT_EQ(tabs(strMerged), m_vecWithExtra);
    EXPECT_FALSE(m_objRoot.exists("/tmp/merge_style_ch1.xml"));
}

TEST_F(StyleMergeTest, BrokenDocumentsAreReported) {
    EXPECT_EQ(tabs(merge("(x=1)", "<Style><Tab key=\"a\"></Style>", "<E x=\"1\"/>")),
              std::vector<std::string>{});
    EXPECT_NE(takeErrorLog().find("doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8)"),
              std::string::npos);

    EXPECT_EQ(tabs(merge("(x=1)", BASE_STYLE, "<E x=\"1\"><Delete tab_key=\"ir\"/>")),
              m_vecBaseTabs);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("doc_style_div.LoadMem(ui_styleDiversity, TIXML_ENCODING_UTF8)"),
              std::string::npos);
    EXPECT_NE(strLog.find("NULL != (node_first = doc_style_div.RootElement())"), std::string::npos);
}

TEST_F(StyleMergeTest, UpdateStyleTabOnAStyleWithoutTabs) {
    TiXmlDocument objDoc;
    objDoc.Parse("<Style/>");
    TiXmlElement objTab("Tab");
    EXPECT_EQ(updateStyleTab(&objDoc, "AddAfter", "a", &objTab), 0);
    EXPECT_EQ(updateStyleTab(nullptr, "Delete", "a", nullptr), 0);
    EXPECT_NE(
        takeErrorLog().find("NULL != (tab_node = doc_style->RootElement()->FirstChildElement())"),
        std::string::npos);
}

} // namespace
} // namespace configtest
