// sensorctl run as a user runs it, with what it printed and its exit status kept.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "support/TestSupport.h"

namespace sensortest {

// What a reply must show: the text exactly, at its start, somewhere, nowhere, or a regex.
enum class Shows { Is, Starts, Has, Lacks, Matches };

struct Reply {
    std::string strCommand; // "" stands for the whole output
    Shows eShows;
    std::string strText;
    size_t nNth = 0; // which echo of the command, counted from 0
};

struct SessionResult {
    int nExit = -1;
    std::string strOutput; // standard output and standard error, interleaved

    // The output from the p_nNth echo of p_strCommand ("> command") up to the next echo.
    std::string replyTo(const std::string& p_strCommand, size_t p_nNth = 0) const {
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
        return strOutput.substr(nBegin, nEnd == std::string::npos ? nEnd : nEnd + 1 - nBegin);
    }
    // Checks the exit status and every reply.
    void expect(int p_nExit, const std::vector<Reply>& p_vecReplies) const {
        EXPECT_EQ(p_nExit, nExit) << strOutput;
        constexpr const char* aVerbs[] = {"be", "start with", "hold", "lack", "match"};
        for (const Reply& st : p_vecReplies) {
            const std::string strReply =
                st.strCommand.empty() ? strOutput : replyTo(st.strCommand, st.nNth);
            const size_t nAt = strReply.find(st.strText);
            const bool aOk[] = {strReply == st.strText, nAt == 0, nAt != std::string::npos,
                                nAt == std::string::npos, false};
            const int nHow = static_cast<int>(st.eShows);
            // A command that was never echoed has no reply: not even "lack" holds for it.
            const bool bEchoed = st.strCommand.empty() || strReply.rfind("(no echo of '", 0) != 0;
            EXPECT_TRUE(bEchoed && (st.eShows == Shows::Matches
                                        ? std::regex_search(strReply, std::regex(st.strText))
                                        : aOk[nHow]))
                << "reply " << st.nNth << " to '" << st.strCommand << "' should " << aVerbs[nHow]
                << " '" << st.strText << "' but is:\n"
                << strReply;
        }
    }
};

class SensorctlTest : public ::testing::Test {
protected:
    // Runs sensorctl on p_strDevice and the test's working root with p_strScript as input.
    SessionResult run(const std::string& p_strScript, const std::string& p_strDevice = "ipc",
                      const std::vector<std::string>& p_vecArgs = {}) const {
        std::vector<std::string> vecArgs = {"--device", p_strDevice, "--root", root()};
        vecArgs.insert(vecArgs.end(), p_vecArgs.begin(), p_vecArgs.end());
        return runBare(vecArgs, p_strScript);
    }
    // Runs sensorctl with these arguments only (no --device, no --root); the child gets
    // no root or profile from the test's own environment.
    SessionResult runBare(const std::vector<std::string>& p_vecArgs,
                          const std::string& p_strStdin = "") const {
        m_objScratch.writeFile("/script.txt", p_strStdin);
        std::string strCommand =
            "env -u SENSOR_DEVICE_ROOT -u SENSOR_ISP_PROFILE " + quoted(SENSORCTL_PATH);
        for (const std::string& strArg : p_vecArgs) {
            strCommand += " " + quoted(strArg);
        }
        strCommand += " < " + quoted(m_objScratch.hostPath("/script.txt")) + " > " +
                      quoted(m_objScratch.hostPath("/output.txt")) + " 2>&1";
        const int nStatus = std::system(strCommand.c_str());
        return {WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1,
                m_objScratch.readFile("/output.txt")};
    }
    // The working root, not created before sensorctl makes it.
    std::string root() const { return m_objScratch.hostPath("/root"); }

    TempDeviceRoot m_objScratch; // the test's temporary directory

private:
    static std::string quoted(const std::string& p_strText) {
        std::string strQuoted = "'";
        for (const char c : p_strText) {
            strQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        return strQuoted + "'";
    }
};

} // namespace sensortest
