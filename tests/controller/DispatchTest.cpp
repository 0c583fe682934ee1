// The generic handlers: the zoom/focus lock gate, channel numbering, ISP
// results, and the gates of one-shot user actions.
#include "ControllerFixture.h"

#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

namespace sensortest {
namespace {

using DispatchTest = ControllerTest;
constexpr keycmd_handler kGeneric = &ISensorController::doIaCmd;
constexpr keycmd_handler kUser = &ISensorController::doIaCmd_User;

TEST_F(DispatchTest, CameraIdMapsToIspChannelAndIspErrorsComeBackUnchanged) {
    ctl().setChannelID(2);
    EXPECT_EQ(call(kGeneric, KEY_BRIGHTNESS, 40), 0);
    EXPECT_EQ(sent(), "ch1:34=40");
    EXPECT_EQ(m_objIsp.getValue(1, 34), 40);
    m_objIsp.failCommand(-1, 34, -1, -7);
    EXPECT_EQ(call(kGeneric, KEY_BRIGHTNESS, 40), -7);
    int nValue = 0;
    EXPECT_EQ(ctl().doIaCmd(34, IA_CMD_OPT_GET, &nValue), -7);
}

TEST_F(DispatchTest, ZoomFocusLockHoldsBackOnlyLensCommands) {
    Access::setZoomFocusLock(ctl(), true);
    for (u32 nCmd : {1535u, 1536u, 1569u, 1616u, 1617u}) {
        EXPECT_EQ(call(kGeneric, nCmd, nCmd % 10), 0) << nCmd;
    }
    Access::setZoomFocusLock(ctl(), false);
    call(kGeneric, 1536, 2);
    EXPECT_EQ(sent(), "1535=5 1617=7 1536=2");
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
}

TEST_F(DispatchTest, AutofocusOnceNeedsALensAndARequestUnlessThermal) {
    EXPECT_EQ(call(kUser, KEY_AUTO_FOCUS_ONCE, 0), 0);
    call(kUser, KEY_AUTO_FOCUS_ONCE, 1);
    Access::setThermal(ctl(), true); // the thermal channel acts even on 0
    call(kUser, KEY_AUTO_FOCUS_ONCE, 0);
    Access::setHasLens(ctl(), false); // without a lens never, not even thermal
    EXPECT_EQ(call(kUser, KEY_AUTO_FOCUS_ONCE, 1), 0);
    EXPECT_EQ(ctl().doIaCmd_User(KEY_AUTO_FOCUS_ONCE, IA_CMD_OPT_SET, nullptr), 0);
    EXPECT_EQ(sent(), "1539=1 1539=0");
}

} // namespace
} // namespace sensortest
