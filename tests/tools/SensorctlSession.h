// sensorctl run as a user runs it, with what it printed and its exit status kept.
#pragma once

#include <gtest/gtest.h>

#include <string>
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
    std::string replyTo(const std::string& p_strCommand, size_t p_nNth = 0) const;
    // Checks the exit status and every reply.
    void expect(int p_nExit, const std::vector<Reply>& p_vecReplies) const;
};

class SensorctlTest : public ::testing::Test {
protected:
    // Runs sensorctl on p_strDevice and the test's working root with p_strScript as input.
    SessionResult run(const std::string& p_strScript, const std::string& p_strDevice = "ipc",
                      const std::vector<std::string>& p_vecArgs = {}) const;
    // Runs sensorctl with these arguments only (no --device, no --root).
    SessionResult runBare(const std::vector<std::string>& p_vecArgs,
                          const std::string& p_strStdin = "") const;
    // The working root, not created before sensorctl makes it.
    std::string root() const { return m_objScratch.hostPath("/root"); }

    TempDeviceRoot m_objScratch; // the test's temporary directory
};

} // namespace sensortest
