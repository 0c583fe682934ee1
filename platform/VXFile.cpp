#include "platform/VXFile.h"

#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned char kModeReplace = VXFile::modeWrite | VXFile::modeTruncate;
static_assert(kModeReplace == 66, "the module opens parameter files for writing with mode 66");

// Largest single transfer whose byte count still fits the int result.
constexpr unsigned int kMaxTransfer = INT_MAX;

std::string parentDir(const std::string& path) {
    const std::string::size_type slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string baseName(const std::string& path) {
    const std::string::size_type slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// After a rename the directory entry itself must reach the disk, or a power
// cut can bring back the old name.
bool syncDirectory(const std::string& dir) {
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

std::string stripLineEnd(std::string line) {
    if (!line.empty() && line.back() == '\n') {
        line.pop_back();
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
    }
    return line;
}

// One line including its "\n"; false at end of file with nothing read.
bool readRawLine(FILE* handle, std::string& line) {
    line.clear();
    int c = 0;
    while ((c = std::fgetc(handle)) != EOF) {
        line.push_back(static_cast<char>(c));
        if (c == '\n') {
            return true;
        }
    }
    return !line.empty();
}

} // namespace

VXFile::VXFile() = default;

VXFile::~VXFile() {
    close();
}

bool VXFile::open(const char* name, unsigned char mode) {
    close();
    if (name == nullptr || *name == '\0') {
        return false;
    }
    const std::string hostPath = DeviceRoot::resolve(name);
    if (mode == modeRead) {
        return openForRead(hostPath);
    }
    if (mode == kModeReplace) {
        return openForReplace(hostPath);
    }
    return false;
}

bool VXFile::openForRead(const std::string& hostPath) {
    // Opened like every other read: a FIFO, device or directory is refused
    // without blocking.
    ReadStatus eStatus = ReadStatus::Ok;
    const int fd = openRegularFile(hostPath, eStatus);
    if (fd < 0) {
        return false;
    }
    m_pFile = ::fdopen(fd, "rb");
    if (m_pFile == nullptr) {
        ::close(fd);
        return false;
    }
    return true;
}

bool VXFile::openForReplace(const std::string& hostPath) {
    const std::string dir = parentDir(hostPath);
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    // A hidden name keeps a leftover temporary file (writer killed before
    // close) out of the module's "sensor1_*.cfg" style patterns.
    std::string tmpl = dir + "/." + baseName(hostPath) + ".tmpXXXXXX";
    const int fd = ::mkostemp(tmpl.data(), O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    // mkostemp creates 0600; the replacement keeps the target's permissions,
    // or gets the usual 0644 for a new file.
    struct stat st {};
    const mode_t perms = ::stat(hostPath.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0644;
    ::fchmod(fd, perms);
    m_pFile = ::fdopen(fd, "wb");
    if (m_pFile == nullptr) {
        ::close(fd);
        ::unlink(tmpl.c_str());
        return false;
    }
    m_bWriting = true;
    m_nWritten = 0;
    m_strTarget = hostPath;
    m_strTmpPath = tmpl;
    return true;
}

int VXFile::read(char* buf, unsigned int n) {
    if (m_pFile == nullptr || m_bWriting || (buf == nullptr && n > 0)) {
        return -1;
    }
    const std::size_t want = n > kMaxTransfer ? kMaxTransfer : n;
    return static_cast<int>(std::fread(buf, 1, want, m_pFile));
}

int VXFile::write(const char* buf, unsigned int n) {
    if (m_pFile == nullptr || !m_bWriting || (buf == nullptr && n > 0)) {
        return -1;
    }
    if (n == 0) {
        return 0; // an empty set has no bytes, and fwrite must not see its null pointer
    }
    const std::size_t want = n > kMaxTransfer ? kMaxTransfer : n;
    const std::size_t done = std::fwrite(buf, 1, want, m_pFile);
    m_nWritten += static_cast<INT64>(done);
    return static_cast<int>(done);
}

bool VXFile::close() {
    if (m_pFile == nullptr) {
        return false;
    }
    if (m_bWriting) {
        return commit();
    }
    discard();
    return true;
}

bool VXFile::commit() {
    const bool flushed = std::fflush(m_pFile) == 0 && ::fsync(fileno(m_pFile)) == 0;
    const bool closed = std::fclose(m_pFile) == 0;
    m_pFile = nullptr;
    m_bWriting = false;
    bool ok = flushed && closed && ::rename(m_strTmpPath.c_str(), m_strTarget.c_str()) == 0;
    if (ok) {
        ok = syncDirectory(parentDir(m_strTarget));
    } else {
        ::unlink(m_strTmpPath.c_str());
    }
    m_strTarget.clear();
    m_strTmpPath.clear();
    m_nWritten = 0;
    return ok;
}

void VXFile::discard() {
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
    // An abandoned replacement takes its temporary file with it: a short write
    // on a full flash must not leave the partial copy taking up the space.
    if (m_bWriting) {
        ::unlink(m_strTmpPath.c_str());
    }
    m_bWriting = false;
    m_strTarget.clear();
    m_strTmpPath.clear();
    m_nWritten = 0;
}

INT64 VXFile::getLength() const {
    if (m_pFile == nullptr) {
        return 0;
    }
    if (m_bWriting) {
        return m_nWritten;
    }
    struct stat st {};
    return ::fstat(fileno(m_pFile), &st) == 0 ? static_cast<INT64>(st.st_size) : 0;
}

FILE* VXFile::getFileHandle() {
    return m_pFile;
}

std::string VXFile::ReadOneLine(FILE* handle) {
    std::string line;
    if (handle == nullptr || !readRawLine(handle, line)) {
        return std::string();
    }
    return stripLineEnd(line);
}

std::vector<std::string> VXFile::ReadLines() {
    std::vector<std::string> lines;
    if (m_pFile == nullptr || m_bWriting) {
        return lines;
    }
    std::string line;
    while (readRawLine(m_pFile, line)) {
        lines.push_back(stripLineEnd(line));
    }
    return lines;
}
