// The direct device controls on a mini dome channel: zoom ratio, iris clamps, lens
// and lock rules, the lens module's version text; lights, light type, mirror and
// stored keys; shutter steps along the ISP's list; field-of-view sync.
#include "ChannelFixture.h"

#include <cstring>
#include <tuple>

namespace sensortest {

namespace {
using Calls = std::vector<std::pair<uint32_t, int>>; // (command, option or value)
constexpr uint32_t kExpose = 16, kIris = 82, kFocusMode = 1536, kZoom = 1568, kVersion = 2496;
constexpr uint32_t kIr = 160, kWhite = 168, kWhiteMode = 169; // the commands of keys 170, 171
constexpr int kUntouched = -7;
} // namespace

class DeviceControlTest : public ChannelTest {
protected:
    // A dome (type 4); "(lensId=1)" fits a lens.
    ISensorController& upDome(const std::string& p_strDetail = "(max_scheme=2)(lensId=1)",
                              int p_nChannel = 1) {
        return upMini(4, p_strDetail, p_nChannel);
    }
    // Every ISP call so far as (command, option); given p_vecCmds, the SET calls of
    // those commands on ISP channel 0 as (command, value).
    Calls calls(const std::vector<uint32_t>& p_vecCmds = {}) const {
        Calls vecCalls;
        for (const IspSimulator::LogEntry& st : m_objIsp.log()) {
            if (p_vecCmds.empty()) {
                vecCalls.emplace_back(st.cmd, st.option);
            } else if (std::count(p_vecCmds.begin(), p_vecCmds.end(), st.cmd) != 0 &&
                       st.option == 0 && st.channel == 0) {
                vecCalls.emplace_back(st.cmd, st.value);
            }
        }
        return vecCalls;
    }
    void lockLens(ISensorController& c, bool p_bOn) {
        SensorZoomFocusParam objParam;
        c.getSensorZoomFocusParam(objParam);
        objParam.setLockZoomFocusEnable(p_bOn);
        c.setSensorZoomFocusParam(objParam);
    }
    // What getZoomValue answers, with the position and ratio it read into 77 and kUntouched.
    std::tuple<bool, int, int> zoom() {
        int nPos = 77, nRatio = kUntouched;
        const bool bRead = m_pController->getZoomValue(nPos, nRatio);
        return {bRead, nPos, nRatio};
    }
    // The ISP lists p_vecItems as the allowed maximum-shutter values, p_nCurrent the present one.
    void offer(const std::vector<int32_t>& p_vecItems, int32_t p_nCurrent) {
        ASSERT_TRUE(m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER}));
        ASSERT_TRUE(m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(0, p_vecItems[0], p_vecItems)));
        ASSERT_TRUE(m_objIsp.setValue(0, KEY_MAX_SHUTTER, p_nCurrent));
        m_objIsp.clearLog();
    }
    std::vector<int32_t> writes() const { return setsOf(KEY_MAX_SHUTTER); }
    std::optional<int> index() const { return read(&ISensorController::getShutterValue); }
    // Runs the sync on p_szFile (nullptr: no file) and returns what it printed.
    std::string sync(ISensorController& c, const char* p_szFile) {
        if (p_szFile != nullptr) {
            m_objRoot.writeFile("/mnt/mtd/hd1/program/config/sync_fov.ini", p_szFile);
        }
        m_objIsp.clearLog();
        testing::internal::CaptureStdout();
        EXPECT_EQ(1, c.sync_fov());
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(DeviceControlTest, ZoomRatioFollowsTheBreakpoints) {
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

TEST_F(DeviceControlTest, IrisIsClampedAfterExposureModeThreeWhichMustSucceed) {
    ISensorController& c = upDome();
    const std::pair<int, int32_t> aCases[] = {{100, 256},     {255, 256},       {256, 256},
                                              {25600, 25600}, {25601, 1048576}, {30000, 1048576}};
    for (const auto& [nAsked, nSent] : aCases) {
        m_objIsp.clearLog();
        EXPECT_TRUE(c.setIrisValue(nAsked));
        EXPECT_EQ((Calls{{kExpose, 3}, {kIris, nSent}}), calls({kExpose, kIris})) << nAsked;
    }
    EXPECT_EQ(1048576, read(&ISensorController::getIrisValue));

    m_objIsp.failCommand(0, kExpose, IA_CMD_OPT_SET, -5);
    m_objIsp.clearLog();
    EXPECT_EQ(std::vector<bool>(3, false),
              (std::vector<bool>{c.setIrisValue(1000), c.irisUp(), c.irisDown()}));
    EXPECT_TRUE(calls({kIris, 83, 84}).empty());
    m_objIsp.clearFailures();
    m_objIsp.clearLog();
    EXPECT_EQ(std::vector<bool>(2, true), (std::vector<bool>{c.irisUp(), c.irisDown()}));
    EXPECT_EQ((Calls{{kExpose, 3}, {83, 1}, {kExpose, 3}, {84, 1}}), calls({kExpose, 83, 84}));
}

TEST_F(DeviceControlTest, WithoutALensOnlyZoomStepsReachTheIsp) {
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

TEST_F(DeviceControlTest, LockAnswersLensCommandsWithoutSendingThem) {
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
    EXPECT_EQ((Calls{{kExpose, 3}, {kIris, 300}, {1632, 2}}), calls({kExpose, kIris, 1632}));

    lockLens(c, false);
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setZoomValue(20000));
    EXPECT_EQ(41, read(&ISensorController::getTempValue));
    EXPECT_EQ((Calls{{kZoom, 20000}}), calls({kZoom}));
}

TEST_F(DeviceControlTest, FocusStepDirectReadsExecStatusAndVersionText) {
    ISensorController& c = upDome();
    m_objIsp.failCommand(0, kFocusMode, IA_CMD_OPT_SET, -5);
    EXPECT_TRUE(c.focusFar()) << "a refused focus mode does not decide";
    m_objIsp.failCommand(0, 1554, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.focusFar());
    EXPECT_EQ((Calls{{kFocusMode, 0}, {1554, 0}, {kFocusMode, 0}, {1554, 0}}), calls());

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

TEST_F(DeviceControlTest, SwitchingOneLightOnSwitchesTheOtherOffFirst) {
    using Setter = bool (ISensorController::*)(int);
    const std::tuple<Setter, uint32_t, uint32_t> aCases[] = {
        {&ISensorController::setIRSwitch, kIr, kWhite},
        {&ISensorController::setWhiteSwitch, kWhite, kIr}};
    ISensorController& c = upDome();
    for (const auto& [pSet, nOwn, nPartner] : aCases) {
        SCOPED_TRACE(nOwn);
        m_objIsp.setValue(0, nOwn, 0);
        m_objIsp.setValue(0, nPartner, 1);
        m_objIsp.clearLog();
        EXPECT_TRUE((c.*pSet)(1));
        EXPECT_EQ((Calls{{nPartner, 1}, {nPartner, 0}, {nOwn, 0}}), calls());
        EXPECT_EQ((Calls{{nPartner, 0}, {nOwn, 1}}), calls({kWhite, kIr}));
        // The partner already off: only this light is written.
        m_objIsp.clearLog();
        EXPECT_TRUE((c.*pSet)(1));
        EXPECT_EQ((Calls{{nOwn, 1}}), calls({kWhite, kIr}));
    }
    EXPECT_EQ(1, read(&ISensorController::getWhiteSwitch));

    // Off and other modes leave the partner alone, without reading it.
    m_objIsp.clearLog();
    EXPECT_TRUE(c.setIRSwitch(0));
    EXPECT_TRUE(c.setIRSwitch(2));
    EXPECT_EQ((Calls{{kIr, 0}, {kIr, 0}}), calls());
    EXPECT_EQ(1, *m_objIsp.getValue(0, kWhite));

    // A failed partner read or switch-off writes nothing further.
    m_objIsp.failCommand(0, kWhite, IA_CMD_OPT_GET, -3);
    m_objIsp.clearLog();
    EXPECT_FALSE(c.setIRSwitch(1));
    EXPECT_TRUE(calls({kWhite, kIr}).empty());
    m_objIsp.clearFailures();
    m_objIsp.failCommand(0, kWhite, IA_CMD_OPT_SET, -5);
    EXPECT_FALSE(c.setIRSwitch(1)) << "white light could not be switched off";
    EXPECT_TRUE(calls({kIr}).empty());
}

TEST_F(DeviceControlTest, LightTypeWhiteModeMirrorAndStoredAccessors) {
    ISensorController& c = upDome();
    EXPECT_FALSE(c.setLightType(4));
    EXPECT_FALSE(c.setLightType(-1));
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(c.setLightType(3));
    EXPECT_EQ(std::vector<int32_t>{3}, setsOf(224));
    EXPECT_EQ(3, read(&ISensorController::getLightType));
    // White mode by key 171, sent and read as command 169.
    EXPECT_TRUE(c.setWhiteMode(2));
    EXPECT_EQ(std::vector<int32_t>{2}, setsOf(kWhiteMode));
    m_objIsp.setValue(0, kWhiteMode, 5);
    EXPECT_EQ(5, read(&ISensorController::getWhiteMode));
    // Stored accessors write the current scheme.
    EXPECT_TRUE(c.setDNMode(1));
    EXPECT_EQ(1, read(&ISensorController::getDNMode));
    EXPECT_EQ(1u, valueOf(Access::row(c, 0), KEY_DN_MODE));
    EXPECT_EQ(std::vector<int32_t>{1}, setsOf(KEY_DN_MODE));
    // A key the mini set lacks is read from the ISP; a refused read is false.
    m_objIsp.setValue(0, KEY_WDR_STRG, 33);
    EXPECT_EQ(33, read(&ISensorController::getWDRStrength));
    m_objIsp.failCommand(0, KEY_WDR_STRG, IA_CMD_OPT_GET, -5);
    EXPECT_EQ(std::nullopt, read(&ISensorController::getWDRStrength));
    // The mirror flushes the unsaved changes only when the ISP took it.
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

TEST_F(DeviceControlTest, ShutterStepsFollowTheIspListAndRefusalsChangeNothing) {
    ISensorController& c = upDome();
    // A missing value, a refused read, no list or a bad index change nothing.
    const std::optional<int> nBefore = param(KEY_MAX_SHUTTER);
    offer({1, 2, 4, 8}, 3);
    int nIndex = 99;
    EXPECT_FALSE(c.getShutterValue(nIndex));
    EXPECT_EQ(99, nIndex);
    EXPECT_EQ(std::vector<bool>(2, false), (std::vector<bool>{c.shutterUp(), c.shutterDown()}));
    offer({1, 2}, 1);
    m_objIsp.failCommand(0, KEY_MAX_SHUTTER, IA_CMD_OPT_GET, -5);
    EXPECT_EQ(std::nullopt, index());
    EXPECT_FALSE(c.shutterUp());
    m_objIsp.clearFailures();
    // A continuous range gives no list: nothing can be chosen by index.
    ASSERT_TRUE(m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(1, 1, {})));
    EXPECT_FALSE(c.setShutterValue(0));
    EXPECT_EQ(std::nullopt, index());
    EXPECT_TRUE(writes().empty());
    EXPECT_EQ(nBefore, param(KEY_MAX_SHUTTER));

    offer({1, 2, 4, 8}, 2);
    EXPECT_FALSE(c.setShutterValue(4));
    EXPECT_FALSE(c.setShutterValue(-1));
    EXPECT_TRUE(writes().empty());
    EXPECT_TRUE(c.setShutterValue(3));
    EXPECT_EQ(std::vector<int32_t>{8}, writes());
    EXPECT_EQ(8, param(KEY_MAX_SHUTTER));
    EXPECT_EQ(3, index());

    std::vector<int32_t> vecItems;
    for (int32_t v = 1; v <= 40; ++v) {
        vecItems.push_back(v * 10);
    }
    offer(vecItems, 300); // index 29, the last one taken
    EXPECT_EQ(29, index());
    EXPECT_TRUE(c.shutterUp());
    EXPECT_EQ(std::vector<int32_t>{300}, writes()) << "index 29 is the end of the list";
    EXPECT_FALSE(c.setShutterValue(30));
    m_objIsp.setValue(0, KEY_MAX_SHUTTER, 310);
    EXPECT_EQ(std::nullopt, index()) << "the 31st value is not in the list";
    EXPECT_FALSE(c.shutterDown());

    const std::tuple<std::vector<int32_t>, int32_t, bool, int32_t> aCases[] = {
        {{1, 2, 4, 8}, 4, true, 8}, {{1, 2, 4, 8}, 4, false, 2}, {{8, 1, 4}, 1, true, 4},
        {{1, 2, 4, 8}, 8, true, 8}, {{1, 2, 4, 8}, 1, false, 1}, {{1, 2, 4, 8}, 2, true, 4},
        {{8, 1, 4}, 1, false, 8}}; // consecutive writes differ: the cache skips none
    for (const auto& [vecList, nCurrent, bUp, nWritten] : aCases) {
        SCOPED_TRACE((bUp ? "up from " : "down from ") + std::to_string(nCurrent));
        offer(vecList, nCurrent);
        EXPECT_TRUE(bUp ? c.shutterUp() : c.shutterDown());
        EXPECT_EQ(std::vector<int32_t>{nWritten}, writes());
        EXPECT_EQ(nWritten, param(KEY_MAX_SHUTTER)) << "the step is stored in the current scheme";
    }
    EXPECT_EQ(0, index()) << "8 is first in the ISP's order";
}

// Entries, comma rule, substring search, one printed line per line.
TEST_F(DeviceControlTest, LinesPrintedAndZoomSentPerCalibrationFileAndChannel) {
    const std::tuple<const char*, const char*, int32_t> aCases[] = {
        {nullptr, "", 0}, // no file yet; zoom 0: none sent
        {"", "", 0},
        // Both entries on one line stop the search.
        {"zoom1=12000,focus1=3400,\nzoom1=500,focus1=600,\n", "zoom= 12000,focus= 3400 \n", 12000},
        // Entries on two lines carry over; the search stops before 999.
        {"[fov]\nzoom1=12000,\nfocus1=3400,\nzoom1=999,\n",
         "zoom= -1,focus= -1 \nzoom= 12000,focus= -1 \nzoom= 12000,focus= 3400 \n", 12000},
        // An entry without a comma after its value is ignored ...
        {"zoom1=5000\nfocus1=3400,\n", "zoom= -1,focus= -1 \nzoom= -1,focus= 3400 \n", 0},
        // ... so the whole file is read, and the zoom alone is still sent.
        {"zoom1=12000,focus1=3400\nnothing here\n",
         "zoom= 12000,focus= -1 \nzoom= 12000,focus= -1 \n", 12000},
        // Channel 12's entries hold the needle of channel 1.
        {"zoom12=7000,focus12=800,\n", "zoom= 7000,focus= 800 \n", 7000},
        // A zoom that is no positive number is not sent.
        {"zoom1=abc,focus1=5,\nzoom1= -30,focus1= 40,\n",
         "zoom= 0,focus= 5 \nzoom= -30,focus= 40 \n", 0}};
    ISensorController& c = upDome();
    for (const auto& [szFile, szPrinted, nZoom] : aCases) {
        SCOPED_TRACE(szFile == nullptr ? "(no file)" : szFile);
        EXPECT_EQ(szPrinted, sync(c, szFile));
        EXPECT_EQ(nZoom == 0 ? std::vector<int32_t>{} : std::vector<int32_t>{nZoom}, setsOf(kZoom));
    }

    // Channel 2 reads its own entries; without a lens nothing is sent.
    ISensorController& d = upDome("(max_scheme=2)(lensId=1)", 2);
    EXPECT_EQ("zoom= 2500,focus= 20 \n", sync(d, "zoom1=1500,focus1=10,zoom2=2500,focus2=20,\n"));
    EXPECT_EQ(std::vector<int32_t>{2500}, setsOf(kZoom, 1));
    ISensorController& e = upDome("(max_scheme=2)(lensId=0)");
    EXPECT_EQ("zoom= 12000,focus= 3400 \n", sync(e, "zoom1=12000,focus1=3400,\n"));
    EXPECT_TRUE(calls().empty());
}

} // namespace sensortest
