// sensorctl on each sample device and its simulator, clock and debug controls.
#include "SensorctlSession.h"

#include <sys/stat.h>

#include <filesystem>

namespace sensortest {

using DeviceSessionTest = SensorctlTest;

TEST_F(DeviceSessionTest, DomeThermalAndLprDevicesAsAUserSeesThem) {
    const std::string strFlash = "flash 1 dn-mode max-shutter min-shutter";
    const std::tuple<const char*, std::string, int, std::vector<Reply>> aDevices[] = {
        {"dome",
         "zoom 26000\nzoom\nlock on\nzoom 30000\nzoomin\nfocus 700\nlock off\nisp 1568\n"
         "iris 100\niris 30000\nversion\n",
         0,
         {{"", Shows::Has, "machine: type 4"},
          {"zoom", Shows::Is, "  zoom position 26000, ratio 2.530x\n"},
          {"lock on", Shows::Is, "  zoom/focus lock on: lens commands are answered but not sent\n"},
          // Under the lock the position command was answered but not sent.
          {"isp 1568", Shows::Is, "  sensor (ISP channel 0): 1568 (KEY_MZ_POSITION) = 26000\n"},
          {"iris 100", Shows::Is, "  iris position 256\n"},
          {"iris 30000", Shows::Is, "  iris position 1048576\n"},
          {"version", Shows::Starts, "  lens module version '"}}},
        {"thermal",
         "status\nsyncfov\nzoom\nchannel 2\nchannel\nflash\nshutter\nchannel 3\n",
         1,
         {{"", Shows::Has, "channel 1: up, scheme 0"},
          {"", Shows::Has, "channel 2: up, scheme 0, mode auto, policy none, thermal"},
          {"status", Shows::Has, "channel 1*  : camera id 1"},
          {"status", Shows::Has, "channel 2   : camera id 2"},
          {"syncfov", Shows::Has, "zoom= 12000,focus= 3400 \n"},
          // Channel 1's thread aligned the zoom when channel 2 asked at start-up.
          {"zoom", Shows::Has, "  zoom position 12000, ratio 1.000x\n"},
          {"channel", Shows::Has, "channel 2 of 2: camera id 2, thermal"},
          {"flash", Shows::Has, "/mnt/mtd/code/config_file/sensor-thermal0.cfg"},
          {"channel 3", Shows::Has, "error: no channel 3: this device has channels 1 and 2"},
          {"shutter", Shows::Has,
           "error: the ISP offers no list of maximum-shutter values on this channel\n"}}},
        // The night scheme of the lpr camera holds the lpr values.
        {"lpr",
         strFlash + "\n",
         0,
         {{"", Shows::Has, "machine: type 8"},
          {strFlash, Shows::Has, "  144 KEY_DN_MODE = 0\n"},
          {strFlash, Shows::Has, "  49 KEY_MAX_SHUTTER = 18\n"},
          {strFlash, Shows::Has, "  51 KEY_MIN_SHUTTER = 20\n"}}}};
    for (const auto& [szDevice, strScript, nExit, vecReplies] : aDevices) {
        SCOPED_TRACE(szDevice);
        run(strScript, szDevice, {"--fresh"}).expect(nExit, vecReplies);
    }
}

TEST_F(DeviceSessionTest, ShutterLightsClockWindowsAndFailingIspCommands) {
    const std::string strList = " of [0:1 1:2 2:3 3:4 4:5 5:6 6:7 7:8 8:9 9:10])\n";
    const std::string strRefused = "the window does not start before it ends (507)";
    run("shutter\nshutterup\nshutterdown\nshutter 0\nshutter 10\nget max-shutter\nwhite 0\nir 1\n"
        "white 1\nir\ntime 07:30\njudge\ntime 19:00\njudge\nwindow\nset 8001 20\nwindow\nflush\n"
        "time real\nfail brightness set -5\nset brightness 61\nsim\nget brightness\nfail clear\n"
        "set brightness 61\nlog 2\nisp 34\n")
        .expect(
            1,
            {{"shutter", Shows::Has, "maximum shutter 6 (index 5" + strList},
             {"shutterup", Shows::Has, "now maximum shutter 7 (index 6" + strList},
             {"shutterdown", Shows::Has, "now maximum shutter 6 (index 5" + strList},
             {"shutter 0", Shows::Has, "now maximum shutter 1 (index 0" + strList},
             {"shutter 10", Shows::Has, "error: index 10 is outside the ISP's list"},
             {"get max-shutter", Shows::Is, "  49 KEY_MAX_SHUTTER = 1\n"},
             // White light on switches infrared off first.
             {"ir 1", Shows::Has, "ir (160 KEY_IR_SWITCH): "},
             {"white 1", Shows::Has, "white (170 KEY_WHITE_SWITCH): 0 -> 1"},
             {"ir", Shows::Starts, "  ir (160 KEY_IR_SWITCH) = 0\n"},
             // The clock runs on from the time set: the seconds may have moved.
             {"time 07:30", Shows::Starts, "  time of day 07:30:0"},
             {"time 07:30", Shows::Has, " (set)\n"},
             {"judge", Shows::Is, "  at 07:30 scheme 0's window holds the time\n"},
             {"judge", Shows::Is,
              "  at 19:00 no scheme's window holds the time: scheme 0 by default\n", 1},
             {"window", Shows::Is, "  scheme 0: window 06:00 to 18:00, valid\n"},
             {"window", Shows::Is,
              "  scheme 0: window 20:00 to 18:00, " + strRefused + ": flush refuses to store it\n",
              1},
             {"flush", Shows::Is,
              "error: flush refused: " + strRefused + "; nothing was written\n"},
             {"time real", Shows::Has, "(the machine's clock)"},
             {"fail brightness set -5", Shows::Is,
              "  ISP channel 0: 34 (KEY_BRIGHTNESS) now fails set calls with -5\n"},
             {"set brightness 61", Shows::Has,
              "error: the module refused 34 KEY_BRIGHTNESS = 61 (result -34); nothing was stored"},
             {"sim", Shows::Has, "failing: ISP channel 0, 34 (KEY_BRIGHTNESS), option set -> -5"},
             {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 50\n"},
             {"set brightness 61", Shows::Has, "50 -> 61", 1},
             {"log 2", Shows::Matches, "ch0 set +34 \\(KEY_BRIGHTNESS\\) +61\n"},
             {"isp 34", Shows::Starts, "  sensor (ISP channel 0): 34 (KEY_BRIGHTNESS) = 61\n"}});
}

// The debug level is the marker file the module reads; schemes follow night and day once the
// policy says so, and not in manual mode.
TEST_F(DeviceSessionTest, DebugMarkerAndSchemesFollowingNightAndDay) {
    run("debug 6\nset brightness 61\ndebug off\nset brightness 62\nlight 20\nset scheme-mode 2\n"
        "night\nwaitscheme 1\nget brightness\nday\nwaitscheme 0\nget 34\nmode manual\nlight 10\n"
        "sleep 1.5\nscheme\n")
        .expect(
            0,
            {{"debug 6", Shows::Has, "debug level 6 (from /tmp/Debug.sign)"},
             {"set brightness 61", Shows::Has, "====================== set KEY_BRIGHTNESS (34,61)"},
             {"set brightness 62", Shows::Lacks, "======"},
             {"light 20", Shows::Is,
              "  light level 20: the ISP reports night (state 1)\n  schemes do not follow "
              "(policy and mode: scheme 0, mode auto, policy none); set 8000 to 2 in scheme 0 "
              "for day/night\n"},
             {"night", Shows::Has, "the sensor thread moves to scheme 1 within a second"},
             {"waitscheme 1", Shows::Has, "scheme 1 is current"},
             // Scheme 1 keeps the factory brightness.
             {"get brightness", Shows::Starts, "  34 KEY_BRIGHTNESS = 50\n"},
             {"waitscheme 0", Shows::Has, "scheme 0 is current"},
             {"get 34", Shows::Starts, "  34 KEY_BRIGHTNESS = 62\n"},
             {"scheme", Shows::Has, "scheme 0, mode manual"}});
    EXPECT_FALSE(m_objScratch.exists("/root/tmp/Debug.sign"));
    // A FIFO standing as the marker is replaced, not written into (that would block).
    ASSERT_EQ(0, ::mkfifo(m_objScratch.hostPath("/root/tmp/Debug.sign").c_str(), 0600));
    run("debug 4\n").expect(0, {{"debug 4", Shows::Has, "debug level 4 (from /tmp/Debug.sign)"}});
    ASSERT_TRUE(std::filesystem::is_regular_file(m_objScratch.hostPath("/root/tmp/Debug.sign")));
    EXPECT_EQ("4\n0\n", m_objScratch.readFile("/root/tmp/Debug.sign"));
}

TEST_F(DeviceSessionTest, TheTourRunsToItsEndWithoutATerminal) {
    const std::string strTour =
        std::string(SENSOR_SOURCE_DIR_FOR_TOOLS) + "/scripts/tour.sensorctl";
    const std::string strFlash = "flash 0 scheme-mode brightness max-shutter";
    for (int nRun = 0; nRun < 2; ++nRun) {
        SCOPED_TRACE(nRun);
        run("", "ipc", {"--script", strTour})
            .expect(0, {{"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 60\n"},
                        {"range max-shutter", Shows::Has, "allowed"},
                        {"waitscheme 1", Shows::Has, "scheme 1 is current"},
                        {"get brightness", Shows::Starts, "  34 KEY_BRIGHTNESS = 50\n", 1},
                        {strFlash, Shows::Has, "  8000 KEY_SCHEME_MODE = 2\n"},
                        {strFlash, Shows::Has, "  34 KEY_BRIGHTNESS = 60\n"}});
    }
}

TEST_F(DeviceSessionTest, CommandLineMistakesStopBeforeAnythingStarts) {
    runBare({"--colour"})
        .expect(2, {{"", Shows::Has, "error: unknown option '--colour'"},
                    {"", Shows::Has, "usage: sensorctl"}});
    run("", "no-such-device").expect(2, {{"", Shows::Has, "error: no such device:"}});
    EXPECT_FALSE(std::filesystem::exists(root()));

    // --fresh replaces only a root that sensorctl made.
    m_objScratch.writeFile("/mine/keep.txt", "mine");
    const std::string strOwn = m_objScratch.hostPath("/mine");
    runBare({"--root", strOwn, "--fresh", "-c", "status"})
        .expect(2, {{"", Shows::Has, "refusing to replace " + strOwn}});
    EXPECT_EQ("mine", m_objScratch.readFile("/mine/keep.txt"));

    // The root holds the ipc camera: another device needs --fresh or another root.
    run("set brightness 61\nflush\n");
    run("status\n", "thermal")
        .expect(2, {{"", Shows::Has,
                     "holds a copy of " + std::string(SENSOR_SOURCE_DIR_FOR_TOOLS) +
                         "/devices/ipc, not of"}});
    run("", "ipc", {"--fresh", "-c", "get brightness"})
        .expect(0, {{"", Shows::Has, "(new copy)"},
                    {"get brightness", Shows::Is, "  34 KEY_BRIGHTNESS = 50\n"}});
}

} // namespace sensortest
