#include "tools/HostBringUp.h"

#include <cstdlib>

#include "isp/IspSimulator.h"
#include "platform/DeviceRoot.h"

HostBringUp::HostBringUp(const std::string& p_strDevice, const std::string& p_strRoot)
    : m_objWorkspace(p_strDevice, p_strRoot), m_objSimulator(IspSimulator::instance()),
      m_pClock(std::make_shared<ToolClock>()) {}

HostBringUp::~HostBringUp() {
    if (m_pHost) {
        m_pHost.reset(); // uinit of every channel, while the clock still runs
        installClock(nullptr);
    }
}

bool HostBringUp::prepareRoot(bool p_bFresh, std::string& p_strError) {
    if (!m_objWorkspace.prepare(p_bFresh, p_strError)) {
        return false;
    }
    setenv("SENSOR_DEVICE_ROOT", m_objWorkspace.root().c_str(), 1);
    DeviceRoot::set(m_objWorkspace.root());
    return m_objSimulator.loadProfile(m_objWorkspace.root(), p_strError);
}

bool HostBringUp::bringUpChannels(std::string& p_strError) {
    installClock(m_pClock);
    m_pHost = std::make_unique<ChannelHost>();
    return m_pHost->bringUp(*m_pClock, p_strError);
}
