// Lookup in the key-command table and the two generic handlers through which
// most keys reach the ISP.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"

#include <cstring>

namespace {

// The lens commands that the zoom/focus lock holds back.
constexpr u32 LENS_CMD_FIRST = KEY_AUTO_FOCUS_MODE; // 1536
constexpr u32 LENS_CMD_LAST = KEY_LENS_RESET;       // 1616

bool isLensCommand(u32 p_nKey) {
    return p_nKey >= LENS_CMD_FIRST && p_nKey <= LENS_CMD_LAST;
}

} // namespace

int ISensorController::keyCmdRowOf(const keycmd* p_pKeyCmdMap, u32 p_nKey) const {
    // The owned table through its index (built with it at init); any other
    // table a caller hands in is scanned.
    if (p_pKeyCmdMap == m_pKeyCmdMap.get() && !m_objKeyCmdIndex.empty()) {
        const int nRow = m_objKeyCmdIndex.find(p_nKey);
        // A row that no longer holds its key (the table changed) is looked for.
        if (nRow < 0 ||
            (static_cast<u32>(nRow) < m_nKeyCmdSum && p_pKeyCmdMap[nRow].key == p_nKey)) {
            return nRow;
        }
    }
    for (u32 i = 0; i < m_nKeyCmdSum; ++i) {
        if (p_pKeyCmdMap[i].key == p_nKey) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int ISensorController::findFromKeyCmdMap(const keycmd* p_pKeyCmdMap, unsigned int p_nKey,
                                         keycmd& p_stKeyCmd) {
    // Before start-up and after release there is no table: every key is unknown.
    const int nRow = p_pKeyCmdMap == nullptr ? -1 : keyCmdRowOf(p_pKeyCmdMap, p_nKey);
    if (nRow >= 0) {
        const keycmd& stRow = p_pKeyCmdMap[nRow];
        p_stKeyCmd.key = p_nKey;
        p_stKeyCmd.ia_cmd = stRow.ia_cmd;
        p_stKeyCmd.func = stRow.func;
        std::memcpy(p_stKeyCmd.key_name, stRow.key_name, sizeof p_stKeyCmd.key_name);
        std::memcpy(p_stKeyCmd.func_name, stRow.func_name, sizeof p_stKeyCmd.func_name);
        return nRow;
    }
    SNS_PRINT(5, sensordiag::COLOUR_DEFAULT, "cand not find key-cmd while key=%d\n",
              static_cast<int>(p_nKey));
    return SNS_FAILED;
}

int ISensorController::findFromKeyCmdMap(const std::unique_ptr<keycmd[]>& p_pKeyCmdMap,
                                         unsigned int p_nKey, keycmd& p_stKeyCmd) {
    return findFromKeyCmdMap(p_pKeyCmdMap.get(), p_nKey, p_stKeyCmd);
}

int ISensorController::doIaCmd(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    // A locked lens ignores lens commands; the caller counts them as done.
    if (m_objZoomFocusParam.getLockZoomFocusEnable() && isLensCommand(p_nKey)) {
        return SNS_SUCCESS;
    }
    return ia_ioctrl_v2(m_nCameraID - 1, static_cast<ia_cmd_e>(p_nKey), static_cast<int>(p_nDir),
                        p_pVal);
}

int ISensorController::doIaCmd_User(u32 p_nKey, u32 p_nDir, void* p_pVal) {
    // Re-applying a stored set (start-up, resets, scheme switch) must not fire
    // one-shot user actions again.
    if (hasState(STATE_BULK_MASK)) {
        return SNS_SUCCESS;
    }
    if (p_nKey == KEY_AUTO_FOCUS_ONCE) {
        if (!m_bHasLens) {
            return SNS_SUCCESS;
        }
        // A missing value counts as 0 (no request) rather than being read.
        const bool bRequested = p_pVal != nullptr && *static_cast<const u32*>(p_pVal) != 0;
        if (!m_bIsThermal && !bRequested) {
            return SNS_SUCCESS;
        }
    }
    return doIaCmd(p_nKey, p_nDir, p_pVal);
}
