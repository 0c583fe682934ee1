#include "tools/ChannelHost.h"

#include "platform/FileReader.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"
#include "tools/ToolClock.h"

namespace {
constexpr const char* MACHINE_INFO_FILE = "/mnt/mtd/code/factory_setting/machineinfo.ini";

// " (missing)", " (not a regular file ...)" or nothing when the file is there.
std::string reason(const char* p_szDevicePath) {
    const std::string strWhy = describeUnopenable(p_szDevicePath);
    return strWhy.empty() ? std::string() : " (" + strWhy + ")";
}
} // namespace

ChannelHost::~ChannelHost() {
    takeDown();
}

bool ChannelHost::bringUp(ToolClock& p_objClock, std::string& p_strError) {
    if (!SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, m_objMachine)) {
        p_strError = std::string("no usable machine description at ") + MACHINE_INFO_FILE +
                     reason(MACHINE_INFO_FILE);
        return false;
    }
    std::vector<ModuleConfigure> vecModules;
    std::string strWhy;
    if (!ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath,
                                      m_objMachine.getHardwareModel(),
                                      m_objMachine.getHardwareCode(), vecModules, &strWhy)) {
        p_strError = std::string("no module in ") + ModuleConfigureParser::kDevicePath +
                     (strWhy.empty() ? std::string() : " (" + strWhy + ")") +
                     " matches hardware model '" + m_objMachine.getHardwareModel() +
                     "' and code '" + m_objMachine.getHardwareCode() + "'";
        return false;
    }
    if (vecModules.size() > MAX_CHANNELS) {
        vecModules.resize(MAX_CHANNELS);
    }
    m_vecModules = vecModules;
    // init begins with one pass of the sensor thread's body, pause included.
    ToolClock::QuickHostWaits objQuick(p_objClock);
    for (size_t i = 0; i < m_vecModules.size(); ++i) {
        auto pController = std::make_unique<ISensorController>();
        pController->setChannelID(static_cast<int>(i + 1));
        pController->setVideoStreamModule(&m_objVideo);
        pController->init(m_vecModules[i]);
        m_vecChannels.push_back(std::move(pController));
    }
    return true;
}

void ChannelHost::takeDown() {
    for (auto& pController : m_vecChannels) {
        pController->uinit();
    }
    m_vecChannels.clear();
}
