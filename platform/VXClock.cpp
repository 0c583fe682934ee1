#include "platform/VXClock.h"

#include "platform/ThreadStopSignal.h"

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>

namespace {

constexpr long long kUsecPerSec = 1000000;
constexpr long long kSecPerDay = 86400;

// Longest pause taken; a larger request is cut to it so that the arithmetic
// below (and the condition variable's deadline) cannot overflow.
constexpr long long kMaxPauseSec = 100LL * 365 * 86400;

// A pause of sec + usec, negative totals count as nothing.
long long pauseUsec(long sec, long usec) {
    const long long s =
        sec > kMaxPauseSec ? kMaxPauseSec : (sec < -kMaxPauseSec ? -kMaxPauseSec : sec);
    const long long u =
        usec > kMaxPauseSec ? kMaxPauseSec : (usec < -kMaxPauseSec ? -kMaxPauseSec : usec);
    const long long total = s * kUsecPerSec + u;
    return total > 0 ? total : 0;
}

VXTime fromTm(const std::tm& tm) {
    return VXTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec};
}

class RealClock : public VXClock {
public:
    void wait(long sec, long usec) override {
        const std::chrono::microseconds d(pauseUsec(sec, usec));
        if (ThreadStopSignal* signal = ThreadStopSignal::current()) {
            signal->sleepFor(d);
        } else {
            std::this_thread::sleep_for(d);
        }
    }

    VXTime now() override {
        const std::time_t t = std::time(nullptr);
        std::tm tm{};
        localtime_r(&t, &tm);
        return fromTm(tm);
    }
};

std::shared_ptr<VXClock> realClock() {
    static const std::shared_ptr<VXClock> clock = std::make_shared<RealClock>();
    return clock;
}

std::mutex g_clockMutex;
std::shared_ptr<VXClock> g_pClock;

std::tm utcFields(long long epochSec) {
    const std::time_t t = static_cast<std::time_t>(epochSec);
    std::tm tm{};
    gmtime_r(&t, &tm);
    return tm;
}

// Days in month of year, for validating dates.
int daysInMonth(int year, int month) {
    constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[month - 1];
}

constexpr long long kStartEpochSec = 1704067200; // 2024-01-01 00:00:00 UTC

} // namespace

VXClock::~VXClock() = default;

VirtualClock::VirtualClock() : m_nEpochUsec(kStartEpochSec * kUsecPerSec) {}

void VirtualClock::setTimeOfDay(int hour, int minute, int second) {
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
        throw std::out_of_range("VirtualClock::setTimeOfDay: no such time of day");
    }
    std::lock_guard<std::mutex> guard(m_mutex);
    const long long sec = m_nEpochUsec / kUsecPerSec;
    const long long midnight = sec - sec % kSecPerDay;
    m_nEpochUsec = (midnight + hour * 3600LL + minute * 60LL + second) * kUsecPerSec;
}

void VirtualClock::setDate(int year, int month, int day) {
    if (year < 1970 || year > 9999 || month < 1 || month > 12 || day < 1 ||
        day > daysInMonth(year, month)) {
        throw std::out_of_range("VirtualClock::setDate: no such date");
    }
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    const long long midnight = static_cast<long long>(timegm(&tm));
    std::lock_guard<std::mutex> guard(m_mutex);
    const long long timeOfDayUsec = m_nEpochUsec % (kSecPerDay * kUsecPerSec);
    m_nEpochUsec = midnight * kUsecPerSec + timeOfDayUsec;
}

long long VirtualClock::elapsedUsec() const {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_nElapsedUsec;
}

long long VirtualClock::waitCount() const {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_nWaits;
}

void VirtualClock::wait(long sec, long usec) {
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        const long long d = pauseUsec(sec, usec);
        m_nEpochUsec += d;
        m_nElapsedUsec += d;
        ++m_nWaits;
    }
    // No real pause, but let other threads run: a thread body that loops on
    // virtual waits would otherwise hold a core to itself.
    std::this_thread::yield();
}

VXTime VirtualClock::now() {
    std::lock_guard<std::mutex> guard(m_mutex);
    return fromTm(utcFields(m_nEpochUsec / kUsecPerSec));
}

void installClock(std::shared_ptr<VXClock> clock) {
    std::lock_guard<std::mutex> guard(g_clockMutex);
    g_pClock = std::move(clock);
}

std::shared_ptr<VXClock> currentClock() {
    {
        std::lock_guard<std::mutex> guard(g_clockMutex);
        if (g_pClock) {
            return g_pClock;
        }
    }
    return realClock();
}
