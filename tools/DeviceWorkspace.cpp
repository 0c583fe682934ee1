#include "tools/DeviceWorkspace.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

std::string sampleDevicePath(const std::string& p_strDevice) {
    if (p_strDevice.find('/') != std::string::npos) {
        return p_strDevice;
    }
    return std::string(SENSOR_DEVICES_DIR) + "/" + p_strDevice;
}

std::string defaultRoot(const std::string& p_strSource) {
    const char* szHome = std::getenv("HOME");
    const std::string strBase = szHome ? std::string(szHome) : std::string("/tmp");
    return strBase + "/.sensorctl/" + fs::path(p_strSource).lexically_normal().filename().string();
}

} // namespace

DeviceWorkspace::DeviceWorkspace(const std::string& p_strDevice, const std::string& p_strRoot)
    : m_strSource(sampleDevicePath(p_strDevice)),
      m_strRoot(p_strRoot.empty() ? defaultRoot(m_strSource) : p_strRoot) {}

bool DeviceWorkspace::prepare(std::string& p_strError) {
    std::error_code ec;
    if (!fs::is_directory(m_strSource, ec)) {
        p_strError = "no such device: " + m_strSource;
        return false;
    }
    if (fs::exists(m_strRoot, ec)) {
        return true;
    }
    fs::create_directories(m_strRoot, ec);
    fs::copy(m_strSource, m_strRoot, fs::copy_options::recursive, ec);
    if (ec) {
        p_strError = "cannot copy " + m_strSource + " to " + m_strRoot + ": " + ec.message();
        return false;
    }
    return true;
}
