// The per-channel configuration record and the functions that fill and release it.
#pragma once

#include <cstddef>

#include "common/SensorTypes.h"

class ModuleConfigure;

// Copy of the host's module configuration for one channel.
struct ModuleConfig {
    int nModuleId;
    char szExtra1[32];
    char szExtra2[10];
    char szParameters[256];
    char szDetail[512];
};

// One entry of the UI file list.
struct UIFileInfo {
    int nId;
    char szReserved[32];
    char* szLanguage;
    char* szCommon;
};

struct SysConfig {
    ModuleConfig moduleConfig;
    u32 nSchemeSum;
    u32 nUIFileSum;
    UIFileInfo* pUIFile;
    char* szUIStyle;
    u32 nDeviceType;
};

// Longest detail value the module reads ("(name=value)"); longer values are cut.
constexpr std::size_t DETAIL_VALUE_MAX = 9;

// Heap texts and UI file lists owned by a SysConfig are made and released only
// through these, so that whoever fills the record and uinitSysConf agree.
// newConfigText zero-fills and gives nullptr when out of memory; freeConfigText
// releases and clears the pointer; newUIFileList zero-fills its entries.
SENSORDLL_EXPORT char* newConfigText(std::size_t p_nBytes);
SENSORDLL_EXPORT void freeConfigText(char*& p_szText);
SENSORDLL_EXPORT UIFileInfo* newUIFileList(u32 p_nCount);

// Fills the record from the module configuration, the machine description and
// the device's style files. The record must not own anything yet.
SENSORDLL_EXPORT int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                                 SysConfig* p_stSysConf);
// Releases what the record owns and clears the released pointers, so a second
// call releases nothing again.
SENSORDLL_EXPORT void uinitSysConf(SysConfig* p_stSysConf);
// Value of "(p_szField=value)" in the detail text, cut to DETAIL_VALUE_MAX
// characters; -1 when the field is missing. The text form copies the characters
// without a terminator into a buffer the caller has zeroed (DETAIL_VALUE_MAX + 1 bytes).
SENSORDLL_EXPORT int getDetailFieldTou32(const char* p_szDetail, const char* p_szField,
                                         u32* p_pnVal);
SENSORDLL_EXPORT int getDetailFieldToStr(const char* p_szDetail, const char* p_szField,
                                         char* p_szVal);
// Applies the diversity edits whose conditions hold for the detail text to the
// base style *ui_style, keeps the result in /tmp/merge_style_ch%d.xml and in
// *ui_style (reallocated with newConfigText).
SENSORDLL_EXPORT int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
                                char* ui_styleDiversity);
