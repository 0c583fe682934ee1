// The per-channel configuration record and the functions that fill and release it.
#pragma once

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

int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                SysConfig* p_stSysConf);
void uinitSysConf(SysConfig* p_stSysConf);
int getDetailFieldTou32(const char* p_szDetail, const char* p_szField, u32* p_pnVal);
int getDetailFieldToStr(const char* p_szDetail, const char* p_szField, char* p_szVal);
int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity);
