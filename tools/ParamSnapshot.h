// The channel's values of some keys at one moment, and what differs between
// two such moments: how sensorctl shows what a command changed.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/SensorTypes.h"

class ISensorController;

using ParamValues = std::vector<std::pair<u32, std::optional<int>>>;

// Reads each key with getParameter; a key that cannot be read has no value.
ParamValues snapshot(ISensorController& p_objController, const std::vector<u32>& p_vecKeys);
// Prints "  34 KEY_BRIGHTNESS: 50 -> 60" for each key whose value differs
// (both snapshots of the same keys) and returns how many did.
size_t printChanges(const ParamValues& p_vecBefore, const ParamValues& p_vecAfter);
// "60", or "(unreadable)".
std::string valueText(const std::optional<int>& p_nValue);
