#include "platform/VXFile.h"

#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned char kModeReplace = VXFile::modeWrite | VXFile::modeTruncate;
static_assert(kModeReplace == 66, "the module opens parameter files for writing with mode 66");

// Largest single transfer whose byte count still fits the int result.
constexpr unsigned int kMaxTransfer = INT_MAX;

// Bytes replace-opens may still write (negative: unlimited); see setWriteBudget.
std::atomic<INT64> g_nWriteBudget{-1};
std::atomic<bool> g_bReadOnly{false}; // see setReadOnly

// Takes up to p_nWant bytes from the write budget; what may be written.
std::size_t takeFromBudget(std::size_t p_nWant) {
    INT64 nLeft = g_nWriteBudget.load();
    INT64 nTake = 0;
    do {
        if (nLeft < 0) {
            return p_nWant;
        }
        nTake = std::min<INT64>(nLeft, static_cast<INT64>(p_nWant));
    } while (!g_nWriteBudget.compare_exchange_weak(nLeft, nLeft - nTake));
    return static_cast<std::size_t>(nTake);
}

// The temporary name of a replacement of base: "." base ".tmp" and six
// characters of mkostemp.
constexpr const char* kTmpInfix = ".tmp";
constexpr std::size_t kTmpUnique = 6;

bool isTemporaryOf(const std::string& p_strEntry, const std::string& p_strBase) {
    const std::string strPrefix = "." + p_strBase + kTmpInfix;
    return p_strEntry.size() == strPrefix.size() + kTmpUnique &&
           p_strEntry.compare(0, strPrefix.size(), strPrefix) == 0;
}

// A writer holds an exclusive lock on its temporary file until it renames or
// removes it; the lock dies with the writer. So a temporary whose lock can be
// taken belongs to nobody and goes.
bool removeIfAbandoned(const std::string& p_strPath) {
    const int fd = ::open(p_strPath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        return false;
    }
    const bool bAbandoned = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    const bool bRemoved = bAbandoned && ::unlink(p_strPath.c_str()) == 0;
    ::close(fd);
    return bRemoved;
}

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
    if (g_bReadOnly) {
        errno = EROFS;
        return false;
    }
    const std::string dir = parentDir(hostPath);
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    // A hidden name keeps a leftover temporary file (writer killed before
    // close) out of the module's "sensor1_*.cfg" style patterns.
    std::string tmpl = dir + "/." + baseName(hostPath) + kTmpInfix + "XXXXXX";
    const int fd = ::mkostemp(tmpl.data(), O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    // Held until the rename: marks the temporary as in use for removeLeftovers.
    ::flock(fd, LOCK_EX);
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
    m_bWriteFailed = false;
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
    const std::size_t allowed = takeFromBudget(want);
    const std::size_t done = allowed > 0 ? std::fwrite(buf, 1, allowed, m_pFile) : 0;
    m_nWritten += static_cast<INT64>(done);
    // A short write (full flash, I/O error) spoils the whole replacement:
    // commit refuses it even if the caller goes on to close.
    if (done != want || std::ferror(m_pFile) != 0) {
        m_bWriteFailed = true;
    }
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
    // The stream's error state covers a failed write the buffer hid so far.
    const bool flushed = !m_bWriteFailed && std::fflush(m_pFile) == 0 &&
                         std::ferror(m_pFile) == 0 && ::fsync(fileno(m_pFile)) == 0;
    // A second descriptor keeps the temporary's lock past fclose until the
    // rename, so removeLeftovers never takes it in between.
    const int nLockFd = ::dup(fileno(m_pFile));
    const bool closed = std::fclose(m_pFile) == 0;
    m_pFile = nullptr;
    m_bWriting = false;
    bool ok = flushed && closed && ::rename(m_strTmpPath.c_str(), m_strTarget.c_str()) == 0;
    if (ok) {
        ok = syncDirectory(parentDir(m_strTarget));
    } else {
        ::unlink(m_strTmpPath.c_str());
    }
    if (nLockFd >= 0) {
        ::close(nLockFd);
    }
    m_strTarget.clear();
    m_strTmpPath.clear();
    m_nWritten = 0;
    m_bWriteFailed = false;
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
    m_bWriteFailed = false;
}

int VXFile::removeLeftovers(const char* name) {
    if (name == nullptr || *name == '\0') {
        return 0;
    }
    const std::string hostPath = DeviceRoot::resolve(name);
    const std::string dir = parentDir(hostPath);
    const std::string base = baseName(hostPath);
    int removed = 0;
    std::error_code ec;
    // Stepped with error codes: a directory that vanishes midway ends the walk
    // instead of throwing.
    for (std::filesystem::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string entryName = it->path().filename().string();
        if (isTemporaryOf(entryName, base) && removeIfAbandoned(it->path().string())) {
            ++removed;
        }
    }
    return removed;
}

void VXFile::setWriteBudget(INT64 p_nBytes) {
    g_nWriteBudget = p_nBytes;
}

void VXFile::setReadOnly(bool p_bReadOnly) {
    g_bReadOnly = p_bReadOnly;
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
