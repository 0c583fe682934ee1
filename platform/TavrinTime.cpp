#include "platform/TavrinTime.h"

#include "platform/VXClock.h"

TavrinTime::TavrinTime(long sec, long usec) : m_nSec(sec), m_nUsec(usec) {}

void TavrinTime::wait() {
    currentClock()->wait(m_nSec, m_nUsec);
}
