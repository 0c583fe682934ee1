// Diagnostics at the edges of the level: a failed check shows and is logged
// from level 0 up, a trace the level lets through is printed whole, and the
// checks inside the style helpers name the operation they serve.
#define SNS_SOURCE_UNIT "SensorFile"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "common/SensorDebug.h"
#include "common/ia_ioctrl.h"
#include "config/SensorFile.h"
#include "config/sensor.h"
#include "isp/IspSimulator.h"
#include "support/TestSupport.h"

namespace {

constexpr const char* kLog = "/mnt/mtd/log/SensorError.log";

void failCheck() {
    SNS_ASSERT(1 + 1 == 3, "nScheme(%d)\n", 7);
}

template <typename Fn> std::string capture(Fn p_fn) {
    ::testing::internal::CaptureStdout();
    p_fn();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

class DiagnosticsLevelTest : public ::testing::Test {
protected:
    // Console output of p_fn at the level the marker gives; the error log after it.
    std::string run(const char* p_szMarker, void (*p_fn)(), std::string& p_strLog) {
        std::remove(m_objRoot.hostPath(kLog).c_str());
        m_objRoot.writeFile("/tmp/Debug.sign", p_szMarker);
        sensordiag::requestMarkerCheck();
        const std::string strOut = capture(p_fn);
        p_strLog = m_objRoot.exists(kLog) ? m_objRoot.readFile(kLog) : "";
        return strOut;
    }
    static bool has(const std::string& p_strText, const std::string& p_strPart) {
        return p_strText.find(p_strPart) != std::string::npos;
    }

    sensortest::TempDeviceRoot m_objRoot;
};

TEST_F(DiagnosticsLevelTest, AFailedCheckShowsAndLogsBothBlocksFromLevelZeroUp) {
    // "abc" reads as level 0, like "0".
    for (const char* szMarker : {"-1\n", "0\n", "abc\n", "1\n"}) {
        SCOPED_TRACE(szMarker);
        const bool bShown = szMarker[0] != '-';
        std::string strLog;
        const std::string strOut = run(szMarker, failCheck, strLog);
        for (const char* szPart :
             {"fun:failCheck", "1 + 1 == 3   ~~~Assertion failed.\n", "nScheme(7)\n"}) {
            EXPECT_EQ(bShown, has(strOut, szPart)) << szPart;
            EXPECT_EQ(bShown, has(strLog, szPart)) << szPart;
        }
    }
}

TEST_F(DiagnosticsLevelTest, ATraceTheLevelLetsThroughIsPrintedWhole) {
    static const std::string s_strLong = std::string(20000, 'z') + "<end>";
    std::string strLog;
    const std::string strOut = run(
        "7\n",
        [] {
            SNS_INFO("%s\n", s_strLong.c_str());
            SNS_WARN("%s\n", s_strLong.c_str());
            SNS_PRINT(5, 0, "%s\n", s_strLong.c_str());
        },
        strLog);
    EXPECT_EQ(3u, [&] {
        std::size_t nCount = 0;
        for (std::size_t nAt = strOut.find(s_strLong + "\n"); nAt != std::string::npos;
             nAt = strOut.find(s_strLong + "\n", nAt + 1)) {
            ++nCount;
        }
        return nCount;
    }()) << "info, warning and plain trace, each whole";
}

// A check made in a helper of an operation reports the operation's name.
TEST_F(DiagnosticsLevelTest, ChecksInsideTheStyleHelpersNameTheirOperation) {
    std::string strLog;
    // A diversity entry whose condition holds but which has no edit.
    run(
        "1\n",
        [] {
            ModuleConfig stModule{};
            std::strcpy(stModule.szDetail, "(lensId=0)");
            std::string strDiversity = "<Entry lensId=\"0\"/>";
            char* szStyle = newConfigText(64);
            std::strcpy(szStyle, "<Style><Tab key=\"a\"/></Style>");
            mergeStyle(1, &stModule, &szStyle, strDiversity.data());
            freeConfigText(szStyle);
        },
        strLog);
    EXPECT_TRUE(has(strLog, "fun:mergeStyle line:")) << strLog;

    // The ISP refuses the range of a dynamic command.
    IspSimulator& objIsp = IspSimulator::instance();
    objIsp.reset();
    objIsp.setDynamicCommands(0, {34});
    objIsp.failCommand(0, 34, IA_CMD_OPT_GET_PARAM_RNAGE, -5);
    run(
        "1\n",
        [] {
            std::string strOut;
            getDnaStyle(1, "<Style><Control id=\"34\" value=\"1\"/></Style>", strOut, true, true);
        },
        strLog);
    objIsp.reset();
    EXPECT_TRUE(has(strLog, "fun:getDnaStyle line:")) << strLog;
}

} // namespace
