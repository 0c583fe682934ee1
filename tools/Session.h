// One sensorctl session: the channels, the clock and the simulator it drives,
// the channel the commands act on, and the readers that turn typed arguments
// into values or say precisely what was wrong with them.
#pragma once

#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "tools/StyleTree.h"

class ChannelHost;
class CommandLine;
class DeviceWorkspace;
class ISensorController;
class SimulatorControl;
class ToolClock;

class Session {
public:
    Session(ChannelHost& p_objHost, ToolClock& p_objClock, SimulatorControl& p_objSimulator,
            const DeviceWorkspace& p_objWorkspace);

    // Carries out one line; false when it failed (the error has been shown).
    bool execute(const std::string& p_strLine);

    ChannelHost& host() { return m_objHost; }
    ToolClock& clock() { return m_objClock; }
    SimulatorControl& simulator() { return m_objSimulator; }
    const DeviceWorkspace& workspace() const { return m_objWorkspace; }

    ISensorController& controller();
    // 1-based, as the host numbers channels.
    int channelNumber() const { return static_cast<int>(m_nChannel) + 1; }
    // The ISP channel of the current channel (its camera id - 1).
    int ispChannel();
    bool selectChannel(int p_nNumber);

    // The current channel's pruned style, read once and kept: reading it makes
    // the module prune it afresh, which is noisy and never changes within a
    // session except through a reset.
    const StyleTree& style();
    // The keys of the channel's parameter sets, in set order (read from its
    // first scheme file, which init writes from the factory set). They can
    // differ from the style's: the style is pruned again on every read.
    const std::vector<u32>& schemeKeys();
    bool isSchemeKey(u32 p_nKey);
    // Forget both after a reset.
    void forgetStyle();

    void requestQuit() { m_bQuit = true; }
    bool quitRequested() const { return m_bQuit; }

    // Argument readers: false after saying what was wrong.
    bool intArg(const CommandLine& p_objLine, size_t p_nIndex, const char* p_szWhat, int& p_nOut);
    bool keyArg(const CommandLine& p_objLine, size_t p_nIndex, u32& p_nKey);
    bool switchArg(const CommandLine& p_objLine, size_t p_nIndex, bool& p_bOn);

    // "scheme 0", "factory set" for the scheme index.
    std::string schemeLabel(int p_nScheme);
    // "scheme 0, mode auto, policy by day/night"
    std::string schemeSummary();

private:
    ChannelHost& m_objHost;
    ToolClock& m_objClock;
    SimulatorControl& m_objSimulator;
    const DeviceWorkspace& m_objWorkspace;
    size_t m_nChannel = 0;
    // Per channel, read on first use.
    std::vector<StyleTree> m_vecStyles;
    std::vector<bool> m_vecStyleRead;
    std::vector<std::vector<u32>> m_vecSchemeKeys;
    bool m_bQuit = false;
};
