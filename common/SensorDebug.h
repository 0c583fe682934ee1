// Diagnostics: coloured console traces gated by the debug level, the check macro
// SNS_ASSERT, and the error log. The level and the abort switch are re-read from
// the marker file "/tmp/Debug.sign" before every diagnostic, so a change to that
// file takes effect at the next diagnostic of a running process.
//
// Every source file that uses the macros defines SNS_SOURCE_UNIT (the unit name
// printed in headers, e.g. "ISensorController") before including this header.
#pragma once

#include "common/SensorTypes.h"

void updateDebugLevel();

namespace sensordiag {

constexpr const char* DEBUG_SIGN_FILE = "/tmp/Debug.sign";
constexpr const char* ERROR_LOG_FILE = "/mnt/mtd/log/SensorError.log";
constexpr int ERROR_LOG_SIZE = 10240;
constexpr int ERROR_LOG_COUNT = 3;

constexpr int COLOUR_DEFAULT = 0;
constexpr int COLOUR_RED = 31;
constexpr int COLOUR_GREEN = 32;
constexpr int COLOUR_MAGENTA = 35;

// Where a diagnostic comes from.
struct Origin {
    const char* unit;
    const char* function;
    int line;
};

// Tagged print: shown when the level exceeds the threshold; a warning also goes
// to the error log.
void printTagged(int p_nThreshold, int p_nColour, const char* p_szTag, bool p_bToLog,
                 const Origin& p_stOrigin, const char* p_szFormat, ...)
    __attribute__((format(printf, 6, 7)));

// Untagged one-line trace.
void printPlain(int p_nThreshold, int p_nColour, const char* p_szFormat, ...)
    __attribute__((format(printf, 3, 4)));

// The report of a failed check (both blocks); the caller aborts afterwards when
// the assertion switch is on.
void reportAssert(const char* p_szCondition, const Origin& p_stOrigin, const char* p_szFormat, ...)
    __attribute__((format(printf, 3, 4)));

// Fails the standard assertion on bRet, naming the source unit, line and function.
[[noreturn]] void abortAssert(const char* p_szFile, int p_nLine, const char* p_szFunction);

} // namespace sensordiag

#define SNS_ORIGIN_                                                                                \
    sensordiag::Origin {                                                                           \
        SNS_SOURCE_UNIT, __func__, __LINE__                                                        \
    }

#define SNS_DBG(...)                                                                               \
    sensordiag::printTagged(5, sensordiag::COLOUR_DEFAULT, "[sensor dbg]", false, SNS_ORIGIN_,     \
                            __VA_ARGS__)
#define SNS_INFO(...)                                                                              \
    sensordiag::printTagged(6, sensordiag::COLOUR_MAGENTA, "[sensor info]", false, SNS_ORIGIN_,    \
                            __VA_ARGS__)
#define SNS_WARN(...)                                                                              \
    sensordiag::printTagged(3, sensordiag::COLOUR_DEFAULT, "[sensor warn]", true, SNS_ORIGIN_,     \
                            __VA_ARGS__)
#define SNS_ERR(...)                                                                               \
    sensordiag::printTagged(5, sensordiag::COLOUR_DEFAULT, "[sensor err]", false, SNS_ORIGIN_,     \
                            __VA_ARGS__)
#define SNS_PRINT(threshold, colour, ...) sensordiag::printPlain(threshold, colour, __VA_ARGS__)

// Checks a condition; on failure reports it (console in red and the error log)
// and aborts only when the assertion switch is on. Never returns by itself.
#define SNS_ASSERT(condition, ...)                                                                 \
    do {                                                                                           \
        const bool bRet = static_cast<bool>(condition);                                            \
        if (!bRet) {                                                                               \
            sensordiag::reportAssert(#condition, SNS_ORIGIN_, __VA_ARGS__);                        \
            if (g_bEnAssert.load()) {                                                              \
                sensordiag::abortAssert(SNS_SOURCE_UNIT, __LINE__, __PRETTY_FUNCTION__);           \
            }                                                                                      \
        }                                                                                          \
    } while (0)
