// The handlers. The generic ones: the zoom/focus lock gate, channel numbering,
// ISP results, and the gates of one-shot user actions. The feature handlers,
// driven through the set loop as the host drives them: what reaches the ISP and
// the video module, in which order, and what the set stores.
#include "ControllerFixture.h"

#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

namespace sensortest {
namespace {

using DispatchTest = ControllerTest;
constexpr keycmd_handler kGeneric = &ISensorController::doIaCmd;
constexpr keycmd_handler kUser = &ISensorController::doIaCmd_User;

TEST_F(DispatchTest, CameraIdAndLensLockDecideWhatReachesTheIspWhoseErrorsComeBackUnchanged) {
    Access::setZoomFocusLock(ctl(), true); // holds back only lens commands
    for (u32 nCmd : {1535u, 1536u, 1569u, 1616u, 1617u}) {
        EXPECT_EQ(call(kGeneric, nCmd, nCmd % 10), 0) << nCmd;
    }
    Access::setZoomFocusLock(ctl(), false);
    call(kGeneric, 1536, 2);
    ctl().setChannelID(2);
    EXPECT_EQ(call(kGeneric, KEY_BRIGHTNESS, 40), 0);
    EXPECT_EQ(sent(), "1535=5 1617=7 1536=2 ch1:34=40");
    m_objIsp.failCommand(-1, 34, -1, -7);
    EXPECT_EQ(call(kGeneric, KEY_BRIGHTNESS, 40), -7);
    int nValue = 0;
    EXPECT_EQ(ctl().doIaCmd(34, IA_CMD_OPT_GET, &nValue), -7);
}

TEST_F(DispatchTest, UserActionsAndTheShutterWaitOutEveryBulkOperation) {
    for (const auto& [pHandler, nKey] :
         {std::pair<keycmd_handler, u32>{kUser, KEY_ZOOM_IN},
          {kUser, KEY_AUTO_FOCUS_ONCE},
          {&ISensorController::doIaCmdShutter, KEY_SHUTTER_ADJUST}}) {
        SCOPED_TRACE(nKey);
        clearRecords();
        for (u32 nBit : {Access::initingBit(), Access::resettingBit(), Access::resettingLastBit(),
                         Access::switchingBit()}) {
            Access::setState(ctl(), nBit);
            EXPECT_EQ(call(pHandler, nKey, 1), 0);
            Access::clearState(ctl(), nBit);
        }
        // Releasing the channel is no bulk operation; the ISP's error comes back.
        Access::setState(ctl(), Access::uninitingBit());
        EXPECT_EQ(call(pHandler, nKey, 1), 0);
        m_objIsp.failCommand(-1, nKey, -1, -5);
        EXPECT_EQ(call(pHandler, nKey, 1), -5);
        Access::clearState(ctl(), Access::uninitingBit());
        EXPECT_EQ(sent(), std::to_string(nKey) + "=1 " + std::to_string(nKey) + "=1");
    }
    // Autofocus once needs a lens and a request, unless on the thermal channel.
    reset();
    EXPECT_EQ(call(kUser, KEY_AUTO_FOCUS_ONCE, 0), 0);
    call(kUser, KEY_AUTO_FOCUS_ONCE, 1);
    Access::setThermal(ctl(), true); // the thermal channel acts even on 0
    call(kUser, KEY_AUTO_FOCUS_ONCE, 0);
    Access::setHasLens(ctl(), false); // without a lens never, not even thermal
    EXPECT_EQ(call(kUser, KEY_AUTO_FOCUS_ONCE, 1), 0);
    EXPECT_EQ(ctl().doIaCmd_User(KEY_AUTO_FOCUS_ONCE, IA_CMD_OPT_SET, nullptr), 0);
    EXPECT_EQ(sent(), "1539=1 1539=0");
}

using HandlersTest = ControllerTest;

TEST_F(HandlersTest, DayNightRecordsAreCompletedFromTheCurrentSet) {
    run("thresholds and times", "145=70 146=40 154=3 149=18 150=0 151=6 152=30",
        "146=30; 145=65; 154=5; 150=15; 152=45",
        "146=70,30,0 145=65,30,0 154=0,0,5 150=18,15,6,30 152=18,15,6,45", "146=30");
    run("a refused threshold", "145=70 146=40", "145=60 => -145", "145=60,40,0", "145=70", {},
        [this] { m_objIsp.failCommand(-1, 145, -1, -1); });
    run("while the last parameters return only thresholds pass a refusal",
        "145=70 146=40 149=18 34=50", "145=60 34=40; 149=20 34=30 => -149",
        "145=60,40,0 34=40 149=20,0,0,0", "145=60 34=40", {}, [this] {
            m_objIsp.failCommand(-1, 145, -1, -1);
            m_objIsp.failCommand(-1, 149, -1, -1);
            Access::setState(ctl(), Access::resettingLastBit());
        });
}

// The show flags as the host reads them back are plain copies; what they change
// is checked here ("stored off").
TEST_F(HandlersTest, MirrorAndBeawayTellTheVideoModuleFirst) {
    run("beaway on exchanges 1 and 2; the set keeps the user's value", "2384=0 2385=1",
        "2384=2; 2384=0; 2384=3; 2384=1",
        "v1:2384=1 2384=1 v1:2384=0 2384=0 v1:2384=3 2384=3 v1:2384=2 2384=2", "2384=1");
    run("beaway off", "2384=0 2385=0", "2384=1", "v1:2384=1 2384=1", "2384=1");
    run("switching beaway re-sends the mirror as it must now be carried out", "2384=2 2385=1",
        "2385=0; 2385=1", "v1:2384=2 v1:2385=0 2384=2 2385=0 v1:2384=1 v1:2385=1 2384=1 2385=1",
        "2384=2 2385=1");
    run("a refused mirror re-send is ignored", "2384=0 2385=0", "2385=1",
        "v1:2384=0 v1:2385=1 2384=0 2385=1", "2385=1", {},
        [this] { m_objIsp.failCommand(-1, 2384, -1, -1); });
    run("a refused beaway fails", "2384=0 2385=0", "2385=1 => -2385",
        "v1:2384=0 v1:2385=1 2384=0 2385=1", "2385=0", {},
        [this] { m_objIsp.failCommand(-1, 2385, -1, -4); });
    run("beaway and WDR where they are not allowed are stored off", "2384=1 2385=0 2368=1",
        "2385=1 2368=2", "", "2385=0 2368=0", {}, [this] {
            ctl().setShowBeawayFalg(false);
            ctl().setShowWDRFalg(false);
            EXPECT_FALSE(getshowBeawayFalg());
        });
    run("a video refusal is reported and the ISP still set", "2384=0 2385=0", "2384=1",
        "v1:2384=1 2384=1", "2384=1",
        {"[sensor assert] file:ISensorController fun:doMirror",
         "SNS_SUCCESS == notifyToVideo(p_nKey, nMirror)   ~~~Assertion failed."},
        [this] { m_objVideo.answer(2384, -1); });
    run("without a video module the handlers still reach the ISP", "2384=0 2385=0 2416=0",
        "2385=1 2384=1 2416=1", "2384=0 2385=1 2384=2 2416=1", "", {},
        [this] { ctl().setVideoStreamModule(nullptr); });
}

TEST_F(HandlersTest, WdrStabilisationTestAndImageKeysReachTheVideoModule) {
    run("a WDR change is bracketed by switching notices", "2368=0", "2368=2",
        "v1:2370=0 v1:2368=2 2368=2 v1:2370=1", "2368=2");
    run("the WDR result is the video module's answer", "2368=0", "2368=2 => -2368",
        "v1:2370=0 v1:2368=2 2368=2 v1:2370=1", "2368=0", {},
        [this] { m_objVideo.answer(2368, -4); });
    run("a WDR mode the ISP refuses is reported", "2368=0", "2368=1",
        "v1:2370=0 v1:2368=1 2368=1 v1:2370=1", "2368=1",
        {"fun:doHwdr", "SNS_SUCCESS == doIaCmd(p_nKey, p_nDir, p_pVal)   ~~~Assertion failed."},
        [this] { m_objIsp.failCommand(-1, 2368, -1, -1); });
    run("anti-shake tells the video module first; the result is the ISP's", "2416=0",
        "2416=1 => -2416", "v1:2416=1 2416=1", "2416=0",
        {"SNS_SUCCESS == notifyToVideo(p_nKey, *(u32*)p_pVal)"}, [this] {
            m_objVideo.answer(2416, -1);
            m_objIsp.failCommand(-1, 2416, -1, -5);
        });
    run("test parameters and panorama values reach only the video module", "192=0 9204=0 8100=0",
        "192=7 9204=15 8100=3", "v1:192=7 v1:9204=15 v1:8100=3", "192=7 9204=15 8100=3",
        {"SNS_SUCCESS == notifyToVideo(nKey, nVal)"}, [this] {
            m_objVideo.answer(192, -1);
            m_objVideo.answer(9204, -1);
        });
    run("image adjust sets the ISP, then tells the video module", "2436=0", "2436=12",
        "2436=12 v1:2436=12", "2436=12");
    run("the image-adjust result is the video module's", "2436=0", "2436=13 => -2436",
        "2436=13 v1:2436=13", "2436=0", {}, [this] { m_objVideo.answer(2436, -4); });
    run("an image adjust the ISP refuses is reported", "2436=0", "2436=14", "2436=14 v1:2436=14",
        "2436=14", {"fun:doImageAdjust"}, [this] { m_objIsp.failCommand(-1, 2436, -1, -1); });
}

TEST_F(HandlersTest, FirstShutterActionAfterReleaseGoesOutAndFieldOfViewGoesToChannelOne) {
    installAlike(makeSet("8211=0 8104=0"));
    Access::setShutterPass(ctl(), true);
    Access::setState(ctl(), Access::switchingBit());
    EXPECT_EQ(call(&ISensorController::doIaCmdShutter, 8211, 1), 0);
    EXPECT_FALSE(Access::shutterPass(ctl()));
    EXPECT_EQ(call(&ISensorController::doIaCmdShutter, 8211, 1), 0);
    Access::clearState(ctl(), Access::switchingBit());
    EXPECT_EQ(apply({{8211, 2}}), 0);
    // A field-of-view request is handed to channel 1.
    ctl().setChannelID(2);
    EXPECT_EQ(apply({{8104, 1}}), 0);
    EXPECT_EQ(ISensorController::m_nChanneldDosomething.load(), 1);
    EXPECT_EQ(ISensorController::m_nPassKeycmd.load(), 8104);
    EXPECT_EQ(sent(), "8211=1 8211=2");
    ISensorController::m_nPassKeycmd = -1;
    EXPECT_EQ(call(&ISensorController::doIoCrtl, 8105, 1), 0); // other keys: nothing
    EXPECT_EQ(ISensorController::m_nPassKeycmd.load(), -1);
    for (keycmd_handler pHandler : // and no handler takes a missing value
         {&ISensorController::doDNThr, &ISensorController::doDNTime, &ISensorController::doMirror,
          &ISensorController::doBeaway, &ISensorController::doHwdr, &ISensorController::doDIS,
          &ISensorController::test_debugParam, &ISensorController::doImageAdjust,
          &ISensorController::doIaCmd_PanoTuning}) {
        EXPECT_EQ((ctl().*pHandler)(145, IA_CMD_OPT_SET, nullptr), -1);
    }
}

} // namespace
} // namespace sensortest
