// The key-command table and the start-up step that builds the controller's
// copy of it.
#include "controller/KeyCmdTable.h"

#include "common/SensorKeys.h"
#include "controller/ISensorController.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

// A row whose ISP command differs from its key, a row whose command is its
// key, and a row without a handler. The names are the spelled constants, so
// a name can never drift from the key it labels.
// clang-format off
#define KEYCMD_ROW(key, cmd, handler) \
    KeyCmdRow{key, cmd, &ISensorController::handler, #key, "&ISensorController::" #handler}
#define KEYCMD_SAME(key, handler) KEYCMD_ROW(key, key, handler)
#define KEYCMD_NONE(key) KeyCmdRow{key, 0, nullptr, #key, "NULL"}

constexpr std::array<KeyCmdRow, KEY_CMD_TABLE_ROWS> KEY_CMD_ROWS = {{
    KEYCMD_SAME(KEY__DDE_MANUAL_STRG, doIaCmd),
    KEYCMD_SAME(KEY_BRIGHTNESS, doIaCmd),
    KEYCMD_SAME(KEY_SATURATION, doIaCmd),
    KEYCMD_SAME(KEY_CONTRAST, doIaCmd),
    KEYCMD_SAME(KEY_SHARPNESS, doIaCmd),
    KEYCMD_SAME(KEY_METER_AREA, doIaCmd),
    KEYCMD_SAME(KEY_EXPOSE_MODE, doIaCmd),
    KEYCMD_SAME(KEY_MAX_SHUTTER, doIaCmd),
    KEYCMD_SAME(KEY_FIX_SHUTTER, doIaCmd),
    KEYCMD_SAME(KEY_MIN_SHUTTER, doIaCmd),
    KEYCMD_SAME(KEY_TRAFFIC_LEVEL, doIaCmd),
    KEYCMD_SAME(KEY_MIN_SHUTTER_NIGHT, doIaCmd),
    KEYCMD_SAME(KEY_MAX_SHUTTER_NIGHT, doIaCmd),
    KEYCMD_SAME(KEY_MAX_GAIN_NIGHT, doIaCmd),
    KEYCMD_SAME(KEY_MAX_GAIN, doIaCmd),
    KEYCMD_SAME(KEY_FIX_GAIN, doIaCmd),
    KEYCMD_SAME(KEY_IRIS_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_IRIS_SPEED, doIaCmd),
    KEYCMD_SAME(KEY_IRIS_POSITION, doIaCmd),
    KEYCMD_ROW(KEY_IRIS_SIZE, 85, doIaCmd),
    KEYCMD_ROW(KEY_IRIS_UP, 83, doIaCmd_User),
    KEYCMD_ROW(KEY_IRIS_DOWN, 84, doIaCmd_User),
    KEYCMD_SAME(KEY_WB_MODE, doIaCmd),
    KEYCMD_SAME(KEY_R_GAIN, doIaCmd),
    KEYCMD_SAME(KEY_B_GAIN, doIaCmd),
    KEYCMD_SAME(KEY_DN_MODE, doIaCmd),
    KEYCMD_SAME(KEY_DELAY, doIaCmd),
    KEYCMD_SAME(KEY_IR_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_IR_MODE, doIaCmd),
    KEYCMD_SAME(KEY_IR_AUTO_STRG_NEAR, doIaCmd),
    KEYCMD_SAME(KEY_IR_MANUAL_STRG_NEAR, doIaCmd),
    KEYCMD_SAME(KEY_IR_AUTO_STRG_MEDIUM, doIaCmd),
    KEYCMD_SAME(KEY_IR_MANUAL_STRG_MEDIUM, doIaCmd),
    KEYCMD_SAME(KEY_IR_AUTO_STRG_FAR, doIaCmd),
    KEYCMD_SAME(KEY_IR_MANUAL_STRG_FAR, doIaCmd),
    KEYCMD_SAME(KEY_IR_ANTI_OVEREXP, doIaCmd),
    KEYCMD_ROW(KEY_WHITE_SWITCH, 168, doIaCmd),
    KEYCMD_ROW(KEY_WHITE_MODE, 169, doIaCmd),
    KEYCMD_ROW(KEY_WHITE_MANUAL_STRG, 170, doIaCmd),
    KEYCMD_ROW(KEY_WHITE_MANUAL_STRG_MEDIUM, 171, doIaCmd),
    KEYCMD_ROW(KEY_WHITE_MANUAL_STRG_FAR, 172, doIaCmd),
    KEYCMD_SAME(KEY_2D_NR_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_2D_NR_MODE, doIaCmd),
    KEYCMD_SAME(KEY_2D_NR_STRG_A, doIaCmd),
    KEYCMD_SAME(KEY_2D_NR_STRG_M, doIaCmd),
    KEYCMD_SAME(KEY_3D_NR_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_3D_NR_MODE, doIaCmd),
    KEYCMD_SAME(KEY_3D_NR_STRG_A, doIaCmd),
    KEYCMD_SAME(KEY_3D_NR_STRG_M, doIaCmd),
    KEYCMD_SAME(KEY_WDR_MODE, doHwdr),
    KEYCMD_SAME(KEY_WDR_STRG, doIaCmd),
    KEYCMD_SAME(KEY_HLC_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_HLC_STRG, doIaCmd),
    KEYCMD_SAME(KEY_BLC_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_BLC_MODE, doIaCmd),
    KEYCMD_SAME(KEY_BLC_STRG, doIaCmd),
    KEYCMD_SAME(KEY_ANTI_SHAKE_SWITCH, doDIS),
    KEYCMD_SAME(KEY_ANTI_SHAKE_STRG, doIaCmd),
    KEYCMD_SAME(KEY_DEFLG_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_DEFLG_STRG, doIaCmd),
    KEYCMD_SAME(KEY_IN_OUT_SIDE, doIaCmd),
    KEYCMD_SAME(KEY_TEST_PARAM1, test_debugParam),
    KEYCMD_SAME(KEY_TEST_PARAM2, test_debugParam),
    KEYCMD_SAME(KEY_TEST_PARAM3, test_debugParam),
    KEYCMD_SAME(KEY_TEST_PARAM4, test_debugParam),
    KEYCMD_SAME(KEY_MIRROR, doMirror),
    KEYCMD_SAME(KEY_BEAWAY, doBeaway),
    KEYCMD_SAME(KEY_DTN_THR, doDNThr),
    KEYCMD_SAME(KEY_NTD_THR, doDNThr),
    KEYCMD_SAME(KEY_DN_SENSITIVITY, doDNThr),
    KEYCMD_SAME(KEY_DTN_H, doDNTime),
    KEYCMD_SAME(KEY_DTN_M, doDNTime),
    KEYCMD_SAME(KEY_NTD_H, doDNTime),
    KEYCMD_SAME(KEY_NTD_M, doDNTime),
    KEYCMD_SAME(KEY_AUTO_FOCUS_MODE, doIaCmd),
    KEYCMD_SAME(KEY_AUTO_FOCUS_NEAR_LIMIT, doIaCmd),
    KEYCMD_SAME(KEY_AUTO_FOCUS_SENSITIVITY, doIaCmd),
    KEYCMD_SAME(KEY_AUTO_FOCUS_ONCE, doIaCmd_User),
    KEYCMD_SAME(KEY_LENS_RESET, doIaCmd_User),
    KEYCMD_SAME(KEY_ZOOM_OUT, doIaCmd_User),
    KEYCMD_SAME(KEY_ZOOM_IN, doIaCmd_User),
    KEYCMD_SAME(KEY_FOCUS_NEAR, doIaCmd_User),
    KEYCMD_SAME(KEY_FOCUS_FAR, doIaCmd_User),
    KEYCMD_SAME(KEY_DIGITAL_ZOOM, doIaCmd),
    KEYCMD_SAME(KEY_MZOOM_SPEED, doIaCmd),
    KEYCMD_SAME(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV, doIoCrtl),
    KEYCMD_SAME(KEY_MIXSTREAM_DISTANCE, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_MIXSTREAM_DISTANCE_Y_OFFSET, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_MIXSTREAM_DISTANCE_WIDTH_OFFSET, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_MIXSTREAM_DISTANCE_HEIGHT_OFFSET, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_MIXSTREAM_TYPE, doIaCmd_PanoTuning),
    KEYCMD_NONE(KEY_SCHEME_MODE),
    KEYCMD_NONE(KEY_SCHEME_START_HOUR),
    KEYCMD_NONE(KEY_SCHEME_START_MIN),
    KEYCMD_NONE(KEY_SCHEME_END_HOUR),
    KEYCMD_NONE(KEY_SCHEME_END_MIN),
    KEYCMD_NONE(KEY_EMPTY1),
    KEYCMD_NONE(KEY_EMPTY2),
    KEYCMD_NONE(KEY_EMPTY3),
    KEYCMD_SAME(KEY_MF_POSITION, doIaCmd),
    KEYCMD_SAME(KEY_MZ_POSITION, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_DIRECTION, doImageAdjust),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_STEP, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_H_MIN, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_H_MAX, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_H_CUR, doImageAdjust),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_V_MIN, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_V_MAX, doIaCmd),
    KEYCMD_SAME(KEY_CAP_OFF_ADJ_V_CUR, doImageAdjust),
    KEYCMD_ROW(KEY_SENSOR_FPS, 2464, doIaCmd_User),
    KEYCMD_SAME(KEY_FREEZE, doIaCmd),
    KEYCMD_SAME(KEY_GAMMA, doIaCmd),
    KEYCMD_SAME(KEY_DN_AF_MODE, doIaCmd),
    KEYCMD_SAME(KEY_NONE_COLOR_MODE, doIaCmd),
    KEYCMD_SAME(KEY_DVE_MODE, doIaCmd),
    KEYCMD_SAME(KEY_AUTO_TIME, doIaCmd),
    KEYCMD_SAME(KEY_AUTO_TEMPR, doIaCmd),
    KEYCMD_SAME(KEY_CONTROL_FFC_MODE, doIaCmd),
    KEYCMD_SAME(KEY_IMAGES_ADJUST, doIaCmd),
    KEYCMD_SAME(KEY_IMAGES_REGULATE, doIaCmd),
    KEYCMD_SAME(KEY_FOCUS_SPEED_LEVEL, doIaCmd),
    KEYCMD_SAME(KEY_DVE_TYPE, doIaCmd),
    KEYCMD_SAME(KEY_SHUTTER_ADJUST, doIaCmdShutter),
    KEYCMD_SAME(KEY_BACKGROUND_ADJUST, doIaCmd_User),
    KEYCMD_SAME(KEY_TEMPERATURE_STRIP_SWITCH, doIaCmd),
    KEYCMD_SAME(IA_CMD_UI_SHUTTER_RESET, doIaCmd_User),
    KEYCMD_SAME(KEY_PANO_STITCH_DIST, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_SAVE, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_RESET, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_PREVIEW, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ADJUST_EN, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ID, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ADJUST_EN_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_YAW_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_PITCH_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ROLL_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETX_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETY_1, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ADJUST_EN_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_YAW_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_PITCH_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ROLL_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETX_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETY_2, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ADJUST_EN_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_YAW_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_PITCH_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ROLL_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETX_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETY_3, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ADJUST_EN_4, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_YAW_4, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_PITCH_4, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_ROLL_4, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETX_4, doIaCmd_PanoTuning),
    KEYCMD_SAME(KEY_PANO_OFFSETY_4, doIaCmd_PanoTuning),
    KEYCMD_NONE(KEY_IR_MODE_INTELL),
    KEYCMD_NONE(KEY_WHITE_MODE_INTELL),
    KEYCMD_NONE(KEY_IR_MANUAL_STRG_NEAR_INTELL),
    KEYCMD_NONE(KEY_WHITE_MANUAL_STRG_INTELL),
    KEYCMD_SAME(KEY_LIGHT_TYPE, doIaCmd),
    KEYCMD_SAME(KEY_LDC_SWITCH, doIaCmd),
    KEYCMD_SAME(KEY_LDC_STRG, doIaCmd),
    KEYCMD_SAME(KEY_WB_RG, doIaCmd),
    KEYCMD_SAME(KEY_WB_BG, doIaCmd),
}};
// clang-format on

#undef KEYCMD_ROW
#undef KEYCMD_SAME
#undef KEYCMD_NONE

constexpr bool allKeysDistinct() {
    for (std::size_t i = 0; i < KEY_CMD_ROWS.size(); ++i) {
        for (std::size_t j = i + 1; j < KEY_CMD_ROWS.size(); ++j) {
            if (KEY_CMD_ROWS[i].key == KEY_CMD_ROWS[j].key) {
                return false;
            }
        }
    }
    return true;
}
static_assert(allKeysDistinct(), "a key occurs once in the table");

// Told by the name: a sanitizer build cannot compare member pointers at
// compile time.
constexpr bool hasHandler(const KeyCmdRow& p_stRow) {
    return std::string_view(p_stRow.func_name) != "NULL";
}

constexpr bool allHandlerCommandsDistinct() {
    for (std::size_t i = 0; i < KEY_CMD_ROWS.size(); ++i) {
        for (std::size_t j = i + 1; j < KEY_CMD_ROWS.size(); ++j) {
            if (hasHandler(KEY_CMD_ROWS[i]) && hasHandler(KEY_CMD_ROWS[j]) &&
                KEY_CMD_ROWS[i].ia_cmd == KEY_CMD_ROWS[j].ia_cmd) {
                return false;
            }
        }
    }
    return true;
}
static_assert(allHandlerCommandsDistinct(), "rows with a handler send distinct ISP commands");

constexpr bool allFuncNamesFit() {
    for (const KeyCmdRow& stRow : KEY_CMD_ROWS) {
        if (std::string_view(stRow.func_name).size() >= KEYCMD_FUNC_NAME_LEN) {
            return false;
        }
    }
    return true;
}
static_assert(allFuncNamesFit(), "func_name is always terminated");

// Copies one constant row into a zeroed table row. The key name keeps at most
// KEYCMD_KEY_NAME_LEN characters: a shorter name is terminated by the zeroed
// field, a longer one is cut without a terminator.
void fillRow(keycmd& p_stRow, const KeyCmdRow& p_stSource) {
    p_stRow.key = p_stSource.key;
    p_stRow.ia_cmd = p_stSource.ia_cmd;
    p_stRow.func = p_stSource.func;
    const std::string_view strKeyName(p_stSource.key_name);
    std::memcpy(p_stRow.key_name, strKeyName.data(),
                std::min(strKeyName.size(), KEYCMD_KEY_NAME_LEN));
    const std::string_view strFuncName(p_stSource.func_name);
    std::memcpy(p_stRow.func_name, strFuncName.data(), strFuncName.size());
}

} // namespace

const std::array<KeyCmdRow, KEY_CMD_TABLE_ROWS>& keyCmdRows() {
    return KEY_CMD_ROWS;
}

void ISensorController::initKeyCmdMap() {
    // The table is allocated with the current row count (170 at the first
    // start-up, 165 afterwards), never fewer rows than it fills.
    const std::size_t nCapacity = std::max<std::size_t>(m_nKeyCmdSum, KEY_CMD_ROWS.size());
    m_pKeyCmdMap = std::make_unique<keycmd[]>(nCapacity); // value-initialised: all zero
    for (std::size_t i = 0; i < KEY_CMD_ROWS.size(); ++i) {
        fillRow(m_pKeyCmdMap[i], KEY_CMD_ROWS[i]);
    }
    m_nKeyCmdSum = static_cast<u32>(KEY_CMD_ROWS.size());
    m_objKeyCmdIndex.build(m_nKeyCmdSum, [this](u32 i) { return m_pKeyCmdMap[i].key; });
}
