// Flash bytes do not depend on the processor: a fixed set and stamp match files kept in the source
// tree; what start-ups write is copied to $SENSOR_FLASH_DUMP_DIR when set, for scripts/arm-test.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"
#include "common/SensorTypes.h"
#include "config/SensorFile.h"

namespace sensortest {
namespace {

namespace fs = std::filesystem;

constexpr const char* CONFIG_DIR = "/mnt/mtd/code/config_file";
constexpr const char* FIXED_SET_FILE = "/mnt/mtd/code/config_file/sensor1_0.cfg";

// Key/value words, the scheme keys 8000..8004 first, catching every wrong layout of a word: each
// byte position distinct, each byte's sign bit, negative values (-1, -100 last), the extremes.
constexpr u32 FIXED_WORDS[] = {
    8000,        0,           8001,        1,           8002,        2,           8003,
    24,          8004,        0,           34,          50,          49,          100,
    2337,        128,         0x01020304u, 0x05060708u, 0x7F80FF00u, 0x807F00FFu, 0xA0B0C0D0u,
    0x0E0F1011u, 0xFFFFFFFFu, 0x00000000u, 0x00000000u, 0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu,
    163,         0xFFFFFFFFu, 51,          0xFFFFFF9Cu};
constexpr u32 FIXED_VERSION = 0x8402C301u;

std::string goldenFile(const char* p_szName) { // empty when missing: no match
    std::ifstream in(fs::path(sourceDir()) / "tests/hardening/golden" / p_szName, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Copies a device file into $SENSOR_FLASH_DUMP_DIR/<group>, when that is set.
void dumpFile(const TempDeviceRoot& p_objRoot, const std::string& p_strFile,
              const std::string& p_strGroup) {
    const char* szDump = std::getenv("SENSOR_FLASH_DUMP_DIR");
    if (szDump != nullptr && *szDump != '\0') {
        const fs::path target = fs::path(szDump) / p_strGroup / fs::path(p_strFile).filename();
        fs::create_directories(target.parent_path());
        fs::copy_file(p_objRoot.hostPath(p_strFile), target, fs::copy_options::overwrite_existing);
    }
}

TEST(FlashBytesTest, FixedSetAndStampAreTheKeptBytesAndReadBack) {
    TempDeviceRoot objRoot;
    std::array<KeyVal, std::size(FIXED_WORDS) / 2> arrSet{};
    std::memcpy(arrSet.data(), FIXED_WORDS, sizeof FIXED_WORDS);
    ASSERT_EQ(SNS_SUCCESS, keyValToFile(FIXED_SET_FILE, arrSet.data(), arrSet.size()));
    ASSERT_EQ(0, setVersion(FIXED_VERSION));
    EXPECT_EQ(goldenFile("sensor_fixed.cfg"), objRoot.readFile(FIXED_SET_FILE));
    EXPECT_EQ(goldenFile("snsversion.cfg"), objRoot.readFile(SENSOR_VERSION_FILE));
    std::array<KeyVal, arrSet.size()> arrBack{};
    ASSERT_EQ(SNS_SUCCESS, keyValFromFile(FIXED_SET_FILE, arrBack.data(), arrBack.size()));
    EXPECT_EQ(0, std::memcmp(arrBack.data(), arrSet.data(), sizeof arrSet)) << "read back";
    u32 nVersion = 0;
    EXPECT_TRUE(getVersion(&nVersion) == 0 && nVersion == FIXED_VERSION) << std::hex << nVersion;
}

// A start-up's parameter files hold whole records, the scheme keys first, little-endian (as in the
// kept fixed set); the stamp is one word. The ipc set keeps every record through a factory reset, a
// uinit and init, and the next boot: init hides LDC from the host's pages, never from the set.
TEST(FlashBytesTest, StartUpsWriteLittleEndianRecordsAndResetsAndBootsKeepEveryRecord) {
    const std::string strSchemeKeys = // 8000..8004, little-endian, in records
        goldenFile("sensor_fixed.cfg").substr(0, KEYVAL_FILE_RECORD * SCHEME_KEY_COUNT);
    for (const std::string strDevice : {"ipc", "dome", "lpr", "thermal"}) {
        SCOPED_TRACE(strDevice);
        SampleDevice objDevice(strDevice);
        const TempDeviceRoot& objRoot = objDevice.root();
        ISensorController& c = objDevice.bringUp(1);
        EXPECT_EQ(1, c.getSensorStatus());
        c.uinit(); // its thread stopped: no write under way while the files are read
        EXPECT_EQ(4u, objRoot.readFile(SENSOR_VERSION_FILE).size());
        for (const auto& entry : fs::directory_iterator(objRoot.hostPath(CONFIG_DIR))) {
            const std::string strFile = CONFIG_DIR + ("/" + entry.path().filename().string());
            const std::string strBytes = objRoot.readFile(strFile);
            SCOPED_TRACE(strFile);
            dumpFile(objRoot, strFile, strDevice);
            const bool bSet = strFile != SENSOR_VERSION_FILE;
            ASSERT_TRUE(!bSet || (strBytes.size() % KEYVAL_FILE_RECORD == 0 &&
                                  strBytes.size() >= strSchemeKeys.size()));
            for (size_t i = 0; bSet && i < strSchemeKeys.size(); i += KEYVAL_FILE_RECORD) {
                EXPECT_EQ(strSchemeKeys.substr(i, 4), strBytes.substr(i, 4)) << "key at " << i;
            }
        }
        dumpFile(objRoot, "/tmp/merge_style_ch1.xml", strDevice);
        if (strDevice != "ipc") {
            continue;
        }
        const auto setBytes = [&objRoot](int s) {
            return objRoot.readFile(CONFIG_DIR + ("/sensor1_" + std::to_string(s)) + ".cfg").size();
        };
        ISensorController& d = objDevice.bringUp(1);
        ASSERT_EQ(97u * 8, setBytes(0));
        d.resetParameters();
        for (int s = 0; s < 4; ++s) {
            EXPECT_EQ(97u * 8, setBytes(s)) << "scheme " << s << " after the factory reset";
        }
        ASSERT_EQ(SNS_SUCCESS, d.setParameter(KEY_BRIGHTNESS, 61, true));
        ASSERT_EQ(SNS_SUCCESS, d.flush());
        d.uinit();
        objDevice.isp().clearLog();
        ISensorController& e = objDevice.bringUp(1); // the next boot
        int n = 0;
        EXPECT_TRUE(e.getParameter(KEY_BRIGHTNESS, n) && n == 61) << "brightness " << n;
        for (const IspSimulator::LogEntry& stEntry : objDevice.isp().log()) {
            EXPECT_NE(0u, stEntry.cmd) << "a record of zeros reached the ISP";
        }
        ASSERT_EQ(SNS_SUCCESS, e.flush());
        EXPECT_EQ(97u * 8, setBytes(0));
    }
}

} // namespace
} // namespace sensortest
