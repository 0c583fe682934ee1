// Tells whether the marker file may have changed since it was last read,
// without looking its path up: an inotify watch on the marker's directory
// (the file created, removed, renamed, written) and on the file itself (a
// write through another link). A check is one non-blocking read of the
// watch's queue. The kernel queues an event before the write that caused it
// returns, so a change finished before a check is always seen by that check.
//
// Where no watch can be kept (no inotify instance left, the directory
// missing, the marker a symbolic link whose target may change unseen, the
// queue overflowed), every check answers "may have changed" and the marker
// is read each time, as if there were no watch.
#pragma once

#include <atomic>
#include <string>

class MarkerWatch {
public:
    MarkerWatch() = default;
    ~MarkerWatch();
    MarkerWatch(const MarkerWatch&) = delete;
    MarkerWatch& operator=(const MarkerWatch&) = delete;

    // True when the marker must be read again. Empties the event queue.
    bool mayHaveChanged();

    // Watches the marker at p_strHostPath from now on. Called before each read
    // of the marker, so that a change made during the read shows at the next
    // check instead of being lost.
    void watch(const std::string& p_strHostPath);

    // Drops every watch (the marker is now another file): the next check
    // answers "may have changed".
    void forget();

    // Unlike the members above, safe beside them on any thread: true when
    // every watch is in place and nothing is queued, so the marker has not
    // changed since the queue was last emptied. One poll of the queue, which
    // it leaves as it is.
    bool nothingQueued() const;

private:
    bool drainEvents(); // true when an event concerns the marker
    void removeWatch(int& p_nWatch);
    void watchPath(const std::string& p_strHostPath);
    // Makes m_nQuietFd follow m_bWatching.
    void publish();

    int m_nFd = -1;
    int m_nDirWatch = -1;
    int m_nFileWatch = -1;
    std::string m_strName; // the marker's name within the watched directory
    bool m_bWatching = false;
    // The queue nothingQueued polls: m_nFd while every watch is in place,
    // else -1. The descriptor stays open until the watch is destroyed.
    std::atomic<int> m_nQuietFd{-1};
};
