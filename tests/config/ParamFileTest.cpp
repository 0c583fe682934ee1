// Parameter files and the version stamp: exact bytes, short and long files.
#include "ConfigFixture.h"

#include <string>
#include <vector>

#include "config/SensorFile.h"

namespace configtest {
namespace {

constexpr const char* PARAM_FILE = "/mnt/mtd/code/config_file/sensor1_0.cfg";

class ParamFileTest : public ConfigTest {
protected:
    static std::string bytes(std::initializer_list<unsigned> p_lstBytes) {
        std::string strOut;
        for (unsigned nByte : p_lstBytes) {
            strOut.push_back(static_cast<char>(nByte));
        }
        return strOut;
    }
};

TEST_F(ParamFileTest, SetIsWrittenAsLittleEndianKeyThenValue) {
    KeyVal arrSet[] = {{8000, 1}, {0x01020304u, 0xA0B0C0D0u}, {49, 0xFFFFFFFFu}};
    EXPECT_EQ(keyValToFile(PARAM_FILE, arrSet, 3), SNS_SUCCESS);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE),
              bytes({0x40, 0x1F, 0,    0,    1,  0, 0, 0, 0x04, 0x03, 0x02, 0x01,
                     0xD0, 0xC0, 0xB0, 0xA0, 49, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}));

    KeyVal arrBack[3] = {};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrBack, 3), SNS_SUCCESS);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(arrBack[i].key, arrSet[i].key);
        EXPECT_EQ(arrBack[i].value, arrSet[i].value);
    }
    EXPECT_EQ(takeErrorLog(), "");
}

TEST_F(ParamFileTest, LongerFileLoadsItsFirstRecordsWithoutReport) {
    m_objRoot.writeFile(PARAM_FILE, bytes({1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0}));
    KeyVal arrSet[1] = {{99, 99}};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrSet, 1), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].key, 1u);
    EXPECT_EQ(arrSet[0].value, 2u);
    EXPECT_EQ(takeErrorLog(), "");
}

TEST_F(ParamFileTest, ShorterFileIsReportedAndKeepsTheTail) {
    // One whole record and half of the next.
    m_objRoot.writeFile(PARAM_FILE, bytes({7, 0, 0, 0, 8, 0, 0, 0, 9, 0, 0, 0}));
    KeyVal arrSet[3] = {{1, 1}, {2, 2}, {3, 3}};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrSet, 3), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].key, 7u);
    EXPECT_EQ(arrSet[0].value, 8u);
    // The cut record is not half-applied.
    EXPECT_EQ(arrSet[1].key, 2u);
    EXPECT_EQ(arrSet[1].value, 2u);
    EXPECT_EQ(arrSet[2].key, 3u);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("nSize == sizeof(KeyVal)*p_nKeyValNum"), std::string::npos);
    EXPECT_NE(strLog.find("nSize(12) sizeof(KeyVal) = 8, p_nKeyValNum(3)"), std::string::npos);
}

TEST_F(ParamFileTest, MissingFileIsReportedAndChangesNothing) {
    KeyVal arrSet[2] = {{1, 1}, {2, 2}};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrSet, 2), SNS_SUCCESS);
    EXPECT_EQ(arrSet[0].key, 1u);
    EXPECT_EQ(arrSet[1].value, 2u);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("file.open(file_name)"), std::string::npos);
    EXPECT_NE(strLog.find("file_name(/mnt/mtd/code/config_file/sensor1_0.cfg)"), std::string::npos);
}

TEST_F(ParamFileTest, WritingTruncatesALongerFile) {
    m_objRoot.writeFile(PARAM_FILE, std::string(64, 'x'));
    KeyVal arrSet[] = {{34, 50}};
    EXPECT_EQ(keyValToFile(PARAM_FILE, arrSet, 1), SNS_SUCCESS);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE), bytes({34, 0, 0, 0, 50, 0, 0, 0}));
}

TEST_F(ParamFileTest, RefusedWriteLeavesTheOldFile) {
    m_objRoot.writeFile(PARAM_FILE, "old");
    EXPECT_EQ(keyValToFile(PARAM_FILE, nullptr, 3), SNS_FAILED);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE), "old");
    EXPECT_NE(takeErrorLog(), "");
}

TEST_F(ParamFileTest, LoadFromFileNeedsTheExactLength) {
    m_objRoot.writeFile("/tmp/blob", std::string(100, 'a'));
    std::vector<char> vecBuf(102, 0);
    EXPECT_EQ(getFileLen("/tmp/blob"), 100);
    EXPECT_EQ(loadFromFile("/tmp/blob", vecBuf.data(), 100), 100);
    EXPECT_EQ(loadFromFile("/tmp/blob", vecBuf.data(), 101), -1);
    EXPECT_EQ(loadFromFile("/tmp/blob", vecBuf.data(), -1), -1);
    EXPECT_EQ(loadFromFile("/tmp/none", vecBuf.data(), 1), -1);
    EXPECT_EQ(vecBuf[99], 'a');
    EXPECT_EQ(vecBuf[100], 0);
}

TEST_F(ParamFileTest, FileLengthOfAMissingFileIsZeroAndReported) {
    EXPECT_EQ(getFileLen("/tmp/none"), 0);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("file.open(file_name)"), std::string::npos);
    EXPECT_NE(strLog.find("file_name(/tmp/none)"), std::string::npos);
}

TEST_F(ParamFileTest, SaveReplacesTheWholeFile) {
    m_objRoot.writeFile("/tmp/blob", "a much longer old content");
    char szData[] = "new";
    EXPECT_EQ(saveToFile("/tmp/blob", szData, 3), 3);
    EXPECT_EQ(m_objRoot.readFile("/tmp/blob"), "new");
    EXPECT_EQ(saveToFile("/tmp/blob", nullptr, 3), -1);
    EXPECT_NE(takeErrorLog().find("file_len == (nSize=file.write(data, file_len))"),
              std::string::npos);
}

TEST_F(ParamFileTest, VersionStamp) {
    u32 nVersion = 77;
    EXPECT_EQ(getVersion(&nVersion), -1);
    EXPECT_EQ(setVersion(8), 0);
    EXPECT_EQ(m_objRoot.readFile(SENSOR_VERSION_FILE), bytes({8, 0, 0, 0}));
    EXPECT_EQ(getVersion(&nVersion), 0);
    EXPECT_EQ(nVersion, 8u);

    EXPECT_EQ(setVersion(0x11223344u), 0);
    EXPECT_EQ(m_objRoot.readFile(SENSOR_VERSION_FILE), bytes({0x44, 0x33, 0x22, 0x11}));

    // A cut stamp is no stamp; the value is not touched.
    m_objRoot.writeFile(SENSOR_VERSION_FILE, bytes({9, 0, 0}));
    EXPECT_EQ(getVersion(&nVersion), -1);
    EXPECT_EQ(nVersion, 8u);
}

} // namespace
} // namespace configtest
