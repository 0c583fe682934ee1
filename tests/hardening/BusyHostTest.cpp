// A host that calls the channel back to back must not hold off the sensor
// thread's scheme switch, and the thread's lock must deadlock neither with a
// reset or uinit (which stop the thread while holding the lock) nor with a host
// video module that waits for another host call into the channel.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

constexpr int kDay = 1000;
constexpr int kNight = 0;
constexpr int kNightBrightness = 77;
// Far beyond any honest wait; a hang fails here instead of at the test timeout.
constexpr auto kBound = std::chrono::seconds(20);

// Host threads calling p_fnCall back to back until the object goes.
class HostLoad {
public:
    HostLoad(int p_nThreads, const std::function<void(int)>& p_fnCall) {
        for (int t = 0; t < p_nThreads; ++t) {
            m_vecThreads.emplace_back([this, p_fnCall] {
                for (int i = 0; !m_bStop; ++i) {
                    p_fnCall(i);
                }
            });
        }
    }
    ~HostLoad() {
        m_bStop = true;
        for (std::thread& objThread : m_vecThreads) {
            objThread.join();
        }
    }

private:
    std::atomic<bool> m_bStop{false};
    std::vector<std::thread> m_vecThreads;
};

template <class Done> bool within(Done p_fnDone) {
    const auto tEnd = std::chrono::steady_clock::now() + kBound;
    while (!p_fnDone()) {
        if (std::chrono::steady_clock::now() > tEnd) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// Day/night policy, scheme 1 with a brightness of its own, daylight: night
// shows on the ISP as scheme 1's brightness.
ISensorController& dayNightChannel(SampleDevice& p_objDevice,
                                   const VideoStreamModule* p_pVideo = nullptr) {
    ISensorController& c = p_objDevice.bringUp(1, p_pVideo);
    p_objDevice.isp().setLightLevel(0, kDay);
    c.setParamScheme(1);
    c.setParameter(KEY_BRIGHTNESS, kNightBrightness, true);
    c.setParameter(KEY_MIRROR, 1, true);
    c.setParamScheme(0);
    c.setParameter(KEY_SCHEME_MODE, 2, true);
    return c;
}

bool nightApplied(const SampleDevice& p_objDevice) {
    return p_objDevice.isp().getValue(0, KEY_BRIGHTNESS) == kNightBrightness;
}

// The virtual clock, noting the virtual time of the first pause that begins
// once p_fnSeen holds: the start of the first pass after the switch.
class WatchingClock : public VirtualClock {
public:
    explicit WatchingClock(std::function<bool()> p_fnSeen) : m_fnSeen(std::move(p_fnSeen)) {}
    void wait(long p_nSec, long p_nUsec) override {
        if (m_nSeenAt < 0 && m_fnSeen()) {
            m_nSeenAt = elapsedUsec();
        }
        VirtualClock::wait(p_nSec, p_nUsec);
    }
    long long seenAt() const { return m_nSeenAt; }

private:
    std::function<bool()> m_fnSeen;
    std::atomic<long long> m_nSeenAt{-1};
};

struct LoadCase {
    const char* szName;
    int nThreads;
    std::function<void(ISensorController&, int)> fnCall;
};

TEST(BusyHostTest, TheAutomaticSwitchComesWithinTwoPassesUnderAnyHostLoad) {
    const LoadCase kLoads[] = {
        {"two threads setting and getting", 2,
         [](ISensorController& c, int i) {
             c.setParameter(2337, i % 256, true);
             int nValue = 0;
             c.getParameter(2337, nValue);
         }},
        {"one thread reading everything", 1,
         [](ISensorController& c, int) {
             std::string strAll;
             c.getAllParameters(strAll);
         }},
    };
    for (const LoadCase& stLoad : kLoads) {
        SCOPED_TRACE(stLoad.szName);
        SampleDevice objDevice("ipc");
        CaptureStdout();
        ISensorController& c = dayNightChannel(objDevice);
        auto pClock = std::make_shared<WatchingClock>([&] { return nightApplied(objDevice); });
        installClock(pClock);
        HostLoad objLoad(stLoad.nThreads, [&](int i) { stLoad.fnCall(c, i); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // the load is on
        const long long nStart = pClock->elapsedUsec();
        objDevice.isp().setLightLevel(0, kNight);
        const bool bSwitched = within([&] { return pClock->seenAt() >= 0; });
        GetCapturedStdout();
        ASSERT_TRUE(bSwitched) << "no switch while the host is busy";
        // The pass in progress may have read the light just before it changed.
        EXPECT_LE(pClock->seenAt() - nStart, 2'000'000) << "passes (1 s each) before the switch";
    }
}

// A host video module that, for notices made on the sensor thread, waits
// until another host thread has finished a call into the channel.
class WaitingVideo : public AcceptingVideoModule {
public:
    int notifyParamChange(int, int p_nKey, int) const override {
        if (!m_bArmed || p_nKey != static_cast<int>(KEY_MIRROR)) {
            return 0;
        }
        std::unique_lock<std::mutex> objLock(m_mutex);
        m_bWaiting = true;
        m_cv.notify_all();
        m_bTimedOut = !m_cv.wait_for(objLock, kBound, [this] { return m_bHostCallDone; });
        return 0;
    }
    void arm() { m_bArmed = true; }
    // Waits for the notice, then makes p_fnCall and lets the notice return.
    void callWhileNoticePending(const std::function<void()>& p_fnCall) {
        {
            std::unique_lock<std::mutex> objLock(m_mutex);
            m_cv.wait_for(objLock, kBound, [this] { return m_bWaiting; });
        }
        p_fnCall();
        std::lock_guard<std::mutex> objLock(m_mutex);
        m_bHostCallDone = true;
        m_cv.notify_all();
    }
    bool timedOut() const {
        std::lock_guard<std::mutex> objLock(m_mutex);
        return m_bTimedOut;
    }

private:
    std::atomic<bool> m_bArmed{false};
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_cv;
    mutable bool m_bWaiting = false;
    mutable bool m_bHostCallDone = false;
    mutable bool m_bTimedOut = false;
};

TEST(BusyHostTest, AVideoModuleWaitingForAHostCallDoesNotDeadlockTheSwitch) {
    WaitingVideo objVideo;
    SampleDevice objDevice("ipc");
    CaptureStdout();
    ISensorController& c = dayNightChannel(objDevice, &objVideo);
    objVideo.arm();
    objDevice.isp().setLightLevel(0, kNight);
    objVideo.callWhileNoticePending([&] {
        int nValue = 0;
        EXPECT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    });
    EXPECT_TRUE(within([&] { return nightApplied(objDevice); }));
    GetCapturedStdout();
    EXPECT_FALSE(objVideo.timedOut()) << "the host call waited for the switch's lock";
    EXPECT_EQ(objDevice.isp().getValue(0, KEY_MIRROR), 1);
}

TEST(BusyHostTest, ResetsAndRestartsUnderLoadWhileTheThreadSwitchesEndCleanly) {
    SampleDevice objDevice("ipc");
    CaptureStdout();
    ISensorController& c = dayNightChannel(objDevice);
    {
        HostLoad objLoad(2, [&](int i) {
            c.setParameter(2337, i % 256, true);
            objDevice.isp().setLightLevel(0, i % 2 == 0 ? kNight : kDay);
        });
        for (int i = 0; i < 4; ++i) {
            EXPECT_TRUE(c.resetParameters());
        }
    }
    // A reset brings back the factory policy: none. Day/night again, at night.
    objDevice.isp().setLightLevel(0, kNight);
    c.setParameter(KEY_SCHEME_MODE, 2, true);
    int nScheme = -1;
    EXPECT_TRUE(within([&] { return c.getParamScheme(nScheme) && nScheme == 1; }));
    GetCapturedStdout();
}

} // namespace
} // namespace sensortest
