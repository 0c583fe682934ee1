// The diagnostics: level and abort switch from the marker file, exact console
// texts (source lines masked), the error log, the abort, and the checks inside
// the style helpers, which name the operation they serve.
#define SNS_SOURCE_UNIT "SensorFile"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <regex>
#include <string>
#include <tuple>

#include "common/SensorDebug.h"
#include "common/ia_ioctrl.h"
#include "config/SensorFile.h"
#include "config/sensor.h"
#include "isp/IspSimulator.h"
#include "support/TestSupport.h"

namespace {

const std::string kLogPath = "/mnt/mtd/log/SensorError.log";
const std::string kAssertOut =
    "\033[0m\033[31m[sensor assert] file:SensorFile fun:failCheck line:#\n"
    "1 + 1 == 3   ~~~Assertion failed.\n\033[0m\033[0m\033[31mnScheme(7)\n\033[0m";
const std::string kAssertLog = "[sensor assert] file:SensorFile fun:failCheck line:#\n"
                               "[sensor assert] 1 + 1 == 3   ~~~Assertion failed.\n"
                               "[sensor assert] nScheme(7)\n";

void traceAll() {
    SNS_DBG("dbg %d\n", 1);
    SNS_INFO("info %d\n", 2);
    SNS_WARN("warn %d\n", 3);
    SNS_ERR("err %d\n", 4);
    SNS_PRINT(5, 32, "not find (%d) \n", 34);
}

void failCheck() {
    SNS_ASSERT(1 + 1 == 3, "nScheme(%d)\n", 7);
}

std::string masked(const std::string& p_strText) {
    return std::regex_replace(p_strText, std::regex("line:[0-9]+"), "line:#");
}

template <typename Fn> std::string capture(Fn p_fn) {
    ::testing::internal::CaptureStdout();
    p_fn();
    std::fflush(stdout);
    return masked(::testing::internal::GetCapturedStdout());
}

// One console block of traceAll: colour prefix, header for a tagged trace, text, suffix.
std::string block(const std::string& p_strColour, const std::string& p_strTag,
                  const std::string& p_strText) {
    const std::string strHeader =
        p_strTag.empty() ? "" : "[sensor " + p_strTag + "] file:SensorFile fun:traceAll line:#\n";
    return "\033[0m\033[" + p_strColour + "m" + strHeader + p_strText + "\033[0m";
}

class DiagnosticsTest : public ::testing::Test {
protected:
    // A new marker (none for nullptr) and an empty error log.
    void setMarker(const char* p_szContent) {
        std::remove(m_objRoot.hostPath(kLogPath).c_str());
        std::remove(m_objRoot.hostPath("/tmp/Debug.sign").c_str());
        if (p_szContent != nullptr) {
            m_objRoot.writeFile("/tmp/Debug.sign", p_szContent);
            sensordiag::requestMarkerCheck(); // the diagnostics below stand for a host call
        }
    }
    std::string errorLog() const {
        return m_objRoot.exists(kLogPath) ? masked(m_objRoot.readFile(kLogPath)) : std::string();
    }

    sensortest::TempDeviceRoot m_objRoot;
};

// Marker, level and abort switch read from it, what is shown: d dbg, i info,
// w warn, e err, p untagged (threshold 5), a failed check.
TEST_F(DiagnosticsTest, MarkerFileSetsLevelAndAbortSwitch) {
    const std::tuple<const char*, int, bool, const char*> aCases[] = {
        {nullptr, 1, false, "a"},    {"-1\n0\n", -1, false, ""},
        {"0\n", 0, false, "a"},      {"4", 4, false, "wa"},
        {"5", 5, false, "wa"},       {"6\n1\n", 6, true, "dwep"},
        {"7\n", 7, false, "diwepa"}, {"\n1\n", 1, true, ""},
        {"abc\n", 0, false, "a"},    {"  12xyz\n  3", 12, true, "diwep"},
    };
    for (const auto& [szMarker, nLevel, bAbort, szShown] : aCases) {
        SCOPED_TRACE(szMarker == nullptr ? "no marker" : szMarker);
        setMarker(szMarker);
        g_nDebugLevel = 9;
        g_bEnAssert = !bAbort;
        updateDebugLevel();
        EXPECT_EQ(std::make_pair(nLevel, bAbort),
                  std::make_pair(g_nDebugLevel.load(), g_bEnAssert.load()));

        const std::string strShown = szShown;
        const auto shown = [&strShown](char c) { return strShown.find(c) != std::string::npos; };
        std::string strWant;
        strWant += shown('d') ? block("0", "dbg", "dbg 1\n") : "";
        strWant += shown('i') ? block("35", "info", "info 2\n") : "";
        strWant += shown('w') ? block("0", "warn", "warn 3\n") : "";
        strWant += shown('e') ? block("0", "err", "err 4\n") : "";
        strWant += shown('p') ? block("32", "", "not find (34) \n") : "";
        EXPECT_EQ(strWant, capture(traceAll));
        // Only warnings and failed checks are logged, and only when shown.
        std::string strLog = shown('w') ? "[sensor warn] file:SensorFile fun:traceAll line:#\n"
                                          "[sensor warn] warn 3\n"
                                        : "";
        if (!bAbort) {
            EXPECT_EQ(shown('a') ? kAssertOut : "", capture(failCheck));
            strLog += shown('a') ? kAssertLog : "";
        }
        EXPECT_EQ(strLog, errorLog());
    }
}

// An empty message still prints both colour sequences; a long one is printed
// and logged whole, a huge one is cut; traces the level lets through are whole.
TEST_F(DiagnosticsTest, FailedChecksAreBoundedAndTracesTheLevelLetsThroughArePrintedWhole) {
    setMarker("1\n");
    const std::string strLong(1500, 'x'), strHuge(20000, 'y');
    std::string strOut = capture([&] {
        SNS_ASSERT(0 != 0, "");
        SNS_ASSERT(strLong.empty(), "%s\n", strLong.c_str());
    });
    EXPECT_NE(std::string::npos,
              strOut.find("0 != 0   ~~~Assertion failed.\n\033[0m\033[0m\033[31m\033[0m"));
    EXPECT_NE(std::string::npos, strOut.find(strLong + "\n"));
    EXPECT_NE(std::string::npos, errorLog().find(strLong + "\n")) << "logged whole";
    strOut = capture([&] { SNS_ASSERT(strHuge.empty(), "%s", strHuge.c_str()); });
    EXPECT_LT(strOut.size(), strHuge.size());
    EXPECT_NE(std::string::npos, strOut.find(std::string(1000, 'y')));

    setMarker("7\n");
    strOut = capture([&] {
        SNS_INFO("%s\n", strHuge.c_str());
        SNS_WARN("%s\n", strHuge.c_str());
        SNS_PRINT(5, 0, "%s\n", strHuge.c_str());
    });
    std::size_t nWhole = 0; // info, warning and plain trace, each whole
    for (auto nAt = strOut.find(strHuge + "\n"); nAt != std::string::npos;
         nAt = strOut.find(strHuge + "\n", nAt + 1)) {
        ++nWhole;
    }
    EXPECT_EQ(3u, nWhole);
}

// A check made in a helper of an operation reports the operation's name: a
// diversity entry whose condition holds but which has no edit, and a range of
// a dynamic command the ISP refuses.
TEST_F(DiagnosticsTest, ChecksInsideTheStyleHelpersNameTheirOperation) {
    setMarker("1\n");
    IspSimulator& objIsp = IspSimulator::instance();
    objIsp.reset();
    objIsp.setDynamicCommands(0, {34});
    objIsp.failCommand(0, 34, IA_CMD_OPT_GET_PARAM_RNAGE, -5);
    capture([] {
        ModuleConfig stModule{};
        std::strcpy(stModule.szDetail, "(lensId=0)");
        std::string strDiversity = "<Entry lensId=\"0\"/>";
        char* szStyle = newConfigText(64);
        std::strcpy(szStyle, "<Style><Tab key=\"a\"/></Style>");
        mergeStyle(1, &stModule, &szStyle, strDiversity.data());
        freeConfigText(szStyle);
        std::string strOut;
        getDnaStyle(1, "<Style><Control id=\"34\" value=\"1\"/></Style>", strOut, true, true);
    });
    objIsp.reset();
    for (const char* szFun : {"fun:mergeStyle line:", "fun:getDnaStyle line:"}) {
        EXPECT_NE(std::string::npos, errorLog().find(szFun)) << errorLog();
    }
}

using DiagnosticsDeathTest = DiagnosticsTest;

TEST_F(DiagnosticsDeathTest, FailedCheckAbortsWhenSwitchIsOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setMarker("6\n1\n");
    // With the switch off a failed check returns: the marker table runs such cases.
    EXPECT_DEATH(failCheck(), "Assertion `bRet' failed");
}

} // namespace
