#include "platform/RefCountManager.h"

int ref_count::lock() {
    m_mutex.lock();
    if (!m_bLive.load()) {
        m_mutex.unlock();
        return -1;
    }
    return 0;
}

void ref_count::unLock() {
    m_mutex.unlock();
}

int ref_count::inc_reference() {
    int n = m_nCount.load();
    do {
        if (n <= 0) {
            return 0;
        }
    } while (!m_nCount.compare_exchange_weak(n, n + 1));
    return n + 1;
}

int ref_count::dec_reference() {
    int n = m_nCount.load();
    do {
        if (n <= 0) {
            return -1;
        }
    } while (!m_nCount.compare_exchange_weak(n, n - 1));
    return n - 1;
}

void ref_count::revive(void* pointer, const std::string& typeName) {
    m_strTypeName = typeName;
    m_pPointer.store(pointer);
    m_nCount.store(1);
    m_bLive.store(true);
}

void ref_count::retire() {
    m_bLive.store(false);
    m_pPointer.store(nullptr);
    m_nCount.store(0);
}

RefCountManager* RefCountManager::getInstance() {
    static RefCountManager instance;
    return &instance;
}

ref_count* RefCountManager::retrieveRefCount(void* pointer, const std::string& typeName) {
    std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_mapLive.find(pointer);
    if (it != m_mapLive.end() && it->second->inc_reference() != 0) {
        return it->second;
    }
    ref_count* count = nullptr;
    if (m_vecFree.empty()) {
        m_vecAll.push_back(std::make_unique<ref_count>());
        count = m_vecAll.back().get();
    } else {
        count = m_vecFree.back();
        m_vecFree.pop_back();
    }
    count->revive(pointer, typeName);
    m_mapLive[pointer] = count;
    return count;
}

void RefCountManager::returnbackRefCount(ref_count* count, const std::string& /*typeName*/) {
    if (count == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> guard(m_mutex);
    if (!count->m_bLive.load()) {
        return; // given back before: never list a record twice as free
    }
    // The map may already name a newer count for this address (the object was
    // destroyed and a new one built at the same place before this return).
    const auto it = m_mapLive.find(count->getPointer());
    if (it != m_mapLive.end() && it->second == count) {
        m_mapLive.erase(it);
    }
    count->retire();
    m_vecFree.push_back(count);
}

std::size_t RefCountManager::liveCount() const {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_mapLive.size();
}
