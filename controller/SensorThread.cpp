// The channel's background thread: one pass per call, one second apart. A pass
// serves a pending field-of-view request and follows the scheme policy.
#define SNS_SOURCE_UNIT "ISensorController"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
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

// How often a waiting pass retries the lock, and a held-back host call looks
// whether the pass got it: both short against a pass's one-second pause.
constexpr std::chrono::microseconds PASS_LOCK_RETRY{200};
constexpr std::chrono::microseconds HOST_YIELD{100};

// The channels whose lock the calling thread holds (a host call inside a host
// call, a pass calling a public operation), innermost last.
thread_local std::vector<const ISensorController*> t_vecHeld;
// The channel whose pass runs on the calling thread with the lock held.
thread_local const ISensorController* t_pPassChannel = nullptr;

bool isHeld(const ISensorController* p_pChannel) {
    return std::find(t_vecHeld.begin(), t_vecHeld.end(), p_pChannel) != t_vecHeld.end();
}

void markHeld(const ISensorController* p_pChannel) {
    t_vecHeld.push_back(p_pChannel);
}

void unmarkHeld(const ISensorController* p_pChannel) {
    const auto it = std::find(t_vecHeld.rbegin(), t_vecHeld.rend(), p_pChannel);
    if (it != t_vecHeld.rend()) {
        t_vecHeld.erase(std::next(it).base());
    }
}

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
    // The mailbox is emptied before the request is served, not after: a request
    // posted while this one is served then stays for the next pass, where
    // emptying it afterwards would throw it away unserved.
    int nMailChannel = m_nCameraID;
    if (m_nChanneldDosomething.compare_exchange_strong(nMailChannel, NO_MAIL) &&
        m_nPassKeycmd.exchange(NO_MAIL) ==
            static_cast<int>(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV)) {
        sync_fov();
    }
    // The scheme logic holds the channel's lock, so no host call races a switch
    // of the thread; host calls let a waiting pass go first, so a busy host
    // cannot postpone a switch. Video notices of the switch wait until the lock
    // is released (a host video module may wait for another host call).
    if (lockForPass()) {
        t_pPassChannel = this;
        runSchemePolicy();
        t_pPassChannel = nullptr;
        std::vector<VideoNotice> vecNotices;
        vecNotices.swap(m_vecPassNotices);
        unmarkHeld(this);
        m_objMutex.Unlock(SNS_SOURCE_UNIT, __LINE__);
        sendVideoNotices(vecNotices);
    }
    return 0;
}

bool ISensorController::lockForPass() {
    if (!m_objMutex.TryLock()) {
        m_bPassWaiting = true;
        bool bLocked = false;
        // Polled, not blocked on: a reset or uinit stops this thread while it
        // holds the lock, and the pass must then give way instead of waiting.
        while (!(bLocked = m_objMutex.TryLock())) {
            if (hasState(m_bResetting | m_bUniniting)) {
                break;
            }
            std::this_thread::sleep_for(PASS_LOCK_RETRY);
        }
        m_bPassWaiting = false;
        if (!bLocked) {
            return false;
        }
    }
    markHeld(this);
    return true;
}

bool ISensorController::deferVideoNotice(int p_nKey, int p_nVal) {
    if (t_pPassChannel != this) {
        return false;
    }
    m_vecPassNotices.push_back({p_nKey, p_nVal});
    return true;
}

void ISensorController::sendVideoNotices(const std::vector<VideoNotice>& p_vecNotices) {
    for (const VideoNotice& stNotice : p_vecNotices) {
        SNS_ASSERT_FOR("sensorThread", SNS_SUCCESS == notifyToVideo(stNotice.nKey, stNotice.nVal),
                       "key(%d) value(%d)\n", stNotice.nKey, stNotice.nVal);
    }
}

ISensorController::HostLock::HostLock(ISensorController& p_objOwner, const char* p_szFile,
                                      int p_nLine)
    : m_objOwner(p_objOwner), m_szFile(p_szFile), m_nLine(p_nLine) {
    // A thread already inside an operation of this channel holds the lock:
    // waiting for the pass would wait for itself.
    if (!isHeld(&m_objOwner)) {
        while (m_objOwner.m_bPassWaiting.load()) {
            std::this_thread::sleep_for(HOST_YIELD);
        }
    }
    m_objOwner.m_objMutex.Lock(m_szFile, m_nLine);
    markHeld(&m_objOwner);
}

ISensorController::HostLock::~HostLock() {
    unmarkHeld(&m_objOwner);
    m_objOwner.m_objMutex.Unlock(m_szFile, m_nLine);
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
