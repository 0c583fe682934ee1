// sensorctl's input parsers, key names, style reader and simulator profile.
#include <gmock/gmock.h>

#include "common/SensorKeys.h"
#include "isp/IspSimulator.h"
#include "tools/CommandLine.h"
#include "tools/KeyValText.h"
#include "tools/ParamNames.h"
#include "tools/SimulatorControl.h"
#include "tools/StyleTree.h"
#include "tools/ValueParsing.h"

#include "SensorctlSession.h"

namespace sensortest {

TEST(InputTextTest, NumbersSwitchesTimesPairsIdsAndCommandLinesAreReadStrictly) {
    int nValue = 7;
    for (const char* szGood : {"0", "-5", "+12", "2147483647", "-2147483648"}) {
        EXPECT_TRUE(parseInt(szGood, nValue)) << szGood;
    }
    EXPECT_EQ(-2147483648LL, nValue);
    for (const char* szBad : {"", "5x", " 5", "5 ", "2147483648", "0x10", "1.5", "-"}) {
        nValue = 7;
        EXPECT_FALSE(parseInt(szBad, nValue)) << szBad;
        EXPECT_EQ(7, nValue) << "a refused text leaves the value";
    }
    bool bOn = false;
    EXPECT_TRUE(parseSwitch("on", bOn) && bOn);
    EXPECT_TRUE(parseSwitch("0", bOn) && !bOn);
    EXPECT_FALSE(parseSwitch("maybe", bOn));

    int nHour = 0, nMinute = 0, nSecond = 9;
    EXPECT_TRUE(parseTimeOfDay("7:05", nHour, nMinute, nSecond));
    EXPECT_EQ((std::vector<int>{7, 5, 0}), (std::vector<int>{nHour, nMinute, nSecond}));
    EXPECT_TRUE(parseTimeOfDay("23:59:59", nHour, nMinute, nSecond));
    EXPECT_EQ(59, nSecond);
    for (const char* szBad :
         {"24:00", "7:60", "7", "7:05:60", "1:2:3:4", "-1:00", "07:0a", "7:", "007:00"}) {
        EXPECT_FALSE(parseTimeOfDay(szBad, nHour, nMinute, nSecond)) << szBad;
    }

    std::vector<KeyVal> vecPairs;
    ASSERT_TRUE(parsePairText("(34,60)(2337,-1)", vecPairs));
    ASSERT_EQ(2u, vecPairs.size());
    EXPECT_EQ(2337u, vecPairs[1].key);
    EXPECT_EQ(-1, static_cast<int>(vecPairs[1].value));
    for (const char* szBad : {"", "(34,60", "(34)", "(34,60,1)", "(-1,5)", "x(34,60)", "(34,60)x",
                              "(34, 60)", "()", "(34,60)()"}) {
        EXPECT_FALSE(parsePairText(szBad, vecPairs)) << szBad;
    }
    EXPECT_EQ(2u, vecPairs.size()) << "a refused text leaves the pairs";

    std::vector<int> vecIds;
    EXPECT_TRUE(parseIdList("(34)", vecIds));
    EXPECT_TRUE(parseIdList("(34,2337,49)", vecIds));
    EXPECT_EQ((std::vector<int>{34, 2337, 49}), vecIds);
    for (const char* szBad : {"()", "(34,)", "(34)(35)", "34", "(34", " (34)"}) {
        EXPECT_FALSE(parseIdList(szBad, vecIds)) << szBad;
    }

    CommandLine objLine;
    std::string strError;
    ASSERT_TRUE(objLine.parse("  set   brightness 60  # trailing note", strError));
    EXPECT_EQ("set", objLine.name());
    ASSERT_EQ(2u, objLine.argCount());
    EXPECT_EQ("60", objLine.arg(1));
    ASSERT_TRUE(objLine.parse("sets \"(34,60) (35,1)\" a#b", strError));
    EXPECT_EQ("(34,60) (35,1)", objLine.arg(0));
    EXPECT_EQ("a#b", objLine.arg(1)) << "only a word that begins with # is a comment";
    ASSERT_TRUE(objLine.parse("# only a comment", strError));
    EXPECT_TRUE(objLine.empty());
    EXPECT_FALSE(objLine.parse("set \"open", strError));
    EXPECT_EQ("a quote is not closed", strError);
}

TEST(ParamNamesTest, KeysByNumberOrNameAndTheirIspCommands) {
    const std::pair<const char*, u32> aCases[] = {{"34", KEY_BRIGHTNESS},
                                                  {"brightness", KEY_BRIGHTNESS},
                                                  {"KEY_BRIGHTNESS", KEY_BRIGHTNESS},
                                                  {"Brightness", KEY_BRIGHTNESS},
                                                  {"max-shutter", KEY_MAX_SHUTTER},
                                                  {"-3", 0},
                                                  {"KEY_", 0},
                                                  {"nosuch", 0}};
    for (const auto& [szText, nExpected] : aCases) {
        u32 nKey = 0;
        EXPECT_EQ(nExpected != 0, keyFromText(szText, nKey)) << szText;
        EXPECT_EQ(nExpected, nKey) << szText;
    }
    EXPECT_EQ("34 KEY_BRIGHTNESS", keyLabel(KEY_BRIGHTNESS));
    EXPECT_EQ("99999", keyLabel(99999));
    // Command 168 is named by key 170, which sends it, not by key 168 (without a row).
    EXPECT_EQ(168u, ispCommandOf(KEY_WHITE_SWITCH));
    EXPECT_EQ("168 (KEY_WHITE_SWITCH)", ispCommandLabel(168));
    EXPECT_EQ(KEY_SCHEME_MODE, ispCommandOf(KEY_SCHEME_MODE)) << "stored-only rows send nothing";
    EXPECT_EQ("4242", ispCommandLabel(4242));
}

TEST(StyleTreeTest, TabsControlsItemsAndBounds) {
    StyleTree objTree;
    std::string strError;
    ASSERT_TRUE(objTree.parse(R"(<Style><Tab key="image">
    <Control id="34" value="50" min="0" max="100"/>
    <Group><Control id="2528" value="1"><Item index="0"/><Item index="3"/></Control></Group>
  </Tab><Tab key="more"><Control id="34" value="7"/><Control id="9"/></Tab></Style>)",
                              strError))
        << strError;
    ASSERT_EQ(2u, objTree.tabs().size());
    EXPECT_EQ("more", objTree.tabs()[1].strKey);
    EXPECT_EQ((std::vector<u32>{34, 2528, 34, 9}), objTree.keys());
    const StyleControl* pBrightness = objTree.find(34);
    ASSERT_NE(nullptr, pBrightness);
    EXPECT_EQ(50, pBrightness->nValue) << "the first control of an id is found";
    EXPECT_EQ(100, pBrightness->nMax.value_or(-1));
    EXPECT_EQ((std::vector<int>{0, 3}), objTree.find(2528)->vecItems);
    EXPECT_FALSE(objTree.find(9)->bHasValue);
    EXPECT_EQ(nullptr, objTree.find(35));
    EXPECT_FALSE(objTree.parse("<Style><Tab>", strError));
    EXPECT_THAT(strError, ::testing::HasSubstr("not a readable XML document"));
    EXPECT_EQ(2u, objTree.tabs().size()) << "a refused text leaves the tree";
}

using SimulatorControlTest = SensorctlTest;

TEST_F(SimulatorControlTest, TakesTheDeviceProfileAndItsThresholds) {
    m_objScratch.writeFile("/root/isp_profile.xml",
                           R"(<SensorProfile name="test-cam"><DayNight dayThreshold="80" )"
                           R"(nightThreshold="20" level="90"/></SensorProfile>)");
    IspSimulator objIsp;
    SimulatorControl objSim(objIsp);
    std::string strError;
    ASSERT_TRUE(objSim.loadProfile(root(), strError)) << strError;
    EXPECT_EQ("test-cam", objSim.profileName());
    EXPECT_EQ(80, objSim.thresholds(0).dayThreshold);
    EXPECT_EQ(90, objSim.lightLevel(1));
    EXPECT_FALSE(objSim.isNight(0));
    objSim.setLightLevel(20);
    EXPECT_TRUE(objSim.isNight(0));
    EXPECT_TRUE(objSim.isNight(3));
    objSim.setLightLevel(79);
    EXPECT_TRUE(objSim.isNight(0)) << "between the thresholds the state holds";

    m_objScratch.writeFile("/root/isp_profile.xml", "<SensorProfile><Bogus/></SensorProfile>");
    EXPECT_FALSE(objSim.loadProfile(root(), strError));
    EXPECT_THAT(strError, ::testing::HasSubstr("isp_profile.xml"));
    EXPECT_EQ("test-cam", objSim.profileName()) << "a broken profile leaves the simulator";
}

} // namespace sensortest
