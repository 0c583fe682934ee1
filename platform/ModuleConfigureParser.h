// Reads the module configuration, "/hd1/moduleConfig/moduleConfig.xml":
//   <ModuleConfig>
//     <Module id="1" hardware_model="..." hardware_code="..." detail="..." parameters=""/>
//   </ModuleConfig>
#pragma once

#include "platform/ModuleConfigure.h"

#include <string>
#include <vector>

class ModuleConfigureParser {
public:
    static constexpr const char* kDevicePath = "/hd1/moduleConfig/moduleConfig.xml";

    // out receives, in document order, the Module elements whose model and
    // code match. True only when at least one matched, so a caller may take
    // out[0] on true. A missing or broken file, a root other than
    // ModuleConfig, or a matching Module without a whole-number id gives
    // false and an empty out. The file is read through the bounded reader
    // (a regular file of at most MODULE_CONFIG_MAX bytes, elements nested at
    // most XML_DEPTH_MAX deep); why, when given, says what was refused.
    static bool parse(const std::string& devicePath, const std::string& hardwareModel,
                      const std::string& hardwareCode, std::vector<ModuleConfigure>& out,
                      std::string* why = nullptr);
};
