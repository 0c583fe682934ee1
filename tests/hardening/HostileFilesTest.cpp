// Hostile files, as a corrupted flash or anyone who can write to /tmp would
// feed them. Each case is built in a copy of the ipc sample device; then a
// channel is brought up the way a host does in a child process, and sensorctl
// on the same root, both under a 30 s timeout and a 1 GiB address-space limit.
// Neither may crash or hang; the output names what was refused; the channel
// is up with safe values, or the host refuses to bring it up.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "HardeningChannel.h"
#include "platform/DeviceRoot.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace sensortest {
namespace {

namespace fs = std::filesystem;

#ifdef SENSORCTL_PATH
constexpr const char* kSensorctl = SENSORCTL_PATH;
#else
constexpr const char* kSensorctl = nullptr; // built without the tool
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimitAddressSpace = false; // the sanitizers reserve terabytes of shadow
#else
constexpr bool kLimitAddressSpace = true;
#endif
constexpr rlim_t kAddressSpace = rlim_t{1} << 30;
constexpr unsigned kTimeoutSec = 30;
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
constexpr const char* STAMP = "/mnt/mtd/code/config_file/snsversion.cfg";

constexpr const char* NOT_REGULAR = "refused: not a regular file (FIFO, device or socket)";
constexpr const char* TOO_DEEP = "nested deeper than 256 levels";

enum class Make { Fifo, Endless, Directory, Huge, LongLine, Deep, MaxScheme };

struct HostileCase {
    const char* szName;
    const char* szPath;
    Make eMake;
    const char* szArg;        // Deep: the levels; MaxScheme: the value written
    const char* szReport;     // in the channel's output; nullptr: nothing to report
    const char* szToolReport; // in sensorctl's output; nullptr: as szReport
    int nChannel;             // kUp or kRefused
};

constexpr HostileCase CASES[] = {
    {"StyleFifo", STYLE, Make::Fifo, "", NOT_REGULAR, nullptr, kUp},
    {"StyleEndless", STYLE, Make::Endless, "", NOT_REGULAR, nullptr, kUp},
    {"StyleHuge", STYLE, Make::Huge, "", "refused: larger than 8388608 bytes", nullptr, kUp},
    {"StyleDeep", STYLE, Make::Deep, "100000", TOO_DEEP, nullptr, kUp},
    {"DiversityDeep", DIVERSITY, Make::Deep, "100000", TOO_DEEP, nullptr, kUp},
    {"DiversityDirectory", DIVERSITY, Make::Directory, "", "refused: not a regular file (a dir",
     nullptr, kUp},
    {"ModulesDeep", MODULES, Make::Deep, "5000", nullptr, TOO_DEEP, kRefused},
    {"ModulesEndless", MODULES, Make::Endless, "", nullptr, "not a regular file", kRefused},
    {"ModulesHuge", MODULES, Make::Huge, "", nullptr, "larger than 65536 bytes", kRefused},
    {"MachineEndless", MACHINE, Make::Endless, "", nullptr, "not a regular file", kRefused},
    {"MachineFifo", MACHINE, Make::Fifo, "", nullptr, "not a regular file", kRefused},
    {"CalibrationEndless", FOV, Make::Endless, "", NOT_REGULAR, "", kUp},
    {"CalibrationHuge", FOV, Make::Huge, "", "refused: larger than 16384 bytes", "", kUp},
    {"MarkerLongLine", MARKER, Make::LongLine, "", nullptr, "", kUp},
    {"MarkerEndless", MARKER, Make::Endless, "", nullptr, "", kUp},
    {"MarkerFifo", MARKER, Make::Fifo, "", nullptr, "", kUp},
    {"SchemeFifo", SCHEME, Make::Fifo, "", NOT_REGULAR, "not a regular file", kUp},
    {"SchemeDirectory", SCHEME, Make::Directory, "", "(a directory)", "(a directory)", kUp},
    {"SchemeEndless", SCHEME, Make::Endless, "", NOT_REGULAR, "not a regular file", kUp},
    {"SchemeHuge", SCHEME, Make::Huge, "", "refused: larger than", "larger than", kUp},
    // The first start-up puts a stamp in place of the FIFO, so sensorctl finds a file.
    {"StampFifo", STAMP, Make::Fifo, "", NOT_REGULAR, "", kUp},
    {"MaxSchemeNegative", MODULES, Make::MaxScheme, "-1", "max_scheme(-1) out of 0..16, 0 used",
     nullptr, kUp},
    {"MaxSchemeHuge", MODULES, Make::MaxScheme, "99999999", "max_scheme(99999999) out of 0..16",
     nullptr, kUp},
    {"MaxScheme5000", MODULES, Make::MaxScheme, "5000", "max_scheme(5000) out of 0..16", nullptr,
     kUp},
};

void PrintTo(const HostileCase& p_stCase, std::ostream* p_pOut) {
    *p_pOut << p_stCase.szName;
}

void makeHostile(const TempDeviceRoot& p_objRoot, const HostileCase& p_stCase) {
    const std::string strHost = p_objRoot.hostPath(p_stCase.szPath);
    fs::create_directories(fs::path(strHost).parent_path());
    if (p_stCase.eMake != Make::MaxScheme) {
        fs::remove_all(strHost);
    }
    switch (p_stCase.eMake) {
    case Make::Fifo:
        ASSERT_EQ(::mkfifo(strHost.c_str(), 0644), 0);
        break;
    case Make::Endless:
        fs::create_symlink("/dev/zero", strHost);
        break;
    case Make::Directory:
        fs::create_directories(strHost + "/inside");
        break;
    case Make::Huge: // sparse: a gigabyte that costs no disk
        p_objRoot.writeFile(p_stCase.szPath, "");
        fs::resize_file(strHost, std::uintmax_t{1} << 30);
        break;
    case Make::LongLine:
        p_objRoot.writeFile(p_stCase.szPath, std::string(20u << 20, '9') + "\n0\n");
        break;
    case Make::Deep:
        p_objRoot.writeFile(p_stCase.szPath,
                            "<?xml version=\"1.0\"?>" + nestedXml(std::atoi(p_stCase.szArg)));
        break;
    case Make::MaxScheme: {
        std::string strText = p_objRoot.readFile(p_stCase.szPath);
        const std::string strFrom = "max_scheme=4";
        strText.replace(strText.find(strFrom), strFrom.size(),
                        std::string("max_scheme=") + p_stCase.szArg);
        p_objRoot.writeFile(p_stCase.szPath, strText);
        break;
    }
    }
}

// The host's bring-up of channel 1, then a look at what it holds.
int bringUpChannel() {
    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo(MACHINE, objMachine);
    std::vector<ModuleConfigure> vecModules;
    if (!ModuleConfigureParser::parse(MODULES, objMachine.getHardwareModel(),
                                      objMachine.getHardwareCode(), vecModules)) {
        return kRefused;
    }
    AcceptingVideoModule objVideo;
    ISensorController objChannel;
    objChannel.setChannelID(1);
    objChannel.setVideoStreamModule(&objVideo);
    objChannel.init(vecModules.front());
    objChannel.sync_fov();
    int nBrightness = -1;
    std::string strOut;
    const bool bSafe = objChannel.getParameter(34, nBrightness) && nBrightness >= 0 &&
                       nBrightness <= 100 && objChannel.getParameters("(34,2528)", strOut) == 1;
    objChannel.uinit();
    return bSafe ? kUp : kUnsafe;
}

// Runs the channel in a child; its exit code, or 128 + the signal that ended it.
int runChannelChild(const std::string& p_strOutput) {
    std::fflush(stdout);
    const pid_t nPid = ::fork();
    if (nPid == 0) {
        if (kLimitAddressSpace) {
            const rlimit stLimit{kAddressSpace, kAddressSpace};
            ::setrlimit(RLIMIT_AS, &stLimit);
        }
        ::alarm(kTimeoutSec); // a hang ends in SIGALRM
        const int nFd = ::open(p_strOutput.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(nFd, STDOUT_FILENO);
        ::dup2(nFd, STDERR_FILENO);
        const int nResult = bringUpChannel();
        std::fflush(stdout);
        ::_exit(nResult);
    }
    int nStatus = 0;
    ::waitpid(nPid, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
}

int runSensorctl(const std::string& p_strRoot, const std::string& p_strOutput) {
    const std::string strLimit =
        kLimitAddressSpace ? "ulimit -v " + std::to_string(kAddressSpace / 1024) + "; " : "";
    const std::string strCommand =
        "sh -c '" + strLimit + "exec timeout -s KILL " + std::to_string(kTimeoutSec) +
        " env -u SENSOR_DEVICE_ROOT " + kSensorctl + " --device " + sourceDir() +
        "/devices/ipc --root " + p_strRoot + " -c \"get brightness\" -c flash' </dev/null >" +
        p_strOutput + " 2>&1";
    const int nStatus = std::system(strCommand.c_str());
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}

class HostileFilesTest : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileFilesTest, NoCrashNoHangAClearReportAndASafeOrRefusedChannel) {
    const HostileCase& stCase = GetParam();
    TempDeviceRoot objScratch;
    const std::string strChannelOut = objScratch.hostPath("/channel.txt");
    const std::string strToolOut = objScratch.hostPath("/sensorctl.txt");
    SampleDevice objDevice("ipc");
    // A first start-up stamps the files; without the stamp the next one
    // removes the scheme files before it reads them.
    if (stCase.szPath == SCHEME) {
        ASSERT_EQ(runChannelChild(strChannelOut), kUp);
    }
    makeHostile(objDevice.root(), stCase);
    EXPECT_EQ(runChannelChild(strChannelOut), stCase.nChannel)
        << "128 + 14: hung; 128 + 6 or 11: crashed\n"
        << objScratch.readFile("/channel.txt").substr(0, 4000);
    const std::string strOutput = objScratch.readFile("/channel.txt");
    if (stCase.szReport != nullptr) {
        EXPECT_NE(strOutput.find(stCase.szReport), std::string::npos) << strOutput.substr(0, 4000);
    }
    if (kSensorctl == nullptr) {
        return;
    }
    const int nExit = runSensorctl(objDevice.root().path(), strToolOut);
    const std::string strTool = objScratch.readFile("/sensorctl.txt");
    EXPECT_TRUE(nExit >= 0 && nExit <= 2) << "exit " << nExit << "\n" << strTool.substr(0, 4000);
    const char* szToolReport = stCase.szToolReport ? stCase.szToolReport : stCase.szReport;
    if (szToolReport != nullptr) {
        EXPECT_NE(strTool.find(szToolReport), std::string::npos) << strTool.substr(0, 4000);
    }
    if (stCase.nChannel == kUp) {
        EXPECT_NE(strTool.find("34 KEY_BRIGHTNESS"), std::string::npos) << strTool;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, HostileFilesTest, ::testing::ValuesIn(CASES),
                         [](const auto& p_stInfo) { return std::string(p_stInfo.param.szName); });

} // namespace
} // namespace sensortest
