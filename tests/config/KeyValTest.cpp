// Parameter sets as "(key,value)" text, their correction by the ISP, and as
// parameter files with the version stamp: exact bytes, short and long files.
#include "ConfigFixture.h"

#include <tuple>

#include "config/SensorFile.h"
#include "config/SensorKeyVal.h"

namespace configtest {
namespace {

constexpr const char* PARAM_FILE = "/mnt/mtd/code/config_file/sensor1_0.cfg";

std::string bytes(std::initializer_list<unsigned> p_lstBytes) {
    return std::string(p_lstBytes.begin(), p_lstBytes.end());
}

TEST(KeyValTextTest, GroupsAreWrittenSignedAndReadSkippingJunkWithinTheCapacity) {
    const KeyVal arrSet[] = {{34, 50}, {49, 0xFFFFFFFFu}, {0xFFFFFFFFu, 0x80000000u}};
    std::string strOut = "x";
    keyval_st2str(strOut, arrSet, 3);
    keyval_st2str(strOut, nullptr, 3);
    EXPECT_EQ(strOut, "x(34,50)(49,-1)(-1,-2147483648)") << "appended";
    // The groups read within a capacity, as text again, and whether the text was refused;
    // a stray ")" counts no group twice.
    const std::tuple<const char*, u32, const char*> arrCases[] = {
        {"(34,50)(49,6)", 8, "(34,50)(49,6)"},
        {"(34,50) junk (49,6)", 8, "(34,50)(49,6)"},
        {"", 8, ""},
        {"(34,50)(", 8, "(34,50)"},
        {"(34,50)(49,6", 8, "(34,50)"},
        {"( 7, -8)(4294967295,1)", 8, "(7,-8)(-1,1)"},
        {"(a,b)(34,50)(1)(2 ,3)(,4)", 8, "(34,50)"},
        {")(34,50)", 8, "(34,50)"},
        {"(1,1)(2,2)(3,3)", 2, "(1,1)(2,2) refused"},
        {"(1,1)(2,2)", 2, "(1,1)(2,2)"},
        {"(1,1)(x,y)", 1, "(1,1)"},
        {"(1,1)", 0, " refused"}};
    for (const auto& [szIn, nCapacity, szOut] : arrCases) {
        std::vector<KeyVal> vecSet(nCapacity + 1, KeyVal{0xEE, 0xEE});
        u32 nCount = 99;
        const int nResult = keyval_str2st(szIn, vecSet.data(), &nCount, nCapacity);
        EXPECT_EQ(vecSet[nCapacity].key, 0xEEu) << szIn;
        EXPECT_EQ(text(vecSet.data(), std::min(nCount, nCapacity)) +
                      (nResult == SNS_SUCCESS ? "" : " refused"),
                  szOut)
            << szIn;
    }
}

using KeyValTest = ConfigTest;

TEST_F(KeyValTest, FirstEntryOfEachDynamicKeyIsCorrectedFailuresAndAbsurdCountsReported) {
    isp().setDynamicCommands(1, {49, 2368, 16});
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = 3;
    stAttr.item[0] = 3, stAttr.item[1] = 6, stAttr.item[2] = 12;
    isp().setAttribute(1, 49, stAttr);
    isp().setAttribute(1, 2368, stAttr);
    KeyVal arrSet[] = {{8000, 9}, {49, 7}, {2368, 11}, {49, 7}, {34, 999}};
    EXPECT_EQ(keyval_correct(1, arrSet, 5), SNS_SUCCESS);
    EXPECT_EQ(text(arrSet, 5), "(8000,9)(49,6)(2368,12)(49,7)(34,999)");
    EXPECT_TRUE(logged("[sensor assert] cmd_list[2]=16")); // dynamic but not in the set
    EXPECT_EQ(keyval_correct(0, nullptr, 1), SNS_FAILED);
    EXPECT_TRUE(logged("NULL != p_pKeyval   ~~~Assertion failed."));
    dynamic(49, 3, {3, 6});
    isp().failCommand(0, 49, IA_CMD_OPT_CORRECT_PARAM, -4);
    KeyVal stEntry{49, 5};
    EXPECT_EQ(keyval_correct(0, &stEntry, 1), SNS_SUCCESS);
    EXPECT_EQ(stEntry.value, 5u);
    EXPECT_TRUE(logged("(ia_cmd_e)p_pKeyval[index].key, IA_CMD_OPT_CORRECT_PARAM"));
    isp().clearFailures();
    isp().setDynamicCommands(0, std::vector<uint32_t>(40, 49));
    isp().clearLog();
    EXPECT_EQ(keyval_correct(0, &stEntry, 1), SNS_SUCCESS);
    EXPECT_EQ(stEntry.value, 6u);
    EXPECT_EQ(isp().log().size(), 17u); // the list and 16 corrections
    EXPECT_TRUE(logged("cmd_cnt(40)"));
}

// The stamp's bytes and a good stamp read back: FlashBytesTest.
TEST_F(KeyValTest, FilesAreLittleEndianPairsAndLongShortOrMissingOnesLoadSafely) {
    m_objRoot.writeFile(PARAM_FILE, std::string(64, 'x')); // a longer old file is replaced
    const KeyVal arrSet[] = {{8000, 1}, {0x01020304u, 0xA0B0C0D0u}};
    EXPECT_EQ(keyValToFile(PARAM_FILE, arrSet, 2), SNS_SUCCESS);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE),
              bytes({0x40, 0x1F, 0, 0, 1, 0, 0, 0, 4, 3, 2, 1, 0xD0, 0xC0, 0xB0, 0xA0}));
    KeyVal arrKept[3] = {{1, 1}, {2, 2}, {3, 3}};
    EXPECT_EQ(keyValFromFile(PARAM_FILE, arrKept, 1), SNS_SUCCESS);
    EXPECT_EQ(arrKept[0].key, 8000u);
    EXPECT_EQ(takeLog(), "") << "a longer file loads its first records without a report";

    const std::string strShort = bytes({7, 0, 0, 0, 8, 0, 0, 0, 9, 0, 0, 0}); // 1.5 records
    m_objRoot.writeFile(PARAM_FILE, strShort);
    for (const char* szFile : {PARAM_FILE, "/mnt/none.cfg"}) {
        EXPECT_EQ(keyValFromFile(szFile, arrKept, 3), SNS_SUCCESS);
        EXPECT_EQ(text(arrKept, 3), "(7,8)(2,2)(3,3)") << "the cut record is not half-applied";
    }
    expectLogged({"nSize == sizeof(KeyVal)*p_nKeyValNum   ~~~Assertion failed.",
                  "file_name(/mnt/none.cfg) nSize(-1) sizeof(KeyVal) = 8, p_nKeyValNum(3)"});
    EXPECT_EQ(keyValToFile(PARAM_FILE, nullptr, 3), SNS_FAILED);
    EXPECT_EQ(saveToFile(PARAM_FILE, nullptr, 3), -1);
    EXPECT_EQ(m_objRoot.readFile(PARAM_FILE), strShort) << "the old file stays";
    EXPECT_TRUE(logged("file_len == (nSize=file.write(data, file_len))"));

    m_objRoot.writeFile("/tmp/blob", std::string(100, 'a'));
    std::string strBuf(102, '\0');
    EXPECT_EQ(getFileLen("/tmp/blob"), 100);
    for (const int nLen : {100, 101, -1}) { // the exact length only
        EXPECT_EQ(loadFromFile("/tmp/blob", strBuf.data(), nLen), nLen == 100 ? 100 : -1);
    }
    EXPECT_EQ(strBuf.find('\0'), 100u);
    EXPECT_EQ(getFileLen("/tmp/none"), 0);
    EXPECT_TRUE(logged("file_name(/tmp/none)"));
    u32 nVersion = 77;
    EXPECT_EQ(getVersion(&nVersion), -1);
    m_objRoot.writeFile(SENSOR_VERSION_FILE, bytes({0x44, 0x33, 0x22})); // a cut stamp
    EXPECT_EQ(getVersion(&nVersion), -1);
    EXPECT_EQ(nVersion, 77u);
}

} // namespace
} // namespace configtest
