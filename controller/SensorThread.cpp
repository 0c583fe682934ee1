// The channel's background thread: one pass per call, one second apart. A pass
// serves a pending field-of-view request and follows the scheme policy.
#define SNS_SOURCE_UNIT "ISensorController"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"
#include "controller/ISensorController.h"
#include "platform/TavrinTime.h"

namespace {

constexpr u32 IA_CMD_SENSOR_CHECK = 2816;
constexpr int SENSOR_CHECK_READ = 2;
constexpr int NO_MAIL = -1;

// The diagnostic pass-through record.
struct SensorCheckRecord {
    int32_t a;
    int32_t b;
    int32_t c;
    int32_t reply;
};
static_assert(sizeof(SensorCheckRecord) == 16, "the diagnostic record is four 32-bit words");

} // namespace

int ISensorController::dayNightScheme() {
    int nState = 0;
    getDNState(nState);
    return nState != 0 ? 1 : 0;
}

void ISensorController::switchByDayNight() {
    const int nScheme = dayNightScheme();
    if (m_nCurScheme == nScheme || isBusy()) {
        return;
    }
    SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == switch_to(nScheme), "nScheme(%d)\n", nScheme);
}

void ISensorController::switchByTimeLpr(int p_nScheme, int p_nSchedule) {
    const u32 nSchedule = static_cast<u32>(p_nSchedule);
    if ((nSchedule == m_nLastSchedule && m_nCurScheme == p_nScheme) || isBusy()) {
        return;
    }
    if (nSchedule == m_nLastSchedule) {
        SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == switch_to(p_nScheme), "nScheme(%d)\n",
                       p_nScheme);
    } else {
        // Entering the window: the LPR variant applied before may differ from
        // the stored set, so every record is applied.
        SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == switch_to(p_nScheme, true), "nScheme(%d)\n",
                       p_nScheme);
    }
    m_nLastSchedule = nSchedule;
}

void ISensorController::switchByDayNightLpr() {
    const int nScheme = dayNightScheme();
    if ((m_nLastSchedule == 0 && m_nCurScheme == nScheme) || isBusy()) {
        return;
    }
    LPR_switch_to(nScheme);
    m_nLastSchedule = 0;
}

void ISensorController::switchByTime() {
    int nScheme = 0;
    int nSchedule = 0;
    SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == judgeCurScheme(nScheme, nSchedule),
                   "nScheme(%d)\n", nScheme);
    if (!m_bLprMode) {
        if (m_nCurScheme == nScheme || isBusy()) {
            return;
        }
        SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == switch_to(nScheme), "nScheme(%d)\n", nScheme);
    } else if (nSchedule == 1) {
        switchByTimeLpr(nScheme, nSchedule);
    } else {
        switchByDayNightLpr();
    }
}

void ISensorController::runSchemePolicy() {
    if (m_nParamMode == 0) {
        return;
    }
    if (m_bSchemeByDN) {
        switchByDayNight();
    } else if (m_bSchemeByTime) {
        switchByTime();
    }
}

int ISensorController::sensorThread() {
    if (!hasState(m_bResetting)) {
        TavrinTime(1, 0).wait();
    }
    // A pass is one check of the marker file, like a host call.
    sensordiag::requestMarkerCheck();
    if (m_nChanneldDosomething == m_nCameraID) {
        if (m_nPassKeycmd == static_cast<int>(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV)) {
            sync_fov();
        }
        m_nChanneldDosomething = NO_MAIL;
        m_nPassKeycmd = NO_MAIL;
    }
    // The scheme logic holds the channel's lock, taken without blocking: while a
    // host call or a reset holds it, this pass makes no switch and the next pass
    // retries. No host call can then race a switch of the thread, and a reset
    // that stops the thread under the lock cannot deadlock.
    if (m_objMutex.TryLock()) {
        runSchemePolicy();
        m_objMutex.Unlock(SNS_SOURCE_UNIT, __LINE__);
    }
    return 0;
}

int ISensorController::SensorCheck(std::string& p_str) {
    sensordiag::requestMarkerCheck();
    std::vector<std::string> vecIds;
    // Fewer than three fields are refused like a malformed request: the record
    // needs all three.
    if (!parseSensorParameter(p_str, vecIds) || vecIds.size() < 3) {
        std::printf("%s%d getParameters fail p_strIds = %s \n", SNS_SOURCE_UNIT, __LINE__,
                    p_str.c_str());
        return 0;
    }
    SensorCheckRecord stRecord{std::atoi(vecIds[0].c_str()), std::atoi(vecIds[1].c_str()),
                               std::atoi(vecIds[2].c_str()), 0};
    const bool bRead = stRecord.b == SENSOR_CHECK_READ;
    const int nOption = bRead ? IA_CMD_OPT_GET : IA_CMD_OPT_SET;
    const int nRet = ia_ioctrl_v2(m_nCameraID - 1, static_cast<ia_cmd_e>(IA_CMD_SENSOR_CHECK),
                                  nOption, &stRecord);
    if (bRead) {
        p_str = std::to_string(stRecord.reply);
    }
    return nRet;
}
