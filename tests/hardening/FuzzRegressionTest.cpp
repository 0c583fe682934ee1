// Inputs the fuzz targets once found to break the module, kept as plain
// tests so that every build (and the sanitizer builds) runs them.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "HardeningChannel.h"
#include "config/SensorKeyVal.h"
#include "config/SensorXml.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/XmlText.h"

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

std::vector<uint8_t> wordsAsBytes(const std::vector<int32_t>& p_vecWords, std::size_t p_nSize) {
    std::vector<uint8_t> vecBytes(p_nSize, 0xEE);
    std::memcpy(vecBytes.data(), p_vecWords.data(),
                std::min(p_nSize, p_vecWords.size() * sizeof(int32_t)));
    return vecBytes;
}

// Reading a key the set lacks asks the ISP; for a record command the ISP
// writes the whole record, which once overran the caller's single value.
TEST(FuzzRegressionTest, RecordCommandsReadTheirFirstWordAndWriteTheValueAndZeros) {
    SampleDevice objDevice("ipc");
    CaptureStdout();
    ISensorController& objChannel = objDevice.bringUp(1);
    ASSERT_TRUE(objDevice.isp().setRecord(0, 2816, wordsAsBytes({41, 42, 43, 44}, 16)));
    ASSERT_TRUE(objDevice.isp().setRecord(0, 2496, wordsAsBytes({0x30313233}, 50)));

    struct Guarded {
        int32_t nValue = 0;
        int32_t arrAfter[16] = {};
    } stRead;
    EXPECT_TRUE(objChannel.getParameter(2816, stRead.nValue));
    EXPECT_EQ(stRead.nValue, 41);
    EXPECT_TRUE(objChannel.getParameter(2496, stRead.nValue));
    EXPECT_EQ(stRead.nValue, 0x30313233);
    for (int32_t nWord : stRead.arrAfter) {
        EXPECT_EQ(nWord, 0) << "the read wrote past the value";
    }

    std::string strOut;
    EXPECT_EQ(objChannel.getParameters("(2816,2496,34)", strOut), 1);
    EXPECT_EQ(strOut.rfind("(2816,41)(2496,808530483)(34,", 0), 0u) << strOut;

    // A key without a row goes to the ISP as is; for a record command the ISP
    // reads a whole record, which once took the records after it in the host's
    // list (or the memory past the list) as the rest of the record.
    objChannel.setParameters("(2816,5)(34,50)(2337,128)", false);
    GetCapturedStdout();
    EXPECT_EQ(objDevice.isp().getRecord(0, 2816), wordsAsBytes({5, 0, 0, 0}, 16));
}

// A text that ends inside a multi-byte UTF-8 character made the XML parser
// step over the terminator and take what followed it in memory as more text;
// as the module configuration file it is refused, and the parser stays inside
// the file's bytes (the sanitizer builds check that).
TEST(FuzzRegressionTest, TextsEndingInsideAUtf8CharacterEndAtTheirTerminator) {
    TiXmlDocumentEx objDoc;
    EXPECT_FALSE(objDoc.LoadMem("<Style><Tab key=\"\xe8\xcb\0\"/></Style>", TIXML_ENCODING_UTF8));
    EXPECT_EQ(objDoc.RootElement(), nullptr);
    EXPECT_TRUE(objDoc.LoadMem("<Style><Tab key=\"\xe8\xcb\x80\"/></Style>", TIXML_ENCODING_UTF8));

    TempDeviceRoot objRoot;
    objRoot.writeFile(ModuleConfigureParser::kDevicePath,
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ModuleConfig><Module id=\"1\" "
                      "hardware_model=\"M\" hardware_code=\"C\" detail=\"\xe8\xcb");
    std::vector<ModuleConfigure> vecModules;
    EXPECT_FALSE(
        ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, "M", "C", vecModules));
    EXPECT_TRUE(vecModules.empty());
}

// A group lacking a number is skipped whole: "(34,)" once read as key 34 with
// whatever value came before, which then reached the ISP and the scheme set.
TEST(FuzzRegressionTest, GroupsLackingANumberAreSkippedAndTheRestRead) {
    for (const char* szText : {"(34,)(35,2)", "(,7)(35,2)", "(34 5)(35,2)", "(x,1)(35,2)(36,",
                               "34,5)(35,2)", "(34,)(35,2)()"}) {
        std::vector<KeyVal> vecOut(4, KeyVal{99, 99});
        u32 nCount = 9;
        EXPECT_EQ(SNS_SUCCESS, keyval_str2st(szText, vecOut.data(), &nCount, 4)) << szText;
        ASSERT_EQ(1u, nCount) << szText;
        EXPECT_EQ(35u, vecOut[0].key) << szText;
        EXPECT_EQ(2u, vecOut[0].value) << szText;
    }
}

// TinyXML recurses once per level of nesting: 100,000 levels overflowed the
// stack. Deeper than the limit is refused before the parser sees the text;
// markup that does not open an element is not counted.
TEST(FuzzRegressionTest, DocumentsNestedDeeperThanTheLimitAreRefusedBeforeParsing) {
    TempDeviceRoot objRoot; // the refusal is logged
    const std::pair<std::string, int> arrCases[] = {
        {nestedXml(256), 256},
        {nestedXml(257), 257},
        {nestedXml(100000), 257},
        {"<a><!-- <b><c> --><b/><b></b></a>", 2},
        {"<a x='<b>' y=\"/>\"><![CDATA[<c><d>]]></a>", 1},
        {"<?xml version=\"1.0\"?><!DOCTYPE a><a>< b>1 <2</a>", 1},
        {"<a><b><c", 3},
    };
    for (const auto& [strText, nDepth] : arrCases) {
        EXPECT_EQ(xmlDepth(strText.c_str(), strText.size(), 256), nDepth) << strText.substr(0, 80);
    }
    TiXmlDocumentEx objDoc;
    EXPECT_TRUE(objDoc.LoadMem(nestedXml(256).c_str(), TIXML_ENCODING_UTF8));
    CaptureStdout();
    EXPECT_FALSE(objDoc.LoadMem(nestedXml(100000).c_str(), TIXML_ENCODING_UTF8));
    EXPECT_NE(GetCapturedStdout().find("nested deeper than 256 levels"), std::string::npos);
    EXPECT_EQ(objDoc.RootElement(), nullptr);
}

} // namespace
} // namespace sensortest
