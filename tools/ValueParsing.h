// Strict readers for the values people type: a whole token or nothing.
#pragma once

#include <string>

// A decimal 32-bit signed number, optionally signed, with nothing around it.
bool parseInt(const std::string& p_strText, int& p_nValue);
// on/off, 1/0, yes/no, true/false.
bool parseSwitch(const std::string& p_strText, bool& p_bOn);
// HH:MM or HH:MM:SS with hour 0..23, minute and second 0..59.
bool parseTimeOfDay(const std::string& p_strText, int& p_nHour, int& p_nMinute, int& p_nSecond);
