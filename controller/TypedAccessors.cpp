// Named getters and setters for the parameters the host's other modules use
// often. Each fixes a key (stored through the parameter writer and reader) or
// an ISP command (sent directly, nothing stored).
#define SNS_SOURCE_UNIT "ISensorController"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"
#include "controller/ISensorController.h"

namespace {

constexpr u32 IA_CMD_DN_STATE = 153;
// The ISP commands of the white-light keys 170 and 171.
constexpr u32 IA_CMD_WHITE_SWITCH = 168;
constexpr u32 IA_CMD_WHITE_MODE = 169;
constexpr u32 IA_CMD_EXPOSURE_STRATEGY = 225;
constexpr u32 IA_CMD_IR_LED_INFO = 178;
constexpr u32 IA_CMD_HEAT_STATUS = 1606;
constexpr u32 IA_CMD_TEMPERATURE = 1607;
constexpr u32 LIGHT_TYPE_MAX = 3;
constexpr int SWITCH_ON = 1;

} // namespace

// Stored reads.
bool ISensorController::getDNMode(int& v) {
    sensordiag::requestMarkerCheck();
    getParameter(KEY_DN_MODE, v);
    return true;
}
bool ISensorController::getWDRSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_WDR_MODE, v);
}
bool ISensorController::getWDRStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_WDR_STRG, v);
}
bool ISensorController::getHLCSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_HLC_SWITCH, v);
}
bool ISensorController::getHLCStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_HLC_STRG, v);
}
bool ISensorController::getBLCSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_BLC_SWITCH, v);
}
bool ISensorController::getBLCStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_BLC_STRG, v);
}
bool ISensorController::getDefogSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_DEFLG_SWITCH, v);
}
bool ISensorController::getDefogStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_DEFLG_STRG, v);
}
bool ISensorController::get2DSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_2D_NR_SWITCH, v);
}
bool ISensorController::get2DMode(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_2D_NR_MODE, v);
}
bool ISensorController::get2DAutoMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_2D_NR_STRG_A, v);
}
bool ISensorController::get2DManualMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_2D_NR_STRG_M, v);
}
bool ISensorController::get3DSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_3D_NR_SWITCH, v);
}
bool ISensorController::get3DMode(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_3D_NR_MODE, v);
}
bool ISensorController::get3DAutoMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_3D_NR_STRG_A, v);
}
bool ISensorController::get3DManualMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_3D_NR_STRG_M, v);
}
bool ISensorController::getBeaway(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_BEAWAY, v);
}
bool ISensorController::getMirrorValue(int& v) {
    sensordiag::requestMarkerCheck();
    return getParameter(KEY_MIRROR, v);
}

// Stored writes.
namespace {
bool stored(ISensorController& c, u32 p_nKey, int p_nValue) {
    return c.setParameter(static_cast<int>(p_nKey), p_nValue, true) == SNS_SUCCESS;
}
} // namespace

bool ISensorController::setDNMode(int v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_DN_MODE, v);
}
bool ISensorController::setBeaway(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_BEAWAY, v);
}
bool ISensorController::setWDRSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_WDR_MODE, v);
}
bool ISensorController::setWDRStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_WDR_STRG, v);
}
bool ISensorController::setHLCSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_HLC_SWITCH, v);
}
bool ISensorController::setHLCStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_HLC_STRG, v);
}
bool ISensorController::setBLCSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_BLC_SWITCH, v);
}
bool ISensorController::setBLCStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_BLC_STRG, v);
}
bool ISensorController::setDefogSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_DEFLG_SWITCH, v);
}
bool ISensorController::setDefogStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_DEFLG_STRG, v);
}
bool ISensorController::set2DSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_2D_NR_SWITCH, v);
}
bool ISensorController::set2DMode(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_2D_NR_MODE, v);
}
bool ISensorController::set2DAutoMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_2D_NR_STRG_A, v);
}
bool ISensorController::set2DManualMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_2D_NR_STRG_M, v);
}
bool ISensorController::set3DSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_3D_NR_SWITCH, v);
}
bool ISensorController::set3DMode(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_3D_NR_MODE, v);
}
bool ISensorController::set3DAutoMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_3D_NR_STRG_A, v);
}
bool ISensorController::set3DManualMaxStrength(int& v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_3D_NR_STRG_M, v);
}
bool ISensorController::setWhiteMode(int v) {
    sensordiag::requestMarkerCheck();
    return stored(*this, KEY_WHITE_MODE, v);
}

// The new mirror setting reaches flash at once.
bool ISensorController::setMirrorMode(int v) {
    sensordiag::requestMarkerCheck();
    if (!stored(*this, KEY_MIRROR, v)) {
        return false;
    }
    // The mirror is set only once it is on flash: a refused or failed flush
    // (the file kept its old content) makes the call fail.
    return flush() == SNS_SUCCESS;
}

bool ISensorController::setLightType(int v) {
    sensordiag::requestMarkerCheck();
    if (static_cast<u32>(v) > LIGHT_TYPE_MAX) {
        return false;
    }
    return stored(*this, KEY_LIGHT_TYPE, v);
}

// Infrared and white light are never both on: switching one on first switches
// the other off. The partner is always switched off with 0, so this never
// recurses more than one level.
bool ISensorController::setIRSwitch(int v) {
    sensordiag::requestMarkerCheck();
    if (v == SWITCH_ON) {
        int nWhite = 0;
        if (!getWhiteSwitch(nWhite)) {
            return false;
        }
        if (nWhite == SWITCH_ON && !setWhiteSwitch(0)) {
            return false;
        }
    }
    return stored(*this, KEY_IR_SWITCH, v);
}

bool ISensorController::setWhiteSwitch(int v) {
    sensordiag::requestMarkerCheck();
    if (v == SWITCH_ON) {
        int nInfrared = 0;
        if (!getIRSwitch(nInfrared)) {
            return false;
        }
        if (nInfrared == SWITCH_ON && !setIRSwitch(0)) {
            return false;
        }
    }
    return stored(*this, KEY_WHITE_SWITCH, v);
}

// Direct ISP calls.
namespace {
bool direct(ISensorController& c, u32 p_nCmd, u32 p_nDir, void* p_pVal) {
    return c.doIaCmd(p_nCmd, p_nDir, p_pVal) == SNS_SUCCESS;
}
} // namespace

bool ISensorController::getIRSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, KEY_IR_SWITCH, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getWhiteSwitch(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_WHITE_SWITCH, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getWhiteMode(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_WHITE_MODE, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getLightType(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, KEY_LIGHT_TYPE, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getWDR(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, KEY_WDR_MODE, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getDNState(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_DN_STATE, IA_CMD_OPT_GET, &v);
}
bool ISensorController::setDNState(int v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_DN_STATE, IA_CMD_OPT_SET, &v);
}
bool ISensorController::setExposureStrategy(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_EXPOSURE_STRATEGY, IA_CMD_OPT_SET, &v);
}
bool ISensorController::setIrLedInfo(void* p_pInfo) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_IR_LED_INFO, IA_CMD_OPT_SET, p_pInfo);
}
// The ISP writes the heat status as a single byte.
bool ISensorController::getHeatStatus(bool& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_HEAT_STATUS, IA_CMD_OPT_GET, &v);
}
bool ISensorController::getTempValue(int& v) {
    sensordiag::requestMarkerCheck();
    return direct(*this, IA_CMD_TEMPERATURE, IA_CMD_OPT_GET, &v);
}
