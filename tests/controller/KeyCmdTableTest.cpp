// The key-command table: every row against an independent description of it,
// the build step of start-up, and the lookups. The key indexes of the set loop:
// a lookup gives the first position a scan from the front would find, in every
// row, however the row is laid out.
#include "ControllerFixture.h"

#include <algorithm>
#include <map>

#include "controller/KeyIndex.h"

namespace sensortest {
namespace {

// Every row in order as NAME=key, or NAME=key>command where the ISP command is
// not the key; "@handler" names the handler of the rows after it (@NULL: none,
// and the command is 0).
const char* const ROWS = R"(
@doIaCmd KEY__DDE_MANUAL_STRG=8240 KEY_BRIGHTNESS=34 KEY_SATURATION=2337 KEY_CONTRAST=2353
KEY_SHARPNESS=2321 KEY_METER_AREA=96 KEY_EXPOSE_MODE=16 KEY_MAX_SHUTTER=49 KEY_FIX_SHUTTER=50
KEY_MIN_SHUTTER=51 KEY_TRAFFIC_LEVEL=52 KEY_MIN_SHUTTER_NIGHT=55 KEY_MAX_SHUTTER_NIGHT=56
KEY_MAX_GAIN_NIGHT=57 KEY_MAX_GAIN=65 KEY_FIX_GAIN=66 KEY_IRIS_SWITCH=80 KEY_IRIS_SPEED=81
KEY_IRIS_POSITION=82 KEY_IRIS_SIZE=83>85 @doIaCmd_User KEY_IRIS_UP=17>83 KEY_IRIS_DOWN=18>84
@doIaCmd KEY_WB_MODE=768 KEY_R_GAIN=770 KEY_B_GAIN=771 KEY_DN_MODE=144 KEY_DELAY=147
KEY_IR_SWITCH=160 KEY_IR_MODE=161 KEY_IR_AUTO_STRG_NEAR=162 KEY_IR_MANUAL_STRG_NEAR=163
KEY_IR_AUTO_STRG_MEDIUM=164 KEY_IR_MANUAL_STRG_MEDIUM=165 KEY_IR_AUTO_STRG_FAR=166
KEY_IR_MANUAL_STRG_FAR=167 KEY_IR_ANTI_OVEREXP=155 KEY_WHITE_SWITCH=170>168 KEY_WHITE_MODE=171>169
KEY_WHITE_MANUAL_STRG=172>170 KEY_WHITE_MANUAL_STRG_MEDIUM=173>171 KEY_WHITE_MANUAL_STRG_FAR=174>172
KEY_2D_NR_SWITCH=2304 KEY_2D_NR_MODE=2305 KEY_2D_NR_STRG_A=2306 KEY_2D_NR_STRG_M=2307
KEY_3D_NR_SWITCH=2308 KEY_3D_NR_MODE=2309 KEY_3D_NR_STRG_A=2312 KEY_3D_NR_STRG_M=2313 @doHwdr
KEY_WDR_MODE=2368 @doIaCmd KEY_WDR_STRG=2369 KEY_HLC_SWITCH=112 KEY_HLC_STRG=113 KEY_BLC_SWITCH=128
KEY_BLC_MODE=129 KEY_BLC_STRG=130 @doDIS KEY_ANTI_SHAKE_SWITCH=2416 @doIaCmd
KEY_ANTI_SHAKE_STRG=2417 KEY_DEFLG_SWITCH=2400 KEY_DEFLG_STRG=2401 KEY_IN_OUT_SIDE=176
@test_debugParam KEY_TEST_PARAM1=190 KEY_TEST_PARAM2=191 KEY_TEST_PARAM3=192 KEY_TEST_PARAM4=193
@doMirror KEY_MIRROR=2384 @doBeaway KEY_BEAWAY=2385 @doDNThr KEY_DTN_THR=145 KEY_NTD_THR=146
KEY_DN_SENSITIVITY=154 @doDNTime KEY_DTN_H=149 KEY_DTN_M=150 KEY_NTD_H=151 KEY_NTD_M=152 @doIaCmd
KEY_AUTO_FOCUS_MODE=1536 KEY_AUTO_FOCUS_NEAR_LIMIT=1537 KEY_AUTO_FOCUS_SENSITIVITY=1538
@doIaCmd_User KEY_AUTO_FOCUS_ONCE=1539 KEY_LENS_RESET=1616 KEY_ZOOM_OUT=1570 KEY_ZOOM_IN=1569
KEY_FOCUS_NEAR=1553 KEY_FOCUS_FAR=1554 @doIaCmd KEY_DIGITAL_ZOOM=1584 KEY_MZOOM_SPEED=1571 @doIoCrtl
KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV=8104 @doIaCmd_PanoTuning KEY_MIXSTREAM_DISTANCE=8100
KEY_MIXSTREAM_DISTANCE_Y_OFFSET=8101 KEY_MIXSTREAM_DISTANCE_WIDTH_OFFSET=8102
KEY_MIXSTREAM_DISTANCE_HEIGHT_OFFSET=8103 KEY_MIXSTREAM_TYPE=8105 @NULL KEY_SCHEME_MODE=8000
KEY_SCHEME_START_HOUR=8001 KEY_SCHEME_START_MIN=8002 KEY_SCHEME_END_HOUR=8003
KEY_SCHEME_END_MIN=8004 KEY_EMPTY1=10 KEY_EMPTY2=11 KEY_EMPTY3=13 @doIaCmd KEY_MF_POSITION=1552
KEY_MZ_POSITION=1568 @doImageAdjust KEY_CAP_OFF_ADJ_DIRECTION=2432 @doIaCmd
KEY_CAP_OFF_ADJ_STEP=2433 KEY_CAP_OFF_ADJ_H_MIN=2434 KEY_CAP_OFF_ADJ_H_MAX=2435 @doImageAdjust
KEY_CAP_OFF_ADJ_H_CUR=2436 @doIaCmd KEY_CAP_OFF_ADJ_V_MIN=2437 KEY_CAP_OFF_ADJ_V_MAX=2438
@doImageAdjust KEY_CAP_OFF_ADJ_V_CUR=2439 @doIaCmd_User KEY_SENSOR_FPS=2497>2464 @doIaCmd
KEY_FREEZE=2512 KEY_GAMMA=2528 KEY_DN_AF_MODE=2560 KEY_NONE_COLOR_MODE=8201 KEY_DVE_MODE=8202
KEY_AUTO_TIME=8203 KEY_AUTO_TEMPR=8209 KEY_CONTROL_FFC_MODE=8204 KEY_IMAGES_ADJUST=8205
KEY_IMAGES_REGULATE=8206 KEY_FOCUS_SPEED_LEVEL=8207 KEY_DVE_TYPE=8208 @doIaCmdShutter
KEY_SHUTTER_ADJUST=8211 @doIaCmd_User KEY_BACKGROUND_ADJUST=8212 @doIaCmd
KEY_TEMPERATURE_STRIP_SWITCH=8217 @doIaCmd_User IA_CMD_UI_SHUTTER_RESET=8231 @doIaCmd_PanoTuning
KEY_PANO_STITCH_DIST=9000 KEY_PANO_SAVE=9001 KEY_PANO_RESET=9002 KEY_PANO_PREVIEW=9003
KEY_PANO_ADJUST_EN=9004 KEY_PANO_ID=9005 KEY_PANO_ADJUST_EN_1=9101 KEY_PANO_YAW_1=9102
KEY_PANO_PITCH_1=9103 KEY_PANO_ROLL_1=9104 KEY_PANO_OFFSETX_1=9105 KEY_PANO_OFFSETY_1=9106
KEY_PANO_ADJUST_EN_2=9201 KEY_PANO_YAW_2=9202 KEY_PANO_PITCH_2=9203 KEY_PANO_ROLL_2=9204
KEY_PANO_OFFSETX_2=9205 KEY_PANO_OFFSETY_2=9206 KEY_PANO_ADJUST_EN_3=9301 KEY_PANO_YAW_3=9302
KEY_PANO_PITCH_3=9303 KEY_PANO_ROLL_3=9304 KEY_PANO_OFFSETX_3=9305 KEY_PANO_OFFSETY_3=9306
KEY_PANO_ADJUST_EN_4=9401 KEY_PANO_YAW_4=9402 KEY_PANO_PITCH_4=9403 KEY_PANO_ROLL_4=9404
KEY_PANO_OFFSETX_4=9405 KEY_PANO_OFFSETY_4=9406 @NULL KEY_IR_MODE_INTELL=168
KEY_WHITE_MODE_INTELL=175 KEY_IR_MANUAL_STRG_NEAR_INTELL=200 KEY_WHITE_MANUAL_STRG_INTELL=203
@doIaCmd KEY_LIGHT_TYPE=224 KEY_LDC_SWITCH=2048 KEY_LDC_STRG=2064 KEY_WB_RG=772 KEY_WB_BG=773)";

#define HANDLER(name)                                                                              \
    { #name, &ISensorController::name }
const std::map<std::string, keycmd_handler> HANDLERS = {
    {"NULL", nullptr},        HANDLER(doIaCmd),
    HANDLER(doIaCmd_User),    HANDLER(doIaCmd_PanoTuning),
    HANDLER(doDNThr),         HANDLER(doDNTime),
    HANDLER(doMirror),        HANDLER(doBeaway),
    HANDLER(doHwdr),          HANDLER(doDIS),
    HANDLER(test_debugParam), HANDLER(doImageAdjust),
    HANDLER(doIoCrtl),        HANDLER(doIaCmdShutter)};
#undef HANDLER

class KeyCmdTableTest : public ControllerTest {
protected:
    const keycmd* built() {
        Access::buildKeyCmdMap(ctl());
        return Access::keyCmdMap(ctl());
    }
};

TEST_F(KeyCmdTableTest, EveryRowMatchesTheDocumentedTable) {
    const keycmd* pTable = built();
    std::istringstream objIn(ROWS);
    std::string strHandler;
    std::size_t nRow = 0;
    for (std::string strToken; objIn >> strToken;) {
        if (strToken[0] == '@') {
            strHandler = strToken.substr(1);
            continue;
        }
        const std::size_t nEq = strToken.find('=');
        const std::size_t nGt = strToken.find('>');
        const std::string strName = strToken.substr(0, nEq);
        const u32 nKey = static_cast<u32>(std::stoul(strToken.substr(nEq + 1)));
        const u32 nCmd = strHandler == "NULL" ? 0
                         : nGt == std::string::npos
                             ? nKey
                             : static_cast<u32>(std::stoul(strToken.substr(nGt + 1)));
        SCOPED_TRACE("row " + std::to_string(nRow) + " " + strName);
        ASSERT_LT(nRow, 165u);
        const keycmd& stRow = pTable[nRow++];
        EXPECT_EQ(stRow.key, nKey);
        EXPECT_EQ(stRow.ia_cmd, nCmd);
        EXPECT_TRUE(stRow.func == HANDLERS.at(strHandler));
        // The name keeps at most 32 characters; a shorter one is terminated.
        const std::size_t nKept = std::min<std::size_t>(strName.size(), 32);
        EXPECT_EQ(std::string(stRow.key_name, nKept), strName.substr(0, nKept));
        if (strName.size() < 32) {
            EXPECT_EQ(stRow.key_name[strName.size()], '\0');
        }
        EXPECT_STREQ(stRow.func_name,
                     strHandler == "NULL" ? "NULL" : ("&ISensorController::" + strHandler).c_str());
    }
    EXPECT_EQ(nRow, 165u);
}

TEST_F(KeyCmdTableTest, BuildZeroesTheSpareRowsAndLookupsCopyTheRowOrLeaveTheOutputAlone) {
    ASSERT_EQ(Access::keyCmdSum(ctl()), 170u);
    keycmd stRow{};
    stRow.ia_cmd = 77;
    std::strcpy(stRow.key_name, "before");
    EXPECT_EQ(ctl().findFromKeyCmdMap(nullptr, 34, stRow), -1); // no table yet
    const keycmd* pTable = built();
    const auto* pSpare = reinterpret_cast<const unsigned char*>(pTable + 165);
    EXPECT_TRUE(
        std::all_of(pSpare, pSpare + 5 * sizeof(keycmd), [](unsigned char c) { return c == 0; }));
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    // A second start-up builds from 165 rows and still fills them all.
    pTable = built();
    EXPECT_EQ(pTable[164].key, 773u);
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    // Unknown keys; the spare rows behind the last one are never searched, not even for key 0.
    for (u32 nKey : {12u, 0u}) {
        EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, nKey, stRow), -1) << nKey;
    }
    EXPECT_EQ(stRow.ia_cmd, 77u);
    EXPECT_STREQ(stRow.key_name, "before");
    const std::pair<u32, int> aFound[] = {{8240, 0},  {83, 19},   {17, 20},  {8104, 85},
                                          {8102, 88}, {8000, 91}, {773, 164}};
    for (const auto& [nKey, nIndex] : aFound) {
        EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, nKey, stRow), nIndex) << nKey;
        // The whole row, byte for byte (a row has no padding).
        static_assert(sizeof(keycmd) == 8 + sizeof(keycmd_handler) + 32 + 64);
        EXPECT_EQ(std::memcmp(&stRow, &pTable[nIndex], sizeof(keycmd)), 0) << nKey;
    }
}

TEST(KeyIndexTest, FindsTheFirstPositionOfEveryKeyAndNothingElse) {
    // Many keys, so that probes run into each other; a repeated key.
    std::vector<u32> vecKeys;
    for (u32 i = 0; i < 1000; ++i) {
        vecKeys.push_back(i * 4096 + 34);
    }
    vecKeys.push_back(34);
    KeyIndex objIndex;
    EXPECT_EQ(objIndex.find(34), -1) << "empty";
    objIndex.build(static_cast<u32>(vecKeys.size()), [&](u32 i) { return vecKeys[i]; });
    for (u32 i = 0; i < 1000; ++i) {
        ASSERT_EQ(objIndex.find(vecKeys[i]), static_cast<int>(i));
    }
    for (const u32 nMissing : {0u, 35u, 4096u, 0xFFFFFFFFu}) {
        EXPECT_EQ(objIndex.find(nMissing), -1) << nMissing;
    }
}

TEST(KeyIndexTest, SchemeSetsInAnotherOrderOrChangedAreStillFound) {
    std::vector<KeyVal> vecFactory = {{34, 1}, {7, 2}, {9, 3}, {7, 4}};
    std::vector<KeyVal> vecSame = vecFactory;
    std::vector<KeyVal> vecOther = {{9, 5}, {7, 6}, {34, 7}, {34, 8}};
    KeyVal* apRows[] = {vecSame.data(), vecOther.data(), vecFactory.data()};
    SchemeSetIndex objIndex;
    objIndex.build(apRows, 3, 4, 2);
    struct Case {
        u32 row, key;
        int pos;
    };
    const Case aCases[] = {{0, 34, 0}, {0, 7, 1}, {0, 9, 2},  {0, 5, -1}, {1, 34, 2},
                           {1, 7, 1},  {1, 9, 0}, {1, 5, -1}, {2, 7, 1}};
    for (const Case& c : aCases) {
        EXPECT_EQ(objIndex.find(c.row, apRows[c.row], 4, c.key), c.pos) << c.row << ':' << c.key;
    }
    // A row whose key moved after the index was built is scanned.
    vecSame[0].key = 9;
    vecSame[2].key = 34;
    EXPECT_EQ(objIndex.find(0, apRows[0], 4, 34), 2);
    // Another length than indexed: scanned.
    EXPECT_EQ(objIndex.find(1, apRows[1], 3, 34), 2);
    objIndex.clear();
    EXPECT_EQ(objIndex.find(2, apRows[2], 4, 9), 2);
}

} // namespace
} // namespace sensortest
