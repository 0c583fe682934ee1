// Races a camera meets: host calls while the channel's thread switches schemes, a busy host, the
// mailbox between channels, shared loggers. ThreadSanitizer finds races; the checks lost results.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"
#include "platform/VXLogger.h"
#include "support/ControllerTestAccess.h"

namespace sensortest {
namespace {

using Access = ISensorControllerTestAccess;

constexpr int kDay = 1000, kNight = 0; // light levels

// Waits until p_fnDone holds; false after a minute (far beyond any honest wait).
template <class Done> bool eventually(Done p_fnDone) {
    const auto tEnd = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!p_fnDone() && std::chrono::steady_clock::now() < tEnd) {
        std::this_thread::yield();
    }
    return p_fnDone();
}

// A thread body making p_fnCall(0 .. p_nRounds - 1), yielding after each.
std::function<void()> rounds(int p_nRounds, std::function<void(int)> p_fnCall) {
    return [=] {
        for (int i = 0; i < p_nRounds; ++i, std::this_thread::yield()) {
            p_fnCall(i);
        }
    };
}

void runThreads(const std::vector<std::function<void()>>& p_vecBodies) {
    std::vector<std::thread> vecThreads(p_vecBodies.begin(), p_vecBodies.end());
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
}

// Day/night policy, daylight, scheme 1 with a brightness and mirror of its own.
ISensorController& dayNightChannel(SampleDevice& p_objDevice, const VideoStreamModule* p_pVideo) {
    ISensorController& c = p_objDevice.bringUp(1, p_pVideo);
    p_objDevice.isp().setLightLevel(0, kDay);
    c.setParamScheme(1);
    c.setParameter(KEY_BRIGHTNESS, 77, true);
    c.setParameter(KEY_MIRROR, 1, true);
    c.setParamScheme(0);
    c.setParameter(KEY_SCHEME_MODE, 2, true);
    return c;
}

// Host calls of every kind and factory resets on threads of their own, against the switching
// thread.
TEST(HostThreadsTest, HostCallsAndResetsAgainstTheRunningSensorThreadLeaveAConsistentChannel) {
    SampleDevice objDevice("ipc");
    ISensorController& c = dayNightChannel(objDevice, nullptr);
    runThreads({
        rounds(150,
               [&, n = 0, s = std::string()](int i) mutable {
                   c.setParameter(34, i % 100, true);
                   c.getParameter(34, n);
                   c.setParameters("(2337," + std::to_string(i) + ")(34,50)", true);
                   c.getParameters("(34,2337,49)", s);
               }),
        rounds(150,
               [&, n = 0, s = std::string()](int i) mutable {
                   c.setParamScheme(i % 2);
                   c.setParamMode(i % 3 == 0 ? 0 : 1);
                   c.getParamScheme(n);
                   if (i % 5 == 0) {
                       c.getAllParameters(s);
                       c.getUIStyleFile();
                       c.flush();
                       c.getSensorParamRange(49, n, s);
                   }
               }),
        rounds(150, [&](int i) { objDevice.isp().setLightLevel(0, i % 2 ? kDay : kNight); }),
        rounds(4, [&](int) { EXPECT_TRUE(c.resetParameters()); }),
    });
    constexpr u32 kBusyBits =
        Access::resettingBit() | Access::resettingLastBit() | Access::switchingBit();
    EXPECT_EQ(Access::state(c) & kBusyBits, 0u) << "a switch or reset bit was left set";
    EXPECT_EQ(c.getSensorStatus(), 1);
    // Writes still stored whole; the thread follows the light once asked (a reset sets no policy).
    int nValue = 0;
    EXPECT_EQ(c.setParameter(34, 61, true), 0);
    EXPECT_TRUE(c.getParameter(34, nValue) && nValue == 61) << nValue;
    c.setParamMode(1);
    c.setParamScheme(0);
    c.setParameter(KEY_SCHEME_MODE, 2, true);
    objDevice.isp().setLightLevel(0, kNight);
    EXPECT_TRUE(eventually([&] { return c.getParamScheme(nValue) && nValue == 1; }));
}

// The virtual clock, noting the time of its first pause once night shows on the ISP.
struct WatchingClock : VirtualClock {
    explicit WatchingClock(const SampleDevice& p_objDevice) : m_objDevice(p_objDevice) {}
    void wait(long p_nSec, long p_nUsec) override {
        if (m_nSeenAt < 0 && m_objDevice.isp().getValue(0, KEY_BRIGHTNESS) == 77) {
            m_nSeenAt = elapsedUsec();
        }
        VirtualClock::wait(p_nSec, p_nUsec);
    }
    const SampleDevice& m_objDevice;
    std::atomic<long long> m_nSeenAt{-1};
};

// A host video module that, once armed, waits in the first mirror notice until a host call ended.
struct WaitingVideo : AcceptingVideoModule {
    int notifyParamChange(int, int p_nKey, int) const override {
        if (p_nKey == static_cast<int>(KEY_MIRROR) && m_bArmed.exchange(false)) {
            m_bWaiting = true;
            m_bTimedOut = !eventually([this] { return m_bHostCallDone.load(); });
        }
        return 0;
    }
    mutable std::atomic<bool> m_bArmed{false}, m_bWaiting{false}, m_bTimedOut{false},
        m_bHostCallDone{false};
};

// A host calling back to back must not hold off the switch past the next pass (the one in progress
// may have read the light before it changed), nor a video module waiting for a host call deadlock
// it.
TEST(BusyHostTest, TheAutomaticSwitchComesWithinTwoPassesUnderAnyHostLoad) {
    for (int nLoad = 0; nLoad < 3; ++nLoad) {
        SCOPED_TRACE(nLoad);
        WaitingVideo objVideo;
        SampleDevice objDevice("ipc");
        ISensorController& c = dayNightChannel(objDevice, &objVideo);
        objVideo.m_bArmed = nLoad == 2;
        const std::vector<std::function<void(int)>> kLoads[] = {
            {[&](int i) { c.setParameter(2337, i % 256, true); },
             [&, n = 0](int) mutable { c.getParameter(2337, n); }},
            {[&, s = std::string()](int) mutable { c.getAllParameters(s); }},
            {[&, n = 0](int i) mutable { // a host call the video module waits for
                if (i == 0 && eventually([&] { return objVideo.m_bWaiting.load(); })) {
                    EXPECT_TRUE(c.getParameter(KEY_BRIGHTNESS, n));
                    objVideo.m_bHostCallDone = true;
                }
            }}};
        auto pClock = std::make_shared<WatchingClock>(objDevice);
        installClock(pClock);
        std::atomic<bool> bStop{false};
        std::vector<std::thread> vecLoad;
        for (const auto& fnLoad : kLoads[nLoad]) {
            vecLoad.emplace_back([&bStop, fnLoad] {
                for (int i = 0; !bStop; ++i) {
                    fnLoad(i);
                }
            });
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // the load is on
        const long long nStart = pClock->elapsedUsec();
        objDevice.isp().setLightLevel(0, kNight);
        const bool bSwitched = eventually([&] { return pClock->m_nSeenAt >= 0; });
        bStop = true;
        for (std::thread& objThread : vecLoad) {
            objThread.join();
        }
        ASSERT_TRUE(bSwitched) << "no switch while the host is busy";
        EXPECT_LE(pClock->m_nSeenAt - nStart, 2'000'000) << "later than the pass after this one";
        EXPECT_FALSE(objVideo.m_bTimedOut) << "the host call waited for the switch's lock";
        EXPECT_EQ(objDevice.isp().getValue(0, KEY_MIRROR), 1);
    }
}

// Channel 1's passes run on the test thread, each request meeting a pass at a known point. One is
// posted from inside the ISP call serving the one before: it stays in the mailbox for the next
// pass.
TEST(MailboxTest, EveryRequestPostedOnTheThermalChannelIsCarriedOutByChannelOne) {
    SampleDevice objDevice("thermal");
    ISensorController& objVisual = objDevice.bringUp(1);
    ISensorController& objThermal = objDevice.bringUp(2);
    ASSERT_TRUE(Access::stopThread(objVisual));
    objVisual.sensorThread(); // serves what the thermal channel's init posted
    const auto nThermalZoom = objDevice.isp().getValue(1, 1568);
    const auto post = [&](int p_nZoom) {
        objDevice.root().writeFile("/mnt/mtd/hd1/program/config/sync_fov.ini",
                                   "zoom1=" + std::to_string(p_nZoom) + ",focus1=7,\n");
        objThermal.setParameter(8104, p_nZoom, false);
    };
    constexpr int kNested = 1005;
    objDevice.isp().setCallHook([&](int p_nChannel, uint32_t p_nCmd, int) {
        if (p_nChannel == 0 && p_nCmd == 1568 && objDevice.isp().getValue(0, 1568) == kNested - 1) {
            post(kNested);
        }
    });
    for (int nZoom = 1001; nZoom <= 1008; ++nZoom) {
        if (nZoom != kNested) {
            post(nZoom);
        }
        objVisual.sensorThread();
        EXPECT_EQ(objDevice.isp().getValue(0, 1568), nZoom) << "request lost";
    }
    EXPECT_EQ(ISensorController::m_nChanneldDosomething, -1);
    EXPECT_EQ(ISensorController::m_nPassKeycmd, -1);
    EXPECT_EQ(objDevice.isp().getValue(1, 1568), nThermalZoom) << "the thermal lens moved";
}

// Loggers on threads of their own write "tag w<writer> n<number> x..." to one file, rotated at 10
// KiB into 3 older files. Read back, oldest first, every line is whole and each writer's numbers
// rise.
TEST(LoggerThreadsTest, SharedLoggersKeepLinesWholeInOrderAndRotateOnlyPastTheLimit) {
    const std::string strPath = "/mnt/mtd/log/SensorError.log";
    constexpr int kWriters = 5, kGenerations = 3;
    constexpr std::size_t kMaxSize = 10240;
    TempDeviceRoot objRoot;
    std::vector<std::function<void()>> vecBodies;
    for (int w = 0; w < kWriters; ++w) {
        auto pLogger = std::make_shared<VXLogger>(); // one per thread
        ASSERT_TRUE(pLogger->init(strPath, kMaxSize, kGenerations));
        vecBodies.push_back(rounds(500, [=](int n) {
            const std::string strText = "w" + std::to_string(w) + " n" + std::to_string(n) + " " +
                                        std::string(20 + (n * 7) % 60, 'x');
            ASSERT_GT(pLogger->writeLog("tag", strText), 0);
        }));
    }
    runThreads(vecBodies);
    const std::regex kLine(R"(tag w(\d+) n(\d+) x+)");
    std::vector<std::vector<int>> vecNumbers(kWriters);
    for (int g = kGenerations; g >= 0; --g) {
        const std::string strFile = strPath + (g == 0 ? "" : "." + std::to_string(g));
        const std::string strText = objRoot.readFile(strFile);
        std::istringstream in(strText);
        for (std::string strLine; std::getline(in, strLine);) {
            std::smatch m;
            ASSERT_TRUE(std::regex_match(strLine, m, kLine)) << "torn line: " << strLine;
            vecNumbers.at(std::stoi(m[1])).push_back(std::stoi(m[2]));
        }
        EXPECT_TRUE(g == 0 || (strText.size() > kMaxSize && strText.size() <= kMaxSize + 100))
            << strFile << ": not rotated by the line (< 100 bytes) taking it past the limit";
    }
    EXPECT_FALSE(objRoot.exists(strPath + "." + std::to_string(kGenerations + 1)));
    for (const std::vector<int>& vecOne : vecNumbers) { // each writer's: strictly rising
        EXPECT_TRUE(std::adjacent_find(vecOne.begin(), vecOne.end(), std::greater_equal<>()) ==
                    vecOne.end());
    }
}

} // namespace
} // namespace sensortest
