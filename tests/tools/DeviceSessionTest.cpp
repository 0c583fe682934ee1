// sensorctl on each sample device, and its simulator, clock, debug and
// start-up controls, checked by what a user sees.
#include "SensorctlSession.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace sensortest {

namespace {

std::string readFile(const std::string& p_strPath) {
    std::ifstream objIn(p_strPath);
    std::ostringstream objText;
    objText << objIn.rdbuf();
    return objText.str();
}

} // namespace

using DeviceSessionTest = SensorctlTest;

TEST_F(DeviceSessionTest, DomeLensZoomsWithRatiosAndHonoursTheLock) {
    const SessionResult stResult = run("zoom 26000\nzoom\nlock on\nzoom 30000\nzoomin\n"
                                       "focus 700\nlock off\nisp 1568\niris 100\niris 30000\n"
                                       "version\n",
                                       "dome");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    EXPECT_TRUE(stResult.has("machine: type 4"));
    EXPECT_EQ("  zoom position 26000, ratio 2.530x\n", stResult.replyTo("zoom"));
    EXPECT_EQ("  zoom/focus lock on: lens commands are answered but not sent\n",
              stResult.replyTo("lock on"));
    // Under the lock the position command was answered but not sent.
    EXPECT_EQ("  sensor (ISP channel 0): 1568 (KEY_MZ_POSITION) = 26000\n",
              stResult.replyTo("isp 1568"));
    EXPECT_EQ("  iris position 256\n", stResult.replyTo("iris 100"));
    EXPECT_EQ("  iris position 1048576\n", stResult.replyTo("iris 30000"));
    EXPECT_EQ(0u, stResult.replyTo("version").find("  lens module version '"));
}

TEST_F(DeviceSessionTest, ThermalDeviceHasTwoChannelsAndAlignsTheVisualZoom) {
    const SessionResult stResult = run("status\nsyncfov\nzoom\nchannel 2\nchannel\nflash\n"
                                       "shutter\nchannel 3\n",
                                       "thermal");
    EXPECT_EQ(1, stResult.nExit) << stResult.strOutput;
    EXPECT_TRUE(stResult.has("channel 1: up, scheme 0"));
    EXPECT_TRUE(stResult.has("channel 2: up, scheme 0, mode auto, policy none, thermal"));
    const std::string strStatus = stResult.replyTo("status");
    EXPECT_NE(std::string::npos, strStatus.find("channel 1*  : camera id 1"));
    EXPECT_NE(std::string::npos, strStatus.find("channel 2   : camera id 2"));
    EXPECT_NE(std::string::npos, stResult.replyTo("syncfov").find("zoom= 12000,focus= 3400 \n"));
    // Channel 1's thread also aligns the zoom once channel 2 asked for it at
    // start-up, and prints its own lines whenever that pass comes.
    EXPECT_NE(std::string::npos,
              stResult.replyTo("zoom").find("  zoom position 12000, ratio 1.000x\n"));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("channel").find("channel 2 of 2: camera id 2, thermal"));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("flash").find("/mnt/mtd/code/config_file/sensor-thermal0.cfg"));
    EXPECT_TRUE(stResult.has("error: no channel 3: this device has channels 1 and 2"));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutter").find(
                  "error: the ISP offers no list of maximum-shutter values on this channel\n"));
}

TEST_F(DeviceSessionTest, LprNightSchemeHoldsTheLprValues) {
    const SessionResult stResult = run("flash 1 dn-mode max-shutter min-shutter\n", "lpr");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    EXPECT_TRUE(stResult.has("machine: type 8"));
    const std::string strFlash = stResult.replyTo("flash 1 dn-mode max-shutter min-shutter");
    EXPECT_NE(std::string::npos, strFlash.find("  144 KEY_DN_MODE = 0\n"));
    EXPECT_NE(std::string::npos, strFlash.find("  49 KEY_MAX_SHUTTER = 18\n"));
    EXPECT_NE(std::string::npos, strFlash.find("  51 KEY_MIN_SHUTTER = 20\n"));
}

TEST_F(DeviceSessionTest, ShutterAndLightsAsAUserSeesThem) {
    const SessionResult stResult = run("shutter\nshutterup\nshutterdown\nshutter 0\nshutter 10\n"
                                       "get max-shutter\nwhite 0\nir 1\nwhite 1\nir\n");
    EXPECT_EQ(1, stResult.nExit);
    const std::string strList = " of [0:1 1:2 2:3 3:4 4:5 5:6 6:7 7:8 8:9 9:10])\n";
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutter").find("maximum shutter 6 (index 5" + strList));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutterup").find("now maximum shutter 7 (index 6" + strList));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutterdown").find("now maximum shutter 6 (index 5" + strList));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutter 0").find("now maximum shutter 1 (index 0" + strList));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("shutter 10").find("error: index 10 is outside the ISP's list"));
    EXPECT_EQ("  49 KEY_MAX_SHUTTER = 1\n", stResult.replyTo("get max-shutter"));
    // White light on switches infrared off first.
    EXPECT_NE(std::string::npos, stResult.replyTo("ir 1").find("ir (160 KEY_IR_SWITCH): "));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("white 1").find("white (170 KEY_WHITE_SWITCH): 0 -> 1"));
    EXPECT_EQ(0u, stResult.replyTo("ir").find("  ir (160 KEY_IR_SWITCH) = 0\n"));

    // The root holds the ipc camera: another device needs --fresh or another root.
    const SessionResult stOther = run("status\n", "thermal");
    EXPECT_EQ(2, stOther.nExit);
    EXPECT_TRUE(stOther.has("holds a copy of " + std::string(SENSOR_SOURCE_DIR_FOR_TOOLS) +
                            "/devices/ipc, not of"))
        << stOther.strOutput;
}

TEST_F(DeviceSessionTest, SchemesFollowNightAndDayOnceThePolicySaysSo) {
    const SessionResult stResult = run("set brightness 61\nlight 20\nset scheme-mode 2\nnight\n"
                                       "waitscheme 1\nget brightness\nday\nwaitscheme 0\n"
                                       "get 34\nmode manual\nlight 10\nsleep 1.5\nscheme\n");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    EXPECT_EQ("  light level 20: the ISP reports night (state 1)\n"
              "  schemes do not follow (policy and mode: scheme 0, mode auto, policy none); set "
              "8000 to 2 in scheme 0 for day/night\n",
              stResult.replyTo("light 20"));
    EXPECT_NE(std::string::npos, stResult.replyTo("night").find(
                                     "the sensor thread moves to scheme 1 within a second"));
    EXPECT_NE(std::string::npos, stResult.replyTo("waitscheme 1").find("scheme 1 is current"));
    EXPECT_EQ(0u, stResult.replyTo("get brightness").find("  34 KEY_BRIGHTNESS = 50\n"))
        << "scheme 1 keeps the factory brightness";
    EXPECT_NE(std::string::npos, stResult.replyTo("waitscheme 0").find("scheme 0 is current"));
    EXPECT_EQ(0u, stResult.replyTo("get 34").find("  34 KEY_BRIGHTNESS = 61\n"));
    EXPECT_NE(std::string::npos, stResult.replyTo("scheme").find("scheme 0, mode manual"))
        << "in manual mode the night does not switch";
}

TEST_F(DeviceSessionTest, TimeOfDayDecidesTheSchemeWindow) {
    const SessionResult stResult = run("time 07:30\njudge\ntime 19:00\njudge\nwindow\n"
                                       "set 8001 20\nwindow\nflush\ntime real\n");
    EXPECT_EQ(1, stResult.nExit);
    // The clock runs on from the time set: the seconds may have moved.
    EXPECT_EQ(0u, stResult.replyTo("time 07:30").find("  time of day 07:30:0"));
    EXPECT_NE(std::string::npos, stResult.replyTo("time 07:30").find(" (set)\n"));
    EXPECT_EQ("  at 07:30 scheme 0's window holds the time\n", stResult.replyTo("judge"));
    EXPECT_EQ("  at 19:00 no scheme's window holds the time: scheme 0 by default\n",
              stResult.replyTo("judge", 1));
    EXPECT_EQ("  scheme 0: window 06:00 to 18:00, valid\n", stResult.replyTo("window"));
    EXPECT_EQ("  scheme 0: window 20:00 to 18:00, the window does not start before it ends (507): "
              "flush refuses to store it\n",
              stResult.replyTo("window", 1));
    EXPECT_EQ("error: flush refused: the window does not start before it ends (507); nothing was "
              "written\n",
              stResult.replyTo("flush"));
    EXPECT_NE(std::string::npos, stResult.replyTo("time real").find("(the machine's clock)"));
}

TEST_F(DeviceSessionTest, FailingIspCommandIsReportedAndStoresNothing) {
    const SessionResult stResult = run("fail brightness set -5\nset brightness 61\nsim\n"
                                       "get brightness\nfail clear\nset brightness 61\nlog 2\n"
                                       "isp 34\n");
    EXPECT_EQ(1, stResult.nExit);
    EXPECT_EQ("  ISP channel 0: 34 (KEY_BRIGHTNESS) now fails set calls with -5\n",
              stResult.replyTo("fail brightness set -5"));
    EXPECT_NE(std::string::npos,
              stResult.replyTo("set brightness 61")
                  .find("error: the module refused 34 KEY_BRIGHTNESS = 61 (result -34); nothing "
                        "was stored"));
    EXPECT_NE(std::string::npos, stResult.replyTo("sim").find(
                                     "failing: ISP channel 0, 34 (KEY_BRIGHTNESS), option set "
                                     "-> -5"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 50\n", stResult.replyTo("get brightness"));
    EXPECT_NE(std::string::npos, stResult.replyTo("set brightness 61", 1).find("50 -> 61"));
    EXPECT_TRUE(std::regex_search(stResult.replyTo("log 2"),
                                  std::regex("ch0 set +34 \\(KEY_BRIGHTNESS\\) +61\n")));
    EXPECT_EQ(0u, stResult.replyTo("isp 34").find(
                      "  sensor (ISP channel 0): 34 (KEY_BRIGHTNESS) = 61\n"));
}

TEST_F(DeviceSessionTest, DebugLevelIsTheMarkerFileTheModuleReads) {
    const SessionResult stResult =
        run("debug 6\nset brightness 61\ndebug off\nset brightness 62\n");
    ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
    EXPECT_NE(std::string::npos,
              stResult.replyTo("debug 6").find("debug level 6 (from /tmp/Debug.sign)"));
    EXPECT_NE(std::string::npos, stResult.replyTo("set brightness 61")
                                     .find("====================== set KEY_BRIGHTNESS (34,61)"));
    EXPECT_EQ(std::string::npos, stResult.replyTo("set brightness 62").find("======"));
    EXPECT_FALSE(std::filesystem::exists(inRoot("/tmp/Debug.sign")));

    run("debug 4\n");
    EXPECT_EQ("4\n0\n", readFile(inRoot("/tmp/Debug.sign")));
}

TEST_F(DeviceSessionTest, TheTourRunsToItsEndWithoutATerminal) {
    const std::string strTour =
        std::string(SENSOR_SOURCE_DIR_FOR_TOOLS) + "/scripts/tour.sensorctl";
    for (int nRun = 0; nRun < 2; ++nRun) {
        const SessionResult stResult = run("", "ipc", {"--script", strTour});
        ASSERT_EQ(0, stResult.nExit) << stResult.strOutput;
        EXPECT_EQ("  34 KEY_BRIGHTNESS = 60\n", stResult.replyTo("get brightness"));
        EXPECT_NE(std::string::npos, stResult.replyTo("range max-shutter").find("allowed"));
        EXPECT_NE(std::string::npos, stResult.replyTo("waitscheme 1").find("scheme 1 is current"));
        EXPECT_EQ(0u, stResult.replyTo("get brightness", 1).find("  34 KEY_BRIGHTNESS = 50\n"));
        const std::string strFlash = stResult.replyTo("flash 0 scheme-mode brightness max-shutter");
        EXPECT_NE(std::string::npos, strFlash.find("  8000 KEY_SCHEME_MODE = 2\n")) << nRun;
        EXPECT_NE(std::string::npos, strFlash.find("  34 KEY_BRIGHTNESS = 60\n")) << nRun;
    }
}

TEST_F(DeviceSessionTest, CommandLineMistakesStopBeforeAnythingStarts) {
    const SessionResult stUnknown = runBare({"--colour"});
    EXPECT_EQ(2, stUnknown.nExit);
    EXPECT_TRUE(stUnknown.has("error: unknown option '--colour'"));
    EXPECT_TRUE(stUnknown.has("usage: sensorctl"));

    const SessionResult stDevice = run("", "no-such-device");
    EXPECT_EQ(2, stDevice.nExit);
    EXPECT_TRUE(stDevice.has("error: no such device:"));
    EXPECT_FALSE(std::filesystem::exists(root()));

    // --fresh replaces only a root that sensorctl made.
    const std::string strOwn = scratch() + "/mine";
    std::filesystem::create_directories(strOwn);
    std::ofstream(strOwn + "/keep.txt") << "mine";
    const SessionResult stRefused = runBare({"--root", strOwn, "--fresh", "-c", "status"});
    EXPECT_EQ(2, stRefused.nExit);
    EXPECT_TRUE(stRefused.has("refusing to replace " + strOwn));
    EXPECT_EQ("mine", readFile(strOwn + "/keep.txt"));

    run("set brightness 61\nflush\n");
    const SessionResult stFresh = run("", "ipc", {"--fresh", "-c", "get brightness"});
    ASSERT_EQ(0, stFresh.nExit) << stFresh.strOutput;
    EXPECT_TRUE(stFresh.has("(new copy)"));
    EXPECT_EQ("  34 KEY_BRIGHTNESS = 50\n", stFresh.replyTo("get brightness"));
}

} // namespace sensortest
