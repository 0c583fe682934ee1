// Numbers the ISP library and the host rely on (the record layouts are checked
// at compile time next to the records).
#include <gtest/gtest.h>

#include <vector>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"

TEST(RecordsTest, IspCommandAndHostVisibleCodes) {
    EXPECT_EQ(4112u, static_cast<u32>(IA_CMD_DYNAMIC_PARAMS_CMDS_GET));
    // The host tells the three window errors of a flush apart by these numbers.
    EXPECT_EQ((std::vector<int>{505, 506, 507}),
              (std::vector<int>{SNS_ERR_START_TIME, SNS_ERR_END_TIME, SNS_ERR_TIME_ORDER}));
    EXPECT_TRUE(getshowBeawayFalg()) << "allowed until init says otherwise";
}
