// One row of the key-command table: a key, the ISP command it sends and the
// member of ISensorController that sends it.
#pragma once

#include "common/SensorTypes.h"

class ISensorController;

typedef int (ISensorController::*keycmd_handler)(u32 p_nKey, u32 p_nDir, void* p_pVal);

constexpr std::size_t KEYCMD_KEY_NAME_LEN = 32;
constexpr std::size_t KEYCMD_FUNC_NAME_LEN = 64;

struct keycmd {
    u32 key;
    u32 ia_cmd;
    keycmd_handler func;
    // NUL-terminated when shorter than 32 characters; otherwise the first 32
    // characters without a terminator. Read at most 32 characters.
    char key_name[KEYCMD_KEY_NAME_LEN];
    char func_name[KEYCMD_FUNC_NAME_LEN]; // always terminated
};
