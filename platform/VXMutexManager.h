// Scoped guard for VXMutex: locks on construction, unlocks on leaving the scope.
#pragma once

#include "platform/VXMutex.h"

class VXMutexManager {
public:
    VXMutexManager(VXMutex& m, const char* file, int line);
    ~VXMutexManager();
    VXMutexManager(const VXMutexManager&) = delete;
    VXMutexManager& operator=(const VXMutexManager&) = delete;

private:
    VXMutex& m_objMutex;
};
