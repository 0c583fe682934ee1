// The framework's reference-counted pointer. Holders of one object share a
// ref_count from RefCountManager; the last holder to leave destroys the object
// through its virtual destructor. Misuse is reported on standard output as
// "SafePointer Report:<type> <message>" and thrown as VXRuntimeError.
#pragma once

#include "platform/RefCountManager.h"
#include "platform/VXRuntimeError.h"

#include <cstdio>
#include <string>
#include <typeinfo>
#include <utility>

class BaseSafePointer {
public:
    virtual ~BaseSafePointer() = default;

protected:
    [[noreturn]] static void report(const std::string& typeName, const char* message) {
        const std::string text = "SafePointer Report:" + typeName + " " + message;
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
        throw VXRuntimeError(text);
    }
};

template <class T> class SafePointer : public BaseSafePointer {
public:
    explicit SafePointer(T* p) : m_pRaw(p) {
        if (m_pRaw == nullptr) {
            report(typeName(), "Construct from NULL original pointer");
        }
        m_pCount = RefCountManager::getInstance()->retrieveRefCount(m_pRaw, typeName());
    }

    SafePointer(const SafePointer& other) {
        if (other.m_pRaw == nullptr) {
            report(typeName(), "Construct from NULL <T>pointer");
        }
        m_pRaw = other.m_pRaw;
        m_pCount = other.m_pCount;
        inc_reference();
    }

    SafePointer& operator=(const SafePointer& other) {
        if (this != &other) {
            SafePointer copy(other);
            std::swap(m_pRaw, copy.m_pRaw);
            std::swap(m_pCount, copy.m_pCount);
        } // copy now holds the old object and releases it
        return *this;
    }

    // A misuse found here ends the process: destructors let no exception out.
    ~SafePointer() override { dec_reference(); }

    void inc_reference() const {
        if (m_pCount == nullptr) {
            report(typeName(), "Already destructed 1");
        }
        if (m_pCount->lock() != 0) {
            report(typeName(), "Already destructed 2");
        }
        if (m_pCount->getPointer() != static_cast<void*>(m_pRaw)) {
            m_pCount->unLock();
            throw VXRuntimeError("not valid pointer in inc_reference ");
        }
        if (m_pCount->inc_reference() == 0) {
            m_pCount->unLock();
            report(typeName(), "Already destructed 3");
        }
        m_pCount->unLock();
    }

    void dec_reference() {
        if (m_pRaw == nullptr) {
            return;
        }
        if (m_pCount->lock() != 0) {
            report(typeName(), "Already destructed 2");
        }
        if (m_pCount->getPointer() != static_cast<void*>(m_pRaw)) {
            m_pCount->unLock();
            throw VXRuntimeError("not valid pointer in dec_reference");
        }
        ref_count* count = m_pCount;
        if (count->dec_reference() == 0) {
            delete m_pRaw; // the one owner of the object's memory
            m_pRaw = nullptr;
            RefCountManager::getInstance()->returnbackRefCount(count, typeName());
        }
        count->unLock();
    }

    T* get() const { return m_pRaw; }
    T* operator->() const { return m_pRaw; }
    T& operator*() const { return *m_pRaw; }

    static std::string typeName() { return typeid(T).name(); }

private:
    T* m_pRaw = nullptr;
    ref_count* m_pCount = nullptr;
};
