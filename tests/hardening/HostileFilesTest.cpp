// Hostile files (a corrupted flash, anyone who can write to /tmp) in a copy of the ipc device: a
// channel brought up as a host does, and sensorctl, may neither crash nor hang (30 s, 1 GiB); their
// output names what was refused; the channel is up with safe values, or the host refuses it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "HardeningChannel.h"

namespace sensortest {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr rlim_t kAddressSpace = RLIM_INFINITY; // the sanitizers reserve terabytes of shadow
#else
constexpr rlim_t kAddressSpace = rlim_t{1} << 30;
#endif
constexpr int kUp = 0;
constexpr int kRefused = 3; // the host found no module to bring up
constexpr int kUnsafe = 4;  // up, but with a value outside its range

constexpr const char* STYLE = "/hd1/moduleConfig/sensorConfig/style/Style.xml";
constexpr const char* DIVERSITY =
    "/hd1/moduleConfig/sensorConfig/styleDiversity/StyleDiversity.xml";
constexpr const char* MODULES = "/hd1/moduleConfig/moduleConfig.xml";
constexpr const char* MACHINE = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* FOV = "/mnt/mtd/hd1/program/config/sync_fov.ini";
constexpr const char* MARKER = "/tmp/Debug.sign";
constexpr const char* SCHEME = "/mnt/mtd/code/config_file/sensor1_0.cfg";
constexpr const char* NOT_REGULAR = "refused: not a regular file (FIFO, device or socket)";
constexpr const char* TOO_DEEP = "nested deeper than 256 levels";

// ENDLESS: a link to /dev/zero; HUGE: 1 GiB, sparse; LONG_LINE: 20 MiB; DEEP: 100,000 levels
// (5,000 in the small module configuration); MAX_SCHEME: the value in the channel's report.
enum Make { FIFO, ENDLESS, DIRECTORY, HUGE, LONG_LINE, DEEP, MAX_SCHEME };

// szReport: in the channel's output (nullptr: nothing to report); szToolReport: in sensorctl's
// (nullptr: as szReport); nChannel: kUp or kRefused.
struct HostileCase {
    const char *szName, *szPath;
    Make eMake;
    const char *szReport, *szToolReport;
    int nChannel;
};

constexpr HostileCase CASES[] = {
    {"StyleFifo", STYLE, FIFO, NOT_REGULAR, nullptr, kUp},
    {"StyleEndless", STYLE, ENDLESS, NOT_REGULAR, nullptr, kUp},
    {"StyleHuge", STYLE, HUGE, "refused: larger than 8388608 bytes", nullptr, kUp},
    {"StyleDeep", STYLE, DEEP, TOO_DEEP, nullptr, kUp},
    {"DiversityDeep", DIVERSITY, DEEP, TOO_DEEP, nullptr, kUp},
    {"DiversityDirectory", DIVERSITY, DIRECTORY, "refused: not a regular file (a dir", nullptr,
     kUp},
    {"ModulesDeep", MODULES, DEEP, nullptr, TOO_DEEP, kRefused},
    {"ModulesEndless", MODULES, ENDLESS, nullptr, "not a regular file", kRefused},
    {"ModulesHuge", MODULES, HUGE, nullptr, "larger than 65536 bytes", kRefused},
    {"MachineEndless", MACHINE, ENDLESS, nullptr, "not a regular file", kRefused},
    {"MachineFifo", MACHINE, FIFO, nullptr, "not a regular file", kRefused},
    {"CalibrationEndless", FOV, ENDLESS, NOT_REGULAR, "", kUp},
    {"CalibrationHuge", FOV, HUGE, "refused: larger than 16384 bytes", "", kUp},
    {"MarkerLongLine", MARKER, LONG_LINE, nullptr, "", kUp},
    {"MarkerEndless", MARKER, ENDLESS, nullptr, "", kUp},
    {"MarkerFifo", MARKER, FIFO, nullptr, "", kUp},
    {"SchemeFifo", SCHEME, FIFO, NOT_REGULAR, "not a regular file", kUp},
    {"SchemeDirectory", SCHEME, DIRECTORY, "(a directory)", "(a directory)", kUp},
    {"SchemeEndless", SCHEME, ENDLESS, NOT_REGULAR, "not a regular file", kUp},
    {"SchemeHuge", SCHEME, HUGE, "refused: larger than", "larger than", kUp},
    // The first start-up puts a stamp in place of the FIFO, so sensorctl finds a file.
    {"StampFifo", "/mnt/mtd/code/config_file/snsversion.cfg", FIFO, NOT_REGULAR, "", kUp},
    {"MaxSchemeNegative", MODULES, MAX_SCHEME, "max_scheme(-1) out of 0..16, 0 used", nullptr, kUp},
    {"MaxSchemeHuge", MODULES, MAX_SCHEME, "max_scheme(99999999) out of 0..16", nullptr, kUp},
    {"MaxScheme5000", MODULES, MAX_SCHEME, "max_scheme(5000) out of 0..16", nullptr, kUp},
};

// Names the case in test listings (ctest shows the parameter).
void PrintTo(const HostileCase& p_stCase, std::ostream* p_pOut) {
    *p_pOut << p_stCase.szName;
}

void makeHostile(const TempDeviceRoot& p_objRoot, const HostileCase& p_stCase) {
    const std::string strHost = p_objRoot.hostPath(p_stCase.szPath);
    std::string strText = p_stCase.eMake == MAX_SCHEME ? p_objRoot.readFile(p_stCase.szPath) : "";
    fs::create_directories(fs::path(strHost).parent_path());
    fs::remove_all(strHost);
    switch (p_stCase.eMake) {
    case FIFO:
        ASSERT_EQ(::mkfifo(strHost.c_str(), 0644), 0);
        return;
    case ENDLESS:
        return fs::create_symlink("/dev/zero", strHost);
    case DIRECTORY:
        return (void)fs::create_directories(strHost + "/inside");
    case HUGE:
        p_objRoot.writeFile(p_stCase.szPath, "");
        return fs::resize_file(strHost, std::uintmax_t{1} << 30);
    case LONG_LINE:
        return p_objRoot.writeFile(p_stCase.szPath, std::string(20u << 20, '9') + "\n0\n");
    case DEEP:
        strText = "<?xml version=\"1.0\"?>" + nestedXml(p_stCase.szPath == MODULES ? 5000 : 100000);
        break;
    case MAX_SCHEME: // "max_scheme(<value>) out of ..."
        const std::string strReport = p_stCase.szReport;
        strText.replace(strText.find("max_scheme=4"), 12,
                        "max_scheme=" + strReport.substr(11, strReport.find(')') - 11));
        break;
    }
    p_objRoot.writeFile(p_stCase.szPath, strText);
}

// Runs p_fnBody in a child process under the limits, its output in p_strOutput: the child's exit
// code, or 128 + the signal that ended it.
int runChild(const std::string& p_strOutput, const std::function<int()>& p_fnBody) {
    std::fflush(stdout);
    const pid_t nPid = ::fork();
    if (nPid == 0) {
        const rlimit stLimit{kAddressSpace, kAddressSpace};
        ::setrlimit(RLIMIT_AS, &stLimit);
        ::alarm(30); // a hang ends in SIGALRM
        const int nFd = ::open(p_strOutput.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
        ::dup2(nFd, STDOUT_FILENO);
        ::dup2(nFd, STDERR_FILENO);
        const int nResult = [&]() noexcept { return p_fnBody(); }(); // an exception: abort
        std::fflush(stdout);
        ::_exit(nResult);
    }
    int nStatus = 0;
    ::waitpid(nPid, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
}

class HostileFilesTest : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileFilesTest, NoCrashNoHangAClearReportAndASafeOrRefusedChannel) {
    const HostileCase& stCase = GetParam();
    TempDeviceRoot objScratch;
    SampleDevice objDevice("ipc");
    const std::string strChannelOut = objScratch.hostPath("/channel.txt");
    // The host's bring-up of channel 1 (in the child), then a look at what it holds.
    const auto bringUpChannel = [&objDevice] {
        if (deviceModules().empty()) {
            return kRefused;
        }
        ISensorController& c = objDevice.bringUp(1);
        c.sync_fov();
        int nBrightness = -1;
        std::string strOut;
        const bool bSafe = c.getParameter(34, nBrightness) && nBrightness >= 0 &&
                           nBrightness <= 100 && c.getParameters("(34,2528)", strOut) == 1;
        c.uinit();
        return bSafe ? kUp : kUnsafe;
    };
    // A first start-up stamps the files: without the stamp the next removes the scheme files.
    if (stCase.szPath == SCHEME) {
        ASSERT_EQ(runChild(strChannelOut, bringUpChannel), kUp);
    }
    makeHostile(objDevice.root(), stCase);
    const int nChannel = runChild(strChannelOut, bringUpChannel);
    const std::string strOutput = objScratch.readFile("/channel.txt");
    EXPECT_EQ(nChannel, stCase.nChannel) << "128 + 14: hung; 128 + 6 or 11: crashed\n"
                                         << strOutput.substr(0, 4000);
    const auto shows = [](const std::string& p_strText, const char* p_szReport) {
        return p_szReport == nullptr || p_strText.find(p_szReport) != std::string::npos;
    };
    EXPECT_TRUE(shows(strOutput, stCase.szReport)) << strOutput.substr(0, 4000);
#ifdef SENSORCTL_PATH // sensorctl on the same root, when it is built
    const std::string strDevice = sourceDir() + std::string("/devices/ipc");
    const int nExit = runChild(objScratch.hostPath("/sensorctl.txt"), [&] {
        ::unsetenv("SENSOR_DEVICE_ROOT");
        return ::execl(SENSORCTL_PATH, SENSORCTL_PATH, "--device", strDevice.c_str(), "--root",
                       objDevice.root().path().c_str(), "-c", "get brightness", "-c", "flash",
                       nullptr);
    });
    const std::string strTool = objScratch.readFile("/sensorctl.txt");
    EXPECT_TRUE(nExit >= 0 && nExit <= 2) << "exit " << nExit << "\n" << strTool.substr(0, 4000);
    EXPECT_TRUE(shows(strTool, stCase.szToolReport ? stCase.szToolReport : stCase.szReport))
        << strTool.substr(0, 4000);
    EXPECT_TRUE(stCase.nChannel != kUp || shows(strTool, "34 KEY_BRIGHTNESS"))
        << strTool.substr(0, 4000);
#endif
}

INSTANTIATE_TEST_SUITE_P(Cases, HostileFilesTest, ::testing::ValuesIn(CASES),
                         [](const auto& p_stInfo) { return std::string(p_stInfo.param.szName); });

} // namespace
} // namespace sensortest
