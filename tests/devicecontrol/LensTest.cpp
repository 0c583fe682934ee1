// Zoom, focus and iris: the zoom ratio from the breakpoints, the iris clamps,
// the lens and lock rules, and the lens module's version text.
#include "DeviceControlFixture.h"

#include <cstring>

namespace sensortest {

namespace {
constexpr uint32_t kExposeMode = 16;
constexpr uint32_t kIrisPosition = 82;
constexpr uint32_t kIrisUp = 83;
constexpr uint32_t kIrisDown = 84;
constexpr uint32_t kFocusMode = 1536;
constexpr uint32_t kFocusPosition = 1552;
constexpr uint32_t kFocusFar = 1554;
constexpr uint32_t kZoomPosition = 1568;
constexpr uint32_t kZoomIn = 1569;
constexpr uint32_t kZoomOut = 1570;
constexpr uint32_t kPtzRunState = 1632;
constexpr uint32_t kVersion = 2496;
constexpr int kUntouched = -7;
} // namespace

using LensTest = DeviceControlTest;

TEST_F(LensTest, ZoomRatioFollowsTheBreakpoints) {
    ISensorController& c = upMini();
    const struct {
        int nPos;
        int nRatio;
    } aCases[] = {{-5, 1000},     {0, 1000},      {16384, 1000},      {16385, 1001},
                  {24576, 2000},  {26000, 2530},  {27264, 3000},      {30000, 7945},
                  {31423, 15995}, {31424, 16000}, {31425, kUntouched}};
    for (const auto& stCase : aCases) {
        ASSERT_TRUE(m_objIsp.setValue(0, kZoomPosition, stCase.nPos));
        int nPos = 0;
        int nRatio = kUntouched;
        EXPECT_TRUE(c.getZoomValue(nPos, nRatio)) << stCase.nPos;
        EXPECT_EQ(stCase.nPos, nPos);
        EXPECT_EQ(stCase.nRatio, nRatio) << "position " << stCase.nPos;
    }
}

TEST_F(LensTest, RefusedZoomReadIsFalseAndLeavesTheRatio) {
    ISensorController& c = upMini();
    m_objIsp.failCommand(0, kZoomPosition, IA_CMD_OPT_GET, -9);
    int nPos = 123;
    int nRatio = kUntouched;
    EXPECT_FALSE(c.getZoomValue(nPos, nRatio));
    EXPECT_EQ(kUntouched, nRatio);
}

TEST_F(LensTest, IrisValuesAreClampedAfterExposureModeThree) {
    ISensorController& c = upMini();
    const std::pair<int, int32_t> aCases[] = {{100, 256},     {255, 256},       {256, 256},
                                              {25600, 25600}, {25601, 1048576}, {30000, 1048576}};
    for (const auto& [nAsked, nSent] : aCases) {
        m_objIsp.clearLog();
        EXPECT_TRUE(c.setIrisValue(nAsked));
        using Sets = std::vector<std::pair<uint32_t, int32_t>>;
        EXPECT_EQ((Sets{{kExposeMode, 3}, {kIrisPosition, nSent}}),
                  setsAmong({kExposeMode, kIrisPosition}))
            << "asked " << nAsked;
    }
    int nIris = 0;
    EXPECT_TRUE(c.getIrisValue(nIris));
    EXPECT_EQ(1048576, nIris);
}

TEST_F(LensTest, RefusedExposureModeStopsEveryIrisMove) {
    ISensorController& c = upMini();
    m_objIsp.failCommand(0, kExposeMode, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.setIrisValue(1000));
    EXPECT_FALSE(c.irisUp());
    EXPECT_FALSE(c.irisDown());
    EXPECT_TRUE(setsAmong({kIrisPosition, kIrisUp, kIrisDown}).empty());

    m_objIsp.clearFailures();
    m_objIsp.clearLog();
    EXPECT_TRUE(c.irisUp());
    EXPECT_TRUE(c.irisDown());
    using Sets = std::vector<std::pair<uint32_t, int32_t>>;
    EXPECT_EQ((Sets{{kExposeMode, 3}, {kIrisUp, 1}, {kExposeMode, 3}, {kIrisDown, 1}}),
              setsAmong({kExposeMode, kIrisUp, kIrisDown}));
}

TEST_F(LensTest, FocusStepIgnoresTheModeAndReportsTheStep) {
    ISensorController& c = upMini();
    m_objIsp.failCommand(0, kFocusMode, IA_CMD_OPT_SET, -5);
    EXPECT_TRUE(c.focusFar()) << "a refused focus mode does not decide";
    m_objIsp.failCommand(0, kFocusFar, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.focusFar());
    EXPECT_EQ((std::vector<std::pair<uint32_t, int>>{
                  {kFocusMode, 0}, {kFocusFar, 0}, {kFocusMode, 0}, {kFocusFar, 0}}),
              calls());
}

TEST_F(LensTest, WithoutALensOnlyZoomStepsReachTheIsp) {
    ISensorController& c = upMini("(max_scheme=2)(lensId=0)");
    ASSERT_FALSE(ISensorControllerTestAccess::hasLens(c));
    m_objIsp.setValue(0, kZoomPosition, 24576);
    m_objIsp.setValue(0, kFocusPosition, 900);

    EXPECT_TRUE(c.focusFar());
    EXPECT_TRUE(c.focusNear());
    EXPECT_TRUE(c.setZoomValue(20000));
    EXPECT_TRUE(c.setFocusValue(500));
    EXPECT_TRUE(c.setPTZRunState(1));
    int nFocus = 77;
    EXPECT_TRUE(c.getFocusValue(nFocus));
    EXPECT_EQ(0, nFocus);
    int nPos = 77;
    int nRatio = kUntouched;
    EXPECT_TRUE(c.getZoomValue(nPos, nRatio));
    EXPECT_EQ(0, nPos);
    EXPECT_EQ(kUntouched, nRatio);
    EXPECT_TRUE(calls().empty()) << "no ISP traffic without a lens";

    EXPECT_TRUE(c.zoomIn());
    EXPECT_TRUE(c.zoomOut());
    EXPECT_EQ((std::vector<std::pair<uint32_t, int>>{{kZoomIn, 0}, {kZoomOut, 0}}), calls());
}

TEST_F(LensTest, LockAnswersLensCommandsWithoutSendingThem) {
    ISensorController& c = upMini();
    m_objIsp.setValue(0, 1607, 41);
    lockLens(c, true);
    SensorZoomFocusParam objRead;
    EXPECT_EQ(0, c.getSensorZoomFocusParam(objRead));
    EXPECT_TRUE(objRead.getLockZoomFocusEnable());

    EXPECT_TRUE(c.setZoomValue(20000));
    EXPECT_TRUE(c.zoomIn());
    EXPECT_TRUE(c.focusNear());
    EXPECT_TRUE(c.setFocusMode(1));
    int nTemp = -3;
    EXPECT_TRUE(c.getTempValue(nTemp));
    EXPECT_EQ(-3, nTemp) << "the temperature lies in the locked range and is not read";
    bool bHeat = true;
    EXPECT_TRUE(c.getHeatStatus(bHeat));
    EXPECT_TRUE(bHeat);
    EXPECT_TRUE(calls().empty());

    // Iris and PTZ run state are outside the locked range.
    EXPECT_TRUE(c.setIrisValue(300));
    EXPECT_TRUE(c.setPTZRunState(2));
    using Sets = std::vector<std::pair<uint32_t, int32_t>>;
    EXPECT_EQ((Sets{{kExposeMode, 3}, {kIrisPosition, 300}, {kPtzRunState, 2}}),
              setsAmong({kExposeMode, kIrisPosition, kPtzRunState}));

    lockLens(c, false);
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setZoomValue(20000));
    EXPECT_TRUE(c.getTempValue(nTemp));
    EXPECT_EQ(41, nTemp);
    EXPECT_EQ((Sets{{kZoomPosition, 20000}}), setsAmong({kZoomPosition}));
}

TEST_F(LensTest, DirectLensReadsAndExecStatus) {
    ISensorController& c = upMini();
    m_objIsp.setValue(0, kFocusMode, 2);
    m_objIsp.setValue(0, 1648, 123456);
    m_objIsp.setExecStatus(0, kZoomPosition, 3);
    int nMode = 0;
    EXPECT_TRUE(c.getFocusMode(nMode));
    EXPECT_EQ(2, nMode);
    unsigned int nStat = 0;
    EXPECT_TRUE(c.getAFStatistic(nStat));
    EXPECT_EQ(123456u, nStat);
    int nStatus = 0;
    EXPECT_TRUE(c.getCmdExecStatus(kZoomPosition, nStatus));
    EXPECT_EQ(3, nStatus);
    m_objIsp.failCommand(0, kZoomPosition, IA_CMD_OPT_EXEC_STATUS, -4);
    EXPECT_FALSE(c.getCmdExecStatus(kZoomPosition, nStatus));
}

TEST_F(LensTest, VersionTextIsBoundedAndKeptOnFailure) {
    ISensorController& c = upMini();
    std::vector<uint8_t> vecText(50, 0);
    std::memcpy(vecText.data(), "LENS-7", 6);
    ASSERT_TRUE(m_objIsp.setRecord(0, kVersion, vecText));
    std::string strVersion = "old";
    EXPECT_TRUE(c.getCameraVerInf(strVersion));
    EXPECT_EQ("LENS-7", strVersion);

    // A text that fills all 50 bytes has no terminator: exactly 50 are taken.
    ASSERT_TRUE(m_objIsp.setRecord(0, kVersion, std::vector<uint8_t>(50, 'V')));
    EXPECT_TRUE(c.getCameraVerInf(strVersion));
    EXPECT_EQ(std::string(50, 'V'), strVersion);

    m_objIsp.failCommand(0, kVersion, IA_CMD_OPT_GET, -1);
    strVersion = "kept";
    EXPECT_FALSE(c.getCameraVerInf(strVersion));
    EXPECT_EQ("kept", strVersion);
}

} // namespace sensortest
