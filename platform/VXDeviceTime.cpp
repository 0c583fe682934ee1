#include "platform/VXDeviceTime.h"

VXTime VXDeviceTime::getCurrentTime() {
    return currentClock()->now();
}
