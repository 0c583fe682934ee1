// Power cuts while the module writes: a child flushes two versions of every scheme set and the
// stamp in turn; killed (SIGKILL) at random moments, it leaves each file whole, in either version.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "support/ControllerTestAccess.h"
#include "support/TestSupport.h"

namespace sensortest {
namespace {

constexpr int kSchemes = 4;
constexpr u32 kStamp = 8;

// Scheme p_nScheme's file; kSchemes: the stamp's.
std::string fileOf(int p_nScheme) {
    return p_nScheme == kSchemes
               ? SENSOR_VERSION_FILE
               : "/mnt/mtd/code/config_file/sensor1_" + std::to_string(p_nScheme) + ".cfg";
}

// The scheme controls (8000..8004, a whole-day window; the flush validates them) and 145 parameters
// with values of the scheme's own, every one of which differs in the flipped version.
std::vector<KeyVal> schemeSet(int p_nScheme, bool p_bFlipped) {
    std::vector<KeyVal> vecSet = {{8000, 0}, {8001, 0}, {8002, 0}, {8003, 24}, {8004, 0}};
    for (u32 i = 5; i < 150; ++i) {
        vecSet.push_back({100 + i, (1000u * p_nScheme + i) ^ (p_bFlipped ? 0x00FF00FFu : 0u)});
    }
    return vecSet;
}

// The child: writes one version and the other for ever, through flush for every scheme and
// setVersion for the stamp; says on p_nReadyFd when its first write begins, so that a slow start
// (a sanitizer's) does not take up the time before the kill.
[[noreturn]] void writerChild(int p_nReadyFd) {
    std::vector<std::vector<KeyVal>> arrSets[2];
    for (int i = 0; i <= kSchemes; ++i) { // the last row: the factory set, never written
        for (const bool bFlipped : {false, true}) {
            arrSets[bFlipped].push_back(schemeSet(i, bFlipped));
        }
    }
    ISensorController objController;
    objController.setChannelID(1);
    if (::write(p_nReadyFd, "r", 1) != 1) {
        ::_exit(4);
    }
    for (unsigned nRound = 0;; ++nRound) { // the other version first
        ISensorControllerTestAccess::installSets(objController, arrSets[nRound % 2], 0);
        for (int i = 0; i < kSchemes; ++i) {
            ISensorControllerTestAccess::setCurScheme(objController, i);
            if (objController.flush() != 0) {
                ::_exit(3);
            }
        }
        setVersion(kStamp ^ (nRound % 2));
    }
}

TEST(PowerCutTest, EveryFileIsTheOldOrTheNewVersionAfterEachKill) {
    TempDeviceRoot objRoot;
    // Both versions of every file as the module writes them (whose bytes FlashBytesTest checks);
    // the flipped ones stay on flash.
    std::string arrVersions[kSchemes + 1][2];
    for (int i = 0; i <= kSchemes; ++i) {
        for (const bool bFlipped : {false, true}) {
            ASSERT_EQ(0, i == kSchemes
                             ? setVersion(kStamp ^ bFlipped)
                             : keyValToFile(fileOf(i).c_str(), schemeSet(i, bFlipped).data(), 150));
            arrVersions[i][bFlipped] = objRoot.readFile(fileOf(i));
        }
    }
    std::mt19937 objRandom(20240101);
    std::uniform_int_distribution<long> objDelay(0, 12000); // mostly a few write rounds, in us
    int nInterruptedWrites = 0, nChanged = 0;
    for (int nKill = 0; nKill < 200; ++nKill) {
        int arrReady[2];
        ASSERT_EQ(::pipe(arrReady), 0);
        const pid_t nChild = ::fork();
        if (nChild == 0) {
            writerChild(arrReady[1]);
        }
        char cReady = 0;
        const bool bReady = ::read(arrReady[0], &cReady, 1) == 1;
        ::close(arrReady[0]);
        ::close(arrReady[1]);
        ASSERT_TRUE(bReady) << "the writer ended before its first write";
        std::this_thread::sleep_for(std::chrono::microseconds(objDelay(objRandom)));
        ASSERT_EQ(::kill(nChild, SIGKILL), 0);
        int nStatus = 0;
        ASSERT_EQ(::waitpid(nChild, &nStatus, 0), nChild);
        ASSERT_TRUE(WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGKILL)
            << "the writer stopped by itself, status " << nStatus;
        for (int i = 0; i <= kSchemes; ++i) {
            const std::string strNow = objRoot.readFile(fileOf(i));
            ASSERT_TRUE(strNow == arrVersions[i][0] || strNow == arrVersions[i][1])
                << fileOf(i) << " is cut or mixes versions after kill " << nKill;
            nChanged += strNow == arrVersions[i][0] ? 1 : 0;
        }
        // Temporary files of writes the kill interrupted: removed, counted.
        for (const auto& entry :
             std::filesystem::directory_iterator(objRoot.hostPath("/mnt/mtd/code/config_file"))) {
            if (entry.path().filename().string().rfind(".", 0) == 0) {
                nInterruptedWrites += std::filesystem::remove(entry.path()) ? 1 : 0;
            }
        }
    }
    EXPECT_GT(nInterruptedWrites, 0) << "no kill met a write in progress";
    EXPECT_GT(nChanged, 0) << "no write landed";
    RecordProperty("interrupted_writes", nInterruptedWrites);
}

} // namespace
} // namespace sensortest
