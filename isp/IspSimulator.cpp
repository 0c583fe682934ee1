#include "isp/IspSimulator.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr std::size_t kValueSize = sizeof(int32_t);

bool validOption(int p_nOption) {
    return p_nOption >= IA_CMD_OPT_SET && p_nOption <= IA_CMD_OPT_GET_EXEC_STATUS;
}

// How many bytes a well-formed call moves through its data pointer.
std::size_t dataSize(uint32_t p_nCmd, int p_nOption) {
    if (p_nCmd == IA_CMD_DYNAMIC_PARAMS_CMDS_GET) {
        return sizeof(ia_dynamic_cmd_list_st);
    }
    if (p_nOption == IA_CMD_OPT_GET_PARAM_RNAGE) {
        return sizeof(ia_dynamic_params_attr_st);
    }
    if (p_nOption == IA_CMD_OPT_SET || p_nOption == IA_CMD_OPT_GET) {
        const std::size_t nRecord = isp::recordSize(p_nCmd);
        return nRecord != 0 ? nRecord : kValueSize;
    }
    return kValueSize;
}

int32_t readValue(const void* p_pData) {
    int32_t nValue = 0;
    std::memcpy(&nValue, p_pData, sizeof(nValue));
    return nValue;
}

void writeValue(void* p_pData, int32_t p_nValue) {
    std::memcpy(p_pData, &p_nValue, sizeof(p_nValue));
}

// The allowed item closest to the value; on a tie the lower item.
int32_t nearestItem(const ia_dynamic_params_attr_st& p_stAttr, int nCount, int32_t p_nValue) {
    int32_t nBest = p_stAttr.item[0];
    int64_t nBestDist = std::llabs(int64_t{nBest} - p_nValue);
    for (int i = 1; i < nCount; ++i) {
        const int32_t nItem = p_stAttr.item[i];
        const int64_t nDist = std::llabs(int64_t{nItem} - p_nValue);
        if (nDist < nBestDist || (nDist == nBestDist && nItem < nBest)) {
            nBest = nItem;
            nBestDist = nDist;
        }
    }
    return nBest;
}

isp::IspProfile startProfile() {
    const char* szPath = std::getenv("SENSOR_ISP_PROFILE");
    if (szPath == nullptr || *szPath == '\0') {
        return isp::defaultProfile();
    }
    isp::IspProfile stProfile;
    std::string strError;
    if (!isp::loadProfileFile(szPath, stProfile, strError)) {
        // A broken profile must not take the process down: say so and carry
        // on with the built-in sensor.
        std::fprintf(stderr, "isp_sim: %s; using the built-in profile\n", strError.c_str());
        return isp::defaultProfile();
    }
    return stProfile;
}

} // namespace

IspSimulator& IspSimulator::instance() {
    static IspSimulator s_objInstance;
    return s_objInstance;
}

IspSimulator::IspSimulator() : m_stProfile(startProfile()) {
    resetLocked();
}

IspSimulator::AllLocked::AllLocked(IspSimulator& p_objSim) : m_objShared(p_objSim.m_objMutex) {
    for (std::size_t i = 0; i < m_arrChannels.size(); ++i) {
        m_arrChannels[i] = std::unique_lock<std::mutex>(p_objSim.m_arrChannelMutex[i]);
    }
}

template <typename Fn> bool IspSimulator::forChannels(int p_nChannel, Fn p_fnApply) {
    if (p_nChannel != -1 && !validChannel(p_nChannel)) {
        return false;
    }
    const int nFirst = p_nChannel == -1 ? 0 : p_nChannel;
    const int nLast = p_nChannel == -1 ? isp::kChannelCount - 1 : p_nChannel;
    for (int nChannel = nFirst; nChannel <= nLast; ++nChannel) {
        std::lock_guard<std::mutex> objLock(m_arrChannelMutex[nChannel]);
        p_fnApply(m_arrChannels[nChannel]);
    }
    return true;
}

void IspSimulator::noteShared() {
    m_bShared.store(m_bLogEnabled || !m_vecFailures.empty() || static_cast<bool>(m_fnCallHook),
                    std::memory_order_release);
}

// ---- the ISP call ----

bool IspSimulator::wellFormed(int p_nChannel, uint32_t p_nCmd, int p_nOption, const void* p_pData) {
    return p_pData != nullptr && validOption(p_nOption) && validChannel(p_nChannel) &&
           (p_nCmd != IA_CMD_DYNAMIC_PARAMS_CMDS_GET || p_nOption == IA_CMD_OPT_GET);
}

int IspSimulator::ioctrl(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData) {
    if (!m_bShared.load(std::memory_order_acquire)) {
        if (!wellFormed(p_nChannel, p_nCmd, p_nOption, p_pData)) {
            return ERR_INVALID;
        }
        std::lock_guard<std::mutex> objLock(m_arrChannelMutex[p_nChannel]);
        return dispatch(m_arrChannels[p_nChannel], p_nCmd, p_nOption, p_pData);
    }
    CallHook fnHook;
    const int nResult = ioctrlShared(p_nChannel, p_nCmd, p_nOption, p_pData, fnHook);
    if (fnHook) {
        fnHook(p_nChannel, p_nCmd, p_nOption);
    }
    return nResult;
}

void IspSimulator::setCallHook(CallHook p_fnHook) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_fnCallHook = std::move(p_fnHook);
    noteShared();
}

int IspSimulator::ioctrlShared(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData,
                               CallHook& p_fnHook) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    p_fnHook = m_fnCallHook;
    LogEntry stEntry{p_nChannel, p_nCmd, p_nOption, 0, {}, ERR_INVALID};
    // A call with no data, an unknown option or a channel the sensor lacks is
    // refused before anything is read through the pointer.
    if (!wellFormed(p_nChannel, p_nCmd, p_nOption, p_pData)) {
        record(std::move(stEntry), nullptr, 0);
        return ERR_INVALID;
    }
    if (const FailRule* pRule = findFailure(p_nChannel, p_nCmd, p_nOption)) {
        stEntry.result = pRule->code;
    } else {
        std::lock_guard<std::mutex> objChannelLock(m_arrChannelMutex[p_nChannel]);
        stEntry.result = dispatch(m_arrChannels[p_nChannel], p_nCmd, p_nOption, p_pData);
    }
    const int nResult = stEntry.result;
    record(std::move(stEntry), p_pData, dataSize(p_nCmd, p_nOption));
    return nResult;
}

int IspSimulator::dispatch(ChannelState& p_stChannel, uint32_t p_nCmd, int p_nOption,
                           void* p_pData) {
    switch (p_nOption) {
    case IA_CMD_OPT_SET:
        return doSet(p_stChannel, p_nCmd, p_pData);
    case IA_CMD_OPT_GET:
        return doGet(p_stChannel, p_nCmd, p_pData);
    case IA_CMD_OPT_GET_PARAM_RNAGE:
        return doRange(p_stChannel, p_nCmd, p_pData);
    case IA_CMD_OPT_CORRECT_PARAM:
        return doCorrect(p_stChannel, p_nCmd, p_pData);
    default: { // IA_CMD_OPT_GET_EXEC_STATUS; other options were refused before.
        const auto it = p_stChannel.execStatus.find(p_nCmd);
        writeValue(p_pData, it != p_stChannel.execStatus.end() ? it->second : 0);
        return 0;
    }
    }
}

int IspSimulator::doSet(ChannelState& p_stChannel, uint32_t p_nCmd, const void* p_pData) {
    const std::size_t nRecord = isp::recordSize(p_nCmd);
    if (nRecord != 0) {
        const auto* pBytes = static_cast<const uint8_t*>(p_pData);
        p_stChannel.records[p_nCmd].assign(pBytes, pBytes + nRecord);
    } else {
        const int32_t nValue = readValue(p_pData);
        if (!allowed(p_stChannel, p_nCmd, nValue)) {
            return ERR_OUT_OF_RANGE;
        }
        // Writing the day/night state forces it; the light level moves it
        // again only when it crosses a threshold later.
        p_stChannel.values[p_nCmd] = nValue;
    }
    return 0;
}

bool IspSimulator::allowed(const ChannelState& p_stChannel, uint32_t p_nCmd, int32_t p_nValue) {
    const auto it = p_stChannel.attributes.find(p_nCmd);
    if (it == p_stChannel.attributes.end()) {
        const auto itBounds = p_stChannel.bounds.find(p_nCmd);
        return itBounds == p_stChannel.bounds.end() || itBounds->second.allows(p_nValue);
    }
    const ia_dynamic_params_attr_st& stAttr = it->second;
    if (stAttr.param_type != 0) {
        return p_nValue >= stAttr.min_val && p_nValue <= stAttr.max_val;
    }
    // An empty list (set by an override) gives nothing to hold a value to.
    const int nCount = std::clamp<int32_t>(stAttr.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
    return nCount == 0 ||
           std::find(stAttr.item, stAttr.item + nCount, p_nValue) != stAttr.item + nCount;
}

int IspSimulator::doGet(ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const {
    if (p_nCmd == IA_CMD_DYNAMIC_PARAMS_CMDS_GET) {
        ia_dynamic_cmd_list_st stList{};
        const std::size_t nCount = p_stChannel.dynamicList.size();
        stList.cmd_cnt = static_cast<int32_t>(
            std::min<std::size_t>(nCount, std::numeric_limits<int32_t>::max()));
        std::copy_n(p_stChannel.dynamicList.begin(),
                    std::min<std::size_t>(nCount, IA_DYNAMIC_CMD_MAX), stList.cmd_list);
        std::memcpy(p_pData, &stList, sizeof(stList));
        return 0;
    }
    const std::size_t nRecord = isp::recordSize(p_nCmd);
    if (nRecord != 0) {
        const auto it = p_stChannel.records.find(p_nCmd);
        if (it != p_stChannel.records.end()) {
            std::memcpy(p_pData, it->second.data(), nRecord);
        } else {
            std::memset(p_pData, 0, nRecord);
        }
        return 0;
    }
    const auto it = p_stChannel.values.find(p_nCmd);
    writeValue(p_pData, it != p_stChannel.values.end() ? it->second : 0);
    return 0;
}

int IspSimulator::doRange(const ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const {
    const auto it = p_stChannel.attributes.find(p_nCmd);
    if (it == p_stChannel.attributes.end()) {
        return ERR_NOT_DYNAMIC;
    }
    std::memcpy(p_pData, &it->second, sizeof(it->second));
    return 0;
}

int IspSimulator::doCorrect(const ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const {
    const auto it = p_stChannel.attributes.find(p_nCmd);
    if (it == p_stChannel.attributes.end()) {
        return 0; // not dynamic: every value is allowed
    }
    const ia_dynamic_params_attr_st& stAttr = it->second;
    const int32_t nValue = readValue(p_pData);
    if (stAttr.param_type == 0) {
        // A count set beyond the record (by an override) is read as the record's capacity.
        const int nCount = std::clamp<int32_t>(stAttr.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
        // An empty list allows nothing to choose from; the value is left as it is.
        if (nCount > 0) {
            writeValue(p_pData, nearestItem(stAttr, nCount, nValue));
        }
        return 0;
    }
    if (stAttr.min_val > stAttr.max_val) {
        return ERR_BAD_ATTRIBUTE;
    }
    writeValue(p_pData, std::clamp(nValue, stAttr.min_val, stAttr.max_val));
    return 0;
}

const IspSimulator::FailRule* IspSimulator::findFailure(int p_nChannel, uint32_t p_nCmd,
                                                        int p_nOption) const {
    for (const FailRule& stRule : m_vecFailures) {
        if ((stRule.channel == -1 || stRule.channel == p_nChannel) && stRule.cmd == p_nCmd &&
            (stRule.option == -1 || stRule.option == p_nOption)) {
            return &stRule;
        }
    }
    return nullptr;
}

void IspSimulator::record(LogEntry p_stEntry, const void* p_pData, std::size_t p_nSize) {
    if (!m_bLogEnabled) {
        return;
    }
    if (p_pData != nullptr) {
        // No record is four bytes long, so four bytes always mean one value.
        if (p_nSize == kValueSize) {
            p_stEntry.value = readValue(p_pData);
        } else {
            const auto* pBytes = static_cast<const uint8_t*>(p_pData);
            p_stEntry.bytes.assign(pBytes, pBytes + p_nSize);
        }
    }
    m_deqLog.push_back(std::move(p_stEntry));
    if (m_deqLog.size() > kLogCapacity) {
        m_deqLog.pop_front();
    }
}

// ---- state ----

void IspSimulator::followLight(ChannelState& p_stChannel) {
    int32_t& nState = p_stChannel.values[DAY_NIGHT_STATE_CMD];
    const isp::IspDayNight& stDn = p_stChannel.dayNight;
    if (nState == 0 && stDn.level <= stDn.nightThreshold) {
        nState = 1;
    } else if (nState != 0 && stDn.level >= stDn.dayThreshold) {
        nState = 0;
    }
}

void IspSimulator::resetChannel(int p_nChannel) {
    const isp::IspChannelProfile stOwn = m_stProfile.forChannel(p_nChannel);
    ChannelState stChannel;
    stChannel.values.insert(stOwn.values.begin(), stOwn.values.end());
    stChannel.records.insert(stOwn.records.begin(), stOwn.records.end());
    stChannel.bounds = stOwn.bounds;
    for (const isp::IspDynamic& stDyn : stOwn.dynamics) {
        stChannel.dynamicList.push_back(stDyn.cmd);
        stChannel.attributes[stDyn.cmd] = stDyn.attr;
        // A dynamic command the profile gives no value starts at its default.
        stChannel.values.emplace(stDyn.cmd, stDyn.attr.default_val);
    }
    stChannel.dayNight = stOwn.dayNight.value_or(isp::IspDayNight{});
    followLight(stChannel);
    m_arrChannels[p_nChannel] = std::move(stChannel);
}

void IspSimulator::resetLocked() {
    for (int nChannel = 0; nChannel < isp::kChannelCount; ++nChannel) {
        resetChannel(nChannel);
    }
    m_vecFailures.clear();
    m_deqLog.clear();
    m_bLogEnabled = true;
    m_fnCallHook = nullptr;
    noteShared();
}

void IspSimulator::reset() {
    const AllLocked objLock(*this);
    resetLocked();
}

bool IspSimulator::loadProfile(const std::string& p_strHostPath, std::string* p_pError) {
    return installProfile(p_pError, [&](isp::IspProfile& p_stProfile, std::string& p_strError) {
        return isp::loadProfileFile(p_strHostPath, p_stProfile, p_strError);
    });
}

bool IspSimulator::loadProfileText(const std::string& p_strXml, std::string* p_pError) {
    return installProfile(p_pError, [&](isp::IspProfile& p_stProfile, std::string& p_strError) {
        return isp::parseProfile(p_strXml, p_stProfile, p_strError);
    });
}

void IspSimulator::loadDefaultProfile() {
    isp::IspProfile stProfile = isp::defaultProfile();
    const AllLocked objLock(*this);
    m_stProfile = std::move(stProfile);
    resetLocked();
}

std::string IspSimulator::profileName() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_stProfile.name;
}

// ---- direct access for tests and tools ----

bool IspSimulator::setValue(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue) {
    if (!validChannel(p_nChannel) || isp::recordSize(p_nCmd) != 0) {
        return false;
    }
    std::lock_guard<std::mutex> objLock(m_arrChannelMutex[p_nChannel]);
    m_arrChannels[p_nChannel].values[p_nCmd] = p_nValue;
    return true;
}

std::optional<int32_t> IspSimulator::getValue(int p_nChannel, uint32_t p_nCmd) const {
    if (!validChannel(p_nChannel) || isp::recordSize(p_nCmd) != 0) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> objLock(m_arrChannelMutex[p_nChannel]);
    const auto& mapValues = m_arrChannels[p_nChannel].values;
    const auto it = mapValues.find(p_nCmd);
    return it != mapValues.end() ? it->second : 0;
}

bool IspSimulator::setRecord(int p_nChannel, uint32_t p_nCmd,
                             const std::vector<uint8_t>& p_vecData) {
    const std::size_t nRecord = isp::recordSize(p_nCmd);
    if (!validChannel(p_nChannel) || nRecord == 0 || p_vecData.size() != nRecord) {
        return false;
    }
    std::lock_guard<std::mutex> objLock(m_arrChannelMutex[p_nChannel]);
    m_arrChannels[p_nChannel].records[p_nCmd] = p_vecData;
    return true;
}

std::vector<uint8_t> IspSimulator::getRecord(int p_nChannel, uint32_t p_nCmd) const {
    const std::size_t nRecord = isp::recordSize(p_nCmd);
    if (!validChannel(p_nChannel) || nRecord == 0) {
        return {};
    }
    std::lock_guard<std::mutex> objLock(m_arrChannelMutex[p_nChannel]);
    const auto& mapRecords = m_arrChannels[p_nChannel].records;
    const auto it = mapRecords.find(p_nCmd);
    return it != mapRecords.end() ? it->second : std::vector<uint8_t>(nRecord, 0);
}

bool IspSimulator::failCommand(int p_nChannel, uint32_t p_nCmd, int p_nOption, int p_nCode) {
    const bool bChannelOk = p_nChannel == -1 || validChannel(p_nChannel);
    const bool bOptionOk = p_nOption == -1 || validOption(p_nOption);
    if (!bChannelOk || !bOptionOk || p_nCode == 0) {
        return false;
    }
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_vecFailures.push_back({p_nChannel, p_nCmd, p_nOption, p_nCode});
    noteShared();
    return true;
}

void IspSimulator::clearFailures() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_vecFailures.clear();
    noteShared();
}

bool IspSimulator::setLightLevel(int p_nChannel, int32_t p_nLevel) {
    return forChannels(p_nChannel, [p_nLevel](ChannelState& stChannel) {
        stChannel.dayNight.level = p_nLevel;
        followLight(stChannel);
    });
}

bool IspSimulator::setExecStatus(int p_nChannel, uint32_t p_nCmd, int32_t p_nStatus) {
    return forChannels(p_nChannel, [p_nCmd, p_nStatus](ChannelState& stChannel) {
        stChannel.execStatus[p_nCmd] = p_nStatus;
    });
}

bool IspSimulator::setDynamicCommands(int p_nChannel, const std::vector<uint32_t>& p_vecCmds) {
    return forChannels(
        p_nChannel, [&p_vecCmds](ChannelState& stChannel) { stChannel.dynamicList = p_vecCmds; });
}

bool IspSimulator::setAttribute(int p_nChannel, uint32_t p_nCmd,
                                const ia_dynamic_params_attr_st& p_stAttr) {
    return forChannels(p_nChannel, [p_nCmd, &p_stAttr](ChannelState& stChannel) {
        stChannel.attributes[p_nCmd] = p_stAttr;
    });
}

std::vector<IspSimulator::LogEntry> IspSimulator::log() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return {m_deqLog.begin(), m_deqLog.end()};
}

void IspSimulator::clearLog() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_deqLog.clear();
}

void IspSimulator::enableLog(bool p_bEnable) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_bLogEnabled = p_bEnable;
    noteShared();
}
