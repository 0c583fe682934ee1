// Diagnostics: coloured console traces gated by the debug level, the check macro
// SNS_ASSERT, and the error log. The level and the abort switch come from the
// marker file "/tmp/Debug.sign". It is not looked at before every diagnostic
// (a path lookup costs more than the rest of a parameter write): every host
// call and every sensor-thread pass asks for one check (requestMarkerCheck),
// and the first diagnostic after that request makes it. A check asks an
// inotify watch on the marker and its directory (common/MarkerWatch.h) and
// reads the file only when the watch saw it change, or when no watch can be
// kept. A change to the file is so obeyed from the next host call or pass
// on, and a call or pass without diagnostics touches no file at all.
//
// Every source file that uses the macros defines SNS_SOURCE_UNIT (the unit name
// printed in headers, e.g. "ISensorController") before including this header.
#pragma once

#include "common/SensorTypes.h"

// Reads the marker file now (level and abort switch), whatever was asked.
void updateDebugLevel();

namespace sensordiag {

// Asks for one check of the marker file before the next diagnostic: called at
// the start of every host call and of every sensor-thread pass, and when the
// device root changes (the marker is then another file).
void requestMarkerCheck();

// The debug level in force, after the check asked for, if any.
int debugLevel();

} // namespace sensordiag

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
    const char* signature; // the function's full signature, for the abort report
};

// Tagged print: shown when the level exceeds the threshold; a warning also goes
// to the error log.
void printTagged(int p_nThreshold, int p_nColour, const char* p_szTag, bool p_bToLog,
                 const Origin& p_stOrigin, const char* p_szFormat, ...)
    __attribute__((format(printf, 6, 7)));

// Untagged one-line trace.
void printPlain(int p_nThreshold, int p_nColour, const char* p_szFormat, ...)
    __attribute__((format(printf, 3, 4)));

// Fails the standard assertion on bRet, naming the source unit, line and function.
[[noreturn]] void abortAssert(const Origin& p_stOrigin);

// The check behind SNS_ASSERT and SNS_CHECK: reports a false bRet, aborts when
// the assertion switch is on, and hands bRet back.
bool check(bool bRet, const char* p_szCondition, const Origin& p_stOrigin, const char* p_szFormat,
           ...) __attribute__((format(printf, 4, 5)));

} // namespace sensordiag

#define SNS_ORIGIN_                                                                                \
    sensordiag::Origin {                                                                           \
        SNS_SOURCE_UNIT, __func__, __LINE__, __PRETTY_FUNCTION__                                   \
    }

// A diagnostic made in a helper that is one step of a larger operation names
// that operation, as the operation's own diagnostics do.
#define SNS_ORIGIN_FOR_(function)                                                                  \
    sensordiag::Origin {                                                                           \
        SNS_SOURCE_UNIT, function, __LINE__, __PRETTY_FUNCTION__                                   \
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
#define SNS_ASSERT(condition, ...) static_cast<void>(SNS_CHECK(condition, __VA_ARGS__))

// The same check as an expression whose value is the condition, for callers
// that go on differently after a failed check.
#define SNS_CHECK(condition, ...)                                                                  \
    sensordiag::check(static_cast<bool>(condition), #condition, SNS_ORIGIN_, __VA_ARGS__)

// The same checks reporting a fixed expression text instead of the source
// tokens: for reports whose established text differs from the code that now
// evaluates a safer equivalent (a length taken once, a capacity passed along).
#define SNS_CHECK_TEXT(condition, text, ...)                                                       \
    sensordiag::check(static_cast<bool>(condition), text, SNS_ORIGIN_, __VA_ARGS__)
#define SNS_ASSERT_TEXT(condition, text, ...)                                                      \
    static_cast<void>(SNS_CHECK_TEXT(condition, text, __VA_ARGS__))

// The checks and the warning of a helper, reported under the operation it serves.
#define SNS_CHECK_FOR(function, condition, ...)                                                    \
    sensordiag::check(static_cast<bool>(condition), #condition, SNS_ORIGIN_FOR_(function),         \
                      __VA_ARGS__)
#define SNS_ASSERT_FOR(function, condition, ...)                                                   \
    static_cast<void>(SNS_CHECK_FOR(function, condition, __VA_ARGS__))
#define SNS_CHECK_TEXT_FOR(function, condition, text, ...)                                         \
    sensordiag::check(static_cast<bool>(condition), text, SNS_ORIGIN_FOR_(function), __VA_ARGS__)
#define SNS_ASSERT_TEXT_FOR(function, condition, text, ...)                                        \
    static_cast<void>(SNS_CHECK_TEXT_FOR(function, condition, text, __VA_ARGS__))
#define SNS_DBG_FOR(function, ...)                                                                 \
    sensordiag::printTagged(5, sensordiag::COLOUR_DEFAULT, "[sensor dbg]", false,                  \
                            SNS_ORIGIN_FOR_(function), __VA_ARGS__)
#define SNS_WARN_FOR(function, ...)                                                                \
    sensordiag::printTagged(3, sensordiag::COLOUR_DEFAULT, "[sensor warn]", true,                  \
                            SNS_ORIGIN_FOR_(function), __VA_ARGS__)
