// Day/night handlers: the ISP takes the thresholds, and the switching times,
// as one record each, so a change of one key is completed from the current
// scheme's set and the whole record is sent.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "controller/DayNightRecords.h"

#include <array>

int ISensorController::doDNThr(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    const u32 nValue = *static_cast<const u32*>(p_pVal);
    const u32 nScheme = static_cast<u32>(m_nCurScheme);
    // A threshold key fills the pair of thresholds, the sensitivity key only
    // the sensitivity; the rest stays zero.
    dn_thr_st stThr{};
    if (p_nKey == KEY_DTN_THR) {
        stThr.d2n_thr = nValue;
        getKeyValFromCache(nScheme, KEY_NTD_THR, stThr.n2d_thr);
    } else if (p_nKey == KEY_NTD_THR) {
        getKeyValFromCache(nScheme, KEY_DTN_THR, stThr.d2n_thr);
        stThr.n2d_thr = nValue;
    } else if (p_nKey == KEY_DN_SENSITIVITY) {
        stThr.dn_sensitivity = nValue;
    }
    SNS_PRINT(5, sensordiag::COLOUR_DEFAULT,
              "m_nCurScheme(%u) dn_thr_st.d2n_thr(%u) dn_thr_st.n2d_thr(%u)  "
              "dn_thr_st.dn_sensitivity(%u)\n",
              nScheme, stThr.d2n_thr, stThr.n2d_thr, stThr.dn_sensitivity);
    const int nRet = doIaCmd(p_nKey, p_nDir, &stThr);
    // Restoring the last stored parameters must not stop at a refused threshold.
    return hasState(m_bResettingLast) ? SNS_SUCCESS : nRet;
}

int ISensorController::doDNTime(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    if (p_pVal == nullptr) {
        return SNS_FAILED;
    }
    const u32 nScheme = static_cast<u32>(m_nCurScheme);
    dn_time_st stTime{};
    const std::array<u32, 4> arrKeys = {KEY_DTN_H, KEY_DTN_M, KEY_NTD_H, KEY_NTD_M};
    const std::array<u32*, 4> arrFields = {&stTime.d2n_hour, &stTime.d2n_min, &stTime.n2d_hour,
                                           &stTime.n2d_min};
    for (std::size_t i = 0; i < arrKeys.size(); ++i) {
        if (arrKeys[i] == p_nKey) {
            *arrFields[i] = *static_cast<const u32*>(p_pVal);
        } else {
            getKeyValFromCache(nScheme, arrKeys[i], *arrFields[i]);
        }
    }
    SNS_PRINT(5, sensordiag::COLOUR_DEFAULT,
              "m_nCurScheme(%u) dn_time_st.d2n_hour(%u) dn_time_st.d2n_min(%u) "
              "dn_time_st.n2d_hour(%u) dn_time_st.n2d_min(%u) \n",
              nScheme, stTime.d2n_hour, stTime.d2n_min, stTime.n2d_hour, stTime.n2d_min);
    return doIaCmd(p_nKey, p_nDir, &stTime);
}
