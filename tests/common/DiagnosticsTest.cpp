// The diagnostics: level and abort switch from the marker file, exact console
// texts, the error log, and the abort.
#define SNS_SOURCE_UNIT "SensorFile"

#include <gtest/gtest.h>

#include <string>

#include "common/SensorDebug.h"
#include "support/TestSupport.h"

using sensortest::TempDeviceRoot;

namespace {

const std::string kLogPath = "/mnt/mtd/log/SensorError.log";

class DiagnosticsTest : public ::testing::Test {
protected:
    void setMarker(const std::string& p_strContent) {
        m_objRoot.writeFile("/tmp/Debug.sign", p_strContent);
    }
    std::string errorLog() const {
        return m_objRoot.exists(kLogPath) ? m_objRoot.readFile(kLogPath) : std::string();
    }

    TempDeviceRoot m_objRoot;
};

// Each helper prints from a named function so the header's function name is known.
void traceAll() {
    SNS_DBG("dbg %d\n", 1);
    SNS_INFO("info %d\n", 2);
    SNS_WARN("warn %d\n", 3);
    SNS_ERR("err %d\n", 4);
}

int g_nFailCheckLine = 0;

void failCheck() {
    g_nFailCheckLine = __LINE__ + 1;
    SNS_ASSERT(1 + 1 == 3, "nScheme(%d)\n", 7);
}

void failCheckEmptyMessage() {
    SNS_ASSERT(0 != 0, "");
}

std::string capture(void (*p_fn)()) {
    ::testing::internal::CaptureStdout();
    p_fn();
    fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

} // namespace

TEST_F(DiagnosticsTest, NoMarkerFileMeansLevelOneAndNoAbort) {
    g_nDebugLevel = 9;
    g_bEnAssert = true;
    updateDebugLevel();
    EXPECT_EQ(1, g_nDebugLevel.load());
    EXPECT_FALSE(g_bEnAssert.load());

    EXPECT_EQ("", capture(traceAll));
    EXPECT_EQ("", errorLog()) << "a silent warning must not be logged either";

    const std::string strOut = capture(failCheck);
    const int nLine = g_nFailCheckLine;
    EXPECT_EQ("\033[0m\033[31m[sensor assert] file:SensorFile fun:failCheck line:" +
                  std::to_string(nLine) + "\n1 + 1 == 3   ~~~Assertion failed.\n\033[0m" +
                  "\033[0m\033[31mnScheme(7)\n\033[0m",
              strOut);
    const std::string strLog = errorLog();
    EXPECT_NE(std::string::npos, strLog.find("[sensor assert] file:SensorFile fun:failCheck line:" +
                                             std::to_string(nLine) + "\n"));
    EXPECT_NE(std::string::npos,
              strLog.find("[sensor assert] 1 + 1 == 3   ~~~Assertion failed.\n"));
    EXPECT_NE(std::string::npos, strLog.find("[sensor assert] nScheme(7)\n"));
}

TEST_F(DiagnosticsTest, LevelSixShowsDbgAndErrButNotInfo) {
    setMarker("6\n0\n");
    const std::string strOut = capture(traceAll);
    EXPECT_NE(std::string::npos,
              strOut.find("\033[0m\033[0m[sensor dbg] file:SensorFile fun:traceAll line:"));
    EXPECT_NE(std::string::npos, strOut.find("dbg 1\n\033[0m"));
    EXPECT_EQ(std::string::npos, strOut.find("[sensor info]"));
    EXPECT_NE(std::string::npos, strOut.find("[sensor warn]"));
    EXPECT_NE(std::string::npos, strOut.find("[sensor err] file:SensorFile fun:traceAll"));

    setMarker("7\n");
    EXPECT_NE(std::string::npos,
              capture(traceAll).find("\033[0m\033[35m[sensor info] file:SensorFile fun:traceAll"));
}

TEST_F(DiagnosticsTest, WarningAtLevelFourGoesToConsoleAndLog) {
    setMarker("4");
    const std::string strOut = capture(traceAll);
    EXPECT_NE(std::string::npos, strOut.find("[sensor warn] file:SensorFile fun:traceAll"));
    EXPECT_EQ(std::string::npos, strOut.find("[sensor dbg]"));
    const std::string strLog = errorLog();
    EXPECT_NE(std::string::npos, strLog.find("[sensor warn] file:SensorFile fun:traceAll line:"));
    EXPECT_NE(std::string::npos, strLog.find("[sensor warn] warn 3\n"));
    EXPECT_EQ(std::string::npos, strLog.find("err 4")) << "only warnings are logged";
}

TEST_F(DiagnosticsTest, UntaggedTraceHasColourButNoHeader) {
    setMarker("6");
    const std::string strOut = capture([] { SNS_PRINT(5, 32, "not find (%d) \n", 34); });
    EXPECT_EQ("\033[0m\033[32mnot find (34) \n\033[0m", strOut);
    setMarker("5");
    EXPECT_EQ("", capture([] { SNS_PRINT(5, 32, "not find (%d) \n", 34); }));
}

TEST_F(DiagnosticsTest, MinusOneSilencesEvenFailedChecks) {
    setMarker("-1\n0\n");
    EXPECT_EQ("", capture(failCheck));
    EXPECT_EQ("", capture(traceAll));
    EXPECT_EQ("", errorLog());
}

TEST_F(DiagnosticsTest, EmptyFirstLineMeansLevelOneAndSecondLineEnablesAbort) {
    setMarker("\n1\n");
    updateDebugLevel();
    EXPECT_EQ(1, g_nDebugLevel.load());
    EXPECT_TRUE(g_bEnAssert.load());
    setMarker("abc\n");
    updateDebugLevel();
    EXPECT_EQ(0, g_nDebugLevel.load()) << "a non-numeric level reads as 0";
    EXPECT_FALSE(g_bEnAssert.load());
    setMarker("  12xyz\n  3");
    updateDebugLevel();
    EXPECT_EQ(12, g_nDebugLevel.load());
    EXPECT_TRUE(g_bEnAssert.load());
}

TEST_F(DiagnosticsTest, EmptyMessageStillPrintsBothColourSequences) {
    const std::string strOut = capture(failCheckEmptyMessage);
    EXPECT_NE(std::string::npos,
              strOut.find("0 != 0   ~~~Assertion failed.\n\033[0m\033[0m\033[31m\033[0m"));
}

TEST_F(DiagnosticsTest, LongestMessageIsLoggedWhole) {
    const std::string strLong(1500, 'x');
    ::testing::internal::CaptureStdout();
    SNS_ASSERT(strLong.empty(), "%s\n", strLong.c_str());
    fflush(stdout);
    const std::string strOut = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, strOut.find(strLong + "\n"));
    EXPECT_NE(std::string::npos, errorLog().find(strLong));
}

TEST_F(DiagnosticsTest, OverlongMessageIsCutNotOverrun) {
    const std::string strHuge(20000, 'y');
    ::testing::internal::CaptureStdout();
    SNS_ASSERT(strHuge.empty(), "%s", strHuge.c_str());
    fflush(stdout);
    const std::string strOut = ::testing::internal::GetCapturedStdout();
    EXPECT_LT(strOut.size(), strHuge.size());
    EXPECT_NE(std::string::npos, strOut.find(std::string(1000, 'y')));
}

using DiagnosticsDeathTest = DiagnosticsTest;

TEST_F(DiagnosticsDeathTest, FailedCheckAbortsWhenSwitchIsOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setMarker("6\n1\n");
    EXPECT_DEATH(failCheck(), "Assertion `bRet' failed");
    setMarker("6\n0\n");
    capture(failCheck); // survives with the switch off
}
