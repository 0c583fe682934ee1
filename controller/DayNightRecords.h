// The records the ISP takes for the day/night switching thresholds and times.
// Their field order and widths are the ISP's interface.
#pragma once

#include "common/SensorTypes.h"

#include <cstddef>

// Sent under KEY_DTN_THR (145), KEY_NTD_THR (146) and KEY_DN_SENSITIVITY (154).
struct dn_thr_st {
    u32 d2n_thr;
    u32 n2d_thr;
    u32 dn_sensitivity;
};
static_assert(sizeof(dn_thr_st) == 12, "the ISP reads three 32-bit words");
static_assert(offsetof(dn_thr_st, d2n_thr) == 0, "d2n_thr at 0");
static_assert(offsetof(dn_thr_st, n2d_thr) == 4, "n2d_thr at 4");
static_assert(offsetof(dn_thr_st, dn_sensitivity) == 8, "dn_sensitivity at 8");

// Sent under KEY_DTN_H (149), KEY_DTN_M (150), KEY_NTD_H (151) and KEY_NTD_M (152).
struct dn_time_st {
    u32 d2n_hour;
    u32 d2n_min;
    u32 n2d_hour;
    u32 n2d_min;
};
static_assert(sizeof(dn_time_st) == 16, "the ISP reads four 32-bit words");
static_assert(offsetof(dn_time_st, d2n_hour) == 0, "d2n_hour at 0");
static_assert(offsetof(dn_time_st, d2n_min) == 4, "d2n_min at 4");
static_assert(offsetof(dn_time_st, n2d_hour) == 8, "n2d_hour at 8");
static_assert(offsetof(dn_time_st, n2d_min) == 12, "n2d_min at 12");
