// Moving parameters between the scheme sets, their files and the ISP: flush,
// restore, reset to the last stored set, and the channel's factory reset.
#define SNS_SOURCE_UNIT "ISensorController"

#include <vector>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "controller/ISensorController.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"
#include "platform/sy_system.h"

namespace {

constexpr const char* MACHINE_INFO_FILE = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* MODULE_CONFIG_FILE = "/hd1/moduleConfig/moduleConfig.xml";
constexpr int SY_SYSTEM_TIMEOUT = 30;

} // namespace

int ISensorController::flush() {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    if (!m_ppUserKeyVal || m_nCurScheme < 0 ||
        static_cast<u32>(m_nCurScheme) >= m_stSysConf.nSchemeSum) {
        return SNS_SUCCESS; // the factory set is never written
    }
    const int nCheck = paramCheck();
    if (nCheck != SNS_SUCCESS) {
        return nCheck;
    }
    const std::string strFile = schemeFileName(m_nCurScheme);
    return keyValToFile(strFile.c_str(), m_ppUserKeyVal[m_nCurScheme], m_nKeyValSum);
}

int ISensorController::restore(int p_nKey) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    int nPos = -1;
    KeyVal* pRow = (m_ppUserKeyVal && m_nCurScheme >= 0) ? m_ppUserKeyVal[m_nCurScheme] : nullptr;
    for (u32 i = 0; pRow != nullptr && i < m_nKeyValSum; ++i) {
        if (pRow[i].key == static_cast<u32>(p_nKey)) {
            nPos = static_cast<int>(i);
            break;
        }
    }
    SNS_ASSERT(-1 != nPos, "restore key(%d) failed! make sure it is sensor ui key \n", p_nKey);
    if (nPos == -1) {
        return SNS_FAILED;
    }
    // The values a refusal kept from the ISP go along with the restored one.
    std::vector<KeyVal> vecSend{pRow[nPos]};
    for (u32 i = 0; !m_setPendingKeys.empty() && i < m_nKeyValSum; ++i) {
        if (i != static_cast<u32>(nPos) && isPending(pRow[i].key)) {
            vecSend.push_back(pRow[i]);
        }
    }
    return applySet(vecSend.data(), static_cast<u32>(vecSend.size()), false);
}

bool ISensorController::restoreAeMode() {
    sensordiag::requestMarkerCheck();
    if (m_bHasLens && restore(KEY_AUTO_FOCUS_MODE) != SNS_SUCCESS) {
        return false;
    }
    if (m_bIsThermal) {
        return true;
    }
    return restore(KEY_EXPOSE_MODE) == SNS_SUCCESS;
}

bool ISensorController::resetToLastParameters() {
    sensordiag::requestMarkerCheck();
    if (!m_ppUserKeyVal || m_nCurScheme < 0 ||
        static_cast<u32>(m_nCurScheme) >= m_stSysConf.nSchemeSum) {
        return true;
    }
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    setState(m_bResettingLast);
    // A file that cannot be read leaves the scheme as it is: nothing is
    // applied and the caller learns that the reset did not happen. A file of
    // other keys is matched by key, as the next start-up would load it.
    int nRet = SNS_FAILED;
    if (loadSchemeSet(static_cast<u32>(m_nCurScheme), m_pstKeyValTmp.get(),
                      "resetToLastParameters")) {
        nRet = applySet(m_pstKeyValTmp.get(), m_nKeyValSum, true);
    }
    clearState(m_bResettingLast);
    return nRet == SNS_SUCCESS;
}

ModuleConfigure ISensorController::moduleConfigureForReset() const {
    ModuleConfigure objModuleConfigure;
    if (sensordiag::debugLevel() > 5) {
        MachineInfo objMachineInfo;
        SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, objMachineInfo);
        std::vector<ModuleConfigure> vecModules;
        ModuleConfigureParser::parse(MODULE_CONFIG_FILE, objMachineInfo.getHardwareModel(),
                                     objMachineInfo.getHardwareCode(), vecModules);
        if (!vecModules.empty()) {
            return vecModules.front();
        }
        // No matching module: keep what the previous init was given.
    }
    objModuleConfigure.setModuleId(m_stSysConf.moduleConfig.nModuleId);
    objModuleConfigure.setDetail(m_stSysConf.moduleConfig.szDetail);
    objModuleConfigure.setParameters(m_stSysConf.moduleConfig.szParameters);
    return objModuleConfigure;
}

bool ISensorController::resetParameters() {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    setState(m_bResetting);
    if (m_ppUserKeyVal) {
        SNS_ASSERT(SNS_SUCCESS == switch_to(m_stSysConf.nSchemeSum), "m_stSysConf.nSchemeSum(%d)\n",
                   m_stSysConf.nSchemeSum);
    }
    const std::string strRemove = removeSchemeFilesCommand();
    const bool bRemoved = SNS_CHECK(0 == sy_system(strRemove.c_str(), SY_SYSTEM_TIMEOUT),
                                    "cmd(%s)\n", strRemove.c_str());
    // The configuration texts are copied out before uinit releases the record.
    const ModuleConfigure objModuleConfigure = moduleConfigureForReset();
    uinit();
    SNS_ASSERT(init(objModuleConfigure), "");
    m_nCurScheme = 0;
    clearState(m_bResetting);
    // The reset happened in memory and on the ISP either way; false tells the
    // host that flash still holds old files or lacks new ones (init reported
    // which file).
    return bRemoved && !m_bFileUnsaved;
}
