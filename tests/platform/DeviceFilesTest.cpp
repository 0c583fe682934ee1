// The device root and what works under it: removal commands, the host file
// class with its all-or-nothing replacement, and the rotating error log
// (its line format: the diagnostics tests).
#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"
#include "platform/VXFile.h"
#include "platform/VXLogger.h"
#include "platform/sy_system.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using sensortest::TempDeviceRoot;
namespace fs = std::filesystem;

constexpr const char* kCfg = "/mnt/mtd/code/config_file/sensor1_0.cfg";
constexpr const char* kLog = "/mnt/mtd/log/SensorError.log";
constexpr const char* kEnv = "SENSOR_DEVICE_ROOT";

// One character per file: '1' still there, '0' removed.
std::string present(const TempDeviceRoot& root, const std::vector<std::string>& files) {
    std::string out;
    for (const std::string& file : files) {
        out += root.exists(file) ? '1' : '0';
    }
    return out;
}

// Every line of the log and its older generations, oldest file first.
std::vector<std::string> allLines(const TempDeviceRoot& root, int count) {
    std::vector<std::string> lines;
    for (int n = count; n >= 0; --n) {
        std::ifstream in(root.hostPath(kLog) + (n ? "." + std::to_string(n) : ""));
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
    }
    return lines;
}

} // namespace

TEST(DeviceRoot, ProgramRootWinsOverTheEnvironment) {
    const std::string strOld = std::getenv(kEnv) ? std::getenv(kEnv) : "";
    ::setenv(kEnv, "/env/root/", 1);
    EXPECT_EQ("/env/root", DeviceRoot::get());
    EXPECT_EQ("/env/root/tmp/Debug.sign", DeviceRoot::resolve("/tmp/Debug.sign"));
    {
        TempDeviceRoot root;
        EXPECT_EQ(root.path() + "/hd1/x.xml", DeviceRoot::resolve("/hd1/x.xml"));
        {
            TempDeviceRoot inner;
            EXPECT_EQ(inner.path(), DeviceRoot::get());
        }
        EXPECT_EQ(root.path(), DeviceRoot::get()) << "the outer root comes back";
    }
    EXPECT_EQ("/env/root", DeviceRoot::get()) << "clearing the program root";
    ::unsetenv(kEnv);
    EXPECT_EQ(kLog, DeviceRoot::resolve(kLog));
    strOld.empty() ? ::unsetenv(kEnv) : ::setenv(kEnv, strOld.c_str(), 1);
}

TEST(SySystem, RemovesExactlyWhatThePatternMatchesAndNeverOutsideTheRootOrRefuses) {
    TempDeviceRoot outside; // a second directory standing for the host's files
    outside.writeFile(kCfg, "keep");
    TempDeviceRoot root;
    std::vector<std::string> files;
    for (const char* name :
         {"config_file/sensor1_0", "config_file/sensor1_3", "config_old/sensor1_1",
          "config_file/sensor1_4", "config_file/sensor2_0", "config_file/snsversion",
          "factory_setting/sensor1_2", "config_file/sensor-thermal0",
          "config_file/sensor-thermal3"}) {
        files.push_back(std::string("/mnt/mtd/code/") + name + ".cfg");
        root.writeFile(files.back(), "x");
    }
    EXPECT_EQ(0, sy_system("rm -rf /mnt/mtd/code/config*/sensor1_[0-3].cfg", 30));
    EXPECT_EQ("000111111", present(root, files));
    EXPECT_EQ(0, sy_system("rm /mnt/mtd/code/config_file/sensor-thermal*", 30));
    EXPECT_EQ("000111100", present(root, files));
    EXPECT_TRUE(outside.exists(kCfg));
    // No match fails only without force; a matching directory is not removed.
    EXPECT_EQ(0, sy_system("rm -f /mnt/mtd/code/config_file/sensor9_*.cfg", 30));
    EXPECT_EQ(1, sy_system("rm /mnt/mtd/code/config_file/sensor9_*.cfg", 30));
    root.writeFile("/mnt/mtd/code/config_file/sub.cfg/keep", "x");
    EXPECT_EQ(1, sy_system("rm -rf /mnt/mtd/code/config_file/*.cfg", 30)) << "a directory";
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sub.cfg/keep"));
    fs::create_symlink(outside.path() + "/mnt/mtd", root.hostPath("/mnt/escape"));
    EXPECT_EQ(1, sy_system("rm -f /mnt/escape/code/config_file/*.cfg", 30)) << "through a link";
    EXPECT_EQ("keep", outside.readFile(kCfg));
    // Anything but a plain rm of absolute paths under the root is refused.
    for (const char* cmd :
         {"ls /mnt/a.cfg", "rm", "rm -f", "rm -x /mnt/a.cfg", "rm -f mnt/a.cfg",
          "rm -f /mnt/../mnt/a.cfg", "rm -f /mnt/a.cfg; rm -f /mnt/a.cfg",
          "rm -f /mnt/a.cfg && true", "rm -f $HOME/mnt/a.cfg", "rm -f `x` /mnt/a.cfg",
          "rm -f '/mnt/a.cfg'", "rm -f /mnt/a.cfg\nrm /x", "rmdir /mnt/a.cfg"}) {
        root.writeFile("/mnt/a.cfg", "x");
        EXPECT_EQ(-1, sy_system(cmd, 30)) << cmd;
        EXPECT_TRUE(root.exists("/mnt/a.cfg")) << cmd;
    }
    EXPECT_EQ(-1, sy_system(nullptr, 30));
}

// One reader for every file: what is not a regular file is refused without
// blocking and without reading; a regular file is read up to its cap only.
// The host file class opens the same way and a failed open leaves it inert.
TEST(FileReader, RefusesAllButRegularFilesAndReadsNoMoreThanTheCap) {
    TempDeviceRoot root;
    root.writeFile("/f/ten", "0123456789");
    ASSERT_EQ(0, ::mkfifo(root.hostPath("/f/fifo").c_str(), 0644)); // no writer: open would block
    using R = ReadStatus;
    const struct {
        const char* path;
        std::size_t cap;
        Oversize how;
        ReadStatus status;
        const char* text;
    } cases[] = {
        {"/f/ten", 10, Oversize::Refuse, R::Ok, "0123456789"},
        {"/f/ten", 9, Oversize::Refuse, R::TooLarge, ""},
        {"/f/ten", 4, Oversize::TakePrefix, R::Ok, "0123"},
        {"/f/fifo", 64, Oversize::TakePrefix, R::Special, ""},
        {"/f", 64, Oversize::Refuse, R::Directory, ""},
        {"/f/missing", 64, Oversize::Refuse, R::Missing, ""},
        {"/f/ten/below", 64, Oversize::Refuse, R::Missing, ""},
    };
    for (const auto& c : cases) {
        std::string text = "junk";
        EXPECT_EQ(c.status, readDeviceFile(c.path, c.cap, text, c.how)) << c.path << " " << c.cap;
        EXPECT_EQ(c.text, text) << c.path << " " << c.cap;
    }

    VXFile file;
    for (const char* path : {"/f/fifo", "/f", "/f/missing"}) {
        EXPECT_FALSE(file.open(path)) << path;
    }
    EXPECT_FALSE(file.open("/f/ten", VXFile::modeWrite)) << "only read and write-truncate";
    char buf[4];
    EXPECT_EQ(std::make_tuple(0, -1, -1, false, static_cast<FILE*>(nullptr)),
              std::make_tuple(file.getLength(), file.read(buf, sizeof buf), file.write("abc", 3),
                              file.close(), file.getFileHandle()));
    EXPECT_EQ("0123456789", root.readFile("/f/ten"));
}

TEST(VXFile, ReplacementIsAllOrNothing) {
    TempDeviceRoot root;
    const std::string dir = root.hostPath("/mnt/mtd/code/config_file");
    root.writeFile(kCfg, "OLD");
    {
        VXFile file;
        ASSERT_TRUE(file.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
        EXPECT_EQ(5, file.write("NEWER", 5));
        EXPECT_EQ(5, file.getLength());
        EXPECT_EQ(-1, file.read(nullptr, 0)) << "not open for reading";
        EXPECT_EQ("OLD", root.readFile(kCfg)) << "target untouched until close";
    } // destruction commits
    EXPECT_EQ("NEWER", root.readFile(kCfg));

    VXFile abandoned;
    ASSERT_TRUE(abandoned.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
    abandoned.write("HALF", 4);
    abandoned.discard();
    EXPECT_FALSE(abandoned.close()) << "nothing is left to commit";
    EXPECT_EQ("NEWER", root.readFile(kCfg)) << "a discarded write keeps the old content";
    EXPECT_EQ(1, std::distance(fs::directory_iterator(dir), fs::directory_iterator()))
        << "and leaves no temporary file behind";
    ASSERT_TRUE(abandoned.open(kCfg));
    EXPECT_EQ(5, abandoned.read(std::string(8, ' ').data(), 8)) << "open again for reading";
    EXPECT_EQ(-1, abandoned.write("x", 1)) << "not open for writing";
    VXFile().discard(); // nothing open: nothing to do
}

// Two lines per file, so nearly every append rotates, and room for every line
// across the kept generations: a lost or doubled rename shows as a missing or
// repeated line. (Whole lines in order under shared loggers: hardening tests.)
TEST(VXLogger, ConcurrentRotationLosesNoLine) {
    TempDeviceRoot root;
    std::vector<std::thread> workers;
    for (int t = 0; t < 8; ++t) {
        workers.emplace_back([t] {
            for (int i = 0; i < 40; ++i) {
                VXLogger logger; // a new logger per line, as the diagnostics do
                ASSERT_TRUE(logger.init(kLog, 100, 400));
                logger.writeLog("[sensor assert]", "thread " + std::to_string(t) + " line " +
                                                       std::to_string(i) + " padding-padding");
            }
        });
    }
    for (std::thread& w : workers) {
        w.join();
    }
    const std::vector<std::string> lines = allLines(root, 400);
    EXPECT_EQ(320u, lines.size());
    EXPECT_EQ(320u, std::set<std::string>(lines.begin(), lines.end()).size()) << "repeats";
    const std::regex whole(R"(\[sensor assert\] thread \d+ line \d+ padding-padding)");
    for (const std::string& line : lines) {
        ASSERT_TRUE(std::regex_match(line, whole)) << "torn line: " << line;
    }
    EXPECT_TRUE(root.exists(std::string(kLog) + ".1"));
}
