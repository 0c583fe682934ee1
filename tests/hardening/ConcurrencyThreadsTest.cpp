// Races a camera meets: host calls on several threads while the channel's
// own thread switches schemes, a busy host, the one-slot mailbox between
// channels, and several loggers sharing one file. The ThreadSanitizer build
// runs these to find data races; the checks below find lost or broken results
// in any build.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <numeric>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"
#include "platform/VXLogger.h"
#include "support/ControllerTestAccess.h"

namespace sensortest {
namespace {

using Access = ISensorControllerTestAccess;

constexpr int kDay = 1000;
constexpr int kNight = 0;
constexpr int kNightBrightness = 77;
// How long a wait may take before it counts as lost (far beyond any honest wait).
constexpr auto kBound = std::chrono::seconds(20);

// The channels print a lot; the tests keep it out of their output.
struct Quiet {
    Quiet() { ::testing::internal::CaptureStdout(); }
    ~Quiet() { ::testing::internal::GetCapturedStdout(); }
};

// Waits (yielding) until p_fnDone holds; false if it never does within the
// bound, so a lost wake-up fails instead of hanging.
template <class Done> bool eventually(Done p_fnDone) {
    const auto tEnd = std::chrono::steady_clock::now() + 3 * kBound;
    while (!p_fnDone()) {
        if (std::chrono::steady_clock::now() > tEnd) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void runThreads(const std::vector<std::function<void()>>& p_vecBodies) {
    std::vector<std::thread> vecThreads(p_vecBodies.begin(), p_vecBodies.end());
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
}

bool isScheme(ISensorController& c, int p_nScheme) {
    int nNow = -1;
    return c.getParamScheme(nNow) && nNow == p_nScheme;
}

TEST(HostThreadsTest, HostCallsAgainstTheRunningSensorThreadLeaveAConsistentChannel) {
    SampleDevice objDevice("ipc");
    Quiet objQuiet;
    ISensorController& c = objDevice.bringUp(1);
    c.setParameter(KEY_SCHEME_MODE, 2, true); // day/night: the thread follows the light
    constexpr int kRounds = 150;
    int nValue = 0;
    runThreads({
        [&] {
            for (int i = 0, n = 0; i < kRounds; ++i) {
                c.setParameter(34, i % 100, true);
                c.getParameter(34, n);
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                c.setParameters("(2337," + std::to_string(i % 256) + ")(34,50)", true);
                std::string strOut;
                c.getParameters("(34,2337,49)", strOut);
            }
        },
        [&] {
            for (int i = 0, n = 0; i < kRounds; ++i) {
                c.setParamScheme(i % 2);
                c.setParamMode(i % 3 == 0 ? 0 : 1);
                c.getParamScheme(n);
            }
        },
        [&] {
            for (int i = 0, n = 0; i < kRounds / 5; ++i) {
                std::string strText;
                c.getAllParameters(strText);
                c.getUIStyleFile();
                c.flush();
                c.getSensorParamRange(49, n, strText);
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                objDevice.isp().setLightLevel(0, i % 2 == 0 ? kNight : kDay);
                std::this_thread::yield();
            }
        },
    });
    c.setParamMode(1);
    constexpr u32 kBusyBits =
        Access::resettingBit() | Access::resettingLastBit() | Access::switchingBit();
    EXPECT_EQ(Access::state(c) & kBusyBits, 0u) << "a switch or reset bit was left set";
    EXPECT_GE(Access::curScheme(c), 0);
    EXPECT_LE(static_cast<u32>(Access::curScheme(c)), Access::schemeSum(c));
    EXPECT_TRUE(c.getParameter(34, nValue));
    EXPECT_EQ(c.getSensorStatus(), 1);
    // The channel still takes writes and stores them whole, and its thread
    // still follows the light: night selects scheme 1, day scheme 0.
    EXPECT_EQ(c.setParameter(34, 77, true), 0);
    EXPECT_TRUE(c.getParameter(34, nValue));
    EXPECT_EQ(nValue, 77);
    objDevice.isp().setLightLevel(0, kNight);
    EXPECT_TRUE(eventually([&] { return isScheme(c, 1); }));
    objDevice.isp().setLightLevel(0, kDay);
    EXPECT_TRUE(eventually([&] { return isScheme(c, 0); }));
}

// A host that calls the channel back to back must not hold off the sensor
// thread's scheme switch, and the thread's lock must deadlock neither with a
// reset (which stops the thread while holding the lock) nor with a host video
// module that waits for another host call into the channel.

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

TEST(BusyHostTest, TheAutomaticSwitchComesWithinTwoPassesUnderAnyHostLoad) {
    const struct {
        const char* szName;
        int nThreads;
        std::function<void(ISensorController&, int)> fnCall;
    } kLoads[] = {
        {"two threads setting and getting", 2,
         [](ISensorController& c, int i) {
             int nValue = 0;
             c.setParameter(2337, i % 256, true);
             c.getParameter(2337, nValue);
         }},
        {"one thread reading everything", 1,
         [](ISensorController& c, int) {
             std::string strAll;
             c.getAllParameters(strAll);
         }},
    };
    for (const auto& stLoad : kLoads) {
        SCOPED_TRACE(stLoad.szName);
        SampleDevice objDevice("ipc");
        Quiet objQuiet;
        ISensorController& c = dayNightChannel(objDevice);
        auto pClock = std::make_shared<WatchingClock>([&] { return nightApplied(objDevice); });
        installClock(pClock);
        std::atomic<bool> bStop{false};
        std::vector<std::thread> vecLoad;
        for (int t = 0; t < stLoad.nThreads; ++t) {
            vecLoad.emplace_back([&] {
                for (int i = 0; !bStop; ++i) {
                    stLoad.fnCall(c, i);
                }
            });
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // the load is on
        const long long nStart = pClock->elapsedUsec();
        objDevice.isp().setLightLevel(0, kNight);
        const bool bSwitched = eventually([&] { return pClock->seenAt() >= 0; });
        bStop = true;
        for (std::thread& objThread : vecLoad) {
            objThread.join();
        }
        ASSERT_TRUE(bSwitched) << "no switch while the host is busy";
        // The pass in progress may have read the light just before it changed.
        EXPECT_LE(pClock->seenAt() - nStart, 2'000'000) << "passes (1 s each) before the switch";
    }
}

// A host video module that, for the first mirror notice once armed (made on
// the sensor thread during the switch), waits until the test has finished a
// host call into the channel.
class WaitingVideo : public AcceptingVideoModule {
public:
    int notifyParamChange(int, int p_nKey, int) const override {
        if (p_nKey == static_cast<int>(KEY_MIRROR) && m_bArmed.exchange(false)) {
            m_objWaiting.set_value();
            m_bTimedOut = m_futHostCallDone.wait_for(kBound) == std::future_status::timeout;
        }
        return 0;
    }

    mutable std::atomic<bool> m_bArmed{false};
    mutable std::atomic<bool> m_bTimedOut{false};
    mutable std::promise<void> m_objWaiting;
    std::promise<void> m_objHostCallDone;
    std::shared_future<void> m_futHostCallDone = m_objHostCallDone.get_future().share();
};

TEST(BusyHostTest, AVideoModuleWaitingForAHostCallDoesNotDeadlockTheSwitch) {
    WaitingVideo objVideo;
    SampleDevice objDevice("ipc");
    Quiet objQuiet;
    ISensorController& c = dayNightChannel(objDevice, &objVideo);
    objVideo.m_bArmed = true;
    objDevice.isp().setLightLevel(0, kNight);
    objVideo.m_objWaiting.get_future().wait_for(kBound);
    int nValue = 0;
    EXPECT_TRUE(c.getParameter(KEY_BRIGHTNESS, nValue));
    objVideo.m_objHostCallDone.set_value();
    EXPECT_TRUE(eventually([&] { return nightApplied(objDevice); }));
    EXPECT_FALSE(objVideo.m_bTimedOut) << "the host call waited for the switch's lock";
    EXPECT_EQ(objDevice.isp().getValue(0, KEY_MIRROR), 1);
}

TEST(BusyHostTest, ResetsAndRestartsUnderLoadWhileTheThreadSwitchesEndCleanly) {
    SampleDevice objDevice("ipc");
    Quiet objQuiet;
    ISensorController& c = dayNightChannel(objDevice);
    std::atomic<bool> bStop{false};
    const auto load = [&] {
        for (int i = 0; !bStop; ++i) {
            c.setParameter(2337, i % 256, true);
            objDevice.isp().setLightLevel(0, i % 2 == 0 ? kNight : kDay);
        }
    };
    std::thread objLoad1(load);
    std::thread objLoad2(load);
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(c.resetParameters());
    }
    bStop = true;
    objLoad1.join();
    objLoad2.join();
    // A reset brings back the factory policy: none. Day/night again, at night.
    objDevice.isp().setLightLevel(0, kNight);
    c.setParameter(KEY_SCHEME_MODE, 2, true);
    EXPECT_TRUE(eventually([&] { return isScheme(c, 1); }));
}

// Channel 1's passes run on the test thread (its own thread is stopped), so
// each request meets a pass at a known point: nothing depends on timing. One
// request is posted from inside the ISP call that serves the one before: the
// pass must leave it in the mailbox for the next pass, not empty it unserved.
TEST(MailboxTest, EveryRequestPostedOnTheThermalChannelIsCarriedOutByChannelOne) {
    SampleDevice objDevice("thermal");
    Quiet objQuiet;
    ISensorController& objVisual = objDevice.bringUp(1);
    ISensorController& objThermal = objDevice.bringUp(2);
    ASSERT_TRUE(Access::hasLens(objVisual));
    ASSERT_TRUE(Access::stopThread(objVisual));
    objVisual.sensorThread(); // serves what the thermal channel's init posted
    const std::optional<int32_t> nThermalZoom = objDevice.isp().getValue(1, 1568);
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
    objDevice.isp().setCallHook(nullptr);
    EXPECT_EQ(ISensorController::m_nChanneldDosomething, -1);
    EXPECT_EQ(ISensorController::m_nPassKeycmd, -1);
    EXPECT_EQ(objDevice.isp().getValue(1, 1568), nThermalZoom)
        << "the thermal channel's lens never moves for the request";
}

// p_nWriters loggers on threads of their own write p_nLines lines each, as
// "tag w<writer> n<number> <filler>"; then each writer's numbers are read back
// from the file and its older generations, oldest first. A torn or merged
// line fails.
std::map<int, std::vector<int>> logByLoggers(int p_nMaxSize, int p_nWriters, int p_nLines,
                                             int p_nGenerations) {
    TempDeviceRoot objRoot;
    const std::string strPath = "/mnt/mtd/log/SensorError.log";
    std::vector<std::function<void()>> vecBodies;
    for (int w = 0; w < p_nWriters; ++w) {
        vecBodies.push_back([=] {
            VXLogger objLogger;
            ASSERT_TRUE(objLogger.init(strPath, p_nMaxSize, 3));
            for (int n = 0; n < p_nLines; ++n) {
                const std::string strText = "w" + std::to_string(w) + " n" + std::to_string(n) +
                                            " " + std::string(20 + (n * 7) % 60, 'x');
                ASSERT_GT(objLogger.writeLog("tag", strText), 0);
            }
        });
    }
    runThreads(vecBodies);
    const std::regex kLine(R"(tag w(\d+) n(\d+) x+)");
    std::map<int, std::vector<int>> mapNumbers;
    for (int g = p_nGenerations; g >= 0; --g) {
        const std::string strFile = strPath + (g == 0 ? "" : "." + std::to_string(g));
        EXPECT_TRUE(objRoot.exists(strFile)) << strFile;
        std::ifstream in(objRoot.hostPath(strFile));
        for (std::string strLine; std::getline(in, strLine);) {
            std::smatch m;
            EXPECT_TRUE(std::regex_match(strLine, m, kLine)) << "torn line: " << strLine;
            if (!m.empty()) {
                mapNumbers[std::stoi(m[1])].push_back(std::stoi(m[2]));
            }
        }
        if (g != 0) {
            // A file is rotated by the write that takes it past the limit, and only then.
            const auto nSize = std::filesystem::file_size(objRoot.hostPath(strFile));
            EXPECT_GT(nSize, static_cast<std::uintmax_t>(p_nMaxSize)) << strFile;
            EXPECT_LE(nSize, p_nMaxSize + 100u) << strFile << ": longer than the longest line";
        }
    }
    EXPECT_FALSE(objRoot.exists(strPath + "." + std::to_string(p_nGenerations + 1)))
        << "only " << p_nGenerations << " older files are kept";
    return mapNumbers;
}

TEST(LoggerThreadsTest, SeveralLoggersOnOneFileKeepEveryLineWholeAndInOrder) {
    const auto mapNumbers = logByLoggers(1 << 30, 6, 400, 0);
    ASSERT_EQ(mapNumbers.size(), 6u);
    for (const auto& [nWriter, vecNumbers] : mapNumbers) {
        std::vector<int> vecAll(400);
        std::iota(vecAll.begin(), vecAll.end(), 0);
        EXPECT_EQ(vecNumbers, vecAll) << "writer " << nWriter;
    }
}

TEST(LoggerThreadsTest, RotationUnderSeveralLoggersLosesOnlyWholeOldLines) {
    for (const auto& [nWriter, vecNumbers] : logByLoggers(10240, 4, 600, 3)) {
        EXPECT_TRUE(std::is_sorted(vecNumbers.begin(), vecNumbers.end()) &&
                    std::adjacent_find(vecNumbers.begin(), vecNumbers.end()) == vecNumbers.end())
            << "writer " << nWriter << "'s lines out of order across the files";
    }
}

} // namespace
} // namespace sensortest
