// Typed accessors with a rule of their own: infrared and white light never both
// on, the light-type range, the mirror setter's flush, and the direct reads
// that use the white-light ISP commands rather than the keys.
#include "DeviceControlFixture.h"

#include "common/SensorKeys.h"

namespace sensortest {

namespace {
constexpr uint32_t kIrSwitch = 160;
constexpr uint32_t kWhiteSwitchCmd = 168; // the ISP command of key 170
constexpr uint32_t kWhiteModeCmd = 169;   // the ISP command of key 171
constexpr uint32_t kLightType = 224;
constexpr uint32_t kMirror = 2384;
using Calls = std::vector<std::pair<uint32_t, int>>;
using Sets = std::vector<std::pair<uint32_t, int32_t>>;
} // namespace

using LightsTest = DeviceControlTest;

TEST_F(LightsTest, InfraredOnSwitchesWhiteLightOffFirst) {
    ISensorController& c = upMini();
    m_objIsp.setValue(0, kWhiteSwitchCmd, 1);
    EXPECT_TRUE(c.setIRSwitch(1));
    EXPECT_EQ((Calls{{kWhiteSwitchCmd, 1}, {kWhiteSwitchCmd, 0}, {kIrSwitch, 0}}), calls());
    EXPECT_EQ((Sets{{kWhiteSwitchCmd, 0}, {kIrSwitch, 1}}),
              setsAmong({kWhiteSwitchCmd, kIrSwitch}));

    // White light already off: only the infrared key is written.
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setIRSwitch(1));
    EXPECT_EQ((Sets{{kIrSwitch, 1}}), setsAmong({kWhiteSwitchCmd, kIrSwitch}));
}

TEST_F(LightsTest, WhiteLightOnSwitchesInfraredOffFirst) {
    ISensorController& c = upMini();
    m_objIsp.setValue(0, kIrSwitch, 1);
    EXPECT_TRUE(c.setWhiteSwitch(1));
    EXPECT_EQ((Calls{{kIrSwitch, 1}, {kIrSwitch, 0}, {kWhiteSwitchCmd, 0}}), calls());
    EXPECT_EQ((Sets{{kIrSwitch, 0}, {kWhiteSwitchCmd, 1}}),
              setsAmong({kWhiteSwitchCmd, kIrSwitch}));
    int nWhite = 0;
    EXPECT_TRUE(c.getWhiteSwitch(nWhite));
    EXPECT_EQ(1, nWhite);
}

TEST_F(LightsTest, OffAndOtherModesLeaveThePartnerAlone) {
    ISensorController& c = upMini();
    m_objIsp.setValue(0, kWhiteSwitchCmd, 1);
    EXPECT_TRUE(c.setIRSwitch(0));
    EXPECT_TRUE(c.setIRSwitch(2));
    EXPECT_EQ((Calls{{kIrSwitch, 0}, {kIrSwitch, 0}}), calls()) << "no read of the white light";
    EXPECT_EQ(1, *m_objIsp.getValue(0, kWhiteSwitchCmd));
}

TEST_F(LightsTest, FailedPartnerReadOrSwitchOffWritesNothingFurther) {
    ISensorController& c = upMini();
    m_objIsp.failCommand(0, kWhiteSwitchCmd, IA_CMD_OPT_GET, -3);
    EXPECT_FALSE(c.setIRSwitch(1));
    EXPECT_TRUE(setsAmong({kWhiteSwitchCmd, kIrSwitch}).empty());

    m_objIsp.clearFailures();
    m_objIsp.setValue(0, kWhiteSwitchCmd, 1);
    m_objIsp.failCommand(0, kWhiteSwitchCmd, IA_CMD_OPT_SET, -5);
    m_objIsp.clearLog();
    EXPECT_FALSE(c.setIRSwitch(1)) << "white light could not be switched off";
    EXPECT_TRUE(setsAmong({kIrSwitch}).empty());
}

TEST_F(LightsTest, LightTypeAboveThreeIsRefusedWithoutAnyCall) {
    ISensorController& c = upMini();
    EXPECT_FALSE(c.setLightType(4));
    EXPECT_FALSE(c.setLightType(-1));
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(c.setLightType(3));
    EXPECT_EQ(std::vector<int32_t>{3}, setsOf(kLightType));
    int nType = 0;
    EXPECT_TRUE(c.getLightType(nType));
    EXPECT_EQ(3, nType);
}

TEST_F(LightsTest, WhiteModeIsWrittenByKeyAndReadByCommand) {
    ISensorController& c = upMini();
    EXPECT_TRUE(c.setWhiteMode(2));
    EXPECT_EQ(std::vector<int32_t>{2}, setsOf(kWhiteModeCmd));
    m_objIsp.setValue(0, kWhiteModeCmd, 5);
    int nMode = 0;
    EXPECT_TRUE(c.getWhiteMode(nMode));
    EXPECT_EQ(5, nMode);
}

TEST_F(LightsTest, MirrorIsFlushedOnlyWhenTheWriteSucceeds) {
    ISensorController& c = upMini();
    const std::string strFile = schemeFile(1, 0);
    // An unsaved change that a flush would carry to the file.
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 77, true));

    m_objIsp.failCommand(0, kMirror, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.setMirrorMode(1));
    EXPECT_EQ(50u, valueOf(readSet(strFile), KEY_BRIGHTNESS)) << "a failed mirror does not flush";

    m_objIsp.clearFailures();
    EXPECT_TRUE(c.setMirrorMode(1));
    EXPECT_EQ(77u, valueOf(readSet(strFile), KEY_BRIGHTNESS));
    int nMirror = 0;
    EXPECT_TRUE(c.getMirrorValue(nMirror));
    EXPECT_EQ(1, nMirror);
}

TEST_F(LightsTest, StoredAccessorsWriteTheCurrentScheme) {
    ISensorController& c = upMini();
    int nValue = 1;
    EXPECT_TRUE(c.setDNMode(1));
    int nRead = -1;
    EXPECT_TRUE(c.getDNMode(nRead));
    EXPECT_EQ(1, nRead);
    EXPECT_EQ(1u, valueOf(ISensorControllerTestAccess::row(c, 0), KEY_DN_MODE));
    EXPECT_EQ(std::vector<int32_t>{1}, setsOf(KEY_DN_MODE));

    // A key the mini set lacks is read from the ISP; a refused read is false.
    m_objIsp.setValue(0, KEY_WDR_STRG, 33);
    EXPECT_TRUE(c.getWDRStrength(nValue));
    EXPECT_EQ(33, nValue);
    m_objIsp.failCommand(0, KEY_WDR_STRG, IA_CMD_OPT_GET, -5);
    EXPECT_FALSE(c.getWDRStrength(nValue));
}

} // namespace sensortest
