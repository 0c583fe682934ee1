// Mirror and beaway: while beaway is on, mirror values 1 and 2 are exchanged
// before they reach the video module and the ISP. The stored values are never
// exchanged. Also the show flags of WDR and beaway.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"

namespace {

u32 exchangeMirror(u32 p_nMirror) {
    if (p_nMirror == 1) {
        return 2;
    }
    if (p_nMirror == 2) {
        return 1;
    }
    return p_nMirror;
}

} // namespace

int ISensorController::doMirror(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    u32 nMirror = *static_cast<const u32*>(p_pVal);
    u32 nBeaway = 0;
    getKeyValFromCache(static_cast<u32>(m_nCurScheme), KEY_BEAWAY, nBeaway);
    if (nBeaway != 0) {
        nMirror = exchangeMirror(nMirror);
    }
    SNS_ASSERT(SNS_SUCCESS == notifyToVideo(p_nKey, nMirror), "");
    return doIaCmd(p_nKey, p_nDir, &nMirror);
}

int ISensorController::doBeaway(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    // Where beaway is not allowed it is stored as off and sent nowhere.
    if (!getshowBeawayFalg()) {
        *static_cast<u32*>(p_pVal) = 0;
        return SNS_SUCCESS;
    }
    u32 nBeaway = *static_cast<const u32*>(p_pVal);
    u32 nMirror = 0;
    getKeyValFromCache(static_cast<u32>(m_nCurScheme), KEY_MIRROR, nMirror);
    // With beaway off the stored mirror goes out as it is, undoing an earlier
    // exchange.
    if (nBeaway != 0) {
        nMirror = exchangeMirror(nMirror);
    }
    // The receivers hear the mirror as it must now be carried out first, then
    // the new beaway value.
    SNS_ASSERT(SNS_SUCCESS == notifyToVideo(IA_CMD_UI_MIRROR, nMirror), "");
    SNS_ASSERT(SNS_SUCCESS == notifyToVideo(p_nKey, nBeaway), "");
    doIaCmd(IA_CMD_UI_MIRROR, p_nDir, &nMirror);
    return doIaCmd(p_nKey, p_nDir, &nBeaway);
}

void ISensorController::setShowWDRFalg(bool p_bShow) {
    sensordiag::requestMarkerCheck();
    m_bShowWDRFalg = p_bShow;
}

bool ISensorController::getShowWDRFalg(bool& p_bShow) {
    sensordiag::requestMarkerCheck();
    p_bShow = m_bShowWDRFalg;
    return true;
}

void ISensorController::setShowBeawayFalg(bool p_bShow) {
    sensordiag::requestMarkerCheck();
    setshowBeawayFalg(p_bShow);
}

bool ISensorController::getShowBeawayFalg(bool& p_bShow) {
    sensordiag::requestMarkerCheck();
    p_bShow = getshowBeawayFalg();
    return true;
}
