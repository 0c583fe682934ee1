// The per-channel configuration record and the functions that fill and release it.
#pragma once

#include <cstddef>

#include "common/SensorTypes.h"

class MachineInfo;
class TiXmlDocumentEx;
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
char* newConfigText(std::size_t p_nBytes); // zero-filled; nullptr when out of memory
void freeConfigText(char*& p_szText);      // releases and clears the pointer
UIFileInfo* newUIFileList(u32 p_nCount);   // zero-filled entries

// Fills the record from the module configuration, the machine description and
// the device's style files. The record must not own anything yet.
int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                SysConfig* p_stSysConf);
// The same from a machine description the caller has read already
// (p_bMachineInfoRead: whether that read succeeded), so that a start-up reads
// the file once; the merged style's document is left in p_objMergedStyle for
// the factory set, so that the style text need not be parsed again.
int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                const MachineInfo& p_objMachineInfo, bool p_bMachineInfoRead,
                TiXmlDocumentEx& p_objMergedStyle, SysConfig* p_stSysConf);
// Releases what the record owns and clears the released pointers, so a second
// call releases nothing again.
void uinitSysConf(SysConfig* p_stSysConf);
// Value of "(p_szField=value)" in the detail text, cut to DETAIL_VALUE_MAX
// characters; -1 when the field is missing. The text form copies the characters
// without a terminator into a buffer the caller has zeroed (DETAIL_VALUE_MAX + 1 bytes).
int getDetailFieldTou32(const char* p_szDetail, const char* p_szField, u32* p_pnVal);
int getDetailFieldToStr(const char* p_szDetail, const char* p_szField, char* p_szVal);
// Applies the diversity edits whose conditions hold for the detail text to the
// base style *ui_style, keeps the result in /tmp/merge_style_ch%d.xml and in
// *ui_style (reallocated with newConfigText).
int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity);
// The same, merging in p_objMerged, which keeps the merged document.
int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity, TiXmlDocumentEx& p_objMerged);
