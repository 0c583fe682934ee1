// Reference counts for the framework's SafePointer, handed out per object.
//
// A count record is never freed while the process runs: when the last holder
// returns it, it is marked dead and kept for reuse, so a stale holder that
// still points at it finds "already destructed" instead of freed memory.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class ref_count {
public:
    ref_count() = default;
    ref_count(const ref_count&) = delete;
    ref_count& operator=(const ref_count&) = delete;

    // Takes the record's lock: 0 when locked, non-zero (and not locked) when
    // the record no longer counts a live object.
    int lock();
    void unLock();
    void* getPointer() const { return m_pPointer.load(); }
    // New count, or 0 when the object is already gone.
    int inc_reference();
    // Count left: 0 when the last reference was released, -1 when there was none.
    int dec_reference();
    int count() const { return m_nCount.load(); }

private:
    friend class RefCountManager;
    void revive(void* pointer, const std::string& typeName);
    void retire();

    std::mutex m_mutex;
    std::atomic<void*> m_pPointer{nullptr};
    std::atomic<int> m_nCount{0};
    std::atomic<bool> m_bLive{false};
    std::string m_strTypeName;
};

class RefCountManager {
public:
    static RefCountManager* getInstance();

    // The count of pointer: a new one at 1, or the live one of an object
    // already counted, with one more reference.
    ref_count* retrieveRefCount(void* pointer, const std::string& typeName);
    // Gives back the count of an object whose last holder left.
    void returnbackRefCount(ref_count* count, const std::string& typeName);
    // Number of objects counted at present.
    std::size_t liveCount() const;

private:
    RefCountManager() = default;

    mutable std::mutex m_mutex;
    std::map<void*, ref_count*> m_mapLive;
    std::vector<ref_count*> m_vecFree;
    std::vector<std::unique_ptr<ref_count>> m_vecAll; // owns every record
};
