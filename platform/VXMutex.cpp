#include "platform/VXMutex.h"

VXMutex::VXMutex() = default;

VXMutex::~VXMutex() = default;

void VXMutex::Lock(const char* /*file*/, int /*line*/) {
    m_mutex.lock();
}

void VXMutex::Unlock(const char* /*file*/, int /*line*/) {
    m_mutex.unlock();
}

bool VXMutex::TryLock() {
    return m_mutex.try_lock();
}
