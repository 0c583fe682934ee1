// The sample devices' real files: each channel's merged and pruned style and
// factory set, and the keys the styles cover together.
#include "ConfigFixture.h"

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

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

using SampleDeviceTest = ConfigTest;

// Each channel brought up as init does comes up without a report, its factory set
// within the buffer, the scheme keys first, every key once, the hidden keys left
// out, every list default one of its items, and its own shape ("+key" present,
// "-key" absent, "key=value"): ipc a fixed lens (no 1536) and a shutter (49)
// preset the sensor allows, dome iris (80) and the long-zoom lens variant (1537),
// lpr a motorised lens (1568) and shutter preset 207 (own items, default 7),
// thermal limited infrared power (167), its thermal core the fov request (8104),
// no WDR (2368) and the core's DVE default (8202); every variant of the
// fixed-lens family at once still fits.
TEST_F(SampleDeviceTest, EveryChannelComesUpCleanWithTheSchemeKeysFirstAndItsOwnShape) {
    const struct {
        const char* szDevice;
        int nChannel;
        u32 nSchemes, nMinKeys;
        const char *szShape, *szDetail;
    } arrChannels[] = {{"ipc", 1, 4, 5, "-1536 49=6", ""},
                       {"dome", 1, 4, 5, "+80 1537=3", ""},
                       {"lpr", 1, 4, 5, "+1568 -2433 49=7", ""},
                       {"thermal", 1, 4, 5, "-167", ""},
                       {"thermal", 2, 2, 5, "+8104 -2368 8202=1", ""},
                       {"ipc", 1, 1, 120, "+9406",
                        "(max_scheme=1)(isInfrared=17)(lensId=2)(lprMode=1)(panoSensors=4)"}};
    for (const auto& stCase : arrChannels) {
        SCOPED_TRACE(std::string(stCase.szDevice) + std::to_string(stCase.nChannel));
        fs::copy(deviceDir(stCase.szDevice), m_objRoot.path(),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        std::string strError;
        ASSERT_TRUE(isp().loadProfile(deviceDir(stCase.szDevice) + "/isp_profile.xml", &strError))
            << strError;
        ModuleConfigure objModule = sensortest::deviceModules().at(stCase.nChannel - 1);
        if (*stCase.szDetail != '\0') {
            objModule.setDetail(stCase.szDetail);
        }
        SysConfig stConf{};
        EXPECT_EQ(initSysConf(stCase.nChannel, objModule, &stConf), SNS_SUCCESS);
        EXPECT_EQ(stConf.nSchemeSum, stCase.nSchemes);
        std::string strPruned;
        EXPECT_EQ(getDnaStyle(stCase.nChannel, stConf.szUIStyle, strPruned, true, false), 0);
        std::vector<KeyVal> vecSet(CAPACITY);
        u32 nCount = 0;
        getFctData(stCase.nChannel, stConf.szUIStyle, vecSet.data(), &nCount, CAPACITY, true,
                   false);
        uinitSysConf(&stConf);
        EXPECT_EQ(takeLog(), "");
        ASSERT_GT(nCount, std::max<u32>(stCase.nMinKeys, SCHEME_KEY_COUNT));
        EXPECT_LT(nCount, CAPACITY);
        std::map<u32, u32> mapSet;
        for (u32 i = 0; i < nCount; ++i) {
            EXPECT_TRUE(i >= SCHEME_KEY_COUNT || vecSet[i].key == KEY_SCHEME_MODE + i) << i;
            EXPECT_TRUE(mapSet.emplace(vecSet[i].key, vecSet[i].value).second) << vecSet[i].key;
        }
        for (u32 nHidden : {KEY_EMPTY1, KEY_EMPTY2, KEY_LDC_SWITCH}) {
            EXPECT_EQ(mapSet.count(nHidden), 0u) << nHidden;
        }
        std::istringstream objShape(stCase.szShape);
        for (std::string strKey; objShape >> strKey;) {
            const u32 nKey = static_cast<u32>(std::stoul(strKey.substr(strKey[0] < '0')));
            EXPECT_EQ(mapSet.count(nKey), strKey[0] == '-' ? 0u : 1u) << strKey;
            if (strKey.find('=') != std::string::npos) {
                EXPECT_EQ(mapSet[nKey], std::stoul(strKey.substr(strKey.find('=') + 1))) << strKey;
            }
        }
        TiXmlDocumentEx objDoc;
        ASSERT_TRUE(objDoc.LoadMem(strPruned.c_str(), TIXML_ENCODING_UTF8));
        std::set<u32> setIds;
        walk(objDoc.RootElement(), setIds, true);
    }
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
