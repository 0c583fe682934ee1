// A pause of a given length, taken on the current clock (see VXClock).
#pragma once

class TavrinTime {
public:
    TavrinTime(long sec, long usec);
    void wait();

private:
    long m_nSec;
    long m_nUsec;
};
