#include "common/MarkerWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace {

// Events on the directory's entries (and on the directory itself): the marker
// created, removed, renamed in or out, written, or its mode changed.
constexpr std::uint32_t DIR_EVENTS = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                     IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF |
                                     IN_MOVE_SELF | IN_ONLYDIR;
// Events on the marker's own inode, whichever link it was reached through.
constexpr std::uint32_t FILE_EVENTS =
    IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_DONT_FOLLOW;

} // namespace

MarkerWatch::~MarkerWatch() {
    if (m_nFd >= 0) {
        ::close(m_nFd);
    }
}

bool MarkerWatch::mayHaveChanged() {
    if (m_nFd < 0) {
        return true;
    }
    const bool bChanged = drainEvents();
    publish();
    return bChanged || !m_bWatching;
}

bool MarkerWatch::nothingQueued() const {
    pollfd stPoll{m_nQuietFd.load(std::memory_order_acquire), POLLIN, 0};
    return stPoll.fd >= 0 && ::poll(&stPoll, 1, 0) == 0;
}

void MarkerWatch::publish() {
    m_nQuietFd.store(m_bWatching ? m_nFd : -1, std::memory_order_release);
}

bool MarkerWatch::drainEvents() {
    alignas(inotify_event) char aBuf[4096];
    bool bChanged = false;
    for (;;) {
        const ssize_t nRead = ::read(m_nFd, aBuf, sizeof aBuf);
        if (nRead < 0 && errno == EINTR) {
            continue;
        }
        if (nRead < 0 && errno == EAGAIN) {
            return bChanged;
        }
        if (nRead <= 0) {
            m_bWatching = false; // the queue cannot be read: trust nothing
            return true;
        }
        for (ssize_t nPos = 0; nPos < nRead;) {
            const auto* pEvent = reinterpret_cast<const inotify_event*>(aBuf + nPos);
            nPos += static_cast<ssize_t>(sizeof(inotify_event) + pEvent->len);
            if ((pEvent->mask & IN_Q_OVERFLOW) != 0) {
                bChanged = true; // events were lost, the marker's among them maybe
            } else if (pEvent->wd == m_nFileWatch) {
                bChanged = true;
                if ((pEvent->mask & IN_IGNORED) != 0) {
                    m_nFileWatch = -1;
                }
            } else if (pEvent->wd == m_nDirWatch) {
                // An event without a name concerns the directory itself
                // (removed, moved, its mode changed): the marker may be gone.
                const bool bAboutDir = pEvent->len == 0;
                bChanged = bChanged || bAboutDir || m_strName == pEvent->name;
                if ((pEvent->mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF)) != 0) {
                    m_bWatching = false;
                }
                if ((pEvent->mask & IN_IGNORED) != 0) {
                    m_nDirWatch = -1;
                }
            }
        }
    }
}

void MarkerWatch::watch(const std::string& p_strHostPath) {
    watchPath(p_strHostPath);
    publish();
}

void MarkerWatch::watchPath(const std::string& p_strHostPath) {
    m_bWatching = false;
    if (m_nFd < 0) {
        m_nFd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (m_nFd < 0) {
            return;
        }
    }
    const std::string::size_type nSlash = p_strHostPath.rfind('/');
    const std::string strDir = nSlash == std::string::npos ? "."
                               : nSlash == 0               ? "/"
                                                           : p_strHostPath.substr(0, nSlash);
    m_strName = nSlash == std::string::npos ? p_strHostPath : p_strHostPath.substr(nSlash + 1);

    const int nDirWatch = ::inotify_add_watch(m_nFd, strDir.c_str(), DIR_EVENTS);
    if (nDirWatch != m_nDirWatch) {
        removeWatch(m_nDirWatch);
    }
    m_nDirWatch = nDirWatch;
    if (m_nDirWatch < 0) {
        return;
    }
    // A symbolic link's target can change without an event here.
    struct stat stInfo {};
    const bool bExists = ::lstat(p_strHostPath.c_str(), &stInfo) == 0;
    if (bExists && S_ISLNK(stInfo.st_mode)) {
        removeWatch(m_nFileWatch);
        return;
    }
    // Missing is fine: the directory's watch reports its creation.
    const int nFileWatch =
        bExists ? ::inotify_add_watch(m_nFd, p_strHostPath.c_str(), FILE_EVENTS) : -1;
    if (nFileWatch != m_nFileWatch) {
        removeWatch(m_nFileWatch);
    }
    m_nFileWatch = nFileWatch;
    m_bWatching = !bExists || m_nFileWatch >= 0;
}

void MarkerWatch::forget() {
    removeWatch(m_nFileWatch);
    removeWatch(m_nDirWatch);
    m_bWatching = false;
    publish();
}

void MarkerWatch::removeWatch(int& p_nWatch) {
    if (p_nWatch >= 0 && m_nFd >= 0) {
        ::inotify_rm_watch(m_nFd, p_nWatch);
    }
    p_nWatch = -1;
}
