// The ISP simulator as sensorctl's user drives it: the device's sensor
// profile, the light level that turns day into night, and commands made to
// fail on purpose. It remembers what it was asked, so it can show it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "isp/IspProfile.h"

class IspSimulator;

class SimulatorControl {
public:
    struct Failure {
        int nIspChannel; // -1: every channel
        uint32_t nCmd;
        int nOption; // -1: every option
        int nCode;
    };

    explicit SimulatorControl(IspSimulator& p_objIsp);

    // Loads the profile named by SENSOR_ISP_PROFILE, else the device root's
    // isp_profile.xml, else the built-in one. False with a message when the
    // chosen file cannot be used (the simulator is then left as it was).
    bool loadProfile(const std::string& p_strRootDir, std::string& p_strError);
    const std::string& profileSource() const { return m_strSource; }
    std::string profileName() const;

    // The light level of every channel.
    void setLightLevel(int p_nLevel);
    int lightLevel(int p_nIspChannel) const;
    const isp::IspDayNight& thresholds(int p_nIspChannel) const;
    // The ISP's own day/night state (command 153): true at night.
    bool isNight(int p_nIspChannel) const;

    void addFailure(const Failure& p_stFailure);
    void clearFailures();
    const std::vector<Failure>& failures() const { return m_vecFailures; }

    IspSimulator& isp() { return m_objIsp; }

private:
    IspSimulator& m_objIsp;
    std::string m_strSource;
    std::array<isp::IspDayNight, isp::kChannelCount> m_arrDayNight{};
    std::vector<Failure> m_vecFailures;
};
