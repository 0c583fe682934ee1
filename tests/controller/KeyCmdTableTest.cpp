// The key-command table: every row against an independent list, the build
// step of start-up, and the lookups.
#include "ControllerFixture.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

namespace sensortest {
namespace {

struct ExpectedRow {
    const char* name;
    u32 key;
    u32 cmd;
    const char* handler; // "" for a row without a handler
};

// The table as the product documents it, row by row.
const ExpectedRow EXPECTED_ROWS[] = {
    {"KEY__DDE_MANUAL_STRG", 8240, 8240, "doIaCmd"},
    {"KEY_BRIGHTNESS", 34, 34, "doIaCmd"},
    {"KEY_SATURATION", 2337, 2337, "doIaCmd"},
    {"KEY_CONTRAST", 2353, 2353, "doIaCmd"},
    {"KEY_SHARPNESS", 2321, 2321, "doIaCmd"},
    {"KEY_METER_AREA", 96, 96, "doIaCmd"},
    {"KEY_EXPOSE_MODE", 16, 16, "doIaCmd"},
    {"KEY_MAX_SHUTTER", 49, 49, "doIaCmd"},
    {"KEY_FIX_SHUTTER", 50, 50, "doIaCmd"},
    {"KEY_MIN_SHUTTER", 51, 51, "doIaCmd"},
    {"KEY_TRAFFIC_LEVEL", 52, 52, "doIaCmd"},
    {"KEY_MIN_SHUTTER_NIGHT", 55, 55, "doIaCmd"},
    {"KEY_MAX_SHUTTER_NIGHT", 56, 56, "doIaCmd"},
    {"KEY_MAX_GAIN_NIGHT", 57, 57, "doIaCmd"},
    {"KEY_MAX_GAIN", 65, 65, "doIaCmd"},
    {"KEY_FIX_GAIN", 66, 66, "doIaCmd"},
    {"KEY_IRIS_SWITCH", 80, 80, "doIaCmd"},
    {"KEY_IRIS_SPEED", 81, 81, "doIaCmd"},
    {"KEY_IRIS_POSITION", 82, 82, "doIaCmd"},
    {"KEY_IRIS_SIZE", 83, 85, "doIaCmd"},
    {"KEY_IRIS_UP", 17, 83, "doIaCmd_User"},
    {"KEY_IRIS_DOWN", 18, 84, "doIaCmd_User"},
    {"KEY_WB_MODE", 768, 768, "doIaCmd"},
    {"KEY_R_GAIN", 770, 770, "doIaCmd"},
    {"KEY_B_GAIN", 771, 771, "doIaCmd"},
    {"KEY_DN_MODE", 144, 144, "doIaCmd"},
    {"KEY_DELAY", 147, 147, "doIaCmd"},
    {"KEY_IR_SWITCH", 160, 160, "doIaCmd"},
    {"KEY_IR_MODE", 161, 161, "doIaCmd"},
    {"KEY_IR_AUTO_STRG_NEAR", 162, 162, "doIaCmd"},
    {"KEY_IR_MANUAL_STRG_NEAR", 163, 163, "doIaCmd"},
    {"KEY_IR_AUTO_STRG_MEDIUM", 164, 164, "doIaCmd"},
    {"KEY_IR_MANUAL_STRG_MEDIUM", 165, 165, "doIaCmd"},
    {"KEY_IR_AUTO_STRG_FAR", 166, 166, "doIaCmd"},
    {"KEY_IR_MANUAL_STRG_FAR", 167, 167, "doIaCmd"},
    {"KEY_IR_ANTI_OVEREXP", 155, 155, "doIaCmd"},
    {"KEY_WHITE_SWITCH", 170, 168, "doIaCmd"},
    {"KEY_WHITE_MODE", 171, 169, "doIaCmd"},
    {"KEY_WHITE_MANUAL_STRG", 172, 170, "doIaCmd"},
    {"KEY_WHITE_MANUAL_STRG_MEDIUM", 173, 171, "doIaCmd"},
    {"KEY_WHITE_MANUAL_STRG_FAR", 174, 172, "doIaCmd"},
    {"KEY_2D_NR_SWITCH", 2304, 2304, "doIaCmd"},
    {"KEY_2D_NR_MODE", 2305, 2305, "doIaCmd"},
    {"KEY_2D_NR_STRG_A", 2306, 2306, "doIaCmd"},
    {"KEY_2D_NR_STRG_M", 2307, 2307, "doIaCmd"},
    {"KEY_3D_NR_SWITCH", 2308, 2308, "doIaCmd"},
    {"KEY_3D_NR_MODE", 2309, 2309, "doIaCmd"},
    {"KEY_3D_NR_STRG_A", 2312, 2312, "doIaCmd"},
    {"KEY_3D_NR_STRG_M", 2313, 2313, "doIaCmd"},
    {"KEY_WDR_MODE", 2368, 2368, "doHwdr"},
    {"KEY_WDR_STRG", 2369, 2369, "doIaCmd"},
    {"KEY_HLC_SWITCH", 112, 112, "doIaCmd"},
    {"KEY_HLC_STRG", 113, 113, "doIaCmd"},
    {"KEY_BLC_SWITCH", 128, 128, "doIaCmd"},
    {"KEY_BLC_MODE", 129, 129, "doIaCmd"},
    {"KEY_BLC_STRG", 130, 130, "doIaCmd"},
    {"KEY_ANTI_SHAKE_SWITCH", 2416, 2416, "doDIS"},
    {"KEY_ANTI_SHAKE_STRG", 2417, 2417, "doIaCmd"},
    {"KEY_DEFLG_SWITCH", 2400, 2400, "doIaCmd"},
    {"KEY_DEFLG_STRG", 2401, 2401, "doIaCmd"},
    {"KEY_IN_OUT_SIDE", 176, 176, "doIaCmd"},
    {"KEY_TEST_PARAM1", 190, 190, "test_debugParam"},
    {"KEY_TEST_PARAM2", 191, 191, "test_debugParam"},
    {"KEY_TEST_PARAM3", 192, 192, "test_debugParam"},
    {"KEY_TEST_PARAM4", 193, 193, "test_debugParam"},
    {"KEY_MIRROR", 2384, 2384, "doMirror"},
    {"KEY_BEAWAY", 2385, 2385, "doBeaway"},
    {"KEY_DTN_THR", 145, 145, "doDNThr"},
    {"KEY_NTD_THR", 146, 146, "doDNThr"},
    {"KEY_DN_SENSITIVITY", 154, 154, "doDNThr"},
    {"KEY_DTN_H", 149, 149, "doDNTime"},
    {"KEY_DTN_M", 150, 150, "doDNTime"},
    {"KEY_NTD_H", 151, 151, "doDNTime"},
    {"KEY_NTD_M", 152, 152, "doDNTime"},
    {"KEY_AUTO_FOCUS_MODE", 1536, 1536, "doIaCmd"},
    {"KEY_AUTO_FOCUS_NEAR_LIMIT", 1537, 1537, "doIaCmd"},
    {"KEY_AUTO_FOCUS_SENSITIVITY", 1538, 1538, "doIaCmd"},
    {"KEY_AUTO_FOCUS_ONCE", 1539, 1539, "doIaCmd_User"},
    {"KEY_LENS_RESET", 1616, 1616, "doIaCmd_User"},
    {"KEY_ZOOM_OUT", 1570, 1570, "doIaCmd_User"},
    {"KEY_ZOOM_IN", 1569, 1569, "doIaCmd_User"},
    {"KEY_FOCUS_NEAR", 1553, 1553, "doIaCmd_User"},
    {"KEY_FOCUS_FAR", 1554, 1554, "doIaCmd_User"},
    {"KEY_DIGITAL_ZOOM", 1584, 1584, "doIaCmd"},
    {"KEY_MZOOM_SPEED", 1571, 1571, "doIaCmd"},
    {"KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV", 8104, 8104, "doIoCrtl"},
    {"KEY_MIXSTREAM_DISTANCE", 8100, 8100, "doIaCmd_PanoTuning"},
    {"KEY_MIXSTREAM_DISTANCE_Y_OFFSET", 8101, 8101, "doIaCmd_PanoTuning"},
    {"KEY_MIXSTREAM_DISTANCE_WIDTH_OFFSET", 8102, 8102, "doIaCmd_PanoTuning"},
    {"KEY_MIXSTREAM_DISTANCE_HEIGHT_OFFSET", 8103, 8103, "doIaCmd_PanoTuning"},
    {"KEY_MIXSTREAM_TYPE", 8105, 8105, "doIaCmd_PanoTuning"},
    {"KEY_SCHEME_MODE", 8000, 0, ""},
    {"KEY_SCHEME_START_HOUR", 8001, 0, ""},
    {"KEY_SCHEME_START_MIN", 8002, 0, ""},
    {"KEY_SCHEME_END_HOUR", 8003, 0, ""},
    {"KEY_SCHEME_END_MIN", 8004, 0, ""},
    {"KEY_EMPTY1", 10, 0, ""},
    {"KEY_EMPTY2", 11, 0, ""},
    {"KEY_EMPTY3", 13, 0, ""},
    {"KEY_MF_POSITION", 1552, 1552, "doIaCmd"},
    {"KEY_MZ_POSITION", 1568, 1568, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_DIRECTION", 2432, 2432, "doImageAdjust"},
    {"KEY_CAP_OFF_ADJ_STEP", 2433, 2433, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_H_MIN", 2434, 2434, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_H_MAX", 2435, 2435, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_H_CUR", 2436, 2436, "doImageAdjust"},
    {"KEY_CAP_OFF_ADJ_V_MIN", 2437, 2437, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_V_MAX", 2438, 2438, "doIaCmd"},
    {"KEY_CAP_OFF_ADJ_V_CUR", 2439, 2439, "doImageAdjust"},
    {"KEY_SENSOR_FPS", 2497, 2464, "doIaCmd_User"},
    {"KEY_FREEZE", 2512, 2512, "doIaCmd"},
    {"KEY_GAMMA", 2528, 2528, "doIaCmd"},
    {"KEY_DN_AF_MODE", 2560, 2560, "doIaCmd"},
    {"KEY_NONE_COLOR_MODE", 8201, 8201, "doIaCmd"},
    {"KEY_DVE_MODE", 8202, 8202, "doIaCmd"},
    {"KEY_AUTO_TIME", 8203, 8203, "doIaCmd"},
    {"KEY_AUTO_TEMPR", 8209, 8209, "doIaCmd"},
    {"KEY_CONTROL_FFC_MODE", 8204, 8204, "doIaCmd"},
    {"KEY_IMAGES_ADJUST", 8205, 8205, "doIaCmd"},
    {"KEY_IMAGES_REGULATE", 8206, 8206, "doIaCmd"},
    {"KEY_FOCUS_SPEED_LEVEL", 8207, 8207, "doIaCmd"},
    {"KEY_DVE_TYPE", 8208, 8208, "doIaCmd"},
    {"KEY_SHUTTER_ADJUST", 8211, 8211, "doIaCmdShutter"},
    {"KEY_BACKGROUND_ADJUST", 8212, 8212, "doIaCmd_User"},
    {"KEY_TEMPERATURE_STRIP_SWITCH", 8217, 8217, "doIaCmd"},
    {"IA_CMD_UI_SHUTTER_RESET", 8231, 8231, "doIaCmd_User"},
    {"KEY_PANO_STITCH_DIST", 9000, 9000, "doIaCmd_PanoTuning"},
    {"KEY_PANO_SAVE", 9001, 9001, "doIaCmd_PanoTuning"},
    {"KEY_PANO_RESET", 9002, 9002, "doIaCmd_PanoTuning"},
    {"KEY_PANO_PREVIEW", 9003, 9003, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ADJUST_EN", 9004, 9004, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ID", 9005, 9005, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ADJUST_EN_1", 9101, 9101, "doIaCmd_PanoTuning"},
    {"KEY_PANO_YAW_1", 9102, 9102, "doIaCmd_PanoTuning"},
    {"KEY_PANO_PITCH_1", 9103, 9103, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ROLL_1", 9104, 9104, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETX_1", 9105, 9105, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETY_1", 9106, 9106, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ADJUST_EN_2", 9201, 9201, "doIaCmd_PanoTuning"},
    {"KEY_PANO_YAW_2", 9202, 9202, "doIaCmd_PanoTuning"},
    {"KEY_PANO_PITCH_2", 9203, 9203, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ROLL_2", 9204, 9204, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETX_2", 9205, 9205, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETY_2", 9206, 9206, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ADJUST_EN_3", 9301, 9301, "doIaCmd_PanoTuning"},
    {"KEY_PANO_YAW_3", 9302, 9302, "doIaCmd_PanoTuning"},
    {"KEY_PANO_PITCH_3", 9303, 9303, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ROLL_3", 9304, 9304, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETX_3", 9305, 9305, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETY_3", 9306, 9306, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ADJUST_EN_4", 9401, 9401, "doIaCmd_PanoTuning"},
    {"KEY_PANO_YAW_4", 9402, 9402, "doIaCmd_PanoTuning"},
    {"KEY_PANO_PITCH_4", 9403, 9403, "doIaCmd_PanoTuning"},
    {"KEY_PANO_ROLL_4", 9404, 9404, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETX_4", 9405, 9405, "doIaCmd_PanoTuning"},
    {"KEY_PANO_OFFSETY_4", 9406, 9406, "doIaCmd_PanoTuning"},
    {"KEY_IR_MODE_INTELL", 168, 0, ""},
    {"KEY_WHITE_MODE_INTELL", 175, 0, ""},
    {"KEY_IR_MANUAL_STRG_NEAR_INTELL", 200, 0, ""},
    {"KEY_WHITE_MANUAL_STRG_INTELL", 203, 0, ""},
    {"KEY_LIGHT_TYPE", 224, 224, "doIaCmd"},
    {"KEY_LDC_SWITCH", 2048, 2048, "doIaCmd"},
    {"KEY_LDC_STRG", 2064, 2064, "doIaCmd"},
    {"KEY_WB_RG", 772, 772, "doIaCmd"},
    {"KEY_WB_BG", 773, 773, "doIaCmd"},
};

keycmd_handler handlerNamed(const std::string& p_strName) {
    static const std::map<std::string, keycmd_handler> mapHandlers = {
        {"doIaCmd", &ISensorController::doIaCmd},
        {"doIaCmd_User", &ISensorController::doIaCmd_User},
        {"doIaCmd_PanoTuning", &ISensorController::doIaCmd_PanoTuning},
        {"doDNThr", &ISensorController::doDNThr},
        {"doDNTime", &ISensorController::doDNTime},
        {"doMirror", &ISensorController::doMirror},
        {"doBeaway", &ISensorController::doBeaway},
        {"doHwdr", &ISensorController::doHwdr},
        {"doDIS", &ISensorController::doDIS},
        {"test_debugParam", &ISensorController::test_debugParam},
        {"doImageAdjust", &ISensorController::doImageAdjust},
        {"doIoCrtl", &ISensorController::doIoCrtl},
        {"doIaCmdShutter", &ISensorController::doIaCmdShutter},
    };
    return p_strName.empty() ? nullptr : mapHandlers.at(p_strName);
}

// The key name as the 32-byte field must hold it.
void expectKeyName(const keycmd& p_stRow, const std::string& p_strName) {
    const std::size_t nStored = std::min<std::size_t>(p_strName.size(), KEYCMD_KEY_NAME_LEN);
    EXPECT_EQ(std::string(p_stRow.key_name, nStored), p_strName.substr(0, nStored));
    if (p_strName.size() < KEYCMD_KEY_NAME_LEN) {
        EXPECT_EQ(p_stRow.key_name[p_strName.size()], '\0') << p_strName;
    }
}

bool isAllZero(const keycmd& p_stRow) {
    const auto* pBytes = reinterpret_cast<const unsigned char*>(&p_stRow);
    return std::all_of(pBytes, pBytes + sizeof p_stRow, [](unsigned char c) { return c == 0; });
}

class KeyCmdTableTest : public ControllerTest {};

TEST_F(KeyCmdTableTest, EveryRowMatchesTheDocumentedTable) {
    static_assert(sizeof EXPECTED_ROWS / sizeof EXPECTED_ROWS[0] == 165);
    Access::buildKeyCmdMap(ctl());
    ASSERT_EQ(Access::keyCmdSum(ctl()), 165u);
    const keycmd* pTable = Access::keyCmdMap(ctl());
    std::map<std::string, int> mapUses;
    for (std::size_t i = 0; i < 165; ++i) {
        SCOPED_TRACE("row " + std::to_string(i) + " " + EXPECTED_ROWS[i].name);
        const ExpectedRow& stWant = EXPECTED_ROWS[i];
        const keycmd& stRow = pTable[i];
        EXPECT_EQ(stRow.key, stWant.key);
        EXPECT_EQ(stRow.ia_cmd, stWant.cmd);
        EXPECT_TRUE(stRow.func == handlerNamed(stWant.handler));
        expectKeyName(stRow, stWant.name);
        const std::string strFunc = *stWant.handler
                                        ? std::string("&ISensorController::") + stWant.handler
                                        : std::string("NULL");
        EXPECT_STREQ(stRow.func_name, strFunc.c_str());
        ++mapUses[stWant.handler];
    }
    EXPECT_EQ(mapUses["doIaCmd"], 87);
    EXPECT_EQ(mapUses["doIaCmd_PanoTuning"], 35);
    EXPECT_EQ(mapUses["doIaCmd_User"], 11);
    EXPECT_EQ(mapUses[""], 12);
}

TEST_F(KeyCmdTableTest, BuildZeroesTheSpareRowsAndShrinksTheCount) {
    ASSERT_EQ(Access::keyCmdSum(ctl()), 170u);
    Access::buildKeyCmdMap(ctl());
    const keycmd* pTable = Access::keyCmdMap(ctl());
    for (std::size_t i = 165; i < 170; ++i) {
        EXPECT_TRUE(isAllZero(pTable[i])) << "row " << i;
    }
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);

    // A second start-up builds from 165 rows and still fills them all.
    Access::buildKeyCmdMap(ctl());
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    EXPECT_EQ(Access::keyCmdMap(ctl())[164].key, 773u);
}

TEST_F(KeyCmdTableTest, LongNamesKeepTheirFirst32CharactersWithoutTerminator) {
    Access::buildKeyCmdMap(ctl());
    const keycmd* pTable = Access::keyCmdMap(ctl());
    EXPECT_EQ(std::string(pTable[85].key_name, 32), "KEY_MIXSTREAM_THERMAL_TO_VISION_");
    EXPECT_EQ(std::string(pTable[88].key_name, 32), "KEY_MIXSTREAM_DISTANCE_WIDTH_OFF");
    EXPECT_EQ(std::string(pTable[89].key_name, 32), "KEY_MIXSTREAM_DISTANCE_HEIGHT_OF");
}

TEST_F(KeyCmdTableTest, LookupsCopyTheRow) {
    Access::buildKeyCmdMap(ctl());
    const keycmd* pTable = Access::keyCmdMap(ctl());
    keycmd stRow{};

    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 8104, stRow), 85);
    EXPECT_TRUE(stRow.func == &ISensorController::doIoCrtl);
    EXPECT_EQ(std::string(stRow.key_name, 32), "KEY_MIXSTREAM_THERMAL_TO_VISION_");
    EXPECT_STREQ(stRow.func_name, "&ISensorController::doIoCrtl");

    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 83, stRow), 19);
    EXPECT_STREQ(stRow.key_name, "KEY_IRIS_SIZE");
    EXPECT_EQ(stRow.ia_cmd, 85u);
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 17, stRow), 20);
    EXPECT_STREQ(stRow.key_name, "KEY_IRIS_UP");
    EXPECT_EQ(stRow.ia_cmd, 83u);

    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 8000, stRow), 91);
    EXPECT_STREQ(stRow.key_name, "KEY_SCHEME_MODE");
    EXPECT_TRUE(stRow.func == nullptr);
    EXPECT_EQ(stRow.ia_cmd, 0u);
    EXPECT_STREQ(stRow.func_name, "NULL");
}

TEST_F(KeyCmdTableTest, UnknownKeyLeavesTheOutputRowAlone) {
    Access::buildKeyCmdMap(ctl());
    keycmd stRow{};
    stRow.key = 4242;
    stRow.ia_cmd = 77;
    std::strcpy(stRow.key_name, "before");
    EXPECT_EQ(ctl().findFromKeyCmdMap(Access::keyCmdMap(ctl()), 12, stRow), -1);
    EXPECT_EQ(stRow.key, 4242u);
    EXPECT_EQ(stRow.ia_cmd, 77u);
    EXPECT_STREQ(stRow.key_name, "before");
    // The spare rows behind the last one are never searched, not even for key 0.
    EXPECT_EQ(ctl().findFromKeyCmdMap(Access::keyCmdMap(ctl()), 0, stRow), -1);
}

TEST_F(KeyCmdTableTest, NoTableMeansEveryKeyIsUnknown) {
    keycmd stRow{};
    EXPECT_EQ(ctl().findFromKeyCmdMap(nullptr, 34, stRow), -1);
}

} // namespace
} // namespace sensortest
