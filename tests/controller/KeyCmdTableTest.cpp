// The key-command table: every row against an independent description of it,
// the build step of start-up, and the lookups. The key indexes of the set loop:
// a lookup gives the first position a scan from the front would find, in every
// row, however the row is laid out.
#include "ControllerFixture.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "controller/KeyIndex.h"

namespace sensortest {
namespace {

// Every row in order as NAME=key, or NAME=key>command where the ISP command is
// not the key; "@handler" names the handler of the rows after it (@NULL: none,
// and the command is 0). Names are KEY_NAME unless they start with IA_.
const char* const ROWS = R"(
@doIaCmd _DDE_MANUAL_STRG=8240 BRIGHTNESS=34 SATURATION=2337 CONTRAST=2353 SHARPNESS=2321
METER_AREA=96 EXPOSE_MODE=16 MAX_SHUTTER=49 FIX_SHUTTER=50 MIN_SHUTTER=51 TRAFFIC_LEVEL=52
MIN_SHUTTER_NIGHT=55 MAX_SHUTTER_NIGHT=56 MAX_GAIN_NIGHT=57 MAX_GAIN=65 FIX_GAIN=66 IRIS_SWITCH=80
IRIS_SPEED=81 IRIS_POSITION=82 IRIS_SIZE=83>85 @doIaCmd_User IRIS_UP=17>83 IRIS_DOWN=18>84 @doIaCmd
WB_MODE=768 R_GAIN=770 B_GAIN=771 DN_MODE=144 DELAY=147 IR_SWITCH=160 IR_MODE=161
IR_AUTO_STRG_NEAR=162 IR_MANUAL_STRG_NEAR=163 IR_AUTO_STRG_MEDIUM=164 IR_MANUAL_STRG_MEDIUM=165
IR_AUTO_STRG_FAR=166 IR_MANUAL_STRG_FAR=167 IR_ANTI_OVEREXP=155 WHITE_SWITCH=170>168
WHITE_MODE=171>169 WHITE_MANUAL_STRG=172>170 WHITE_MANUAL_STRG_MEDIUM=173>171
WHITE_MANUAL_STRG_FAR=174>172 2D_NR_SWITCH=2304 2D_NR_MODE=2305 2D_NR_STRG_A=2306 2D_NR_STRG_M=2307
3D_NR_SWITCH=2308 3D_NR_MODE=2309 3D_NR_STRG_A=2312 3D_NR_STRG_M=2313 @doHwdr WDR_MODE=2368 @doIaCmd
WDR_STRG=2369 HLC_SWITCH=112 HLC_STRG=113 BLC_SWITCH=128 BLC_MODE=129 BLC_STRG=130 @doDIS
ANTI_SHAKE_SWITCH=2416 @doIaCmd ANTI_SHAKE_STRG=2417 DEFLG_SWITCH=2400 DEFLG_STRG=2401
IN_OUT_SIDE=176 @test_debugParam TEST_PARAM1=190 TEST_PARAM2=191 TEST_PARAM3=192 TEST_PARAM4=193
@doMirror MIRROR=2384 @doBeaway BEAWAY=2385 @doDNThr DTN_THR=145 NTD_THR=146 DN_SENSITIVITY=154
@doDNTime DTN_H=149 DTN_M=150 NTD_H=151 NTD_M=152 @doIaCmd AUTO_FOCUS_MODE=1536
AUTO_FOCUS_NEAR_LIMIT=1537 AUTO_FOCUS_SENSITIVITY=1538 @doIaCmd_User AUTO_FOCUS_ONCE=1539
LENS_RESET=1616 ZOOM_OUT=1570 ZOOM_IN=1569 FOCUS_NEAR=1553 FOCUS_FAR=1554 @doIaCmd DIGITAL_ZOOM=1584
MZOOM_SPEED=1571 @doIoCrtl MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV=8104 @doIaCmd_PanoTuning
MIXSTREAM_DISTANCE=8100 MIXSTREAM_DISTANCE_Y_OFFSET=8101 MIXSTREAM_DISTANCE_WIDTH_OFFSET=8102
MIXSTREAM_DISTANCE_HEIGHT_OFFSET=8103 MIXSTREAM_TYPE=8105 @NULL SCHEME_MODE=8000
SCHEME_START_HOUR=8001 SCHEME_START_MIN=8002 SCHEME_END_HOUR=8003 SCHEME_END_MIN=8004 EMPTY1=10
EMPTY2=11 EMPTY3=13 @doIaCmd MF_POSITION=1552 MZ_POSITION=1568 @doImageAdjust
CAP_OFF_ADJ_DIRECTION=2432 @doIaCmd CAP_OFF_ADJ_STEP=2433 CAP_OFF_ADJ_H_MIN=2434
CAP_OFF_ADJ_H_MAX=2435 @doImageAdjust CAP_OFF_ADJ_H_CUR=2436 @doIaCmd CAP_OFF_ADJ_V_MIN=2437
CAP_OFF_ADJ_V_MAX=2438 @doImageAdjust CAP_OFF_ADJ_V_CUR=2439 @doIaCmd_User SENSOR_FPS=2497>2464
@doIaCmd FREEZE=2512 GAMMA=2528 DN_AF_MODE=2560 NONE_COLOR_MODE=8201 DVE_MODE=8202 AUTO_TIME=8203
AUTO_TEMPR=8209 CONTROL_FFC_MODE=8204 IMAGES_ADJUST=8205 IMAGES_REGULATE=8206 FOCUS_SPEED_LEVEL=8207
DVE_TYPE=8208 @doIaCmdShutter SHUTTER_ADJUST=8211 @doIaCmd_User BACKGROUND_ADJUST=8212 @doIaCmd
TEMPERATURE_STRIP_SWITCH=8217 @doIaCmd_User IA_CMD_UI_SHUTTER_RESET=8231 @doIaCmd_PanoTuning
PANO_STITCH_DIST=9000 PANO_SAVE=9001 PANO_RESET=9002 PANO_PREVIEW=9003 PANO_ADJUST_EN=9004
PANO_ID=9005 PANO_ADJUST_EN_1=9101 PANO_YAW_1=9102 PANO_PITCH_1=9103 PANO_ROLL_1=9104
PANO_OFFSETX_1=9105 PANO_OFFSETY_1=9106 PANO_ADJUST_EN_2=9201 PANO_YAW_2=9202 PANO_PITCH_2=9203
PANO_ROLL_2=9204 PANO_OFFSETX_2=9205 PANO_OFFSETY_2=9206 PANO_ADJUST_EN_3=9301 PANO_YAW_3=9302
PANO_PITCH_3=9303 PANO_ROLL_3=9304 PANO_OFFSETX_3=9305 PANO_OFFSETY_3=9306 PANO_ADJUST_EN_4=9401
PANO_YAW_4=9402 PANO_PITCH_4=9403 PANO_ROLL_4=9404 PANO_OFFSETX_4=9405 PANO_OFFSETY_4=9406 @NULL
IR_MODE_INTELL=168 WHITE_MODE_INTELL=175 IR_MANUAL_STRG_NEAR_INTELL=200 WHITE_MANUAL_STRG_INTELL=203
@doIaCmd LIGHT_TYPE=224 LDC_SWITCH=2048 LDC_STRG=2064 WB_RG=772 WB_BG=773)";

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

using KeyCmdTableTest = ControllerTest;

// Every row against the description, then the build step of start-up: the spare
// rows zeroed, a second start-up building from 165 rows, and the lookups.
TEST_F(KeyCmdTableTest, EveryRowMatchesTheDocumentedTableAndLookupsCopyTheWholeRow) {
    ASSERT_EQ(Access::keyCmdSum(ctl()), 170u);
    keycmd stRow{};
    Access::buildKeyCmdMap(ctl());
    const auto* pSpare = reinterpret_cast<const unsigned char*>(Access::keyCmdMap(ctl()) + 165);
    EXPECT_TRUE(
        std::all_of(pSpare, pSpare + 5 * sizeof(keycmd), [](unsigned char c) { return c == 0; }));
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    Access::buildKeyCmdMap(ctl());
    EXPECT_EQ(Access::keyCmdSum(ctl()), 165u);
    const keycmd* pTable = Access::keyCmdMap(ctl());
    std::istringstream objIn(ROWS);
    std::string strHandler;
    u32 nRow = 0;
    std::map<u32, int> mapFirst;
    for (std::string strToken; objIn >> strToken;) {
        if (strToken[0] == '@') {
            strHandler = strToken.substr(1);
            continue;
        }
        const std::size_t nEq = strToken.find('='), nGt = strToken.find('>');
        const std::string strName =
            (strToken.rfind("IA_", 0) == 0 ? "" : "KEY_") + strToken.substr(0, nEq);
        const u32 nKey = static_cast<u32>(std::stoul(strToken.substr(nEq + 1)));
        SCOPED_TRACE("row " + std::to_string(nRow) + " " + strName);
        ASSERT_LT(nRow, 165u);
        const keycmd& stWant = pTable[nRow++];
        EXPECT_EQ(stWant.key, nKey);
        EXPECT_EQ(stWant.ia_cmd, strHandler == "NULL"       ? 0
                                 : nGt == std::string::npos ? nKey
                                                            : std::stoul(strToken.substr(nGt + 1)));
        EXPECT_TRUE(stWant.func == HANDLERS.at(strHandler));
        // The name keeps at most 32 characters; a shorter one is terminated.
        const std::size_t nKept = std::min<std::size_t>(strName.size(), 32);
        EXPECT_EQ(std::string(stWant.key_name, nKept), strName.substr(0, nKept));
        EXPECT_TRUE(strName.size() >= 32 || stWant.key_name[strName.size()] == '\0');
        EXPECT_STREQ(stWant.func_name,
                     strHandler == "NULL" ? "NULL" : ("&ISensorController::" + strHandler).c_str());
        // A lookup finds the first row of its key and copies it byte for byte (no padding).
        static_assert(sizeof(keycmd) == 8 + sizeof(keycmd_handler) + 32 + 64);
        const int nFirst = mapFirst.emplace(nKey, nRow - 1).first->second;
        EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, nKey, stRow), nFirst);
        EXPECT_EQ(std::memcmp(&stRow, &pTable[nFirst], sizeof(keycmd)), 0);
    }
    EXPECT_EQ(nRow, 165u);
    // Unknown keys; the spare rows behind the last one are never searched, not even for key 0.
    stRow.ia_cmd = 77;
    std::strcpy(stRow.key_name, "before");
    for (u32 nKey : {12u, 0u}) {
        EXPECT_EQ(ctl().findFromKeyCmdMap(pTable, nKey, stRow), -1) << nKey;
    }
    EXPECT_EQ(ctl().findFromKeyCmdMap(nullptr, 34, stRow), -1); // no table
    EXPECT_EQ(stRow.ia_cmd, 77u);
    EXPECT_STREQ(stRow.key_name, "before");
}

// Many keys, so that probes run into each other, and a repeated key.
TEST(KeyIndexTest, FindsTheFirstPositionOfEveryKeyAndNothingElse) {
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
    std::vector<KeyVal> vecFactory = {{34, 1}, {7, 2}, {9, 3}, {7, 4}}, vecSame = vecFactory;
    std::vector<KeyVal> vecOther = {{9, 5}, {7, 6}, {34, 7}, {34, 8}};
    KeyVal* apRows[] = {vecSame.data(), vecOther.data(), vecFactory.data()};
    SchemeSetIndex objIndex;
    objIndex.build(apRows, 3, 4, 2);
    // Row, key and the position found.
    for (const auto& [nRow, nKey, nPos] :
         {std::make_tuple(0u, 34u, 0), std::make_tuple(0u, 7u, 1), std::make_tuple(0u, 9u, 2),
          std::make_tuple(0u, 5u, -1), std::make_tuple(1u, 34u, 2), std::make_tuple(1u, 7u, 1),
          std::make_tuple(1u, 9u, 0), std::make_tuple(1u, 5u, -1), std::make_tuple(2u, 7u, 1)}) {
        EXPECT_EQ(objIndex.find(nRow, apRows[nRow], 4, nKey), nPos) << nRow << ':' << nKey;
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
