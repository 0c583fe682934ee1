// The sample devices' real files: each channel's merged and pruned style and
// factory set, and the keys the styles cover together.
#include "ConfigFixture.h"

#include <filesystem>
#include <map>
#include <set>

#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "config/SensorXml.h"
#include "config/sensor.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace configtest {
namespace {

namespace fs = std::filesystem;
constexpr u32 CAPACITY = 165; // the factory buffer of a re-initialised channel

std::string deviceDir(const std::string& p_strDevice) {
    return sensortest::sourceDir() + "/devices/" + p_strDevice;
}

class SampleDeviceTest : public ConfigTest {
protected:
    // Brings a channel's configuration up as init does; the factory set by key.
    std::vector<KeyVal> bringUp(const std::string& p_strDevice, int p_nChannel,
                                const std::string& p_strDetail = "") {
        fs::copy(deviceDir(p_strDevice), m_objRoot.path(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        std::string strError;
        EXPECT_TRUE(isp().loadProfile(deviceDir(p_strDevice) + "/isp_profile.xml", &strError))
            << strError;
        MachineInfo objMachine;
        SystemInfoParser::parseMachineInfo("/mnt/mtd/code/factory_setting/machineinfo.ini",
                                           objMachine);
        std::vector<ModuleConfigure> vecModules;
        ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath,
                                     objMachine.getHardwareModel(), objMachine.getHardwareCode(),
                                     vecModules);
        EXPECT_GE(vecModules.size(), static_cast<std::size_t>(p_nChannel));
        ModuleConfigure objModule = vecModules.at(p_nChannel - 1);
        if (!p_strDetail.empty()) {
            objModule.setDetail(p_strDetail);
        }
        SysConfig stConf{};
        EXPECT_EQ(initSysConf(p_nChannel, objModule, &stConf), SNS_SUCCESS);
        m_nSchemeSum = stConf.nSchemeSum;
        EXPECT_EQ(getDnaStyle(p_nChannel, stConf.szUIStyle, m_strPruned, true, false), 0);
        std::vector<KeyVal> vecSet(CAPACITY);
        u32 nCount = 0;
        getFctData(p_nChannel, stConf.szUIStyle, vecSet.data(), &nCount, CAPACITY, true, false);
        uinitSysConf(&stConf);
        vecSet.resize(nCount);
        return vecSet;
    }
    static std::map<u32, u32> byKey(const std::vector<KeyVal>& p_vecSet) {
        std::map<u32, u32> mapOut;
        for (const KeyVal& stEntry : p_vecSet) {
            EXPECT_TRUE(mapOut.emplace(stEntry.key, stEntry.value).second) << stEntry.key;
        }
        return mapOut;
    }
    // Each list control of the pruned style defaults to one of its items.
    void expectListDefaultsAmongItems(const TiXmlElement* p_pNode) {
        for (; p_pNode != nullptr; p_pNode = p_pNode->NextSiblingElement()) {
            const char* szValue = p_pNode->Attribute("value");
            std::set<std::string> setItems;
            for (const TiXmlElement* pItem = p_pNode->FirstChildElement("Item"); pItem;
                 pItem = pItem->NextSiblingElement("Item")) {
                setItems.insert(pItem->Attribute("index"));
            }
            if (szValue != nullptr && !setItems.empty()) {
                EXPECT_EQ(setItems.count(szValue), 1u) << p_pNode->Attribute("name") << szValue;
            }
            expectListDefaultsAmongItems(p_pNode->FirstChildElement());
        }
    }
    std::string m_strPruned;
    u32 m_nSchemeSum = 0;
};

TEST_F(SampleDeviceTest, EveryChannelComesUpCleanWithTheSchemeKeysFirst) {
    const std::pair<const char*, int> arrChannels[] = {
        {"ipc", 1}, {"dome", 1}, {"lpr", 1}, {"thermal", 1}, {"thermal", 2}};
    for (const auto& [szDevice, nChannel] : arrChannels) {
        const std::vector<KeyVal> vecSet = bringUp(szDevice, nChannel);
        EXPECT_EQ(takeLog(), "") << szDevice << nChannel;
        ASSERT_GT(vecSet.size(), SCHEME_KEY_COUNT);
        EXPECT_LT(vecSet.size(), CAPACITY);
        for (u32 i = 0; i < SCHEME_KEY_COUNT; ++i) {
            EXPECT_EQ(vecSet[i].key, KEY_SCHEME_MODE + i);
        }
        const std::map<u32, u32> mapSet = byKey(vecSet); // every key once
        for (u32 nHidden : {KEY_EMPTY1, KEY_EMPTY2, KEY_LDC_SWITCH}) {
            EXPECT_EQ(mapSet.count(nHidden), 0u);
        }
        TiXmlDocumentEx objDoc;
        ASSERT_TRUE(objDoc.LoadMem(m_strPruned.c_str(), TIXML_ENCODING_UTF8));
        expectListDefaultsAmongItems(objDoc.RootElement());
    }
}

TEST_F(SampleDeviceTest, DiversityAndProfilesShapeEachDevice) {
    std::map<u32, u32> mapSet = byKey(bringUp("ipc", 1));
    EXPECT_EQ(mapSet.count(KEY_AUTO_FOCUS_MODE), 0u); // fixed lens
    EXPECT_EQ(mapSet.at(KEY_MAX_SHUTTER), 6u);        // style preset the sensor allows
    mapSet = byKey(bringUp("dome", 1));
    EXPECT_EQ(mapSet.count(KEY_IRIS_SWITCH), 1u);
    EXPECT_EQ(mapSet.at(KEY_AUTO_FOCUS_NEAR_LIMIT), 3u); // long-zoom lens variant
    mapSet = byKey(bringUp("lpr", 1));
    EXPECT_EQ(mapSet.count(KEY_MZ_POSITION), 1u); // motorised lens added
    EXPECT_EQ(mapSet.count(KEY_CAP_OFF_ADJ_STEP), 0u);
    EXPECT_EQ(mapSet.at(KEY_MAX_SHUTTER), 7u); // preset 207: own items, default 7
    mapSet = byKey(bringUp("thermal", 1));
    EXPECT_EQ(mapSet.count(KEY_IR_MANUAL_STRG_FAR), 0u); // limited infrared power
    mapSet = byKey(bringUp("thermal", 2));
    EXPECT_EQ(mapSet.count(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV), 1u);
    EXPECT_EQ(mapSet.count(KEY_WDR_MODE), 0u);
    EXPECT_EQ(mapSet.at(KEY_DVE_MODE), 1u); // the thermal core's default
    EXPECT_EQ(m_nSchemeSum, 2u);

    // Every variant of the fixed-lens family at once still fits.
    const std::vector<KeyVal> vecAll =
        bringUp("ipc", 1, "(max_scheme=1)(isInfrared=17)(lensId=2)(lprMode=1)(panoSensors=4)");
    EXPECT_EQ(takeLog(), "");
    EXPECT_GT(vecAll.size(), 120u);
    EXPECT_LT(vecAll.size(), CAPACITY);
    EXPECT_EQ(vecAll[4].key, KEY_SCHEME_END_MIN);
    EXPECT_EQ(byKey(vecAll).count(KEY_PANO_OFFSETY_4), 1u);
}

void collectIds(const TiXmlElement* p_pNode, std::set<u32>& p_setIds) {
    for (; p_pNode != nullptr; p_pNode = p_pNode->NextSiblingElement()) {
        if (const char* szId = p_pNode->Attribute("id")) {
            p_setIds.insert(static_cast<u32>(std::atoi(szId)));
        }
        collectIds(p_pNode->FirstChildElement(), p_setIds);
    }
}

TEST(SampleStylesTest, TogetherCoverTheKeyCommandTable) {
    std::set<u32> setIds;
    for (const char* szDevice : {"ipc", "dome", "lpr", "thermal"}) {
        for (const auto& entry : fs::recursive_directory_iterator(
                 fs::path(deviceDir(szDevice)) / "hd1/moduleConfig/sensorConfig")) {
            TiXmlDocument objDoc;
            if (entry.is_regular_file()) {
                ASSERT_TRUE(objDoc.LoadFile(entry.path().string().c_str())) << entry.path();
                collectIds(objDoc.RootElement(), setIds);
            }
        }
    }
    // The keys of the key-command table: single keys, then [first, last] ranges.
    std::set<u32> setKeys = {8240, 96,   16,   52,   57,   65,   66,   17,   18,   768,
                             770,  771,  772,  773,  144,  147,  155,  176,  224,  168,
                             175,  200,  203,  1616, 2512, 2528, 2560, 8211, 8212, 8217,
                             8231, 2497, 2048, 2064, 10,   11,   13,   2321, 2337, 2353,
                             34,   2384, 2385, 112,  113,  2416, 2417, 2400, 2401};
    const std::pair<u32, u32> arrRanges[] = {
        {49, 51},     {55, 56},     {80, 83},     {145, 146},   {149, 152},   {154, 154},
        {160, 167},   {170, 174},   {128, 130},   {190, 193},   {1536, 1539}, {1552, 1554},
        {1568, 1571}, {1584, 1584}, {2304, 2309}, {2312, 2313}, {2368, 2369}, {2432, 2439},
        {8000, 8004}, {8100, 8105}, {8201, 8209}, {9000, 9005}, {9101, 9106}, {9201, 9206},
        {9301, 9306}, {9401, 9406}};
    for (const auto& [nFirst, nLast] : arrRanges) {
        for (u32 nKey = nFirst; nKey <= nLast; ++nKey) {
            setKeys.insert(nKey);
        }
    }
    ASSERT_EQ(setKeys.size(), 165u);
    for (u32 nKey : setKeys) {
        EXPECT_EQ(setIds.count(nKey), 1u) << "key " << nKey << " is in no sample style";
    }
}

} // namespace
} // namespace configtest
