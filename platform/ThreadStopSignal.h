// The stop request of one GThread, reachable from the code its body runs.
// GThread makes its signal current on the thread it starts, so that a wait on
// the real clock inside the body wakes as soon as stop() is called instead of
// sleeping out the rest of its pause.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

class ThreadStopSignal {
public:
    void request();
    void reset();
    bool requested() const;
    // Sleeps for d or until a stop is requested; true when stopped.
    bool sleepFor(std::chrono::microseconds d);

    // The signal of the GThread running on the calling thread, or nullptr.
    static ThreadStopSignal* current();
    static void setCurrent(ThreadStopSignal* signal);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_bRequested = false;
};
