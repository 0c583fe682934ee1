// Inputs the fuzz targets once found to break the module, kept as plain
// tests so that every build (and the sanitizer builds) runs them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "HardeningChannel.h"
#include "config/SensorKeyVal.h"
#include "config/SensorXml.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/XmlText.h"

namespace sensortest {
namespace {

// p_nSize bytes: the words (in the processor's order), then 0xEE.
std::vector<uint8_t> wordsAsBytes(std::vector<int32_t> p_vecWords, std::size_t p_nSize) {
    p_vecWords.resize(p_nSize, static_cast<int32_t>(0xEEEEEEEEu));
    const auto* pBytes = reinterpret_cast<const uint8_t*>(p_vecWords.data());
    return {pBytes, pBytes + p_nSize};
}

// The ISP moves whole records for a record command: reading one once overran
// the caller's value; writing one took the host's next records as the rest.
TEST(FuzzRegressionTest, RecordCommandsReadTheirFirstWordAndWriteTheValueAndZeros) {
    SampleDevice objDevice("ipc");
    ISensorController& objChannel = objDevice.bringUp(1);
    ASSERT_TRUE(objDevice.isp().setRecord(0, 2816, wordsAsBytes({41, 42, 43, 44}, 16)));
    ASSERT_TRUE(objDevice.isp().setRecord(0, 2496, wordsAsBytes({0x30313233}, 50)));
    std::array<int32_t, 17> arrRead{}; // the value, then words no read may reach
    EXPECT_TRUE(objChannel.getParameter(2816, arrRead[0]));
    EXPECT_EQ(arrRead[0], 41);
    EXPECT_TRUE(objChannel.getParameter(2496, arrRead[0]));
    EXPECT_EQ(arrRead[0], 0x30313233);
    EXPECT_EQ(std::count(arrRead.begin() + 1, arrRead.end(), 0), 16) << "read past the value";
    std::string strOut;
    EXPECT_EQ(objChannel.getParameters("(2816,2496,34)", strOut), 1);
    EXPECT_EQ(strOut.rfind("(2816,41)(2496,808530483)(34,", 0), 0u) << strOut;
    objChannel.setParameters("(2816,5)(34,50)(2337,128)", false);
    EXPECT_EQ(objDevice.isp().getRecord(0, 2816), wordsAsBytes({5, 0, 0, 0}, 16));
}

// "(34,)" once read as key 34 with the value before it. A text ending inside a
// UTF-8 character made the XML parser read past its end (the sanitizer builds
// watch); 100,000 levels overflowed its stack: deeper than the limit is refused
// before parsing, counting only markup that opens an element.
TEST(FuzzRegressionTest, TextsAreReadWithinTheirEndsAndDeepNestingIsRefusedBeforeParsing) {
    for (const char* szText : {"(34,)(35,2)", "(,7)(35,2)", "(34 5)(35,2)", "(x,1)(35,2)(36,",
                               "34,5)(35,2)", "(34,)(35,2)()"}) {
        std::vector<KeyVal> vecOut(4, KeyVal{99, 99});
        u32 nCount = 9;
        EXPECT_EQ(SNS_SUCCESS, keyval_str2st(szText, vecOut.data(), &nCount, 4)) << szText;
        EXPECT_TRUE(nCount == 1 && vecOut[0].key == 35 && vecOut[0].value == 2) << szText;
    }
    TempDeviceRoot objRoot; // refusals are logged
    TiXmlDocumentEx objDoc;
    EXPECT_FALSE(objDoc.LoadMem("<Style><Tab key=\"\xe8\xcb\0\"/></Style>", TIXML_ENCODING_UTF8));
    EXPECT_EQ(objDoc.RootElement(), nullptr);
    EXPECT_TRUE(objDoc.LoadMem("<Style><Tab key=\"\xe8\xcb\x80\"/></Style>", TIXML_ENCODING_UTF8));
    objRoot.writeFile(ModuleConfigureParser::kDevicePath,
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ModuleConfig><Module id=\"1\" "
                      "hardware_model=\"M\" hardware_code=\"C\" detail=\"\xe8\xcb");
    std::vector<ModuleConfigure> vecModules;
    EXPECT_FALSE(
        ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, "M", "C", vecModules));
    EXPECT_TRUE(vecModules.empty());
    const std::pair<std::string, int> arrCases[] = {
        {nestedXml(256), 256},
        {nestedXml(100000), 257},
        {"<a><!-- <b><c> --><b/><b></b></a>", 2},
        {"<a x='<b>' y=\"/>\"><![CDATA[<c><d>]]></a>", 1},
        {"<?xml version=\"1.0\"?><!DOCTYPE a><a>< b>1 <2</a>", 1},
        {"<a><b><c", 3}};
    for (const auto& [strText, nDepth] : arrCases) {
        EXPECT_EQ(xmlDepth(strText.c_str(), strText.size(), 256), nDepth) << strText.substr(0, 80);
    }
    EXPECT_TRUE(objDoc.LoadMem(nestedXml(256).c_str(), TIXML_ENCODING_UTF8));
    EXPECT_FALSE(objDoc.LoadMem(nestedXml(100000).c_str(), TIXML_ENCODING_UTF8)); // no crash
    EXPECT_EQ(objDoc.RootElement(), nullptr);
}

} // namespace
} // namespace sensortest
