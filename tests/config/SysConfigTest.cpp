// The configuration record: detail lookups, style file choice per device type
// and channel, copies of the host's texts, and release.
#include "ConfigFixture.h"

#include <cstring>
#include <tuple>

#include "config/sensor.h"
#include "platform/ModuleConfigure.h"

namespace configtest {
namespace {

TEST(DetailFieldTest, ValuesAreFoundCutAndNeverOverrun) {
    sensortest::TempDeviceRoot objRoot; // the cut values are reported to the error log
    u32 nVal = 99;
    // A plain search: "xlensId" holds "lensId"; a failed lookup keeps the value.
    for (const auto& [szDetail, szField, nResult, nWant] :
         {std::make_tuple("(max_scheme=2)(isInfrared=17)", "isInfrared", 0, 17u),
          std::make_tuple("(max_scheme=)", "max_scheme", 0, 0u),
          std::make_tuple("(xlensId=5)(lensId=6)", "lensId", 0, 5u),
          std::make_tuple("(isInfrared=1)", "lensId", -1, 5u),
          std::make_tuple("(lensId 12)", "lensId", -1, 5u),
          std::make_tuple("(lensId=12", "lensId", -1, 5u)}) {
        EXPECT_EQ(getDetailFieldTou32(szDetail, szField, &nVal), nResult) << szDetail;
        EXPECT_EQ(nVal, nWant) << szDetail;
    }
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
    // On a device of p_nType whose style and diversity files mark the merged text
    // with their own names, channel p_nChannel's style.
    std::string init(int p_nType, int p_nChannel, const std::string& p_strDetail = "(lensId=0)") {
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
        return initOnly(p_nChannel, p_strDetail);
    }
    std::string initOnly(int p_nChannel, const std::string& p_strDetail = "(lensId=0)") {
        uinitSysConf(&m_stConf);
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
    const std::tuple<int, int, std::string> arrCases[] = {
        {1, 1, ""},          {4, 1, "_dome"},     {14, 2, "_Thermal"}, {14, 1, ""},
        {19, 2, "_Thermal"}, {19, 1, "_dome"},    {8, 2, ""},          {22, 1, ""},
        {104, 1, "_dome"},   {23, 2, "_Thermal"}, {2, 1, "_dome"}};
    for (const auto& [nType, nChannel, strKind] : arrCases) {
        SCOPED_TRACE(std::to_string(nType) + "/" + std::to_string(nChannel));
        const std::string strStyle = init(nType, nChannel);
        EXPECT_TRUE(contains(strStyle, "name=\"base" + strKind + "\"")) << strStyle;
        EXPECT_TRUE(contains(strStyle, "key=\"div" + strKind + "\"")) << strStyle;
        EXPECT_EQ(m_stConf.nDeviceType, static_cast<u32>(nType));
        const std::string strLog = takeLog();
        EXPECT_EQ(contains(strLog, "machineinfo, devicetype(2) error, must be 1 or 4 or 8 or 9 or "
                                   "13\n"),
                  nType == 2)
            << strLog;
        EXPECT_EQ(contains(strLog, "DeviceType::IPCAMERA == p_stSysConf->nDeviceType || "
                                   "DeviceType::FACE_DETECT == "),
                  nType == 2);
    }
}

// A second release frees nothing twice: StartupTest.UiFilesFallBackToTheFirstEntry.
TEST_F(SysConfigTest, HostTextsAreCopiedAndCut) {
    init(1, 1, "(lensId=0)(max_scheme=2)");
    EXPECT_EQ(m_stConf.moduleConfig.nModuleId, 7);
    EXPECT_STREQ(m_stConf.moduleConfig.szExtra1, "xxx");
    EXPECT_STREQ(m_stConf.moduleConfig.szExtra2, "xxx");
    EXPECT_STREQ(m_stConf.moduleConfig.szDetail, "(lensId=0)(max_scheme=2)");
    EXPECT_STREQ(m_stConf.moduleConfig.szParameters, "p=1");
    EXPECT_EQ(m_stConf.nSchemeSum, 2u);
    initOnly(1, "(lensId=0)" + std::string(600, 'd'));
    EXPECT_EQ(m_stConf.nSchemeSum, 4u);
    EXPECT_EQ(std::strlen(m_stConf.moduleConfig.szDetail), 511u);
    EXPECT_TRUE(logged("szDetail(610) cut to 511 characters"));
}

TEST_F(SysConfigTest, MissingFilesAreReportedAndLeaveAnEmptyStyle) {
    EXPECT_EQ(initOnly(1), "");
    EXPECT_EQ(m_stConf.nDeviceType, 0u);
    expectLogged(
        {"SystemInfoParser::parseMachineInfo(\"/mnt/mtd/code/factory_setting/machineinfo.ini\", "
         "machineInfo)",
         "file_name(/hd1/moduleConfig/sensorConfig/style/Style_dome.xml)",
         "loadFromFile(strStyleFileName.c_str(), p_stSysConf->szUIStyle, "
         "getFileLen(strStyleFileName.c_str())) > 0",
         "doc_style.LoadMem(*ui_style, TIXML_ENCODING_UTF8)"});
}

} // namespace
} // namespace configtest
