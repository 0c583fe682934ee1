#include "tools/ToolClock.h"

#include <chrono>
#include <ctime>
#include <thread>

#include "platform/ThreadStopSignal.h"

namespace {

constexpr long long kUsecPerSec = 1000000;

std::tm localFields(std::time_t p_nTime) {
    std::tm stTm{};
    localtime_r(&p_nTime, &stTm);
    return stTm;
}

long long secondsOfDay(const std::tm& p_stTm) {
    return p_stTm.tm_hour * 3600LL + p_stTm.tm_min * 60LL + p_stTm.tm_sec;
}

} // namespace

void ToolClock::wait(long sec, long usec) {
    const long long nTotal = static_cast<long long>(sec) * kUsecPerSec + usec;
    if (nTotal <= 0) {
        return;
    }
    const std::chrono::microseconds d(nTotal);
    // A sensor thread's pause ends early when the thread is stopped.
    if (ThreadStopSignal* pSignal = ThreadStopSignal::current()) {
        pSignal->sleepFor(d);
        return;
    }
    if (m_nQuickScopes.load() > 0) {
        return;
    }
    std::this_thread::sleep_for(d);
}

VXTime ToolClock::now() {
    const std::tm stTm = localFields(std::time(nullptr) + m_nOffsetSec.load());
    return VXTime{stTm.tm_year + 1900, stTm.tm_mon + 1, stTm.tm_mday,
                  stTm.tm_hour,        stTm.tm_min,     stTm.tm_sec};
}

bool ToolClock::setTimeOfDay(int p_nHour, int p_nMinute, int p_nSecond) {
    if (p_nHour < 0 || p_nHour > 23 || p_nMinute < 0 || p_nMinute > 59 || p_nSecond < 0 ||
        p_nSecond > 59) {
        return false;
    }
    // The offset stays within the day, so only the time of day moves.
    const long long nWanted = p_nHour * 3600LL + p_nMinute * 60LL + p_nSecond;
    m_nOffsetSec = nWanted - secondsOfDay(localFields(std::time(nullptr)));
    m_bTimeSet = true;
    return true;
}

void ToolClock::useRealTime() {
    m_nOffsetSec = 0;
    m_bTimeSet = false;
}

ToolClock::QuickHostWaits::QuickHostWaits(ToolClock& p_objClock) : m_objClock(p_objClock) {
    ++m_objClock.m_nQuickScopes;
}

ToolClock::QuickHostWaits::~QuickHostWaits() {
    --m_objClock.m_nQuickScopes;
}
