// Direct lens, iris and shutter controls: step once, read or set a position.
// Only the shutter steps go through the parameter writer, so the chosen
// maximum shutter is remembered in the current scheme.
#define SNS_SOURCE_UNIT "ISensorController"

#include <algorithm>
#include <array>
#include <cstring>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"
#include "controller/ISensorController.h"
#include "platform/StringHandler.h"

namespace {

constexpr u32 IA_CMD_EXPOSE_MODE = 16;
constexpr u32 IA_CMD_MAX_SHUTTER = 49;
constexpr u32 IA_CMD_IRIS_POSITION = 82;
constexpr u32 IA_CMD_IRIS_UP = 83;
constexpr u32 IA_CMD_IRIS_DOWN = 84;
constexpr u32 IA_CMD_FOCUS_MODE = 1536;
constexpr u32 IA_CMD_FOCUS_POSITION = 1552;
constexpr u32 IA_CMD_FOCUS_NEAR = 1553;
constexpr u32 IA_CMD_FOCUS_FAR = 1554;
constexpr u32 IA_CMD_ZOOM_POSITION = 1568;
constexpr u32 IA_CMD_ZOOM_IN = 1569;
constexpr u32 IA_CMD_ZOOM_OUT = 1570;
constexpr u32 IA_CMD_PTZ_RUN_STATE = 1632;
constexpr u32 IA_CMD_AF_STATISTIC = 1648;
constexpr u32 IA_CMD_CAMERA_VERSION = 2496;

// Exposure mode the iris moves need.
constexpr int EXPOSE_MODE_IRIS = 3;
constexpr int IRIS_MIN = 256;
constexpr int IRIS_MAX = 25600;
constexpr int IRIS_OPEN = 1 << 20;
constexpr std::size_t CAMERA_VERSION_LEN = 50;
constexpr std::size_t SHUTTER_LIST_MAX = 30;

// Zoom positions of the whole ratios 1x .. 16x.
constexpr std::array<u32, 16> ZOOM_BREAKPOINTS = {16384, 24576, 27264, 28672, 29056, 29440,
                                                  29728, 30016, 30208, 30400, 30560, 30720,
                                                  30912, 31104, 31232, 31424};
constexpr int RATIO_UNIT = 1000;

} // namespace

namespace {

// One focus step; the focus mode is set first and its result does not count.
bool stepFocus(ISensorController& p_objController, u32 p_nCmd) {
    int nValue = 1;
    p_objController.doIaCmd(IA_CMD_FOCUS_MODE, IA_CMD_OPT_SET, &nValue);
    nValue = 1;
    return p_objController.doIaCmd(p_nCmd, IA_CMD_OPT_SET, &nValue) == SNS_SUCCESS;
}

} // namespace

bool ISensorController::focusFar() {
    sensordiag::requestMarkerCheck();
    return !m_bHasLens || stepFocus(*this, IA_CMD_FOCUS_FAR);
}

bool ISensorController::focusNear() {
    sensordiag::requestMarkerCheck();
    return !m_bHasLens || stepFocus(*this, IA_CMD_FOCUS_NEAR);
}

namespace {

// Iris moves need exposure mode 3 first; a refused mode stops the move.
bool sendIrisMove(ISensorController& p_objController, u32 p_nCmd, int p_nValue) {
    int nMode = EXPOSE_MODE_IRIS;
    if (p_objController.doIaCmd(IA_CMD_EXPOSE_MODE, IA_CMD_OPT_SET, &nMode) != SNS_SUCCESS) {
        return false;
    }
    return p_objController.doIaCmd(p_nCmd, IA_CMD_OPT_SET, &p_nValue) == SNS_SUCCESS;
}

} // namespace

bool ISensorController::irisUp() {
    sensordiag::requestMarkerCheck();
    return sendIrisMove(*this, IA_CMD_IRIS_UP, 1);
}

bool ISensorController::irisDown() {
    sensordiag::requestMarkerCheck();
    return sendIrisMove(*this, IA_CMD_IRIS_DOWN, 1);
}

bool ISensorController::zoomIn() {
    sensordiag::requestMarkerCheck();
    int nValue = 1;
    return doIaCmd(IA_CMD_ZOOM_IN, IA_CMD_OPT_SET, &nValue) == SNS_SUCCESS;
}

bool ISensorController::zoomOut() {
    sensordiag::requestMarkerCheck();
    int nValue = 1;
    return doIaCmd(IA_CMD_ZOOM_OUT, IA_CMD_OPT_SET, &nValue) == SNS_SUCCESS;
}

bool ISensorController::setZoomValue(int p_nValue) {
    sensordiag::requestMarkerCheck();
    return !m_bHasLens || doIaCmd(IA_CMD_ZOOM_POSITION, IA_CMD_OPT_SET, &p_nValue) == SNS_SUCCESS;
}

bool ISensorController::getZoomValue(int& p_nPos, int& p_nRatio) {
    sensordiag::requestMarkerCheck();
    if (!m_bHasLens) {
        p_nPos = 0;
        return true;
    }
    if (doIaCmd(IA_CMD_ZOOM_POSITION, IA_CMD_OPT_GET, &p_nPos) != SNS_SUCCESS) {
        return false;
    }
    const u32 nPos = static_cast<u32>(p_nPos);
    if (p_nPos <= static_cast<int>(ZOOM_BREAKPOINTS[0])) {
        p_nRatio = RATIO_UNIT;
        return true;
    }
    // Beyond the last breakpoint no segment matches and the ratio is left as it was.
    for (u32 k = 1; k < ZOOM_BREAKPOINTS.size(); ++k) {
        const u32 nLow = ZOOM_BREAKPOINTS[k - 1];
        const u32 nHigh = ZOOM_BREAKPOINTS[k];
        if (nLow < nPos && nPos <= nHigh) {
            p_nRatio = static_cast<int>(RATIO_UNIT * (k + 1) -
                                        (RATIO_UNIT * (nHigh - nPos)) / (nHigh - nLow));
            break;
        }
    }
    return true;
}

bool ISensorController::setPTZRunState(int p_nState) {
    sensordiag::requestMarkerCheck();
    return !m_bHasLens || doIaCmd(IA_CMD_PTZ_RUN_STATE, IA_CMD_OPT_SET, &p_nState) == SNS_SUCCESS;
}

bool ISensorController::setFocusValue(int p_nValue) {
    sensordiag::requestMarkerCheck();
    return !m_bHasLens || doIaCmd(IA_CMD_FOCUS_POSITION, IA_CMD_OPT_SET, &p_nValue) == SNS_SUCCESS;
}

bool ISensorController::getFocusValue(int& p_nValue) {
    sensordiag::requestMarkerCheck();
    if (!m_bHasLens) {
        p_nValue = 0;
        return true;
    }
    return doIaCmd(IA_CMD_FOCUS_POSITION, IA_CMD_OPT_GET, &p_nValue) == SNS_SUCCESS;
}

bool ISensorController::setFocusMode(int p_nMode) {
    sensordiag::requestMarkerCheck();
    return doIaCmd(IA_CMD_FOCUS_MODE, IA_CMD_OPT_SET, &p_nMode) == SNS_SUCCESS;
}

bool ISensorController::getFocusMode(int& p_nMode) {
    sensordiag::requestMarkerCheck();
    return doIaCmd(IA_CMD_FOCUS_MODE, IA_CMD_OPT_GET, &p_nMode) == SNS_SUCCESS;
}

bool ISensorController::getAFStatistic(unsigned int& p_nValue) {
    sensordiag::requestMarkerCheck();
    return doIaCmd(IA_CMD_AF_STATISTIC, IA_CMD_OPT_GET, &p_nValue) == SNS_SUCCESS;
}

bool ISensorController::getCmdExecStatus(int p_nCmd, int& p_nStatus) {
    sensordiag::requestMarkerCheck();
    return doIaCmd(static_cast<u32>(p_nCmd), IA_CMD_OPT_EXEC_STATUS, &p_nStatus) == SNS_SUCCESS;
}

bool ISensorController::getCameraVerInf(std::string& p_strVersion) {
    sensordiag::requestMarkerCheck();
    std::array<char, CAMERA_VERSION_LEN> szVersion{};
    if (doIaCmd(IA_CMD_CAMERA_VERSION, IA_CMD_OPT_GET, szVersion.data()) != SNS_SUCCESS) {
        return false;
    }
    p_strVersion.assign(szVersion.data(), strnlen(szVersion.data(), szVersion.size()));
    return true;
}

bool ISensorController::setIrisValue(int p_nValue) {
    sensordiag::requestMarkerCheck();
    if (p_nValue < IRIS_MIN) {
        p_nValue = IRIS_MIN;
    } else if (p_nValue > IRIS_MAX) {
        p_nValue = IRIS_OPEN;
    }
    return sendIrisMove(*this, IA_CMD_IRIS_POSITION, p_nValue);
}

bool ISensorController::getIrisValue(int& p_nValue) {
    sensordiag::requestMarkerCheck();
    return doIaCmd(IA_CMD_IRIS_POSITION, IA_CMD_OPT_GET, &p_nValue) == SNS_SUCCESS;
}

namespace {

// The ISP's allowed maximum-shutter values in its own order, at most 30.
std::vector<int> shutterList(ISensorController& p_objController) {
    int nDefault = 0;
    std::string strRange;
    p_objController.getSensorParamRange(IA_CMD_MAX_SHUTTER, nDefault, strRange);
    std::vector<int> vecList;
    size_t nPos = 0;
    while (vecList.size() < SHUTTER_LIST_MAX) {
        const size_t nBlank = strRange.find(' ', nPos);
        if (nBlank == std::string::npos) {
            if (nPos < strRange.size()) {
                vecList.push_back(StringHandler::str2type<int>(strRange.substr(nPos)));
            }
            break;
        }
        vecList.push_back(StringHandler::str2type<int>(strRange.substr(nPos, nBlank - nPos)));
        nPos = nBlank + 1;
    }
    return vecList;
}

int indexOf(const std::vector<int>& p_vecList, int p_nValue) {
    const auto it = std::find(p_vecList.begin(), p_vecList.end(), p_nValue);
    return it == p_vecList.end() ? -1 : static_cast<int>(it - p_vecList.begin());
}

} // namespace

bool ISensorController::getShutterValue(int& p_nIndex) {
    sensordiag::requestMarkerCheck();
    const std::vector<int> vecList = shutterList(*this);
    int nCur = 0;
    if (doIaCmd(IA_CMD_MAX_SHUTTER, IA_CMD_OPT_GET, &nCur) != SNS_SUCCESS) {
        return false;
    }
    const int nIndex = indexOf(vecList, nCur);
    if (nIndex < 0) {
        return false;
    }
    p_nIndex = nIndex;
    return true;
}

bool ISensorController::setShutterValue(int p_nIndex) {
    sensordiag::requestMarkerCheck();
    const std::vector<int> vecList = shutterList(*this);
    if (p_nIndex < 0 || static_cast<size_t>(p_nIndex) >= vecList.size()) {
        return false;
    }
    return setParameter(KEY_MAX_SHUTTER, vecList[static_cast<size_t>(p_nIndex)], true) ==
           SNS_SUCCESS;
}

namespace {

// Moves the maximum shutter one place along the ISP's list; at either end the
// current value is written again.
bool stepShutter(ISensorController& p_objController, int p_nStep) {
    const std::vector<int> vecList = shutterList(p_objController);
    int nCur = 0;
    if (p_objController.doIaCmd(IA_CMD_MAX_SHUTTER, IA_CMD_OPT_GET, &nCur) != SNS_SUCCESS) {
        return false;
    }
    const int nIndex = indexOf(vecList, nCur);
    if (nIndex < 0) {
        return false;
    }
    const int nNext = nIndex + p_nStep;
    if (nNext >= 0 && static_cast<size_t>(nNext) < vecList.size()) {
        nCur = vecList[static_cast<size_t>(nNext)];
    }
    return p_objController.setParameter(KEY_MAX_SHUTTER, nCur, true) == SNS_SUCCESS;
}

} // namespace

bool ISensorController::shutterUp() {
    sensordiag::requestMarkerCheck();
    return stepShutter(*this, 1);
}

bool ISensorController::shutterDown() {
    sensordiag::requestMarkerCheck();
    return stepShutter(*this, -1);
}

int ISensorController::getSensorZoomFocusParam(SensorZoomFocusParam& p_objParam) {
    sensordiag::requestMarkerCheck();
    p_objParam = m_objZoomFocusParam;
    return 0;
}

int ISensorController::setSensorZoomFocusParam(SensorZoomFocusParam& p_objParam) {
    sensordiag::requestMarkerCheck();
    m_objZoomFocusParam = p_objParam;
    return 0;
}
