// Handlers whose keys the host's video module must hear as well as, or
// instead of, the ISP: the WDR mode, anti-shake and the test parameters.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"

namespace {

// Values of the IA_CMD_UI_WDR_SWITCHING notice around a WDR mode change.
constexpr int WDR_SWITCH_BEGIN = 0;
constexpr int WDR_SWITCH_END = 1;

} // namespace

int ISensorController::doHwdr(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    // Where WDR is not allowed the mode is stored as off and sent nowhere.
    if (!m_bShowWDRFalg) {
        *static_cast<u32*>(p_pVal) = 0;
        return SNS_SUCCESS;
    }
    // The video pipeline restarts for a new mode: it is warned first and told
    // when the ISP has been set, whatever the ISP answered.
    notifyToVideo(IA_CMD_UI_WDR_SWITCHING, WDR_SWITCH_BEGIN);
    const int nResult = notifyToVideo(p_nKey, *static_cast<const int*>(p_pVal));
    SNS_ASSERT(SNS_SUCCESS == doIaCmd(p_nKey, p_nDir, p_pVal), "");
    notifyToVideo(IA_CMD_UI_WDR_SWITCHING, WDR_SWITCH_END);
    return nResult;
}

int ISensorController::doDIS(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    // The video module crops for stabilisation, so it hears the switch first.
    // (The cast is spelled as the check's report names it.)
    SNS_ASSERT(SNS_SUCCESS == notifyToVideo(p_nKey, *(u32*)p_pVal), "");
    return doIaCmd(p_nKey, p_nDir, p_pVal);
}

// The test parameters go to the video module only, never to the ISP.
int ISensorController::test_debugParam(u32 p_nKey, u32 /*p_nDir*/, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    notifyToVideo(p_nKey, *static_cast<const int*>(p_pVal));
    return SNS_SUCCESS;
}
