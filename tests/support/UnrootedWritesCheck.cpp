#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace sensortest {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRootEnv = "SENSOR_DEVICE_ROOT";

// A test that forgets its temporary root would write the camera's real paths
// (/mnt/mtd/log/SensorError.log, ...): the whole run gets a catch-all root in
// the scratch directory instead, and the run fails if anything lands there.
class UnrootedWritesCheck : public ::testing::Environment {
public:
    void SetUp() override {
        m_strPath = scratchDir() + "/unrooted";
        fs::create_directories(m_strPath);
        const char* szRoot = std::getenv(kRootEnv);
        m_bInstalled = szRoot == nullptr || *szRoot == '\0';
        if (m_bInstalled) {
            ::setenv(kRootEnv, m_strPath.c_str(), 1);
        }
    }
    void TearDown() override {
        if (!m_bInstalled) {
            return;
        }
        ::unsetenv(kRootEnv);
        std::error_code ec;
        for (auto it = fs::recursive_directory_iterator(m_strPath, ec);
             !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
            if (!it->is_directory()) {
                ADD_FAILURE() << "a test wrote outside its temporary root: "
                              << it->path().string().substr(m_strPath.size());
            }
        }
    }

private:
    std::string m_strPath;
    bool m_bInstalled = false;
};

[[maybe_unused]] ::testing::Environment* const g_pUnrootedWritesCheck =
    ::testing::AddGlobalTestEnvironment(new UnrootedWritesCheck);

} // namespace
} // namespace sensortest
