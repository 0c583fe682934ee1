// Inputs the fuzz targets once found to break the module, kept as plain
// tests so that every build (and the sanitizer builds) runs them.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "HardeningChannel.h"

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
TEST(FuzzRegressionTest, ReadingRecordCommandsGivesTheirFirstWordAndNothingMore) {
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
    GetCapturedStdout();
}

} // namespace
} // namespace sensortest
