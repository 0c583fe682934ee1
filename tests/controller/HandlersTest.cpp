// The feature handlers, driven through the set loop as the host drives them:
// what reaches the ISP and the video module, in which order, and what the
// set stores.
#include "ControllerFixture.h"

#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

class HandlersTest : public ControllerTest {
protected:
    void SetUp() override {
        // Each notice records how many ISP calls had been made before it.
        m_objVideo.probeEachNotice([this] { return m_objIsp.log().size(); });
    }
    int apply(std::vector<KeyVal> p_vecList) {
        return ctl().setParameters(p_vecList.data(), static_cast<u32>(p_vecList.size()), true);
    }
    void installAlike(const std::vector<KeyVal>& p_vecSet) {
        install({p_vecSet, p_vecSet, p_vecSet}, 0);
    }
};

// Day/night thresholds and times.

TEST_F(HandlersTest, ThresholdRecordIsCompletedFromTheCurrentSet) {
    installAlike(makeSet({{145, 70}, {146, 40}, {154, 3}}));
    EXPECT_EQ(apply({{146, 30}}), 0);
    EXPECT_EQ(apply({{145, 65}}), 0);
    EXPECT_EQ(apply({{154, 5}}), 0);
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(146, {70, 30, 0}), setCall(145, {65, 30, 0}),
                                    setCall(154, {0, 0, 5})}));
    EXPECT_EQ(stored(0, 146), 30u);
}

TEST_F(HandlersTest, TimeRecordIsCompletedFromTheCurrentSet) {
    installAlike(makeSet({{149, 18}, {150, 0}, {151, 6}, {152, 30}}));
    EXPECT_EQ(apply({{150, 15}}), 0);
    EXPECT_EQ(apply({{152, 45}}), 0);
    EXPECT_EQ(ispCalls(),
              (std::vector<IspCall>{setCall(150, {18, 15, 6, 30}), setCall(152, {18, 15, 6, 45})}));
}

TEST_F(HandlersTest, OnlyThresholdsPassARefusalWhileTheLastParametersReturn) {
    installAlike(makeSet({{145, 70}, {146, 40}, {149, 18}, {34, 50}}));
    m_objIsp.failCommand(-1, 145, -1, -1);
    m_objIsp.failCommand(-1, 149, -1, -1);
    EXPECT_EQ(apply({{145, 60}}), -145);

    Access::setState(ctl(), Access::resettingLastBit());
    EXPECT_EQ(apply({{145, 60}, {34, 40}}), 0);
    EXPECT_EQ(stored(0, 145), 60u);
    EXPECT_EQ(stored(0, 34), 40u);
    EXPECT_EQ(apply({{149, 20}, {34, 30}}), -149);
    EXPECT_EQ(stored(0, 34), 40u);
}

// Mirror and beaway.

TEST_F(HandlersTest, BeawayExchangesMirrorOneAndTwo) {
    installAlike(makeSet({{2384, 0}, {2385, 1}}));
    EXPECT_EQ(apply({{2384, 1}}), 0);
    EXPECT_EQ(apply({{2384, 2}}), 0);
    EXPECT_EQ(apply({{2384, 0}}), 0);
    EXPECT_EQ(apply({{2384, 3}}), 0);
    EXPECT_EQ(m_objVideo.notices(),
              (std::vector<Notice>{{1, 2384, 2}, {1, 2384, 1}, {1, 2384, 0}, {1, 2384, 3}}));
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{setCall(2384, {2}), setCall(2384, {1}),
                                                setCall(2384, {0}), setCall(2384, {3})}));
    EXPECT_EQ(m_objVideo.probes(), (std::vector<std::size_t>{0, 1, 2, 3})); // video first
    EXPECT_EQ(stored(0, 2384), 3u);

    clearRecords();
    installAlike(makeSet({{2384, 0}, {2385, 0}}));
    EXPECT_EQ(apply({{2384, 1}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(2384, {1})});
}

TEST_F(HandlersTest, SwitchingBeawayResendsTheMirrorAsItMustNowBeCarriedOut) {
    installAlike(makeSet({{2384, 2}, {2385, 1}}));
    EXPECT_EQ(apply({{2385, 0}}), 0);
    EXPECT_EQ(apply({{2385, 1}}), 0);
    EXPECT_EQ(m_objVideo.notices(),
              (std::vector<Notice>{{1, 2384, 2}, {1, 2385, 0}, {1, 2384, 1}, {1, 2385, 1}}));
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{setCall(2384, {2}), setCall(2385, {0}),
                                                setCall(2384, {1}), setCall(2385, {1})}));
    EXPECT_EQ(m_objVideo.probes(), (std::vector<std::size_t>{0, 0, 2, 2}));
    EXPECT_EQ(stored(0, 2384), 2u);
}

TEST_F(HandlersTest, BeawayResultIsTheIspsForBeawayOnly) {
    installAlike(makeSet({{2384, 0}, {2385, 0}}));
    m_objIsp.failCommand(-1, 2384, -1, -1);
    EXPECT_EQ(apply({{2385, 1}}), 0);
    m_objIsp.failCommand(-1, 2385, -1, -4);
    EXPECT_EQ(apply({{2385, 0}}), -2385);
}

TEST_F(HandlersTest, BeawayWhereItIsNotAllowedIsStoredOff) {
    installAlike(makeSet({{2384, 1}, {2385, 0}}));
    ctl().setShowBeawayFalg(false);
    bool bShow = true;
    EXPECT_TRUE(ctl().getShowBeawayFalg(bShow));
    EXPECT_FALSE(bShow);
    EXPECT_EQ(apply({{2385, 1}}), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_TRUE(m_objVideo.notices().empty());
    EXPECT_EQ(stored(0, 2385), 0u);
}

TEST_F(HandlersTest, VideoRefusalIsReportedButTheIspIsStillSet) {
    installAlike(makeSet({{2384, 0}, {2385, 0}}));
    m_objVideo.answer(2384, -1);
    CaptureStdout();
    EXPECT_EQ(apply({{2384, 1}}), 0);
    const std::string strOut = GetCapturedStdout();
    EXPECT_NE(strOut.find("[sensor assert] file:ISensorController fun:doMirror"),
              std::string::npos);
    EXPECT_NE(strOut.find("SNS_SUCCESS == notifyToVideo(p_nKey, nMirror)   ~~~Assertion failed."),
              std::string::npos);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(2384, {1})});
}

TEST_F(HandlersTest, WithoutAVideoModuleHandlersStillReachTheIsp) {
    installAlike(makeSet({{2384, 0}, {2385, 0}, {2416, 0}}));
    ctl().setVideoStreamModule(nullptr);
    CaptureStdout();
    EXPECT_EQ(apply({{2385, 1}, {2384, 1}, {2416, 1}}), 0);
    EXPECT_EQ(GetCapturedStdout().find("Assertion"), std::string::npos);
    EXPECT_EQ(ispCalls().size(), 4u);
}

// WDR, anti-shake, test parameters.

TEST_F(HandlersTest, WdrChangeIsBracketedBySwitchingNotices) {
    installAlike(makeSet({{2368, 0}}));
    EXPECT_EQ(apply({{2368, 2}}), 0);
    EXPECT_EQ(m_objVideo.notices(),
              (std::vector<Notice>{{1, 2370, 0}, {1, 2368, 2}, {1, 2370, 1}}));
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(2368, {2})});
    EXPECT_EQ(m_objVideo.probes(), (std::vector<std::size_t>{0, 0, 1}));
    EXPECT_EQ(stored(0, 2368), 2u);
}

TEST_F(HandlersTest, WdrResultIsTheVideoModulesAnswer) {
    installAlike(makeSet({{2368, 0}}));
    m_objIsp.failCommand(-1, 2368, -1, -1);
    CaptureStdout();
    EXPECT_EQ(apply({{2368, 2}}), 0);
    const std::string strOut = GetCapturedStdout();
    EXPECT_NE(strOut.find("fun:doHwdr"), std::string::npos);
    EXPECT_NE(strOut.find("SNS_SUCCESS == doIaCmd(p_nKey, p_nDir, p_pVal)   ~~~Assertion failed."),
              std::string::npos);
    EXPECT_EQ(m_objVideo.notices().back(), (Notice{1, 2370, 1}));
}

TEST_F(HandlersTest, WdrWhereItIsNotAllowedIsStoredOff) {
    installAlike(makeSet({{2368, 1}}));
    bool bShow = false;
    EXPECT_TRUE(ctl().getShowWDRFalg(bShow));
    EXPECT_TRUE(bShow);
    ctl().setShowWDRFalg(false);
    EXPECT_TRUE(ctl().getShowWDRFalg(bShow));
    EXPECT_FALSE(bShow);
    EXPECT_EQ(apply({{2368, 2}}), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_TRUE(m_objVideo.notices().empty());
    EXPECT_EQ(stored(0, 2368), 0u);
}

TEST_F(HandlersTest, AntiShakeTellsTheVideoModuleFirst) {
    installAlike(makeSet({{2416, 0}}));
    m_objVideo.answer(2416, -1);
    m_objIsp.failCommand(-1, 2416, -1, -5);
    CaptureStdout();
    EXPECT_EQ(apply({{2416, 1}}), -2416);
    EXPECT_NE(GetCapturedStdout().find("SNS_SUCCESS == notifyToVideo(p_nKey, *(u32*)p_pVal)"),
              std::string::npos);
    EXPECT_EQ(m_objVideo.notices(), (std::vector<Notice>{{1, 2416, 1}}));
    EXPECT_EQ(m_objVideo.probes(), std::vector<std::size_t>{0});
    EXPECT_EQ(ispCalls().size(), 1u);
}

TEST_F(HandlersTest, TestParametersReachOnlyTheVideoModule) {
    installAlike(makeSet({{192, 0}}));
    m_objVideo.answer(192, -1);
    EXPECT_EQ(apply({{192, 7}}), 0);
    EXPECT_EQ(m_objVideo.notices(), (std::vector<Notice>{{1, 192, 7}}));
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(stored(0, 192), 7u);
}

// Image adjust, panorama, shutter, field of view.

TEST_F(HandlersTest, ImageAdjustSetsTheIspThenTellsTheVideoModule) {
    installAlike(makeSet({{2436, 0}}));
    EXPECT_EQ(apply({{2436, 12}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(2436, {12})});
    EXPECT_EQ(m_objVideo.notices(), (std::vector<Notice>{{1, 2436, 12}}));
    EXPECT_EQ(m_objVideo.probes(), std::vector<std::size_t>{1});

    m_objVideo.answer(2436, -4);
    EXPECT_EQ(apply({{2436, 13}}), -2436);
    m_objVideo.answer(2436, 0);
    m_objIsp.failCommand(-1, 2436, -1, -1);
    CaptureStdout();
    EXPECT_EQ(apply({{2436, 14}}), 0); // the video module's answer decides
    EXPECT_NE(GetCapturedStdout().find("fun:doImageAdjust"), std::string::npos);
}

TEST_F(HandlersTest, PanoramaValuesReachOnlyTheVideoModule) {
    installAlike(makeSet({{9204, 0}, {8100, 0}}));
    m_objVideo.answer(9204, -1);
    CaptureStdout();
    EXPECT_EQ(apply({{9204, 15}, {8100, 3}}), 0);
    EXPECT_NE(GetCapturedStdout().find("SNS_SUCCESS == notifyToVideo(nKey, nVal)"),
              std::string::npos);
    EXPECT_EQ(m_objVideo.notices(), (std::vector<Notice>{{1, 9204, 15}, {1, 8100, 3}}));
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(stored(0, 9204), 15u);
}

TEST_F(HandlersTest, ShutterActionWaitsOutBulkOperations) {
    installAlike(makeSet({{8211, 0}}));
    u32 nValue = 1;
    for (u32 nBit : {Access::initingBit(), Access::resettingBit(), Access::resettingLastBit(),
                     Access::switchingBit()}) {
        Access::setState(ctl(), nBit);
        EXPECT_EQ(ctl().doIaCmdShutter(8211, IA_CMD_OPT_SET, &nValue), 0);
        Access::clearState(ctl(), nBit);
    }
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(apply({{8211, 2}}), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(8211, {2})});
}

TEST_F(HandlersTest, FirstShutterActionAfterReleaseAlwaysGoesOut) {
    installAlike(makeSet({{8211, 0}}));
    Access::setShutterPass(ctl(), true);
    Access::setState(ctl(), Access::switchingBit());
    u32 nValue = 1;
    EXPECT_EQ(ctl().doIaCmdShutter(8211, IA_CMD_OPT_SET, &nValue), 0);
    EXPECT_FALSE(Access::shutterPass(ctl()));
    EXPECT_EQ(ctl().doIaCmdShutter(8211, IA_CMD_OPT_SET, &nValue), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(8211, {1})});
    m_objIsp.failCommand(-1, 8211, -1, -4);
    Access::clearState(ctl(), Access::switchingBit());
    EXPECT_EQ(ctl().doIaCmdShutter(8211, IA_CMD_OPT_SET, &nValue), -4);
}

TEST_F(HandlersTest, FieldOfViewRequestIsHandedToChannelOne) {
    ctl().setChannelID(2);
    installAlike(makeSet({{8104, 0}}));
    EXPECT_EQ(apply({{8104, 1}}), 0);
    EXPECT_EQ(ISensorController::m_nChanneldDosomething.load(), 1);
    EXPECT_EQ(ISensorController::m_nPassKeycmd.load(), 8104);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_TRUE(m_objVideo.notices().empty());

    ISensorController::m_nChanneldDosomething = -1;
    ISensorController::m_nPassKeycmd = -1;
    u32 nValue = 1;
    EXPECT_EQ(ctl().doIoCrtl(8105, IA_CMD_OPT_SET, &nValue), 0);
    EXPECT_EQ(ISensorController::m_nPassKeycmd.load(), -1);
}

TEST_F(HandlersTest, HandlersRefuseAMissingValue) {
    for (keycmd_handler pHandler :
         {&ISensorController::doDNThr, &ISensorController::doDNTime, &ISensorController::doMirror,
          &ISensorController::doBeaway, &ISensorController::doHwdr, &ISensorController::doDIS,
          &ISensorController::test_debugParam, &ISensorController::doImageAdjust,
          &ISensorController::doIaCmd_PanoTuning}) {
        EXPECT_EQ((ctl().*pHandler)(145, IA_CMD_OPT_SET, nullptr), -1);
    }
}

} // namespace
} // namespace sensortest
