#include "platform/SystemInfoParser.h"

#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/StringHandler.h"

#include <cstring>
#include <ini.h>

namespace {

struct DeviceSection {
    MachineInfo info;
    bool hasType = false;
    bool hasModel = false;
    bool hasCode = false;
    bool badType = false;
};

// inih callback: one name = value of some section; 1 keeps the parse going.
int onEntry(void* user, const char* section, const char* name, const char* value) {
    auto* device = static_cast<DeviceSection*>(user);
    if (std::strcmp(section, "device") != 0) {
        return 1;
    }
    if (std::strcmp(name, "type") == 0) {
        int type = 0;
        device->hasType = true;
        device->badType = !StringHandler::parseInt(value, type);
        device->info.setDeviceType(type);
    } else if (std::strcmp(name, "hardware_model") == 0) {
        device->hasModel = true;
        device->info.setHardwareModel(value);
    } else if (std::strcmp(name, "hardware_code") == 0) {
        device->hasCode = true;
        device->info.setHardwareCode(value);
    }
    return 1;
}

} // namespace

bool SystemInfoParser::parseMachineInfo(const std::string& devicePath, MachineInfo& info) {
    DeviceSection device;
    // The INI parser gets the text, never the file: a FIFO, a device or an
    // endless file is refused before it, and it sees at most the cap.
    std::string text;
    const bool read =
        readDeviceFile(devicePath, inputcap::MACHINE_INFO_MAX, text) == ReadStatus::Ok;
    const bool ok = read && ini_parse_string(text.c_str(), onEntry, &device) == 0 &&
                    device.hasType && !device.badType && device.hasModel && device.hasCode;
    info = ok ? device.info : MachineInfo();
    return ok;
}
