// The framework thread, its pauses and the replaceable clock.
#include "platform/GThread.h"
#include "platform/TavrinTime.h"
#include "platform/VXClock.h"
#include "platform/VXDeviceTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

// Puts back the real clock whatever a test installed.
class ClockTest : public testing::Test {
protected:
    void TearDown() override { installClock(nullptr); }
};

class PassCounter {
public:
    int pass() {
        ++m_nPasses;
        TavrinTime(0, 1000).wait();
        return 0;
    }
    int longPause() {
        ++m_nPasses;
        TavrinTime(1, 0).wait(); // as the sensor thread's pass does
        return 0;
    }
    int started() { return ++m_nStarts; }
    int ended() { return ++m_nEnds; }
    int fail() { throw std::runtime_error("pass failed"); }

    std::atomic<int> m_nPasses{0};
    std::atomic<int> m_nStarts{0};
    std::atomic<int> m_nEnds{0};
};

void waitForPasses(const PassCounter& counter, int n) {
    while (counter.m_nPasses.load() < n) {
        std::this_thread::yield();
    }
}

} // namespace

using GThreadTest = ClockTest;
using VirtualClockTest = ClockTest;

TEST_F(GThreadTest, RunsBodyRepeatedlyUntilStoppedAndRestarts) {
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::pass), "PassThread",
                   function<int>(&counter, &PassCounter::started),
                   function<int>(&counter, &PassCounter::ended));
    EXPECT_FALSE(thread.isRunning());
    ASSERT_TRUE(thread.start());
    EXPECT_FALSE(thread.start()) << "already running";
    waitForPasses(counter, 3);
    EXPECT_TRUE(thread.stop());
    const int afterStop = counter.m_nPasses.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(afterStop, counter.m_nPasses.load()) << "no pass after stop returned";
    EXPECT_EQ(1, counter.m_nStarts.load());
    EXPECT_EQ(1, counter.m_nEnds.load());

    ASSERT_TRUE(thread.start());
    waitForPasses(counter, afterStop + 2);
    EXPECT_TRUE(thread.stop());
    EXPECT_EQ(2, counter.m_nStarts.load());
    EXPECT_EQ(2, counter.m_nEnds.load());
    EXPECT_TRUE(thread.stop()) << "stopping a stopped thread is harmless";
    ASSERT_TRUE(thread.start()); // left running: destruction must stop it
}

TEST_F(GThreadTest, StopWakesABodyPausingOnTheRealClock) {
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::longPause), "SensorThread",
                   function<int>(&GThread::emptyFun), function<int>(&GThread::emptyFun));
    ASSERT_TRUE(thread.start());
    waitForPasses(counter, 1); // now inside the one-second pause
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(thread.stop());
    const auto took = std::chrono::steady_clock::now() - before;
    EXPECT_LT(took, std::chrono::milliseconds(900));
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(1, counter.m_nPasses.load()) << "joined: the pause ended the loop";
}

TEST_F(GThreadTest, ThrowingBodyEndsItsThreadOnly) {
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::fail), "Failing",
                   function<int>(&GThread::emptyFun), function<int>(&GThread::emptyFun));
    ASSERT_TRUE(thread.start());
    while (thread.isRunning()) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(thread.stop());
    EXPECT_EQ(0, GThread::emptyFun());
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
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_EQ(100500000LL, clock->elapsedUsec());
    EXPECT_EQ(101, clock->waitCount());

    const VXTime t = VXDeviceTime::getCurrentTime(); // 23:59:30 + 100.5 s
    EXPECT_EQ(2024, t.year);
    EXPECT_EQ(1, t.month);
    EXPECT_EQ(2, t.day) << "midnight passed";
    EXPECT_EQ(0, t.hour);
    EXPECT_EQ(1, t.minute);
    EXPECT_EQ(10, t.second);
    installClock(nullptr);
    EXPECT_NE(clock, currentClock()) << "the real clock is back";
}

TEST_F(VirtualClockTest, SetsDateAndRefusesImpossibleTimes) {
    VirtualClock clock;
    clock.setTimeOfDay(8, 30);
    clock.setDate(2024, 2, 29);
    const VXTime t = clock.now();
    EXPECT_EQ(29, t.day);
    EXPECT_EQ(8, t.hour);
    EXPECT_EQ(30, t.minute);
    EXPECT_THROW(clock.setTimeOfDay(24, 0), std::out_of_range);
    EXPECT_THROW(clock.setTimeOfDay(10, 60), std::out_of_range);
    EXPECT_THROW(clock.setDate(2023, 2, 29), std::out_of_range);
    clock.wait(-5, 0);
    EXPECT_EQ(0, clock.elapsedUsec()) << "a negative pause is no pause";
}

TEST_F(VirtualClockTest, ThreadPassesRunWithoutRealPauses) {
    auto clock = std::make_shared<VirtualClock>();
    installClock(clock);
    PassCounter counter;
    GThread thread(function<int>(&counter, &PassCounter::longPause), "Virtual",
                   function<int>(&GThread::emptyFun), function<int>(&GThread::emptyFun));
    ASSERT_TRUE(thread.start());
    waitForPasses(counter, 50);
    EXPECT_TRUE(thread.stop());
    EXPECT_GE(clock->elapsedUsec(), 49LL * 1000000);
    EXPECT_EQ(counter.m_nPasses.load(), clock->waitCount());
}
