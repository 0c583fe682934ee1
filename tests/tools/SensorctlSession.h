// sensorctl run as a user runs it: the built program on a copy of a sample
// device in a fresh working root, fed a script on standard input (or -c
// commands), with everything it printed and its exit status kept for checks.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sensortest {

struct SessionResult {
    int nExit = -1;
    std::string strOutput; // standard output and standard error, interleaved

    bool has(const std::string& p_strText) const {
        return strOutput.find(p_strText) != std::string::npos;
    }
    size_t count(const std::string& p_strText) const;
    // The output from the p_nNth echo of p_strCommand ("> command", counted
    // from 0) up to the next echo.
    std::string replyTo(const std::string& p_strCommand, size_t p_nNth = 0) const;
};

class SensorctlTest : public ::testing::Test {
protected:
    SensorctlTest();
    ~SensorctlTest() override;

    // Runs sensorctl on p_strDevice with p_strScript on standard input; the
    // working root lives on between runs of one test.
    SessionResult run(const std::string& p_strScript, const std::string& p_strDevice = "ipc",
                      const std::vector<std::string>& p_vecArgs = {}) const;
    // Runs sensorctl with these arguments only (no --device, no --root).
    SessionResult runBare(const std::vector<std::string>& p_vecArgs,
                          const std::string& p_strStdin = "") const;

    // The working root and a host path inside it.
    const std::string& root() const { return m_strRoot; }
    std::string inRoot(const std::string& p_strDevicePath) const {
        return m_strRoot + p_strDevicePath;
    }
    const std::string& scratch() const { return m_strScratch; }

private:
    std::string m_strScratch; // temporary directory of the test
    std::string m_strRoot;    // not created: sensorctl makes it
};

} // namespace sensortest
