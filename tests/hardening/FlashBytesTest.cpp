// The bytes the module leaves on flash do not depend on the processor: the
// same set written on a 32-bit ARM camera and on an x86-64 PC gives the same
// files. A fixed set and stamp are checked against files kept in the source
// tree; the files a real start-up of every sample device writes are also
// copied to $SENSOR_FLASH_DUMP_DIR when it is set, so that a script can
// compare the copies of two builds byte for byte (scripts/arm-test).
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"
#include "common/SensorTypes.h"
#include "config/SensorFile.h"

namespace sensortest {
namespace {

namespace fs = std::filesystem;

constexpr const char* FIXED_SET_FILE = "/mnt/mtd/code/config_file/sensor1_0.cfg";
constexpr const char* CONFIG_DIR = "/mnt/mtd/code/config_file";

// Values chosen to catch every way a word can be laid out wrongly: each
// byte position distinct, the sign bit of each byte, negative values stored
// as 32-bit words, and the extremes.
constexpr std::array<KeyVal, 16> FIXED_SET{{
    {KEY_SCHEME_MODE, 0},
    {KEY_SCHEME_MODE + 1, 1},
    {KEY_SCHEME_MODE + 2, 2},
    {KEY_SCHEME_MODE + 3, 24},
    {KEY_SCHEME_MODE + 4, 0},
    {34, 50},
    {49, 100},
    {2337, 128},
    {0x01020304u, 0x05060708u},
    {0x7F80FF00u, 0x807F00FFu},
    {0xA0B0C0D0u, 0x0E0F1011u},
    {0xFFFFFFFFu, 0x00000000u},
    {0x00000000u, 0xFFFFFFFFu},
    {0x80000000u, 0x7FFFFFFFu},
    {163, static_cast<u32>(-1)},
    {51, static_cast<u32>(-100)},
}};
constexpr u32 FIXED_VERSION = 0x8402C301u;

std::string goldenFile(const std::string& p_strName) {
    std::ifstream in(fs::path(sourceDir()) / "tests/hardening/golden" / p_strName,
                     std::ios::binary);
    EXPECT_TRUE(in) << "cannot read golden file " << p_strName;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

u32 wordAt(const std::string& p_strBytes, size_t p_nOffset) {
    u32 nWord = 0;
    for (size_t i = 0; i < 4; ++i) {
        nWord |= static_cast<u32>(static_cast<unsigned char>(p_strBytes[p_nOffset + i])) << (8 * i);
    }
    return nWord;
}

// Copies a device file into the dump directory, when one is asked for.
void dumpFile(const TempDeviceRoot& p_objRoot, const std::string& p_strDevicePath,
              const std::string& p_strGroup) {
    const char* szDump = std::getenv("SENSOR_FLASH_DUMP_DIR");
    if (szDump == nullptr || *szDump == '\0') {
        return;
    }
    const fs::path target = fs::path(szDump) / p_strGroup;
    fs::create_directories(target);
    fs::copy_file(p_objRoot.hostPath(p_strDevicePath),
                  target / fs::path(p_strDevicePath).filename(),
                  fs::copy_options::overwrite_existing);
}

TEST(FlashBytesTest, FixedSetAndStampAreTheKeptBytesAndReadBack) {
    TempDeviceRoot objRoot;
    ASSERT_EQ(SNS_SUCCESS, keyValToFile(FIXED_SET_FILE, FIXED_SET.data(), FIXED_SET.size()));
    ASSERT_EQ(0, setVersion(FIXED_VERSION));
    EXPECT_EQ(goldenFile("sensor_fixed.cfg"), objRoot.readFile(FIXED_SET_FILE));
    EXPECT_EQ(goldenFile("snsversion.cfg"), objRoot.readFile(SENSOR_VERSION_FILE));

    std::array<KeyVal, FIXED_SET.size()> arrBack{};
    ASSERT_EQ(SNS_SUCCESS, keyValFromFile(FIXED_SET_FILE, arrBack.data(), arrBack.size()));
    for (size_t i = 0; i < FIXED_SET.size(); ++i) {
        EXPECT_EQ(FIXED_SET[i].key, arrBack[i].key) << "record " << i;
        EXPECT_EQ(FIXED_SET[i].value, arrBack[i].value) << "record " << i;
    }
    u32 nVersion = 0;
    ASSERT_EQ(0, getVersion(&nVersion));
    EXPECT_EQ(FIXED_VERSION, nVersion);
    dumpFile(objRoot, FIXED_SET_FILE, "fixed");
    dumpFile(objRoot, SENSOR_VERSION_FILE, "fixed");
}

// Every parameter file of a start-up holds whole key/value records in
// little-endian order, the scheme keys first; the stamp is one word.
TEST(FlashBytesTest, SampleDeviceStartUpWritesLittleEndianRecords) {
    for (const char* szDevice : {"ipc", "dome", "lpr", "thermal"}) {
        SCOPED_TRACE(szDevice);
        SampleDevice objDevice(szDevice);
        ISensorController& objChannel = objDevice.bringUp(1);
        EXPECT_EQ(1, objChannel.getSensorStatus());
        objChannel.uinit(); // its thread stopped: no write under way while the files are read
        const TempDeviceRoot& objRoot = objDevice.root();
        std::size_t nFiles = 0;
        for (const auto& entry : fs::directory_iterator(objRoot.hostPath(CONFIG_DIR))) {
            const std::string strFile =
                std::string(CONFIG_DIR) + "/" + entry.path().filename().string();
            ++nFiles;
            SCOPED_TRACE(strFile);
            const std::string strBytes = objRoot.readFile(strFile);
            if (strFile == SENSOR_VERSION_FILE) {
                EXPECT_EQ(4u, strBytes.size());
            } else {
                ASSERT_EQ(0u, strBytes.size() % KEYVAL_FILE_RECORD);
                ASSERT_GE(strBytes.size(), KEYVAL_FILE_RECORD * SCHEME_KEY_COUNT);
                for (u32 i = 0; i < SCHEME_KEY_COUNT; ++i) {
                    EXPECT_EQ(KEY_SCHEME_MODE + i, wordAt(strBytes, i * KEYVAL_FILE_RECORD));
                }
            }
            dumpFile(objRoot, strFile, szDevice);
        }
        EXPECT_GT(nFiles, 0u);
        dumpFile(objRoot, "/tmp/merge_style_ch1.xml", szDevice);
    }
}

// The ipc camera's set keeps every record through a factory reset, a uinit and
// init, and the next boot: the end of init hides LDC from the host's pages,
// never from the set or its files.
TEST(FlashBytesTest, TheIpcSetKeepsEveryRecordThroughResetsAndBoots) {
    SampleDevice objDevice("ipc");
    const auto fileBytes = [&objDevice](int p_nScheme) {
        return objDevice.root()
            .readFile("/mnt/mtd/code/config_file/sensor1_" + std::to_string(p_nScheme) + ".cfg")
            .size();
    };
    ISensorController& c = objDevice.bringUp(1);
    ASSERT_EQ(97u * 8, fileBytes(0));
    c.resetParameters();
    for (int s = 0; s < 4; ++s) {
        EXPECT_EQ(97u * 8, fileBytes(s)) << "scheme " << s << " after the factory reset";
    }
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 61, true));
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    c.uinit();
    objDevice.isp().clearLog();
    ISensorController& d = objDevice.bringUp(1); // the next boot
    int nBrightness = 0;
    EXPECT_TRUE(d.getParameter(KEY_BRIGHTNESS, nBrightness));
    EXPECT_EQ(61, nBrightness);
    for (const IspSimulator::LogEntry& stEntry : objDevice.isp().log()) {
        EXPECT_NE(0u, stEntry.cmd) << "a record of zeros reached the ISP";
    }
    ASSERT_EQ(SNS_SUCCESS, d.flush());
    EXPECT_EQ(97u * 8, fileBytes(0));
}

} // namespace
} // namespace sensortest
