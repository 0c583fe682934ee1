// The device's local time of day, from the current clock (see VXClock).
#pragma once

#include "platform/VXClock.h"

class VXDeviceTime {
public:
    static VXTime getCurrentTime();
};
