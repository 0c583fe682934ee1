// The direct device controls on a mini dome channel: zoom, iris, lens and lock, lights, light
// type, mirror and stored keys, shutter steps along the ISP's list, field-of-view sync.
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
    // those commands on ISP channel 0 as (command, value). The log starts empty again.
    Calls calls(const std::vector<uint32_t>& p_vecCmds = {}) {
        Calls vecCalls;
        for (const IspSimulator::LogEntry& st : m_objIsp.log()) {
            if (p_vecCmds.empty()) {
                vecCalls.emplace_back(st.cmd, st.option);
            } else if (std::count(p_vecCmds.begin(), p_vecCmds.end(), st.cmd) != 0 &&
                       st.option == 0 && st.channel == 0) {
                vecCalls.emplace_back(st.cmd, st.value);
            }
        }
        m_objIsp.clearLog();
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
        EXPECT_TRUE(c.setIrisValue(nAsked));
        EXPECT_EQ((Calls{{kExpose, 3}, {kIris, nSent}}), calls({kExpose, kIris})) << nAsked;
    }
    EXPECT_EQ(1048576, read(&ISensorController::getIrisValue));
    m_objIsp.failCommand(0, kExpose, IA_CMD_OPT_SET, -5);
    EXPECT_EQ(std::vector<bool>(3, false),
              (std::vector<bool>{c.setIrisValue(1000), c.irisUp(), c.irisDown()}));
    EXPECT_TRUE(calls({kIris, 83, 84}).empty());
    m_objIsp.clearFailures();
    EXPECT_EQ(std::vector<bool>(2, true), (std::vector<bool>{c.irisUp(), c.irisDown()}));
    EXPECT_EQ((Calls{{kExpose, 3}, {83, 1}, {kExpose, 3}, {84, 1}}), calls({kExpose, 83, 84}));
}

// Without a lens only zoom steps reach the ISP; the lock answers lens commands without
// sending them, but not iris or the PTZ run state.
TEST_F(DeviceControlTest, LensCommandsWithoutALensOrUnderTheLock) {
    ISensorController& c = upDome("(max_scheme=2)(lensId=0)");
    m_objIsp.setValue(0, kZoom, 24576);
    m_objIsp.setValue(0, 1552, 900);
    EXPECT_EQ(std::vector<bool>(5, true),
              (std::vector<bool>{c.focusFar(), c.focusNear(), c.setZoomValue(20000),
                                 c.setFocusValue(500), c.setPTZRunState(1)}));
    EXPECT_EQ(0, read(&ISensorController::getFocusValue));
    EXPECT_EQ(std::make_tuple(true, 0, kUntouched), zoom());
    EXPECT_TRUE(calls().empty()) << "no ISP traffic without a lens";
    EXPECT_TRUE(c.zoomIn() && c.zoomOut());
    EXPECT_EQ((Calls{{1569, 0}, {1570, 0}}), calls());

    ISensorController& d = upDome();
    m_objIsp.setValue(0, 1607, 41);
    lockLens(d, true);
    SensorZoomFocusParam objRead;
    EXPECT_EQ(0, d.getSensorZoomFocusParam(objRead));
    EXPECT_TRUE(objRead.getLockZoomFocusEnable());
    EXPECT_EQ(std::vector<bool>(4, true), (std::vector<bool>{d.setZoomValue(20000), d.zoomIn(),
                                                             d.focusNear(), d.setFocusMode(1)}));
    EXPECT_EQ(-7, read(&ISensorController::getTempValue)) << "in the locked range: not read";
    EXPECT_EQ(true, read(&ISensorController::getHeatStatus, true));
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(d.setIrisValue(300) && d.setPTZRunState(2));
    EXPECT_EQ((Calls{{kExpose, 3}, {kIris, 300}, {1632, 2}}), calls({kExpose, kIris, 1632}));
    lockLens(d, false);
    m_objIsp.clearLog();
    EXPECT_TRUE(d.setZoomValue(20000));
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

    // The version text ends at its terminator or after all 50 bytes; a refused read leaves it.
    std::vector<uint8_t> vecText(50, 0);
    std::memcpy(vecText.data(), "LENS-7", 6);
    const std::pair<std::vector<uint8_t>, std::string> aTexts[] = {
        {vecText, "LENS-7"}, {std::vector<uint8_t>(50, 'V'), std::string(50, 'V')}};
    for (const auto& [vecRecord, strText] : aTexts) {
        ASSERT_TRUE(m_objIsp.setRecord(0, kVersion, vecRecord));
        EXPECT_EQ(strText, read(&ISensorController::getCameraVerInf, std::string("old")));
    }
    m_objIsp.failCommand(0, kVersion, IA_CMD_OPT_GET, -1);
    std::string strVersion = "kept";
    EXPECT_FALSE(c.getCameraVerInf(strVersion));
    EXPECT_EQ("kept", strVersion);
}

TEST_F(DeviceControlTest, SwitchingOneLightOnSwitchesTheOtherOffFirst) {
    using Setter = bool (ISensorController::*)(int);
    const Setter pIr = &ISensorController::setIRSwitch, pWhite = &ISensorController::setWhiteSwitch;
    ISensorController& c = upDome();
    // (setter, value, white and infrared before, ISP calls as (command, option), white and
    // infrared after): the partner is read and, when on, switched off first; off and other
    // modes leave it unread.
    const std::tuple<Setter, int, int, int, Calls, int, int> aCases[] = {
        {pIr, 1, 1, 0, {{kWhite, 1}, {kWhite, 0}, {kIr, 0}}, 0, 1},
        {pIr, 1, 0, 0, {{kWhite, 1}, {kIr, 0}}, 0, 1},
        {pIr, 0, 1, 1, {{kIr, 0}}, 1, 0},
        {pIr, 2, 1, 1, {{kIr, 0}}, 1, 2},
        {pWhite, 1, 0, 1, {{kIr, 1}, {kIr, 0}, {kWhite, 0}}, 1, 0}};
    for (const auto& [pSet, nValue, nWhite, nIr, vecCalls, nWhiteAfter, nIrAfter] : aCases) {
        SCOPED_TRACE(::testing::Message() << (pSet == pIr ? "ir " : "white ") << nValue);
        m_objIsp.setValue(0, kWhite, nWhite);
        m_objIsp.setValue(0, kIr, nIr);
        m_objIsp.clearLog();
        EXPECT_TRUE((c.*pSet)(nValue));
        EXPECT_EQ(vecCalls, calls());
        EXPECT_EQ(std::make_pair(nWhiteAfter, nIrAfter),
                  std::make_pair(*m_objIsp.getValue(0, kWhite), *m_objIsp.getValue(0, kIr)));
    }
    EXPECT_EQ(1, read(&ISensorController::getWhiteSwitch));
    // A failed partner read or switch-off writes nothing further.
    m_objIsp.setValue(0, kWhite, 1);
    for (const int nOption : {IA_CMD_OPT_GET, IA_CMD_OPT_SET}) {
        m_objIsp.clearFailures();
        m_objIsp.failCommand(0, kWhite, nOption, -3);
        m_objIsp.clearLog();
        EXPECT_FALSE(c.setIRSwitch(1)) << nOption;
        EXPECT_TRUE(calls(nOption == IA_CMD_OPT_GET ? std::vector<uint32_t>{kWhite, kIr}
                                                    : std::vector<uint32_t>{kIr})
                        .empty())
            << nOption;
    }
}

TEST_F(DeviceControlTest, LightTypeWhiteModeMirrorAndStoredAccessors) {
    ISensorController& c = upDome();
    EXPECT_FALSE(c.setLightType(4) || c.setLightType(-1));
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
    constexpr int kUp = 900, kDown = 901, kNone = 902; // other steps set that index
    constexpr int32_t kRefused = -1;                   // the ISP refuses to read the value
    std::vector<int32_t> vecForty(40);
    for (size_t i = 0; i < vecForty.size(); ++i) {
        vecForty[i] = static_cast<int32_t>(i + 1) * 10;
    }
    const std::vector<int32_t> vecFour = {1, 2, 4, 8}, vecRange, vecOdd = {8, 1, 4};
    // (list, empty: a continuous range; current value; step; value written; index after): a
    // value missing from the list, a refused read, no list or a bad index change nothing; of
    // forty values 30 are taken, 29 is the end; 8 is first in the ISP's order. Consecutive writes
    // differ, so the cache skips none.
    const std::tuple<std::vector<int32_t>, int32_t, int, std::optional<int32_t>, std::optional<int>>
        aCases[] = {{vecFour, 3, kNone, {}, {}},    {vecFour, 3, kUp, {}, {}},
                    {vecFour, 3, kDown, {}, {}},    {vecFour, kRefused, kUp, {}, {}},
                    {vecRange, 1, 0, {}, {}},       {vecFour, 2, 4, {}, 1},
                    {vecFour, 2, -1, {}, 1},        {vecFour, 2, 3, 8, 3},
                    {vecForty, 300, kUp, 300, 29},  {vecForty, 300, 30, {}, 29},
                    {vecForty, 310, kDown, {}, {}}, {vecFour, 4, kUp, 8, 3},
                    {vecFour, 4, kDown, 2, 1},      {vecOdd, 1, kUp, 4, 2},
                    {vecFour, 8, kUp, 8, 3},        {vecFour, 1, kDown, 1, 0},
                    {vecFour, 2, kUp, 4, 2},        {vecOdd, 1, kDown, 8, 0}};
    for (const auto& [vecList, nCurrent, nStep, nWritten, nIndex] : aCases) {
        SCOPED_TRACE("list of " + std::to_string(vecList.size()) + " at " +
                     std::to_string(nCurrent) + ", step " + std::to_string(nStep));
        m_objIsp.clearFailures();
        ASSERT_TRUE(m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER}));
        ASSERT_TRUE(m_objIsp.setAttribute(
            0, KEY_MAX_SHUTTER, vecList.empty() ? attr(1, 1, {}) : attr(0, vecList[0], vecList)));
        ASSERT_TRUE(m_objIsp.setValue(0, KEY_MAX_SHUTTER, nCurrent));
        if (nCurrent == kRefused) {
            m_objIsp.failCommand(0, KEY_MAX_SHUTTER, IA_CMD_OPT_GET, -5);
        }
        m_objIsp.clearLog();
        const std::optional<int> nStored = param(KEY_MAX_SHUTTER);
        EXPECT_EQ(nWritten.has_value(), nStep == kUp ? c.shutterUp()
                                        : nStep == kDown
                                            ? c.shutterDown()
                                            : nStep != kNone && c.setShutterValue(nStep));
        EXPECT_EQ(nWritten ? std::vector<int32_t>{*nWritten} : std::vector<int32_t>{},
                  setsOf(KEY_MAX_SHUTTER));
        EXPECT_EQ(nWritten ? nWritten : nStored, param(KEY_MAX_SHUTTER))
            << "a step is stored in the current scheme";
        int nRead = 99;
        const bool bRead = c.getShutterValue(nRead);
        EXPECT_EQ(nIndex, bRead ? std::optional<int>(nRead) : std::nullopt);
        EXPECT_TRUE(bRead || nRead == 99) << "a failed read leaves the index";
    }
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
