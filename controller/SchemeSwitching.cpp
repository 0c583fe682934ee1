// Parameter schemes: the switch itself, the choice of a scheme by time of day,
// and the scheme and mode accessors.
#define SNS_SOURCE_UNIT "ISensorController"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "controller/ISensorController.h"
#include "platform/TavrinTime.h"
#include "platform/VXDeviceTime.h"

namespace {

constexpr long BUSY_POLL_USEC = 500000;

// Minutes of a set's time window in the unit hour * 100 + minute; the window's
// records sit at fixed positions 1..4 of every set.
u32 windowStart(const KeyVal* p_pSet) {
    return p_pSet[1].value * 100 + p_pSet[2].value;
}
u32 windowEnd(const KeyVal* p_pSet) {
    return p_pSet[3].value * 100 + p_pSet[4].value;
}

} // namespace

bool ISensorController::isBusy() const {
    return hasState(m_bResetting | m_bResettingLast | m_bSwitching);
}

bool ISensorController::waitWhileBusy() {
    while (isBusy()) {
        TavrinTime(0, BUSY_POLL_USEC).wait();
    }
    return true;
}

int ISensorController::switch_to(int p_nScheme, bool p_bForce) {
    sensordiag::requestMarkerCheck();
    setState(m_bSwitching);
    m_nLastScheme = m_nCurScheme;
    m_nCurScheme = p_nScheme;
    if (p_bForce) {
        applySet(m_ppUserKeyVal[p_nScheme], m_nKeyValSum, false);
    } else {
        SNS_ASSERT_TEXT(
            SNS_SUCCESS == applySet(m_ppUserKeyVal[m_nCurScheme], m_nKeyValSum, true),
            "SNS_SUCCESS == setParameters(m_ppUserKeyVal[m_nCurScheme], m_nKeyValSum, true)",
            "m_nCurScheme(%d) m_nKeyValSum(%d)\n", m_nCurScheme, m_nKeyValSum);
    }
    clearState(m_bSwitching);
    return SNS_SUCCESS;
}

int ISensorController::LPR_switch_to(int p_nScheme) {
    sensordiag::requestMarkerCheck();
    setState(m_bSwitching);
    m_nLastScheme = m_nCurScheme;
    m_nCurScheme = p_nScheme;
    const KeyVal* pRow = m_ppUserKeyVal[p_nScheme];
    std::copy(pRow, pRow + m_nKeyValSum, m_pLprKeyVal.get());
    for (u32 i = 0; i < m_nKeyValSum; ++i) {
        if (m_pLprKeyVal[i].key == KEY_DN_MODE) {
            m_pLprKeyVal[i].value = 0;
            break;
        }
    }
    applySet(m_pLprKeyVal.get(), m_nKeyValSum, false);
    clearState(m_bSwitching);
    return SNS_SUCCESS;
}

bool ISensorController::setParamScheme(int p_nScheme) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    SNS_ASSERT(p_nScheme >= 0 && (u32)p_nScheme <= m_stSysConf.nSchemeSum, "p_nScheme(%d)\n",
               p_nScheme);
    // The sets have nSchemeSum + 1 rows: a scheme outside them is never made
    // current, even when the failed check does not abort.
    if (p_nScheme < 0 || static_cast<u32>(p_nScheme) > m_stSysConf.nSchemeSum || !m_ppUserKeyVal) {
        return false;
    }
    waitWhileBusy();
    return switch_to(p_nScheme, false) == SNS_SUCCESS;
}

bool ISensorController::getParamScheme(int& p_nScheme) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    p_nScheme = m_nCurScheme;
    return true;
}

bool ISensorController::setParamMode(int p_nMode) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    SNS_ASSERT(0 == p_nMode || 1 == p_nMode, "p_nMode(%d)\n", p_nMode);
    waitWhileBusy();
    m_nParamMode = p_nMode;
    return true;
}

bool ISensorController::getParamMode(int& p_nMode) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    p_nMode = m_nParamMode;
    return true;
}

int ISensorController::getParamSchemeTime(int p_nKey) {
    if (p_nKey < static_cast<int>(KEY_SCHEME_START_HOUR) ||
        p_nKey > static_cast<int>(KEY_SCHEME_END_MIN) || !m_ppUserKeyVal || m_nCurScheme < 0) {
        return -1;
    }
    return static_cast<int>(m_ppUserKeyVal[m_nCurScheme][p_nKey - KEY_SCHEME_MODE].value);
}

int ISensorController::judgeCurScheme(int& nScheme, int& nSchedule) {
    sensordiag::requestMarkerCheck();
    const VXTime stNow = VXDeviceTime::getCurrentTime();
    const u32 nNow = static_cast<u32>(stNow.hour * 100 + stNow.minute);
    nSchedule = 0;
    for (u32 s = 0; s < m_stSysConf.nSchemeSum; ++s) {
        const KeyVal* pSet = m_ppUserKeyVal[s];
        if (windowStart(pSet) <= nNow && nNow < windowEnd(pSet)) {
            nScheme = static_cast<int>(s);
            nSchedule = 1;
            return SNS_SUCCESS;
        }
    }
    nScheme = 0;
    return SNS_SUCCESS;
}
