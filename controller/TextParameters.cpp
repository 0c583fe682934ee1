// The text interface: parameters as "(key,value)" groups, id-list requests
// "(id,id,...)", the whole current set, and the allowed values of a few
// exposure, iris and focus parameters.
#define SNS_SOURCE_UNIT "ISensorController"

#include <algorithm>
#include <cstdio>

#include "common/SensorDebug.h"
#include "common/SensorKeys.h"
#include "common/ia_ioctrl.h"
#include "config/SensorFile.h"
#include "config/SensorKeyVal.h"
#include "config/SensorXml.h"
#include "controller/ISensorController.h"
#include "platform/InputLimits.h"
#include "platform/StringHandler.h"

namespace {

// The only commands whose range is reported.
constexpr u32 RANGE_CAPABLE_KEYS[] = {
    KEY_MAX_SHUTTER,       KEY_FIX_SHUTTER,   KEY_MIN_SHUTTER,           KEY_MIN_SHUTTER_NIGHT,
    KEY_MAX_SHUTTER_NIGHT, KEY_IRIS_POSITION, KEY_AUTO_FOCUS_NEAR_LIMIT,
};

// A style maximum-shutter value above this means the stored file answers
// getAllParameters; otherwise the live, ISP-corrected set does.
constexpr int STORED_SET_SHUTTER_THRESHOLD = 199;
constexpr int NO_SHUTTER_PRESET = 200;

bool isRangeCapable(int p_nCmd) {
    return std::find(std::begin(RANGE_CAPABLE_KEYS), std::end(RANGE_CAPABLE_KEYS),
                     static_cast<u32>(p_nCmd)) != std::end(RANGE_CAPABLE_KEYS);
}

bool isListedDynamic(const ia_dynamic_cmd_list_st& p_stList, int p_nCmd) {
    const int nCount = std::clamp(p_stList.cmd_cnt, 0, IA_DYNAMIC_CMD_MAX);
    return std::find(p_stList.cmd_list, p_stList.cmd_list + nCount, static_cast<u32>(p_nCmd)) !=
           p_stList.cmd_list + nCount;
}

// Ids in an id-list request: one more than its commas.
size_t idCount(const std::string& p_strText) {
    return static_cast<size_t>(std::count(p_strText.begin(), p_strText.end(), ',')) + 1;
}

bool withinRequestCaps(const std::string& p_strText) {
    return p_strText.size() <= inputcap::TEXT_REQUEST_MAX &&
           idCount(p_strText) <= inputcap::TEXT_IDS_MAX;
}

// An id is a decimal number, blanks around it allowed.
bool idNumber(const std::string& p_strId, int& p_nKey) {
    const size_t nFirst = p_strId.find_first_not_of(" \t");
    if (nFirst == std::string::npos) {
        return false;
    }
    const size_t nLast = p_strId.find_last_not_of(" \t");
    return StringHandler::parseInt(p_strId.substr(nFirst, nLast - nFirst + 1), p_nKey);
}

} // namespace

bool ISensorController::parseSensorParameter(const std::string& p_strText,
                                             std::vector<std::string>& vecIds) {
    sensordiag::requestMarkerCheck();
    const size_t nClose = p_strText.find(')');
    if (p_strText.empty() || p_strText.find('(') != 0 || nClose == std::string::npos ||
        nClose != p_strText.size() - 1 || nClose <= 1 || !withinRequestCaps(p_strText)) {
        return false;
    }
    StringHandler::split(p_strText.substr(1, nClose - 1), vecIds, ",");
    return !vecIds.empty();
}

int ISensorController::setParameters(const std::string& p_strParameters, bool p_bCache) {
    // Refused before the lock is taken: an endless text never holds the channel.
    if (p_strParameters.size() > inputcap::TEXT_REQUEST_MAX) {
        SNS_WARN("parameters refused: text of %zu characters, at most %zu\n",
                 p_strParameters.size(), inputcap::TEXT_REQUEST_MAX);
        return SNS_FAILED;
    }
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    SNS_DBG("p_Parameters1111111111(%s)\n", p_strParameters.c_str());
    if (!m_pstKeyValTmp) {
        SNS_WARN("parameters refused: the channel is not initialised\n");
        return SNS_FAILED;
    }
    // A text with more pairs than a set holds is refused as a whole: applying
    // a cut list would half-apply the host's change.
    u32 nCount = 0;
    if (keyval_str2st(p_strParameters, m_pstKeyValTmp.get(), &nCount, m_nKeyValSum) !=
        SNS_SUCCESS) {
        SNS_WARN("parameters refused: more than %u pairs in the text\n", m_nKeyValSum);
        return SNS_FAILED;
    }
    return setParameters(m_pstKeyValTmp.get(), nCount, p_bCache);
}

int ISensorController::getParameters(const std::string& p_strIds, std::string& p_strOut) {
    sensordiag::requestMarkerCheck();
    std::vector<std::string> vecIds;
    if (!withinRequestCaps(p_strIds)) {
        // The request itself is not echoed: it may be megabytes long.
        std::printf("%s%d getParameters fail p_strIds too long: %zu characters, %zu ids (at most "
                    "%zu, %zu)\n",
                    SNS_SOURCE_UNIT, __LINE__, p_strIds.size(), idCount(p_strIds),
                    inputcap::TEXT_REQUEST_MAX, inputcap::TEXT_IDS_MAX);
        return 0;
    }
    if (!parseSensorParameter(p_strIds, vecIds)) {
        std::printf("%s%d getParameters fail p_strIds = %s \n", SNS_SOURCE_UNIT, __LINE__,
                    p_strIds.c_str());
        return 0;
    }
    p_strOut.clear();
    for (const std::string& strId : vecIds) {
        int nKey = 0;
        int nValue = 0;
        // An id that is not a number names no key: it is left out, never read
        // as key 0 the way atoi would.
        if (idNumber(strId, nKey) && getParameter(nKey, nValue)) {
            char szPair[32];
            std::snprintf(szPair, sizeof(szPair), "(%d,%d)", nKey, nValue);
            p_strOut += szPair;
        }
    }
    std::printf("@@ out_Parameters = %s @@\n", p_strOut.c_str());
    return 1;
}

bool ISensorController::getAllParameters(std::string& p_strOut) {
    sensordiag::requestMarkerCheck();
    HostLock objLock(*this, SNS_SOURCE_UNIT, __LINE__);
    if (!m_ppUserKeyVal || m_nCurScheme < 0) {
        return true;
    }
    int nVal = NO_SHUTTER_PRESET;
    char szStyleName[64];
    std::snprintf(szStyleName, sizeof(szStyleName), "/tmp/merge_style_ch%d.xml", m_nCameraID);
    const char* filename = szStyleName;
    TiXmlDocumentEx objStyleXmlDoc;
    SNS_ASSERT(objStyleXmlDoc.LoadFile(filename, TIXML_ENCODING_UTF8), "");
    getDnaValbyCmdId(objStyleXmlDoc.RootElement(), KEY_MAX_SHUTTER, nVal);

    if (nVal > STORED_SET_SHUTTER_THRESHOLD) {
        if (static_cast<u32>(m_nCurScheme) >= m_stSysConf.nSchemeSum) {
            return true;
        }
        // The stored set, matched by key; a file that cannot be read yields
        // no text rather than whatever the scratch set held.
        if (!loadSchemeSet(static_cast<u32>(m_nCurScheme), m_pstKeyValTmp.get(),
                           "getAllParameters")) {
            return false;
        }
        keyval_st2str(p_strOut, m_pstKeyValTmp.get(), m_nKeyValSum);
        return true;
    }
    SNS_ASSERT(SNS_SUCCESS ==
                   keyval_correct(m_nCameraID - 1, m_ppUserKeyVal[m_nCurScheme], m_nKeyValSum),
               "m_nCurScheme(%d) m_nKeyValSum(%d)\n", m_nCurScheme, m_nKeyValSum);
    keyval_st2str(p_strOut, m_ppUserKeyVal[m_nCurScheme], m_nKeyValSum);
    return true;
}

bool ISensorController::getSensorParamRange(int p_nCmd, int& p_nDefault, std::string& p_strRange) {
    sensordiag::requestMarkerCheck();
    ia_dynamic_cmd_list_st dnaCmdList{};
    const int nListRet =
        ia_ioctrl_v2(m_nCameraID - 1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &dnaCmdList);
    if (!SNS_CHECK_TEXT(
            SNS_SUCCESS == nListRet,
            "SNS_SUCCESS == ia_ioctrl_v2(m_nCameraID-1, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, "
            "IA_CMD_OPT_GET, (void*)(&dnaCmdList))",
            "")) {
        dnaCmdList = ia_dynamic_cmd_list_st{}; // a refused list counts as empty
    }
    if (!isListedDynamic(dnaCmdList, p_nCmd) || !isRangeCapable(p_nCmd)) {
        return false;
    }
    ia_dynamic_params_attr_st stDynamicParam{};
    SNS_ASSERT(SNS_SUCCESS == doIaCmd(p_nCmd, IA_CMD_OPT_GET_PARAM_RNAGE, (void*)(&stDynamicParam)),
               "");
    if (stDynamicParam.param_type != 0) {
        return true;
    }
    p_nDefault = stDynamicParam.default_val;
    const int nItems = std::clamp(stDynamicParam.items_cnt, 0, IA_DYNAMIC_ITEM_MAX);
    for (int i = 0; i < nItems; ++i) {
        if (i > 0) {
            p_strRange += ' ';
        }
        p_strRange += std::to_string(stDynamicParam.item[i]);
    }
    std::printf("cmd=%d DefaltParam=%d strParamRange=%s\n", p_nCmd, p_nDefault, p_strRange.c_str());
    return true;
}
