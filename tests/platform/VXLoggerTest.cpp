// The rotating error log: line shape, rotation, and concurrent appenders.
#include "platform/VXLogger.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kLog = "/mnt/mtd/log/SensorError.log";

std::vector<std::string> linesOf(const std::string& hostPath) {
    std::ifstream in(hostPath);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Every line of the log and its older generations, oldest file first.
std::vector<std::string> allLines(const sensortest::TempDeviceRoot& root, int count) {
    std::vector<std::string> lines;
    for (int n = count; n >= 0; --n) {
        const std::string path = root.hostPath(kLog) + (n ? "." + std::to_string(n) : "");
        const std::vector<std::string> part = linesOf(path);
        lines.insert(lines.end(), part.begin(), part.end());
    }
    return lines;
}

// Several threads, each with loggers of its own, append numbered lines.
void appendFromThreads(int threads, int linesEach, int maxSize, int count) {
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([=] {
            for (int i = 0; i < linesEach; ++i) {
                VXLogger logger; // a new logger per line, as the diagnostics do
                ASSERT_TRUE(logger.init(kLog, maxSize, count));
                logger.writeLog("[sensor assert]", "thread " + std::to_string(t) + " line " +
                                                       std::to_string(i) + " padding-padding");
            }
        });
    }
    for (std::thread& w : workers) {
        w.join();
    }
}

void expectWholeLines(const std::vector<std::string>& lines, std::size_t expected) {
    const std::regex whole(R"(\[sensor assert\] thread \d+ line \d+ padding-padding)");
    EXPECT_EQ(expected, lines.size());
    EXPECT_EQ(expected, std::set<std::string>(lines.begin(), lines.end()).size()) << "repeats";
    for (const std::string& line : lines) {
        ASSERT_TRUE(std::regex_match(line, whole)) << "torn line: " << line;
    }
}

} // namespace

TEST(VXLogger, AppendsTaggedLinesUnderTheRoot) {
    sensortest::TempDeviceRoot root;
    VXLogger logger;
    EXPECT_EQ(-1, logger.writeLog("[sensor warn]", "before init"));
    ASSERT_TRUE(logger.init(kLog, 10240, 3));
    EXPECT_EQ(16, logger.writeLog("[sensor warn]", "a\n")) << "no second line end";
    logger.writeLog("[sensor assert]", "b");
    logger.writeLog("[sensor assert]", "");
    EXPECT_EQ("[sensor warn] a\n[sensor assert] b\n[sensor assert] \n", root.readFile(kLog));
}

TEST(VXLogger, RotatesAndKeepsCountOlderFiles) {
    sensortest::TempDeviceRoot root;
    VXLogger logger;
    ASSERT_TRUE(logger.init(kLog, 100, 2));
    for (int i = 0; i < 40; ++i) {
        logger.writeLog("[t]", "line " + std::to_string(i) + " of the rotation test");
    }
    EXPECT_TRUE(root.exists("/mnt/mtd/log/SensorError.log.1"));
    EXPECT_TRUE(root.exists("/mnt/mtd/log/SensorError.log.2"));
    EXPECT_FALSE(root.exists("/mnt/mtd/log/SensorError.log.3"));
    // The kept lines are the newest ones, consecutive and in order.
    const std::vector<std::string> kept = allLines(root, 2);
    ASSERT_GE(kept.size(), 8u);
    int expected = 40 - static_cast<int>(kept.size());
    for (const std::string& line : kept) {
        EXPECT_EQ("[t] line " + std::to_string(expected++) + " of the rotation test", line);
    }
    // Rotation follows the write that passed the limit, so the current file
    // never stays above it (it is absent right after a rotation).
    std::error_code absent;
    const auto size = std::filesystem::file_size(root.hostPath(kLog), absent);
    EXPECT_TRUE(absent || size <= 100u);
}

TEST(VXLogger, ConcurrentAppendersNeverTearLines) {
    sensortest::TempDeviceRoot root;
    appendFromThreads(8, 150, 1 << 20, 3);
    expectWholeLines(linesOf(root.hostPath(kLog)), 8 * 150);
}

TEST(VXLogger, ConcurrentRotationLosesNoGeneration) {
    sensortest::TempDeviceRoot root;
    // Room for every line across the kept generations: a lost or doubled
    // rename would show as a missing or repeated line.
    // Two lines per file: nearly every append rotates.
    appendFromThreads(8, 40, 100, 400);
    const std::vector<std::string> lines = allLines(root, 400);
    expectWholeLines(lines, 8 * 40);
    EXPECT_TRUE(root.exists("/mnt/mtd/log/SensorError.log.1"));
}
