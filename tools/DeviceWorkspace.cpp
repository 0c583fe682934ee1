#include "tools/DeviceWorkspace.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/FileReader.h"
#include "platform/InputLimits.h"

namespace fs = std::filesystem;

namespace {

// Left in every root sensorctl creates; only such a root is ever removed.
constexpr const char* WORKSPACE_MARKER = ".sensorctl-root";
// The marker's one line names the device the root was copied from.
const std::string MARKER_PREFIX = "made by sensorctl from ";

std::string sampleDevicePath(const std::string& p_strDevice) {
    if (p_strDevice.find('/') != std::string::npos) {
        return p_strDevice;
    }
    return std::string(SENSOR_DEVICES_DIR) + "/" + p_strDevice;
}

bool sameDirectory(const std::string& p_strA, const std::string& p_strB) {
    std::error_code ec;
    return fs::weakly_canonical(p_strA, ec) == fs::weakly_canonical(p_strB, ec);
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

bool DeviceWorkspace::prepare(bool p_bFresh, std::string& p_strError) {
    std::error_code ec;
    if (!fs::is_directory(m_strSource, ec)) {
        p_strError = "no such device: " + m_strSource;
        return false;
    }
    if (!fs::exists(m_strRoot, ec)) {
        return copySource(p_strError);
    }
    if (!p_bFresh) {
        return checkSource(p_strError);
    }
    if (!fs::exists(fs::path(m_strRoot) / WORKSPACE_MARKER, ec)) {
        p_strError = "refusing to replace " + m_strRoot + ": sensorctl did not make it";
        return false;
    }
    fs::remove_all(m_strRoot, ec);
    if (ec) {
        p_strError = "cannot remove " + m_strRoot + ": " + ec.message();
        return false;
    }
    return copySource(p_strError);
}

bool DeviceWorkspace::checkSource(std::string& p_strError) const {
    std::string strText;
    if (readHostFile((fs::path(m_strRoot) / WORKSPACE_MARKER).string(), inputcap::TOOL_MARKER_MAX,
                     strText) != ReadStatus::Ok ||
        strText.empty()) {
        return true; // a root of the user's own: used as it is
    }
    const std::string strLine = strText.substr(0, strText.find('\n'));
    const std::string strMade = strLine.substr(std::min(strLine.size(), MARKER_PREFIX.size()));
    if (strLine.rfind(MARKER_PREFIX, 0) == 0 && !sameDirectory(strMade, m_strSource)) {
        p_strError = m_strRoot + " holds a copy of " + strMade + ", not of " + m_strSource +
                     "; choose another --root, or --fresh to replace it";
        return false;
    }
    return true;
}

bool DeviceWorkspace::copySource(std::string& p_strError) {
    std::error_code ec;
    fs::create_directories(m_strRoot, ec);
    if (!ec) {
        fs::copy(m_strSource, m_strRoot, fs::copy_options::recursive, ec);
    }
    if (ec) {
        p_strError = "cannot copy " + m_strSource + " to " + m_strRoot + ": " + ec.message();
        return false;
    }
    std::ofstream(fs::path(m_strRoot) / WORKSPACE_MARKER)
        << "made by sensorctl from " << m_strSource << "\n";
    m_bNew = true;
    return true;
}
