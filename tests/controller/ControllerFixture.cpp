#include "ControllerFixture.h"

#include <cstring>
#include <sstream>

namespace sensortest {

void PrintTo(const IspCall& p_stCall, std::ostream* p_pOut) {
    *p_pOut << "{ch " << p_stCall.channel << " cmd " << p_stCall.cmd << " opt " << p_stCall.option
            << " data";
    for (int32_t nWord : p_stCall.words) {
        *p_pOut << ' ' << nWord;
    }
    *p_pOut << '}';
}

void PrintTo(const Notice& p_stNotice, std::ostream* p_pOut) {
    *p_pOut << '(' << p_stNotice.channel << ": " << p_stNotice.key << ',' << p_stNotice.value
            << ')';
}

IspCall setCall(uint32_t p_nCmd, std::vector<int32_t> p_vecWords, int p_nChannel) {
    return {p_nChannel, p_nCmd, 0, std::move(p_vecWords)};
}

std::vector<KeyVal> makeSet(std::initializer_list<KeyVal> p_listRest, u32 p_nSchemeMode) {
    std::vector<KeyVal> vecSet = {
        {8000, p_nSchemeMode}, {8001, 0}, {8002, 0}, {8003, 24}, {8004, 0}};
    vecSet.insert(vecSet.end(), p_listRest);
    return vecSet;
}

std::string coloured(int p_nColour, const std::string& p_strText) {
    return "\033[0m\033[" + std::to_string(p_nColour) + "m" + p_strText + "\033[0m";
}

ControllerTest::ControllerTest() : m_objIsp(IspSimulator::instance()) {
    m_objIsp.loadDefaultProfile();
    m_objIsp.reset();
    setshowBeawayFalg(true);
    ISensorController::m_nChanneldDosomething = -1;
    ISensorController::m_nPassKeycmd = -1;
    useDeviceType(1);
}

ControllerTest::~ControllerTest() {
    m_pController.reset();
    setshowBeawayFalg(true);
}

void ControllerTest::useDeviceType(int p_nType) {
    m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                        "[device]\ntype = " + std::to_string(p_nType) +
                            "\nhardware_model = Hi3516AV200\nhardware_code = TEST\n");
    m_pController = std::make_unique<ISensorController>();
    m_pController->setChannelID(1);
    m_pController->setVideoStreamModule(&m_objVideo);
}

void ControllerTest::install(const std::vector<std::vector<KeyVal>>& p_vecSets, int p_nCurScheme) {
    ASSERT_TRUE(Access::installSets(ctl(), p_vecSets, p_nCurScheme));
    Access::buildKeyCmdMap(ctl());
    clearRecords();
}

void ControllerTest::setDebugLevel(int p_nLevel) {
    m_objRoot.writeFile("/tmp/Debug.sign", std::to_string(p_nLevel) + "\n0\n");
}

std::vector<IspCall> ControllerTest::ispCalls() const {
    std::vector<IspCall> vecCalls;
    for (const IspSimulator::LogEntry& stEntry : m_objIsp.log()) {
        IspCall stCall{stEntry.channel, stEntry.cmd, stEntry.option, {}};
        if (stEntry.bytes.empty()) {
            stCall.words.push_back(stEntry.value);
        } else {
            stCall.words.resize(stEntry.bytes.size() / sizeof(int32_t));
            std::memcpy(stCall.words.data(), stEntry.bytes.data(),
                        stCall.words.size() * sizeof(int32_t));
        }
        vecCalls.push_back(std::move(stCall));
    }
    return vecCalls;
}

void ControllerTest::clearRecords() {
    m_objIsp.clearLog();
    m_objVideo.clear();
}

u32 ControllerTest::stored(u32 p_nScheme, u32 p_nKey) const {
    u32 nValue = 0xDEADBEEF;
    m_pController->getKeyValFromCache(p_nScheme, p_nKey, nValue);
    return nValue;
}

bool ControllerTest::holds(u32 p_nScheme, u32 p_nKey) const {
    u32 nValue = 0;
    return m_pController->getKeyValFromCache(p_nScheme, p_nKey, nValue) >= 0;
}

} // namespace sensortest
