// Bringing a channel up (init) and down (uinit), and the style text the host
// builds its tuning pages from.
#define SNS_SOURCE_UNIT "ISensorController"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "platform/DeviceRoot.h"
#include "platform/DeviceType.h"
#include "platform/GThread.h"
#include "platform/SystemInfoParser.h"
#include "platform/TavrinTime.h"
#include "platform/VXFile.h"
#include "platform/VideoStreamModule.h"
#include "platform/sy_system.h"

namespace {

constexpr const char* MACHINE_INFO_FILE = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr int SY_SYSTEM_TIMEOUT = 30;
constexpr int DEVICE_TYPE_LPR = 8;
constexpr int STYLE_BUSY_POLLS = 30;
constexpr long STYLE_BUSY_WAIT_USEC = 50000;
constexpr u32 MIN_VISIBLE_STREAM_HEIGHT = 256;

// The values an LPR camera's night scheme starts from.
constexpr KeyVal LPR_NIGHT_DEFAULTS[] = {
    {KEY_DN_MODE, 0},    {KEY_MAX_SHUTTER, 18}, {KEY_MIN_SHUTTER, 20},
    {KEY_METER_AREA, 1}, {KEY_IR_MODE, 2},      {KEY_IR_MANUAL_STRG_NEAR, 40},
};

// A scheme file counts as present only as a regular file: a directory (or
// anything else) in its place is treated as missing, so the row is made from
// the factory set instead of staying zeros, and the failed write is reported.
bool fileExists(const std::string& p_strDevicePath) {
    struct stat stInfo {};
    return stat(DeviceRoot::resolve(p_strDevicePath).c_str(), &stInfo) == 0 &&
           S_ISREG(stInfo.st_mode);
}

// Sets the first entry with the key; a key the set lacks is skipped.
void setFirst(KeyVal* p_pSet, u32 p_nCount, u32 p_nKey, u32 p_nValue) {
    for (u32 i = 0; i < p_nCount; ++i) {
        if (p_pSet[i].key == p_nKey) {
            p_pSet[i].value = p_nValue;
            return;
        }
    }
}

} // namespace

std::string ISensorController::schemeFileName(int p_nScheme) const {
    char szName[128];
    if (m_bIsThermal) {
        std::snprintf(szName, sizeof(szName), "/mnt/mtd/code/config_file/sensor-thermal%d.cfg",
                      p_nScheme);
    } else {
        std::snprintf(szName, sizeof(szName), "/mnt/mtd/code/config_file/sensor%d_%d.cfg",
                      m_nCameraID, p_nScheme);
    }
    return szName;
}

std::string ISensorController::removeSchemeFilesCommand() const {
    if (m_bIsThermal) {
        return "rm -rf /mnt/mtd/code/config*/sensor-thermal*.cfg";
    }
    char szCmd[256];
    std::snprintf(szCmd, sizeof(szCmd), "rm -rf /mnt/mtd/code/config*/sensor%d_[0-3].cfg",
                  m_nCameraID);
    return szCmd;
}

void ISensorController::allocateSchemeSets() {
    // The factory set is derived into a buffer of the table's capacity before
    // its length is known.
    const u32 nCapacity = m_nKeyCmdSum;
    std::unique_ptr<KeyVal[]> pFactory = std::make_unique<KeyVal[]>(nCapacity);
    m_pLprKeyVal = std::make_unique<KeyVal[]>(nCapacity);
    m_nKeyValSum = 0;
    SNS_ASSERT_FOR("init",
                   SNS_SUCCESS == getFctData(m_nCameraID, m_stSysConf.szUIStyle, pFactory.get(),
                                             &m_nKeyValSum, nCapacity, m_bShowWDRFalg,
                                             m_bShowLDCFlag),
                   "m_nKeyValSum(%d)\n", m_nKeyValSum);

    const u32 nRows = m_stSysConf.nSchemeSum + 1;
    m_pUserKeyValBlock = std::make_unique<KeyVal[]>(static_cast<size_t>(nRows) * m_nKeyValSum);
    m_ppUserKeyVal = std::make_unique<KeyVal*[]>(nRows);
    for (u32 i = 0; i < nRows; ++i) {
        m_ppUserKeyVal[i] = m_pUserKeyValBlock.get() + static_cast<size_t>(i) * m_nKeyValSum;
    }
    m_pFctKeyVal = m_ppUserKeyVal[m_stSysConf.nSchemeSum];
    std::copy(pFactory.get(), pFactory.get() + m_nKeyValSum, m_pFctKeyVal);
}

void ISensorController::checkVersionStamp() {
    u32 nLocal = 0;
    const bool bRead = getVersion(&nLocal) == SNS_SUCCESS;
    if (bRead && nLocal == m_nVersion) {
        return;
    }
    if (!bRead) {
        nLocal = 0; // a failed read may leave part of a stamp behind
    }
    SNS_WARN_FOR(
        "init",
        "check the sensor version,   local(%u) --> libsensordll.so(%u), source the cmd: rm "
        "-rf /mnt/mtd/code/config*/sensor*\n",
        nLocal, m_nVersion);
    sy_system(removeSchemeFilesCommand().c_str(), SY_SYSTEM_TIMEOUT);
}

void ISensorController::detectDeviceFlags() {
    MachineInfo objMachineInfo;
    SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, objMachineInfo);
    DeviceType objDeviceType;
    objDeviceType.setDeviceTypeId(objMachineInfo.getDeviceType());

    const std::string strDetail = m_stSysConf.moduleConfig.szDetail;
    if (strDetail.find("(isInfrared=17)") != std::string::npos) {
        std::printf("#### m_bisLimitedIrPower is true!\n");
        m_bisLimitedIrPower = true;
    }
    const size_t nLens = strDetail.find("lensId");
    const size_t nEqual = nLens == std::string::npos ? nLens : strDetail.find('=', nLens);
    const size_t nClose = nEqual == std::string::npos ? nEqual : strDetail.find(')', nEqual);
    if (nClose == std::string::npos || std::atoi(strDetail.c_str() + nEqual + 1) == 0) {
        m_bHasLens = false;
    }
    if (objDeviceType.getDeviceTypeId() == DEVICE_TYPE_LPR &&
        strDetail.find("(isInfrared=0)") == std::string::npos &&
        strDetail.find("(isInfrared=1)") == std::string::npos) {
        m_bLprMode = true;
    }
}

void ISensorController::removeFlushLeftovers() {
    // A power cut during a write leaves the writer's temporary file beside the
    // target; repeated cuts would fill a small flash. Only files of this
    // channel and the stamp are looked at, and a temporary another writer
    // still holds is kept.
    for (u32 i = 0; i < m_stSysConf.nSchemeSum; ++i) {
        VXFile::removeLeftovers(schemeFileName(static_cast<int>(i)).c_str());
    }
    VXFile::removeLeftovers(SENSOR_VERSION_FILE);
}

void ISensorController::createSchemeFile(u32 p_nScheme, const std::string& p_strFile) {
    const KeyVal* pSet = m_pFctKeyVal;
    if (m_bLprMode && p_nScheme == 1) {
        std::copy(m_pFctKeyVal, m_pFctKeyVal + m_nKeyValSum, m_pLprKeyVal.get());
        for (const KeyVal& stDefault : LPR_NIGHT_DEFAULTS) {
            setFirst(m_pLprKeyVal.get(), m_nKeyValSum, stDefault.key, stDefault.value);
        }
        pSet = m_pLprKeyVal.get();
    } else if (!m_bLprMode && p_nScheme == 0) {
        setKeyValToCache(m_stSysConf.nSchemeSum, KEY_SCHEME_MODE, 0, true);
    }
    // The row starts as the set the file is made from, so a file that cannot
    // be written (full or read-only flash) leaves that set in memory rather
    // than a row of zeros; the load that follows reads the same values back.
    std::copy(pSet, pSet + m_nKeyValSum, m_ppUserKeyVal[p_nScheme]);
    const char* szFile = p_strFile.c_str();
    if (!SNS_CHECK_FOR("init", SNS_SUCCESS == keyValToFile(szFile, pSet, m_nKeyValSum),
                       "file_name(%s)\n", szFile)) {
        m_bFileUnsaved = true;
    }
}

void ISensorController::loadSchemeFiles() {
    for (u32 i = 0; i < m_stSysConf.nSchemeSum; ++i) {
        const std::string strFile = schemeFileName(static_cast<int>(i));
        if (!fileExists(strFile)) {
            createSchemeFile(i, strFile);
        }
        keyValFromFile(strFile.c_str(), m_ppUserKeyVal[i], m_nKeyValSum);
        if (i != 0) {
            continue;
        }
        u32 nMode = 0;
        if (getKeyValFromCache(0, KEY_SCHEME_MODE, nMode) != SNS_FAILED) {
            m_bSchemeByTime = (nMode == 1);
            m_bSchemeByDN = (nMode == 2);
        }
    }
}

void ISensorController::applyVideoStreamLimits(const MachineInfo& p_objMachineInfo) {
    if (m_pVideoStreamModule == nullptr) {
        return;
    }
    std::vector<AVStreamParam> vecStreams;
    m_pVideoStreamModule->getAVStreamParams(vecStreams);
    const std::string strModel = p_objMachineInfo.getHardwareModel();
    if (strModel == "Hi3516AV200" || strModel == "Hi3516AV200Thermal") {
        for (const AVStreamParam& objStream : vecStreams) {
            if (objStream.getVideoEncoderType() == 1 &&
                static_cast<u32>(objStream.getVideoHeight()) < MIN_VISIBLE_STREAM_HEIGHT) {
                setshowBeawayFalg(false);
            }
        }
    }
    LimitedFramesWDRModeParam objLimit;
    m_pVideoStreamModule->getLimitedFramesWDRModeParam(m_nCameraID, objLimit);
    if (objLimit.getLimitFramesModeId() == 0 && objLimit.getLimitWdr() == 1) {
        m_bShowWDRFalg = false;
    }
    if (objLimit.getLDCSupport() != 0 && objLimit.getLDCSwitch() != 0) {
        m_bShowLDCFlag = true;
    }
}

bool ISensorController::init(const ModuleConfigure& p_objModuleConfigure) {
    setState(m_bIniting);
    clearState(m_bInited);
    m_bFileUnsaved = false;
    SNS_ASSERT_TEXT(SNS_SUCCESS == initSysConf(m_nCameraID, p_objModuleConfigure, &m_stSysConf),
                    "SNS_SUCCESS == initSysConf(m_nCameraID,p_objModuleConfigure, &m_stSysConf)",
                    "");
    allocateSchemeSets();
    checkVersionStamp();
    removeFlushLeftovers();
    detectDeviceFlags();
    loadSchemeFiles();
    if (!SNS_CHECK(SNS_SUCCESS == setVersion(m_nVersion), "m_nVersion(%d)\n", m_nVersion)) {
        m_bFileUnsaved = true;
    }
    initKeyCmdMap();
    m_pstKeyValTmp = std::make_unique<KeyVal[]>(m_nKeyValSum);
    if (!m_bSchemeByDN && !m_bSchemeByTime) {
        switch_to(0, false);
    }
    sensorThread();
    SNS_ASSERT(m_pSensorThread->start(), "");

    m_bShowWDRFalg = true;
    m_bShowLDCFlag = false;
    setshowBeawayFalg(true);
    MachineInfo objMachineInfo;
    SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, objMachineInfo);
    applyVideoStreamLimits(objMachineInfo);

    setState(m_bInited);
    clearState(m_bIniting);
    SNS_DBG("ISensorController::initSensor  success\n");
    return true;
}

void ISensorController::releaseBuffers() {
    m_pstKeyValTmp.reset();
    m_pKeyCmdMap.reset();
    m_ppUserKeyVal.reset();
    m_pUserKeyValBlock.reset();
    m_pLprKeyVal.reset();
    m_pFctKeyVal = nullptr;
}

void ISensorController::uinit() {
    if (!hasState(m_bInited)) {
        return;
    }
    m_bShutterPass = true;
    setState(m_bUniniting);
    SNS_ASSERT(m_pSensorThread->stop(), "");
    releaseBuffers();
    uinitSysConf(&m_stSysConf);
    m_nParamMode = 1;
    m_nLastScheme = -1;
    m_nCurScheme = -1;
    m_nKeyValSum = 0;
    clearState(m_bUniniting);
}

std::string ISensorController::getUIStyleFile() {
    if (m_pVideoStreamModule != nullptr) {
        for (int i = 0; i < STYLE_BUSY_POLLS && m_pVideoStreamModule->isBusy(); ++i) {
            TavrinTime(0, STYLE_BUSY_WAIT_USEC).wait();
        }
    }
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    std::string strResult;
    SNS_ASSERT(SNS_SUCCESS == getDnaStyle(m_nCameraID, m_stSysConf.szUIStyle, strResult,
                                          m_bShowWDRFalg, m_bShowLDCFlag),
               "");
    return strResult;
}
