#include "platform/ThreadStopSignal.h"

namespace {
thread_local ThreadStopSignal* t_pCurrent = nullptr;
}

void ThreadStopSignal::request() {
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_bRequested = true;
    }
    m_cv.notify_all();
}

void ThreadStopSignal::reset() {
    std::lock_guard<std::mutex> guard(m_mutex);
    m_bRequested = false;
}

bool ThreadStopSignal::requested() const {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_bRequested;
}

bool ThreadStopSignal::sleepFor(std::chrono::microseconds d) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_cv.wait_for(lock, d, [this] { return m_bRequested; });
}

ThreadStopSignal* ThreadStopSignal::current() {
    return t_pCurrent;
}

void ThreadStopSignal::setCurrent(ThreadStopSignal* signal) {
    t_pCurrent = signal;
}
