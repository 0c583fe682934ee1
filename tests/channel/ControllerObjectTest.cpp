// The controller as a whole: channel and thermal rules by device type, the
// scheme-window check, the UI file list, and a whole life on a device root.
#include "ChannelFixture.h"

#include <cstring>
#include <filesystem>

#include "config/sensor.h"

namespace sensortest {

class ControllerObjectTest : public ChannelTest {
protected:
    std::unique_ptr<ISensorController> constructOn(int p_nType) {
        m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                            "[device]\ntype = " + std::to_string(p_nType) +
                                "\nhardware_model = SIM\nhardware_code = MINI\n");
        return std::make_unique<ISensorController>();
    }
};

TEST_F(ControllerObjectTest, ChannelAndThermalFollowTheDeviceType) {
    const struct {
        int nType, nAsked, nCamera;
        bool bThermal;
    } aCases[] = {{13, 1, 2, true},  {13, 2, 2, true}, {14, 1, 1, false}, {14, 2, 2, true},
                  {19, 1, 1, false}, {19, 2, 2, true}, {23, 1, 1, false}, {23, 2, 2, true},
                  {17, 2, 2, true},  {1, 2, 2, false}, {4, 2, 2, false}};
    for (const auto& st : aCases) {
        std::unique_ptr<ISensorController> pCtl = constructOn(st.nType);
        pCtl->setChannelID(st.nAsked);
        EXPECT_EQ(st.nCamera, pCtl->getCameraID()) << "type " << st.nType << " ch " << st.nAsked;
        EXPECT_EQ(st.bThermal, pCtl->isThermalChannel())
            << "type " << st.nType << " ch " << st.nAsked;
        EXPECT_EQ(0, pCtl->getSensorStatus());
    }
    // The thermal flag is never cleared by a later call.
    std::unique_ptr<ISensorController> pCtl = constructOn(14);
    pCtl->setChannelID(2);
    pCtl->setChannelID(1);
    EXPECT_EQ(1, pCtl->getCameraID());
    EXPECT_TRUE(pCtl->isThermalChannel());
}

TEST_F(ControllerObjectTest, SchemeWindowCheck) {
    const struct {
        u32 aWindow[4];
        int nExpected;
    } aCases[] = {{{8, 30, 18, 0}, SNS_SUCCESS},      {{24, 1, 24, 30}, SNS_ERR_START_TIME},
                  {{8, 0, 24, 30}, SNS_ERR_END_TIME}, {{18, 0, 8, 30}, SNS_ERR_TIME_ORDER},
                  {{8, 0, 8, 0}, SNS_ERR_TIME_ORDER}, {{23, 99, 24, 0}, SNS_SUCCESS}};
    ISensorController objCtl;
    EXPECT_EQ(SNS_FAILED, objCtl.paramCheck()) << "no current set to judge";
    for (const auto& st : aCases) {
        const std::vector<KeyVal> vecSet = {{8000, 0},
                                            {8001, st.aWindow[0]},
                                            {8002, st.aWindow[1]},
                                            {8003, st.aWindow[2]},
                                            {8004, st.aWindow[3]}};
        ASSERT_TRUE(Access::installSets(objCtl, {vecSet, vecSet}, 0));
        EXPECT_EQ(st.nExpected, objCtl.paramCheck()) << st.aWindow[0] << ":" << st.aWindow[1];
    }
}

TEST_F(ControllerObjectTest, UiFilesFallBackToTheFirstEntry) {
    ISensorController objCtl;
    EXPECT_EQ("", objCtl.getUICommonFile(1)) << "an empty list";
    SysConfig& stConf = Access::sysConf(objCtl);
    stConf.pUIFile = newUIFileList(2);
    stConf.nUIFileSum = 2;
    const char* aNames[2][2] = {{"common1.xml", "lang1.xml"}, {"common7.xml", "lang7.xml"}};
    for (u32 i = 0; i < 2; ++i) {
        stConf.pUIFile[i].nId = i == 0 ? 1 : 7;
        stConf.pUIFile[i].szCommon = newConfigText(32);
        stConf.pUIFile[i].szLanguage = newConfigText(32);
        std::strcpy(stConf.pUIFile[i].szCommon, aNames[i][0]);
        std::strcpy(stConf.pUIFile[i].szLanguage, aNames[i][1]);
    }
    EXPECT_EQ("common7.xml", objCtl.getUICommonFile(7));
    EXPECT_EQ("lang7.xml", objCtl.getUILanguageFile(7));
    EXPECT_EQ("common1.xml", objCtl.getUICommonFile(99));
    EXPECT_EQ("lang1.xml", objCtl.getUILanguageFile(99));
    uinitSysConf(&stConf);
    uinitSysConf(&stConf); // a second release frees nothing twice
}

TEST_F(ControllerObjectTest, AWholeLifeWritesNothingOutsideTheRoot) {
    namespace fs = std::filesystem;
    const char* aHostPaths[] = {"/mnt/mtd", "/hd1", "/tmp/merge_style_ch1.xml", "/tmp/Debug.sign"};
    std::vector<bool> vecBefore;
    for (const char* szPath : aHostPaths) {
        vecBefore.push_back(fs::exists(szPath));
    }
    m_objRoot.writeFile("/tmp/Debug.sign", "4\n0\n"); // warnings reach the error log
    useMiniDevice(1, "(max_scheme=2)");
    ISensorController& c = bringUp(1);
    c.setParameters(std::string("(34,61)(2337,62)"), true);
    c.flush();
    c.setParamScheme(1);
    c.resetParameters();
    takeDown();
    for (size_t i = 0; i < vecBefore.size(); ++i) {
        EXPECT_EQ(vecBefore[i], fs::exists(aHostPaths[i])) << aHostPaths[i];
    }
    for (const char* szDevice :
         {"/mnt/mtd/code/config_file/sensor1_0.cfg", "/mnt/mtd/code/config_file/snsversion.cfg",
          "/tmp/merge_style_ch1.xml", "/mnt/mtd/log/SensorError.log"}) {
        EXPECT_TRUE(m_objRoot.exists(szDevice)) << szDevice << " lands under the root";
    }
}

} // namespace sensortest
