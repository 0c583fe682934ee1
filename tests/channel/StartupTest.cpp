// Bringing a channel up and down on a device root: files, stamp, flags, the
// first scheme switch and the thread.
#include "ChannelFixture.h"
#include "support/ControllerTestAccess.h"

#include "common/SensorKeys.h"

namespace sensortest {

using Access = ISensorControllerTestAccess;

namespace {
const std::string kStamp = "/mnt/mtd/code/config_file/snsversion.cfg";
} // namespace

class StartupTest : public ChannelTest {};

TEST_F(StartupTest, FreshFlashCreatesFourSchemeFilesAndTheStamp) {
    useMiniDevice(1, "(max_scheme=4)(lensId=0)");
    setDebugLevel("4\n0\n");
    // Leftovers of an older module: this camera's schemes 0..3 are removed, a
    // fifth scheme and the other camera's files are not touched.
    m_objRoot.writeFile(schemeFile(1, 0), "stale");
    m_objRoot.writeFile(schemeFile(1, 4), "keep-1-4");
    m_objRoot.writeFile(schemeFile(2, 0), "keep-2-0");

    ISensorController& c = bringUp(1);

    EXPECT_NE(std::string::npos,
              errorLog().find("check the sensor version,   local(0) --> libsensordll.so(8)"));
    EXPECT_EQ("keep-1-4", m_objRoot.readFile(schemeFile(1, 4)));
    EXPECT_EQ("keep-2-0", m_objRoot.readFile(schemeFile(2, 0)));
    EXPECT_EQ(std::string("\x08\x00\x00\x00", 4), m_objRoot.readFile(kStamp));

    const u32 nSum = Access::keyValSum(c);
    EXPECT_EQ(13u, nSum);
    for (int s = 0; s < 4; ++s) {
        const std::vector<KeyVal> vecSet = readSet(schemeFile(1, s));
        ASSERT_EQ(nSum, vecSet.size()) << "scheme " << s;
        EXPECT_EQ(KEY_SCHEME_MODE, vecSet[0].key);
        EXPECT_EQ(24u, vecSet[3].value) << "the factory window is the whole day";
        EXPECT_EQ(0u, vecSet[0].value);
        EXPECT_EQ(50u, valueOf(vecSet, KEY_BRIGHTNESS));
    }
    EXPECT_FALSE(Access::schemeByDN(c));
    EXPECT_FALSE(Access::schemeByTime(c));
    EXPECT_EQ(0, Access::curScheme(c));
    // Scheme 0 applied in full: every applied key reached the ISP once at least.
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    EXPECT_TRUE(setsOf(8001).empty()) << "scheme window keys are stored only";
    EXPECT_GE(m_pClock->waitCount(), 1) << "init runs one pass, which waits first";
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(7, c.getSensorType());
}

TEST_F(StartupTest, PresentStampAndFilesAreLoadedUnchanged) {
    useMiniDevice(1, "(max_scheme=2)");
    bringUp(1);
    takeDown();
    std::vector<KeyVal> vecSet = readSet(schemeFile(1, 0));
    for (KeyVal& st : vecSet) {
        if (st.key == KEY_BRIGHTNESS) {
            st.value = 77;
        }
    }
    writeSet(schemeFile(1, 0), vecSet);
    m_objRoot.writeFile(schemeFile(1, 3), "not a scheme of this channel");
    m_objIsp.clearLog();

    ISensorController& c = bringUp(1);
    int nValue = 0;
    ASSERT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    EXPECT_EQ(77, nValue);
    EXPECT_EQ(std::vector<int32_t>{77}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ("not a scheme of this channel", m_objRoot.readFile(schemeFile(1, 3)))
        << "with the stamp in place nothing is removed";
}

TEST_F(StartupTest, LprDeviceCreatesItsNightSchemeWithTheLprValues) {
    useMiniDevice(8, "(max_scheme=4)");
    ISensorController& c = bringUp(1);
    EXPECT_TRUE(Access::lprMode(c));
    const std::vector<KeyVal> vecNight = readSet(schemeFile(1, 1));
    EXPECT_EQ(0u, valueOf(vecNight, KEY_DN_MODE));
    EXPECT_EQ(18u, valueOf(vecNight, KEY_MAX_SHUTTER));
    EXPECT_EQ(20u, valueOf(vecNight, KEY_MIN_SHUTTER));
    EXPECT_EQ(1u, valueOf(vecNight, KEY_METER_AREA));
    EXPECT_EQ(2u, valueOf(vecNight, KEY_IR_MODE));
    EXPECT_EQ(40u, valueOf(vecNight, KEY_IR_MANUAL_STRG_NEAR));
    const std::vector<KeyVal> vecDay = readSet(schemeFile(1, 0));
    EXPECT_EQ(100u, valueOf(vecDay, KEY_MAX_SHUTTER)) << "other schemes get the factory set";
}

TEST_F(StartupTest, InfraredTagDecidesLprModeAndPowerLimit) {
    useMiniDevice(8, "(max_scheme=4)(isInfrared=1)");
    EXPECT_FALSE(Access::lprMode(bringUp(1)));
    takeDown();
    useMiniDevice(1, "(isInfrared=17)");
    ::testing::internal::CaptureStdout();
    ISensorController& c = bringUp(1);
    EXPECT_NE(std::string::npos,
              ::testing::internal::GetCapturedStdout().find("#### m_bisLimitedIrPower is true!\n"));
    EXPECT_TRUE(Access::limitedIrPower(c));
    EXPECT_FALSE(Access::lprMode(c));
}

TEST_F(StartupTest, LensIsDetectedFromTheLensIdField) {
    const struct {
        const char* szDetail;
        bool bLens;
    } aCases[] = {{"(lensId=0)", false},
                  {"(lensId=3)", true},
                  {"(max_scheme=4)", false},
                  {"(lensId 3)", false}};
    for (const auto& stCase : aCases) {
        useMiniDevice(4, stCase.szDetail);
        EXPECT_EQ(stCase.bLens, Access::hasLens(bringUp(1))) << stCase.szDetail;
        takeDown();
    }
}

TEST_F(StartupTest, ThermalChannelUsesThermalFilesAndRemovesOnlyThem) {
    useMiniDevice(14, "(max_scheme=2)");
    m_objRoot.writeFile("/mnt/mtd/code/config_file/sensor-thermal7.cfg", "old");
    m_objRoot.writeFile(schemeFile(1, 0), "visible");
    ISensorController& c = bringUp(2);
    EXPECT_TRUE(c.isThermalChannel());
    EXPECT_FALSE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal7.cfg"));
    EXPECT_EQ("visible", m_objRoot.readFile(schemeFile(1, 0)));
    EXPECT_EQ(Access::keyValSum(c) * 8,
              m_objRoot.readFile("/mnt/mtd/code/config_file/sensor-thermal0.cfg").size());
    EXPECT_TRUE(m_objRoot.exists("/mnt/mtd/code/config_file/sensor-thermal1.cfg"));
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
    int nValue = 0;
    EXPECT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    EXPECT_EQ(50, nValue);
}

TEST_F(StartupTest, SampleIpcDeviceComesUp) {
    useSampleDevice("ipc");
    ISensorController& c = bringUp(1);
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_GT(Access::keyValSum(c), 5u);
    const std::vector<KeyVal> vecRow = Access::row(c, 0);
    for (u32 i = 0; i < 5; ++i) {
        EXPECT_EQ(KEY_SCHEME_MODE + i, vecRow[i].key) << "the scheme keys come first";
    }
    EXPECT_FALSE(c.getUIStyleFile().empty());
}

} // namespace sensortest
