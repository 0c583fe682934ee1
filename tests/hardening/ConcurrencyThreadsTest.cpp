// Races a camera meets: host calls on several threads while the channel's
// own thread switches schemes, the one-slot mailbox between channels, and
// several loggers sharing one file. The ThreadSanitizer build runs these to
// find data races; the checks below find lost or broken results in any build.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "HardeningChannel.h"
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
    const auto currentScheme = [&] {
        int nNow = -1;
        objChannel.getParamScheme(nNow);
        return nNow;
    };
    objDevice.isp().setLightLevel(0, 0);
    EXPECT_TRUE(eventually([&] { return currentScheme() == 1; }));
    objDevice.isp().setLightLevel(0, 1000);
    EXPECT_TRUE(eventually([&] { return currentScheme() == 0; }));
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

std::vector<std::string> linesOf(const std::string& p_strHostPath) {
    std::vector<std::string> vecLines;
    std::ifstream in(p_strHostPath);
    for (std::string strLine; std::getline(in, strLine);) {
        vecLines.push_back(strLine);
    }
    return vecLines;
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
    for (const std::string& strLine : linesOf(objRoot.hostPath("/mnt/mtd/log/SensorError.log"))) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(strLine, m, kLine)) << "torn line: " << strLine;
        const int nWriter = std::stoi(m[1]);
        EXPECT_EQ(std::stoi(m[2]), mapNext[nWriter]++) << "writer " << nWriter;
    }
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
        for (const std::string& strLine : linesOf(strFile)) {
            std::smatch m;
            ASSERT_TRUE(std::regex_match(strLine, m, kLine)) << "torn line: " << strLine;
            const int nWriter = std::stoi(m[1]);
            const int nNumber = std::stoi(m[2]);
            auto it = mapLast.find(nWriter);
            EXPECT_TRUE(it == mapLast.end() || nNumber > it->second)
                << "writer " << nWriter << " line " << nNumber << " out of order in " << strFile;
            mapLast[nWriter] = nNumber;
        }
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
