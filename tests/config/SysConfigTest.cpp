// The configuration record: detail lookups, style file choice per device type
// and channel, copies of the host's texts, and release.
#include "ConfigFixture.h"

#include <cstring>
#include <string>

#include "config/sensor.h"
#include "platform/ModuleConfigure.h"

namespace configtest {
namespace {

constexpr const char* MACHINE_INFO = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* STYLE_DIR = "/hd1/moduleConfig/sensorConfig/style/";
constexpr const char* DIVERSITY_DIR = "/hd1/moduleConfig/sensorConfig/styleDiversity/";

TEST(DetailFieldTest, NumbersAreReadFromTheirGroup) {
    u32 nVal = 99;
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=2)(isInfrared=17)", "max_scheme", &nVal), 0);
    EXPECT_EQ(nVal, 2u);
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=2)(isInfrared=17)", "isInfrared", &nVal), 0);
    EXPECT_EQ(nVal, 17u);
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=)", "max_scheme", &nVal), 0);
    EXPECT_EQ(nVal, 0u);
    // The first occurrence counts, and a longer name ending in the field matches.
    EXPECT_EQ(getDetailFieldTou32("(xlensId=5)(lensId=6)", "lensId", &nVal), 0);
    EXPECT_EQ(nVal, 5u);
}

TEST(DetailFieldTest, MissingFieldLeavesTheOutputAlone) {
    u32 nVal = 99;
    EXPECT_EQ(getDetailFieldTou32("(isInfrared=1)", "max_scheme", &nVal), -1);
    EXPECT_EQ(getDetailFieldTou32("(lensId 12)", "lensId", &nVal), -1);
    EXPECT_EQ(getDetailFieldTou32("(lensId=12", "lensId", &nVal), -1);
    EXPECT_EQ(getDetailFieldTou32(nullptr, "lensId", &nVal), -1);
    EXPECT_EQ(nVal, 99u);

    char szVal[10] = {'k', 'e', 'e', 'p'};
    EXPECT_EQ(getDetailFieldToStr("(lensId 12)", "lensId", szVal), -1);
    EXPECT_STREQ(szVal, "keep");
}

TEST(DetailFieldTest, TextIsCopiedWithoutTerminator) {
    char szVal[10] = {};
    EXPECT_EQ(getDetailFieldToStr("(max_scheme=4)(lensId=12)", "lensId", szVal), 0);
    EXPECT_STREQ(szVal, "12");

    char szDirty[10] = {'x', 'x', 'x', 'x', 0};
    EXPECT_EQ(getDetailFieldToStr("(lensId=12)", "lensId", szDirty), 0);
    EXPECT_STREQ(szDirty, "12xx");
}

TEST(DetailFieldTest, OverlongValueIsCutToNineCharacters) {
    struct {
        char szVal[DETAIL_VALUE_MAX + 1];
        char szCanary[8];
    } stBuf{};
    std::strcpy(stBuf.szCanary, "canary");
    EXPECT_EQ(getDetailFieldToStr("(lensId=1234567890123)", "lensId", stBuf.szVal), 0);
    EXPECT_STREQ(stBuf.szVal, "123456789");
    EXPECT_STREQ(stBuf.szCanary, "canary");

    u32 nVal = 0;
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=0000000031234)", "max_scheme", &nVal), 0);
    EXPECT_EQ(nVal, 3u);
}

struct StyleChoice {
    int nDeviceType;
    int nChannel;
    const char* szStyle; // which pair of files the channel must get
};

class StyleFilesTest : public ConfigTest {
protected:
    // Each style and diversity file marks the merged text, so the text shows
    // which two files were read.
    void writeStyles() {
        for (const char* szKind : {"", "_dome", "_Thermal"}) {
            const std::string strKind = szKind;
            m_objRoot.writeFile(std::string(STYLE_DIR) + "Style" + strKind + ".xml",
                                "<Style name=\"base" + strKind +
                                    "\"><Tab key=\"image\"><Control id=\"34\" value=\"50\"/>"
                                    "</Tab></Style>");
            m_objRoot.writeFile(
                std::string(DIVERSITY_DIR) + "StyleDiversity" + strKind + ".xml",
                "<Entry max_scheme=\"4\"><AddAfter tab_key=\"image\"><Tab key=\"div" + strKind +
                    "\"/></AddAfter></Entry>");
        }
    }
    void writeMachine(int p_nType) {
        m_objRoot.writeFile(MACHINE_INFO, "[device]\ntype = " + std::to_string(p_nType) +
                                              "\nhardware_model = Hi3516AV200\n"
                                              "hardware_code = IPC-2M-A\n");
    }
};

class StyleChoiceTest : public StyleFilesTest, public ::testing::WithParamInterface<StyleChoice> {};

TEST_P(StyleChoiceTest, DeviceTypeAndChannelChooseTheFiles) {
    const StyleChoice& stCase = GetParam();
    writeStyles();
    writeMachine(stCase.nDeviceType);
    ModuleConfigure objModule;
    objModule.setDetail("(max_scheme=4)");
    SysConfig stConf{};
    EXPECT_EQ(initSysConf(stCase.nChannel, objModule, &stConf), SNS_SUCCESS);
    ASSERT_NE(stConf.szUIStyle, nullptr);
    const std::string strStyle = stConf.szUIStyle;
    const std::string strKind = stCase.szStyle;
    EXPECT_NE(strStyle.find("name=\"base" + strKind + "\""), std::string::npos) << strStyle;
    EXPECT_NE(strStyle.find("key=\"div" + strKind + "\""), std::string::npos) << strStyle;
    EXPECT_EQ(stConf.nDeviceType, static_cast<u32>(stCase.nDeviceType));
    const std::string strLog = takeErrorLog();
    const bool bAccepted = stCase.nDeviceType != 2;
    EXPECT_EQ(strLog.find("machineinfo, devicetype(2) error, must be 1 or 4 or 8 or 9 or 13") !=
                  std::string::npos,
              !bAccepted)
        << strLog;
    if (bAccepted) {
        EXPECT_EQ(strLog, "");
    } else {
        EXPECT_NE(strLog.find("DeviceType::IPCAMERA == p_stSysConf->nDeviceType || "
                              "DeviceType::FACE_DETECT == p_stSysConf->nDeviceType"),
                  std::string::npos);
    }
    uinitSysConf(&stConf);
}

INSTANTIATE_TEST_SUITE_P(Types, StyleChoiceTest,
                         ::testing::Values(StyleChoice{1, 1, ""}, StyleChoice{4, 1, "_dome"},
                                           StyleChoice{14, 2, "_Thermal"}, StyleChoice{14, 1, ""},
                                           StyleChoice{19, 2, "_Thermal"},
                                           StyleChoice{19, 1, "_dome"}, StyleChoice{8, 2, ""},
                                           StyleChoice{13, 2, "_Thermal"}, StyleChoice{22, 1, ""},
                                           StyleChoice{104, 1, "_dome"},
                                           StyleChoice{23, 2, "_Thermal"},
                                           StyleChoice{2, 1, "_dome"}));

using SysConfigTest = StyleFilesTest;

TEST_F(SysConfigTest, HostTextsAreCopiedAndSchemesCounted) {
    writeStyles();
    writeMachine(1);
    ModuleConfigure objModule;
    objModule.setModuleId(7);
    objModule.setDetail("(lensId=0)(max_scheme=2)");
    objModule.setParameters("p=1");
    SysConfig stConf{};
    initSysConf(1, objModule, &stConf);
    EXPECT_EQ(stConf.moduleConfig.nModuleId, 7);
    EXPECT_STREQ(stConf.moduleConfig.szExtra1, "xxx");
    EXPECT_STREQ(stConf.moduleConfig.szExtra2, "xxx");
    EXPECT_STREQ(stConf.moduleConfig.szDetail, "(lensId=0)(max_scheme=2)");
    EXPECT_STREQ(stConf.moduleConfig.szParameters, "p=1");
    EXPECT_EQ(stConf.nSchemeSum, 2u);
    EXPECT_EQ(stConf.nUIFileSum, 0u);
    EXPECT_EQ(stConf.pUIFile, nullptr);
    uinitSysConf(&stConf);

    objModule.setDetail("(lensId=0)");
    initSysConf(1, objModule, &stConf);
    EXPECT_EQ(stConf.nSchemeSum, 4u);
    uinitSysConf(&stConf);
}

TEST_F(SysConfigTest, OverlongHostTextsAreCutAndReported) {
    writeStyles();
    writeMachine(1);
    ModuleConfigure objModule;
    objModule.setDetail("(max_scheme=3)" + std::string(600, 'd'));
    objModule.setParameters(std::string(300, 'p'));
    SysConfig stConf{};
    initSysConf(1, objModule, &stConf);
    EXPECT_EQ(std::strlen(stConf.moduleConfig.szDetail), 511u);
    EXPECT_EQ(std::strlen(stConf.moduleConfig.szParameters), 255u);
    EXPECT_EQ(stConf.nSchemeSum, 3u);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("szDetail(614)"), std::string::npos) << strLog;
    EXPECT_NE(strLog.find("szParameters(300)"), std::string::npos) << strLog;
    uinitSysConf(&stConf);
}

TEST_F(SysConfigTest, MissingFilesAreReportedAndLeaveAnEmptyStyle) {
    ModuleConfigure objModule;
    SysConfig stConf{};
    EXPECT_EQ(initSysConf(1, objModule, &stConf), SNS_SUCCESS);
    // No machine description: type 0, reported, dome files asked for.
    EXPECT_EQ(stConf.nDeviceType, 0u);
    ASSERT_NE(stConf.szUIStyle, nullptr);
    const std::string strLog = takeErrorLog();
    EXPECT_NE(strLog.find("SystemInfoParser::parseMachineInfo(\"/mnt/mtd/code/factory_setting/"
                          "machineinfo.ini\", machineInfo)"),
              std::string::npos);
    EXPECT_NE(strLog.find("file_name(/hd1/moduleConfig/sensorConfig/style/Style_dome.xml)"),
              std::string::npos);
    EXPECT_NE(strLog.find("loadFromFile(strStyleFileName.c_str(), p_stSysConf->szUIStyle, "
                          "getFileLen(strStyleFileName.c_str())) > 0"),
              std::string::npos);
    EXPECT_NE(strLog.find("doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8)"), std::string::npos);
    uinitSysConf(&stConf);
}

TEST_F(SysConfigTest, ReleaseTwiceFreesNothingTwice) {
    writeStyles();
    writeMachine(1);
    ModuleConfigure objModule;
    SysConfig stConf{};
    initSysConf(1, objModule, &stConf);
    stConf.pUIFile = newUIFileList(2);
    stConf.nUIFileSum = 2;
    stConf.pUIFile[0].szCommon = newConfigText(8);
    stConf.pUIFile[1].szLanguage = newConfigText(8);

    uinitSysConf(&stConf);
    EXPECT_EQ(stConf.szUIStyle, nullptr);
    EXPECT_EQ(stConf.pUIFile, nullptr);
    EXPECT_EQ(stConf.nUIFileSum, 0u);
    // Under the address sanitizer a second release of the same texts aborts.
    uinitSysConf(&stConf);
    EXPECT_EQ(stConf.szUIStyle, nullptr);
    uinitSysConf(nullptr);
}

} // namespace
} // namespace configtest
