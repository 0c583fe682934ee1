#include "TestSupport.h"

#include "platform/DeviceRoot.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace sensortest {

namespace fs = std::filesystem;

namespace {

// For each live root, the program root that was in force before it, so that
// a nested root puts back the outer one when it ends.
std::mutex g_outerMutex;
std::map<std::string, std::string> g_outerRoots;

std::string makeTempDir() {
    const char* tmp = std::getenv("TMPDIR");
    std::string tmpl = std::string(tmp && *tmp ? tmp : "/tmp") + "/sensor-root-XXXXXX";
    if (::mkdtemp(tmpl.data()) == nullptr) {
        throw std::runtime_error("TempDeviceRoot: cannot create " + tmpl);
    }
    return fs::canonical(tmpl).string();
}

} // namespace

TempDeviceRoot::TempDeviceRoot() : m_strPath(makeTempDir()) {
    std::lock_guard<std::mutex> guard(g_outerMutex);
    g_outerRoots[m_strPath] = DeviceRoot::getProgramRoot();
    DeviceRoot::set(m_strPath);
}

TempDeviceRoot::~TempDeviceRoot() {
    {
        std::lock_guard<std::mutex> guard(g_outerMutex);
        const auto it = g_outerRoots.find(m_strPath);
        DeviceRoot::set(it != g_outerRoots.end() ? it->second : std::string());
        g_outerRoots.erase(m_strPath);
    }
    std::error_code ec;
    fs::remove_all(m_strPath, ec);
}

std::string TempDeviceRoot::hostPath(const std::string& devicePath) const {
    if (!devicePath.empty() && devicePath.front() == '/') {
        return m_strPath + devicePath;
    }
    return m_strPath + "/" + devicePath;
}

void TempDeviceRoot::writeFile(const std::string& devicePath, const std::string& content) const {
    const fs::path host = hostPath(devicePath);
    fs::create_directories(host.parent_path());
    std::ofstream out(host, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out.flush()) {
        throw std::runtime_error("TempDeviceRoot: cannot write " + host.string());
    }
}

std::string TempDeviceRoot::readFile(const std::string& devicePath) const {
    std::ifstream in(hostPath(devicePath), std::ios::binary);
    if (!in) {
        throw std::runtime_error("TempDeviceRoot: cannot read " + devicePath);
    }
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

bool TempDeviceRoot::exists(const std::string& devicePath) const {
    std::error_code ec;
    return fs::exists(hostPath(devicePath), ec);
}

std::string sourceDir() {
    const char* env = std::getenv("SENSOR_SOURCE_DIR");
    if (env != nullptr && *env != '\0') {
        return env;
    }
    // This file is tests/support/TestSupport.cpp of the source tree.
    return fs::path(__FILE__).parent_path().parent_path().parent_path().string();
}

} // namespace sensortest
