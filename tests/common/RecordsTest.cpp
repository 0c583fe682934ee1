// Records that cross into the ISP library or onto flash keep their exact layout
// and byte order, and the module-wide variables start as the camera expects.
#include <gtest/gtest.h>

#include <cstring>

#include "common/SensorKeys.h"
#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"

TEST(RecordsTest, IspRecordsHaveTheLibrarysLayout) {
    ia_dynamic_params_attr_st stAttr;
    std::memset(&stAttr, 0, sizeof(stAttr));
    stAttr.items_cnt = 3;
    stAttr.item[63] = 0x01020304;
    const auto* pBytes = reinterpret_cast<const unsigned char*>(&stAttr);
    EXPECT_EQ(3, pBytes[16]);
    EXPECT_EQ(0x04, pBytes[20 + 63 * 4]) << "items are little-endian words from offset 20";
    ia_dynamic_cmd_list_st stList;
    std::memset(&stList, 0, sizeof(stList));
    stList.cmd_list[15] = IA_CMD_DYNAMIC_PARAMS_CMDS_GET;
    EXPECT_EQ(0x10, reinterpret_cast<const unsigned char*>(&stList)[4 + 15 * 4]);
    EXPECT_EQ(4112u, static_cast<u32>(IA_CMD_DYNAMIC_PARAMS_CMDS_GET));
}

TEST(RecordsTest, OptionsAndResultCodes) {
    EXPECT_EQ(0, IA_CMD_OPT_SET);
    EXPECT_EQ(2, IA_CMD_OPT_GET_PARAM_RNAGE);
    EXPECT_EQ(4, IA_CMD_OPT_EXEC_STATUS);
    EXPECT_EQ(-2, SNS_ERR_SCHEME_RANGE);
    EXPECT_EQ(507, SNS_ERR_TIME_ORDER);
}

TEST(RecordsTest, KeysThatAreNotTheirIspCommands) {
    // The key numbering and the ISP numbering diverge for these; mixing them up
    // sends white-light values to the wrong ISP command.
    EXPECT_EQ(170u, KEY_WHITE_SWITCH);
    EXPECT_EQ(168u, KEY_IR_MODE_INTELL);
    EXPECT_EQ(83u, KEY_IRIS_SIZE);
    EXPECT_EQ(17u, KEY_IRIS_UP);
    EXPECT_EQ(2497u, KEY_SENSOR_FPS);
    const u32 aTwins[] = {KEY_IR_MODE_INTELL,
                          KEY_IR_MANUAL_STRG_NEAR_INTELL,
                          KEY_IR_MANUAL_STRG_MEDIUM_INTELL,
                          KEY_IR_MANUAL_STRG_FAR_INTELL,
                          KEY_WHITE_MODE_INTELL,
                          KEY_WHITE_MANUAL_STRG_INTELL,
                          KEY_WHITE_MANUAL_STRG_MEDIUM_INTELL,
                          KEY_WHITE_MANUAL_STRG_FAR_INTELL};
    const u32 aExpected[] = {168, 200, 201, 202, 175, 203, 204, 205};
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(aExpected[i], aTwins[i]) << i;
    }
    EXPECT_EQ(2370u, IA_CMD_UI_WDR_SWITCHING);
    EXPECT_EQ(2384u, IA_CMD_UI_MIRROR);
}

TEST(RecordsTest, BeawayFlagAccessors) {
    EXPECT_TRUE(getshowBeawayFalg()) << "allowed until init says otherwise";
    setshowBeawayFalg(false);
    EXPECT_FALSE(getshowBeawayFalg());
    setshowBeawayFalg(true);
    EXPECT_TRUE(getshowBeawayFalg());
}
