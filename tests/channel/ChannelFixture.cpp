#include "ChannelFixture.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace sensortest {

namespace fs = std::filesystem;

int NoticeRecorder::notifyParamChange(int channel, int key, int value) const {
    std::lock_guard<std::mutex> objGuard(m_mutex);
    m_vecNotices.push_back({channel, key, value});
    return 0;
}

int NoticeRecorder::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int NoticeRecorder::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    out.setLimitFramesModeId(1);
    return 0;
}

std::vector<NoticeRecorder::Notice> NoticeRecorder::notices() const {
    std::lock_guard<std::mutex> objGuard(m_mutex);
    return m_vecNotices;
}

std::string MiniStyle::style() {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<Style>
  <Tab key="scheme">
    <Control id="8000" value="0"><Item index="0"/><Item index="1"/><Item index="2"/></Control>
    <Control id="8001" value="0"/>
    <Control id="8002" value="0"/>
    <Control id="8003" value="24"/>
    <Control id="8004" value="0"/>
  </Tab>
  <Tab key="image">
    <Control id="34" value="50"/>
    <Control id="2337" value="128"/>
    <Control id="144" value="0"/>
    <Control id="49" value="100"><Item index="3"/><Item index="6"/><Item index="12"/></Control>
    <Control id="161" value="1"/>
    <Control id="163" value="10"/>
    <Control id="96" value="0"/>
    <Control id="51" value="5"/>
  </Tab>
</Style>
)";
}

std::string MiniStyle::diversity() {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<Entry max_scheme="99"><Delete tab_key="image"><Tab key="image"/></Delete></Entry>
)";
}

ChannelTest::ChannelTest()
    : m_pClock(std::make_shared<VirtualClock>()), m_objIsp(IspSimulator::instance()) {
    installClock(m_pClock);
    m_objIsp.loadDefaultProfile();
    m_objIsp.reset();
    ISensorController::m_nChanneldDosomething = -1;
    ISensorController::m_nPassKeycmd = -1;
}

ChannelTest::~ChannelTest() {
    takeDown();
    installClock(nullptr);
}

void ChannelTest::useSampleDevice(const std::string& p_strName) {
    const fs::path src = fs::path(sourceDir()) / "devices" / p_strName;
    fs::copy(src, m_objRoot.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    const fs::path profile = src / "isp_profile.xml";
    if (fs::exists(profile)) {
        std::string strError;
        ASSERT_TRUE(m_objIsp.loadProfile(profile.string(), &strError)) << strError;
    }
}

void ChannelTest::useMiniDevice(int p_nType, const std::string& p_strDetail) {
    // The mini style's values stand as written: no dynamic commands.
    m_objIsp.setDynamicCommands(-1, {});
    std::ostringstream ini;
    ini << "[device]\ntype = " << p_nType << "\nhardware_model = SIM\nhardware_code = MINI\n";
    m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini", ini.str());
    m_objRoot.writeFile("/hd1/moduleConfig/moduleConfig.xml",
                        "<ModuleConfig><Module id=\"7\" hardware_model=\"SIM\" "
                        "hardware_code=\"MINI\" detail=\"" +
                            p_strDetail + "\" parameters=\"p\"/></ModuleConfig>");
    for (const char* szSuffix : {"", "_dome", "_Thermal"}) {
        m_objRoot.writeFile(std::string("/hd1/moduleConfig/sensorConfig/style/Style") + szSuffix +
                                ".xml",
                            MiniStyle::style());
        m_objRoot.writeFile(std::string("/hd1/moduleConfig/sensorConfig/styleDiversity/"
                                        "StyleDiversity") +
                                szSuffix + ".xml",
                            MiniStyle::diversity());
    }
}

void ChannelTest::setDebugLevel(const std::string& p_strMarker) {
    m_objRoot.writeFile("/tmp/Debug.sign", p_strMarker);
}

ISensorController& ChannelTest::bringUp(int p_nChannel) {
    MachineInfo objMachine;
    SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine);
    std::vector<ModuleConfigure> vecModules;
    ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath, objMachine.getHardwareModel(),
                                 objMachine.getHardwareCode(), vecModules);
    EXPECT_FALSE(vecModules.empty()) << "the device's module configuration matches its machine";
    const size_t nIndex = std::min<size_t>(static_cast<size_t>(p_nChannel - 1),
                                           vecModules.empty() ? 0 : vecModules.size() - 1);
    const ModuleConfigure objModule = vecModules.empty() ? ModuleConfigure() : vecModules[nIndex];

    m_pController = std::make_unique<ISensorController>();
    m_pController->setChannelID(p_nChannel);
    m_pController->setVideoStreamModule(&m_objVideo);
    m_pController->init(objModule);
    return *m_pController;
}

void ChannelTest::takeDown() {
    if (m_pController) {
        m_pController->uinit();
        m_pController.reset();
    }
}

std::string ChannelTest::schemeFile(int p_nCamera, int p_nScheme) const {
    return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_nCamera) + "_" +
           std::to_string(p_nScheme) + ".cfg";
}

std::vector<KeyVal> ChannelTest::readSet(const std::string& p_strDevicePath) const {
    const std::string strBytes = m_objRoot.readFile(p_strDevicePath);
    std::vector<KeyVal> vecSet(strBytes.size() / 8);
    for (size_t i = 0; i < vecSet.size(); ++i) {
        const auto* p = reinterpret_cast<const unsigned char*>(strBytes.data() + 8 * i);
        vecSet[i].key = p[0] | p[1] << 8 | p[2] << 16 | static_cast<u32>(p[3]) << 24;
        vecSet[i].value = p[4] | p[5] << 8 | p[6] << 16 | static_cast<u32>(p[7]) << 24;
    }
    return vecSet;
}

void ChannelTest::writeSet(const std::string& p_strDevicePath,
                           const std::vector<KeyVal>& p_vecSet) const {
    std::string strBytes;
    for (const KeyVal& st : p_vecSet) {
        for (u32 w : {st.key, st.value}) {
            for (int b = 0; b < 4; ++b) {
                strBytes.push_back(static_cast<char>((w >> (8 * b)) & 0xff));
            }
        }
    }
    m_objRoot.writeFile(p_strDevicePath, strBytes);
}

u32 ChannelTest::valueOf(const std::vector<KeyVal>& p_vecSet, u32 p_nKey) {
    for (const KeyVal& st : p_vecSet) {
        if (st.key == p_nKey) {
            return st.value;
        }
    }
    ADD_FAILURE() << "key " << p_nKey << " not in the set";
    return 0;
}

std::vector<int32_t> ChannelTest::setsOf(uint32_t p_nCmd, int p_nChannel) const {
    std::vector<int32_t> vecValues;
    for (const IspSimulator::LogEntry& stEntry : m_objIsp.log()) {
        if (stEntry.cmd == p_nCmd && stEntry.channel == p_nChannel && stEntry.option == 0) {
            vecValues.push_back(stEntry.value);
        }
    }
    return vecValues;
}

std::string ChannelTest::errorLog() const {
    const std::string strPath = "/mnt/mtd/log/SensorError.log";
    return m_objRoot.exists(strPath) ? m_objRoot.readFile(strPath) : std::string();
}

} // namespace sensortest
