// What a channel's parameter files on flash hold, read the way the module
// writes them (key and value, 32-bit little-endian each).
#pragma once

#include <string>
#include <vector>

#include "common/SensorTypes.h"

class ISensorController;

// The device path of a user scheme's file of the channel.
std::string schemeFilePath(const ISensorController& p_objController, int p_nScheme);
// False when the file is missing, is not a regular file, is larger than any
// set, or holds no whole record; then *p_pWhy (when given) says which.
bool readSchemeFile(const std::string& p_strDevicePath, std::vector<KeyVal>& p_vecSet,
                    std::string* p_pWhy = nullptr);
