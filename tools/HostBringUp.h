// The host's start-up shared by sensorctl and sensord: the working device root
// (a copy of a sample device or a directory), the device root in force, the
// ISP simulator's profile, the tool clock, and the channels brought up on it.
// Taking it down releases the channels before the clock goes.
#pragma once

#include <memory>
#include <string>

#include "tools/ChannelHost.h"
#include "tools/DeviceWorkspace.h"
#include "tools/SimulatorControl.h"
#include "tools/ToolClock.h"

class HostBringUp {
public:
    HostBringUp(const std::string& p_strDevice, const std::string& p_strRoot);
    ~HostBringUp();
    HostBringUp(const HostBringUp&) = delete;
    HostBringUp& operator=(const HostBringUp&) = delete;

    // Prepares the working root, puts it in force and loads the simulator's
    // profile. False with a message when the device or the root is unusable.
    bool prepareRoot(bool p_bFresh, std::string& p_strError);
    // Installs the clock and brings the channels up. False with a message.
    bool bringUpChannels(std::string& p_strError);

    DeviceWorkspace& workspace() { return m_objWorkspace; }
    SimulatorControl& simulator() { return m_objSimulator; }
    ToolClock& clock() { return *m_pClock; }
    ChannelHost& host() { return *m_pHost; }

private:
    DeviceWorkspace m_objWorkspace;
    SimulatorControl m_objSimulator;
    std::shared_ptr<ToolClock> m_pClock;
    std::unique_ptr<ChannelHost> m_pHost;
};
