// The ISP adaptation library's control interface. ia_ioctrl_v2 lives outside this
// module: on a camera the ISP library defines it, on a PC the simulator or a
// test's own fake does. The records below cross into that library, so their
// layout is exact.
#pragma once

#include <cstddef>
#include <cstdint>

// ISP command numbers; parameter keys equal their commands (with the exceptions
// the key-command table lists), so any 32-bit number is a valid value here.
enum ia_cmd_e : uint32_t {
    IA_CMD_DYNAMIC_PARAMS_CMDS_GET = 0x1010,
};

// Options.
constexpr int IA_CMD_OPT_SET = 0;
constexpr int IA_CMD_OPT_GET = 1;
constexpr int IA_CMD_OPT_GET_PARAM_RNAGE = 2;
constexpr int IA_CMD_OPT_CORRECT_PARAM = 3;
constexpr int IA_CMD_OPT_GET_EXEC_STATUS = 4;
constexpr int IA_CMD_OPT_EXEC_STATUS = IA_CMD_OPT_GET_EXEC_STATUS;

constexpr int IA_DYNAMIC_CMD_MAX = 16;
constexpr int IA_DYNAMIC_ITEM_MAX = 64;

// The commands whose parameters are dynamic on the fitted sensor.
struct ia_dynamic_cmd_list_st {
    int32_t cmd_cnt;
    uint32_t cmd_list[IA_DYNAMIC_CMD_MAX];
};
static_assert(sizeof(ia_dynamic_cmd_list_st) == 68, "ISP list record is 68 bytes");
static_assert(offsetof(ia_dynamic_cmd_list_st, cmd_cnt) == 0, "cmd_cnt at 0");
static_assert(offsetof(ia_dynamic_cmd_list_st, cmd_list) == 4, "cmd_list at 4");

// The allowed values of one dynamic command. param_type 0: the values are the
// list in item; any other value: a continuous range min_val..max_val.
struct ia_dynamic_params_attr_st {
    int32_t param_type;
    int32_t default_val;
    int32_t min_val;
    int32_t max_val;
    int32_t items_cnt;
    int32_t item[IA_DYNAMIC_ITEM_MAX];
};
static_assert(sizeof(ia_dynamic_params_attr_st) == 276, "ISP attribute record is 276 bytes");
static_assert(offsetof(ia_dynamic_params_attr_st, param_type) == 0, "param_type at 0");
static_assert(offsetof(ia_dynamic_params_attr_st, default_val) == 4, "default_val at 4");
static_assert(offsetof(ia_dynamic_params_attr_st, min_val) == 8, "min_val at 8");
static_assert(offsetof(ia_dynamic_params_attr_st, max_val) == 12, "max_val at 12");
static_assert(offsetof(ia_dynamic_params_attr_st, items_cnt) == 16, "items_cnt at 16");
static_assert(offsetof(ia_dynamic_params_attr_st, item) == 20, "item at 20");

// Returns 0 on success, otherwise the ISP's own error. The channel counts from 0.
extern "C" int ia_ioctrl_v2(int channel, ia_cmd_e cmd, int option, void* data);
