// What a channel's parameter files on flash hold, read the way the module
// writes them (key and value, 32-bit little-endian each).
#pragma once

#include <string>
#include <vector>

#include "common/SensorTypes.h"

class ISensorController;

// The device path of a user scheme's file of the channel.
std::string schemeFilePath(const ISensorController& p_objController, int p_nScheme);
// False when the file is missing or holds no whole record.
bool readSchemeFile(const std::string& p_strDevicePath, std::vector<KeyVal>& p_vecSet);
