// Bringing a channel up (init) and down (uinit), and the style text the host
// builds its tuning pages from.
#define SNS_SOURCE_UNIT "ISensorController"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "config/SchemeSetFile.h"
#include "config/SensorFile.h"
#include "config/SensorXml.h"
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
// No control of a style takes fewer characters of its text than this (an
// element with an "id" and a "value" attribute), so the style's length over
// it bounds the number of its controls.
constexpr std::size_t MIN_CONTROL_TEXT = 8;
// A print threshold no debug level reaches down to.
constexpr int LOGGED_AT_EVERY_LEVEL = -1;

// The values an LPR camera's night scheme starts from.
constexpr KeyVal LPR_NIGHT_DEFAULTS[] = {
    {KEY_DN_MODE, 0},    {KEY_MAX_SHUTTER, 18}, {KEY_MIN_SHUTTER, 20},
    {KEY_METER_AREA, 1}, {KEY_IR_MODE, 2},      {KEY_IR_MANUAL_STRG_NEAR, 40},
};

// Whether anything stands at the path. Only a missing file is created from
// the set; a directory, FIFO or device in its place is left alone (writing
// over it could block or destroy what is not ours), and the load that follows
// refuses it with a report, so the row takes the factory set.
bool fileExists(const std::string& p_strDevicePath) {
    struct stat stInfo {};
    return lstat(DeviceRoot::resolve(p_strDevicePath).c_str(), &stInfo) == 0;
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
    std::string strCmd = szCmd;
    // Every user scheme of the channel goes, not only 0 to 3: one pattern per
    // further run of scheme numbers (4 to 9, then each count of digits), all
    // of this camera's own "sensorC_" names. Up to 4 schemes the command is
    // the one the module has always run.
    const u32 nLast = m_stSysConf.nSchemeSum == 0 ? 0 : m_stSysConf.nSchemeSum - 1;
    if (nLast >= 4) {
        std::snprintf(szCmd, sizeof(szCmd), " /mnt/mtd/code/config*/sensor%d_[4-%u].cfg",
                      m_nCameraID, nLast < 9 ? nLast : 9u);
        strCmd += szCmd;
    }
    std::string strDigits = "[1-9][0-9]";
    for (u32 nFrom = 10; nFrom <= nLast; nFrom *= 10, strDigits += "[0-9]") {
        std::snprintf(szCmd, sizeof(szCmd), " /mnt/mtd/code/config*/sensor%d_%s.cfg", m_nCameraID,
                      strDigits.c_str());
        strCmd += szCmd;
        if (nFrom > UINT32_MAX / 10) {
            break;
        }
    }
    return strCmd;
}

void ISensorController::allocateSchemeSets(TiXmlDocumentEx& p_objMergedStyle) {
    // The factory set fixes the keys and the order of every set and file. It
    // is computed at every init as the object's first init computed it: with
    // the show flags that init found (the end of init changes them for the
    // style the host is shown, which must not drop keys from a later set),
    // and with room for every control of the style rather than the key-command
    // table's row count (which init lowers).
    if (!m_optFactoryFlags) {
        m_optFactoryFlags = FactoryFlags{m_bShowWDRFalg, m_bShowLDCFlag, getshowBeawayFalg()};
    }
    const char* szStyle = m_stSysConf.szUIStyle != nullptr ? m_stSysConf.szUIStyle : "";
    const u32 nCapacity = static_cast<u32>(std::strlen(szStyle) / MIN_CONTROL_TEXT + 1);
    std::vector<KeyVal> vecFactory(nCapacity);
    m_nKeyValSum = 0;
    SNS_ASSERT_FOR("init",
                   SNS_SUCCESS == getFctData(m_nCameraID, p_objMergedStyle, vecFactory.data(),
                                             &m_nKeyValSum, nCapacity, m_optFactoryFlags->bShowWDR,
                                             m_optFactoryFlags->bShowLDC,
                                             m_optFactoryFlags->bShowBeaway),
                   "m_nKeyValSum(%d)\n", m_nKeyValSum);
    m_pLprKeyVal = std::make_unique<KeyVal[]>(m_nKeyValSum);

    const u32 nRows = m_stSysConf.nSchemeSum + 1;
    m_pUserKeyValBlock = std::make_unique<KeyVal[]>(static_cast<size_t>(nRows) * m_nKeyValSum);
    m_ppUserKeyVal = std::make_unique<KeyVal*[]>(nRows);
    for (u32 i = 0; i < nRows; ++i) {
        m_ppUserKeyVal[i] = m_pUserKeyValBlock.get() + static_cast<size_t>(i) * m_nKeyValSum;
    }
    m_pFctKeyVal = m_ppUserKeyVal[m_stSysConf.nSchemeSum];
    std::copy(vecFactory.begin(), vecFactory.begin() + m_nKeyValSum, m_pFctKeyVal);
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

void ISensorController::detectDeviceFlags(const MachineInfo& p_objMachineInfo) {
    DeviceType objDeviceType;
    objDeviceType.setDeviceTypeId(p_objMachineInfo.getDeviceType());

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

bool ISensorController::loadSchemeSet(u32 p_nScheme, KeyVal* p_pSet, const char* p_szFunction) {
    const std::string strFile = schemeFileName(static_cast<int>(p_nScheme));
    const SchemeFileLoad eLoad =
        schemeSetFromFile(strFile.c_str(), m_pFctKeyVal, p_pSet, m_nKeyValSum);
    if (eLoad == SchemeFileLoad::Exact) {
        return true;
    }
    // A lost or repaired scheme file is logged at every debug level, like a
    // failed check, but never aborts: one line naming the file.
    sensordiag::printTagged(
        LOGGED_AT_EVERY_LEVEL, sensordiag::COLOUR_DEFAULT, "[sensor warn]", true,
        SNS_ORIGIN_FOR_(p_szFunction),
        eLoad == SchemeFileLoad::Unreadable
            ? "scheme file %s cannot be read\n"
            : "scheme file %s does not hold the set's keys: matched by key, the keys it lacks "
              "take their factory values\n",
        strFile.c_str());
    return eLoad == SchemeFileLoad::Repaired;
}

void ISensorController::loadSchemeFiles() {
    for (u32 i = 0; i < m_stSysConf.nSchemeSum; ++i) {
        const std::string strFile = schemeFileName(static_cast<int>(i));
        if (!fileExists(strFile)) {
            createSchemeFile(i, strFile);
        }
        // A file that cannot be read leaves the scheme the factory set, never
        // a row of zeros.
        if (!loadSchemeSet(i, m_ppUserKeyVal[i], "init")) {
            std::copy(m_pFctKeyVal, m_pFctKeyVal + m_nKeyValSum, m_ppUserKeyVal[i]);
        }
        if (i != 0) {
            continue;
        }
        u32 nMode = 0;
        if (getKeyValFromCache(0, KEY_SCHEME_MODE, nMode) != SNS_FAILED) {
            m_bSchemeByTime = (nMode == 1);
            m_bSchemeByDN = (nMode == 2);
        }
    }
    // Every row now holds the factory set's keys in its order (files are
    // matched by key), so every row can be indexed.
    indexSchemeSets();
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
    sensordiag::requestMarkerCheck();
    setState(m_bIniting);
    clearState(m_bInited);
    m_bFileUnsaved = false;
    // The machine description is read once and serves every step below.
    MachineInfo objMachineInfo;
    const bool bMachineInfoRead =
        SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, objMachineInfo);
    // The merged style's document becomes the factory set's dynamic style:
    // the style is parsed once per start-up.
    auto pMergedStyle = std::make_unique<TiXmlDocumentEx>();
    SNS_ASSERT_TEXT(SNS_SUCCESS == initSysConf(m_nCameraID, p_objModuleConfigure, objMachineInfo,
                                               bMachineInfoRead, *pMergedStyle, &m_stSysConf),
                    "SNS_SUCCESS == initSysConf(m_nCameraID,p_objModuleConfigure, &m_stSysConf)",
                    "");
    allocateSchemeSets(*pMergedStyle);
    pMergedStyle.reset();
    checkVersionStamp();
    removeFlushLeftovers();
    detectDeviceFlags(objMachineInfo);
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
    applyVideoStreamLimits(objMachineInfo);

    setState(m_bInited);
    clearState(m_bIniting);
    SNS_DBG("ISensorController::initSensor  success\n");
    return true;
}

void ISensorController::releaseBuffers() {
    m_pstKeyValTmp.reset();
    m_pKeyCmdMap.reset();
    m_objKeyCmdIndex.clear();
    m_ppUserKeyVal.reset();
    m_pUserKeyValBlock.reset();
    m_pLprKeyVal.reset();
    m_pFctKeyVal = nullptr;
    m_objSetIndex.clear();
}

void ISensorController::uinit() {
    sensordiag::requestMarkerCheck();
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
    sensordiag::requestMarkerCheck();
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
