// The one replaceable clock behind TavrinTime (pauses) and VXDeviceTime (time
// of day). The real clock is in force by default; tests and simulators install
// a VirtualClock so that pauses cost nothing and the time of day is theirs.
#pragma once

#include <memory>
#include <mutex>

// Calendar time: year in full (2024), month 1..12, day 1..31, hour 0..23.
struct VXTime {
    int year, month, day, hour, minute, second;
};

class VXClock {
public:
    virtual ~VXClock();
    // Pauses the caller; on the real clock a GThread's stop() ends the pause early.
    virtual void wait(long sec, long usec) = 0;
    virtual VXTime now() = 0;
};

// Waits return at once and advance virtual time; the date starts at
// 2024-01-01 00:00:00 and the time of day is whatever the owner sets.
class VirtualClock : public VXClock {
public:
    VirtualClock();
    // Throws std::out_of_range for a time that does not exist (25:00, 10:60).
    void setTimeOfDay(int hour, int minute, int second = 0);
    // Keeps the time of day; throws std::out_of_range for an impossible date.
    void setDate(int year, int month, int day);
    // Total virtual time spent in waits since construction.
    long long elapsedUsec() const;
    // Number of waits made since construction.
    long long waitCount() const;

    void wait(long sec, long usec) override;
    VXTime now() override;

private:
    mutable std::mutex m_mutex;
    long long m_nEpochUsec; // virtual now, microseconds since 1970-01-01 (UTC fields)
    long long m_nElapsedUsec = 0;
    long long m_nWaits = 0;
};

// nullptr restores the real clock.
void installClock(std::shared_ptr<VXClock> clock);
std::shared_ptr<VXClock> currentClock();
