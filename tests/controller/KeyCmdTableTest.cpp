// The key-command table: every row against an independent description of
// it, the build step of start-up, and the lookups.
#include "ControllerFixture.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

namespace sensortest {
namespace {

// Every row in order as NAME=key.
const char* const ROW_KEYS = R"(
KEY__DDE_MANUAL_STRG=8240 KEY_BRIGHTNESS=34 KEY_SATURATION=2337 KEY_CONTRAST=2353
KEY_SHARPNESS=2321 KEY_METER_AREA=96 KEY_EXPOSE_MODE=16 KEY_MAX_SHUTTER=49
KEY_FIX_SHUTTER=50 KEY_MIN_SHUTTER=51 KEY_TRAFFIC_LEVEL=52 KEY_MIN_SHUTTER_NIGHT=55
KEY_MAX_SHUTTER_NIGHT=56 KEY_MAX_GAIN_NIGHT=57 KEY_MAX_GAIN=65 KEY_FIX_GAIN=66
KEY_IRIS_SWITCH=80 KEY_IRIS_SPEED=81 KEY_IRIS_POSITION=82 KEY_IRIS_SIZE=83
KEY_IRIS_UP=17 KEY_IRIS_DOWN=18 KEY_WB_MODE=768 KEY_R_GAIN=770 KEY_B_GAIN=771
KEY_DN_MODE=144 KEY_DELAY=147 KEY_IR_SWITCH=160 KEY_IR_MODE=161
KEY_IR_AUTO_STRG_NEAR=162 KEY_IR_MANUAL_STRG_NEAR=163 KEY_IR_AUTO_STRG_MEDIUM=164
KEY_IR_MANUAL_STRG_MEDIUM=165 KEY_IR_AUTO_STRG_FAR=166 KEY_IR_MANUAL_STRG_FAR=167
KEY_IR_ANTI_OVEREXP=155 KEY_WHITE_SWITCH=170 KEY_WHITE_MODE=171
KEY_WHITE_MANUAL_STRG=172 KEY_WHITE_MANUAL_STRG_MEDIUM=173 KEY_WHITE_MANUAL_STRG_FAR=174
KEY_2D_NR_SWITCH=2304 KEY_2D_NR_MODE=2305 KEY_2D_NR_STRG_A=2306 KEY_2D_NR_STRG_M=2307
KEY_3D_NR_SWITCH=2308 KEY_3D_NR_MODE=2309 KEY_3D_NR_STRG_A=2312 KEY_3D_NR_STRG_M=2313
KEY_WDR_MODE=2368 KEY_WDR_STRG=2369 KEY_HLC_SWITCH=112 KEY_HLC_STRG=113
KEY_BLC_SWITCH=128 KEY_BLC_MODE=129 KEY_BLC_STRG=130 KEY_ANTI_SHAKE_SWITCH=2416
KEY_ANTI_SHAKE_STRG=2417 KEY_DEFLG_SWITCH=2400 KEY_DEFLG_STRG=2401 KEY_IN_OUT_SIDE=176
KEY_TEST_PARAM1=190 KEY_TEST_PARAM2=191 KEY_TEST_PARAM3=192 KEY_TEST_PARAM4=193
KEY_MIRROR=2384 KEY_BEAWAY=2385 KEY_DTN_THR=145 KEY_NTD_THR=146 KEY_DN_SENSITIVITY=154
KEY_DTN_H=149 KEY_DTN_M=150 KEY_NTD_H=151 KEY_NTD_M=152 KEY_AUTO_FOCUS_MODE=1536
KEY_AUTO_FOCUS_NEAR_LIMIT=1537 KEY_AUTO_FOCUS_SENSITIVITY=1538 KEY_AUTO_FOCUS_ONCE=1539
KEY_LENS_RESET=1616 KEY_ZOOM_OUT=1570 KEY_ZOOM_IN=1569 KEY_FOCUS_NEAR=1553
KEY_FOCUS_FAR=1554 KEY_DIGITAL_ZOOM=1584 KEY_MZOOM_SPEED=1571
KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV=8104 KEY_MIXSTREAM_DISTANCE=8100
KEY_MIXSTREAM_DISTANCE_Y_OFFSET=8101 KEY_MIXSTREAM_DISTANCE_WIDTH_OFFSET=8102
KEY_MIXSTREAM_DISTANCE_HEIGHT_OFFSET=8103 KEY_MIXSTREAM_TYPE=8105 KEY_SCHEME_MODE=8000
KEY_SCHEME_START_HOUR=8001 KEY_SCHEME_START_MIN=8002 KEY_SCHEME_END_HOUR=8003
KEY_SCHEME_END_MIN=8004 KEY_EMPTY1=10 KEY_EMPTY2=11 KEY_EMPTY3=13 KEY_MF_POSITION=1552
KEY_MZ_POSITION=1568 KEY_CAP_OFF_ADJ_DIRECTION=2432 KEY_CAP_OFF_ADJ_STEP=2433
KEY_CAP_OFF_ADJ_H_MIN=2434 KEY_CAP_OFF_ADJ_H_MAX=2435 KEY_CAP_OFF_ADJ_H_CUR=2436
KEY_CAP_OFF_ADJ_V_MIN=2437 KEY_CAP_OFF_ADJ_V_MAX=2438 KEY_CAP_OFF_ADJ_V_CUR=2439
KEY_SENSOR_FPS=2497 KEY_FREEZE=2512 KEY_GAMMA=2528 KEY_DN_AF_MODE=2560
KEY_NONE_COLOR_MODE=8201 KEY_DVE_MODE=8202 KEY_AUTO_TIME=8203 KEY_AUTO_TEMPR=8209
KEY_CONTROL_FFC_MODE=8204 KEY_IMAGES_ADJUST=8205 KEY_IMAGES_REGULATE=8206
KEY_FOCUS_SPEED_LEVEL=8207 KEY_DVE_TYPE=8208 KEY_SHUTTER_ADJUST=8211
KEY_BACKGROUND_ADJUST=8212 KEY_TEMPERATURE_STRIP_SWITCH=8217
IA_CMD_UI_SHUTTER_RESET=8231 KEY_PANO_STITCH_DIST=9000 KEY_PANO_SAVE=9001
KEY_PANO_RESET=9002 KEY_PANO_PREVIEW=9003 KEY_PANO_ADJUST_EN=9004 KEY_PANO_ID=9005
KEY_PANO_ADJUST_EN_1=9101 KEY_PANO_YAW_1=9102 KEY_PANO_PITCH_1=9103 KEY_PANO_ROLL_1=9104
KEY_PANO_OFFSETX_1=9105 KEY_PANO_OFFSETY_1=9106 KEY_PANO_ADJUST_EN_2=9201
KEY_PANO_YAW_2=9202 KEY_PANO_PITCH_2=9203 KEY_PANO_ROLL_2=9204 KEY_PANO_OFFSETX_2=9205
KEY_PANO_OFFSETY_2=9206 KEY_PANO_ADJUST_EN_3=9301 KEY_PANO_YAW_3=9302
KEY_PANO_PITCH_3=9303 KEY_PANO_ROLL_3=9304 KEY_PANO_OFFSETX_3=9305
KEY_PANO_OFFSETY_3=9306 KEY_PANO_ADJUST_EN_4=9401 KEY_PANO_YAW_4=9402
KEY_PANO_PITCH_4=9403 KEY_PANO_ROLL_4=9404 KEY_PANO_OFFSETX_4=9405
KEY_PANO_OFFSETY_4=9406 KEY_IR_MODE_INTELL=168 KEY_WHITE_MODE_INTELL=175
KEY_IR_MANUAL_STRG_NEAR_INTELL=200 KEY_WHITE_MANUAL_STRG_INTELL=203 KEY_LIGHT_TYPE=224
KEY_LDC_SWITCH=2048 KEY_LDC_STRG=2064 KEY_WB_RG=772 KEY_WB_BG=773)";

// Handlers by runs of rows ("" = no handler).
struct HandlerRun {
    std::size_t first;
    std::size_t last;
    const char* handler;
};
// clang-format off
const HandlerRun HANDLER_RUNS[] = {
    {0, 19, "doIaCmd"}, {20, 21, "doIaCmd_User"}, {22, 48, "doIaCmd"}, {49, 49, "doHwdr"},
    {50, 55, "doIaCmd"}, {56, 56, "doDIS"}, {57, 60, "doIaCmd"}, {61, 64, "test_debugParam"},
    {65, 65, "doMirror"}, {66, 66, "doBeaway"}, {67, 69, "doDNThr"}, {70, 73, "doDNTime"},
    {74, 76, "doIaCmd"}, {77, 82, "doIaCmd_User"}, {83, 84, "doIaCmd"}, {85, 85, "doIoCrtl"},
    {86, 90, "doIaCmd_PanoTuning"}, {91, 98, ""}, {99, 100, "doIaCmd"},
    {101, 101, "doImageAdjust"}, {102, 104, "doIaCmd"}, {105, 105, "doImageAdjust"},
    {106, 107, "doIaCmd"}, {108, 108, "doImageAdjust"}, {109, 109, "doIaCmd_User"},
    {110, 121, "doIaCmd"}, {122, 122, "doIaCmdShutter"}, {123, 123, "doIaCmd_User"},
    {124, 124, "doIaCmd"}, {125, 125, "doIaCmd_User"}, {126, 155, "doIaCmd_PanoTuning"},
    {156, 159, ""}, {160, 164, "doIaCmd"},
};
// clang-format on

// Rows with a handler whose ISP command is not their key; rows without a
// handler send 0; every other row sends its key.
const std::map<u32, u32> OTHER_COMMANDS = {{83, 85},   {17, 83},   {18, 84},
                                           {170, 168}, {171, 169}, {172, 170},
                                           {173, 171}, {174, 172}, {2497, 2464}};

struct ExpectedRow {
    std::string name;
    u32 key;
    u32 cmd;
    std::string handler;
};

std::vector<ExpectedRow> expectedRows() {
    std::vector<ExpectedRow> vecRows;
    std::istringstream objIn(ROW_KEYS);
    std::string strToken;
    while (objIn >> strToken) {
        const std::size_t nEq = strToken.find('=');
        vecRows.push_back({strToken.substr(0, nEq),
                           static_cast<u32>(std::stoul(strToken.substr(nEq + 1))), 0, ""});
    }
    for (const HandlerRun& stRun : HANDLER_RUNS) {
        for (std::size_t i = stRun.first; i <= stRun.last && i < vecRows.size(); ++i) {
            ExpectedRow& stRow = vecRows[i];
            stRow.handler = stRun.handler;
            const auto it = OTHER_COMMANDS.find(stRow.key);
            stRow.cmd =
                stRow.handler.empty() ? 0 : (it != OTHER_COMMANDS.end() ? it->second : stRow.key);
        }
    }
    return vecRows;
}

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

class KeyCmdTableTest : public ControllerTest {
protected:
    const keycmd* built() {
        Access::buildKeyCmdMap(ctl());
        return Access::keyCmdMap(ctl());
    }
};

TEST_F(KeyCmdTableTest, EveryRowMatchesTheDocumentedTable) {
    const std::vector<ExpectedRow> vecRows = expectedRows();
    ASSERT_EQ(vecRows.size(), 165u);
    const keycmd* pTable = built();
    std::map<std::string, int> mapUses;
    for (std::size_t i = 0; i < vecRows.size(); ++i) {
        const ExpectedRow& stWant = vecRows[i];
        SCOPED_TRACE("row " + std::to_string(i) + " " + stWant.name);
        const keycmd& stRow = pTable[i];
        EXPECT_EQ(stRow.key, stWant.key);
        EXPECT_EQ(stRow.ia_cmd, stWant.cmd);
        EXPECT_TRUE(stRow.func == handlerNamed(stWant.handler));
        // The name keeps at most 32 characters; a shorter one is terminated.
        const std::size_t nKept = std::min<std::size_t>(stWant.name.size(), 32);
        EXPECT_EQ(std::string(stRow.key_name, nKept), stWant.name.substr(0, nKept));
        if (stWant.name.size() < 32) {
            EXPECT_EQ(stRow.key_name[stWant.name.size()], '\0');
        }
        const std::string strFunc =
            stWant.handler.empty() ? "NULL" : "&ISensorController::" + stWant.handler;
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
    const keycmd* pTable = built();
    const auto* pSpare = reinterpret_cast<const unsigned char*>(pTable + 165);
    EXPECT_TRUE(
        std::all_of(pSpare, pSpare + 5 * sizeof(keycmd), [](unsigned char c) { return c == 0; }));
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    // A second start-up builds from 165 rows and still fills them all.
    EXPECT_EQ(built()[164].key, 773u);
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
}

TEST_F(KeyCmdTableTest, LookupsCopyTheRow) {
    const keycmd* pTable = built();
    keycmd stRow{};
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 8104, stRow), 85);
    EXPECT_TRUE(stRow.func == &ISensorController::doIoCrtl);
    EXPECT_EQ(std::string(stRow.key_name, 32), "KEY_MIXSTREAM_THERMAL_TO_VISION_");
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 8102, stRow), 88);
    EXPECT_EQ(std::string(stRow.key_name, 32), "KEY_MIXSTREAM_DISTANCE_WIDTH_OFF");
    EXPECT_STREQ(stRow.func_name, "&ISensorController::doIaCmd_PanoTuning");
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 83, stRow), 19);
    EXPECT_STREQ(stRow.key_name, "KEY_IRIS_SIZE");
    EXPECT_EQ(stRow.ia_cmd, 85u);
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 17, stRow), 20);
    EXPECT_EQ(stRow.ia_cmd, 83u);
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 8000, stRow), 91);
    EXPECT_TRUE(stRow.func == nullptr);
    EXPECT_EQ(stRow.ia_cmd, 0u);
    EXPECT_STREQ(stRow.func_name, "NULL");
}

TEST_F(KeyCmdTableTest, UnknownKeyLeavesTheOutputRowAlone) {
    keycmd stRow{};
    stRow.ia_cmd = 77;
    std::strcpy(stRow.key_name, "before");
    EXPECT_EQ(ctl().findFromKeyCmdMap(nullptr, 34, stRow), -1); // no table yet
    const keycmd* pTable = built();
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 12, stRow), -1);
    // The spare rows behind the last one are never searched, not even for key 0.
    EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, 0, stRow), -1);
    EXPECT_EQ(stRow.ia_cmd, 77u);
    EXPECT_STREQ(stRow.key_name, "before");
}

} // namespace
} // namespace sensortest
