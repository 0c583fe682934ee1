// Power cuts while the module writes: a child process flushes two alternating
// versions of every scheme set and of the version stamp in a loop, and the
// parent kills it with SIGKILL at random moments. After every kill each file
// must hold one version or the other, whole: never truncated, never a mix.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "support/ControllerTestAccess.h"
#include "support/TestSupport.h"

namespace sensortest {
namespace {

namespace fs = std::filesystem;

constexpr int kSchemes = 4;
constexpr u32 kRecords = 150;
constexpr u32 kFirstFlipped = 5; // past the scheme controls
constexpr u32 kValueFlip = 0x00FF00FFu;
constexpr u32 kStampFlip = 0x1u;

std::string schemeFile(int p_nScheme) {
    return "/mnt/mtd/code/config_file/sensor1_" + std::to_string(p_nScheme) + ".cfg";
}

// The scheme controls (8000..8004, a whole-day window) followed by ordinary
// parameters, each scheme with values of its own; the flipped version differs
// in every value past the scheme controls, which the flush validates and which
// therefore stay as they are.
std::vector<KeyVal> schemeSet(int p_nScheme, bool p_bFlipped = false) {
    std::vector<KeyVal> vecSet = {{8000, 0}, {8001, 0}, {8002, 0}, {8003, 24}, {8004, 0}};
    for (u32 i = kFirstFlipped; i < kRecords; ++i) {
        vecSet.push_back(
            {100 + i, (1000 * static_cast<u32>(p_nScheme) + i) ^ (p_bFlipped ? kValueFlip : 0u)});
    }
    return vecSet;
}

std::string bytesOf(const std::vector<KeyVal>& p_vecSet) {
    std::string strBytes;
    for (const KeyVal& st : p_vecSet) {
        for (u32 nWord : {st.key, st.value}) {
            for (int b = 0; b < 4; ++b) {
                strBytes.push_back(static_cast<char>((nWord >> (8 * b)) & 0xFFu));
            }
        }
    }
    return strBytes;
}

std::string stampBytes(u32 p_nStamp) {
    return bytesOf({{p_nStamp, 0}}).substr(0, 4);
}

// The child: reads what is on flash through the module, then writes the other
// version and back again for ever, through flush for every scheme and
// setVersion for the stamp. Never returns.
[[noreturn]] void writerChild(int p_nReadyFd) {
    std::vector<std::vector<KeyVal>> vecNow(kSchemes + 1, std::vector<KeyVal>(kRecords));
    for (int i = 0; i < kSchemes; ++i) {
        keyValFromFile(schemeFile(i).c_str(), vecNow[i].data(), kRecords);
    }
    vecNow[kSchemes] = schemeSet(kSchemes); // factory row, never written
    std::vector<std::vector<KeyVal>> vecOther = vecNow;
    for (int i = 0; i < kSchemes; ++i) {
        for (u32 r = kFirstFlipped; r < kRecords; ++r) {
            vecOther[i][r].value ^= kValueFlip;
        }
    }
    u32 nStamp = 0;
    getVersion(&nStamp);
    ISensorController objController;
    objController.setChannelID(1);
    if (::write(p_nReadyFd, "r", 1) != 1) {
        ::_exit(2);
    }
    for (unsigned nRound = 1;; ++nRound) {
        ISensorControllerTestAccess::installSets(objController, nRound % 2 ? vecOther : vecNow, 0);
        for (int i = 0; i < kSchemes; ++i) {
            ISensorControllerTestAccess::setCurScheme(objController, i);
            if (objController.flush() != 0) {
                ::_exit(3);
            }
        }
        setVersion(nStamp ^ (nRound % 2 ? kStampFlip : 0));
    }
}

// Starts a writer, lets it run for p_nDelayUsec after it is ready, kills it.
void runAndKill(long p_nDelayUsec) {
    int arrPipe[2];
    ASSERT_EQ(::pipe(arrPipe), 0);
    const pid_t nChild = ::fork();
    ASSERT_GE(nChild, 0);
    if (nChild == 0) {
        ::close(arrPipe[0]);
        writerChild(arrPipe[1]);
    }
    ::close(arrPipe[1]);
    char cReady = 0;
    ASSERT_EQ(::read(arrPipe[0], &cReady, 1), 1) << "the writer died before it was ready";
    ::close(arrPipe[0]);
    std::this_thread::sleep_for(std::chrono::microseconds(p_nDelayUsec));
    ASSERT_EQ(::kill(nChild, SIGKILL), 0);
    int nStatus = 0;
    ASSERT_EQ(::waitpid(nChild, &nStatus, 0), nChild);
    ASSERT_TRUE(WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGKILL)
        << "the writer stopped by itself, status " << nStatus;
}

TEST(PowerCutTest, EveryFileIsTheOldOrTheNewVersionAfterEachKill) {
    TempDeviceRoot objRoot;
    for (int i = 0; i < kSchemes; ++i) {
        objRoot.writeFile(schemeFile(i), bytesOf(schemeSet(i)));
    }
    objRoot.writeFile(SENSOR_VERSION_FILE, stampBytes(8));
    std::mt19937 objRandom(20240101);
    // Mostly within a few write rounds, now and then right away or later.
    std::uniform_int_distribution<long> objDelay(0, 12000);
    int nInterruptedWrites = 0;
    for (int nKill = 0; nKill < 200; ++nKill) {
        ASSERT_NO_FATAL_FAILURE(runAndKill(objDelay(objRandom)));
        for (int i = 0; i < kSchemes; ++i) {
            const std::string strNow = objRoot.readFile(schemeFile(i));
            ASSERT_EQ(strNow.size(), 8u * kRecords) << "scheme " << i << " after kill " << nKill;
            ASSERT_TRUE(strNow == bytesOf(schemeSet(i)) || strNow == bytesOf(schemeSet(i, true)))
                << "scheme " << i << " mixes versions after kill " << nKill;
        }
        const std::string strStamp = objRoot.readFile(SENSOR_VERSION_FILE);
        ASSERT_TRUE(strStamp == stampBytes(8) || strStamp == stampBytes(8 ^ kStampFlip))
            << "stamp after kill " << nKill;
        // Temporary files of writes the kill interrupted: removed, counted.
        for (const auto& entry :
             fs::directory_iterator(objRoot.hostPath("/mnt/mtd/code/config_file"))) {
            if (entry.path().filename().string().rfind(".", 0) == 0) {
                nInterruptedWrites += fs::remove(entry.path()) ? 1 : 0;
            }
        }
    }
    // Proof that the kills met writes in progress, not only idle moments.
    EXPECT_GT(nInterruptedWrites, 0);
    RecordProperty("interrupted_writes", nInterruptedWrites);
}

} // namespace
} // namespace sensortest
