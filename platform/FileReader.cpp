#include "platform/FileReader.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kChunk = 64 * 1024;
constexpr std::size_t kEndProbe = 64;

ReadStatus statusOfMode(mode_t p_nMode) {
    if (S_ISREG(p_nMode)) {
        return ReadStatus::Ok;
    }
    return S_ISDIR(p_nMode) ? ReadStatus::Directory : ReadStatus::Special;
}

ReadStatus statusOfErrno(int p_nErr) {
    switch (p_nErr) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return ReadStatus::Missing;
    case EISDIR:
        return ReadStatus::Directory;
    case ENXIO: // a socket, or a FIFO opened for writing
        return ReadStatus::Special;
    default:
        return ReadStatus::Unreadable;
    }
}

// Owns a descriptor for the length of one read.
class Descriptor {
public:
    explicit Descriptor(int p_nFd) : m_nFd(p_nFd) {}
    ~Descriptor() {
        if (m_nFd >= 0) {
            ::close(m_nFd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_nFd; }

private:
    int m_nFd;
};

// Reads up to p_nMax bytes; false on an I/O error. Reads in chunks sized from what fstat said: a
// file that has not changed since is read in one call, and its end is confirmed by a small read
// instead of zero-filling another full chunk.
bool readUpTo(int p_nFd, std::size_t p_nMax, std::size_t p_nExpected, std::string& p_strOut) {
    std::size_t nChunk = p_nExpected + 1;
    while (p_strOut.size() < p_nMax) {
        const std::size_t nOld = p_strOut.size();
        const std::size_t nWant = std::min(nChunk, p_nMax - nOld);
        p_strOut.resize(nOld + nWant);
        const ssize_t nGot = ::read(p_nFd, &p_strOut[nOld], nWant);
        if (nGot < 0 && errno == EINTR) {
            p_strOut.resize(nOld);
            continue;
        }
        p_strOut.resize(nOld + (nGot > 0 ? static_cast<std::size_t>(nGot) : 0));
        if (nGot < 0) {
            return false;
        }
        if (nGot == 0) {
            break;
        }
        // A full chunk means the file grew: read on in large chunks.
        nChunk = static_cast<std::size_t>(nGot) == nWant ? kChunk : kEndProbe;
    }
    return true;
}

} // namespace

int openRegularFile(const std::string& p_strHostPath, ReadStatus& p_eStatus, std::size_t* p_pSize) {
    // O_NONBLOCK keeps the open of a FIFO from waiting for a writer; on the
    // regular file that is kept it changes nothing.
    const int nFd = ::open(p_strHostPath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nFd < 0) {
        p_eStatus = statusOfErrno(errno);
        return -1;
    }
    // The descriptor is checked, not the path: the file cannot be swapped
    // between the check and the read.
    struct stat st {};
    p_eStatus = ::fstat(nFd, &st) == 0 ? statusOfMode(st.st_mode) : ReadStatus::Unreadable;
    if (p_eStatus != ReadStatus::Ok) {
        ::close(nFd);
        return -1;
    }
    if (p_pSize != nullptr) {
        *p_pSize = static_cast<std::size_t>(st.st_size);
    }
    return nFd;
}

ReadStatus readHostFile(const std::string& p_strHostPath, std::size_t p_nCap, std::string& p_strOut,
                        Oversize p_eOversize) {
    p_strOut.clear();
    ReadStatus eStatus = ReadStatus::Ok;
    std::size_t nSize = 0;
    const Descriptor objFd(openRegularFile(p_strHostPath, eStatus, &nSize));
    if (objFd.get() < 0) {
        return eStatus;
    }
    const bool bRefuse = p_eOversize == Oversize::Refuse;
    if (bRefuse && nSize > p_nCap) {
        return ReadStatus::TooLarge;
    }
    // One byte past the cap tells a file that grew since fstat from one that
    // ends at the cap.
    const std::size_t nMax = bRefuse ? p_nCap + 1 : p_nCap;
    p_strOut.reserve(std::min(nSize + 1 + kEndProbe, nMax));
    if (!readUpTo(objFd.get(), nMax, nSize, p_strOut)) {
        p_strOut.clear();
        return ReadStatus::Unreadable;
    }
    if (p_strOut.size() > p_nCap) {
        p_strOut.clear();
        return ReadStatus::TooLarge;
    }
    return ReadStatus::Ok;
}

std::string describeRead(ReadStatus p_eStatus, std::size_t p_nCap) {
    switch (p_eStatus) {
    case ReadStatus::Ok:
        return "read";
    case ReadStatus::Missing:
        return "missing";
    case ReadStatus::Directory:
        return "not a regular file (a directory)";
    case ReadStatus::Special:
        return "not a regular file (FIFO, device or socket)";
    case ReadStatus::TooLarge:
        return "larger than " + std::to_string(p_nCap) + " bytes";
    case ReadStatus::Unreadable:
        break;
    }
    return "unreadable";
}

std::string describeUnopenableHost(const std::string& p_strHostPath) {
    struct stat st {};
    if (::stat(p_strHostPath.c_str(), &st) != 0) {
        return describeRead(statusOfErrno(errno), 0);
    }
    const ReadStatus eStatus = statusOfMode(st.st_mode);
    return eStatus == ReadStatus::Ok ? "" : describeRead(eStatus, 0);
}
