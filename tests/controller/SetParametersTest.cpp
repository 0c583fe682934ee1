// The set loop: cache skip, stored-only keys, scheme policy, thermal routing,
// day/night governance, the infrared budget, the light-type twins, unknown
// keys, failures and the store step; and the single-parameter operations.
#include "ControllerFixture.h"

#include "common/ia_ioctrl.h"

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

bool contains(const std::string& p_strText, const std::string& p_strPart) {
    return p_strText.find(p_strPart) != std::string::npos;
}

class SetParametersTest : public ControllerTest {
protected:
    int apply(std::vector<KeyVal> p_vecList, bool p_bCache = true) {
        return ctl().setParameters(p_vecList.data(), static_cast<u32>(p_vecList.size()), p_bCache);
    }
    // p_nUser user schemes and the factory set, all alike, scheme p_nCur current.
    void installAlike(const std::vector<KeyVal>& p_vecSet, int p_nCur = 0, int p_nUser = 2) {
        install(std::vector<std::vector<KeyVal>>(p_nUser + 1, p_vecSet), p_nCur);
    }
};

TEST_F(SetParametersTest, EmptyListPrintsANewlineAndSucceeds) {
    installAlike(makeSet({{34, 50}}));
    CaptureStdout();
    EXPECT_EQ(ctl().setParameters(nullptr, 0, true), 0);
    EXPECT_EQ(GetCapturedStdout(), "\n");
    EXPECT_EQ(ctl().setParameters(nullptr, 3, true), -1);
}

TEST_F(SetParametersTest, CacheSkipsUnchangedRecordsAndStoresTheOthers) {
    const auto vecSet = makeSet({{34, 50}, {2337, 60}});
    installAlike(vecSet);
    EXPECT_EQ(apply(vecSet), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(apply({{34, 51}, {2337, 60}}, false), 0); // everything sent, nothing stored
    EXPECT_EQ(stored(0, 34), 50u);
    EXPECT_EQ(apply({{34, 52}}), 0);
    EXPECT_EQ(stored(0, 34), 52u);
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(34, {51}), setCall(2337, {60}), setCall(34, {52})}));
}

TEST_F(SetParametersTest, DuringASwitchRecordsCompareWithTheSchemeBeingLeft) {
    install({makeSet({{34, 50}}), makeSet({{34, 60}}), makeSet({{34, 50}})}, 1);
    Access::setLastScheme(ctl(), 0);
    Access::setState(ctl(), Access::switchingBit());
    EXPECT_EQ(apply({{34, 50}, {34, 60}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(34, {60})});
}

TEST_F(SetParametersTest, StoredOnlyKeysAreNeverApplied) {
    installAlike(makeSet({{10, 0}, {11, 0}, {13, 0}}));
    EXPECT_EQ(apply({{10, 1}, {11, 2}, {13, 3}, {8001, 8}, {8002, 30}, {8003, 18}, {8004, 15}}), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(stored(0, 13), 3u);
    EXPECT_EQ(stored(0, 8004), 15u);
    EXPECT_EQ(stored(1, 8001), 0u);
}

TEST_F(SetParametersTest, SchemeModeOfSchemeZeroIsThePolicyOfEveryUserScheme) {
    installAlike(makeSet({}), 0, 4);
    EXPECT_EQ(apply({{8000, 2}}), 0);
    EXPECT_TRUE(Access::schemeByDN(ctl()));
    EXPECT_FALSE(Access::schemeByTime(ctl()));
    for (u32 s = 0; s < 4; ++s) {
        EXPECT_EQ(stored(s, 8000), 2u) << s;
    }
    EXPECT_EQ(stored(4, 8000), 0u); // the factory set keeps its own
    apply({{8000, 1}});
    EXPECT_TRUE(Access::schemeByTime(ctl()));
    EXPECT_FALSE(Access::schemeByDN(ctl()));
    EXPECT_EQ(stored(3, 8000), 1u);
    apply({{8000, 7}});
    EXPECT_FALSE(Access::schemeByTime(ctl()) || Access::schemeByDN(ctl()));
    EXPECT_EQ(stored(3, 8000), 0u);
    EXPECT_EQ(stored(0, 8000), 7u);

    // In another scheme the record is only stored there.
    Access::setCurScheme(ctl(), 1);
    EXPECT_EQ(apply({{8000, 2}}), 0);
    EXPECT_FALSE(Access::schemeByDN(ctl()));
    EXPECT_EQ(stored(1, 8000), 2u);
    EXPECT_EQ(stored(2, 8000), 0u);
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(SetParametersTest, ThermalChannelRoutesItsKeysAndIgnoresTheirFailures) {
    installAlike(makeSet({{2384, 0}, {2385, 0}, {2416, 0}, {8201, 0}, {8217, 0}, {34, 50}}));
    EXPECT_EQ(apply({{8201, 3}}), 0); // the visual channel sends it to the ISP
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(8201, {3})});
    EXPECT_TRUE(m_objVideo.notices().empty());

    clearRecords();
    Access::setThermal(ctl(), true);
    m_objIsp.failCommand(-1, 2384, -1, -1);
    EXPECT_EQ(apply({{2384, 1}, {2416, 1}, {8201, 4}, {8217, 1}, {34, 40}}), 0);
    EXPECT_EQ(m_objVideo.notices(),
              (std::vector<Notice>{{1, 2384, 1}, {1, 2416, 1}, {1, 8201, 4}, {1, 8217, 1}}));
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(2384, {1}), setCall(2416, {1}), setCall(34, {40})}));
    EXPECT_EQ(stored(0, 2384), 1u);
    EXPECT_EQ(stored(0, 8201), 4u);
}

TEST_F(SetParametersTest, DayNightPolicyLetsSchemeZeroGovernSchemeOne) {
    installAlike(makeSet({{144, 0}, {145, 60}, {146, 30}}), 1);
    EXPECT_EQ(apply({{146, 25}}), 0); // no policy: scheme 1 applies its own
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(146, {60, 25, 0})});

    clearRecords();
    Access::setSchemePolicy(ctl(), false, true);
    EXPECT_EQ(apply({{146, 20}, {144, 2}}), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(stored(1, 146), 20u);
    EXPECT_EQ(stored(1, 144), 2u);

    Access::setCurScheme(ctl(), 0);
    EXPECT_EQ(apply({{145, 70}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(145, {70, 30, 0})});
    EXPECT_EQ(stored(0, 145), 70u);
    EXPECT_EQ(stored(1, 145), 70u);
    EXPECT_EQ(stored(2, 145), 60u);
}

TEST_F(SetParametersTest, InfraredBudgetRefusesWhatTheOtherStrengthLeavesNoRoomFor) {
    installAlike(makeSet({{34, 50}, {163, 10}, {167, 70}, {2337, 5}}));
    EXPECT_EQ(apply({{163, 31}}), 0); // no budget on this device
    Access::setLimitedIrPower(ctl(), true);
    EXPECT_EQ(apply({{34, 40}, {163, 32}, {2337, 9}}), -163);
    EXPECT_EQ(apply({{163, 0xFFFFFFF0u}}), -163); // no wrap past the budget
    EXPECT_EQ(apply({{167, 71}}), -167);
    EXPECT_EQ(apply({{163, 30}}), 0);
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(163, {31}), setCall(34, {40}), setCall(163, {30})}));
    EXPECT_EQ(stored(0, 34), 40u);
    EXPECT_EQ(stored(0, 2337), 5u);
}

TEST_F(SetParametersTest, InfraredBudgetReadsAMissingPartnerFromTheIsp) {
    Access::setLimitedIrPower(ctl(), true);
    installAlike(makeSet({{163, 10}}));
    m_objIsp.setValue(0, 167, 80);
    CaptureStdout();
    EXPECT_EQ(apply({{163, 30}}), -163);
    EXPECT_EQ(GetCapturedStdout(), "### KEY_IR_MANUAL_STRG_FAR doIaCmd sucess\n");
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{{0, 167, IA_CMD_OPT_GET, {80}}}));

    installAlike(makeSet({{167, 10}}));
    m_objIsp.failCommand(-1, 163, IA_CMD_OPT_GET, -1);
    CaptureStdout();
    EXPECT_EQ(apply({{167, 90}}), 0); // an unreadable partner leaves the budget open
    const std::string strOut = GetCapturedStdout();
    EXPECT_TRUE(contains(strOut, "SNS_SUCCESS == doIaCmd(p_nPartnerKey, IA_CMD_OPT_GET, &nVal)   "
                                 "~~~Assertion failed.\n"));
    EXPECT_TRUE(contains(strOut, coloured(31, "get key(163) val from 2a err")));
    EXPECT_TRUE(contains(strOut, "### KEY_IR_MANUAL_STRG_NEAR doIaCmd error\n"));
    EXPECT_EQ(m_objIsp.getValue(0, 167), 90);
}

TEST_F(SetParametersTest, IntelligentLightAppliesTwinsUnderTheirNormalKeys) {
    installAlike(makeSet({{224, 2}, {161, 0}, {168, 0}, {165, 0}, {201, 0}, {172, 0}, {203, 0}}));
    EXPECT_EQ(apply({{161, 1}}), 0);
    EXPECT_EQ(stored(0, 161), 0u);
    EXPECT_EQ(apply({{168, 3}, {201, 9}, {203, 44}}), 0);
    // KEY_WHITE_MANUAL_STRG (172) sends ISP command 170.
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(161, {3}), setCall(165, {9}), setCall(170, {44})}));
    for (u32 nKey : {161u, 168u}) {
        EXPECT_EQ(stored(0, nKey), 3u);
    }
    for (u32 nKey : {172u, 203u}) {
        EXPECT_EQ(stored(0, nKey), 44u);
    }
    EXPECT_EQ(stored(0, 201), 9u);
    m_objIsp.failCommand(-1, 161, -1, -1);
    EXPECT_EQ(apply({{168, 4}}), -161); // a failing twin names its normal key
}

TEST_F(SetParametersTest, PlainLightAppliesNormalKeysAndCopiesThemToTheTwins) {
    installAlike(makeSet({{224, 1}, {161, 0}, {168, 0}}));
    EXPECT_EQ(apply({{161, 2}, {168, 5}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(161, {2})});
    EXPECT_EQ(stored(0, 161), 2u);
    EXPECT_EQ(stored(0, 168), 2u);
}

TEST_F(SetParametersTest, KeysWithoutAHandlerNeverReachDispatch) {
    installAlike(makeSet({{224, 0}}));
    EXPECT_EQ(apply({{8000, 0},
                     {8001, 1},
                     {8002, 2},
                     {8003, 3},
                     {8004, 4},
                     {10, 1},
                     {11, 1},
                     {13, 1},
                     {168, 1},
                     {175, 1},
                     {200, 1},
                     {203, 1}}),
              0);
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(SetParametersTest, UnknownKeyIsReportedAndSentAsItsOwnCommand) {
    installAlike(makeSet({}));
    CaptureStdout();
    EXPECT_EQ(apply({{12, 5}}), 0);
    const std::string strOut = GetCapturedStdout();
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(12, {5})});
    EXPECT_TRUE(contains(strOut, "-1 != findFromKeyCmdMap(m_pKeyCmdMap, nKey, stKeyCmdTmp)   "
                                 "~~~Assertion failed.\n"));
    EXPECT_TRUE(
        contains(m_objRoot.readFile("/mnt/mtd/log/SensorError.log"), "p_pKeyval[0].key(12)"));
}

TEST_F(SetParametersTest, ARefusedRecordEndsTheListAndKeepsEarlierOnes) {
    installAlike(makeSet({{34, 50}, {2337, 50}, {2353, 50}, {2368, 0}}));
    m_objIsp.failCommand(-1, 2337, -1, -3);
    EXPECT_EQ(apply({{34, 40}, {2337, 9}, {2353, 7}}), -2337);
    const std::vector<IspCall> vecCalls = ispCalls();
    ASSERT_EQ(vecCalls.size(), 2u);
    EXPECT_EQ(vecCalls[0], setCall(34, {40}));
    EXPECT_EQ(vecCalls[1].cmd, 2337u);
    EXPECT_EQ(stored(0, 34), 40u);
    EXPECT_EQ(stored(0, 2337), 50u);
    EXPECT_EQ(stored(0, 2353), 50u);

    // Any nonzero handler result ends the list, not only the ISP's.
    m_objVideo.answer(2368, -9);
    EXPECT_EQ(apply({{2368, 1}, {2353, 7}}), -2368);
    EXPECT_EQ(stored(0, 2353), 50u);
}

TEST_F(SetParametersTest, TheStoreStepKeepsWhatTheHandlerLeftWhereItCan) {
    installAlike(makeSet({{2385, 0}, {2368, 1}}));
    setshowBeawayFalg(false);
    ctl().setShowWDRFalg(false);
    EXPECT_EQ(apply({{2385, 1}, {2368, 2}}), 0);
    EXPECT_EQ(stored(0, 2385), 0u);
    EXPECT_EQ(stored(0, 2368), 0u);

    setDebugLevel(6); // a key the set lacks is applied but not stored
    CaptureStdout();
    EXPECT_EQ(apply({{2353, 7}}), 0);
    EXPECT_TRUE(contains(GetCapturedStdout(), "SET_KEY_VAL FAILED, m_nCurScheme(0), "
                                              "p_pKeyval[0].key(2353), p_pKeyval[0].value(7),  "
                                              "maybe jixin\n"));
    EXPECT_FALSE(holds(0, 2353));

    Access::setCurScheme(ctl(), 2); // the factory set is applied, never stored into
    EXPECT_EQ(apply({{2368, 1}}), 0);
    EXPECT_EQ(stored(2, 2368), 1u);
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{setCall(2353, {7})}));
}

TEST_F(SetParametersTest, CacheWritesStayInsideTheSets) {
    installAlike(makeSet({{34, 50}}));
    EXPECT_EQ(ctl().setKeyValToCache(0, 34, 41, false), 5);
    EXPECT_EQ(ctl().setKeyValToCache(0, 99, 41, false), -1);
    EXPECT_EQ(ctl().setKeyValToCache(2, 34, 41, false), -2); // the factory row needs force
    EXPECT_EQ(ctl().setKeyValToCache(2, 34, 42, true), 5);
    EXPECT_EQ(ctl().setKeyValToCache(3, 34, 43, true), -2); // beyond it: never
    u32 nValue = 7;
    EXPECT_EQ(ctl().getKeyValFromCache(3, 34, nValue), -1);
    EXPECT_EQ(ctl().getKeyValFromCache(0, 99, nValue), -1);
    EXPECT_EQ(nValue, 7u);
    EXPECT_TRUE(ctl().isKeyValSame({34, 41}));
    EXPECT_FALSE(ctl().isKeyValSame({99, 0}));
}

TEST_F(SetParametersTest, SetParameterAppliesOneValueUnderTheLock) {
    installAlike(makeSet({{34, 50}}));
    EXPECT_EQ(ctl().setParameter(34, 41, true), 0);
    EXPECT_EQ(ctl().setParameter(34, 41, true), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(34, {41})});
    EXPECT_EQ(stored(0, 34), 41u);
    m_objIsp.failCommand(-1, 2337, -1, -1);
    EXPECT_EQ(ctl().setParameter(2337, 3, true), -2337);
}

TEST_F(SetParametersTest, GetParameterAsksTheIspOnlyForKeysTheSetLacks) {
    installAlike(makeSet({{34, 50}}));
    m_objIsp.setValue(0, 34, 99);
    m_objIsp.setValue(0, 2353, 12);
    int nValue = 0;
    EXPECT_TRUE(ctl().getParameter(34, nValue));
    EXPECT_EQ(nValue, 50);
    for (int nKey : {160, 161, 163, 165, 167}) {
        EXPECT_TRUE(ctl().getParameter(nKey, nValue));
        EXPECT_EQ(nValue, -1) << nKey;
    }
    EXPECT_TRUE(ctl().getParameter(2353, nValue));
    EXPECT_EQ(nValue, 12);
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{{0, 2353, IA_CMD_OPT_GET, {12}}}));

    m_objIsp.failCommand(-1, 2353, IA_CMD_OPT_GET, -1);
    CaptureStdout();
    EXPECT_FALSE(ctl().getParameter(2353, nValue));
    EXPECT_TRUE(
        contains(GetCapturedStdout(), "SNS_SUCCESS == doIaCmd(p_nKey, IA_CMD_OPT_GET, &p_nVal)"));
}

TEST_F(SetParametersTest, VideoNoticesGoToChannelOneOnTheDualSensorDevice) {
    EXPECT_EQ(ctl().notifyToVideo(8201, 1), 0);
    ctl().setChannelID(2);
    ctl().notifyToVideo(8201, 2);
    useDeviceType(13);
    EXPECT_EQ(Access::cameraId(ctl()), 2);
    ctl().notifyToVideo(8201, 3);
    EXPECT_EQ(m_objVideo.notices(),
              (std::vector<Notice>{{1, 8201, 1}, {2, 8201, 2}, {1, 8201, 3}}));
    m_objVideo.answer(8201, -4);
    EXPECT_EQ(ctl().notifyToVideo(8201, 4), -4);
    ctl().setVideoStreamModule(nullptr);
    EXPECT_EQ(ctl().notifyToVideo(8201, 5), 0);
}

} // namespace
} // namespace sensortest
