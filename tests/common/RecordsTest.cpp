// Numbers the ISP library and the host rely on (the record layouts are checked
// at compile time next to the records).
#include <gtest/gtest.h>

#include <tuple>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"

TEST(RecordsTest, IspCommandAndHostVisibleCodes) {
    EXPECT_EQ(4112u, static_cast<u32>(IA_CMD_DYNAMIC_PARAMS_CMDS_GET));
    // The host tells the three window errors of a flush apart by these numbers.
    EXPECT_EQ(std::make_tuple(505, 506, 507),
              std::make_tuple(SNS_ERR_START_TIME, SNS_ERR_END_TIME, SNS_ERR_TIME_ORDER));
    EXPECT_TRUE(getshowBeawayFalg()) << "allowed until init says otherwise";
}
