// Typed accessors with rules of their own: lights, light type, mirror, stored keys.
#include "DeviceControlFixture.h"

namespace sensortest {

namespace {
constexpr uint32_t kIr = 160;
constexpr uint32_t kWhite = 168;     // the ISP command of key 170
constexpr uint32_t kWhiteMode = 169; // the ISP command of key 171
} // namespace

using LightsTest = DeviceControlTest;

TEST_F(LightsTest, SwitchingOneLightOnSwitchesTheOtherOffFirst) {
    using Setter = bool (ISensorController::*)(int);
    const struct {
        Setter pSet;
        uint32_t nOwn, nPartner;
    } aCases[] = {{&ISensorController::setIRSwitch, kIr, kWhite},
                  {&ISensorController::setWhiteSwitch, kWhite, kIr}};
    ISensorController& c = upDome();
    for (const auto& st : aCases) {
        SCOPED_TRACE(st.nOwn);
        m_objIsp.setValue(0, st.nOwn, 0);
        m_objIsp.setValue(0, st.nPartner, 1);
        m_objIsp.clearLog();
        EXPECT_TRUE((c.*st.pSet)(1));
        EXPECT_EQ((Calls{{st.nPartner, 1}, {st.nPartner, 0}, {st.nOwn, 0}}), calls());
        EXPECT_EQ((Sets{{st.nPartner, 0}, {st.nOwn, 1}}), setsAmong({kWhite, kIr}));
        // The partner already off: only this light is written.
        m_objIsp.clearLog();
        EXPECT_TRUE((c.*st.pSet)(1));
        EXPECT_EQ((Sets{{st.nOwn, 1}}), setsAmong({kWhite, kIr}));
    }
    EXPECT_EQ(1, read(&ISensorController::getWhiteSwitch));

    // Off and other modes leave the partner alone, without reading it.
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setIRSwitch(0));
    EXPECT_TRUE(c.setIRSwitch(2));
    EXPECT_EQ((Calls{{kIr, 0}, {kIr, 0}}), calls());
    EXPECT_EQ(1, *m_objIsp.getValue(0, kWhite));
}

TEST_F(LightsTest, FailedPartnerReadOrSwitchOffWritesNothingFurther) {
    ISensorController& c = upDome();
    m_objIsp.failCommand(0, kWhite, IA_CMD_OPT_GET, -3);
    EXPECT_FALSE(c.setIRSwitch(1));
    EXPECT_TRUE(setsAmong({kWhite, kIr}).empty());
    m_objIsp.clearFailures();
    m_objIsp.setValue(0, kWhite, 1);
    m_objIsp.failCommand(0, kWhite, IA_CMD_OPT_SET, -5);
    m_objIsp.clearLog();
    EXPECT_FALSE(c.setIRSwitch(1)) << "white light could not be switched off";
    EXPECT_TRUE(setsAmong({kIr}).empty());
}

TEST_F(LightsTest, LightTypeRangeAndWhiteModeByKeyAndCommand) {
    ISensorController& c = upDome();
    EXPECT_FALSE(c.setLightType(4));
    EXPECT_FALSE(c.setLightType(-1));
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(c.setLightType(3));
    EXPECT_EQ(std::vector<int32_t>{3}, setsOf(224));
    EXPECT_EQ(3, read(&ISensorController::getLightType));

    EXPECT_TRUE(c.setWhiteMode(2));
    EXPECT_EQ(std::vector<int32_t>{2}, setsOf(kWhiteMode));
    m_objIsp.setValue(0, kWhiteMode, 5);
    EXPECT_EQ(5, read(&ISensorController::getWhiteMode));
}

TEST_F(LightsTest, MirrorIsFlushedOnlyWhenTheWriteSucceeds) {
    ISensorController& c = upDome();
    // An unsaved change that a flush would carry to the file.
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 77, true));
    m_objIsp.failCommand(0, 2384, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.setMirrorMode(1));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS))
        << "a failed mirror does not flush";
    m_objIsp.clearFailures();
    EXPECT_TRUE(c.setMirrorMode(1));
    EXPECT_EQ(77u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS));
    EXPECT_EQ(1, read(&ISensorController::getMirrorValue));
}

TEST_F(LightsTest, StoredAccessorsWriteTheCurrentSchemeAndOthersAskTheIsp) {
    ISensorController& c = upDome();
    EXPECT_TRUE(c.setDNMode(1));
    EXPECT_EQ(1, read(&ISensorController::getDNMode));
    EXPECT_EQ(1u, valueOf(Access::row(c, 0), KEY_DN_MODE));
    EXPECT_EQ(std::vector<int32_t>{1}, setsOf(KEY_DN_MODE));
    // A key the mini set lacks is read from the ISP; a refused read is false.
    m_objIsp.setValue(0, KEY_WDR_STRG, 33);
    EXPECT_EQ(33, read(&ISensorController::getWDRStrength));
    m_objIsp.failCommand(0, KEY_WDR_STRG, IA_CMD_OPT_GET, -5);
    EXPECT_EQ(std::nullopt, read(&ISensorController::getWDRStrength));
}

} // namespace sensortest
