// The sample devices' real files: each channel's configuration, merged and
// pruned style and factory set, and the keys the styles cover together.
#include "ConfigFixture.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <tinyxml.h>
#include <vector>

#include "common/SensorKeys.h"
#include "config/SensorFile.h"
#include "config/sensor.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigure.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SystemInfoParser.h"

namespace configtest {
namespace {

namespace fs = std::filesystem;

constexpr u32 FACTORY_CAPACITY = 165;

struct DeviceChannel {
    const char* szDevice;
    int nChannel;
};

std::string deviceDir(const std::string& p_strDevice) {
    return sensortest::sourceDir() + "/devices/" + p_strDevice;
}

class SampleDeviceTest : public ConfigTest, public ::testing::WithParamInterface<DeviceChannel> {
protected:
    void SetUp() override {
        ConfigTest::SetUp();
        const std::string strDir = deviceDir(GetParam().szDevice);
        fs::copy(strDir, m_objRoot.path(), fs::copy_options::recursive);
        std::string strError;
        ASSERT_TRUE(isp().loadProfile(strDir + "/isp_profile.xml", &strError)) << strError;
        bringUp();
    }
    void TearDown() override {
        uinitSysConf(&m_stConf);
        ConfigTest::TearDown();
    }

    void bringUp() {
        MachineInfo objMachine;
        ASSERT_TRUE(SystemInfoParser::parseMachineInfo(
            "/mnt/mtd/code/factory_setting/machineinfo.ini", objMachine));
        std::vector<ModuleConfigure> vecModules;
        ASSERT_TRUE(ModuleConfigureParser::parse(ModuleConfigureParser::kDevicePath,
                                                 objMachine.getHardwareModel(),
                                                 objMachine.getHardwareCode(), vecModules));
        const int nChannel = GetParam().nChannel;
        ASSERT_GE(vecModules.size(), static_cast<std::size_t>(nChannel));
        EXPECT_EQ(initSysConf(nChannel, vecModules[nChannel - 1], &m_stConf), SNS_SUCCESS);
        ASSERT_NE(m_stConf.szUIStyle, nullptr);
        EXPECT_EQ(getDnaStyle(nChannel, m_stConf.szUIStyle, m_strPruned, true, false), SNS_SUCCESS);
        m_vecSet.assign(FACTORY_CAPACITY, KeyVal{});
        EXPECT_EQ(getFctData(nChannel, m_stConf.szUIStyle, m_vecSet.data(), &m_nCount,
                             FACTORY_CAPACITY, true, false),
                  SNS_SUCCESS);
        m_vecSet.resize(m_nCount);
    }

    bool hasKey(u32 p_nKey) const {
        return std::any_of(m_vecSet.begin(), m_vecSet.end(),
                           [p_nKey](const KeyVal& stEntry) { return stEntry.key == p_nKey; });
    }
    u32 valueOf(u32 p_nKey) const {
        for (const KeyVal& stEntry : m_vecSet) {
            if (stEntry.key == p_nKey) {
                return stEntry.value;
            }
        }
        ADD_FAILURE() << "no key " << p_nKey;
        return 0;
    }

    SysConfig m_stConf{};
    std::string m_strPruned;
    std::vector<KeyVal> m_vecSet;
    u32 m_nCount = 0;
};

TEST_P(SampleDeviceTest, ComesUpWithoutAnyReport) {
    EXPECT_EQ(takeErrorLog(), "");
    EXPECT_TRUE(
        m_objRoot.exists("/tmp/merge_style_ch" + std::to_string(GetParam().nChannel) + ".xml"));
}

TEST_P(SampleDeviceTest, FactorySetStartsWithTheSchemeKeysAndFits) {
    RecordProperty("entries", static_cast<int>(m_vecSet.size()));
    ASSERT_GE(m_vecSet.size(), 5u);
    EXPECT_LE(m_vecSet.size(), 170u);
    for (u32 i = 0; i < SCHEME_KEY_COUNT; ++i) {
        EXPECT_EQ(m_vecSet[i].key, KEY_SCHEME_MODE + i);
    }
    EXPECT_EQ(m_vecSet[0].value, 0u);
}

TEST_P(SampleDeviceTest, EveryKeyIsOfferedOnce) {
    std::set<u32> setKeys;
    for (const KeyVal& stEntry : m_vecSet) {
        EXPECT_TRUE(setKeys.insert(stEntry.key).second) << "key " << stEntry.key << " twice";
    }
    // Hidden by the pruning on every channel of these devices.
    EXPECT_FALSE(hasKey(KEY_EMPTY1));
    EXPECT_FALSE(hasKey(KEY_EMPTY2));
    EXPECT_FALSE(hasKey(KEY_LDC_SWITCH));
}

// Every list control of the pruned style defaults to one of its own items.
TEST_P(SampleDeviceTest, ListDefaultsAreAmongTheirItems) {
    TiXmlDocument objDoc;
    objDoc.Parse(m_strPruned.c_str());
    ASSERT_NE(objDoc.RootElement(), nullptr);
    std::vector<const TiXmlElement*> vecStack = {objDoc.RootElement()};
    int nLists = 0;
    while (!vecStack.empty()) {
        const TiXmlElement* pNode = vecStack.back();
        vecStack.pop_back();
        const char* szValue = pNode->Attribute("value");
        const TiXmlElement* pItem = pNode->FirstChildElement("Item");
        if (szValue != nullptr && pItem != nullptr) {
            ++nLists;
            bool bFound = false;
            for (; pItem != nullptr; pItem = pItem->NextSiblingElement("Item")) {
                bFound = bFound || std::string(pItem->Attribute("index")) == szValue;
            }
            EXPECT_TRUE(bFound) << pNode->Attribute("name") << " = " << szValue;
        }
        for (const TiXmlElement* pChild = pNode->FirstChildElement(); pChild != nullptr;
             pChild = pChild->NextSiblingElement()) {
            vecStack.push_back(pChild);
        }
    }
    EXPECT_GT(nLists, 5);
}

INSTANTIATE_TEST_SUITE_P(Devices, SampleDeviceTest,
                         ::testing::Values(DeviceChannel{"ipc", 1}, DeviceChannel{"dome", 1},
                                           DeviceChannel{"lpr", 1}, DeviceChannel{"thermal", 1},
                                           DeviceChannel{"thermal", 2}),
                         [](const ::testing::TestParamInfo<DeviceChannel>& p_stInfo) {
                             return std::string(p_stInfo.param.szDevice) + "_ch" +
                                    std::to_string(p_stInfo.param.nChannel);
                         });

// What sets the sample devices apart, as the diversity files and the ISP
// profiles shape it.
class DeviceFeatureTest : public SampleDeviceTest {};

TEST_P(DeviceFeatureTest, DeviceSpecificControls) {
    const std::string strName =
        std::string(GetParam().szDevice) + std::to_string(GetParam().nChannel);
    if (strName == "ipc1") {
        EXPECT_FALSE(hasKey(KEY_AUTO_FOCUS_MODE)); // fixed lens
        EXPECT_TRUE(hasKey(KEY_IR_MANUAL_STRG_FAR));
        EXPECT_EQ(valueOf(KEY_MAX_SHUTTER), 6u); // style preset allowed by the sensor
        EXPECT_EQ(m_stConf.nSchemeSum, 4u);
    } else if (strName == "dome1") {
        EXPECT_TRUE(hasKey(KEY_IRIS_SWITCH));
        EXPECT_TRUE(hasKey(KEY_DN_AF_MODE));
        EXPECT_EQ(valueOf(KEY_AUTO_FOCUS_NEAR_LIMIT), 3u); // long-zoom lens preset
        EXPECT_EQ(valueOf(KEY_SENSOR_FPS), 25u);
    } else if (strName == "lpr1") {
        EXPECT_TRUE(hasKey(KEY_MZ_POSITION)); // motorised lens added by lensId
        EXPECT_FALSE(hasKey(KEY_CAP_OFF_ADJ_STEP));
        EXPECT_EQ(valueOf(KEY_MAX_SHUTTER), 7u); // 207: own items, default 7
        EXPECT_EQ(valueOf(KEY_SENSOR_FPS), 30u);
    } else if (strName == "thermal1") {
        EXPECT_TRUE(hasKey(KEY_MZ_POSITION));
        EXPECT_FALSE(hasKey(KEY_IR_MANUAL_STRG_FAR)); // limited infrared power
        EXPECT_FALSE(hasKey(KEY_NONE_COLOR_MODE));
    } else if (strName == "thermal2") {
        EXPECT_TRUE(hasKey(KEY_MIXSTREAM_THERMAL_TO_VISION_SYNC_FOV));
        EXPECT_TRUE(hasKey(KEY_FOCUS_SPEED_LEVEL));
        EXPECT_FALSE(hasKey(KEY_WDR_MODE));
        EXPECT_EQ(valueOf(KEY_DVE_MODE), 1u); // the thermal core's default
        EXPECT_EQ(m_stConf.nSchemeSum, 2u);
    } else {
        FAIL() << strName;
    }
}

INSTANTIATE_TEST_SUITE_P(Devices, DeviceFeatureTest,
                         ::testing::Values(DeviceChannel{"ipc", 1}, DeviceChannel{"dome", 1},
                                           DeviceChannel{"lpr", 1}, DeviceChannel{"thermal", 1},
                                           DeviceChannel{"thermal", 2}));

// Every "id" of a device's style and diversity files.
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
        const fs::path dir = fs::path(deviceDir(szDevice)) / "hd1/moduleConfig/sensorConfig";
        for (const auto& entry : fs::recursive_directory_iterator(dir)) {
            if (!entry.is_regular_file()) {
                continue;
            }
            TiXmlDocument objDoc;
            ASSERT_TRUE(objDoc.LoadFile(entry.path().string().c_str())) << entry.path();
            collectIds(objDoc.RootElement(), setIds);
        }
    }
    // The keys of the key-command table.
    std::vector<u32> vecKeys = {
        8240, 34,   2337, 2353, 2321, 96,   16,   49,   50,   51,   52,   55,   56,   57,
        65,   66,   80,   81,   82,   83,   17,   18,   768,  770,  771,  144,  147,  2384,
        2385, 145,  146,  154,  149,  150,  151,  152,  1536, 1537, 1538, 1539, 1616, 1570,
        1569, 1553, 1554, 1584, 1571, 8104, 8100, 8101, 8102, 8103, 8105, 8000, 8001, 8002,
        8003, 8004, 10,   11,   13,   1552, 1568, 2497, 2512, 2528, 2560, 8201, 8202, 8203,
        8209, 8204, 8205, 8206, 8207, 8208, 8211, 8212, 8217, 8231, 168,  175,  200,  203,
        224,  2048, 2064, 772,  773,  176,  190,  191,  192,  193,  155};
    for (u32 nKey = 160; nKey <= 167; ++nKey) {
        vecKeys.push_back(nKey);
    }
    for (u32 nKey = 170; nKey <= 174; ++nKey) {
        vecKeys.push_back(nKey);
    }
    for (u32 nKey : {2304, 2305, 2306, 2307, 2308, 2309, 2312, 2313, 2368, 2369, 112, 113, 128, 129,
                     130, 2416, 2417, 2400, 2401}) {
        vecKeys.push_back(nKey);
    }
    for (u32 nKey = 2432; nKey <= 2439; ++nKey) {
        vecKeys.push_back(nKey);
    }
    for (u32 nKey = 9000; nKey <= 9005; ++nKey) {
        vecKeys.push_back(nKey);
    }
    for (u32 nSensor = 1; nSensor <= 4; ++nSensor) {
        for (u32 nField = 1; nField <= 6; ++nField) {
            vecKeys.push_back(9000 + 100 * nSensor + nField);
        }
    }
    ASSERT_EQ(std::set<u32>(vecKeys.begin(), vecKeys.end()).size(), 165u);
    for (u32 nKey : vecKeys) {
        EXPECT_EQ(setIds.count(nKey), 1u) << "key " << nKey << " is in no sample style";
    }
}

} // namespace
} // namespace configtest

namespace configtest {
namespace {

// Every entry of the plain family's diversity file at once still gives a
// clean style and a factory set within its capacity.
TEST_F(ConfigTest, AllPlainVariantsTogetherStayWithinTheCapacity) {
    fs::copy(deviceDir("ipc"), m_objRoot.path(), fs::copy_options::recursive);
    ModuleConfigure objModule;
    objModule.setDetail("(max_scheme=1)(isInfrared=17)(lensId=2)(lprMode=1)(panoSensors=4)");
    SysConfig stConf{};
    initSysConf(1, objModule, &stConf);
    std::vector<KeyVal> vecSet(FACTORY_CAPACITY);
    u32 nCount = 0;
    getFctData(1, stConf.szUIStyle, vecSet.data(), &nCount, FACTORY_CAPACITY, true, true);
    uinitSysConf(&stConf);
    EXPECT_EQ(takeErrorLog(), "");
    EXPECT_GT(nCount, 120u);
    EXPECT_LT(nCount, FACTORY_CAPACITY);
    vecSet.resize(nCount);
    EXPECT_EQ(vecSet[0].key, KEY_SCHEME_MODE);
    EXPECT_EQ(vecSet[4].key, KEY_SCHEME_END_MIN);
    auto has = [&vecSet](u32 p_nKey) {
        return std::any_of(vecSet.begin(), vecSet.end(),
                           [p_nKey](const KeyVal& stEntry) { return stEntry.key == p_nKey; });
    };
    EXPECT_TRUE(has(KEY_PANO_OFFSETY_4));
    EXPECT_TRUE(has(KEY_MZ_POSITION));
    EXPECT_FALSE(has(KEY_IR_AUTO_STRG_FAR));
    EXPECT_FALSE(has(KEY_CAP_OFF_ADJ_DIRECTION));
}

} // namespace
} // namespace configtest
