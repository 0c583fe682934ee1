// The one way tests reach inside a controller: install scheme sets and the key-command
// table, set flags and state bits, hold the sensor thread, read back what it holds.
#pragma once

#include <algorithm>
#include <vector>

#include "controller/ISensorController.h"
#include "platform/GThread.h"

class ISensorControllerTestAccess {
public:
    // Stops the channel's thread so that a test runs the passes itself.
    static bool stopThread(ISensorController& c) { return c.m_pSensorThread->stop(); }

    static int curScheme(const ISensorController& c) { return c.m_nCurScheme; }
    static u32 schemeSum(const ISensorController& c) { return c.m_stSysConf.nSchemeSum; }
    static u32 keyValSum(const ISensorController& c) { return c.m_nKeyValSum; }
    static u32 keyCmdSum(const ISensorController& c) { return c.m_nKeyCmdSum; }
    static bool schemeByDN(const ISensorController& c) { return c.m_bSchemeByDN; }
    static bool schemeByTime(const ISensorController& c) { return c.m_bSchemeByTime; }
    static bool lprMode(const ISensorController& c) { return c.m_bLprMode; }
    static bool hasLens(const ISensorController& c) { return c.m_bHasLens; }
    static bool limitedIrPower(const ISensorController& c) { return c.m_bisLimitedIrPower; }
    static bool shutterPass(const ISensorController& c) { return c.m_bShutterPass; }
    static int cameraId(const ISensorController& c) { return c.m_nCameraID; }
    static SysConfig& sysConf(ISensorController& c) { return c.m_stSysConf; }
    static const keycmd* keyCmdMap(const ISensorController& c) { return c.m_pKeyCmdMap.get(); }

    static std::vector<KeyVal> row(const ISensorController& c, u32 p_nScheme) {
        const KeyVal* p = c.m_ppUserKeyVal[p_nScheme];
        return std::vector<KeyVal>(p, p + c.m_nKeyValSum);
    }
    static void setState(ISensorController& c, u32 p_nBits) { c.setState(p_nBits); }
    static void clearState(ISensorController& c, u32 p_nBits) { c.clearState(p_nBits); }
    static u32 state(const ISensorController& c) { return c.m_stState.load(); }
    static constexpr u32 initingBit() { return ISensorController::m_bIniting; }
    static constexpr u32 uninitingBit() { return ISensorController::m_bUniniting; }
    static constexpr u32 resettingBit() { return ISensorController::m_bResetting; }
    static constexpr u32 resettingLastBit() { return ISensorController::m_bResettingLast; }
    static constexpr u32 switchingBit() { return ISensorController::m_bSwitching; }

    // Installs the user sets plus the factory set (the last of p_vecSets) as init
    // would, p_nCurScheme current. Sets of unequal length install nothing: false.
    static bool installSets(ISensorController& c, const std::vector<std::vector<KeyVal>>& p_vecSets,
                            int p_nCurScheme) {
        const std::size_t nSum = p_vecSets.empty() ? 0 : p_vecSets[0].size();
        if (p_vecSets.empty() ||
            std::any_of(p_vecSets.begin(), p_vecSets.end(),
                        [nSum](const std::vector<KeyVal>& v) { return v.size() != nSum; })) {
            return false;
        }
        const std::size_t nRows = p_vecSets.size();
        c.m_stSysConf.nSchemeSum = static_cast<u32>(nRows - 1);
        c.m_nKeyValSum = static_cast<u32>(nSum);
        c.m_pUserKeyValBlock = std::make_unique<KeyVal[]>(nRows * nSum);
        c.m_ppUserKeyVal = std::make_unique<KeyVal*[]>(nRows);
        for (std::size_t r = 0; r < nRows; ++r) {
            c.m_ppUserKeyVal[r] = c.m_pUserKeyValBlock.get() + r * nSum;
            std::copy(p_vecSets[r].begin(), p_vecSets[r].end(), c.m_ppUserKeyVal[r]);
        }
        c.m_pFctKeyVal = c.m_ppUserKeyVal[nRows - 1];
        c.m_pstKeyValTmp = std::make_unique<KeyVal[]>(nSum);
        c.m_pLprKeyVal = std::make_unique<KeyVal[]>(nSum);
        c.m_nCurScheme = p_nCurScheme;
        c.indexSchemeSets();
        return true;
    }

    // The key-command table step of init.
    static void buildKeyCmdMap(ISensorController& c) { c.initKeyCmdMap(); }

    static void setCurScheme(ISensorController& c, int p_nScheme) { c.m_nCurScheme = p_nScheme; }
    static void setLastScheme(ISensorController& c, int p_nScheme) { c.m_nLastScheme = p_nScheme; }
    static void setThermal(ISensorController& c, bool p_bOn) { c.m_bIsThermal = p_bOn; }
    static void setLimitedIrPower(ISensorController& c, bool p_bOn) {
        c.m_bisLimitedIrPower = p_bOn;
    }
    static void setHasLens(ISensorController& c, bool p_bOn) { c.m_bHasLens = p_bOn; }
    static void setShutterPass(ISensorController& c, bool p_bOn) { c.m_bShutterPass = p_bOn; }
    static void setSchemePolicy(ISensorController& c, bool p_bByTime, bool p_bByDN) {
        c.m_bSchemeByTime = p_bByTime;
        c.m_bSchemeByDN = p_bByDN;
    }
    static void setZoomFocusLock(ISensorController& c, bool p_bOn) {
        c.m_objZoomFocusParam.setLockZoomFocusEnable(p_bOn);
    }
};
