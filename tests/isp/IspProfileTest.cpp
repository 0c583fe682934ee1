// Sensor profiles: the built-in one, loading from text and files, refusals,
// per-channel sections, and the day/night state they configure.
#include "IspTestFixture.h"
#include "support/TestSupport.h"

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

const char kTwoChannelProfile[] = R"xml(<SensorProfile name="dual">
  <Command id="34" value="60"/>
  <Record id="2496" text="LENS 2.3"/>
  <Dynamic id="2368" type="0"><Item value="1"/><Item value="3"/></Dynamic>
  <DayNight dayThreshold="50" nightThreshold="20" level="10"/>
  <Channel index="1">
    <Command id="34" value="40"/>
    <Dynamic id="16" type="1" min="0" max="9" default="4"/>
    <DayNight level="90"/>
  </Channel>
</SensorProfile>)xml";

std::string wrap(const std::string& p_strBody) {
    return "<SensorProfile>" + p_strBody + "</SensorProfile>";
}

// A profile with n dynamic commands, or one dynamic command with n items.
std::string manyDynamics(int p_nCount, bool p_bItems) {
    std::string strBody = p_bItems ? "<Dynamic id=\"16\" type=\"0\">" : "";
    for (int i = 0; i < p_nCount; ++i) {
        strBody += p_bItems ? "<Item value=\"" + std::to_string(i) + "\"/>"
                            : "<Dynamic id=\"" + std::to_string(100 + i) +
                                  "\" type=\"0\"><Item value=\"0\"/></Dynamic>";
    }
    return wrap(strBody + (p_bItems ? "</Dynamic>" : ""));
}

} // namespace

TEST_F(IspTest, ProfileTextSetsValuesPerChannel) {
    std::string strError;
    ASSERT_TRUE(sim().loadProfileText(kTwoChannelProfile, &strError)) << strError;
    EXPECT_EQ(sim().profileName(), "dual");
    EXPECT_EQ(get(0, 34), 60);
    EXPECT_EQ(get(1, 34), 40);
    EXPECT_EQ(get(0, 2337), 0); // nothing left of the built-in profile
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(sim().getRecord(1, 2496).data())),
              "LENS 2.3");
    // Channel 1's dynamic list replaces the document's.
    ia_dynamic_cmd_list_st stList{};
    ASSERT_EQ(call(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &stList), 0);
    ASSERT_EQ(stList.cmd_cnt, 1);
    EXPECT_EQ(stList.cmd_list[0], 2368u);
    EXPECT_EQ(get(0, 2368), 1); // a list's first item is its default
    ASSERT_EQ(call(1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &stList), 0);
    ASSERT_EQ(stList.cmd_cnt, 1);
    EXPECT_EQ(stList.cmd_list[0], 16u);
    EXPECT_EQ(correct(1, 16, 12), 9);
    // Level 10 is below the night threshold; channel 1 is bright.
    EXPECT_EQ(get(0, 153), 1);
    EXPECT_EQ(get(1, 153), 0);
}

TEST_F(IspTest, BrokenProfilesAreRefusedAndChangeNothing) {
    const std::vector<std::pair<std::string, std::string>> vecCases = {
        {"<SensorProfile><Command id=\"34\"", "XML error"},
        {"<Profile/>", "root element"},
        {wrap("<Comand id=\"34\" value=\"1\"/>"), "unknown element"},
        {wrap("<Command id=\"34\" value=\"1\" colour=\"red\"/>"), "unknown attribute"},
        {wrap("<Command id=\"34\"/>"), "\"value\" is missing"},
        {wrap("<Command id=\"34\" value=\"5x\"/>"), "not a number"},
        {wrap("<Command id=\"34\" value=\"2147483648\"/>"), "not a number"},
        {wrap("<Command id=\"34\" value=\"1\"/><Command id=\"34\" value=\"2\"/>"), "twice"},
        {wrap("<Command id=\"145\" value=\"1\"/>"), "carries a record"},
        {wrap("<Record id=\"145\" words=\"1 2 3 4\"/>"), "do not fit"},
        {wrap("<Record id=\"2496\" text=\"a\" bytes=\"1\"/>"), "exactly one"},
        {wrap("<Dynamic id=\"16\" type=\"0\"/>"), "at least one"},
        {wrap("<Dynamic id=\"16\" type=\"0\" default=\"2\"><Item value=\"1\"/></Dynamic>"),
         "not one of the items"},
        {wrap("<Dynamic id=\"16\" type=\"1\" min=\"5\" max=\"1\"/>"), "min <= default <= max"},
        {manyDynamics(17, false), "more than 16"},
        {manyDynamics(65, true), "more than 64"},
        {wrap("<DayNight dayThreshold=\"30\" nightThreshold=\"30\"/>"), "must be above"},
        {wrap("<Channel index=\"4\"/>"), "not a number in 0..3"},
        {wrap("<Channel index=\"1\"><Channel index=\"2\"/></Channel>"), "unknown element"},
    };
    ASSERT_EQ(set(0, 34, 77), 0);
    for (const auto& [strXml, strExpected] : vecCases) {
        SCOPED_TRACE(strXml);
        std::string strError;
        EXPECT_FALSE(sim().loadProfileText(strXml, &strError));
        EXPECT_NE(strError.find(strExpected), std::string::npos) << strError;
    }
    EXPECT_EQ(get(0, 34), 77);
    EXPECT_EQ(sim().profileName(), "builtin");
    EXPECT_TRUE(sim().loadProfileText(manyDynamics(16, false)));
    EXPECT_TRUE(sim().loadProfileText(manyDynamics(64, true)));
}

TEST_F(IspTest, ProfileFilesAndTheEnvironmentChooseTheSensor) {
    sensortest::TempDeviceRoot objRoot;
    objRoot.writeFile("/profiles/dual.xml", kTwoChannelProfile);
    objRoot.writeFile("/profiles/broken.xml", "<SensorProfile>");
    const std::string strGood = objRoot.hostPath("/profiles/dual.xml");
    const std::string strBroken = objRoot.hostPath("/profiles/broken.xml");
    std::string strError;
    EXPECT_FALSE(sim().loadProfile(objRoot.hostPath("/profiles/missing.xml"), &strError));
    EXPECT_NE(strError.find("cannot open"), std::string::npos) << strError;
    EXPECT_FALSE(sim().loadProfile(strBroken, &strError));
    EXPECT_NE(strError.find(strBroken), std::string::npos) << strError;
    ASSERT_TRUE(sim().loadProfile(strGood, &strError)) << strError;
    EXPECT_EQ(get(1, 34), 40);

    // A simulator made afterwards starts from SENSOR_ISP_PROFILE; a broken
    // one falls back to the built-in sensor.
    ASSERT_EQ(setenv("SENSOR_ISP_PROFILE", strGood.c_str(), 1), 0);
    const IspSimulator objFromEnv;
    ASSERT_EQ(setenv("SENSOR_ISP_PROFILE", strBroken.c_str(), 1), 0);
    const IspSimulator objFallback;
    unsetenv("SENSOR_ISP_PROFILE");
    EXPECT_EQ(objFromEnv.getValue(1, 34), 40);
    EXPECT_EQ(objFallback.profileName(), "builtin");
}

TEST_F(IspTest, DayNightStateFollowsTheLightWithHysteresis) {
    // Built-in thresholds: night at 30 or below, day at 60 or above.
    const std::vector<std::pair<int32_t, int32_t>> vecSteps = {
        {45, 0}, {31, 0}, {30, 1}, {45, 1}, {59, 1}, {60, 0}, {45, 0}, {-100, 1}, {1000, 0}};
    for (const auto& [nLevel, nState] : vecSteps) {
        SCOPED_TRACE(nLevel);
        ASSERT_TRUE(sim().setLightLevel(0, nLevel));
        EXPECT_EQ(get(0, 153), nState);
    }
    // Forcing the state holds until the light crosses a threshold.
    ASSERT_EQ(set(0, 153, 1), 0);
    ASSERT_TRUE(sim().setLightLevel(0, 45));
    EXPECT_EQ(get(0, 153), 1);
    ASSERT_TRUE(sim().setLightLevel(0, 70));
    EXPECT_EQ(get(0, 153), 0);
    // Per channel, or every channel at once.
    ASSERT_TRUE(sim().setLightLevel(1, 10));
    EXPECT_EQ(get(1, 153), 1);
    EXPECT_EQ(get(2, 153), 0);
    ASSERT_TRUE(sim().setLightLevel(-1, 0));
    EXPECT_EQ(get(3, 153), 1);
    EXPECT_FALSE(sim().setLightLevel(isp::kChannelCount, 0));
}
