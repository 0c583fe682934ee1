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
#include "controller/KeyCmdTable.h"

namespace configtest {
namespace {

namespace fs = std::filesystem;
constexpr u32 CAPACITY = 165; // the factory buffer of a re-initialised channel

std::string deviceDir(const std::string& p_strDevice) {
    return sensortest::sourceDir() + "/devices/" + p_strDevice;
}

// Collects the control ids below p_pNode; with p_bDefaults, also checks that
// each list control defaults to one of its items.
void walk(const TiXmlElement* p_pNode, std::set<u32>& p_setIds, bool p_bDefaults) {
    for (; p_pNode != nullptr; p_pNode = p_pNode->NextSiblingElement()) {
        if (const char* szId = p_pNode->Attribute("id")) {
            p_setIds.insert(static_cast<u32>(std::atoi(szId)));
        }
        std::set<std::string> setItems;
        for (const TiXmlElement* pItem = p_pNode->FirstChildElement("Item"); pItem;
             pItem = pItem->NextSiblingElement("Item")) {
            setItems.insert(pItem->Attribute("index"));
        }
        const char* szValue = p_pNode->Attribute("value");
        if (p_bDefaults && szValue != nullptr && !setItems.empty()) {
            EXPECT_EQ(setItems.count(szValue), 1u) << p_pNode->Attribute("name") << szValue;
        }
        walk(p_pNode->FirstChildElement(), p_setIds, p_bDefaults);
    }
}

class SampleDeviceTest : public ConfigTest {
protected:
    // Brings a channel's configuration up as init does; the factory set in order.
    std::vector<KeyVal> bringUp(const std::string& p_strDevice, int p_nChannel,
                                const std::string& p_strDetail = "") {
        fs::copy(deviceDir(p_strDevice), m_objRoot.path(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        std::string strError;
        EXPECT_TRUE(isp().loadProfile(deviceDir(p_strDevice) + "/isp_profile.xml", &strError))
            << strError;
        const std::vector<ModuleConfigure> vecModules = sensortest::deviceModules();
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
    // The factory set by key; every key must come once.
    static std::map<u32, u32> byKey(const std::vector<KeyVal>& p_vecSet) {
        std::map<u32, u32> mapOut;
        for (const KeyVal& stEntry : p_vecSet) {
            EXPECT_TRUE(mapOut.emplace(stEntry.key, stEntry.value).second) << stEntry.key;
        }
        return mapOut;
    }
    std::string m_strPruned;
    u32 m_nSchemeSum = 0;
};

TEST_F(SampleDeviceTest, EveryChannelComesUpCleanWithTheSchemeKeysFirstAndItsOwnShape) {
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
        const std::map<u32, u32> mapSet = byKey(vecSet);
        for (u32 nHidden : {KEY_EMPTY1, KEY_EMPTY2, KEY_LDC_SWITCH}) {
            EXPECT_EQ(mapSet.count(nHidden), 0u);
        }
        TiXmlDocumentEx objDoc;
        ASSERT_TRUE(objDoc.LoadMem(m_strPruned.c_str(), TIXML_ENCODING_UTF8));
        std::set<u32> setIds;
        walk(objDoc.RootElement(), setIds, true);
    }

    // Diversity and profiles shape each device.
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

// Checked against the table itself, whose rows are checked one by one elsewhere.
TEST(SampleStylesTest, TogetherCoverTheKeyCommandTable) {
    std::set<u32> setIds;
    for (const char* szDevice : {"ipc", "dome", "lpr", "thermal"}) {
        for (const auto& entry : fs::recursive_directory_iterator(
                 fs::path(deviceDir(szDevice)) / "hd1/moduleConfig/sensorConfig")) {
            TiXmlDocument objDoc;
            if (entry.is_regular_file()) {
                ASSERT_TRUE(objDoc.LoadFile(entry.path().string().c_str())) << entry.path();
                walk(objDoc.RootElement(), setIds, false);
            }
        }
    }
    for (const KeyCmdRow& stRow : keyCmdRows()) {
        EXPECT_EQ(setIds.count(stRow.key), 1u) << "key " << stRow.key << " is in no sample style";
    }
}

} // namespace
} // namespace configtest
