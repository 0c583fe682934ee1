// The framework's thread: runs its body again and again until stopped.
//
// On the new thread: f2 once, then the body until stop(), then f3 once. A
// pause the body takes on the real clock (TavrinTime::wait) is cut short by
// stop(), so stop() returns promptly even in the middle of a long pause.
#pragma once

#include "platform/ThreadStopSignal.h"
#include "platform/function.h"

#include <mutex>
#include <string>
#include <thread>

class GThread {
public:
    GThread(const function<int>& body, const std::string& name, const function<int>& f2,
            const function<int>& f3);
    ~GThread(); // stops if running; must not be destroyed by its own body
    GThread(const GThread&) = delete;
    GThread& operator=(const GThread&) = delete;

    // True when started; false if already running.
    bool start();
    // Asks the body to end, wakes a pause in progress and joins; true.
    // Called from the body itself, it only asks (a thread cannot join itself).
    bool stop();
    bool isRunning() const;
    const std::string& getName() const { return m_strName; }

    static int emptyFun();

private:
    void run();

    function<int> m_objBody;
    function<int> m_objOnStart;
    function<int> m_objOnStop;
    std::string m_strName;
    ThreadStopSignal m_objStop;
    mutable std::mutex m_ctrlMutex; // serialises start/stop from different threads
    std::thread m_thread;
};
