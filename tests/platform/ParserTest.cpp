// Machine description, module configuration, device types and text helpers.
#include "platform/DeviceType.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/StringHandler.h"
#include "platform/SystemInfoParser.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace {

constexpr const char* kIni = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* kXml = "/hd1/moduleConfig/moduleConfig.xml";

} // namespace

// The device section, or false and defaults (whatever an earlier parse left).
TEST(SystemInfoParser, ReadsTheDeviceSectionOrGivesFalseAndDefaults) {
    sensortest::TempDeviceRoot root;
    MachineInfo info;
    const auto fields = [&info] {
        return std::make_tuple(info.getDeviceType(), info.getHardwareModel(),
                               info.getHardwareCode());
    };
    root.writeFile(kIni, "; factory data\n[other]\ntype = 99\n[device]\ntype = 14\n"
                         "hardware_model = Hi3516AV200\nhardware_code = IPC-2M-A\n");
    ASSERT_TRUE(SystemInfoParser::parseMachineInfo(kIni, info));
    EXPECT_EQ(std::make_tuple(14, "Hi3516AV200", "IPC-2M-A"), fields());
    // No type, no model, no device section, not a number, a broken section line.
    for (const char* text : {"[device]\nhardware_model = M\nhardware_code = C\n",
                             "[device]\ntype = 1\nhardware_code = C\n",
                             "[other]\ntype = 1\nhardware_model = M\nhardware_code = C\n",
                             "[device]\ntype = one\nhardware_model = M\nhardware_code = C\n",
                             "[device\ntype = 1\nhardware_model = M\nhardware_code = C\n"}) {
        root.writeFile(kIni, text);
        EXPECT_FALSE(SystemInfoParser::parseMachineInfo(kIni, info)) << text;
        EXPECT_EQ(std::make_tuple(0, "", ""), fields()) << text;
    }
}

TEST(ModuleConfigureParser, ReturnsMatchingModulesInDocumentOrderAndBrokenFilesGiveNothing) {
    sensortest::TempDeviceRoot root;
    root.writeFile(kXml, R"xml(<?xml version="1.0"?>
<ModuleConfig>
  <Module id="1" hardware_model="M" hardware_code="C" detail="(lensId=0)" parameters=""/>
  <Module id="2" hardware_model="M" hardware_code="OTHER" detail="x"/><Other id="3"/>
  <Module id="7" hardware_model="M" hardware_code="C" parameters="p=1"/>
</ModuleConfig>)xml");
    std::vector<ModuleConfigure> modules;
    ASSERT_TRUE(ModuleConfigureParser::parse(kXml, "M", "C", modules));
    ASSERT_EQ(2u, modules.size());
    EXPECT_EQ(std::make_tuple(1, "(lensId=0)", "", 7, "", "p=1"),
              std::make_tuple(modules[0].getModuleId(), modules[0].getDetail(),
                              modules[0].getParameters(), modules[1].getModuleId(),
                              modules[1].getDetail(), modules[1].getParameters()));
    EXPECT_FALSE(ModuleConfigureParser::parse(kXml, "M", "NONE", modules));
    EXPECT_TRUE(modules.empty()) << "no match leaves nothing to take";
    for (const char* text :
         {"", "<Modules><Module id=\"1\" hardware_model=\"M\" hardware_code=\"C\"/></Modules>",
          "<ModuleConfig><Module id=\"2x\" hardware_model=\"M\" hardware_code=\"C\"/>"}) {
        root.writeFile(kXml, text);
        modules.resize(1);
        EXPECT_FALSE(ModuleConfigureParser::parse(kXml, "M", "C", modules)) << text;
        EXPECT_TRUE(modules.empty()) << text;
    }
    EXPECT_FALSE(ModuleConfigureParser::parse("/hd1/none.xml", "M", "C", modules));
}

TEST(DeviceType, AcceptsOnlyTheSixteenNumbers) {
    const std::set<int> known = {1, 4, 8, 9, 11, 13, 14, 15, 16, 17, 18, 19, 20, 22, 23, 104};
    DeviceType type;
    for (int id = -1; id <= 105; ++id) {
        type.setDeviceTypeId(id);
        EXPECT_EQ(known.count(id) ? id : DeviceType::UNKNOWN, type.getDeviceTypeId()) << id;
    }
}

// (Numbers in texts the module reads with str2type: the shutter list tests.)
TEST(StringHandler, SplitsAtEverySeparatorAndParsesWholeNumbers) {
    const std::tuple<const char*, const char*, std::vector<std::string>> splits[] = {
        {"34,2337,49", ",", {"34", "2337", "49"}},
        {"a,,b,", ",", {"a", "", "b", ""}},
        {"", ",", {}},
        {"abc", "", {"abc"}}};
    for (const auto& [text, sep, expected] : splits) {
        std::vector<std::string> pieces{"stale"};
        StringHandler::split(text, pieces, sep);
        EXPECT_EQ(expected, pieces) << text;
    }
    for (const char* text : {"-2147483648", "", " 1", "1 ", "1x", "2147483648", "+"}) {
        int v = 5; // only the first is a number, and a failure leaves the value
        EXPECT_EQ(*text == '-', StringHandler::parseInt(text, v)) << text;
        EXPECT_EQ(*text == '-' ? INT32_MIN : 5, v) << text;
    }
}
