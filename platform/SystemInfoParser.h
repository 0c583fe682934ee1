// Reads the machine description, an INI file:
//   [device]
//   type = 1
//   hardware_model = Hi3516AV200
//   hardware_code = IPC-2M-A
#pragma once

#include "platform/MachineInfo.h"

#include <string>

class SystemInfoParser {
public:
    // devicePath is resolved through DeviceRoot. All three keys must be there
    // and the type must be a whole number; otherwise false and info holds
    // the defaults (type 0, empty texts), never a part of the file.
    static bool parseMachineInfo(const std::string& devicePath, MachineInfo& info);
};
