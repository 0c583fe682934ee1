// Channel start-up and release: files, stamp, flags, the first scheme and the thread.
#include "ChannelFixture.h"

namespace sensortest {

namespace {
const std::string kConfigDir = "/mnt/mtd/code/config_file/";
} // namespace

using StartupTest = ChannelTest;

TEST_F(StartupTest, FreshFlashCreatesFourSchemeFilesAndTheStamp) {
    useMiniDevice(1, "(max_scheme=4)(lensId=0)");
    m_objRoot.writeFile("/tmp/Debug.sign", "4\n0\n");
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
    EXPECT_FALSE(Access::schemeByDN(c));
    EXPECT_FALSE(Access::schemeByTime(c));
    EXPECT_EQ(0, Access::curScheme(c));
    // Scheme 0 applied in full; the window keys are stored only.
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    EXPECT_TRUE(setsOf(8001).empty());
    EXPECT_GE(m_pClock->waitCount(), 1) << "init runs one pass, which waits first";
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(7, c.getSensorType());
    EXPECT_THAT(c.getUIStyleFile(), HasSubstr("<Tab key=\"image\">"));
}

TEST_F(StartupTest, PresentStampAndFilesAreLoadedUnchanged) {
    useMiniDevice(1, "(max_scheme=2)");
    bringUp(1);
    takeDown();
    std::vector<KeyVal> vecSet = readSet(schemeFile(1, 0));
    ASSERT_EQ(KEY_BRIGHTNESS, vecSet[5].key);
    vecSet[5].value = 77;
    writeSet(schemeFile(1, 0), vecSet);
    m_objRoot.writeFile(schemeFile(1, 3), "not a scheme of this channel");
    m_objIsp.clearLog();

    bringUp(1);
    EXPECT_EQ(77, param(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{77}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ("not a scheme of this channel", m_objRoot.readFile(schemeFile(1, 3)))
        << "with the stamp in place nothing is removed";
}

TEST_F(StartupTest, LprDeviceCreatesItsNightSchemeWithTheLprValues) {
    useMiniDevice(8, "(max_scheme=4)");
    bringUp(1);
    const std::vector<KeyVal> vecNight = readSet(schemeFile(1, 1));
    for (const KeyVal& st :
         {KeyVal{KEY_DN_MODE, 0}, KeyVal{KEY_MAX_SHUTTER, 18}, KeyVal{KEY_MIN_SHUTTER, 20},
          KeyVal{KEY_METER_AREA, 1}, KeyVal{KEY_IR_MODE, 2}, KeyVal{KEY_IR_MANUAL_STRG_NEAR, 40}}) {
        EXPECT_EQ(st.value, valueOf(vecNight, st.key)) << "key " << st.key;
    }
    EXPECT_EQ(100u, valueOf(readSet(schemeFile(1, 0)), KEY_MAX_SHUTTER))
        << "other schemes get the factory set";
}

TEST_F(StartupTest, DeviceTypeAndDetailFieldsDecideTheChannelFlags) {
    const struct {
        int nType;
        const char* szDetail;
        bool bLpr, bLimitedIr, bLens;
    } aCases[] = {{8, "(max_scheme=4)", true, false, false},
                  {8, "(max_scheme=4)(isInfrared=1)", false, false, false},
                  {8, "(isInfrared=0)", false, false, false},
                  {1, "(isInfrared=17)", false, true, false},
                  {4, "(lensId=0)", false, false, false},
                  {4, "(lensId=3)", false, false, true},
                  {4, "(lensId 3)", false, false, false}};
    for (const auto& stCase : aCases) {
        SCOPED_TRACE(std::to_string(stCase.nType) + " " + stCase.szDetail);
        ::testing::internal::CaptureStdout();
        ISensorController& c = upMini(stCase.nType, stCase.szDetail);
        const bool bPrinted = ::testing::internal::GetCapturedStdout().find(
                                  "#### m_bisLimitedIrPower is true!\n") != std::string::npos;
        EXPECT_EQ(stCase.bLpr, Access::lprMode(c));
        EXPECT_EQ(stCase.bLimitedIr, Access::limitedIrPower(c));
        EXPECT_EQ(stCase.bLimitedIr, bPrinted);
        EXPECT_EQ(stCase.bLens, Access::hasLens(c));
    }
}

TEST_F(StartupTest, ThermalChannelUsesThermalFilesAndRemovesOnlyThem) {
    useMiniDevice(14, "(max_scheme=2)");
    m_objRoot.writeFile(kConfigDir + "sensor-thermal7.cfg", "old");
    m_objRoot.writeFile(schemeFile(1, 0), "visible");
    ISensorController& c = bringUp(2);
    EXPECT_TRUE(c.isThermalChannel());
    EXPECT_FALSE(m_objRoot.exists(kConfigDir + "sensor-thermal7.cfg"));
    EXPECT_EQ("visible", m_objRoot.readFile(schemeFile(1, 0)));
    EXPECT_EQ(13u * 8, m_objRoot.readFile(kConfigDir + "sensor-thermal0.cfg").size());
    EXPECT_TRUE(m_objRoot.exists(kConfigDir + "sensor-thermal1.cfg"));
    EXPECT_FALSE(m_objRoot.exists(schemeFile(2, 0)));
}

TEST_F(StartupTest, UinitReleasesOnceAndInitCanFollowWith165Rows) {
    useMiniDevice(1, "(max_scheme=2)");
    ISensorController& c = bringUp(1);
    EXPECT_EQ(165u, Access::keyCmdSum(c));
    c.uinit();
    EXPECT_EQ(1, c.getSensorStatus()) << "the ready bit stays set after uinit";
    EXPECT_EQ(-1, Access::curScheme(c));
    c.uinit(); // a second release frees nothing twice

    ModuleConfigure objModule;
    objModule.setModuleId(7);
    objModule.setDetail("(max_scheme=2)");
    c.init(objModule);
    EXPECT_EQ(165u, Access::keyCmdSum(c));
    EXPECT_EQ(13u, Access::keyValSum(c));
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));
}

} // namespace sensortest
