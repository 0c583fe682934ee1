#include "platform/DeviceRoot.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace {

std::mutex g_rootMutex;
std::string g_strProgramRoot;
std::atomic<unsigned> g_nGeneration{0};

// "/a/b/" and "/a/b" name the same root; keep one form so joins stay clean.
std::string withoutTrailingSlash(std::string dir) {
    while (dir.size() > 1 && dir.back() == '/') {
        dir.pop_back();
    }
    return dir;
}

} // namespace

void DeviceRoot::set(const std::string& dir) {
    std::lock_guard<std::mutex> guard(g_rootMutex);
    g_strProgramRoot = withoutTrailingSlash(dir);
    g_nGeneration.fetch_add(1, std::memory_order_acq_rel);
}

unsigned DeviceRoot::generation() {
    return g_nGeneration.load(std::memory_order_acquire);
}

std::string DeviceRoot::getProgramRoot() {
    std::lock_guard<std::mutex> guard(g_rootMutex);
    return g_strProgramRoot;
}

std::string DeviceRoot::get() {
    std::string root = getProgramRoot();
    if (!root.empty()) {
        return root;
    }
    const char* env = std::getenv("SENSOR_DEVICE_ROOT");
    return env ? withoutTrailingSlash(env) : std::string();
}

std::string DeviceRoot::resolve(const std::string& devicePath) {
    const std::string root = get();
    if (root.empty()) {
        return devicePath;
    }
    if (!devicePath.empty() && devicePath.front() == '/') {
        return root + devicePath;
    }
    return root + "/" + devicePath;
}
