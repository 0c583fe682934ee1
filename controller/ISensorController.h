// The controller of one camera channel: owns every image-tuning parameter of the
// channel, applies them to the ISP, keeps the scheme sets and their files, and
// hands the host its style text.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/SensorTypes.h"
#include "common/keycmd.h"
#include "config/sensor.h"
#include "controller/KeyIndex.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigure.h"
#include "platform/SensorZoomFocusParam.h"
#include "platform/VXMutex.h"

class GThread;
class TiXmlDocumentEx;
class VideoStreamModule;

class SENSORDLL_EXPORT ISensorController {
public:
    ISensorController();
    ~ISensorController();
    ISensorController(const ISensorController&) = delete;
    ISensorController& operator=(const ISensorController&) = delete;

    // Object queries.
    void setChannelID(int p_nChannelID);
    int paramCheck();
    int getSensorType();
    int getSensorStatus();
    std::string getUICommonFile(int p_nId);
    std::string getUILanguageFile(int p_nId);
    // The channel as setChannelID left it, for host tools.
    int getCameraID() const { return m_nCameraID; }
    bool isThermalChannel() const { return m_bIsThermal; }
    // User schemes of the channel; the factory set is scheme getSchemeSum().
    u32 getSchemeSum() const { return m_stSysConf.nSchemeSum; }
    // Keys whose value in the current set the ISP may not hold: a refusal
    // stopped the scheme switch or reset that should have sent them.
    std::vector<u32> getPendingKeys();

    // Start-up and release.
    bool init(const ModuleConfigure& p_objModuleConfigure);
    void uinit();
    std::string getUIStyleFile();

    // Key-command map and generic ISP dispatch.
    int findFromKeyCmdMap(const keycmd* p_pKeyCmdMap, unsigned int p_nKey, keycmd& p_stKeyCmd);
    int doIaCmd(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doIaCmd_User(u32 p_nKey, u32 p_nDir, void* p_pVal);

    // Parameter application and cache.
    int setParameters(KeyVal* p_pKeyval, u32 p_nKeyValSum, bool p_bCache);
    int setParameter(int p_nKey, int p_nVal, bool p_bCache);
    bool getParameter(int p_nKey, int& p_nVal);
    int setKeyValToCache(u32 p_nScheme, u32 p_nKey, u32 p_nValue, bool p_bForce);
    int getKeyValFromCache(u32 p_nScheme, u32 p_nKey, u32& p_nValue);
    bool isKeyValSame(const KeyVal& p_stKeyVal);
    int notifyToVideo(int p_nKey, int p_nVal);
    void setVideoStreamModule(const VideoStreamModule* p_pVideoStreamModule);
    void printDebugMsg();

    // Schemes and modes.
    bool setParamScheme(int p_nScheme);
    bool getParamScheme(int& p_nScheme);
    bool setParamMode(int p_nMode);
    bool getParamMode(int& p_nMode);
    int getParamSchemeTime(int p_nKey);
    int switch_to(int p_nScheme, bool p_bForce = false);
    int LPR_switch_to(int p_nScheme);
    int judgeCurScheme(int& nScheme, int& nSchedule);

    // Text parameter interface.
    int setParameters(const std::string& p_strParameters, bool p_bCache);
    int getParameters(const std::string& p_strIds, std::string& p_strOut);
    bool getAllParameters(std::string& p_strOut);
    bool parseSensorParameter(const std::string& p_strText, std::vector<std::string>& vecIds);
    bool getSensorParamRange(int p_nCmd, int& p_nDefault, std::string& p_strRange);

    // Restore, reset and flush.
    int flush();
    int restore(int p_nKey);
    bool restoreAeMode();
    bool resetToLastParameters();
    bool resetParameters();

    // Sensor thread and the raw ISP pass-through.
    int sensorThread();
    int SensorCheck(std::string& p_str);

    // Feature handlers reached through the key-command table.
    int doDNThr(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doDNTime(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doMirror(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doBeaway(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doHwdr(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doDIS(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int test_debugParam(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doImageAdjust(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doIaCmd_PanoTuning(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doIaCmdShutter(u32 p_nKey, u32 p_nDir, void* p_pVal);
    int doIoCrtl(u32 p_nKey, u32 p_nDir, void* p_pVal);

    // Show flags.
    void setShowWDRFalg(bool p_bShow);
    bool getShowWDRFalg(bool& p_bShow);
    void setShowBeawayFalg(bool p_bShow);
    bool getShowBeawayFalg(bool& p_bShow);

    // Lens and shutter stepping.
    bool focusFar();
    bool focusNear();
    bool irisUp();
    bool irisDown();
    bool zoomIn();
    bool zoomOut();
    bool setZoomValue(int p_nValue);
    bool getZoomValue(int& p_nPos, int& p_nRatio);
    bool setPTZRunState(int p_nState);
    bool setFocusValue(int p_nValue);
    bool getFocusValue(int& p_nValue);
    bool setFocusMode(int p_nMode);
    bool getFocusMode(int& p_nMode);
    bool getAFStatistic(unsigned int& p_nValue);
    bool getCmdExecStatus(int p_nCmd, int& p_nStatus);
    bool getCameraVerInf(std::string& p_strVersion);
    bool setIrisValue(int p_nValue);
    bool getIrisValue(int& p_nValue);
    bool getShutterValue(int& p_nIndex);
    bool setShutterValue(int p_nIndex);
    bool shutterUp();
    bool shutterDown();
    int getSensorZoomFocusParam(SensorZoomFocusParam& p_objParam);
    int setSensorZoomFocusParam(SensorZoomFocusParam& p_objParam);

    // Typed parameter accessors.
    bool getDNMode(int& p_nValue);
    bool setDNMode(int p_nValue);
    bool getWDRSwitch(int& p_nValue);
    bool setWDRSwitch(int& p_nValue);
    bool getWDRStrength(int& p_nValue);
    bool setWDRStrength(int& p_nValue);
    bool getHLCSwitch(int& p_nValue);
    bool setHLCSwitch(int& p_nValue);
    bool getHLCStrength(int& p_nValue);
    bool setHLCStrength(int& p_nValue);
    bool getBLCSwitch(int& p_nValue);
    bool setBLCSwitch(int& p_nValue);
    bool getBLCStrength(int& p_nValue);
    bool setBLCStrength(int& p_nValue);
    bool getDefogSwitch(int& p_nValue);
    bool setDefogSwitch(int& p_nValue);
    bool getDefogStrength(int& p_nValue);
    bool setDefogStrength(int& p_nValue);
    bool get2DSwitch(int& p_nValue);
    bool set2DSwitch(int& p_nValue);
    bool get2DMode(int& p_nValue);
    bool set2DMode(int& p_nValue);
    bool get2DAutoMaxStrength(int& p_nValue);
    bool set2DAutoMaxStrength(int& p_nValue);
    bool get2DManualMaxStrength(int& p_nValue);
    bool set2DManualMaxStrength(int& p_nValue);
    bool get3DSwitch(int& p_nValue);
    bool set3DSwitch(int& p_nValue);
    bool get3DMode(int& p_nValue);
    bool set3DMode(int& p_nValue);
    bool get3DAutoMaxStrength(int& p_nValue);
    bool set3DAutoMaxStrength(int& p_nValue);
    bool get3DManualMaxStrength(int& p_nValue);
    bool set3DManualMaxStrength(int& p_nValue);
    bool getBeaway(int& p_nValue);
    bool setBeaway(int& p_nValue);
    bool getMirrorValue(int& p_nValue);
    bool setMirrorMode(int p_nValue);
    bool setWhiteMode(int p_nValue);
    bool getWhiteMode(int& p_nValue);
    bool setLightType(int p_nValue);
    bool getLightType(int& p_nValue);
    bool setIRSwitch(int p_nValue);
    bool getIRSwitch(int& p_nValue);
    bool setWhiteSwitch(int p_nValue);
    bool getWhiteSwitch(int& p_nValue);
    bool getWDR(int& p_nValue);
    bool getDNState(int& p_nValue);
    bool setDNState(int p_nValue);
    bool setExposureStrategy(int& p_nValue);
    bool setIrLedInfo(void* p_pInfo);
    bool getHeatStatus(bool& p_bStatus);
    bool getTempValue(int& p_nValue);

    // Field-of-view sync between the thermal and the visible channel.
    int sync_fov();

    // One-slot mailbox from any channel's handler to channel 1's thread.
    // Atomic so that a post from one channel and the consuming thread of another
    // never race; each is one 32-bit word as before.
    static std::atomic<int> m_nPassKeycmd;
    static std::atomic<int> m_nChanneldDosomething;

private:
    // The channel lock as host operations take it. A host call first lets a
    // waiting sensor-thread pass go ahead (unless its thread already holds
    // the lock, a public operation calling another), so host calls back to
    // back can delay a pass by one call at most, never starve it.
    class HostLock {
    public:
        HostLock(ISensorController& p_objOwner, const char* p_szFile, int p_nLine);
        ~HostLock();
        HostLock(const HostLock&) = delete;
        HostLock& operator=(const HostLock&) = delete;

    private:
        ISensorController& m_objOwner;
        const char* m_szFile;
        int m_nLine;
    };
    // A video notice a pass of the sensor thread made while it held the lock.
    struct VideoNotice {
        int nKey;
        int nVal;
    };
    // Pass side of the lock: takes it ahead of host calls; false when a reset
    // or uinit holds it (they stop or restart the thread: the pass ends).
    bool lockForPass();
    void sendVideoNotices(const std::vector<VideoNotice>& p_vecNotices);
    // Queues a video notice made by this channel's pass; false elsewhere.
    bool deferVideoNotice(int p_nKey, int p_nVal);

    // Bits of the state word m_stState. The word is atomic because the sensor
    // thread reads the bits while host calls set and clear them.
    static constexpr u32 m_bIniting = 1u << 0;       // init running
    static constexpr u32 m_bUniniting = 1u << 1;     // uinit running
    static constexpr u32 m_bInited = 1u << 2;        // ready
    static constexpr u32 m_bResetting = 1u << 3;     // resetParameters running
    static constexpr u32 m_bResettingLast = 1u << 4; // resetToLastParameters running
    static constexpr u32 m_bSwitching = 1u << 5;     // scheme switch in progress
    // The bulk operations during which one-shot user actions are not issued.
    static constexpr u32 STATE_BULK_MASK =
        m_bIniting | m_bResetting | m_bResettingLast | m_bSwitching;
    static_assert(STATE_BULK_MASK == 57, "init, reset, reset-to-last and switch bits");

    // Fills the key-command table from its constant rows (a step of init).
    void initKeyCmdMap();

    // Applies a whole set (switch, reset, reset to last); when a refusal stops
    // it, the records from the refused one on are remembered as pending.
    int applySet(KeyVal* p_pKeyval, u32 p_nKeyValSum, bool p_bCache);
    bool isPending(u32 p_nKey) const;
    void clearPending(u32 p_nKey);
    // Loads a scheme's file onto p_pSet by key; false when it is unreadable.
    bool loadSchemeSet(u32 p_nScheme, KeyVal* p_pSet, const char* p_szFunction);

    // The set loop of setParameters: each special case of a record is one step.
    enum class RecordAction { Skip, Store, Apply, Refuse };
    struct RecordRoute {
        RecordAction eAction;
        u32 nApplyKey; // the key whose table row applies the record (Apply only)
    };
    RecordRoute routeRecord(KeyVal& p_stRecord);
    void applySchemeModePolicy(u32 p_nMode);
    bool routeThermalKey(KeyVal& p_stRecord);
    bool isAppliedUnderDayNightPolicy(const KeyVal& p_stRecord);
    bool exceedsIrPowerBudget(const KeyVal& p_stRecord);
    int readIrPartnerFromIsp(u32 p_nPartnerKey);
    RecordRoute routeLightTypeTwin(const KeyVal& p_stRecord, bool p_bIntelligentLight);
    bool isIntelligentLight();
    // The row of a scheme set, or null when the sets or the row do not exist.
    KeyVal* schemeRow(u32 p_nScheme) const;
    // The row of p_nKey in a key-command table, or -1.
    int keyCmdRowOf(const keycmd* p_pKeyCmdMap, u32 p_nKey) const;
    // Indexes the scheme sets' keys once their rows are filled (init).
    void indexSchemeSets();
    // The lookup on the owned table.
    int findFromKeyCmdMap(const std::unique_ptr<keycmd[]>& p_pKeyCmdMap, unsigned int p_nKey,
                          keycmd& p_stKeyCmd);

    // Start-up steps and scheme helpers (channel life cycle, schemes, resets).
    void allocateSchemeSets(TiXmlDocumentEx& p_objMergedStyle);
    void checkVersionStamp();
    void detectDeviceFlags(const MachineInfo& p_objMachineInfo);
    void loadSchemeFiles();
    void removeFlushLeftovers();
    void createSchemeFile(u32 p_nScheme, const std::string& p_strFile);
    void applyVideoStreamLimits(const MachineInfo& p_objMachineInfo);
    void releaseBuffers();
    std::string schemeFileName(int p_nScheme) const;
    std::string removeSchemeFilesCommand() const;
    bool waitWhileBusy();
    bool isBusy() const;
    void runSchemePolicy();
    void switchByDayNight();
    void switchByTime();
    void switchByTimeLpr(int p_nScheme, int p_nSchedule);
    void switchByDayNightLpr();
    int dayNightScheme();
    ModuleConfigure moduleConfigureForReset() const;

    bool hasState(u32 p_nBits) const { return (m_stState.load() & p_nBits) != 0; }
    void setState(u32 p_nBits) { m_stState.fetch_or(p_nBits); }
    void clearState(u32 p_nBits) { m_stState.fetch_and(~p_nBits); }

    // Tests install scheme sets and inspect the state through this friend only.
    friend class ISensorControllerTestAccess;

    SysConfig m_stSysConf;
    int m_nCameraID;
    VXMutex m_objMutex;
    std::unique_ptr<GThread> m_pSensorThread;
    int m_nLastScheme;
    int m_nCurScheme;
    int m_nParamMode;
    // nSchemeSum + 1 rows (the factory set last), all inside one owned block.
    std::unique_ptr<KeyVal*[]> m_ppUserKeyVal;
    std::unique_ptr<KeyVal[]> m_pUserKeyValBlock;
    std::unique_ptr<KeyVal[]> m_pstKeyValTmp;
    KeyVal* m_pFctKeyVal; // row nSchemeSum of the block; owns nothing
    u32 m_nKeyValSum;
    std::unique_ptr<KeyVal[]> m_pLprKeyVal;
    std::unique_ptr<keycmd[]> m_pKeyCmdMap;
    KeyIndex m_objKeyCmdIndex;    // rows of m_pKeyCmdMap by key
    SchemeSetIndex m_objSetIndex; // records of the scheme sets by key
    u32 m_nVersion;
    const VideoStreamModule* m_pVideoStreamModule;
    MachineInfo m_objMachineInfo;
    std::atomic<u32> m_stState;
    u32 m_nKeyCmdSum;
    u32 m_nLastSchedule;
    bool m_bLprMode;
    bool m_bShowWDRFalg;
    bool m_bSchemeByTime;
    bool m_bSchemeByDN;
    bool m_bisLimitedIrPower;
    bool m_bHasLens;
    std::atomic<bool> m_bShutterPass; // set by uinit while the thread may be switching
    bool m_bIsThermal;
    bool m_bShowLDCFlag;
    // A pass of the sensor thread waits for the lock: host calls hold back.
    std::atomic<bool> m_bPassWaiting{false};
    // Video notices of the pass in progress, sent once the lock is released,
    // so a host video module that waits for another host call into this
    // channel never waits for the lock the pass holds. Touched under the lock.
    std::vector<VideoNotice> m_vecPassNotices;
    // A file the last init had to write (a scheme file, the version stamp)
    // could not be written; resetParameters reports it.
    bool m_bFileUnsaved = false;
    SensorZoomFocusParam m_objZoomFocusParam;
    // The show flags the factory set is computed with: those of the object's
    // first init, kept for every later init (they survive uinit).
    struct FactoryFlags {
        bool bShowWDR;
        bool bShowLDC;
        bool bShowBeaway;
    };
    std::optional<FactoryFlags> m_optFactoryFlags;
    // Keys of the current set not known to be on the ISP (see getPendingKeys).
    std::set<u32> m_setPendingKeys;
    // Index of the record that ended the last list of setParameters (its
    // length when every record went through).
    u32 m_nListStop = 0;
};
