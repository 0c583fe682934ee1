// Races a camera meets: host calls on several threads while the channel's
// own thread switches schemes, a busy host, the one-slot mailbox between
// channels, and several loggers sharing one file. The ThreadSanitizer build
// runs these to find data races; the checks below find lost or broken results
// in any build.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
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

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

constexpr u32 kBusyBits = ISensorControllerTestAccess::resettingBit() |
                          ISensorControllerTestAccess::resettingLastBit() |
                          ISensorControllerTestAccess::switchingBit();

// Waits (yielding) until p_fnDone holds; false if it never does within a
// bound far beyond any honest wait, so a lost wake-up fails instead of hanging.
template <class Done> bool eventually(Done p_fnDone) {
    const auto tEnd = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!p_fnDone()) {
        if (std::chrono::steady_clock::now() > tEnd) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void runThreads(std::vector<std::function<void()>> p_vecBodies) {
    std::vector<std::thread> vecThreads;
    for (auto& fnBody : p_vecBodies) {
        vecThreads.emplace_back(fnBody);
    }
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
}

TEST(HostThreadsTest, HostCallsAgainstTheRunningSensorThreadLeaveAConsistentChannel) {
    SampleDevice objDevice("ipc");
    CaptureStdout();
    ISensorController& objChannel = objDevice.bringUp(1);
    // Day/night policy: the thread switches schemes as the light changes.
    objChannel.setParameter(8000, 2, true);
    constexpr int kRounds = 150;

    runThreads({
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                objChannel.setParameter(34, i % 100, true);
                int nValue = 0;
                objChannel.getParameter(34, nValue);
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                objChannel.setParameters("(2337," + std::to_string(i % 256) + ")(34,50)", true);
                std::string strOut;
                objChannel.getParameters("(34,2337,49)", strOut);
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                objChannel.setParamScheme(i % 2);
                objChannel.setParamMode(i % 3 == 0 ? 0 : 1);
                int nScheme = 0;
                objChannel.getParamScheme(nScheme);
            }
        },
        [&] {
            for (int i = 0; i < kRounds / 5; ++i) {
                std::string strAll;
                objChannel.getAllParameters(strAll);
                objChannel.getUIStyleFile();
                objChannel.flush();
                int nDefault = 0;
                std::string strRange;
                objChannel.getSensorParamRange(49, nDefault, strRange);
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                objDevice.isp().setLightLevel(0, i % 2 == 0 ? 0 : 1000);
                std::this_thread::yield();
            }
        },
    });
    objChannel.setParamMode(1);
    GetCapturedStdout();

    EXPECT_EQ(ISensorControllerTestAccess::state(objChannel) & kBusyBits, 0u)
        << "a switch or reset bit was left set";
    const int nScheme = ISensorControllerTestAccess::curScheme(objChannel);
    EXPECT_GE(nScheme, 0);
    EXPECT_LE(static_cast<u32>(nScheme), ISensorControllerTestAccess::schemeSum(objChannel));
    int nValue = -1;
    EXPECT_TRUE(objChannel.getParameter(34, nValue));
    EXPECT_EQ(objChannel.getSensorStatus(), 1);
    // The channel still takes writes and stores them whole.
    EXPECT_EQ(objChannel.setParameter(34, 77, true), 0);
    EXPECT_TRUE(objChannel.getParameter(34, nValue));
    EXPECT_EQ(nValue, 77);
    // And its thread still follows the light: night selects scheme 1, day scheme 0.
    int nNow = -1;
    objDevice.isp().setLightLevel(0, 0);
    EXPECT_TRUE(eventually([&] { return objChannel.getParamScheme(nNow) && nNow == 1; }));
    objDevice.isp().setLightLevel(0, 1000);
    EXPECT_TRUE(eventually([&] { return objChannel.getParamScheme(nNow) && nNow == 0; }));
}

// A host that calls the channel back to back must not hold off the sensor
// thread's scheme switch, and the thread's lock must deadlock neither with a
// reset (which stops the thread while holding the lock) nor with a host video
// module that waits for another host call into the channel.
constexpr int kDay = 1000;
constexpr int kNight = 0;
constexpr int kNightBrightness = 77;
// How long a host video module waits for a host call before giving up.
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
        const bool bSwitched = eventually([&] { return pClock->seenAt() >= 0; });
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
    EXPECT_TRUE(eventually([&] { return nightApplied(objDevice); }));
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
    EXPECT_TRUE(eventually([&] { return c.getParamScheme(nScheme) && nScheme == 1; }));
    GetCapturedStdout();
}

// Channel 1's passes run on the test thread (its own thread is stopped), so
// each request meets a pass at a known point: nothing depends on timing. One
// request is posted from inside the ISP call that serves the one before: the
// pass must leave it in the mailbox for the next pass, not empty it unserved.
TEST(MailboxTest, EveryRequestPostedOnTheThermalChannelIsCarriedOutByChannelOne) {
    SampleDevice objDevice("thermal");
    CaptureStdout();
    ISensorController& objVisual = objDevice.bringUp(1);
    ISensorController& objThermal = objDevice.bringUp(2);
    ASSERT_TRUE(ISensorControllerTestAccess::hasLens(objVisual));
    ASSERT_TRUE(ISensorControllerTestAccess::stopThread(objVisual));
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
    GetCapturedStdout();
    EXPECT_EQ(ISensorController::m_nChanneldDosomething, -1);
    EXPECT_EQ(ISensorController::m_nPassKeycmd, -1);
    EXPECT_EQ(objDevice.isp().getValue(1, 1568), nThermalZoom)
        << "the thermal channel's lens never moves for the request";
}

// Each line is "<tag> w<writer> n<number> <filler>"; a torn or merged line
// does not match.
const std::regex kLine(R"(tag w(\d+) n(\d+) x+)");

// Calls p_fnLine(writer, number) for each line of the file; a torn line fails.
template <class OnLine> void forEachLine(const std::string& p_strHostPath, OnLine p_fnLine) {
    std::ifstream in(p_strHostPath);
    for (std::string strLine; std::getline(in, strLine);) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(strLine, m, kLine)) << "torn line: " << strLine;
        p_fnLine(std::stoi(m[1]), std::stoi(m[2]));
    }
}

void writeFromLoggers(const std::string& p_strPath, int p_nMaxSize, int p_nWriters, int p_nLines) {
    std::vector<std::function<void()>> vecBodies;
    for (int w = 0; w < p_nWriters; ++w) {
        vecBodies.push_back([=] {
            VXLogger objLogger;
            ASSERT_TRUE(objLogger.init(p_strPath, p_nMaxSize, 3));
            for (int n = 0; n < p_nLines; ++n) {
                const std::string strText = "w" + std::to_string(w) + " n" + std::to_string(n) +
                                            " " + std::string(20 + (n * 7) % 60, 'x');
                ASSERT_GT(objLogger.writeLog("tag", strText), 0);
            }
        });
    }
    runThreads(vecBodies);
}

TEST(LoggerThreadsTest, SeveralLoggersOnOneFileKeepEveryLineWholeAndInOrder) {
    TempDeviceRoot objRoot;
    constexpr int kWriters = 6;
    constexpr int kLines = 400;
    writeFromLoggers("/mnt/mtd/log/SensorError.log", 1 << 30, kWriters, kLines);

    std::map<int, int> mapNext;
    forEachLine(objRoot.hostPath("/mnt/mtd/log/SensorError.log"), [&](int nWriter, int nNumber) {
        EXPECT_EQ(nNumber, mapNext[nWriter]++) << "writer " << nWriter;
    });
    for (int w = 0; w < kWriters; ++w) {
        EXPECT_EQ(mapNext[w], kLines) << "lines of writer " << w;
    }
}

TEST(LoggerThreadsTest, RotationUnderSeveralLoggersLosesOnlyWholeOldLines) {
    TempDeviceRoot objRoot;
    constexpr int kMaxSize = 10240;
    writeFromLoggers("/mnt/mtd/log/SensorError.log", kMaxSize, 4, 600);

    const std::string strBase = objRoot.hostPath("/mnt/mtd/log/SensorError.log");
    std::map<int, int> mapLast;
    // Oldest file first, so each writer's numbers rise across the files.
    for (const std::string& strFile : {strBase + ".3", strBase + ".2", strBase + ".1", strBase}) {
        ASSERT_TRUE(std::filesystem::exists(strFile)) << strFile;
        forEachLine(strFile, [&](int nWriter, int nNumber) {
            auto it = mapLast.find(nWriter);
            EXPECT_TRUE(it == mapLast.end() || nNumber > it->second)
                << "writer " << nWriter << " line " << nNumber << " out of order in " << strFile;
            mapLast[nWriter] = nNumber;
        });
    }
    EXPECT_FALSE(std::filesystem::exists(strBase + ".4")) << "only three older files are kept";
    // A file is rotated by the write that takes it past the limit, and only then.
    constexpr std::uintmax_t kLongestLine = 100;
    for (const char* szGeneration : {".1", ".2", ".3"}) {
        const std::uintmax_t nSize = std::filesystem::file_size(strBase + szGeneration);
        EXPECT_GT(nSize, static_cast<std::uintmax_t>(kMaxSize)) << szGeneration;
        EXPECT_LE(nSize, kMaxSize + kLongestLine) << szGeneration;
    }
}

} // namespace
} // namespace sensortest
