#include "tools/SimulatorControl.h"

#include <cstdlib>
#include <filesystem>

#include "isp/IspSimulator.h"

namespace {
constexpr const char* PROFILE_ENV = "SENSOR_ISP_PROFILE";
constexpr const char* DEVICE_PROFILE = "isp_profile.xml";
constexpr uint32_t DAY_NIGHT_STATE_CMD = IspSimulator::DAY_NIGHT_STATE_CMD;
} // namespace

SimulatorControl::SimulatorControl(IspSimulator& p_objIsp) : m_objIsp(p_objIsp) {}

bool SimulatorControl::loadProfile(const std::string& p_strRootDir, std::string& p_strError) {
    std::string strPath;
    if (const char* szEnv = std::getenv(PROFILE_ENV); szEnv != nullptr && *szEnv != '\0') {
        strPath = szEnv;
    } else if (std::filesystem::is_regular_file(p_strRootDir + "/" + DEVICE_PROFILE)) {
        strPath = p_strRootDir + "/" + DEVICE_PROFILE;
    }
    isp::IspProfile stProfile = isp::defaultProfile();
    if (!strPath.empty()) {
        std::string strError;
        if (!isp::loadProfileFile(strPath, stProfile, strError) ||
            !m_objIsp.loadProfile(strPath, &strError)) {
            p_strError = "ISP profile " + strPath + ": " + strError;
            return false;
        }
        m_strSource = strPath;
    } else {
        m_objIsp.loadDefaultProfile();
        m_strSource = "built-in";
    }
    for (int c = 0; c < isp::kChannelCount; ++c) {
        m_arrDayNight[static_cast<size_t>(c)] =
            stProfile.forChannel(c).dayNight.value_or(isp::IspDayNight{});
    }
    m_vecFailures.clear();
    return true;
}

std::string SimulatorControl::profileName() const {
    return m_objIsp.profileName();
}

void SimulatorControl::setLightLevel(int p_nLevel) {
    m_objIsp.setLightLevel(-1, p_nLevel);
    for (isp::IspDayNight& stDayNight : m_arrDayNight) {
        stDayNight.level = p_nLevel;
    }
}

int SimulatorControl::lightLevel(int p_nIspChannel) const {
    return m_arrDayNight.at(static_cast<size_t>(p_nIspChannel)).level;
}

const isp::IspDayNight& SimulatorControl::thresholds(int p_nIspChannel) const {
    return m_arrDayNight.at(static_cast<size_t>(p_nIspChannel));
}

bool SimulatorControl::isNight(int p_nIspChannel) const {
    return m_objIsp.getValue(p_nIspChannel, DAY_NIGHT_STATE_CMD).value_or(0) != 0;
}

void SimulatorControl::addFailure(const Failure& p_stFailure) {
    m_objIsp.failCommand(p_stFailure.nIspChannel, p_stFailure.nCmd, p_stFailure.nOption,
                         p_stFailure.nCode);
    m_vecFailures.push_back(p_stFailure);
}

void SimulatorControl::clearFailures() {
    m_objIsp.clearFailures();
    m_vecFailures.clear();
}
