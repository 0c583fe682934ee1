// The host's mutex. Lock and Unlock take the caller's source file and line,
// as the host's interface does; this stand-in does not record them.
#pragma once

#include <mutex>

class VXMutex {
public:
    VXMutex();
    ~VXMutex();
    VXMutex(const VXMutex&) = delete;
    VXMutex& operator=(const VXMutex&) = delete;

    void Lock(const char* file, int line);
    void Unlock(const char* file, int line);
    bool TryLock();

private:
    // Recursive, as a host mutex commonly is: a public operation that calls
    // another public operation on the same object must not deadlock its own thread.
    std::recursive_mutex m_mutex;
};
