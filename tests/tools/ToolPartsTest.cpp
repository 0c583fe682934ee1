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
    int nValue = 7, nHour = 0, nMinute = 0, nSecond = 9;
    bool bOn = false;
    std::vector<KeyVal> vecPairs;
    std::vector<int> vecIds;
    EXPECT_TRUE(parseSwitch("on", bOn) && bOn && parseSwitch("0", bOn) && !bOn);
    EXPECT_TRUE(parseTimeOfDay("23:59:59", nHour, nMinute, nSecond) && nSecond == 59);
    using Parser = std::function<bool(const char*)>;
    // (parser, texts it takes in this order, texts it refuses, leaving what it last read)
    const std::tuple<Parser, std::vector<const char*>, std::vector<const char*>> aParsers[] = {
        {[&](const char* sz) { return parseInt(sz, nValue); },
         {"0", "-5", "+12", "2147483647", "-2147483648"},
         {"", "5x", " 5", "5 ", "2147483648", "0x10", "1.5", "-"}},
        {[&](const char* sz) { return parseSwitch(sz, bOn); }, {}, {"maybe"}},
        {[&](const char* sz) { return parseTimeOfDay(sz, nHour, nMinute, nSecond); },
         {"7:05"},
         {"24:00", "7:60", "7", "7:05:60", "1:2:3:4", "-1:00", "07:0a", "7:", "007:00"}},
        {[&](const char* sz) { return parsePairText(sz, vecPairs); },
         {"(34,60)(2337,-1)"},
         {"", "(34,60", "(34)", "(34,60,1)", "(-1,5)", "x(34,60)", "(34,60)x", "(34, 60)", "()",
          "(34,60)()"}},
        {[&](const char* sz) { return parseIdList(sz, vecIds); },
         {"(34)", "(34,2337,49)"},
         {"()", "(34,)", "(34)(35)", "34", "(34", " (34)"}}};
    for (const auto& [fnParse, vecTaken, vecRefused] : aParsers) {
        for (const char* sz : vecTaken) {
            EXPECT_TRUE(fnParse(sz)) << sz;
        }
        for (const char* sz : vecRefused) {
            EXPECT_FALSE(fnParse(sz)) << sz;
        }
    }
    EXPECT_EQ(-2147483648LL, nValue);
    EXPECT_EQ((std::vector<int>{7, 5, 0}), (std::vector<int>{nHour, nMinute, nSecond}))
        << "seconds not given are 0";
    ASSERT_EQ(2u, vecPairs.size());
    EXPECT_EQ(std::make_pair(2337u, -1),
              std::make_pair(vecPairs[1].key, static_cast<int>(vecPairs[1].value)));
    EXPECT_EQ((std::vector<int>{34, 2337, 49}), vecIds);

    CommandLine objLine;
    std::string strError;
    ASSERT_TRUE(objLine.parse("  set   brightness 60  # trailing note", strError));
    EXPECT_EQ((std::vector<std::string>{"set", "brightness", "60"}),
              (std::vector<std::string>{objLine.name(), objLine.arg(0), objLine.arg(1)}));
    EXPECT_EQ(2u, objLine.argCount());
    ASSERT_TRUE(objLine.parse("sets \"(34,60) (35,1)\" a#b", strError));
    EXPECT_EQ("(34,60) (35,1)", objLine.arg(0));
    EXPECT_EQ("a#b", objLine.arg(1)) << "only a word that begins with # is a comment";
    EXPECT_TRUE(objLine.parse("# only a comment", strError) && objLine.empty());
    EXPECT_FALSE(objLine.parse("set \"open", strError));
    EXPECT_EQ("a quote is not closed", strError);
}

TEST(ParamNamesTest, KeysByNumberOrNameAndTheirIspCommands) {
    u32 nKey = 0;
    for (const char* szName : {"34", "brightness", "KEY_BRIGHTNESS", "Brightness"}) {
        EXPECT_TRUE(keyFromText(szName, nKey) && nKey == KEY_BRIGHTNESS) << szName;
    }
    EXPECT_TRUE(keyFromText("max-shutter", nKey) && nKey == KEY_MAX_SHUTTER);
    for (const char* szBad : {"-3", "KEY_", "nosuch"}) {
        EXPECT_FALSE(keyFromText(szBad, nKey)) << szBad;
    }
    EXPECT_EQ(KEY_MAX_SHUTTER, nKey) << "a refused name leaves the key";
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
    ASSERT_NE(nullptr, objTree.find(34));
    EXPECT_EQ(std::make_pair(50, 100),
              std::make_pair(objTree.find(34)->nValue, objTree.find(34)->nMax.value_or(-1)))
        << "the first control of an id is found";
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
    EXPECT_EQ(std::make_pair(80, 90),
              std::make_pair(objSim.thresholds(0).dayThreshold, objSim.lightLevel(1)));
    // Night from 20 down on every channel; between the thresholds the state holds.
    for (const auto& [nLevel, bNight] : {std::pair{90, false}, {20, true}, {79, true}}) {
        objSim.setLightLevel(nLevel);
        EXPECT_EQ(std::make_pair(bNight, bNight),
                  std::make_pair(objSim.isNight(0), objSim.isNight(3)))
            << nLevel;
    }
    m_objScratch.writeFile("/root/isp_profile.xml", "<SensorProfile><Bogus/></SensorProfile>");
    EXPECT_FALSE(objSim.loadProfile(root(), strError));
    EXPECT_THAT(strError, ::testing::HasSubstr("isp_profile.xml"));
    EXPECT_EQ("test-cam", objSim.profileName()) << "a broken profile leaves the simulator";
}

} // namespace sensortest
