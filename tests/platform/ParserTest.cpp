// Machine description, module configuration, device types and text helpers.
#include "platform/DeviceType.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/StringHandler.h"
#include "platform/SystemInfoParser.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

constexpr const char* kIni = "/mnt/mtd/code/factory_setting/machineinfo.ini";
constexpr const char* kXml = "/hd1/moduleConfig/moduleConfig.xml";

// The parse result and what it left in a description filled with stale values.
std::string parsed(const char* path) {
    MachineInfo info;
    info.setDeviceType(9);
    info.setHardwareModel("stale");
    info.setHardwareCode("stale");
    const bool ok = SystemInfoParser::parseMachineInfo(path, info);
    return std::string(ok ? "ok " : "no ") + std::to_string(info.getDeviceType()) + "/" +
           info.getHardwareModel() + "/" + info.getHardwareCode();
}

} // namespace

TEST(SystemInfoParser, ReadsTheDeviceSectionOrGivesFalseAndDefaults) {
    sensortest::TempDeviceRoot root;
    const std::pair<const char*, const char*> cases[] = {
        {"; factory data\n[other]\ntype = 99\n[device]\ntype = 14\n"
         "hardware_model = Hi3516AV200\nhardware_code = IPC-2M-A\n",
         "ok 14/Hi3516AV200/IPC-2M-A"},
        {"[device]\nhardware_model = M\nhardware_code = C\n", "no 0//"},              // no type
        {"[device]\ntype = 1\nhardware_code = C\n", "no 0//"},                        // no model
        {"[somewhere]\ntype = 1\nhardware_model = M\nhardware_code = C\n", "no 0//"}, // no section
        {"[device]\ntype = one\nhardware_model = M\nhardware_code = C\n", "no 0//"},  // bad number
        {"[device\ntype = 1\nhardware_model = M\nhardware_code = C\n", "no 0//"},     // syntax
    };
    for (const auto& [text, expected] : cases) {
        root.writeFile(kIni, text);
        EXPECT_EQ(expected, parsed(kIni)) << text;
    }
    EXPECT_EQ("no 0//", parsed("/mnt/none.ini"));
}

TEST(ModuleConfigureParser, ReturnsMatchingModulesInDocumentOrderAndBrokenFilesGiveNothing) {
    sensortest::TempDeviceRoot root;
    root.writeFile(kXml, R"xml(<?xml version="1.0"?>
<ModuleConfig>
  <Module id="1" hardware_model="Hi3516AV200" hardware_code="IPC-2M-A"
          detail="(max_scheme=4)(lensId=0)(isInfrared=1)" parameters=""/>
  <Module id="2" hardware_model="Hi3516AV200" hardware_code="OTHER" detail="x"/>
  <Other id="3" hardware_model="Hi3516AV200" hardware_code="IPC-2M-A"/>
  <Module id="7" hardware_model="Hi3516AV200" hardware_code="IPC-2M-A" parameters="p=1"/>
</ModuleConfig>)xml");
    std::vector<ModuleConfigure> modules;
    ASSERT_TRUE(ModuleConfigureParser::parse(kXml, "Hi3516AV200", "IPC-2M-A", modules));
    ASSERT_EQ(2u, modules.size());
    EXPECT_EQ(std::make_tuple(1, "(max_scheme=4)(lensId=0)(isInfrared=1)", "", 7, "", "p=1"),
              std::make_tuple(modules[0].getModuleId(), modules[0].getDetail(),
                              modules[0].getParameters(), modules[1].getModuleId(),
                              modules[1].getDetail(), modules[1].getParameters()));
    EXPECT_FALSE(ModuleConfigureParser::parse(kXml, "Hi3516AV200", "NONE", modules));
    EXPECT_TRUE(modules.empty()) << "no match leaves nothing to take";
    EXPECT_FALSE(ModuleConfigureParser::parse("/hd1/none.xml", "M", "C", modules));
    for (const char* text :
         {"<ModuleConfig><Module id=\"1\" hardware_model=\"M\" hardware_code=\"C\">",
          "<Modules><Module id=\"1\" hardware_model=\"M\" hardware_code=\"C\"/></Modules>",
          "<ModuleConfig><Module id=\"1\" hardware_model=\"M\" hardware_code=\"C\"/>"
          "<Module id=\"2x\" hardware_model=\"M\" hardware_code=\"C\"/></ModuleConfig>",
          ""}) {
        root.writeFile(kXml, text);
        modules.resize(1);
        EXPECT_FALSE(ModuleConfigureParser::parse(kXml, "M", "C", modules)) << text;
        EXPECT_TRUE(modules.empty()) << text;
    }
}

TEST(DeviceType, AcceptsOnlyTheSixteenNumbers) {
    DeviceType type;
    for (int id : {1, 4, 8, 9, 11, 13, 14, 15, 16, 17, 18, 19, 20, 22, 23, 104}) {
        type.setDeviceTypeId(id);
        EXPECT_EQ(id, type.getDeviceTypeId());
    }
    for (int id : {-1, 0, 2, 3, 5, 21, 24, 103, 105}) {
        type.setDeviceTypeId(id);
        EXPECT_EQ(DeviceType::UNKNOWN, type.getDeviceTypeId()) << id;
    }
}

TEST(StringHandler, SplitsAtEverySeparatorAndConvertsText) {
    const std::pair<const char*, std::vector<std::string>> splits[] = {
        {"34,2337,49", {"34", "2337", "49"}}, {"a,,b,", {"a", "", "b", ""}}, {"", {}}};
    for (const auto& [text, expected] : splits) {
        std::vector<std::string> pieces{"stale"};
        StringHandler::split(text, pieces, ",");
        EXPECT_EQ(expected, pieces) << text;
    }
    std::vector<std::string> pieces;
    StringHandler::split("abc", pieces, "");
    EXPECT_EQ((std::vector<std::string>{"abc"}), pieces);
    EXPECT_EQ(-12, StringHandler::str2type<int>(" -12"));
    EXPECT_EQ(12, StringHandler::str2type<int>("12ab"));
    EXPECT_EQ(0, StringHandler::str2type<int>("ab"));
    int v = 5;
    EXPECT_TRUE(StringHandler::parseInt("-2147483648", v));
    EXPECT_EQ(-2147483648LL, v);
    for (const char* bad : {"", " 1", "1 ", "1x", "2147483648", "+"}) {
        v = 5;
        EXPECT_FALSE(StringHandler::parseInt(bad, v)) << bad;
        EXPECT_EQ(5, v);
    }
}
