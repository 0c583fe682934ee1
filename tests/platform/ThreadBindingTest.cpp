// The framework's callable wrapper and its reference-counted pointer.
#include "platform/RefCountManager.h"
#include "platform/SafePointer.h"
#include "platform/VXRuntimeError.h"
#include "platform/function.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

// A callable that records its destruction.
class Probe : public function_obj_base<int> {
public:
    explicit Probe(std::atomic<int>& destroyed) : m_destroyed(destroyed) {}
    ~Probe() override { ++m_destroyed; }
    int operator()() override { return 42; }

private:
    std::atomic<int>& m_destroyed;
};

using CallablePtr = SafePointer<function_obj_base<int>>;

int seven() {
    return 7;
}

class Counter {
public:
    int tick() { return ++m_nTicks; }
    int m_nTicks = 0;
};

std::string reportOf(const char* message) {
    return std::string("SafePointer Report:17function_obj_baseIiE ") + message;
}

} // namespace

TEST(SafePointer, NullPointerIsReportedAndThrown) {
    testing::internal::CaptureStdout();
    try {
        CallablePtr p(nullptr);
        FAIL() << "no exception";
    } catch (const VXRuntimeError& e) {
        EXPECT_EQ(reportOf("Construct from NULL original pointer"), e.what());
    }
    EXPECT_EQ(reportOf("Construct from NULL original pointer") + "\n",
              testing::internal::GetCapturedStdout());
}

TEST(SafePointer, LastHolderDestroysTheObjectOnce) {
    std::atomic<int> destroyed{0};
    const std::size_t liveBefore = RefCountManager::getInstance()->liveCount();
    {
        CallablePtr first(new Probe(destroyed));
        EXPECT_EQ(liveBefore + 1, RefCountManager::getInstance()->liveCount());
        {
            CallablePtr second(first);
            CallablePtr third(second);
            EXPECT_EQ(first.get(), third.get());
        }
        EXPECT_EQ(0, destroyed.load()) << "copies gone, first still holds";
        EXPECT_EQ(42, (*first)());
    }
    EXPECT_EQ(1, destroyed.load());
    EXPECT_EQ(liveBefore, RefCountManager::getInstance()->liveCount()) << "count given back";
}

TEST(SafePointer, CopiesReleasedOnManyThreadsDestroyOnce) {
    std::atomic<int> destroyed{0};
    std::vector<std::thread> threads;
    {
        CallablePtr origin(new Probe(destroyed));
        for (int t = 0; t < 8; ++t) {
            threads.emplace_back([copy = origin]() mutable {
                for (int i = 0; i < 500; ++i) {
                    CallablePtr again(copy);
                    CallablePtr another(again);
                }
            });
        }
    }
    for (std::thread& t : threads) {
        t.join();
    }
    EXPECT_EQ(1, destroyed.load());
}

TEST(SafePointer, AssignmentAndRewrappingKeepOneCountPerObject) {
    std::atomic<int> destroyedA{0};
    std::atomic<int> destroyedB{0};
    auto* probeB = new Probe(destroyedB);
    CallablePtr a(new Probe(destroyedA));
    CallablePtr b(probeB);
    a = b;
    EXPECT_EQ(1, destroyedA.load()) << "assignment released the old object";
    CallablePtr& alias = a;
    a = alias;
    {
        CallablePtr again(probeB); // the same object wrapped anew joins its count
    }
    EXPECT_EQ(0, destroyedB.load());
}

TEST(SafePointer, CopyOfAReleasedHolderIsReported) {
    std::atomic<int> destroyed{0};
    CallablePtr p(new Probe(destroyed));
    p.dec_reference(); // the last holder lets go by hand
    EXPECT_EQ(1, destroyed.load());
    EXPECT_EQ(nullptr, p.get());
    testing::internal::CaptureStdout();
    try {
        CallablePtr copy(p);
        FAIL() << "no exception";
    } catch (const VXRuntimeError& e) {
        EXPECT_EQ(reportOf("Construct from NULL <T>pointer"), e.what());
    }
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStdout().find("Construct from NULL <T>pointer"));
}

TEST(RefCount, GoneObjectsRefuseNewReferences) {
    int target = 0;
    RefCountManager* manager = RefCountManager::getInstance();
    ref_count* count = manager->retrieveRefCount(&target, "int");
    ASSERT_EQ(0, count->lock());
    EXPECT_EQ(&target, count->getPointer());
    EXPECT_EQ(2, count->inc_reference());
    EXPECT_EQ(1, count->dec_reference());
    EXPECT_EQ(0, count->dec_reference()) << "last reference";
    EXPECT_EQ(0, count->inc_reference()) << "object gone";
    count->unLock();
    manager->returnbackRefCount(count, "int");
    EXPECT_NE(0, count->lock()) << "a returned count locks no more";
}

TEST(Function, PlainFunctionAndCopiesShareTheCallable) {
    function<int> f(&seven);
    function<int> g(f);
    EXPECT_EQ(7, f());
    EXPECT_EQ(7, g());
    EXPECT_EQ(f.callable().get(), g.callable().get());
    EXPECT_THROW(function<int>(static_cast<int (*)()>(nullptr)), VXRuntimeError);
}

TEST(Function, MemberBindingCallsTheMemberOnTheObject) {
    Counter counter;
    function<int> f(&counter, &Counter::tick);
    EXPECT_EQ(1, f());
    EXPECT_EQ(2, f());
    EXPECT_EQ(2, counter.m_nTicks);

    // The spelled-out form: callable object, then SafePointer, then function.
    using Bound = function_obj<int, bind_funcobj0<int, Counter>>;
    function<int> g(CallablePtr(new Bound(bind_funcobj0<int, Counter>(&Counter::tick, &counter))));
    EXPECT_EQ(3, g());

    EXPECT_THROW(function<int>(static_cast<Counter*>(nullptr), &Counter::tick), VXRuntimeError);
    const char* none = nullptr;
    EXPECT_STREQ("", VXRuntimeError(none).what());
}
