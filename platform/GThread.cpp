#include "platform/GThread.h"

#include <cstdio>
#include <exception>
#include <pthread.h>

namespace {

// Linux thread names hold at most 15 characters.
void nameCurrentThread(const std::string& name) {
    const std::string shortName = name.substr(0, 15);
    pthread_setname_np(pthread_self(), shortName.c_str());
}

} // namespace

GThread::GThread(const function<int>& body, const std::string& name, const function<int>& f2,
                 const function<int>& f3)
    : m_objBody(body), m_objOnStart(f2), m_objOnStop(f3), m_strName(name) {}

GThread::~GThread() {
    stop();
}

int GThread::emptyFun() {
    return 0;
}

bool GThread::start() {
    std::lock_guard<std::mutex> guard(m_ctrlMutex);
    if (m_thread.joinable()) {
        if (!m_objStop.requested()) {
            return false; // running
        }
        m_thread.join(); // stopped from inside its body, not yet joined
    }
    m_objStop.reset();
    m_thread = std::thread(&GThread::run, this);
    return true;
}

bool GThread::stop() {
    if (ThreadStopSignal::current() == &m_objStop) {
        m_objStop.request();
        return true;
    }
    std::lock_guard<std::mutex> guard(m_ctrlMutex);
    m_objStop.request();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return true;
}

bool GThread::isRunning() const {
    std::lock_guard<std::mutex> guard(m_ctrlMutex);
    return m_thread.joinable() && !m_objStop.requested();
}

void GThread::run() {
    nameCurrentThread(m_strName);
    ThreadStopSignal::setCurrent(&m_objStop);
    // An exception must not leave a thread function (it would end the
    // process); it ends this thread's loop instead and is reported.
    try {
        m_objOnStart();
        while (!m_objStop.requested()) {
            m_objBody();
        }
        m_objOnStop();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "GThread %s: ended by exception: %s\n", m_strName.c_str(), e.what());
        m_objStop.request();
    } catch (...) {
        std::fprintf(stderr, "GThread %s: ended by unknown exception\n", m_strName.c_str());
        m_objStop.request();
    }
    ThreadStopSignal::setCurrent(nullptr);
}
