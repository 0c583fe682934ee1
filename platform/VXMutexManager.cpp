#include "platform/VXMutexManager.h"

VXMutexManager::VXMutexManager(VXMutex& m, const char* file, int line) : m_objMutex(m) {
    m_objMutex.Lock(file, line);
}

VXMutexManager::~VXMutexManager() {
    m_objMutex.Unlock(__FILE__, __LINE__);
}
