// Strict readers of the module's text forms, so that sensorctl can refuse a
// malformed text before anything of it is applied: "(34,60)(2337,100)" pairs
// and "(34,2337,49)" id lists, without blanks or anything else around them.
#pragma once

#include <string>
#include <vector>

#include "common/SensorTypes.h"

// False for anything but one or more "(KEY,VALUE)" groups; keys are not
// negative, values are 32-bit signed.
bool parsePairText(const std::string& p_strText, std::vector<KeyVal>& p_vecPairs);
// False for anything but "(N,N,...)" with at least one number.
bool parseIdList(const std::string& p_strText, std::vector<int>& p_vecIds);
