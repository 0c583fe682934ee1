// Plain records and result codes shared by every part of the module.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "common/SensorExport.h"

typedef uint32_t u32;
typedef int64_t INT64;

// One sensor parameter. A parameter set is a contiguous array of these whose
// first five entries are always the scheme keys 8000..8004 in that order.
struct KeyVal {
    u32 key;
    u32 value;
};
static_assert(sizeof(KeyVal) == 8, "KeyVal is stored on flash as two 32-bit words");
static_assert(offsetof(KeyVal, key) == 0 && offsetof(KeyVal, value) == 4, "KeyVal layout");

// Entries of a set that hold the scheme keys, by position.
constexpr u32 SCHEME_KEY_COUNT = 5;

// Result codes.
constexpr int SNS_SUCCESS = 0;
constexpr int SNS_FAILED = -1;
constexpr int SNS_ERR_SCHEME_RANGE = -2;
// A file was not replaced (full or read-only flash, a directory in its place, a
// short write, a failed close): it keeps its old content. Parameter keys start
// at 10, so this is never the negated key a parameter write reports.
constexpr int SNS_ERR_FILE_WRITE = -3;
constexpr int SNS_ERR_START_TIME = 505;
constexpr int SNS_ERR_END_TIME = 506;
constexpr int SNS_ERR_TIME_ORDER = 507;

// Module-wide variables (one copy per process). They are read and rewritten by
// every thread that prints a diagnostic or builds a style, so they are atomic
// words: no lock, and no data race either.
extern std::atomic<int> g_nDebugLevel;
extern std::atomic<bool> g_bEnAssert;
extern std::atomic<bool> g_bShoWBeawayFalg;

SENSORDLL_EXPORT void setshowBeawayFalg(bool p_bShow);
SENSORDLL_EXPORT bool getshowBeawayFalg();
