// The channels as sensord's two doors use them. Every call takes the channel's
// own lock, so requests from many connections reach a channel one at a time
// (the module's lock covers single calls, not a check followed by a write),
// while the sensor thread goes on switching schemes as on a camera.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "tools/StyleTree.h"

class ChannelHost;
class ToolClock;

namespace sensord {

struct ChannelState {
    int nScheme = 0;
    int nMode = 0;   // 1: the sensor thread switches schemes by the policy
    int nPolicy = 0; // KEY_SCHEME_MODE of scheme 0: 0 none, 1 by time, 2 by day/night
    int nSchemeSum = 0;
    bool bThermal = false;
    bool bUp = false;
};

struct WriteOutcome {
    enum class Kind { Stored, Corrected, Refused, Unknown };
    Kind eKind = Kind::Refused;
    int nStored = 0;
    std::string strWhy; // for people: why refused, or what was corrected
};

class ChannelService {
public:
    ChannelService(ChannelHost& p_objHost, ToolClock& p_objClock);

    int count() const;
    // Channels are numbered from 1, as the host numbers them.
    bool exists(int p_nChannel) const { return p_nChannel >= 1 && p_nChannel <= count(); }

    ChannelState state(int p_nChannel);
    // The channel's pruned style, read once and again after a reset.
    std::shared_ptr<const StyleTree> style(int p_nChannel);
    bool read(int p_nChannel, u32 p_nKey, int& p_nValue);
    // One value, checked against the style's control first.
    WriteOutcome write(int p_nChannel, u32 p_nKey, int p_nValue);
    // Several values, all or none: each is checked first; when the module
    // refuses one, those already written are put back.
    bool writeAll(int p_nChannel, const std::vector<KeyVal>& p_vecValues, std::string& p_strWhy);
    bool flush(int p_nChannel, std::string& p_strWhy);
    // 0 .. scheme count - 1 are the user schemes; the scheme count is the factory set.
    bool setScheme(int p_nChannel, int p_nScheme, std::string& p_strWhy);
    void reset(int p_nChannel);
    // The ISP's list of allowed values of a range-capable key; empty when it has none.
    std::vector<int> ispItems(int p_nChannel, u32 p_nKey);

    // The focus lens: absolute position, steps toward far or near.
    bool setFocus(int p_nChannel, int p_nPosition);
    bool stepFocus(int p_nChannel, bool p_bFar, int p_nSteps);
    bool focusPosition(int p_nChannel, int& p_nPosition);

    // "" when the style's control allows the value, else why not.
    static std::string checkValue(const StyleControl& p_stControl, int p_nValue);

private:
    std::mutex& lockOf(int p_nChannel) { return m_arrLocks[static_cast<size_t>(p_nChannel - 1)]; }
    std::shared_ptr<const StyleTree> styleLocked(int p_nChannel);

    ChannelHost& m_objHost;
    ToolClock& m_objClock;
    std::array<std::mutex, 2> m_arrLocks;
    std::array<std::shared_ptr<const StyleTree>, 2> m_arrStyles;
};

} // namespace sensord
