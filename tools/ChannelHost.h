// The channels of the simulated host: brought up in the order a camera's host
// does it (construct, setChannelID, setVideoStreamModule, init), one per
// matching module of the device's module configuration (at most two), and
// taken down again (uinit) when the host ends.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "controller/ISensorController.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigure.h"
#include "tools/ConsoleVideoModule.h"

class ToolClock;

class ChannelHost {
public:
    static constexpr size_t MAX_CHANNELS = 2;

    ChannelHost() = default;
    ~ChannelHost();
    ChannelHost(const ChannelHost&) = delete;
    ChannelHost& operator=(const ChannelHost&) = delete;

    // Reads the machine description and module configuration under the
    // device root in force and brings the channels up. False with a message
    // when the device describes no channel.
    bool bringUp(ToolClock& p_objClock, std::string& p_strError);
    void takeDown();

    size_t count() const { return m_vecChannels.size(); }
    // Channel 1 is index 0.
    ISensorController& channel(size_t p_nIndex) { return *m_vecChannels[p_nIndex]; }
    const ModuleConfigure& module(size_t p_nIndex) const { return m_vecModules[p_nIndex]; }
    const MachineInfo& machine() const { return m_objMachine; }

private:
    MachineInfo m_objMachine;
    std::vector<ModuleConfigure> m_vecModules;
    ConsoleVideoModule m_objVideo;
    std::vector<std::unique_ptr<ISensorController>> m_vecChannels;
};
