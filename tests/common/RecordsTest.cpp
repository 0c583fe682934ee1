// Records that cross into the ISP library keep its layout and byte order; the
// host reads the window errors and the beaway flag as the camera expects.
#include <gtest/gtest.h>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"

TEST(RecordsTest, IspRecordsHaveTheLibrarysLayout) {
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = 3;
    stAttr.item[63] = 0x01020304;
    const auto* pBytes = reinterpret_cast<const unsigned char*>(&stAttr);
    EXPECT_EQ(3, pBytes[16]);
    EXPECT_EQ(0x04, pBytes[20 + 63 * 4]) << "items are little-endian words from offset 20";
    ia_dynamic_cmd_list_st stList{};
    stList.cmd_list[15] = IA_CMD_DYNAMIC_PARAMS_CMDS_GET;
    EXPECT_EQ(0x10, reinterpret_cast<const unsigned char*>(&stList)[4 + 15 * 4]);
    EXPECT_EQ(4112u, static_cast<u32>(IA_CMD_DYNAMIC_PARAMS_CMDS_GET));
}

TEST(RecordsTest, HostVisibleCodesAndFlags) {
    // The host tells the three window errors of a flush apart by these numbers.
    EXPECT_EQ(505, SNS_ERR_START_TIME);
    EXPECT_EQ(506, SNS_ERR_END_TIME);
    EXPECT_EQ(507, SNS_ERR_TIME_ORDER);
    EXPECT_TRUE(getshowBeawayFalg()) << "allowed until init says otherwise";
    setshowBeawayFalg(false);
    EXPECT_FALSE(getshowBeawayFalg());
    setshowBeawayFalg(true);
}
