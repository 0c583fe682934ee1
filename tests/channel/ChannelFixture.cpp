#include "ChannelFixture.h"

#include <algorithm>

#include "config/SensorFile.h"

namespace sensortest {

namespace {

constexpr const char* kMiniStyle = R"(<Style><Tab key="scheme">
<Control id="8000" value="0"><Item index="0"/><Item index="1"/><Item index="2"/></Control>
<Control id="8001" value="0"/><Control id="8002" value="0"/>
<Control id="8003" value="24"/><Control id="8004" value="0"/></Tab>
<Tab key="image"><Control id="34" value="50"/><Control id="2337" value="128"/>
<Control id="144" value="0"/>
<Control id="49" value="100"><Item index="3"/><Item index="6"/><Item index="12"/></Control>
<Control id="161" value="1"/><Control id="163" value="10"/><Control id="96" value="0"/>
<Control id="51" value="5"/></Tab></Style>)";

// One entry that never applies.
constexpr const char* kMiniDiversity =
    R"(<Entry max_scheme="99"><Delete tab_key="image"><Tab key="image"/></Delete></Entry>)";

} // namespace

int AcceptingVideo::getAVStreamParams(std::vector<AVStreamParam>& out) const {
    out.clear();
    return 0;
}

int AcceptingVideo::getLimitedFramesWDRModeParam(int, LimitedFramesWDRModeParam& out) const {
    out = LimitedFramesWDRModeParam();
    return 0;
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

void ChannelTest::useMiniDevice(int p_nType, const std::string& p_strDetail) {
    m_strDetail = p_strDetail;
    // The mini style's values stand as written: nothing is dynamic, and the
    // maximum shutter takes the style's 100 (the sensor's list stops at 8).
    m_objIsp.setDynamicCommands(-1, {});
    ia_dynamic_params_attr_st stShutter{};
    stShutter.param_type = 1;
    stShutter.max_val = 255;
    m_objIsp.setAttribute(-1, 49, stShutter);
    m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                        "[device]\ntype = " + std::to_string(p_nType) +
                            "\nhardware_model = SIM\nhardware_code = MINI\n");
    m_objRoot.writeFile("/hd1/moduleConfig/moduleConfig.xml",
                        "<ModuleConfig><Module id=\"7\" hardware_model=\"SIM\" hardware_code="
                        "\"MINI\" detail=\"" +
                            p_strDetail + "\" parameters=\"p\"/></ModuleConfig>");
    const std::string strDir = "/hd1/moduleConfig/sensorConfig/";
    for (const std::string strSuffix : {"", "_dome", "_Thermal"}) {
        m_objRoot.writeFile(strDir + "style/Style" + strSuffix + ".xml", kMiniStyle);
        m_objRoot.writeFile(strDir + "styleDiversity/StyleDiversity" + strSuffix + ".xml",
                            kMiniDiversity);
    }
}

ISensorController& ChannelTest::bringUp(int p_nChannel) {
    ModuleConfigure objModule; // as the device's module configuration file describes it
    objModule.setModuleId(7);
    objModule.setDetail(m_strDetail);
    objModule.setParameters("p");
    m_pController = std::make_unique<ISensorController>();
    m_pController->setChannelID(p_nChannel);
    m_pController->setVideoStreamModule(&m_objVideo);
    m_pController->init(objModule);
    return *m_pController;
}

ISensorController& ChannelTest::upMini(int p_nType, const std::string& p_strDetail,
                                       int p_nChannel) {
    takeDown();
    useMiniDevice(p_nType, p_strDetail);
    ISensorController& c = bringUp(p_nChannel);
    Access::stopThread(c);
    m_objIsp.clearLog();
    return c;
}

void ChannelTest::takeDown() {
    if (m_pController) {
        m_pController->uinit();
        m_pController.reset();
    }
}

std::string ChannelTest::schemeFile(int p_nCamera, int p_nScheme) {
    return "/mnt/mtd/code/config_file/sensor" + std::to_string(p_nCamera) + "_" +
           std::to_string(p_nScheme) + ".cfg";
}

std::vector<KeyVal> ChannelTest::readSet(const std::string& p_strDevicePath) const {
    std::vector<KeyVal> vecSet(m_objRoot.readFile(p_strDevicePath).size() / sizeof(KeyVal));
    EXPECT_EQ(SNS_SUCCESS, keyValFromFile(p_strDevicePath.c_str(), vecSet.data(), vecSet.size()));
    return vecSet;
}

void ChannelTest::writeSet(const std::string& p_strDevicePath,
                           const std::vector<KeyVal>& p_vecSet) const {
    EXPECT_EQ(SNS_SUCCESS, keyValToFile(p_strDevicePath.c_str(), p_vecSet.data(), p_vecSet.size()));
}

u32 ChannelTest::valueOf(const std::vector<KeyVal>& p_vecSet, u32 p_nKey) {
    const auto it = std::find_if(p_vecSet.begin(), p_vecSet.end(),
                                 [p_nKey](const KeyVal& st) { return st.key == p_nKey; });
    EXPECT_NE(p_vecSet.end(), it) << "key " << p_nKey << " not in the set";
    return it == p_vecSet.end() ? 0 : it->value;
}

std::optional<int> ChannelTest::param(u32 p_nKey) const {
    int nValue = -7;
    return m_pController->getParameter(p_nKey, nValue) ? std::optional<int>(nValue) : std::nullopt;
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

ia_dynamic_params_attr_st ChannelTest::attr(int32_t p_nType, int32_t p_nDefault,
                                            const std::vector<int32_t>& p_vecItems) {
    ia_dynamic_params_attr_st stAttr{};
    stAttr.param_type = p_nType;
    stAttr.default_val = p_nDefault;
    stAttr.min_val = 1;
    stAttr.max_val = 100;
    stAttr.items_cnt = static_cast<int32_t>(p_vecItems.size());
    std::copy(p_vecItems.begin(), p_vecItems.end(), stAttr.item);
    return stAttr;
}

} // namespace sensortest
