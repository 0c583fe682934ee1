// Construction, destruction and the queries that belong to the controller as a
// whole.
#define SNS_SOURCE_UNIT "ISensorController"

#include "controller/ISensorController.h"

#include "common/SensorDebug.h"
#include "config/sensor.h"
#include "platform/GThread.h"
#include "platform/SystemInfoParser.h"

namespace {

constexpr const char* MACHINE_INFO_FILE = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* SENSOR_THREAD_NAME = "SensorThread";
constexpr u32 FIRST_KEY_CMD_CAPACITY = 170;
constexpr u32 NO_SCHEDULE = 255;
constexpr u32 KEY_VAL_FILE_VERSION = 8;

// Device types that always drive the second (thermal) channel.
constexpr int DEVICE_TYPE_THERMAL_ONLY_CHANNEL = 13;

bool isThermalDeviceType(int p_nType) {
    switch (p_nType) {
    case 13:
    case 14:
    case 17:
    case 19:
    case 23:
        return true;
    default:
        return false;
    }
}

} // namespace

std::atomic<int> ISensorController::m_nPassKeycmd{-1};
std::atomic<int> ISensorController::m_nChanneldDosomething{-1};

ISensorController::ISensorController()
    : m_stSysConf{}, m_nCameraID(1), m_nLastScheme(-1), m_nCurScheme(-1), m_nParamMode(1),
      m_pFctKeyVal(nullptr), m_nKeyValSum(0), m_nVersion(KEY_VAL_FILE_VERSION),
      m_pVideoStreamModule(nullptr), m_stState(0), m_nKeyCmdSum(FIRST_KEY_CMD_CAPACITY),
      m_nLastSchedule(NO_SCHEDULE), m_bLprMode(false), m_bShowWDRFalg(true), m_bSchemeByTime(false),
      m_bSchemeByDN(false), m_bisLimitedIrPower(false), m_bHasLens(true), m_bShutterPass(false),
      m_bIsThermal(false), m_bShowLDCFlag(true) {
    // The thread is created here and started by init.
    const function<int> objBody(this, &ISensorController::sensorThread);
    const function<int> objEmpty(&GThread::emptyFun);
    m_pSensorThread = std::make_unique<GThread>(objBody, SENSOR_THREAD_NAME, objEmpty, objEmpty);
    SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, m_objMachineInfo);
}

ISensorController::~ISensorController() {
    if (m_pSensorThread) {
        m_pSensorThread->stop();
        m_pSensorThread.reset();
    }
    // A host may destroy a channel it never took down: what uinit would
    // release goes here too (the sets and tables are owned; the configuration
    // texts are not). After a uinit this releases nothing twice.
    uinitSysConf(&m_stSysConf);
}

void ISensorController::setChannelID(int p_nChannelID) {
    sensordiag::requestMarkerCheck();
    const int nType = m_objMachineInfo.getDeviceType();
    m_nCameraID = (nType == DEVICE_TYPE_THERMAL_ONLY_CHANNEL) ? 2 : p_nChannelID;
    if (m_nCameraID == 2 && isThermalDeviceType(nType)) {
        m_bIsThermal = true;
    }
}

int ISensorController::paramCheck() {
    sensordiag::requestMarkerCheck();
    // Without a current set there is no window to judge; refuse rather than read
    // a row that does not exist.
    if (!m_ppUserKeyVal || m_nCurScheme < 0 ||
        static_cast<u32>(m_nCurScheme) > m_stSysConf.nSchemeSum) {
        return SNS_FAILED;
    }
    const KeyVal* pSet = m_ppUserKeyVal[m_nCurScheme];
    const u32 nStart = 100 * pSet[1].value + pSet[2].value;
    const u32 nEnd = 100 * pSet[3].value + pSet[4].value;
    if (nStart > 2400) {
        return SNS_ERR_START_TIME;
    }
    if (nEnd > 2400) {
        return SNS_ERR_END_TIME;
    }
    return nStart < nEnd ? SNS_SUCCESS : SNS_ERR_TIME_ORDER;
}

int ISensorController::getSensorType() {
    sensordiag::requestMarkerCheck();
    return m_stSysConf.moduleConfig.nModuleId;
}

int ISensorController::getSensorStatus() {
    sensordiag::requestMarkerCheck();
    return hasState(m_bInited) ? 1 : 0;
}

namespace {

// The entry with the given id, or the first entry when none has it.
const UIFileInfo* findUIFile(const SysConfig& p_stSysConf, int p_nId) {
    if (p_stSysConf.pUIFile == nullptr || p_stSysConf.nUIFileSum == 0) {
        return nullptr;
    }
    for (u32 i = 0; i < p_stSysConf.nUIFileSum; ++i) {
        if (p_stSysConf.pUIFile[i].nId == p_nId) {
            return &p_stSysConf.pUIFile[i];
        }
    }
    return &p_stSysConf.pUIFile[0];
}

std::string textOrEmpty(const char* p_szText) {
    return p_szText ? std::string(p_szText) : "";
}

} // namespace

std::string ISensorController::getUICommonFile(int p_nId) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    const UIFileInfo* pEntry = findUIFile(m_stSysConf, p_nId);
    return pEntry ? textOrEmpty(pEntry->szCommon) : std::string();
}

std::string ISensorController::getUILanguageFile(int p_nId) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    const UIFileInfo* pEntry = findUIFile(m_stSysConf, p_nId);
    return pEntry ? textOrEmpty(pEntry->szLanguage) : std::string();
}
