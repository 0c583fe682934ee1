// The generic handlers: the zoom/focus lock gate, channel numbering, ISP
// results, and the gates of one-shot user actions.
#include "ControllerFixture.h"

#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

namespace sensortest {
namespace {

class DispatchTest : public ControllerTest {
protected:
    int user(u32 p_nKey, u32 p_nValue) {
        return ctl().doIaCmd_User(p_nKey, IA_CMD_OPT_SET, &p_nValue);
    }
    int generic(u32 p_nKey, u32 p_nValue) {
        return ctl().doIaCmd(p_nKey, IA_CMD_OPT_SET, &p_nValue);
    }
};

TEST_F(DispatchTest, CameraIdMapsToIspChannel) {
    ctl().setChannelID(2);
    EXPECT_EQ(generic(KEY_BRIGHTNESS, 40), 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(34, {40}, 1)});
    EXPECT_EQ(m_objIsp.getValue(1, 34), 40);

    m_objIsp.failCommand(-1, 34, -1, -7); // the ISP's error comes back unchanged
    EXPECT_EQ(generic(KEY_BRIGHTNESS, 40), -7);
    int nValue = 0;
    EXPECT_EQ(ctl().doIaCmd(34, IA_CMD_OPT_GET, &nValue), -7);
}

TEST_F(DispatchTest, ZoomFocusLockHoldsBackOnlyLensCommands) {
    Access::setZoomFocusLock(ctl(), true);
    for (u32 nCmd : {1536u, 1569u, 1616u}) {
        EXPECT_EQ(generic(nCmd, 1), 0) << nCmd;
    }
    EXPECT_TRUE(ispCalls().empty());
    generic(1535, 5);
    generic(1617, 6);
    EXPECT_EQ(ispCalls(), (std::vector<IspCall>{setCall(1535, {5}), setCall(1617, {6})}));

    clearRecords();
    Access::setZoomFocusLock(ctl(), false);
    generic(1536, 2);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(1536, {2})});
}

TEST_F(DispatchTest, UserActionsWaitOutEveryBulkOperation) {
    for (u32 nBit : {Access::initingBit(), Access::resettingBit(), Access::resettingLastBit(),
                     Access::switchingBit()}) {
        Access::setState(ctl(), nBit);
        EXPECT_EQ(user(KEY_ZOOM_IN, 1), 0);
        EXPECT_EQ(user(KEY_AUTO_FOCUS_ONCE, 1), 0);
        Access::clearState(ctl(), nBit);
    }
    EXPECT_TRUE(ispCalls().empty());

    // Releasing the channel is no bulk operation.
    Access::setState(ctl(), Access::uninitingBit());
    user(KEY_ZOOM_IN, 1);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(1569, {1})});
    m_objIsp.failCommand(-1, 1569, -1, -5);
    EXPECT_EQ(user(KEY_ZOOM_IN, 1), -5);
}

TEST_F(DispatchTest, AutofocusOnceNeedsALensAndARequest) {
    EXPECT_EQ(user(KEY_AUTO_FOCUS_ONCE, 0), 0);
    EXPECT_TRUE(ispCalls().empty());
    user(KEY_AUTO_FOCUS_ONCE, 1);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(1539, {1})});

    clearRecords();
    Access::setHasLens(ctl(), false);
    EXPECT_EQ(user(KEY_AUTO_FOCUS_ONCE, 1), 0);
    Access::setThermal(ctl(), true);
    EXPECT_EQ(user(KEY_AUTO_FOCUS_ONCE, 1), 0);
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(ctl().doIaCmd_User(KEY_AUTO_FOCUS_ONCE, IA_CMD_OPT_SET, nullptr), 0);
}

TEST_F(DispatchTest, ThermalChannelAlwaysRunsAutofocusOnce) {
    Access::setThermal(ctl(), true);
    user(KEY_AUTO_FOCUS_ONCE, 0);
    EXPECT_EQ(ispCalls(), std::vector<IspCall>{setCall(1539, {0})});
}

} // namespace
} // namespace sensortest
