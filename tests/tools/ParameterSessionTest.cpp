// Parameters through sensorctl on the ipc camera: sets, flash, text forms, bad input,
// and values a refused ISP command kept from the ISP.
#include "SensorctlSession.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace sensortest {

using ParameterSessionTest = SensorctlTest;

TEST_F(ParameterSessionTest, SetShowsTheChangeAndOnlyAFlushReachesTheNextRun) {
    run("set brightness 60\nget brightness\nflush\nset brightness 70\n")
        .expect(0,
                {{"", Shows::Has, "(new copy)"},
                 {"", Shows::Has, "channel 1: up, scheme 0, mode auto, policy none"},
                 {"set brightness 60", Shows::Has,
                  "34 KEY_BRIGHTNESS: 50 -> 60, stored in scheme 0 (flash has 50; 'flush' "
                  "keeps it)"},
                 {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 60\n"},
                 {"flush", Shows::Has, "34 KEY_BRIGHTNESS: 50 -> 60 on flash"},
                 {"", Shows::Has, "scheme 0 written to /mnt/mtd/code/config_file/sensor1_0.cfg"}});

    // 70 was never flushed: the next run starts from what is on flash.
    run("get brightness\nset brightness 60\nflash 0 34\n")
        .expect(0, {{"", Shows::Has, "(kept from earlier runs)"},
                    {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 60\n"},
                    {"set brightness 60", Shows::Has, "is already 60: nothing sent"},
                    {"flash 0 34", Shows::Has, "  34 KEY_BRIGHTNESS = 60\n"}});
}

TEST_F(ParameterSessionTest, BadInputIsRefusedAndChangesNothing) {
    const std::string strBad =
        "set brightness abc\nset nosuchkey 1\nset 34 61 x\nset gamma 7\nset brightness 101\n"
        "sets (34,61\nsets (34,61)(99999,1)\ngets 34\nscheme 9\nflash 4\ntime 25:00\n"
        "fail 34 sometimes\nfrobnicate\nset brightness\ncheck (5,2)\nrestore 99999\ndebug 12\n"
        "light-type 4\nheat 1\n";
    const long nBad = std::count(strBad.begin(), strBad.end(), '\n');
    std::vector<Reply> vecReplies = {
        {"", Shows::Has, std::to_string(nBad) + " commands failed"},
        {"set gamma 7", Shows::Has,
         "error: 2528 KEY_GAMMA allows only 0 1 2 3; 7 is not one of them"},
        {"set brightness 101", Shows::Has,
         "error: 34 KEY_BRIGHTNESS takes 0 to 100; 101 is outside"},
        {"frobnicate", Shows::Has, "error: unknown command 'frobnicate'"},
        {"set brightness", Shows::Has, "error: usage: set KEY VALUE [nocache]"},
        {"scheme 9", Shows::Has, "error: no scheme 9: choose 0 to 4 (4 is the factory set)"},
        // Nothing of the refused commands reached the set or the flash.
        {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 50\n"},
        {"flash 0 brightness gamma", Shows::Has, "KEY_GAMMA = 1\n"},
        {"scheme", Shows::Has, "scheme 0, mode auto"}};
    std::istringstream objBad(strBad);
    for (std::string strLine; std::getline(objBad, strLine);) {
        vecReplies.push_back({strLine, Shows::Starts, "error: "});
    }
    run(strBad + "get brightness\nflash 0 brightness gamma\nscheme\n").expect(1, vecReplies);
}

// Text forms read and write several parameters; the style tree shows the current values; resets
// undo unsaved changes or go back to the factory.
TEST_F(ParameterSessionTest, TextFormsStyleTreeAndResets) {
    // The simulator answers any command; a refused read is made on purpose.
    run("sets (34,61)(2337,44)\nfail 99999 get\ngets (34,2337,99999)\nsets (34,62) nocache\nget "
        "34\n"
        "all\nstyle\nstyle image\nstyle nosuchtab\nflush\nset brightness 62\nset contrast 40\n"
        "resetlast\nget brightness\nreset\nget 34\nflash 0 brightness\n")
        .expect(1,
                {{"sets (34,61)(2337,44)", Shows::Has, "34 KEY_BRIGHTNESS: 50 -> 61"},
                 {"sets (34,61)(2337,44)", Shows::Has, "2337 KEY_SATURATION: 50 -> 44"},
                 {"sets (34,61)(2337,44)", Shows::Has, "2 pairs applied, 2 stored values changed"},
                 {"gets (34,2337,99999)", Shows::Has, "reply (34,61)(2337,44)"},
                 {"gets (34,2337,99999)", Shows::Has, "1 of the 3 keys could not be read"},
                 // nocache stores nothing
                 {"get 34", Shows::Is, "  34 KEY_BRIGHTNESS = 61\n"},
                 {"all", Shows::Has, "  2337 KEY_SATURATION = 44\n"},
                 {"style", Shows::Starts, "  tab scheme\n    8000 KEY_SCHEME_MODE"},
                 {"style", Shows::Matches, "\n    34 KEY_BRIGHTNESS += 61 +default 50, 0..100\n"},
                 {"style", Shows::Matches, "2528 KEY_GAMMA .*items 0 1 2 3\n"},
                 {"style", Shows::Matches, "  [0-9]+ tabs, 9[0-9] controls\n"},
                 {"style image", Shows::Starts, "  tab image\n"},
                 {"style image", Shows::Lacks, "tab scheme"},
                 {"style nosuchtab", Shows::Has,
                  "error: no tab 'nosuchtab'; the tabs are: scheme image"},
                 {"resetlast", Shows::Has, "34 KEY_BRIGHTNESS: 62 -> 61"},
                 {"resetlast", Shows::Has, "2353 KEY_CONTRAST: 40 -> 50"},
                 {"resetlast", Shows::Has, "2 parameters changed"},
                 {"reset", Shows::Has, "34 KEY_BRIGHTNESS: 61 -> 50"},
                 {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 61\n"},
                 {"get 34", Shows::Is, "  34 KEY_BRIGHTNESS = 50\n", 1},
                 {"flash 0 brightness", Shows::Has, "BRIGHTNESS = 50\n"}});
}

TEST_F(ParameterSessionTest, HelpNamesEveryCommandOnceAndEachExplainsItself) {
    const SessionResult stHelp = run("help\n");
    ASSERT_EQ(0, stHelp.nExit);
    // Command lines are indented by two blanks under their group's title.
    std::istringstream objIn(stHelp.replyTo("help").value_or(""));
    std::set<std::string> setNames;
    std::string strScript;
    for (std::string strLine; std::getline(objIn, strLine);) {
        if (strLine.rfind("  ", 0) == 0) {
            const std::string strName = strLine.substr(2, strLine.find(' ', 2) - 2);
            EXPECT_TRUE(setNames.insert(strName).second) << strName << " listed twice";
            strScript += "help " + strName + "\n";
        }
    }
    for (const char* szName : {"set", "get", "flush", "scheme", "style", "zoom", "shutterup", "ir",
                               "mirror", "night", "time", "fail", "debug", "reset"}) {
        EXPECT_EQ(1u, setNames.count(szName)) << szName;
    }
    run(strScript).expect(0, {{"", Shows::Lacks, "error:"}});
}

// The values a refused ISP command kept from the ISP are shown as pending until
// the ISP accepts them again.
TEST_F(ParameterSessionTest, ValuesARefusalKeptFromTheIspArePendingUntilSent) {
    run("scheme 1\nset saturation 100\nflush\nscheme 0\nfail saturation set -1\nscheme 1\n"
        "pending\nfail clear\nresetlast\npending\nisp saturation\n")
        .expect(0, {{"pending", Shows::Has, "2337 KEY_SATURATION = 100 (pending)"},
                    {"pending", Shows::Is,
                     "  nothing pending: the ISP holds every value of the current scheme\n", 1},
                    {"isp saturation", Shows::Has, "100"}});
}

} // namespace sensortest
