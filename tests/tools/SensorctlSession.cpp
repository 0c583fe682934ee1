#include "SensorctlSession.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace sensortest {

namespace fs = std::filesystem;

namespace {

std::string quoted(const std::string& p_strText) {
    std::string strQuoted = "'";
    for (const char c : p_strText) {
        strQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return strQuoted + "'";
}

std::string makeScratchDir() {
    const char* szTmp = std::getenv("TMPDIR");
    std::string strTemplate =
        std::string(szTmp && *szTmp ? szTmp : "/tmp") + "/sensorctl-test-XXXXXX";
    if (::mkdtemp(strTemplate.data()) == nullptr) {
        throw std::runtime_error("cannot create " + strTemplate);
    }
    return strTemplate;
}

// Runs a shell command and keeps what it printed and how it ended. The child
// gets no root or profile from the test's own environment.
SessionResult runShell(const std::string& p_strCommand) {
    const std::string strCommand =
        "env -u SENSOR_DEVICE_ROOT -u SENSOR_ISP_PROFILE " + p_strCommand + " 2>&1";
    SessionResult stResult;
    FILE* pPipe = ::popen(strCommand.c_str(), "r");
    if (pPipe == nullptr) {
        ADD_FAILURE() << "cannot start " << strCommand;
        return stResult;
    }
    std::array<char, 4096> arrBuffer{};
    size_t nRead = 0;
    while ((nRead = std::fread(arrBuffer.data(), 1, arrBuffer.size(), pPipe)) > 0) {
        stResult.strOutput.append(arrBuffer.data(), nRead);
    }
    const int nStatus = ::pclose(pPipe);
    stResult.nExit = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
    return stResult;
}

} // namespace

size_t SessionResult::count(const std::string& p_strText) const {
    size_t nCount = 0;
    for (size_t nAt = strOutput.find(p_strText); nAt != std::string::npos;
         nAt = strOutput.find(p_strText, nAt + 1)) {
        ++nCount;
    }
    return nCount;
}

std::string SessionResult::replyTo(const std::string& p_strCommand, size_t p_nNth) const {
    const std::string strEcho = "> " + p_strCommand + "\n";
    size_t nStart = strOutput.find(strEcho);
    for (size_t i = 0; i < p_nNth && nStart != std::string::npos; ++i) {
        nStart = strOutput.find(strEcho, nStart + 1);
    }
    if (nStart == std::string::npos) {
        return "(no echo of '" + p_strCommand + "')";
    }
    const size_t nBegin = nStart + strEcho.size();
    const size_t nEnd = strOutput.find("\n> ", nBegin);
    return strOutput.substr(nBegin,
                            nEnd == std::string::npos ? std::string::npos : nEnd + 1 - nBegin);
}

SensorctlTest::SensorctlTest()
    : m_strScratch(makeScratchDir()), m_strRoot(m_strScratch + "/root") {}

SensorctlTest::~SensorctlTest() {
    std::error_code ec;
    fs::remove_all(m_strScratch, ec);
}

SessionResult SensorctlTest::run(const std::string& p_strScript, const std::string& p_strDevice,
                                 const std::vector<std::string>& p_vecArgs) const {
    std::vector<std::string> vecArgs = {"--device", p_strDevice, "--root", m_strRoot};
    vecArgs.insert(vecArgs.end(), p_vecArgs.begin(), p_vecArgs.end());
    return runBare(vecArgs, p_strScript);
}

SessionResult SensorctlTest::runBare(const std::vector<std::string>& p_vecArgs,
                                     const std::string& p_strStdin) const {
    const std::string strScript = m_strScratch + "/script.txt";
    std::ofstream(strScript) << p_strStdin;
    std::string strCommand = quoted(SENSORCTL_PATH);
    for (const std::string& strArg : p_vecArgs) {
        strCommand += " " + quoted(strArg);
    }
    return runShell(strCommand + " < " + quoted(strScript));
}

} // namespace sensortest
