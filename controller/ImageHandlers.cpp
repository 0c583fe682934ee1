// Capture-offset adjustment, panorama and mixed-stream tuning, the shutter
// action and the field-of-view hand-off to channel 1.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"

int ISensorController::doImageAdjust(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    SNS_ASSERT(SNS_SUCCESS == doIaCmd(p_nKey, p_nDir, p_pVal), "");
    // Read after the ISP call: the video module gets what the ISP left.
    return notifyToVideo(p_nKey, *static_cast<const int*>(p_pVal));
}

// Stitching and mixing are done by the video module; the ISP never sees these keys.
int ISensorController::doIaCmd_PanoTuning(u32 p_nKey, u32 /*p_nDir*/, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    const int nKey = static_cast<int>(p_nKey);
    const int nVal = *static_cast<const int*>(p_pVal);
    SNS_ASSERT(SNS_SUCCESS == notifyToVideo(nKey, nVal), "");
    return SNS_SUCCESS;
}

int ISensorController::doIaCmdShutter(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    // After uinit the first shutter action goes out whatever is running.
    if (m_bShutterPass.exchange(false)) {
        return doIaCmd(p_nKey, p_nDir, p_pVal);
    }
    // A stored shutter action is not fired again when a whole set is applied.
    if (hasState(STATE_BULK_MASK)) {
        return SNS_SUCCESS;
    }
    return doIaCmd(p_nKey, p_nDir, p_pVal);
}

int ISensorController::doIoCrtl(u32 p_nKey, u32 /*p_nDir*/, void* /*p_pVal*/) {
    // Channel 1's sensor thread carries the request out. The thread looks at
    // the channel first and then at the key, and empties both: so the key goes
    // in first and the channel last, or a thread passing between the two would
    // empty the mailbox before the key arrived and the request would be lost.
    if (p_nKey == KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV) {
        m_nPassKeycmd = static_cast<int>(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV);
        m_nChanneldDosomething = 1;
    }
    return SNS_SUCCESS;
}
