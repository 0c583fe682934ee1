// The configuration record: detail lookups, style file choice per device type
// and channel, copies of the host's texts, and release.
#include "ConfigFixture.h"

#include <cstring>

#include "config/sensor.h"
#include "platform/ModuleConfigure.h"

namespace configtest {
namespace {

TEST(DetailFieldTest, ValuesAreFoundCutAndNeverOverrun) {
    sensortest::TempDeviceRoot objRoot; // the cut values are reported to the error log
    u32 nVal = 99;
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=2)(isInfrared=17)", "isInfrared", &nVal), 0);
    EXPECT_EQ(nVal, 17u);
    EXPECT_EQ(getDetailFieldTou32("(max_scheme=)", "max_scheme", &nVal), 0);
    EXPECT_EQ(nVal, 0u);
    EXPECT_EQ(getDetailFieldTou32("(xlensId=5)(lensId=6)", "lensId", &nVal), 0); // plain search
    EXPECT_EQ(nVal, 5u);
    for (const char* szDetail : {"(isInfrared=1)", "(lensId 12)", "(lensId=12"}) {
        EXPECT_EQ(getDetailFieldTou32(szDetail, "lensId", &nVal), -1) << szDetail;
    }
    EXPECT_EQ(nVal, 5u);

    struct {
        char szVal[DETAIL_VALUE_MAX + 1] = {'x', 'x', 'x', 'x'};
        char szCanary[4] = "abc";
    } stBuf;
    EXPECT_EQ(getDetailFieldToStr("(lensId=12)", "lensId", stBuf.szVal), 0);
    EXPECT_STREQ(stBuf.szVal, "12xx"); // no terminator added
    EXPECT_EQ(getDetailFieldToStr("(lensId=1234567890123)", "lensId", stBuf.szVal), 0);
    EXPECT_STREQ(stBuf.szVal, "123456789");
    EXPECT_STREQ(stBuf.szCanary, "abc");
    EXPECT_EQ(getDetailFieldToStr("(lensId 1)", "lensId", stBuf.szVal), -1);
}

class SysConfigTest : public ConfigTest {
protected:
    // Every style and diversity file marks the merged text with its own name.
    void writeDevice(int p_nType) {
        m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                            "[device]\ntype = " + std::to_string(p_nType) +
                                "\nhardware_model = M\nhardware_code = C\n");
        for (const std::string strKind : {"", "_dome", "_Thermal"}) {
            m_objRoot.writeFile("/hd1/moduleConfig/sensorConfig/style/Style" + strKind + ".xml",
                                "<S name=\"base" + strKind + "\"><T key=\"a\"/></S>");
            m_objRoot.writeFile("/hd1/moduleConfig/sensorConfig/styleDiversity/StyleDiversity" +
                                    strKind + ".xml",
                                "<E lensId=\"0\"><AddAfter tab_key=\"a\"><T key=\"div" + strKind +
                                    "\"/></AddAfter></E>");
        }
    }
    std::string init(int p_nChannel, const std::string& p_strDetail = "(lensId=0)") {
        ModuleConfigure objModule;
        objModule.setModuleId(7);
        objModule.setDetail(p_strDetail);
        objModule.setParameters("p=1");
        EXPECT_EQ(initSysConf(p_nChannel, objModule, &m_stConf), SNS_SUCCESS);
        return m_stConf.szUIStyle != nullptr ? m_stConf.szUIStyle : "";
    }
    ~SysConfigTest() override { uinitSysConf(&m_stConf); }
    SysConfig m_stConf{};
};

TEST_F(SysConfigTest, DeviceTypeAndChannelChooseBothFiles) {
    const struct {
        int nType, nChannel;
        std::string strKind;
    } arrCases[] = {{1, 1, ""},          {4, 1, "_dome"},     {14, 2, "_Thermal"}, {14, 1, ""},
                    {19, 2, "_Thermal"}, {19, 1, "_dome"},    {8, 2, ""},          {22, 1, ""},
                    {104, 1, "_dome"},   {23, 2, "_Thermal"}, {2, 1, "_dome"}};
    for (const auto& stCase : arrCases) {
        writeDevice(stCase.nType);
        const std::string strStyle = init(stCase.nChannel);
        EXPECT_NE(strStyle.find("name=\"base" + stCase.strKind + "\""), std::string::npos)
            << stCase.nType << "/" << stCase.nChannel;
        EXPECT_NE(strStyle.find("key=\"div" + stCase.strKind + "\""), std::string::npos);
        EXPECT_EQ(m_stConf.nDeviceType, static_cast<u32>(stCase.nType));
        const std::string strLog = takeLog();
        EXPECT_EQ(strLog.find("machineinfo, devicetype(2) error, must be 1 or 4 or 8 or 9 or 13"
                              "\n") != std::string::npos,
                  stCase.nType == 2)
            << strLog;
        EXPECT_EQ(strLog.find("DeviceType::IPCAMERA == p_stSysConf->nDeviceType || "
                              "DeviceType::FACE_DETECT == ") != std::string::npos,
                  stCase.nType == 2);
        uinitSysConf(&m_stConf);
    }
}

TEST_F(SysConfigTest, HostTextsAreCopiedCutAndReleasedOnce) {
    writeDevice(1);
    init(1, "(lensId=0)(max_scheme=2)");
    EXPECT_EQ(m_stConf.moduleConfig.nModuleId, 7);
    EXPECT_STREQ(m_stConf.moduleConfig.szExtra1, "xxx");
    EXPECT_STREQ(m_stConf.moduleConfig.szExtra2, "xxx");
    EXPECT_STREQ(m_stConf.moduleConfig.szDetail, "(lensId=0)(max_scheme=2)");
    EXPECT_STREQ(m_stConf.moduleConfig.szParameters, "p=1");
    EXPECT_EQ(m_stConf.nSchemeSum, 2u);
    uinitSysConf(&m_stConf);

    init(1, "(lensId=0)" + std::string(600, 'd'));
    EXPECT_EQ(m_stConf.nSchemeSum, 4u);
    EXPECT_EQ(std::strlen(m_stConf.moduleConfig.szDetail), 511u);
    EXPECT_TRUE(logged("szDetail(610) cut to 511 characters"));

    m_stConf.pUIFile = newUIFileList(2);
    m_stConf.nUIFileSum = 2;
    m_stConf.pUIFile[0].szCommon = newConfigText(8);
    m_stConf.pUIFile[1].szLanguage = newConfigText(8);
    uinitSysConf(&m_stConf);
    EXPECT_EQ(m_stConf.szUIStyle, nullptr);
    EXPECT_EQ(m_stConf.pUIFile, nullptr);
    uinitSysConf(&m_stConf); // nothing is released twice (the sanitizer build checks)
}

TEST_F(SysConfigTest, MissingFilesAreReportedAndLeaveAnEmptyStyle) {
    EXPECT_EQ(init(1), "");
    EXPECT_EQ(m_stConf.nDeviceType, 0u);
    const std::string strLog = takeLog();
    for (const char* szText :
         {"SystemInfoParser::parseMachineInfo(\"/mnt/mtd/code/factory_setting/machineinfo.ini\", "
          "machineInfo)",
          "file_name(/hd1/moduleConfig/sensorConfig/style/Style_dome.xml)",
          "loadFromFile(strStyleFileName.c_str(), p_stSysConf->szUIStyle, "
          "getFileLen(strStyleFileName.c_str())) > 0",
          "doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8)"}) {
        EXPECT_NE(strLog.find(szText), std::string::npos) << szText;
    }
}

} // namespace
} // namespace configtest
