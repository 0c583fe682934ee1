// Parameter names for people: the key-command table's name beside each key,
// and keys given by name on the command line.
#pragma once

#include <string>

#include "common/SensorTypes.h"

struct KeyCmdRow;

// "KEY_BRIGHTNESS", or "" for a key the table does not name.
std::string keyName(u32 p_nKey);
// "34 KEY_BRIGHTNESS", or "168" for a key without a name.
std::string keyLabel(u32 p_nKey);
// A key given as a number ("34") or a table name in any case, with or without
// the KEY_ prefix ("KEY_BRIGHTNESS", "brightness"). False for anything else.
bool keyFromText(const std::string& p_strText, u32& p_nKey);
// An ISP command with the name of the key sent as it: "168 (KEY_WHITE_SWITCH)",
// or the bare number when no key is.
std::string ispCommandLabel(u32 p_nCmd);
// The ISP command the key is sent as (the key itself for keys without a row).
u32 ispCommandOf(u32 p_nKey);
// Whether the key-command table has a row for the key.
bool isTableKey(u32 p_nKey);
// The key's row of the key-command table, or null.
const KeyCmdRow* keyCmdRowOf(u32 p_nKey);
