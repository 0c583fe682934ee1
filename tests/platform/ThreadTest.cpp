// The framework thread and its replaceable clock, the callable wrapper and its
// reference-counted pointer.
#include "platform/GThread.h"
#include "platform/RefCountManager.h"
#include "platform/SafePointer.h"
#include "platform/TavrinTime.h"
#include "platform/VXClock.h"
#include "platform/VXDeviceTime.h"
#include "platform/function.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>
#include <vector>

namespace {

// Puts back the real clock whatever a test installed.
class ClockTest : public testing::Test {
protected:
    void TearDown() override { installClock(nullptr); }
};
using GThreadTest = ClockTest;
using VirtualClockTest = ClockTest;

struct PassCounter {
    int pass() { return tick(TavrinTime(0, 1000)); }
    int longPause() { return tick(TavrinTime(1, 0)); } // as the sensor thread's pass does
    int started() { return ++m_nStarts; }
    int ended() { return ++m_nEnds; }
    int tick(TavrinTime pause) {
        ++m_nPasses;
        pause.wait();
        return 0;
    }
    void waitFor(int n) const {
        while (m_nPasses.load() < n) {
            std::this_thread::yield();
        }
    }
    std::atomic<int> m_nPasses{0}, m_nStarts{0}, m_nEnds{0};
};

function<int> none() {
    return function<int>(&GThread::emptyFun);
}

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

} // namespace

TEST_F(GThreadTest, RunsBodyRepeatedlyUntilStoppedAndRestarts) {
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::pass), "PassThread",
                   function<int>(&counter, &PassCounter::started),
                   function<int>(&counter, &PassCounter::ended));
    EXPECT_FALSE(thread.isRunning());
    for (int nRun = 1; nRun <= 2; ++nRun) {
        ASSERT_TRUE(thread.start());
        EXPECT_FALSE(thread.start()) << "already running";
        counter.waitFor(counter.m_nPasses.load() + 2);
        EXPECT_TRUE(thread.stop());
        const int afterStop = counter.m_nPasses.load();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(afterStop, counter.m_nPasses.load()) << "no pass after stop returned";
        EXPECT_EQ(std::make_pair(nRun, nRun),
                  std::make_pair(counter.m_nStarts.load(), counter.m_nEnds.load()));
    }
    EXPECT_TRUE(thread.stop()) << "stopping a stopped thread is harmless";
    ASSERT_TRUE(thread.start()); // left running: destruction must stop it
}

TEST_F(GThreadTest, StopWakesAPausingBody) {
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::longPause), "SensorThread", none(),
                   none());
    ASSERT_TRUE(thread.start());
    counter.waitFor(1); // now inside the one-second pause
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(thread.stop());
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(1, counter.m_nPasses.load()) << "joined: the pause ended the loop";
}

TEST_F(VirtualClockTest, PausesCostNothingAndAdvanceTheTimeOfDay) {
    auto clock = std::make_shared<VirtualClock>();
    installClock(clock);
    clock->setTimeOfDay(23, 59, 30);
    const auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        TavrinTime(1, 0).wait();
    }
    TavrinTime(0, 500000).wait();
    clock->wait(-5, 0); // a negative pause is no pause
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_EQ(100500000LL, clock->elapsedUsec());
    EXPECT_EQ(102, clock->waitCount());
    const VXTime t = VXDeviceTime::getCurrentTime(); // 23:59:30 + 100.5 s, past midnight
    EXPECT_EQ(std::make_tuple(2024, 1, 2, 0, 1, 10),
              std::make_tuple(t.year, t.month, t.day, t.hour, t.minute, t.second));

    // A thread's passes on the virtual clock take no real pauses.
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::longPause), "Virtual", none(), none());
    ASSERT_TRUE(thread.start());
    counter.waitFor(50);
    EXPECT_TRUE(thread.stop());
    EXPECT_GE(clock->elapsedUsec(), 100500000LL + 49LL * 1000000);
    EXPECT_EQ(102 + counter.m_nPasses.load(), clock->waitCount());

    installClock(nullptr);
    EXPECT_NE(clock, currentClock()) << "the real clock is back";
}

TEST(SafePointer, LastHolderDestroysTheObjectOnceAndAssignmentReleases) {
    std::atomic<int> destroyed{0};
    const std::size_t liveBefore = RefCountManager::getInstance()->liveCount();
    std::vector<std::thread> threads;
    {
        CallablePtr first(new Probe(destroyed));
        EXPECT_EQ(liveBefore + 1, RefCountManager::getInstance()->liveCount());
        EXPECT_EQ(first.get(), CallablePtr(CallablePtr(first)).get());
        EXPECT_EQ(0, destroyed.load()) << "copies gone, first still holds";
        EXPECT_EQ(42, (*first)());
        for (int t = 0; t < 8; ++t) { // copies released on many threads
            threads.emplace_back([copy = first]() mutable {
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
    EXPECT_EQ(liveBefore, RefCountManager::getInstance()->liveCount()) << "count given back";

    std::atomic<int> destroyedB{0};
    auto* probeB = new Probe(destroyedB);
    CallablePtr a(new Probe(destroyed));
    CallablePtr b(probeB);
    a = b;
    EXPECT_EQ(2, destroyed.load()) << "assignment released the old object";
    CallablePtr{probeB}; // the same object wrapped anew joins its count
    EXPECT_EQ(0, destroyedB.load());
}
