// What works under the device root (every test's own, over the environment's):
// removal commands, the file reader, the host file class and the rotating error
// log (its line format: the diagnostics tests).
#include "platform/FileReader.h"
#include "platform/VXFile.h"
#include "platform/VXLogger.h"
#include "platform/sy_system.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
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

} // namespace

TEST(SySystem, RemovesExactlyWhatThePatternMatchesAndNeverOutsideTheRootOrRefuses) {
    TempDeviceRoot outside; // a second directory standing for the host's files
    outside.writeFile(kCfg, "keep");
    TempDeviceRoot root;
    // The module's scheme files of channel 1 go (the thermal pattern: the start-up tests).
    const std::pair<const char*, bool> files[] = {
        {"config_file/sensor1_0", false},    {"config_file/sensor1_3", false},
        {"config_old/sensor1_1", false},     {"config_file/sensor1_4", true},
        {"factory_setting/sensor1_2", true}, {"config_file/sensor2_0", true}};
    for (const auto& [file, kept] : files) {
        root.writeFile("/mnt/mtd/code/" + std::string(file) + ".cfg", "x");
    }
    EXPECT_EQ(0, sy_system("rm -rf /mnt/mtd/code/config*/sensor1_[0-3].cfg", 30));
    for (const auto& [file, kept] : files) {
        EXPECT_EQ(kept, root.exists("/mnt/mtd/code/" + std::string(file) + ".cfg")) << file;
    }
    // No match fails only without force; a matching directory or a link out is not removed.
    EXPECT_EQ(0, sy_system("rm -f /mnt/mtd/code/config_file/sensor9_*.cfg", 30));
    EXPECT_EQ(1, sy_system("rm /mnt/mtd/code/config_file/sensor9_*.cfg", 30));
    root.writeFile("/mnt/mtd/code/config_file/sub.cfg/keep", "x");
    EXPECT_EQ(1, sy_system("rm -rf /mnt/mtd/code/config_file/*.cfg", 30)) << "a directory";
    EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sub.cfg/keep"));
    fs::create_symlink(outside.path() + "/mnt/mtd", root.hostPath("/mnt/escape"));
    EXPECT_EQ(1, sy_system("rm -f /mnt/escape/code/config_file/*.cfg", 30)) << "through a link";
    EXPECT_EQ("keep", outside.readFile(kCfg));
    // Anything but a plain rm of absolute paths under the root is refused.
    root.writeFile("/mnt/a.cfg", "x");
    for (const char* cmd :
         {"ls /mnt/a.cfg", "rm", "rm -f", "rm -x /mnt/a.cfg", "rm -f mnt/a.cfg",
          "rm -f /mnt/../mnt/a.cfg", "rm -f /mnt/a.cfg; rm -f /mnt/a.cfg",
          "rm -f /mnt/a.cfg && true", "rm -f $HOME/mnt/a.cfg", "rm -f `x` /mnt/a.cfg",
          "rm -f '/mnt/a.cfg'", "rm -f /mnt/a.cfg\nrm /x", "rmdir /mnt/a.cfg"}) {
        EXPECT_EQ(-1, sy_system(cmd, 30)) << cmd;
    }
    EXPECT_EQ(-1, sy_system(nullptr, 30));
    EXPECT_TRUE(root.exists("/mnt/a.cfg"));
}

// One reader for every file: what is not a regular file is refused without
// blocking and without reading; a regular file is read up to its cap only.
TEST(FileReader, RefusesAllButRegularFilesReadsNoMoreThanTheCapAndReplacesWhole) {
    TempDeviceRoot root;
    root.writeFile("/f/ten", "0123456789");
    ASSERT_EQ(0, ::mkfifo(root.hostPath("/f/fifo").c_str(), 0644)); // no writer: open would block
    using R = ReadStatus;
    for (const auto& [path, cap, how, status, text] :
         {std::tuple{"/f/ten", 10, Oversize::Refuse, R::Ok, "0123456789"},
          {"/f/ten", 9, Oversize::Refuse, R::TooLarge, ""},
          {"/f/ten", 4, Oversize::TakePrefix, R::Ok, "0123"},
          {"/f/fifo", 64, Oversize::TakePrefix, R::Special, ""},
          {"/f", 64, Oversize::Refuse, R::Directory, ""},
          {"/f/ten/below", 64, Oversize::Refuse, R::Missing, ""}}) {
        std::string read = "junk";
        EXPECT_EQ(status, readDeviceFile(path, cap, read, how)) << path << " " << cap;
        EXPECT_EQ(text, read) << path << " " << cap;
    }
    EXPECT_EQ("0123456789", root.readFile("/f/ten"));

    // The host file class opens as the reader does and is inert after a failed
    // open; it replaces a file whole on close or destruction (a discarded or cut
    // write keeps the old file: the failed-save tests).
    root.writeFile(kCfg, "OLD");
    VXFile file;
    EXPECT_FALSE(file.open("/f/fifo")) << "a fifo";
    EXPECT_FALSE(file.open(kCfg, VXFile::modeWrite)) << "only read and write-truncate";
    char buf[4];
    EXPECT_EQ(std::make_tuple(0, -1, -1, false, static_cast<FILE*>(nullptr)),
              std::make_tuple(file.getLength(), file.read(buf, sizeof buf), file.write("abc", 3),
                              file.close(), file.getFileHandle()));
    {
        VXFile last;
        ASSERT_TRUE(last.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
        EXPECT_EQ(5, last.write("NEWER", 5));
        EXPECT_EQ(std::make_tuple(5, -1), std::make_tuple(last.getLength(), last.read(buf, 1)));
        EXPECT_EQ("OLD", root.readFile(kCfg)) << "target untouched until close";
    } // destruction commits
    ASSERT_TRUE(file.open(kCfg));
    EXPECT_EQ(std::make_pair(5, -1),
              std::make_pair(file.read(std::string(8, ' ').data(), 8), file.write("x", 1)));
    EXPECT_EQ("NEWER", root.readFile(kCfg));
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
    std::set<std::string> lines;
    const std::regex whole(R"(\[sensor assert\] thread \d+ line \d+ padding-padding)");
    for (int n = 0; n <= 400; ++n) {
        std::ifstream in(root.hostPath(kLog) + (n ? "." + std::to_string(n) : ""));
        for (std::string line; std::getline(in, line);) {
            EXPECT_TRUE(lines.insert(line).second) << "repeated: " << line;
            EXPECT_TRUE(std::regex_match(line, whole)) << "torn line: " << line;
        }
    }
    EXPECT_EQ(320u, lines.size());
    EXPECT_TRUE(root.exists(std::string(kLog) + ".1"));
}
