// sensorctl run as a user runs it, with what it printed and its exit status kept.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <regex>
#include <sys/wait.h>

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
    std::optional<std::string> replyTo(const std::string& p_strCommand, size_t p_nNth = 0) const {
        const std::string strEcho = "> " + p_strCommand + "\n";
        size_t nStart = std::string::npos; // the first search starts at npos + 1, that is 0
        do {
            nStart = strOutput.find(strEcho, nStart + 1);
        } while (nStart != std::string::npos && p_nNth-- > 0);
        if (nStart == std::string::npos) {
            return std::nullopt;
        }
        const size_t nBegin = nStart + strEcho.size(), nEnd = strOutput.find("\n> ", nBegin);
        return strOutput.substr(nBegin, nEnd == std::string::npos ? nEnd : nEnd + 1 - nBegin);
    }
    // Checks the exit status and every reply; a command never echoed fails even "lack".
    void expect(int p_nExit, const std::vector<Reply>& p_vecReplies) const {
        EXPECT_EQ(p_nExit, nExit) << strOutput;
        constexpr const char* aVerbs[] = {"be", "start with", "hold", "lack", "match"};
        for (const Reply& st : p_vecReplies) {
            const std::optional<std::string> strReply =
                st.strCommand.empty() ? strOutput : replyTo(st.strCommand, st.nNth);
            const std::string& s = strReply.value_or("");
            const size_t n = s.find(st.strText), npos = std::string::npos;
            const bool aHolds[] = {s == st.strText, n == 0, n != npos, n == npos, false};
            EXPECT_TRUE(strReply &&
                        (st.eShows == Shows::Matches ? std::regex_search(s, std::regex(st.strText))
                                                     : aHolds[static_cast<int>(st.eShows)]))
                << "reply " << st.nNth << " to '" << st.strCommand << "' should "
                << aVerbs[static_cast<int>(st.eShows)] << " '" << st.strText << "' but is:\n"
                << strReply.value_or("(no echo)");
        }
    }
};

class SensorctlTest : public ::testing::Test {
protected:
    // Runs sensorctl on p_strDevice and the test's working root with p_strScript as input.
    SessionResult run(const std::string& p_strScript, const std::string& p_strDevice = "ipc",
                      std::vector<std::string> p_vecArgs = {}) const {
        p_vecArgs.insert(p_vecArgs.begin(), {"--device", p_strDevice, "--root", root()});
        return runBare(p_vecArgs, p_strScript);
    }
    // Runs sensorctl with these arguments only, and no root or profile from our environment.
    SessionResult runBare(std::vector<std::string> p_vecArgs,
                          const std::string& p_strIn = "") const {
        m_objScratch.writeFile("/script.txt", p_strIn);
        p_vecArgs.insert(p_vecArgs.begin(), SENSORCTL_PATH);
        // A sensorctl that hangs ends in a minute with status 124, not at ctest's limit.
        std::string strCommand = "timeout 60 env -u SENSOR_DEVICE_ROOT -u SENSOR_ISP_PROFILE";
        for (const std::string& strArg : p_vecArgs) {
            strCommand += " '" + std::regex_replace(strArg, std::regex("'"), "'\\''") + "'";
        }
        const std::string strDir = "'" + m_objScratch.hostPath("/") + "'"; // made by mkdtemp
        const int nStatus = std::system(
            (strCommand + " < " + strDir + "script.txt > " + strDir + "output.txt 2>&1").c_str());
        return {WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1,
                m_objScratch.readFile("/output.txt")};
    }
    // The working root, not created before sensorctl makes it.
    std::string root() const { return m_objScratch.hostPath("/root"); }

    TempDeviceRoot m_objScratch; // the test's temporary directory
};

} // namespace sensortest
