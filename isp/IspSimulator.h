// The ISP simulator: a stand-in for the ISP adaptation library that behaves
// like a sensor. ia_ioctrl_v2 (defined by this library) forwards every call to
// the process-wide instance; tests and tools drive the same instance through
// the members below. Every member is safe to call from any thread.
#pragma once

#include "isp/IspProfile.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class IspSimulator {
public:
    // Results of ioctrl besides 0 (success) and injected failure codes.
    static constexpr int ERR_INVALID = -1;       // null data, unknown option, bad channel
    static constexpr int ERR_NOT_DYNAMIC = -2;   // range asked for a command that has none
    static constexpr int ERR_BAD_ATTRIBUTE = -3; // range with min above max cannot correct
    // SET with a value outside the command's range: its items or min..max
    // when it is dynamic, else the bounds its profile Command gives. Refused
    // and not stored, as a sensor's ISP library does.
    static constexpr int ERR_OUT_OF_RANGE = -4;
    static constexpr int DAY_NIGHT_STATE_CMD = 153;
    // The log keeps the most recent calls only, so a long-running tool does
    // not grow without bound.
    static constexpr std::size_t kLogCapacity = 65536;

    struct LogEntry {
        int channel = 0;
        uint32_t cmd = 0;
        int option = 0;
        int32_t value = 0;          // for 32-bit data: the value after the call
        std::vector<uint8_t> bytes; // for record data: the record after the call
        int result = 0;
    };

    // The instance ia_ioctrl_v2 uses. At first use it loads the profile named
    // by SENSOR_ISP_PROFILE (a host path), or the built-in one.
    static IspSimulator& instance();

    // A separate simulator, chosen the same way as the first instance's.
    IspSimulator();
    IspSimulator(const IspSimulator&) = delete;
    IspSimulator& operator=(const IspSimulator&) = delete;

    // The body of ia_ioctrl_v2.
    int ioctrl(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData);

    // Back to the loaded profile's initial state: values, records, dynamic
    // answers, light levels and exec statuses; failures and log cleared,
    // logging enabled.
    void reset();
    // Replace the profile and reset. On failure nothing changes and the fault
    // is described in *p_pError when given.
    bool loadProfile(const std::string& p_strHostPath, std::string* p_pError = nullptr);
    bool loadProfileText(const std::string& p_strXml, std::string* p_pError = nullptr);
    void loadDefaultProfile();
    std::string profileName() const;

    // Values of commands that move one 32-bit value. Record commands and bad
    // channels are refused (false / nothing).
    bool setValue(int p_nChannel, uint32_t p_nCmd, int32_t p_nValue);
    std::optional<int32_t> getValue(int p_nChannel, uint32_t p_nCmd) const;
    // Records of record commands; the size must be the command's record size.
    bool setRecord(int p_nChannel, uint32_t p_nCmd, const std::vector<uint8_t>& p_vecData);
    // Empty for a bad channel or a command that is not a record command.
    std::vector<uint8_t> getRecord(int p_nChannel, uint32_t p_nCmd) const;

    // The members below take channel -1 for every channel.

    // Calls matching channel, command and option (-1: any channel or option)
    // return p_nCode (non-zero) and leave the data untouched; the first rule
    // added that matches applies.
    bool failCommand(int p_nChannel, uint32_t p_nCmd, int p_nOption, int p_nCode);
    void clearFailures();

    // The light level the day/night state follows with hysteresis.
    bool setLightLevel(int p_nChannel, int32_t p_nLevel);
    bool setExecStatus(int p_nChannel, uint32_t p_nCmd, int32_t p_nStatus);

    // Replace the answers about dynamic commands directly. Counts beyond the
    // records' capacity are reported as set, but only what fits is copied.
    bool setDynamicCommands(int p_nChannel, const std::vector<uint32_t>& p_vecCmds);
    bool setAttribute(int p_nChannel, uint32_t p_nCmd, const ia_dynamic_params_attr_st& p_stAttr);

    std::vector<LogEntry> log() const;
    void clearLog();
    void enableLog(bool p_bEnable);

    // Called after every call (channel, command, option), on the caller's
    // thread and outside the simulator's lock, so that a test can act in the
    // middle of an operation of the module; empty removes it.
    using CallHook = std::function<void(int, uint32_t, int)>;
    void setCallHook(CallHook p_fnHook);

private:
    // Each channel's state and lock on lines of their own: threads on
    // different channels share no cache line.
    struct alignas(64) ChannelState {
        std::unordered_map<uint32_t, int32_t> values;
        std::unordered_map<uint32_t, std::vector<uint8_t>> records;
        std::vector<uint32_t> dynamicList;
        std::map<uint32_t, ia_dynamic_params_attr_st> attributes;
        std::map<uint32_t, isp::IspBounds> bounds;
        std::unordered_map<uint32_t, int32_t> execStatus;
        isp::IspDayNight dayNight;
    };
    struct FailRule {
        int channel;
        uint32_t cmd;
        int option;
        int code;
    };

    static bool validChannel(int p_nChannel) {
        return p_nChannel >= 0 && p_nChannel < isp::kChannelCount;
    }
    // A call with data, a known option and a channel the sensor has.
    static bool wellFormed(int p_nChannel, uint32_t p_nCmd, int p_nOption, const void* p_pData);
    template <typename Fn> bool forChannels(int p_nChannel, Fn p_fnApply);

    // Holds the shared lock and every channel's, in that order (the order of
    // every call that takes both), for what replaces all the state.
    class AllLocked {
    public:
        explicit AllLocked(IspSimulator& p_objSim);

    private:
        std::lock_guard<std::mutex> m_objShared;
        std::array<std::unique_lock<std::mutex>, isp::kChannelCount> m_arrChannels;
    };

    void resetLocked();
    // Whether a call must consult what the channels share; updated under
    // m_objMutex whenever a rule, the log switch or the hook changes.
    void noteShared();
    // Reads a profile with p_fnRead and, when it reads, makes it the one in force.
    template <typename Fn> bool installProfile(std::string* p_pError, Fn p_fnRead) {
        isp::IspProfile stProfile;
        std::string strError;
        if (!p_fnRead(stProfile, strError)) {
            if (p_pError != nullptr) {
                *p_pError = strError;
            }
            return false;
        }
        const AllLocked objLock(*this);
        m_stProfile = std::move(stProfile);
        resetLocked();
        return true;
    }
    void resetChannel(int p_nChannel);
    static void followLight(ChannelState& p_stChannel);

    int ioctrlShared(int p_nChannel, uint32_t p_nCmd, int p_nOption, void* p_pData,
                     CallHook& p_fnHook);
    int dispatch(ChannelState& p_stChannel, uint32_t p_nCmd, int p_nOption, void* p_pData);
    int doSet(ChannelState& p_stChannel, uint32_t p_nCmd, const void* p_pData);
    static bool allowed(const ChannelState& p_stChannel, uint32_t p_nCmd, int32_t p_nValue);
    int doGet(ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const;
    int doRange(const ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const;
    int doCorrect(const ChannelState& p_stChannel, uint32_t p_nCmd, void* p_pData) const;
    const FailRule* findFailure(int p_nChannel, uint32_t p_nCmd, int p_nOption) const;
    void record(LogEntry p_stEntry, const void* p_pData, std::size_t p_nSize);

    // Calls on different channels do not wait for each other, as a real ISP's
    // pipelines do not: each channel's state has a lock of its own. What the
    // channels share (profile, failure rules, log, hook) is under m_objMutex,
    // which a call takes, before its channel's, only while one of them is in
    // use (m_bShared).
    mutable std::mutex m_objMutex;
    struct alignas(64) ChannelMutex : std::mutex {};
    mutable std::array<ChannelMutex, isp::kChannelCount> m_arrChannelMutex;
    std::atomic<bool> m_bShared{true};
    isp::IspProfile m_stProfile;
    std::array<ChannelState, isp::kChannelCount> m_arrChannels;
    std::vector<FailRule> m_vecFailures;
    std::deque<LogEntry> m_deqLog;
    bool m_bLogEnabled = true;
    CallHook m_fnCallHook;
};
