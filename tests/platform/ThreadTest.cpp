// The framework thread and its replaceable clock, the callable wrapper and its
// reference-counted pointer.
#include "platform/GThread.h"
#include "platform/SafePointer.h"
#include "platform/TavrinTime.h"
#include "platform/VXClock.h"
#include "platform/function.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>
#include <vector>

namespace {

// A body that pauses one second per pass, as the sensor thread's does.
struct PassCounter {
    int pass() {
        ++m_nPasses;
        TavrinTime(1, 0).wait();
        return 0;
    }
    int started() { return ++m_nStarts; }
    int ended() { return ++m_nEnds; }
    void waitFor(int n) const {
        while (m_nPasses.load() < n) {
            std::this_thread::yield();
        }
    }
    std::tuple<int, int, int> counts() const { return {m_nPasses, m_nStarts, m_nEnds}; }
    std::atomic<int> m_nPasses{0}, m_nStarts{0}, m_nEnds{0};
};

// A callable that records its destruction.
struct Probe : function_obj_base<int> {
    explicit Probe(std::atomic<int>& p_nDestroyed) : m_nDestroyed(p_nDestroyed) {}
    ~Probe() override { ++m_nDestroyed; }
    int operator()() override { return 42; }
    std::atomic<int>& m_nDestroyed;
};
using CallablePtr = SafePointer<function_obj_base<int>>;

} // namespace

// On the real clock stop() wakes the body in the middle of its pause and joins:
// one pass per run. On the virtual clock pauses cost nothing (its time of day:
// the scheme tests).
TEST(GThreadTest, StopWakesThePausingBodyAndVirtualPausesCostNothing) {
    const std::shared_ptr<void> restoreClock(nullptr, [](void*) { installClock(nullptr); });
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::pass), "SensorThread",
                   function<int>(&counter, &PassCounter::started),
                   function<int>(&counter, &PassCounter::ended));
    for (int nRun = 1; nRun <= 2; ++nRun) {
        ASSERT_TRUE(thread.start());
        EXPECT_FALSE(thread.start()) << "already running";
        counter.waitFor(nRun); // now inside the one-second pause
        const auto before = std::chrono::steady_clock::now();
        EXPECT_TRUE(thread.stop());
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
        EXPECT_FALSE(thread.isRunning());
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(std::make_tuple(nRun, nRun, nRun), counter.counts()) << "no pass after stop";
    }
    EXPECT_TRUE(thread.stop()) << "stopping a stopped thread is harmless";

    auto clock = std::make_shared<VirtualClock>();
    installClock(clock);
    const auto before = std::chrono::steady_clock::now();
    TavrinTime(100, 0).wait();
    TavrinTime(0, 500000).wait();
    clock->wait(-5, 0); // a negative pause is no pause
    EXPECT_EQ(std::make_pair(100500000LL, 3LL),
              std::make_pair(clock->elapsedUsec(), clock->waitCount()));
    ASSERT_TRUE(thread.start());
    counter.waitFor(50);
    EXPECT_TRUE(thread.stop());
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_EQ(100500000LL + (std::get<0>(counter.counts()) - 2) * 1000000LL, clock->elapsedUsec());
    installClock(nullptr);
    EXPECT_NE(clock, currentClock()) << "the real clock is back";
    ASSERT_TRUE(thread.start()); // left running: destruction must stop it
}

TEST(SafePointer, LastHolderDestroysTheObjectOnceAndAssignmentReleases) {
    std::atomic<int> destroyed{0};
    std::vector<std::thread> threads;
    {
        CallablePtr first(new Probe(destroyed));
        EXPECT_EQ(first.get(), CallablePtr(CallablePtr(first)).get());
        EXPECT_EQ(std::make_pair(0, 42), std::make_pair(destroyed.load(), (*first)()));
        for (int t = 0; t < 8; ++t) { // copies released on many threads
            threads.emplace_back([copy = first]() mutable {
                for (int i = 0; i < 500; ++i) {
                    CallablePtr again(copy), another(again);
                }
            });
        }
    }
    for (std::thread& t : threads) {
        t.join();
    }
    EXPECT_EQ(1, destroyed.load());

    std::atomic<int> destroyedB{0};
    CallablePtr a(new Probe(destroyed)), b(new Probe(destroyedB));
    a = b;
    EXPECT_EQ(2, destroyed.load()) << "assignment released the old object";
    EXPECT_EQ(0, destroyedB.load());
}
