// The framework's callable wrapper: function<R> holds a shared, type-erased
// callable taking no arguments, either a plain function or a member function
// bound to an object. Copies share the callable through SafePointer.
#pragma once

#include "platform/SafePointer.h"
#include "platform/VXRuntimeError.h"

template <class R> class function_obj_base {
public:
    virtual ~function_obj_base() = default;
    virtual R operator()() = 0;
};

// F is a plain function pointer R (*)() or a bind_funcobj0.
template <class R, class F> class function_obj : public function_obj_base<R> {
public:
    explicit function_obj(F f) : m_f(f) {}
    R operator()() override { return m_f(); }

private:
    F m_f;
};

// A member function taking no arguments, bound to an object it does not own.
template <class R, class T> class bind_funcobj0 {
public:
    using Method = R (T::*)();

    bind_funcobj0(Method method, T* obj) : m_pMethod(method), m_pObj(obj) { check(); }
    bind_funcobj0(T* obj, Method method) : m_pMethod(method), m_pObj(obj) { check(); }

    R operator()() const { return (m_pObj->*m_pMethod)(); }

private:
    void check() const {
        if (m_pObj == nullptr || m_pMethod == nullptr) {
            throw VXRuntimeError("bind_funcobj0: NULL object or member function");
        }
    }

    Method m_pMethod;
    T* m_pObj;
};

template <class R> class function {
public:
    using Pointer = SafePointer<function_obj_base<R>>;

    explicit function(const Pointer& callable) : m_objCallable(callable) {}

    // Refuses a null function: calling it later could only crash.
    function(R (*f)()) : m_objCallable(makePlain(f)) {}

    template <class T>
    function(T* obj, R (T::*method)())
        : m_objCallable(
              new function_obj<R, bind_funcobj0<R, T>>(bind_funcobj0<R, T>(obj, method))) {}

    function(const function&) = default;
    function& operator=(const function&) = default;
    virtual ~function() = default;

    R operator()() const { return (*m_objCallable)(); }

    const Pointer& callable() const { return m_objCallable; }

private:
    static function_obj_base<R>* makePlain(R (*f)()) {
        if (f == nullptr) {
            throw VXRuntimeError("function: NULL function pointer");
        }
        return new function_obj<R, R (*)()>(f);
    }

    Pointer m_objCallable;
};
