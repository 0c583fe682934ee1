// Channel start-up: files, stamp, flags by device type and detail, the first scheme, UI files.
#include "ChannelFixture.h"

#include <cstring>
#include <filesystem>
#include <sstream>
#include <tuple>

#include "config/sensor.h"

namespace sensortest {
namespace {
const std::string kConfigDir = "/mnt/mtd/code/config_file/";
} // namespace

using StartupTest = ChannelTest;

TEST_F(StartupTest, FreshFlashCreatesFourSchemeFilesAndTheStampAllUnderTheRoot) {
    namespace fs = std::filesystem;
    const auto hostPaths = [] { // which of these exist on the machine running the test
        std::string strExist;
        for (const char* sz : {"/mnt/mtd", "/hd1", "/tmp/merge_style_ch1.xml", "/tmp/Debug.sign"}) {
            strExist += fs::exists(sz) ? '1' : '0';
        }
        return strExist;
    };
    const std::string strBefore = hostPaths();
    useMiniDevice(1, "(max_scheme=4)(lensId=0)");
    m_objRoot.writeFile("/tmp/Debug.sign", "4\n0\n"); // warnings reach the error log
    // Of an older module's files only this camera's schemes 0..3 are removed.
    m_objRoot.writeFile(schemeFile(1, 0), "stale");
    m_objRoot.writeFile(schemeFile(1, 4), "keep-1-4");
    m_objRoot.writeFile(schemeFile(2, 0), "keep-2-0");
    ISensorController& c = bringUp(1);
    EXPECT_THAT(m_objRoot.readFile("/mnt/mtd/log/SensorError.log"),
                HasSubstr("check the sensor version,   local(0) --> libsensordll.so(8)"));
    EXPECT_EQ("keep-1-4", m_objRoot.readFile(schemeFile(1, 4)));
    EXPECT_EQ("keep-2-0", m_objRoot.readFile(schemeFile(2, 0)));
    EXPECT_EQ(std::string("\x08\x00\x00\x00", 4),
              m_objRoot.readFile(kConfigDir + "snsversion.cfg"));
    for (int s = 0; s < 4; ++s) {
        const std::vector<KeyVal> vecSet = readSet(schemeFile(1, s));
        ASSERT_EQ(13u, vecSet.size()) << "scheme " << s;
        EXPECT_EQ(0u, valueOf(vecSet, KEY_SCHEME_MODE));
        EXPECT_EQ(50u, valueOf(vecSet, KEY_BRIGHTNESS));
    }
    EXPECT_EQ(std::make_tuple(1, 7, 0, false, false),
              std::make_tuple(c.getSensorStatus(), c.getSensorType(), Access::curScheme(c),
                              Access::schemeByDN(c), Access::schemeByTime(c)))
        << "ready, the module's type, scheme 0, no scheme policy";
    // Scheme 0 applied in full; the window keys are stored only.
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    EXPECT_TRUE(setsOf(8001).empty());
    EXPECT_GE(m_pClock->waitCount(), 1) << "init runs one pass, which waits first";
    // The rest of a life writes nothing outside the root either.
    c.setParameters(std::string("(34,61)(2337,62)"), true);
    c.flush();
    c.setParamScheme(1);
    c.resetParameters();
    takeDown();
    EXPECT_EQ(strBefore, hostPaths())
        << "/mnt/mtd, /hd1, /tmp/merge_style_ch1.xml, /tmp/Debug.sign";
}

// The LPR device, first on a fresh flash, creates its night scheme 1 with the
// LPR values, the other schemes with the factory set.
TEST_F(StartupTest, DeviceTypeChannelAndDetailFieldsDecideTheChannelFlags) {
    // Type, asked channel, camera and flags (T thermal, L LPR, I limited IR power,
    // N a lens), detail.
    std::istringstream inCases(
        "8 1 1L (max_scheme=4);13 1 2T;13 2 2T;14 1 1;14 2 2T;19 1 1;19 2 2T;23 1 1;23 2 2T;"
        "17 2 2T;1 2 2I (isInfrared=17);8 1 1 (max_scheme=4)(isInfrared=1);8 1 1 (isInfrared=0);"
        "4 2 2 (lensId=0);4 1 1N (lensId=3);4 1 1 (lensId 3)");
    for (std::string strCase; std::getline(inCases, strCase, ';');) {
        SCOPED_TRACE(strCase);
        std::istringstream in(strCase);
        int nType = 0, nAsked = 0;
        std::string strExpected, strDetail;
        in >> nType >> nAsked >> strExpected >> std::ws;
        std::getline(in, strDetail);
        ::testing::internal::CaptureStdout();
        ISensorController& c = upMini(nType, strDetail, nAsked);
        const bool bPrinted = ::testing::internal::GetCapturedStdout().find(
                                  "#### m_bisLimitedIrPower is true!\n") != std::string::npos;
        EXPECT_EQ(strExpected, std::to_string(c.getCameraID()) + (c.isThermalChannel() ? "T" : "") +
                                   (Access::lprMode(c) ? "L" : "") +
                                   (Access::limitedIrPower(c) ? "I" : "") +
                                   (Access::hasLens(c) ? "N" : ""));
        EXPECT_EQ(Access::limitedIrPower(c), bPrinted);
        if (Access::lprMode(c)) {
            std::vector<u32> vecNight;
            for (const u32 nKey : {KEY_DN_MODE, KEY_MAX_SHUTTER, KEY_MIN_SHUTTER, KEY_METER_AREA,
                                   KEY_IR_MODE, KEY_IR_MANUAL_STRG_NEAR}) {
                vecNight.push_back(valueOf(readSet(schemeFile(1, 1)), nKey));
            }
            EXPECT_EQ((std::vector<u32>{0, 18, 20, 1, 2, 40}), vecNight);
            EXPECT_EQ(100u, valueOf(readSet(schemeFile(1, 0)), KEY_MAX_SHUTTER));
        }
    }
    // Before init nothing is ready, and the thermal flag is never cleared by a later call.
    takeDown();
    useMiniDevice(14, "");
    ISensorController objCtl;
    EXPECT_EQ(0, objCtl.getSensorStatus());
    objCtl.setChannelID(2);
    objCtl.setChannelID(1);
    EXPECT_EQ(1, objCtl.getCameraID());
    EXPECT_TRUE(objCtl.isThermalChannel());
}

TEST_F(StartupTest, ThermalChannelUsesThermalFilesAndRemovesOnlyThem) {
    useMiniDevice(14, "(max_scheme=2)");
    m_objRoot.writeFile(kConfigDir + "sensor-thermal7.cfg", "old");
    m_objRoot.writeFile(schemeFile(1, 0), "visible");
    ISensorController& c = bringUp(2);
    EXPECT_FALSE(m_objRoot.exists(kConfigDir + "sensor-thermal7.cfg"));
    EXPECT_EQ("visible", m_objRoot.readFile(schemeFile(1, 0)));
    EXPECT_EQ(13u * 8, m_objRoot.readFile(kConfigDir + "sensor-thermal0.cfg").size());
    EXPECT_TRUE(m_objRoot.exists(kConfigDir + "sensor-thermal1.cfg"));
    EXPECT_FALSE(m_objRoot.exists(schemeFile(2, 0)));
    // A factory reset removes every thermal file and writes the sets again.
    m_objRoot.writeFile(kConfigDir + "sensor-thermal3.cfg", "stale");
    EXPECT_TRUE(c.resetParameters());
    EXPECT_FALSE(m_objRoot.exists(kConfigDir + "sensor-thermal3.cfg"));
    EXPECT_EQ(13u * 8, m_objRoot.readFile(kConfigDir + "sensor-thermal0.cfg").size());
}

TEST_F(StartupTest, UiFilesFallBackToTheFirstEntry) {
    ISensorController objCtl;
    EXPECT_EQ("", objCtl.getUICommonFile(1)) << "an empty list";
    SysConfig& stConf = Access::sysConf(objCtl);
    stConf.pUIFile = newUIFileList(2);
    stConf.nUIFileSum = 2;
    for (const int nId : {1, 7}) {
        UIFileInfo& stFile = stConf.pUIFile[nId == 1 ? 0 : 1];
        stFile.nId = nId;
        stFile.szCommon = newConfigText(32);
        stFile.szLanguage = newConfigText(32);
        std::strcpy(stFile.szCommon, ("common" + std::to_string(nId) + ".xml").c_str());
        std::strcpy(stFile.szLanguage, ("lang" + std::to_string(nId) + ".xml").c_str());
    }
    EXPECT_EQ("common7.xml", objCtl.getUICommonFile(7));
    EXPECT_EQ("lang7.xml", objCtl.getUILanguageFile(7));
    EXPECT_EQ("common1.xml", objCtl.getUICommonFile(99));
    EXPECT_EQ("lang1.xml", objCtl.getUILanguageFile(99));
    uinitSysConf(&stConf);
}

} // namespace sensortest
