// Parameters through sensorctl on the sample ipc camera: what a set shows and
// stores, what survives between runs, the text forms, and bad input.
#include "SensorctlSession.h"

#include <regex>
#include <set>
#include <sstream>

namespace sensortest {

using ParameterSessionTest = SensorctlTest;

TEST_F(ParameterSessionTest, SetShowsTheChangeAndOnlyAFlushReachesTheNextRun) {
    const SessionResult stFirst = run("set brightness 60\n"
                                      "get brightness\n"
                                      "flush\n"
                                      "set brightness 70\n");
    ASSERT_EQ(0, stFirst.nExit) << stFirst.strOutput;
    EXPECT_TRUE(stFirst.has("(new copy)"));
    EXPECT_TRUE(stFirst.has("channel 1: up, scheme 0, mode auto, policy none"));
    EXPECT_TRUE(stFirst.replyTo("set brightness 60")
                    .find("34 KEY_BRIGHTNESS: 50 -> 60, stored in scheme 0 (flash has 50; "
                          "'flush' keeps it)") != std::string::npos)
        << stFirst.strOutput;
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 60\n", stFirst.replyTo("get brightness"));
    EXPECT_TRUE(stFirst.replyTo("flush").find("34 KEY_BRIGHTNESS: 50 -> 60 on flash") !=
                std::string::npos);
    EXPECT_TRUE(stFirst.has("scheme 0 written to /mnt/mtd/code/config_file/sensor1_0.cfg"));

    // 70 was never flushed: the next run starts from what is on flash.
    const SessionResult stSecond = run("get brightness\nset brightness 60\nflash 0 34\n");
    ASSERT_EQ(0, stSecond.nExit) << stSecond.strOutput;
    EXPECT_TRUE(stSecond.has("(kept from earlier runs)"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 60\n", stSecond.replyTo("get brightness"));
    EXPECT_TRUE(stSecond.replyTo("set brightness 60").find("is already 60: nothing sent") !=
                std::string::npos);
    EXPECT_TRUE(stSecond.replyTo("flash 0 34").find("  34 KEY_BRIGHTNESS = 60\n") !=
                std::string::npos);
}

TEST_F(ParameterSessionTest, BadInputIsRefusedAndChangesNothing) {
    const char* aBad[] = {"set brightness abc",
                          "set nosuchkey 1",
                          "set 34 61 x",
                          "set gamma 7",
                          "set brightness 101",
                          "sets (34,61",
                          "sets (34,61)(99999,1)",
                          "gets 34",
                          "scheme 9",
                          "flash 4",
                          "time 25:00",
                          "fail 34 sometimes",
                          "frobnicate",
                          "set brightness",
                          "check (5,2)",
                          "restore 99999",
                          "debug 12",
                          "light-type 4",
                          "heat 1"};
    std::string strScript;
    for (const char* szLine : aBad) {
        strScript += std::string(szLine) + "\n";
    }
    strScript += "get brightness\nflash 0 brightness gamma\nscheme\n";
    const SessionResult stResult = run(strScript);
    EXPECT_EQ(1, stResult.nExit);
    EXPECT_TRUE(stResult.has(std::to_string(std::size(aBad)) + " commands failed"))
        << stResult.strOutput;
    for (const char* szLine : aBad) {
        EXPECT_EQ(0u, stResult.replyTo(szLine).rfind("error: ", 0))
            << szLine << " replied: " << stResult.replyTo(szLine);
    }
    EXPECT_TRUE(stResult.has("error: 2528 KEY_GAMMA allows only 0 1 2 3; 7 is not one of them"));
    EXPECT_TRUE(stResult.has("error: 34 KEY_BRIGHTNESS takes 0 to 100; 101 is outside"));
    EXPECT_TRUE(stResult.has("error: unknown command 'frobnicate'"));
    EXPECT_TRUE(stResult.has("error: usage: set KEY VALUE [nocache]"));
    EXPECT_TRUE(stResult.has("error: no scheme 9: choose 0 to 4 (4 is the factory set)"));
    // Nothing of the refused commands reached the set or the flash.
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 50\n", stResult.replyTo("get brightness"));
    EXPECT_TRUE(stResult.replyTo("flash 0 brightness gamma").find("KEY_GAMMA = 1\n") !=
                std::string::npos);
    EXPECT_TRUE(stResult.replyTo("scheme").find("scheme 0, mode auto") != std::string::npos);
}

TEST_F(ParameterSessionTest, TextFormsReadAndWriteSeveralParameters) {
    // The simulator answers any command; a refused read is made on purpose.
    const SessionResult stResult = run("sets (34,61)(2337,44)\n"
                                       "fail 99999 get\n"
                                       "gets (34,2337,99999)\n"
                                       "sets (34,62) nocache\n"
                                       "get 34\n"
                                       "all\n");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    const std::string strSets = stResult.replyTo("sets (34,61)(2337,44)");
    EXPECT_NE(std::string::npos, strSets.find("34 KEY_BRIGHTNESS: 50 -> 61"));
    EXPECT_NE(std::string::npos, strSets.find("2337 KEY_SATURATION: 50 -> 44"));
    EXPECT_NE(std::string::npos, strSets.find("2 pairs applied, 2 stored values changed"));
    const std::string strGets = stResult.replyTo("gets (34,2337,99999)");
    EXPECT_NE(std::string::npos, strGets.find("reply (34,61)(2337,44)"));
    EXPECT_NE(std::string::npos, strGets.find("1 of the 3 keys could not be read"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 61\n", stResult.replyTo("get 34")) << "nocache stores nothing";
    EXPECT_NE(std::string::npos, stResult.replyTo("all").find("  2337 KEY_SATURATION = 44\n"));
}

TEST_F(ParameterSessionTest, HelpNamesEveryCommandOnceAndEachExplainsItself) {
    const SessionResult stHelp = run("help\n");
    ASSERT_EQ(0, stHelp.nExit);
    // Command lines are indented by two blanks under their group's title.
    std::istringstream objIn(stHelp.replyTo("help"));
    std::set<std::string> setNames;
    std::string strScript;
    for (std::string strLine; std::getline(objIn, strLine);) {
        if (strLine.rfind("  ", 0) != 0) {
            continue;
        }
        const std::string strName = strLine.substr(2, strLine.find(' ', 2) - 2);
        EXPECT_TRUE(setNames.insert(strName).second) << strName << " listed twice";
        strScript += "help " + strName + "\n";
    }
    for (const char* szName : {"set", "get", "flush", "scheme", "style", "zoom", "shutterup", "ir",
                               "mirror", "night", "time", "fail", "debug", "reset"}) {
        EXPECT_EQ(1u, setNames.count(szName)) << szName;
    }
    const SessionResult stEach = run(strScript);
    EXPECT_EQ(0, stEach.nExit) << stEach.strOutput;
    EXPECT_FALSE(stEach.has("error:"));
}

TEST_F(ParameterSessionTest, StyleTreeShowsTabsControlsAndCurrentValues) {
    const SessionResult stResult = run("set brightness 61\nstyle\nstyle image\nstyle nosuchtab\n");
    EXPECT_EQ(1, stResult.nExit);
    const std::string strStyle = stResult.replyTo("style");
    EXPECT_EQ(0u, strStyle.find("  tab scheme\n    8000 KEY_SCHEME_MODE")) << strStyle;
    EXPECT_TRUE(std::regex_search(
        strStyle, std::regex("\n    34 KEY_BRIGHTNESS += 61 +default 50, 0..100\n")))
        << strStyle;
    EXPECT_TRUE(std::regex_search(strStyle, std::regex("2528 KEY_GAMMA .*items 0 1 2 3\n")));
    EXPECT_TRUE(std::regex_search(strStyle, std::regex("  [0-9]+ tabs, 9[0-9] controls\n")));
    EXPECT_EQ(0u, stResult.replyTo("style image").find("  tab image\n"));
    EXPECT_EQ(std::string::npos, stResult.replyTo("style image").find("tab scheme"));
    EXPECT_TRUE(stResult.has("error: no tab 'nosuchtab'; the tabs are: scheme image"));
}

TEST_F(ParameterSessionTest, ResetsUndoUnsavedChangesOrGoBackToTheFactory) {
    const SessionResult stResult = run("set brightness 61\nflush\nset brightness 62\n"
                                       "set contrast 40\nresetlast\nget brightness\n"
                                       "reset\nget 34\nflash 0 brightness\n");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    const std::string strLast = stResult.replyTo("resetlast");
    EXPECT_NE(std::string::npos, strLast.find("34 KEY_BRIGHTNESS: 62 -> 61"));
    EXPECT_NE(std::string::npos, strLast.find("2353 KEY_CONTRAST: 40 -> 50"));
    EXPECT_NE(std::string::npos, strLast.find("2 parameters changed"));
    EXPECT_NE(std::string::npos, stResult.replyTo("reset").find("34 KEY_BRIGHTNESS: 61 -> 50"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 61\n", stResult.replyTo("get brightness"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 50\n", stResult.replyTo("get 34"));
    EXPECT_NE(std::string::npos, stResult.replyTo("flash 0 brightness").find("BRIGHTNESS = 50\n"));
}

} // namespace sensortest
