// Zoom ratio, iris clamps, lens and lock rules, and the lens module's version text.
#include "DeviceControlFixture.h"

#include <cstring>
#include <tuple>

namespace sensortest {

namespace {
constexpr uint32_t kExpose = 16;
constexpr uint32_t kIris = 82;
constexpr uint32_t kFocusMode = 1536;
constexpr uint32_t kZoom = 1568;
constexpr uint32_t kVersion = 2496;
constexpr int kUntouched = -7;
} // namespace

class LensTest : public DeviceControlTest {
protected:
    // What getZoomValue answers, with the position and ratio it read into 77 and kUntouched.
    std::tuple<bool, int, int> zoom() {
        int nPos = 77, nRatio = kUntouched;
        const bool bRead = m_pController->getZoomValue(nPos, nRatio);
        return {bRead, nPos, nRatio};
    }
};

TEST_F(LensTest, ZoomRatioFollowsTheBreakpoints) {
    upDome();
    const std::pair<int, int> aCases[] = {{-5, 1000},     {0, 1000},          {16384, 1000},
                                          {16385, 1001},  {24576, 2000},      {26000, 2530},
                                          {27264, 3000},  {30000, 7945},      {31423, 15995},
                                          {31424, 16000}, {31425, kUntouched}};
    for (const auto& [nPos, nRatio] : aCases) {
        ASSERT_TRUE(m_objIsp.setValue(0, kZoom, nPos));
        EXPECT_EQ(std::make_tuple(true, nPos, nRatio), zoom()) << "position " << nPos;
    }
    m_objIsp.failCommand(0, kZoom, IA_CMD_OPT_GET, -9);
    EXPECT_EQ(std::make_tuple(false, 77, kUntouched), zoom()) << "a refused read leaves both";
}

TEST_F(LensTest, IrisIsClampedAfterExposureModeThreeWhichMustSucceed) {
    ISensorController& c = upDome();
    const std::pair<int, int32_t> aCases[] = {{100, 256},     {255, 256},       {256, 256},
                                              {25600, 25600}, {25601, 1048576}, {30000, 1048576}};
    for (const auto& [nAsked, nSent] : aCases) {
        m_objIsp.clearLog();
        EXPECT_TRUE(c.setIrisValue(nAsked));
        EXPECT_EQ((Sets{{kExpose, 3}, {kIris, nSent}}), setsAmong({kExpose, kIris})) << nAsked;
    }
    EXPECT_EQ(1048576, read(&ISensorController::getIrisValue));

    m_objIsp.failCommand(0, kExpose, IA_CMD_OPT_SET, -5);
    m_objIsp.clearLog();
    EXPECT_FALSE(c.setIrisValue(1000));
    EXPECT_FALSE(c.irisUp());
    EXPECT_FALSE(c.irisDown());
    EXPECT_TRUE(setsAmong({kIris, 83, 84}).empty());
    m_objIsp.clearFailures();
    m_objIsp.clearLog();
    EXPECT_TRUE(c.irisUp());
    EXPECT_TRUE(c.irisDown());
    EXPECT_EQ((Sets{{kExpose, 3}, {83, 1}, {kExpose, 3}, {84, 1}}), setsAmong({kExpose, 83, 84}));
}

TEST_F(LensTest, FocusStepIgnoresTheModeAndReportsTheStep) {
    ISensorController& c = upDome();
    m_objIsp.failCommand(0, kFocusMode, IA_CMD_OPT_SET, -5);
    EXPECT_TRUE(c.focusFar()) << "a refused focus mode does not decide";
    m_objIsp.failCommand(0, 1554, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.focusFar());
    EXPECT_EQ((Calls{{kFocusMode, 0}, {1554, 0}, {kFocusMode, 0}, {1554, 0}}), calls());
}

TEST_F(LensTest, WithoutALensOnlyZoomStepsReachTheIsp) {
    ISensorController& c = upDome("(max_scheme=2)(lensId=0)");
    m_objIsp.setValue(0, kZoom, 24576);
    m_objIsp.setValue(0, 1552, 900);
    EXPECT_EQ(std::vector<bool>(5, true),
              (std::vector<bool>{c.focusFar(), c.focusNear(), c.setZoomValue(20000),
                                 c.setFocusValue(500), c.setPTZRunState(1)}));
    EXPECT_EQ(0, read(&ISensorController::getFocusValue));
    EXPECT_EQ(std::make_tuple(true, 0, kUntouched), zoom());
    EXPECT_TRUE(calls().empty()) << "no ISP traffic without a lens";
    EXPECT_TRUE(c.zoomIn());
    EXPECT_TRUE(c.zoomOut());
    EXPECT_EQ((Calls{{1569, 0}, {1570, 0}}), calls());
}

TEST_F(LensTest, LockAnswersLensCommandsWithoutSendingThem) {
    ISensorController& c = upDome();
    m_objIsp.setValue(0, 1607, 41);
    lockLens(c, true);
    SensorZoomFocusParam objRead;
    EXPECT_EQ(0, c.getSensorZoomFocusParam(objRead));
    EXPECT_TRUE(objRead.getLockZoomFocusEnable());
    EXPECT_EQ(std::vector<bool>(4, true), (std::vector<bool>{c.setZoomValue(20000), c.zoomIn(),
                                                             c.focusNear(), c.setFocusMode(1)}));
    EXPECT_EQ(-7, read(&ISensorController::getTempValue)) << "in the locked range: not read";
    EXPECT_EQ(true, read(&ISensorController::getHeatStatus, true));
    EXPECT_TRUE(calls().empty());
    // Iris and PTZ run state are outside the locked range.
    EXPECT_TRUE(c.setIrisValue(300));
    EXPECT_TRUE(c.setPTZRunState(2));
    EXPECT_EQ((Sets{{kExpose, 3}, {kIris, 300}, {1632, 2}}), setsAmong({kExpose, kIris, 1632}));

    lockLens(c, false);
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setZoomValue(20000));
    EXPECT_EQ(41, read(&ISensorController::getTempValue));
    EXPECT_EQ((Sets{{kZoom, 20000}}), setsAmong({kZoom}));
}

TEST_F(LensTest, DirectLensReadsExecStatusAndVersionText) {
    ISensorController& c = upDome();
    m_objIsp.setValue(0, kFocusMode, 2);
    m_objIsp.setValue(0, 1648, 123456);
    m_objIsp.setExecStatus(0, kZoom, 3);
    EXPECT_EQ(2, read(&ISensorController::getFocusMode));
    EXPECT_EQ(123456u, read(&ISensorController::getAFStatistic));
    int nStatus = 0;
    EXPECT_TRUE(c.getCmdExecStatus(kZoom, nStatus));
    EXPECT_EQ(3, nStatus);
    m_objIsp.failCommand(0, kZoom, IA_CMD_OPT_EXEC_STATUS, -4);
    EXPECT_FALSE(c.getCmdExecStatus(kZoom, nStatus));

    std::vector<uint8_t> vecText(50, 0);
    std::memcpy(vecText.data(), "LENS-7", 6);
    ASSERT_TRUE(m_objIsp.setRecord(0, kVersion, vecText));
    const auto version = [&] {
        return read(&ISensorController::getCameraVerInf, std::string("old"));
    };
    EXPECT_EQ("LENS-7", version());
    // A text that fills all 50 bytes has no terminator: exactly 50 are taken.
    ASSERT_TRUE(m_objIsp.setRecord(0, kVersion, std::vector<uint8_t>(50, 'V')));
    EXPECT_EQ(std::string(50, 'V'), version());
    m_objIsp.failCommand(0, kVersion, IA_CMD_OPT_GET, -1);
    std::string strVersion = "kept";
    EXPECT_FALSE(c.getCameraVerInf(strVersion));
    EXPECT_EQ("kept", strVersion);
}

} // namespace sensortest
