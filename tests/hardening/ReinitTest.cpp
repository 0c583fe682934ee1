// The ipc camera's set keeps every record through a factory reset, a uinit and
// init, and the next boot: the end of init hides LDC from the host's pages,
// never from the set or its files.
#include <gtest/gtest.h>

#include "HardeningChannel.h"
#include "common/SensorKeys.h"

namespace sensortest {

TEST(ReinitTest, TheIpcSetKeepsEveryRecordThroughResetsAndBoots) {
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

} // namespace sensortest
