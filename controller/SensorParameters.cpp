// Parameter application: the set loop through which every parameter value
// reaches the ISP or the host's video module, and the scheme sets that serve
// as the parameter cache.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"
#include "platform/DeviceType.h"
#include "platform/VideoStreamModule.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

// KEY_LIGHT_TYPE value of the intelligent light mode.
constexpr u32 LIGHT_TYPE_INTELLIGENT = 2;
// The near and far manual infrared strengths share this power budget.
constexpr std::uint64_t IR_POWER_BUDGET = 100;
// "Partner value unknown" in the infrared budget check.
constexpr int IR_PARTNER_UNKNOWN = -1;
// Room for the largest record the ISP may read or write for one command; the
// records that cross into the ISP library are at most a few hundred bytes.
constexpr std::size_t ISP_RECORD_SCRATCH_WORDS = 1024 / sizeof(int32_t);

// A key the ISP knows and the twin the intelligent light mode keeps beside it.
struct TwinPair {
    u32 nNormal;
    u32 nTwin;
};
constexpr std::array<TwinPair, 8> LIGHT_TYPE_TWINS = {{
    {KEY_IR_MODE, KEY_IR_MODE_INTELL},
    {KEY_IR_MANUAL_STRG_NEAR, KEY_IR_MANUAL_STRG_NEAR_INTELL},
    {KEY_IR_MANUAL_STRG_MEDIUM, KEY_IR_MANUAL_STRG_MEDIUM_INTELL},
    {KEY_IR_MANUAL_STRG_FAR, KEY_IR_MANUAL_STRG_FAR_INTELL},
    {KEY_WHITE_MODE, KEY_WHITE_MODE_INTELL},
    {KEY_WHITE_MANUAL_STRG, KEY_WHITE_MANUAL_STRG_INTELL},
    {KEY_WHITE_MANUAL_STRG_MEDIUM, KEY_WHITE_MANUAL_STRG_MEDIUM_INTELL},
    {KEY_WHITE_MANUAL_STRG_FAR, KEY_WHITE_MANUAL_STRG_FAR_INTELL},
}};

const TwinPair* findPairByNormal(u32 p_nKey) {
    for (const TwinPair& stPair : LIGHT_TYPE_TWINS) {
        if (stPair.nNormal == p_nKey) {
            return &stPair;
        }
    }
    return nullptr;
}

const TwinPair* findPairByTwin(u32 p_nKey) {
    for (const TwinPair& stPair : LIGHT_TYPE_TWINS) {
        if (stPair.nTwin == p_nKey) {
            return &stPair;
        }
    }
    return nullptr;
}

// Keys kept in the sets but never applied.
bool isStoredOnlyKey(u32 p_nKey) {
    switch (p_nKey) {
    case KEY_EMPTY1:
    case KEY_EMPTY2:
    case KEY_EMPTY3:
    case KEY_SCHEME_START_HOUR:
    case KEY_SCHEME_START_MIN:
    case KEY_SCHEME_END_HOUR:
    case KEY_SCHEME_END_MIN:
        return true;
    default:
        return false;
    }
}

// Day/night keys that scheme 0 governs under the day/night scheme policy.
bool isDayNightKey(u32 p_nKey) {
    switch (p_nKey) {
    case KEY_DN_MODE:
    case KEY_DTN_THR:
    case KEY_NTD_THR:
    case KEY_DTN_H:
    case KEY_DTN_M:
    case KEY_NTD_H:
    case KEY_NTD_M:
        return true;
    default:
        return false;
    }
}

// The other half of the infrared power budget, or 0 for a key outside it.
u32 irBudgetPartner(u32 p_nKey) {
    if (p_nKey == KEY_IR_MANUAL_STRG_NEAR) {
        return KEY_IR_MANUAL_STRG_FAR;
    }
    if (p_nKey == KEY_IR_MANUAL_STRG_FAR) {
        return KEY_IR_MANUAL_STRG_NEAR;
    }
    return 0;
}

const char* irBudgetKeyName(u32 p_nKey) {
    return p_nKey == KEY_IR_MANUAL_STRG_FAR ? "KEY_IR_MANUAL_STRG_FAR" : "KEY_IR_MANUAL_STRG_NEAR";
}

// Infrared keys whose value is unknown (-1) when the set lacks them; the ISP
// is not asked for these.
bool isInfraredKeyWithoutIspRead(int p_nKey) {
    switch (p_nKey) {
    case KEY_IR_SWITCH:
    case KEY_IR_MODE:
    case KEY_IR_MANUAL_STRG_NEAR:
    case KEY_IR_MANUAL_STRG_MEDIUM:
    case KEY_IR_MANUAL_STRG_FAR:
        return true;
    default:
        return false;
    }
}

// Handler results that get the failure line; every nonzero result ends the list.
bool isReportedFailure(int p_nResult) {
    return p_nResult == -1 || p_nResult == -4 || p_nResult == -5;
}

constexpr const char* UNKNOWN_KEY_NAME = "unknow key";
constexpr const char* UNKNOWN_KEY_FUNC_NAME = "ISensorController::doIaCmd";

// The stand-in row for a key missing from the table: the key is sent to the
// ISP as its own command.
keycmd unknownKeyRow(u32 p_nKey) {
    keycmd stRow{};
    stRow.key = p_nKey;
    stRow.ia_cmd = p_nKey;
    stRow.func = &ISensorController::doIaCmd;
    std::memcpy(stRow.key_name, UNKNOWN_KEY_NAME, std::strlen(UNKNOWN_KEY_NAME));
    std::memcpy(stRow.func_name, UNKNOWN_KEY_FUNC_NAME, std::strlen(UNKNOWN_KEY_FUNC_NAME));
    return stRow;
}

// The per-key trace of the set loop.
void traceSet(const keycmd& p_stRow, u32 p_nValue) {
    SNS_PRINT(5, sensordiag::COLOUR_RED,
              "====================== set %.32s (%d,%d) func:%s ia_cmd:%d "
              "=====================\n",
              p_stRow.key_name, static_cast<int>(p_stRow.key), static_cast<int>(p_nValue),
              p_stRow.func_name, static_cast<int>(p_stRow.ia_cmd));
}

} // namespace

KeyVal* ISensorController::schemeRow(u32 p_nScheme) const {
    if (!m_ppUserKeyVal || p_nScheme > m_stSysConf.nSchemeSum) {
        return nullptr;
    }
    return m_ppUserKeyVal[p_nScheme];
}

void ISensorController::indexSchemeSets() {
    if (!m_ppUserKeyVal) {
        m_objSetIndex.clear();
        return;
    }
    m_objSetIndex.build(m_ppUserKeyVal.get(), m_stSysConf.nSchemeSum + 1, m_nKeyValSum,
                        m_stSysConf.nSchemeSum);
}

int ISensorController::setKeyValToCache(u32 p_nScheme, u32 p_nKey, u32 p_nValue, bool p_bForce) {
    if (!p_bForce && p_nScheme >= m_stSysConf.nSchemeSum) {
        return SNS_ERR_SCHEME_RANGE;
    }
    // Even forced, nothing is written beyond the factory row.
    KeyVal* pRow = schemeRow(p_nScheme);
    if (pRow == nullptr) {
        return SNS_ERR_SCHEME_RANGE;
    }
    const int nPos = m_objSetIndex.find(p_nScheme, pRow, m_nKeyValSum, p_nKey);
    if (nPos < 0) {
        return SNS_FAILED;
    }
    pRow[nPos].value = p_nValue;
    return nPos;
}

int ISensorController::getKeyValFromCache(u32 p_nScheme, u32 p_nKey, u32& p_nValue) {
    if (p_nScheme > m_stSysConf.nSchemeSum) {
        SNS_PRINT(5, sensordiag::COLOUR_DEFAULT, "can not find val, invalid sheme(%d) \n",
                  static_cast<int>(p_nScheme));
        return SNS_FAILED;
    }
    const KeyVal* pRow = schemeRow(p_nScheme);
    const int nPos = m_objSetIndex.find(p_nScheme, pRow, m_nKeyValSum, p_nKey);
    if (nPos < 0) {
        return SNS_FAILED;
    }
    p_nValue = pRow[nPos].value;
    return nPos;
}

bool ISensorController::isKeyValSame(const KeyVal& p_stKeyVal) {
    // A pending key is sent whatever the cache says: the ISP may not hold it.
    if (isPending(p_stKeyVal.key)) {
        return false;
    }
    // During a switch the new set is compared with the scheme being left.
    const int nScheme = hasState(m_bSwitching) ? m_nLastScheme : m_nCurScheme;
    u32 nCached = 0;
    if (getKeyValFromCache(static_cast<u32>(nScheme), p_stKeyVal.key, nCached) < 0) {
        return false;
    }
    return nCached == p_stKeyVal.value;
}

bool ISensorController::isPending(u32 p_nKey) const {
    return !m_setPendingKeys.empty() && m_setPendingKeys.count(p_nKey) != 0;
}

void ISensorController::clearPending(u32 p_nKey) {
    if (!m_setPendingKeys.empty()) {
        m_setPendingKeys.erase(p_nKey);
    }
}

std::vector<u32> ISensorController::getPendingKeys() {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    return std::vector<u32>(m_setPendingKeys.begin(), m_setPendingKeys.end());
}

// A refusal ends a list; for a whole set that becomes the current scheme (a
// switch, a reset, a reset to last) the cache then claims values that were
// never sent. Those records are remembered and sent at their next write or
// the next switch, reset or restore, whatever the cache says. Keys that never
// reach the ISP are not remembered.
int ISensorController::applySet(KeyVal* p_pKeyval, u32 p_nKeyValSum, bool p_bCache) {
    const int nRet = setParameters(p_pKeyval, p_nKeyValSum, p_bCache);
    for (u32 i = m_nListStop; p_pKeyval != nullptr && i < p_nKeyValSum; ++i) {
        const u32 nKey = p_pKeyval[i].key;
        if (!isStoredOnlyKey(nKey) && nKey != KEY_SCHEME_MODE) {
            m_setPendingKeys.insert(nKey);
        }
    }
    return nRet;
}

// Walks the list in order; each record is compared with the cache, routed by
// its special cases (routeRecord), applied through its table row and stored.
// A refused record ends the list; the records before it stay applied.
int ISensorController::setParameters(KeyVal* p_pKeyval, u32 p_nKeyValSum, bool p_bCache) {
    m_nListStop = 0;
    sensordiag::requestMarkerCheck();
    if (p_pKeyval == nullptr && p_nKeyValSum != 0) {
        return SNS_FAILED;
    }
    // A key without a row of its own goes to the ISP as is, and for a record
    // command (the diagnostic record, the time record, ...) the ISP reads a
    // whole record: handlers get the value as the first word of room for any
    // record, never the 8-byte record in the caller's list.
    std::array<u32, ISP_RECORD_SCRATCH_WORDS> arrValue{};
    for (u32 i = 0; i < p_nKeyValSum; ++i) {
        m_nListStop = i;
        KeyVal& stRecord = p_pKeyval[i];
        if (p_bCache && isKeyValSame(stRecord)) {
            continue;
        }
        const RecordRoute stRoute = routeRecord(stRecord);
        if (stRoute.eAction == RecordAction::Skip) {
            clearPending(stRecord.key); // not for the ISP under the light type in force
            continue;
        }
        if (stRoute.eAction == RecordAction::Refuse) {
            return -static_cast<int>(stRecord.key);
        }
        if (stRoute.eAction == RecordAction::Apply) {
            const u32 nKey = stRoute.nApplyKey;
            // A known key is applied through its table row, read in place: the
            // names are read only when printed.
            const int nRow = m_pKeyCmdMap ? keyCmdRowOf(m_pKeyCmdMap.get(), nKey) : -1;
            keycmd stKeyCmdTmp; // filled only for an unknown key
            if (nRow < 0) {
                // An unknown key keeps the stand-in row and goes to the ISP as is.
                stKeyCmdTmp = unknownKeyRow(nKey);
                SNS_ASSERT(-1 != findFromKeyCmdMap(m_pKeyCmdMap, nKey, stKeyCmdTmp),
                           "p_pKeyval[%u].key(%u)", i, stRecord.key);
                SNS_PRINT(5, sensordiag::COLOUR_GREEN, "not find (%d) \n", static_cast<int>(nKey));
            }
            const keycmd& stRow = nRow < 0 ? stKeyCmdTmp : m_pKeyCmdMap[nRow];
            traceSet(stRow, stRecord.value);
            arrValue[0] = stRecord.value;
            const int nRet = (this->*stRow.func)(stRow.ia_cmd, IA_CMD_OPT_SET, arrValue.data());
            stRecord.value = arrValue[0];
            if (nRet != SNS_SUCCESS) {
                if (isReportedFailure(nRet)) {
                    SNS_ERR("set %.32s (%d,%d) func:%s ia_cmd:%d ~~~failed ia_ret=%d\n",
                            stRow.key_name, static_cast<int>(nKey),
                            static_cast<int>(stRecord.value), stRow.func_name,
                            static_cast<int>(stRow.ia_cmd), nRet);
                }
                return -static_cast<int>(nKey);
            }
            clearPending(nKey);
        }
        clearPending(stRecord.key);
        // Stored under the record's own key with the value its handler left.
        if (p_bCache && setKeyValToCache(static_cast<u32>(m_nCurScheme), stRecord.key,
                                         stRecord.value, false) == SNS_FAILED) {
            SNS_DBG("SET_KEY_VAL FAILED, m_nCurScheme(%d), p_pKeyval[%d].key(%d), "
                    "p_pKeyval[%d].value(%d),  maybe jixin\n",
                    m_nCurScheme, static_cast<int>(i), static_cast<int>(stRecord.key),
                    static_cast<int>(i), static_cast<int>(stRecord.value));
        }
    }
    m_nListStop = p_nKeyValSum;
    std::printf("\n");
    return SNS_SUCCESS;
}

// Every special case of the set loop, in the order in which they take
// precedence; a record that none of them claims is applied under its own key.
ISensorController::RecordRoute ISensorController::routeRecord(KeyVal& p_stRecord) {
    const RecordRoute stStore{RecordAction::Store, 0};
    // No ISP command is numbered 0: a record of key 0 (zeros of a damaged
    // set, a style control without a number) is never sent nor stored.
    if (p_stRecord.key == 0) {
        return {RecordAction::Skip, 0};
    }
    if (isStoredOnlyKey(p_stRecord.key)) {
        return stStore;
    }
    if (p_stRecord.key == KEY_SCHEME_MODE) {
        applySchemeModePolicy(p_stRecord.value);
        return stStore;
    }
    if (m_bIsThermal && routeThermalKey(p_stRecord)) {
        return stStore;
    }
    if (!isAppliedUnderDayNightPolicy(p_stRecord)) {
        return stStore;
    }
    // The light type is read for every record that gets this far, before the
    // infrared budget is looked at.
    const bool bIntelligentLight = isIntelligentLight();
    if (exceedsIrPowerBudget(p_stRecord)) {
        return {RecordAction::Refuse, 0};
    }
    return routeLightTypeTwin(p_stRecord, bIntelligentLight);
}

// KEY_SCHEME_MODE is the policy only in scheme 0, which hands it on to the
// other user schemes; the factory row keeps its own.
void ISensorController::applySchemeModePolicy(u32 p_nMode) {
    if (m_nCurScheme != 0) {
        return;
    }
    m_bSchemeByTime = p_nMode == 1;
    m_bSchemeByDN = p_nMode == 2;
    const u32 nPolicy = m_bSchemeByTime ? 1 : (m_bSchemeByDN ? 2 : 0);
    for (u32 s = 1; s < m_stSysConf.nSchemeSum; ++s) {
        setKeyValToCache(s, KEY_SCHEME_MODE, nPolicy, true);
    }
}

// On a thermal channel these keys go to their handler or to the video module
// directly; their failure does not end the list.
bool ISensorController::routeThermalKey(KeyVal& p_stRecord) {
    switch (p_stRecord.key) {
    case KEY_ANTI_SHAKE_SWITCH:
        doDIS(KEY_ANTI_SHAKE_SWITCH, IA_CMD_OPT_SET, &p_stRecord.value);
        return true;
    case KEY_MIRROR:
        doMirror(KEY_MIRROR, IA_CMD_OPT_SET, &p_stRecord.value);
        return true;
    case KEY_NONE_COLOR_MODE:
    case KEY_TEMPERATURE_STRIP_SWITCH:
        notifyToVideo(static_cast<int>(p_stRecord.key), static_cast<int>(p_stRecord.value));
        return true;
    default:
        return false;
    }
}

// Under the day/night policy scheme 0 owns the day/night keys: a change there
// is copied to the night scheme 1, and the night scheme only stores them.
bool ISensorController::isAppliedUnderDayNightPolicy(const KeyVal& p_stRecord) {
    if (!m_bSchemeByDN || !isDayNightKey(p_stRecord.key)) {
        return true;
    }
    if (m_nCurScheme != 0) {
        return false;
    }
    // Scheme 1 is copied only when it is a user scheme, never the factory row.
    if (m_stSysConf.nSchemeSum > 1) {
        setKeyValToCache(1, p_stRecord.key, p_stRecord.value, true);
    }
    return true;
}

bool ISensorController::exceedsIrPowerBudget(const KeyVal& p_stRecord) {
    const u32 nPartner = irBudgetPartner(p_stRecord.key);
    if (!m_bisLimitedIrPower || nPartner == 0) {
        return false;
    }
    int nVal = IR_PARTNER_UNKNOWN;
    u32 nStored = 0;
    if (getKeyValFromCache(static_cast<u32>(m_nCurScheme), nPartner, nStored) >= 0) {
        nVal = static_cast<int>(nStored);
    } else {
        nVal = readIrPartnerFromIsp(nPartner);
    }
    if (nVal == IR_PARTNER_UNKNOWN) {
        return false;
    }
    // Summed wide, so that a huge value cannot wrap round below the budget.
    return static_cast<std::uint64_t>(static_cast<u32>(nVal)) + p_stRecord.value > IR_POWER_BUDGET;
}

int ISensorController::readIrPartnerFromIsp(u32 p_nPartnerKey) {
    int nVal = IR_PARTNER_UNKNOWN;
    const bool bRead =
        SNS_CHECK_FOR("setParameters", SNS_SUCCESS == doIaCmd(p_nPartnerKey, IA_CMD_OPT_GET, &nVal),
                      "get key(%d) val from 2a err", static_cast<int>(p_nPartnerKey));
    std::printf("### %s doIaCmd %s\n", irBudgetKeyName(p_nPartnerKey), bRead ? "sucess" : "error");
    // Whatever a failed read left in the value, the partner stays unknown.
    return bRead ? nVal : IR_PARTNER_UNKNOWN;
}

bool ISensorController::isIntelligentLight() {
    u32 nLightType = 0;
    getKeyValFromCache(static_cast<u32>(m_nCurScheme), KEY_LIGHT_TYPE, nLightType);
    return nLightType == LIGHT_TYPE_INTELLIGENT;
}

// The ISP knows only the normal key of a pair. The pair member that does not
// belong to the light type in force is skipped; the other one is copied into
// its partner in the current set and applied under the normal key.
ISensorController::RecordRoute ISensorController::routeLightTypeTwin(const KeyVal& p_stRecord,
                                                                     bool p_bIntelligentLight) {
    const u32 nScheme = static_cast<u32>(m_nCurScheme);
    if (const TwinPair* pPair = findPairByNormal(p_stRecord.key)) {
        if (p_bIntelligentLight) {
            return {RecordAction::Skip, 0};
        }
        setKeyValToCache(nScheme, pPair->nTwin, p_stRecord.value, true);
        return {RecordAction::Apply, pPair->nNormal};
    }
    if (const TwinPair* pPair = findPairByTwin(p_stRecord.key)) {
        if (!p_bIntelligentLight) {
            return {RecordAction::Skip, 0};
        }
        setKeyValToCache(nScheme, pPair->nNormal, p_stRecord.value, true);
        return {RecordAction::Apply, pPair->nNormal};
    }
    return {RecordAction::Apply, p_stRecord.key};
}

int ISensorController::setParameter(int p_nKey, int p_nVal, bool p_bCache) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    SNS_DBG("p_Parameters22222222222(%d, %d)\n", p_nKey, p_nVal);
    KeyVal stKeyVal{static_cast<u32>(p_nKey), static_cast<u32>(p_nVal)};
    return setParameters(&stKeyVal, 1, p_bCache);
}

bool ISensorController::getParameter(int p_nKey, int& p_nVal) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    SNS_DBG("p_nKey(%d)\n", p_nKey);
    u32 nCached = 0;
    if (getKeyValFromCache(static_cast<u32>(m_nCurScheme), static_cast<u32>(p_nKey), nCached) >=
        0) {
        p_nVal = static_cast<int>(nCached);
        return true;
    }
    if (isInfraredKeyWithoutIspRead(p_nKey)) {
        p_nVal = -1;
        return true;
    }
    // The ISP answers a read of a record command (the diagnostic record, the
    // version text, ...) with the whole record, larger than the one value the
    // host asked for: it is read into room for any record, and the value is
    // the record's first word.
    std::array<int32_t, ISP_RECORD_SCRATCH_WORDS> arrRead{};
    const bool bRead =
        SNS_CHECK_TEXT(SNS_SUCCESS == doIaCmd(p_nKey, IA_CMD_OPT_GET, arrRead.data()),
                       "SNS_SUCCESS == doIaCmd(p_nKey, IA_CMD_OPT_GET, &p_nVal)",
                       "get key(%d) val from 2a err", p_nKey);
    if (bRead) {
        p_nVal = arrRead[0];
    }
    return bRead;
}

int ISensorController::notifyToVideo(int p_nKey, int p_nVal) {
    if (m_pVideoStreamModule == nullptr || deferVideoNotice(p_nKey, p_nVal)) {
        return SNS_SUCCESS;
    }
    // The dual-sensor device drives its video module through channel 1.
    const int nChannel =
        m_objMachineInfo.getDeviceType() == DeviceType::THERMAL_DOUBLE_SENSOR_DEVICE ? 1
                                                                                     : m_nCameraID;
    return m_pVideoStreamModule->notifyParamChange(nChannel, p_nKey, p_nVal);
}

void ISensorController::setVideoStreamModule(const VideoStreamModule* p_pVideoStreamModule) {
    m_pVideoStreamModule = p_pVideoStreamModule;
}

// Part of the host interface; the module has nothing to print here.
void ISensorController::printDebugMsg() {}
