// The host file class: reading, lines, and the all-or-nothing replacement.
#include "platform/VXFile.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* kCfg = "/mnt/mtd/code/config_file/sensor1_0.cfg";

std::string readAll(VXFile& file) {
    std::string content(static_cast<std::size_t>(file.getLength()), '\0');
    const int n = file.read(content.data(), static_cast<unsigned int>(content.size()));
    return n < 0 ? std::string() : content.substr(0, static_cast<std::size_t>(n));
}

// Files in the directory whose names do not start with a dot.
int visibleFiles(const std::string& dir) {
    int n = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        n += entry.path().filename().string().front() != '.';
    }
    return n;
}

// In a child process: open the file for replacement, write, then die the
// given way before close().
void writerDiesBeforeClose(bool kill) {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        VXFile file;
        if (!file.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate)) {
            ::_exit(3);
        }
        file.write("NEW-CONTENT-THAT-NEVER-LANDS", 28);
        if (kill) {
            ::raise(SIGKILL);
        }
        ::_exit(0); // no destructors run
    }
    int status = 0;
    ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
    if (kill) {
        EXPECT_TRUE(WIFSIGNALED(status));
    } else {
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
}

} // namespace

TEST(VXFile, WritesUnderTheRootAndReadsBack) {
    sensortest::TempDeviceRoot root;
    {
        VXFile file;
        ASSERT_TRUE(file.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
        EXPECT_EQ(5, file.write("hello", 5));
        EXPECT_EQ(5, file.getLength());
        EXPECT_EQ(-1, file.read(nullptr, 0)) << "not open for reading";
        EXPECT_TRUE(file.close());
    }
    EXPECT_EQ("hello", root.readFile(kCfg));
    EXPECT_FALSE(std::filesystem::exists(kCfg) &&
                 std::filesystem::equivalent(kCfg, root.hostPath(kCfg)));

    VXFile file;
    ASSERT_TRUE(file.open(kCfg));
    EXPECT_EQ(5, file.getLength());
    EXPECT_EQ("hello", readAll(file));
    EXPECT_EQ(-1, file.write("x", 1)) << "not open for writing";
}

TEST(VXFile, FailedOpenLeavesAnInertObject) {
    sensortest::TempDeviceRoot root;
    VXFile file;
    EXPECT_FALSE(file.open("/mnt/mtd/missing.cfg"));
    EXPECT_EQ(0, file.getLength());
    char buf[4];
    EXPECT_EQ(-1, file.read(buf, sizeof buf));
    EXPECT_EQ(-1, file.write("abc", 3));
    EXPECT_FALSE(file.close());
    EXPECT_EQ(nullptr, file.getFileHandle());

    root.writeFile(kCfg, "old");
    EXPECT_FALSE(file.open(kCfg, VXFile::modeWrite)) << "only read and write-truncate";
    EXPECT_FALSE(file.open("/mnt/mtd/code", VXFile::modeRead)) << "a directory";
    EXPECT_EQ("old", root.readFile(kCfg));
}

TEST(VXFile, ReplacementIsAllOrNothing) {
    sensortest::TempDeviceRoot root;
    root.writeFile(kCfg, "OLD");
    {
        VXFile file;
        ASSERT_TRUE(file.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
        file.write("NEWER", 5);
        EXPECT_EQ("OLD", root.readFile(kCfg)) << "target untouched until close";
    } // destruction commits
    EXPECT_EQ("NEWER", root.readFile(kCfg));
    EXPECT_EQ(1, visibleFiles(root.hostPath("/mnt/mtd/code/config_file")));

    VXFile abandoned;
    ASSERT_TRUE(abandoned.open(kCfg, VXFile::modeWrite | VXFile::modeTruncate));
    abandoned.write("HALF", 4);
    abandoned.discard();
    EXPECT_FALSE(abandoned.close()) << "nothing is left to commit";
    EXPECT_EQ("NEWER", root.readFile(kCfg)) << "a discarded write keeps the old content";
    EXPECT_EQ(1, visibleFiles(root.hostPath("/mnt/mtd/code/config_file")));
}

TEST(VXFile, WriterKilledBeforeCloseLeavesTheOldContent) {
    sensortest::TempDeviceRoot root;
    root.writeFile(kCfg, "OLD-CONTENT");
    writerDiesBeforeClose(true);
    EXPECT_EQ("OLD-CONTENT", root.readFile(kCfg));
    writerDiesBeforeClose(false);
    EXPECT_EQ("OLD-CONTENT", root.readFile(kCfg));
    EXPECT_EQ(1, visibleFiles(root.hostPath("/mnt/mtd/code/config_file")))
        << "a leftover temporary file stays out of parameter-file patterns";
}

TEST(VXFile, ReadsLinesWithEitherEnding) {
    sensortest::TempDeviceRoot root;
    root.writeFile("/tmp/Debug.sign", "6\r\n1\n\nlast");
    VXFile file;
    ASSERT_TRUE(file.open("/tmp/Debug.sign"));
    EXPECT_EQ("6", file.ReadOneLine(file.getFileHandle()));
    EXPECT_EQ("1", file.ReadOneLine(file.getFileHandle()));
    const std::vector<std::string> rest = file.ReadLines();
    EXPECT_EQ((std::vector<std::string>{"", "last"}), rest);
    EXPECT_EQ("", file.ReadOneLine(file.getFileHandle())) << "end of file";
    EXPECT_EQ("", file.ReadOneLine(nullptr));
    EXPECT_TRUE(file.close());
    EXPECT_TRUE(file.ReadLines().empty());
}
