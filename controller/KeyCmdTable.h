// The key-command table: which ISP command and which handler of
// ISensorController serve each parameter key. The constant rows live in
// KeyCmdTable.cpp; ISensorController::initKeyCmdMap copies them into the
// controller's own table at start-up.
#pragma once

#include "common/keycmd.h"

#include <array>
#include <cstddef>

// Rows of the table.
constexpr std::size_t KEY_CMD_TABLE_ROWS = 165;

// One constant row: the source of one keycmd row.
struct KeyCmdRow {
    u32 key;
    u32 ia_cmd;
    keycmd_handler func; // null for keys the set loop handles before any dispatch
    const char* key_name;
    const char* func_name; // "&ISensorController::<handler>" or "NULL"
};

// The constant rows in table order, for host tools that show a parameter's
// name beside its key.
const std::array<KeyCmdRow, KEY_CMD_TABLE_ROWS>& keyCmdRows();
