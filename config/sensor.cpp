// The per-channel configuration record: module configuration, scheme count,
// device type and the merged UI style.
#define SNS_SOURCE_UNIT "sensor"

#include "config/sensor.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "common/SensorDebug.h"
#include "config/SensorFile.h"
#include "config/SensorXml.h"
#include "platform/InputLimits.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigure.h"
#include "platform/StringHandler.h"
#include "platform/SystemInfoParser.h"

static_assert(sizeof(ModuleConfig::szExtra1) == 32 && sizeof(ModuleConfig::szExtra2) == 10,
              "ModuleConfig extra fields");
static_assert(sizeof(ModuleConfig::szParameters) == 256 && sizeof(ModuleConfig::szDetail) == 512,
              "ModuleConfig text fields");

namespace {

constexpr u32 DEFAULT_SCHEME_SUM = 4;
constexpr const char* MACHINE_INFO_FILE = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* MERGED_STYLE_FILE = "/tmp/merge_style_ch%d.xml";
// Diversity conditions compare this many leading characters.
constexpr std::size_t DIVERSITY_COMPARE_LEN = 5;
// Style texts are read whole into memory; anything larger is not a style.
constexpr INT64 CONFIG_TEXT_MAX = static_cast<INT64>(inputcap::STYLE_FILE_MAX);
constexpr int THERMAL_CHANNEL = 2;

// The sixteen device types of the host's numbering.
constexpr std::array<u32, 16> ACCEPTED_DEVICE_TYPES = {1,  4,  8,  9,  11, 13, 14, 15,
                                                       16, 17, 18, 19, 20, 22, 23, 104};
// Types that use the plain style; every other type uses the dome style.
constexpr std::array<u32, 11> PLAIN_STYLE_TYPES = {1, 8, 9, 11, 13, 14, 15, 16, 17, 18, 22};
// Types whose channel 2 is a thermal sensor.
constexpr std::array<u32, 5> THERMAL_TYPES = {13, 14, 17, 19, 23};

constexpr const char* DEVICE_TYPE_CHECK =
    "DeviceType::IPCAMERA == p_stSysConf->nDeviceType || DeviceType::FACE_DETECT == "
    "p_stSysConf->nDeviceType || DeviceType::VEHICLE_DETECT == p_stSysConf->nDeviceType || "
    "DeviceType::AIMULTI_OBJECT_DETECT == p_stSysConf->nDeviceType || DeviceType::IPDOME == "
    "p_stSysConf->nDeviceType || DeviceType::LPR == p_stSysConf->nDeviceType || DeviceType::IPP "
    "== p_stSysConf->nDeviceType || DeviceType::HUMAN_TEMPERATURE == p_stSysConf->nDeviceType || "
    "DeviceType::THERMAL_DEVICE == p_stSysConf->nDeviceType || "
    "DeviceType::THERMAL_DOUBLE_SENSOR_DEVICE == p_stSysConf->nDeviceType || DeviceType::FISHEYE "
    "== p_stSysConf->nDeviceType || DeviceType::DOMECORE == p_stSysConf->nDeviceType || "
    "DeviceType::THERMAL_DOUBLE_SENSOR_DOME_DEVICE == p_stSysConf->nDeviceType || "
    "DeviceType::BINOCULAR_DEVICE == p_stSysConf->nDeviceType || DeviceType::THERMAL_IPDOME == "
    "p_stSysConf->nDeviceType || DeviceType::DOMECORE_THERMAL_DEVICE == p_stSysConf->nDeviceType";

struct StyleFiles {
    const char* szStyle;
    const char* szDiversity;
};

constexpr StyleFiles PLAIN_STYLE = {
    "/hd1/moduleConfig/sensorConfig/style/Style.xml",
    "/hd1/moduleConfig/sensorConfig/styleDiversity/StyleDiversity.xml"};
constexpr StyleFiles DOME_STYLE = {
    "/hd1/moduleConfig/sensorConfig/style/Style_dome.xml",
    "/hd1/moduleConfig/sensorConfig/styleDiversity/StyleDiversity_dome.xml"};
constexpr StyleFiles THERMAL_STYLE = {
    "/hd1/moduleConfig/sensorConfig/style/Style_Thermal.xml",
    "/hd1/moduleConfig/sensorConfig/styleDiversity/StyleDiversity_Thermal.xml"};

template <std::size_t N> bool contains(const std::array<u32, N>& p_arrSet, u32 p_nVal) {
    return std::find(p_arrSet.begin(), p_arrSet.end(), p_nVal) != p_arrSet.end();
}

const StyleFiles& chooseStyleFiles(int p_nChannelID, u32 p_nDeviceType) {
    if (p_nChannelID == THERMAL_CHANNEL && contains(THERMAL_TYPES, p_nDeviceType)) {
        return THERMAL_STYLE;
    }
    return contains(PLAIN_STYLE_TYPES, p_nDeviceType) ? PLAIN_STYLE : DOME_STYLE;
}

struct ConfigTextDeleter {
    void operator()(char* p_szText) const {
        char* szText = p_szText;
        freeConfigText(szText);
    }
};
using ConfigText = std::unique_ptr<char[], ConfigTextDeleter>;

// Reads a whole text file into a new zero-terminated buffer; p_nRead is what
// loadFromFile returned. The length is taken once, so the buffer and the read
// agree even when the file changes in between. A failed check names
// p_szOperation, the operation the text is loaded for.
ConfigText loadConfigText(const char* p_szOperation, const char* p_szFile, int& p_nRead) {
    INT64 nLen = getFileLen(p_szFile);
    if (nLen < 0 || nLen > CONFIG_TEXT_MAX) {
        SNS_ASSERT_TEXT_FOR(p_szOperation, false, "0 <= file_len && file_len <= CONFIG_TEXT_MAX",
                            "file_name(%s) file_len(%lld) refused: larger than %lld bytes\n",
                            p_szFile, static_cast<long long>(nLen),
                            static_cast<long long>(CONFIG_TEXT_MAX));
        nLen = 0;
    }
    ConfigText pText(newConfigText(static_cast<std::size_t>(nLen) + 1));
    p_nRead = loadFromFile(p_szFile, pText.get(), nLen);
    return pText;
}

ConfigText copyConfigText(const std::string& p_strText) {
    ConfigText pText(newConfigText(p_strText.size() + 1));
    if (pText) {
        std::memcpy(pText.get(), p_strText.data(), p_strText.size());
    }
    return pText;
}

// Copies a host text into a fixed field; a longer text is reported and cut.
template <std::size_t N>
void copyField(char (&p_szField)[N], const std::string& p_strText, const char* p_szName) {
    if (p_strText.size() >= N) {
        SNS_ASSERT_TEXT(false, "strlen(text) < sizeof(field)", "%s(%zu) cut to %zu characters\n",
                        p_szName, p_strText.size(), N - 1);
    }
    const std::size_t nLen = std::min(p_strText.size(), N - 1);
    std::memcpy(p_szField, p_strText.data(), nLen);
    p_szField[nLen] = '\0';
}

// The characters of "(p_szField=value)": start and length, or false when the
// field, its "=" or the closing ")" is missing.
bool findDetailValue(const char* p_szDetail, const char* p_szField, const char*& p_pStart,
                     std::size_t& p_nLen) {
    if (p_szDetail == nullptr || p_szField == nullptr) {
        return false;
    }
    const char* pField = std::strstr(p_szDetail, p_szField);
    const char* pEqual = pField != nullptr ? std::strchr(pField, '=') : nullptr;
    const char* pClose = pEqual != nullptr ? std::strchr(pEqual, ')') : nullptr;
    if (pClose == nullptr) {
        return false;
    }
    p_pStart = pEqual + 1;
    p_nLen = static_cast<std::size_t>(pClose - p_pStart);
    if (p_nLen > DETAIL_VALUE_MAX) {
        SNS_ASSERT_TEXT(false, "nLen <= DETAIL_VALUE_MAX", "field(%s) value length(%zu)\n",
                        p_szField, p_nLen);
        p_nLen = DETAIL_VALUE_MAX;
    }
    return true;
}

// An accepted value matches the detail value when their first five
// characters agree.
bool sameLeading(const char* p_szA, const char* p_szB) {
    return std::strncmp(p_szA, p_szB, DIVERSITY_COMPARE_LEN) == 0;
}

bool conditionHolds(const char* p_szAccepted, const char* p_szDetailValue) {
    std::vector<std::string> vecPieces;
    StringHandler::split(p_szAccepted, vecPieces, ",");
    for (const std::string& strPiece : vecPieces) {
        if (sameLeading(strPiece.c_str(), p_szDetailValue)) {
            return true;
        }
    }
    return sameLeading(p_szAccepted, p_szDetailValue);
}

// The first attribute of the entry whose condition holds, or nullptr.
const TiXmlAttribute* findHoldingCondition(const TiXmlElement* p_pEntry, const char* p_szDetail) {
    for (const TiXmlAttribute* modi_attr = p_pEntry->FirstAttribute(); modi_attr != nullptr;
         modi_attr = modi_attr->Next()) {
        SNS_DBG_FOR("mergeStyle", "modi_attr->Name()(%s), modi_attr->Value()(%s)\n",
                    modi_attr->Name(), modi_attr->Value());
        std::array<char, DETAIL_VALUE_MAX + 1> szVal{};
        if (getDetailFieldToStr(p_szDetail, modi_attr->Name(), szVal.data()) == 0 &&
            conditionHolds(modi_attr->Value(), szVal.data())) {
            return modi_attr;
        }
        SNS_DBG_FOR("mergeStyle", "modi_attr->Name()(%s), modi_attr->Value()(%s) nVal(%s)\n",
                    modi_attr->Name(), modi_attr->Value(), szVal.data());
    }
    return nullptr;
}

// Runs the edits of one diversity entry when one of its conditions holds.
void applyDiversityEntry(TiXmlDocument& doc_style, const TiXmlElement* node_first,
                         const char* p_szDetail) {
    const TiXmlAttribute* modi_attr = findHoldingCondition(node_first, p_szDetail);
    if (modi_attr == nullptr) {
        return;
    }
    SNS_DBG_FOR("mergeStyle", "modi_attr->Name()(%s), modi_attr->Value()(%s)\n", modi_attr->Name(),
                modi_attr->Value());
    const TiXmlElement* node_second = nullptr;
    SNS_ASSERT_TEXT_FOR("mergeStyle", NULL != (node_second = node_first->FirstChildElement()),
                        "NULL != (node_second = node_first->FirstChildElement())", "");
    for (; node_second != nullptr; node_second = node_second->NextSiblingElement()) {
        SNS_DBG_FOR("mergeStyle", "modi_attr->Name()(%s), modi_attr->Value()(%s)\n",
                    modi_attr->Name(), modi_attr->Value());
        updateStyleTab(&doc_style, node_second->Value(), node_second->Attribute("tab_key"),
                       node_second->FirstChildElement());
        SNS_DBG_FOR("mergeStyle", "modi_attr->Name()(%s), modi_attr->Value()(%s)\n",
                    modi_attr->Name(), modi_attr->Value());
    }
}

// "max_scheme" held to the range the scheme files can take: every scheme set
// is allocated, loaded and written at start-up, so an unchecked count would
// allocate from it (a negative one wraps to four thousand million).
u32 schemeSumOf(const char* p_szDetail) {
    u32 nField = DEFAULT_SCHEME_SUM;
    getDetailFieldTou32(p_szDetail, "max_scheme", &nField);
    const int nAsked = static_cast<int>(nField); // the field's atoi value
    const int nSum = std::clamp(nAsked, inputcap::SCHEME_SUM_MIN, inputcap::SCHEME_SUM_MAX);
    SNS_ASSERT_TEXT(nSum == nAsked, "SCHEME_SUM_MIN <= max_scheme && max_scheme <= SCHEME_SUM_MAX",
                    "max_scheme(%d) out of %d..%d, %d used\n", nAsked, inputcap::SCHEME_SUM_MIN,
                    inputcap::SCHEME_SUM_MAX, nSum);
    return static_cast<u32>(nSum);
}

void replaceConfigText(char** p_pszText, ConfigText p_pNew) {
    freeConfigText(*p_pszText);
    *p_pszText = p_pNew.release();
}

} // namespace

char* newConfigText(std::size_t p_nBytes) {
    return new (std::nothrow) char[p_nBytes]();
}

void freeConfigText(char*& p_szText) {
    delete[] p_szText;
    p_szText = nullptr;
}

UIFileInfo* newUIFileList(u32 p_nCount) {
    return new (std::nothrow) UIFileInfo[p_nCount]();
}

int getDetailFieldTou32(const char* p_szDetail, const char* p_szField, u32* p_pnVal) {
    const char* pStart = nullptr;
    std::size_t nLen = 0;
    if (p_pnVal == nullptr || !findDetailValue(p_szDetail, p_szField, pStart, nLen)) {
        return -1;
    }
    std::array<char, DETAIL_VALUE_MAX + 1> szVal{};
    std::memcpy(szVal.data(), pStart, nLen);
    *p_pnVal = static_cast<u32>(std::atoi(szVal.data()));
    return 0;
}

int getDetailFieldToStr(const char* p_szDetail, const char* p_szField, char* p_szVal) {
    const char* pStart = nullptr;
    std::size_t nLen = 0;
    if (p_szVal == nullptr || !findDetailValue(p_szDetail, p_szField, pStart, nLen)) {
        return -1;
    }
    std::memcpy(p_szVal, pStart, nLen);
    return 0;
}

int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                SysConfig* p_stSysConf) {
    MachineInfo machineInfo;
    const bool bParsed = SystemInfoParser::parseMachineInfo(MACHINE_INFO_FILE, machineInfo);
    TiXmlDocumentEx objMerged;
    return initSysConf(p_nChannelID, p_objModuleConfigure, machineInfo, bParsed, objMerged,
                       p_stSysConf);
}

int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                const MachineInfo& machineInfo, bool p_bMachineInfoRead,
                TiXmlDocumentEx& p_objMergedStyle, SysConfig* p_stSysConf) {
    if (p_stSysConf == nullptr) {
        return SNS_FAILED;
    }
    *p_stSysConf = SysConfig{};
    ModuleConfig& moduleConfig = p_stSysConf->moduleConfig;
    std::strcpy(moduleConfig.szExtra1, "xxx");
    std::strcpy(moduleConfig.szExtra2, "xxx");
    moduleConfig.nModuleId = p_objModuleConfigure.getModuleId();
    copyField(moduleConfig.szDetail, p_objModuleConfigure.getDetail(), "szDetail");
    copyField(moduleConfig.szParameters, p_objModuleConfigure.getParameters(), "szParameters");

    p_stSysConf->nSchemeSum = schemeSumOf(moduleConfig.szDetail);

    SNS_ASSERT_TEXT(p_bMachineInfoRead,
                    "SystemInfoParser::parseMachineInfo(\"/mnt/mtd/code/factory_setting/"
                    "machineinfo.ini\", machineInfo)",
                    "");
    p_stSysConf->nDeviceType = static_cast<u32>(machineInfo.getDeviceType());
    SNS_ASSERT_TEXT(contains(ACCEPTED_DEVICE_TYPES, p_stSysConf->nDeviceType), DEVICE_TYPE_CHECK,
                    "machineinfo, devicetype(%d) error, must be 1 or 4 or 8 or 9 or 13\n",
                    static_cast<int>(p_stSysConf->nDeviceType));

    const StyleFiles& stFiles = chooseStyleFiles(p_nChannelID, p_stSysConf->nDeviceType);
    const std::string strStyleFileName = stFiles.szStyle;
    int nRead = 0;
    p_stSysConf->szUIStyle =
        loadConfigText("initSysConf", strStyleFileName.c_str(), nRead).release();
    SNS_ASSERT_TEXT(nRead > 0,
                    "loadFromFile(strStyleFileName.c_str(), p_stSysConf->szUIStyle, "
                    "getFileLen(strStyleFileName.c_str())) > 0",
                    "");

    const std::string strStyleDivFileName = stFiles.szDiversity;
    const ConfigText ui_styleDiversity =
        loadConfigText("initSysConf", strStyleDivFileName.c_str(), nRead);
    SNS_ASSERT_TEXT(nRead > 0,
                    "loadFromFile(strStyleDivFileName.c_str(), ui_styleDiversity, "
                    "getFileLen(strStyleDivFileName.c_str())) > 0",
                    "");

    const int nMerged =
        mergeStyle(p_nChannelID, &p_stSysConf->moduleConfig, &p_stSysConf->szUIStyle,
                   ui_styleDiversity.get(), p_objMergedStyle);
    SNS_ASSERT_TEXT(SNS_SUCCESS == nMerged,
                    "SNS_SUCCESS == mergeStyle(p_nChannelID,&p_stSysConf->moduleConfig, "
                    "&p_stSysConf->szUIStyle, ui_styleDiversity)",
                    "");
    return SNS_SUCCESS;
}

void uinitSysConf(SysConfig* p_stSysConf) {
    if (p_stSysConf == nullptr) {
        return;
    }
    if (p_stSysConf->pUIFile != nullptr) {
        for (u32 i = 0; i < p_stSysConf->nUIFileSum; ++i) {
            freeConfigText(p_stSysConf->pUIFile[i].szCommon);
            freeConfigText(p_stSysConf->pUIFile[i].szLanguage);
        }
        delete[] p_stSysConf->pUIFile;
        p_stSysConf->pUIFile = nullptr;
        p_stSysConf->nUIFileSum = 0;
    }
    freeConfigText(p_stSysConf->szUIStyle);
}

int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity) {
    TiXmlDocumentEx doc_style;
    return mergeStyle(p_nChannelID, p_pModuleConfig, ui_style, ui_styleDiversity, doc_style);
}

int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity, TiXmlDocumentEx& doc_style) {
    if (ui_style == nullptr || p_pModuleConfig == nullptr) {
        return SNS_FAILED;
    }
    TiXmlDocumentEx doc_style_div;
    SNS_ASSERT(doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8), "");
    SNS_ASSERT(doc_style_div.LoadMem(ui_styleDiversity, TIXML_ENCODING_UTF8), "");

    const TiXmlElement* node_first = nullptr;
    SNS_ASSERT_TEXT(NULL != (node_first = doc_style_div.RootElement()),
                    "NULL != (node_first = doc_style_div.RootElement())", "");
    for (; node_first != nullptr; node_first = node_first->NextSiblingElement()) {
        applyDiversityEntry(doc_style, node_first, p_pModuleConfig->szDetail);
    }

    // Printed once: the same text is saved, traced and kept as the style (a
    // saved file holds exactly that text, so it is not read back).
    std::array<char, 64> filename{};
    std::snprintf(filename.data(), filename.size(), MERGED_STYLE_FILE, p_nChannelID);
    std::string strMerged;
    doc_style.getXmlString(strMerged);
    const bool bSaved = TiXmlDocumentEx::saveXmlText(filename.data(), strMerged);
    SNS_ASSERT_TEXT(bSaved, "doc_style.SaveFile(filename)", "filename(%s)\n", filename.data());
    SNS_INFO("%s\n", strMerged.c_str());

    replaceConfigText(ui_style, copyConfigText(strMerged));
    return SNS_SUCCESS;
}
