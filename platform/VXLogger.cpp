#include "platform/VXLogger.h"

#include "platform/DeviceRoot.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// One lock for every logger of the process: the size check and the renames of
// a rotation must not run twice at once, or two loggers would both shift the
// older files and one generation would be lost.
std::mutex g_rotationMutex;

std::string generation(const std::string& path, int n) {
    return path + "." + std::to_string(n);
}

} // namespace

VXLogger::VXLogger() = default;

VXLogger::~VXLogger() = default;

bool VXLogger::init(const std::string& path, int maxSize, int count) {
    m_strPath.clear();
    if (path.empty()) {
        return false;
    }
    const std::string hostPath = DeviceRoot::resolve(path);
    const std::filesystem::path parent = std::filesystem::path(hostPath).parent_path();
    std::error_code ec;
    if (!parent.empty()) {
        std::filesystem::create_directories(parent, ec);
        if (!std::filesystem::is_directory(parent, ec)) {
            return false;
        }
    }
    m_strPath = hostPath;
    m_nMaxSize = maxSize;
    m_nCount = count < 0 ? 0 : count;
    return true;
}

int VXLogger::writeLog(const std::string& tag, const std::string& text) {
    if (m_strPath.empty()) {
        return -1;
    }
    std::string line = tag + " " + text;
    if (line.back() != '\n') {
        line.push_back('\n');
    }
    std::lock_guard<std::mutex> guard(g_rotationMutex);
    const int fd = ::open(m_strPath.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return -1;
    }
    ssize_t written = 0;
    do {
        written = ::write(fd, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    ::close(fd);
    rotateIfFull();
    return written < 0 ? -1 : static_cast<int>(written);
}

// Called with g_rotationMutex held.
void VXLogger::rotateIfFull() const {
    struct stat st {};
    if (m_nMaxSize <= 0 || ::stat(m_strPath.c_str(), &st) != 0 || st.st_size <= m_nMaxSize) {
        return;
    }
    if (m_nCount == 0) {
        ::unlink(m_strPath.c_str());
        return;
    }
    ::unlink(generation(m_strPath, m_nCount).c_str());
    for (int n = m_nCount - 1; n >= 1; --n) {
        ::rename(generation(m_strPath, n).c_str(), generation(m_strPath, n + 1).c_str());
    }
    ::rename(m_strPath.c_str(), generation(m_strPath, 1).c_str());
}
