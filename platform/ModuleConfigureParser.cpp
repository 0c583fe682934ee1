#include "platform/ModuleConfigureParser.h"

#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/StringHandler.h"
#include "platform/XmlText.h"

#include <cstring>
#include <tinyxml.h>

namespace {

std::string attributeOr(const TiXmlElement& element, const char* name, const char* fallback) {
    const char* value = element.Attribute(name);
    return value ? value : fallback;
}

bool matches(const TiXmlElement& module, const std::string& model, const std::string& code) {
    const char* m = module.Attribute("hardware_model");
    const char* c = module.Attribute("hardware_code");
    return m != nullptr && c != nullptr && model == m && code == c;
}

} // namespace

bool ModuleConfigureParser::parse(const std::string& devicePath, const std::string& hardwareModel,
                                  const std::string& hardwareCode,
                                  std::vector<ModuleConfigure>& out, std::string* why) {
    out.clear();
    std::string whyNot;
    std::string& reason = why != nullptr ? *why : whyNot;
    reason.clear();
    std::string content;
    const ReadStatus status = readDeviceFile(devicePath, inputcap::MODULE_CONFIG_MAX, content);
    if (status != ReadStatus::Ok) {
        reason = describeRead(status, inputcap::MODULE_CONFIG_MAX);
        return false;
    }
    TiXmlDocument doc;
    if (!parseXmlText(doc, content.c_str(), content.size(), TIXML_DEFAULT_ENCODING)) {
        reason =
            "elements nested deeper than " + std::to_string(inputcap::XML_DEPTH_MAX) + " levels";
        return false;
    }
    if (doc.Error()) {
        reason = std::string("XML error: ") + doc.ErrorDesc();
        return false;
    }
    const TiXmlElement* root = doc.RootElement();
    if (root == nullptr || std::strcmp(root->Value(), "ModuleConfig") != 0) {
        return false;
    }
    std::vector<ModuleConfigure> found;
    for (const TiXmlElement* module = root->FirstChildElement("Module"); module != nullptr;
         module = module->NextSiblingElement("Module")) {
        if (!matches(*module, hardwareModel, hardwareCode)) {
            continue;
        }
        int id = 0;
        const char* idText = module->Attribute("id");
        if (idText == nullptr || !StringHandler::parseInt(idText, id)) {
            return false;
        }
        ModuleConfigure config;
        config.setModuleId(id);
        config.setDetail(attributeOr(*module, "detail", ""));
        config.setParameters(attributeOr(*module, "parameters", ""));
        found.push_back(config);
    }
    out.swap(found);
    return !out.empty();
}
