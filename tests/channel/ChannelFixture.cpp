#include "ChannelFixture.h"

namespace sensortest {

constexpr const char* kMiniStyle = R"(<Style><Tab key="scheme">
<Control id="8000" value="0"><Item index="0"/><Item index="1"/><Item index="2"/></Control>
<Control id="8001" value="0"/><Control id="8002" value="0"/><Control id="8003" value="24"/>
<Control id="8004" value="0"/></Tab><Tab key="image"><Control id="34" value="50"/>
<Control id="2337" value="128"/><Control id="144" value="0"/>
<Control id="49" value="100"><Item index="3"/><Item index="6"/><Item index="12"/></Control>
<Control id="161" value="1"/><Control id="163" value="10"/><Control id="96" value="0"/>
<Control id="51" value="5"/></Tab></Style>)";
// One entry that never applies.
constexpr const char* kMiniDiversity =
    R"(<Entry max_scheme="99"><Delete tab_key="image"><Tab key="image"/></Delete></Entry>)";

void ChannelTest::useMiniDevice(int p_nType, const std::string& p_strDetail) {
    // The mini style's values stand as written: nothing is dynamic, and the
    // maximum shutter takes the style's 100 (the sensor's list stops at 8).
    m_objIsp.setDynamicCommands(-1, {});
    m_objIsp.setAttribute(-1, 49, attr(1, 0, {}));
    m_objRoot.writeFile("/mnt/mtd/code/factory_setting/machineinfo.ini",
                        "[device]\ntype = " + std::to_string(p_nType) +
                            "\nhardware_model = SIM\nhardware_code = MINI\n");
    m_objRoot.writeFile("/hd1/moduleConfig/moduleConfig.xml",
                        "<ModuleConfig><Module id=\"7\" hardware_model=\"SIM\" hardware_code="
                        "\"MINI\" detail=\"" +
                            p_strDetail + "\" parameters=\"p\"/></ModuleConfig>");
    const std::string strDir = "/hd1/moduleConfig/sensorConfig/style";
    for (const std::string strSuffix : {"", "_dome", "_Thermal"}) {
        m_objRoot.writeFile(strDir + "/Style" + strSuffix + ".xml", kMiniStyle);
        m_objRoot.writeFile(strDir + "Diversity/StyleDiversity" + strSuffix + ".xml",
                            kMiniDiversity);
    }
}

} // namespace sensortest
