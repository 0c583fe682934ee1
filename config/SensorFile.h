// Parameter files, version stamp, style XML edits, the dynamic style and the
// factory parameter set.
#pragma once

#include <string>

#include "common/SensorTypes.h"
#include "common/ia_ioctrl.h"
#include "config/sensor.h"

class MachineInfo;
class ModuleConfigure;
class TiXmlDocument;
class TiXmlDocumentEx;
class TiXmlElement;

// Version stamp file: 4 bytes, unsigned 32-bit little-endian.
constexpr const char* SENSOR_VERSION_FILE = "/mnt/mtd/code/config_file/snsversion.cfg";
// Bytes of one parameter record on flash: key then value, each 32-bit little-endian.
constexpr u32 KEYVAL_FILE_RECORD = 8;
// The record at p_pRecord (KEYVAL_FILE_RECORD bytes).
KeyVal keyValFromRecord(const char* p_pRecord);

// ---- Start-up steps sharing what init has read once ----------------------
// The same from a machine description the caller has read already
// (p_bMachineInfoRead: whether that read succeeded), so that a start-up reads
// the file once; the merged style's document is left in p_objMergedStyle for
// the factory set, so that the style text need not be parsed again.
int initSysConf(int p_nChannelID, const ModuleConfigure& p_objModuleConfigure,
                const MachineInfo& p_objMachineInfo, bool p_bMachineInfoRead,
                TiXmlDocumentEx& p_objMergedStyle, SysConfig* p_stSysConf);
// The same, merging in p_objMerged, which keeps the merged document.
int mergeStyle(int p_nChannelID, ModuleConfig* p_pModuleConfig, char** ui_style,
               char* ui_styleDiversity, TiXmlDocumentEx& p_objMerged);

// ---- Files ---------------------------------------------------------------
// All names are device paths. Writes replace the file in one step (write to
// a temporary file, then rename), so a power cut leaves the old or the new
// content, never a mix.

// Length of the file, 0 when it cannot be opened (reported).
INT64 getFileLen(const char* file_name);
// Reads exactly file_len bytes into data; the count read, or -1.
int loadFromFile(const char* file_name, char* data, INT64 file_len);
// Replaces the file with file_len bytes of data; the count written, or -1.
// Any result but file_len means the old file is untouched.
int saveToFile(const char* file_name, const char* data, INT64 file_len);
// Loads up to p_nKeyValNum records. A longer file loads its first records; a
// shorter one is reported and leaves the entries it lacks unchanged.
int keyValFromFile(const char* file_name, KeyVal* p_pKeyVal, u32 p_nKeyValNum);
// Writes exactly p_nKeyValSum records: SNS_SUCCESS, or SNS_ERR_FILE_WRITE when
// the file was not replaced (reported; the old file stays as it was).
int keyValToFile(const char* file_name, const KeyVal* p_pKeyVal, u32 p_nKeyValSum);
int getVersion(u32* p_pnVersion);
int setVersion(u32 p_nVersion);

// ---- Style merge ---------------------------------------------------------

// Applies one diversity edit ("Modify", "AddAfter" or "Delete") to the first
// tab whose "key" is p_szTabKey.
int updateStyleTab(TiXmlDocument* doc_style, const char* p_szOperation, const char* p_szTabKey,
                   const TiXmlElement* p_pNewTab);

// ---- Dynamic style -------------------------------------------------------

// Rewrites the style by what the ISP reports as dynamic on this sensor and
// removes the controls the feature flags hide; the result in strDnaStyle.
int getDnaStyle(int p_channelID, const char* p_szStyle, std::string& strDnaStyle,
                bool p_bShowWDRFalg, bool p_bShowLDCFlag);
// The same with the beaway flag given instead of read from the global flag.
int getDnaStyle(int p_channelID, const char* p_szStyle, std::string& strDnaStyle,
                bool p_bShowWDRFalg, bool p_bShowLDCFlag, bool p_bShowBeaway);
int doDnaStyle(TiXmlElement* p_pNode, int p_nCmd, const ia_dynamic_params_attr_st* p_pstAttr);
int doCustomizeStyle(TiXmlElement* p_pNode, int p_nCmd, ia_dynamic_params_attr_st* p_pstAttr);
int getDnaValbyCmdId(TiXmlElement* p_pNode, int p_nCmd, int& p_nVal);
int getNodebyCmdId(TiXmlElement* p_pNode, int p_nCmd, TiXmlElement*& p_pFound);
int DeleteNode(TiXmlElement* p_pRoot, TiXmlElement* p_pDel);
int ModifyNodebyCmdId(TiXmlElement* p_pNode, int p_nCmd);

// The ISP's counts are used only within its records: a count above the record
// (16 commands, 64 items) or below 0 is reported and brought into range.
void clampDynamicCmdList(ia_dynamic_cmd_list_st& p_stList);
void clampDynamicParams(ia_dynamic_params_attr_st& p_stAttr);

// ---- Factory parameter set -----------------------------------------------

// Fills p_pKeyVal (room for p_nCapacity entries) with every control of the
// pruned style that has both "id" and "value", in document order. Controls
// beyond the capacity are reported and left out.
int getFctData(int p_channelID, const char* p_szStyle, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
               u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag);
// The same with the beaway flag given instead of read from the global flag.
int getFctData(int p_channelID, const char* p_szStyle, KeyVal* p_pKeyVal, u32* p_pnKeyValNum,
               u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag, bool p_bShowBeaway);
// The same from the merged style's own document, as mergeStyle left it (init
// has it at hand): the document is rewritten in place, no text is parsed.
int getFctData(int p_channelID, TiXmlDocumentEx& p_objMergedStyle, KeyVal* p_pKeyVal,
               u32* p_pnKeyValNum, u32 p_nCapacity, bool p_bShowWDRFalg, bool p_bShowLDCFlag,
               bool p_bShowBeaway);
// Appends the controls of pRootNode's subtree at *p_pnKeyValNum; SNS_FAILED
// when some did not fit into p_nCapacity entries (the count stops there).
int style2KeyVal(TiXmlElement* pRootNode, KeyVal* p_pKeyVal, u32* p_pnKeyValNum, u32 p_nCapacity);
