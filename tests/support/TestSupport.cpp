#include "TestSupport.h"

#include "platform/DeviceRoot.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

#include <unistd.h>

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

constexpr const char* kScratchEnv = "SENSOR_TEST_SCRATCH";

std::string makeDir(const std::string& p_strParent, const char* p_szPrefix) {
    std::string tmpl = p_strParent + "/" + p_szPrefix + "XXXXXX";
    if (::mkdtemp(tmpl.data()) == nullptr) {
        throw std::runtime_error("TempDeviceRoot: cannot create " + tmpl);
    }
    return fs::canonical(tmpl).string();
}

// One directory per test process holds every temporary root, and goes when the
// process ends. A child that re-runs a test (a death test) inherits it through
// the environment and leaves its roots there, so a child that aborts leaves
// nothing behind either.
class Scratch {
public:
    Scratch() : m_nOwner(::getpid()) {
        const char* szInherited = std::getenv(kScratchEnv);
        if (szInherited != nullptr && *szInherited != '\0' && fs::is_directory(szInherited)) {
            m_strPath = szInherited;
            return;
        }
        const char* tmp = std::getenv("TMPDIR");
        m_strPath = makeDir(tmp && *tmp ? tmp : "/tmp", "sensor-tests-");
        ::setenv(kScratchEnv, m_strPath.c_str(), 1);
        m_bOwned = true;
    }
    ~Scratch() {
        // Forked children share the object; only the creator removes.
        if (m_bOwned && ::getpid() == m_nOwner) {
            std::error_code ec;
            fs::remove_all(m_strPath, ec);
        }
    }
    const std::string& path() const { return m_strPath; }

private:
    std::string m_strPath;
    pid_t m_nOwner;
    bool m_bOwned = false;
};

Scratch& scratch() {
    static Scratch s_objScratch;
    return s_objScratch;
}

std::string makeTempDir() {
    return makeDir(scratch().path(), "sensor-root-");
}

} // namespace

std::string scratchDir() {
    return scratch().path();
}

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

std::vector<ModuleConfigure> deviceModules() {
    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine);
    std::vector<ModuleConfigure> vecModules;
    ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, objMachine.getHardwareModel(),
                                 objMachine.getHardwareCode(), vecModules);
    return vecModules;
}

} // namespace sensortest
