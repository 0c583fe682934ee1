// The clock sensorctl runs on. Pauses really sleep, so the sensor thread makes
// one pass a second as on a camera, and a stopping thread wakes at once as on
// the real clock. The time of day can be set, so that time-window schemes can
// be tried without waiting for the hour to come.
#pragma once

#include <atomic>

#include "platform/VXClock.h"

class ToolClock : public VXClock {
public:
    void wait(long sec, long usec) override;
    VXTime now() override;

    // From now on the local time of day reads hour:minute:second and runs on
    // from there. False (nothing changed) for a time that does not exist.
    bool setTimeOfDay(int p_nHour, int p_nMinute, int p_nSecond);
    // Back to the machine's own time of day.
    void useRealTime();
    bool isTimeSet() const { return m_bTimeSet.load(); }

    // While one is alive, pauses taken on a thread that is not a GThread (the
    // host's thread during start-up and reset) return at once: the pass that
    // init runs itself would otherwise cost a second per channel.
    class QuickHostWaits {
    public:
        explicit QuickHostWaits(ToolClock& p_objClock);
        ~QuickHostWaits();
        QuickHostWaits(const QuickHostWaits&) = delete;
        QuickHostWaits& operator=(const QuickHostWaits&) = delete;

    private:
        ToolClock& m_objClock;
    };

private:
    std::atomic<long long> m_nOffsetSec{0};
    std::atomic<bool> m_bTimeSet{false};
    std::atomic<int> m_nQuickScopes{0};
};
