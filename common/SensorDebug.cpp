#include "common/SensorDebug.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

#include "common/MarkerWatch.h"
#include "platform/DeviceRoot.h"
#include "platform/FileReader.h"
#include "platform/InputLimits.h"
#include "platform/VXLogger.h"

std::atomic<int> g_nDebugLevel{1};
std::atomic<bool> g_bEnAssert{false};

namespace {

constexpr const char* TAG_ASSERT = "[sensor assert]";

// The lines of a failed check: holds the longest the module formats (the
// device-type check is about 950 characters) with room to spare, and keeps a
// runaway detail message from flooding the error log. Traces are not cut.
using LineBuffer = std::array<char, 4096>;

void formatInto(LineBuffer& p_buf, const char* p_szFormat, va_list p_args) {
    std::vsnprintf(p_buf.data(), p_buf.size(), p_szFormat, p_args);
}

// A trace the level lets through is printed whole, however long (the merged
// style at level 7 is several times the line buffer): formatted once to learn
// its length, then into a buffer of that size.
std::string formatWhole(const char* p_szFormat, va_list p_args) {
    va_list argsCopy;
    va_copy(argsCopy, p_args);
    const int nLen = std::vsnprintf(nullptr, 0, p_szFormat, argsCopy);
    va_end(argsCopy);
    if (nLen <= 0) {
        return std::string();
    }
    std::string strText(static_cast<std::size_t>(nLen) + 1, '\0');
    std::vsnprintf(strText.data(), strText.size(), p_szFormat, p_args);
    strText.resize(static_cast<std::size_t>(nLen));
    return strText;
}

void printColourPrefix(int p_nColour) {
    std::fprintf(stdout, "\033[%dm\033[%dm", 0, p_nColour);
}

void printColourSuffix() {
    std::fprintf(stdout, "\033[0m");
}

void printHeader(const char* p_szTag, const sensordiag::Origin& p_stOrigin) {
    std::fprintf(stdout, "%s file:%s fun:%s line:%d\n", p_szTag, p_stOrigin.unit,
                 p_stOrigin.function, p_stOrigin.line);
}

// One coloured console block: prefix, the header when a tag is given, the
// text, suffix.
void printBlock(int p_nColour, const char* p_szTag, const sensordiag::Origin* p_pOrigin,
                const char* p_szText) {
    printColourPrefix(p_nColour);
    if (p_szTag != nullptr) {
        printHeader(p_szTag, *p_pOrigin);
    }
    std::fprintf(stdout, "%s", p_szText);
    printColourSuffix();
}

// One logger per block of lines: nothing stays open between diagnostics.
class ErrorLog {
public:
    ErrorLog() {
        m_objLogger.init(sensordiag::ERROR_LOG_FILE, sensordiag::ERROR_LOG_SIZE,
                         sensordiag::ERROR_LOG_COUNT);
    }
    void write(const char* p_szTag, const char* p_szText) {
        m_objLogger.writeLog(p_szTag, p_szText);
    }
    void writeHeader(const char* p_szTag, const sensordiag::Origin& p_stOrigin) {
        LineBuffer buf;
        std::snprintf(buf.data(), buf.size(), "file:%s fun:%s line:%d\n", p_stOrigin.unit,
                      p_stOrigin.function, p_stOrigin.line);
        write(p_szTag, buf.data());
    }

private:
    VXLogger m_objLogger;
};

// Checks under the lock are numbered as they begin. A host call or pass
// requests a check by noting the number of the next one to begin: that check
// and every later one read after the request, and cover it. A thread's
// diagnostics wait for a check only while its own latest request is not
// covered yet, so threads writing other channels do not drag each other into
// checks, and a request writes nothing another thread reads. Every thread
// starts due for the first check. A change of the device root makes a check
// due for every thread.
std::atomic<unsigned> g_nMarkerChecksBegun{0};
std::atomic<unsigned> g_nMarkerChecked{0};
std::atomic<unsigned> g_nCheckedRoot{0};
thread_local unsigned t_nOwnRequest = 1;
// Whether this thread covered its latest request by a look at the watch of
// its own.
thread_local bool t_bOwnLook = false;

bool isMarkerCheckDue() {
    // Wrap-safe "checked < own request".
    const bool bCovered =
        t_bOwnLook ||
        static_cast<int>(t_nOwnRequest - g_nMarkerChecked.load(std::memory_order_acquire)) <= 0;
    return !bCovered || g_nCheckedRoot.load(std::memory_order_acquire) != DeviceRoot::generation();
}
// One reading check at a time; a diagnostic of another thread meanwhile
// waits for it rather than going on with the level from before the request.
std::mutex g_markerMutex;
// Whether the marker changed since it was read: a due check reads the file
// only then. Used under g_markerMutex, but for nothingQueued.
MarkerWatch g_objMarkerWatch;
// Odd while a check under g_markerMutex empties the watch's queue and reads
// the marker: a look at the watch meanwhile proves nothing, as the queue may
// have been emptied of a change whose level is not in force yet.
std::atomic<unsigned> g_nMarkerReads{0};

// Covers this thread's request without the lock when nothing is queued on
// the watch and no check is reading: the level in force is then the marker's.
// Threads on other channels look side by side instead of queueing for the
// lock.
bool coveredByAQuietWatch() {
    const unsigned nBefore = g_nMarkerReads.load(std::memory_order_seq_cst);
    if ((nBefore & 1U) != 0 ||
        g_nCheckedRoot.load(std::memory_order_acquire) != DeviceRoot::generation() ||
        !g_objMarkerWatch.nothingQueued()) {
        return false;
    }
    // A read-modify-write reads the latest count, which a plain load after
    // the poll need not.
    if (g_nMarkerReads.fetch_add(0, std::memory_order_seq_cst) != nBefore) {
        return false; // a check emptied the queue meanwhile
    }
    t_bOwnLook = true;
    return true;
}

// Reads the marker when a check is due and the watch says it may have
// changed; three atomic loads when no check is due, one poll of the watch
// when nothing changed.
void refreshDebugLevel() {
    if (!isMarkerCheckDue() || coveredByAQuietWatch()) {
        return;
    }
    std::lock_guard<std::mutex> objGuard(g_markerMutex);
    if (!isMarkerCheckDue()) {
        return; // another thread made the check meanwhile
    }
    g_nMarkerReads.fetch_add(1, std::memory_order_seq_cst);
    // Numbered before the read: a request or a root change during the read
    // makes the next diagnostic read again.
    const unsigned nCheck = g_nMarkerChecksBegun.fetch_add(1, std::memory_order_seq_cst) + 1;
    const unsigned nRoot = DeviceRoot::generation();
    if (nRoot != g_nCheckedRoot.load(std::memory_order_acquire)) {
        g_objMarkerWatch.forget(); // the marker is now another file
    }
    if (g_objMarkerWatch.mayHaveChanged()) {
        g_objMarkerWatch.watch(DeviceRoot::resolve(sensordiag::DEBUG_SIGN_FILE));
        updateDebugLevel();
    }
    g_nMarkerChecked.store(nCheck, std::memory_order_release);
    g_nCheckedRoot.store(nRoot, std::memory_order_release);
    g_nMarkerReads.fetch_add(1, std::memory_order_seq_cst);
}

// A marker line's number as atoi reads it (blanks, a sign, digits up to the
// first other character), held to the int range instead of overflowing.
int markerNumber(const std::string& p_strLine) {
    const long long nVal = std::strtoll(p_strLine.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long long>(nVal, INT_MIN, INT_MAX));
}

// The line starting at p_nPos without "\n" / "\r\n"; p_nPos moves past it.
std::string nextMarkerLine(const std::string& p_strText, std::string::size_type& p_nPos) {
    if (p_nPos >= p_strText.size()) {
        return std::string();
    }
    const std::string::size_type nEnd = p_strText.find('\n', p_nPos);
    std::string strLine = p_strText.substr(p_nPos, nEnd - p_nPos);
    p_nPos = nEnd == std::string::npos ? p_strText.size() : nEnd + 1;
    if (!strLine.empty() && strLine.back() == '\r') {
        strLine.pop_back();
    }
    return strLine;
}

} // namespace

void sensordiag::requestMarkerCheck() {
    t_nOwnRequest = g_nMarkerChecksBegun.load(std::memory_order_seq_cst) + 1;
    t_bOwnLook = false;
}

int sensordiag::debugLevel() {
    refreshDebugLevel();
    return g_nDebugLevel;
}

// The marker is read through the bounded reader: one read of at most its two
// short lines, however large or strange the file is. Anything but a readable
// regular file counts as no marker.
void updateDebugLevel() {
    std::string strText;
    if (readDeviceFile(sensordiag::DEBUG_SIGN_FILE, inputcap::MARKER_FILE_MAX, strText,
                       Oversize::TakePrefix) != ReadStatus::Ok) {
        g_nDebugLevel = 1;
        g_bEnAssert = false;
        return;
    }
    std::string::size_type nPos = 0;
    const std::string strLevel = nextMarkerLine(strText, nPos);
    const std::string strAssert = nextMarkerLine(strText, nPos);
    g_nDebugLevel = strLevel.empty() ? 1 : markerNumber(strLevel);
    g_bEnAssert = !strAssert.empty() && markerNumber(strAssert) != 0;
}

namespace sensordiag {

void printTagged(int p_nThreshold, int p_nColour, const char* p_szTag, bool p_bToLog,
                 const Origin& p_stOrigin, const char* p_szFormat, ...) {
    refreshDebugLevel();
    if (g_nDebugLevel <= p_nThreshold) {
        return;
    }
    va_list args;
    va_start(args, p_szFormat);
    const std::string strText = formatWhole(p_szFormat, args);
    va_end(args);

    printBlock(p_nColour, p_szTag, &p_stOrigin, strText.c_str());
    if (p_bToLog) {
        ErrorLog objLog;
        objLog.writeHeader(p_szTag, p_stOrigin);
        objLog.write(p_szTag, strText.c_str());
    }
}

void printPlain(int p_nThreshold, int p_nColour, const char* p_szFormat, ...) {
    refreshDebugLevel();
    if (g_nDebugLevel <= p_nThreshold) {
        return;
    }
    va_list args;
    va_start(args, p_szFormat);
    const std::string strText = formatWhole(p_szFormat, args);
    va_end(args);
    printBlock(p_nColour, nullptr, nullptr, strText.c_str());
}

void abortAssert(const Origin& p_stOrigin) {
    std::fflush(stdout);
    // glibc declares __assert_fail only while assertions are compiled in.
#if defined(__GLIBC__) && !defined(NDEBUG)
    __assert_fail("bRet", p_stOrigin.unit, static_cast<unsigned int>(p_stOrigin.line),
                  p_stOrigin.signature);
#else
    std::fprintf(stderr, "%s:%d: %s: Assertion `bRet' failed.\n", p_stOrigin.unit, p_stOrigin.line,
                 p_stOrigin.signature);
    std::abort();
#endif
}

bool check(bool bRet, const char* p_szCondition, const Origin& p_stOrigin, const char* p_szFormat,
           ...) {
    if (bRet) {
        return true;
    }
    refreshDebugLevel();
    if (g_nDebugLevel >= 0) {
        LineBuffer line;
        std::snprintf(line.data(), line.size(), "%s   ~~~Assertion failed.\n", p_szCondition);
        printBlock(COLOUR_RED, TAG_ASSERT, &p_stOrigin, line.data());
        ErrorLog objLog;
        objLog.writeHeader(TAG_ASSERT, p_stOrigin);
        objLog.write(TAG_ASSERT, line.data());
    }

    refreshDebugLevel();
    if (g_nDebugLevel >= 0) {
        LineBuffer buf;
        va_list args;
        va_start(args, p_szFormat);
        formatInto(buf, p_szFormat, args);
        va_end(args);
        printBlock(COLOUR_RED, nullptr, nullptr, buf.data());
        ErrorLog objLog;
        objLog.write(TAG_ASSERT, buf.data());
    }
    if (g_bEnAssert) {
        abortAssert(p_stOrigin);
    }
    return false;
}

} // namespace sensordiag
