// Parameter files and the version stamp: exact bytes, short and long files.
#include "ConfigFixture.h"

#include "config/SensorFile.h"

namespace configtest {
namespace {

constexpr const char* PARAM_FILE = "/mnt/mtd/code/config_file/sensor1_0.cfg";

std::string bytes(std::initializer_list<unsigned> p_lstBytes) {
    std::string strOut;
    for (unsigned nByte : p_lstBytes) {
        strOut.push_back(static_cast<char>(nByte));
    }
    return strOut;
}

using ParamFileTest = ConfigTest;

TEST_F(ParamFileTest, SetIsKeyThenValueLittleEndianAndReadsBack) {
    m_objRoot.writeFile(PARAM_FILE, std::string(64, 'x')); // a longer old file is replaced
    const KeyVal arrSet[] = {{8000, 1}, {0x01020304u, 0xA0B0C0D0u}};
    EXPECT_EQ(keyValToFile(PARAM_FILE, arrSet, 2), SNS_SUCCESS);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE),
              bytes({0x40, 0x1F, 0, 0, 1, 0, 0, 0, 4, 3, 2, 1, 0xD0, 0xC0, 0xB0, 0xA0}));
    KeyVal arrBack[2] = {};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrBack, 2), SNS_SUCCESS);
    EXPECT_EQ(arrBack[1].key, 0x01020304u);
    EXPECT_EQ(arrBack[1].value, 0xA0B0C0D0u);
    // A longer file loads its first records without a report.
    KeyVal stFirst{};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, &stFirst, 1), SNS_SUCCESS);
    EXPECT_EQ(stFirst.key, 8000u);
    EXPECT_EQ(takeLog(), "");
}

TEST_F(ParamFileTest, ShortOrMissingFileIsReportedAndKeepsTheTail) {
    m_objRoot.writeFile(PARAM_FILE, bytes({7, 0, 0, 0, 8, 0, 0, 0, 9, 0, 0, 0})); // 1.5 records
    KeyVal arrSet[3] = {{1, 1}, {2, 2}, {3, 3}};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrSet, 3), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].value, 8u);
    EXPECT_EQ(arrSet[1].key, 2u); // the cut record is not half-applied
    EXPECT_EQ(arrSet[2].key, 3u);
    EXPECT_TRUE(logged("nSize == sizeof(KeyVal)*p_nKeyValNum   ~~~Assertion failed."));

    EXPECT_EQ(keyValFromFile("/mnt/none.cfg", arrSet, 3), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].value, 8u);
    EXPECT_TRUE(logged("file_name(/mnt/none.cfg) nSize(-1) sizeof(KeyVal) = 8, p_nKeyValNum(3)"));
}

TEST_F(ParamFileTest, RefusedWriteLeavesTheOldFile) {
    m_objRoot.writeFile(PARAM_FILE, "old");
    EXPECT_EQ(keyValToFile(PARAM_FILE, nullptr, 3), SNS_FAILED);
    EXPECT_EQ(saveToFile(PARAM_FILE, nullptr, 3), -1);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE), "old");
    EXPECT_TRUE(logged("file_len == (nSize=file.write(data, file_len))"));
}

TEST_F(ParamFileTest, WholeFileLoadNeedsTheExactLength) {
    m_objRoot.writeFile("/tmp/blob", std::string(100, 'a'));
    std::string strBuf(102, '\0');
    EXPECT_EQ(getFileLen("/tmp/blob"), 100);
    EXPECT_EQ(loadFromFile("/tmp/blob", strBuf.data(), 100), 100);
    EXPECT_EQ(loadFromFile("/tmp/blob", strBuf.data(), 101), -1);
    EXPECT_EQ(loadFromFile("/tmp/blob", strBuf.data(), -1), -1);
    EXPECT_EQ(strBuf.find('\0'), 100u);
    EXPECT_EQ(getFileLen("/tmp/none"), 0);
    EXPECT_TRUE(logged("file_name(/tmp/none)"));
}

TEST_F(ParamFileTest, VersionStampIsFourBytes) {
    u32 nVersion = 77;
    EXPECT_EQ(getVersion(&nVersion), -1);
    EXPECT_EQ(setVersion(8), 0);
    EXPECT_EQ(m_objRoot.readFile(SENSOR_VERSION_FILE), bytes({8, 0, 0, 0}));
    EXPECT_EQ(getVersion(&nVersion), 0);
    EXPECT_EQ(nVersion, 8u);
    m_objRoot.writeFile(SENSOR_VERSION_FILE, bytes({0x44, 0x33, 0x22}));
    EXPECT_EQ(getVersion(&nVersion), -1);
    EXPECT_EQ(nVersion, 8u);
}

} // namespace
} // namespace configtest
