#include "tools/WindowCheck.h"

#include "common/SensorTypes.h"

const char* windowProblem(int p_nCheck) {
    switch (p_nCheck) {
    case SNS_ERR_START_TIME:
        return "the window starts after 24:00 (505)";
    case SNS_ERR_END_TIME:
        return "the window ends after 24:00 (506)";
    case SNS_ERR_TIME_ORDER:
        return "the window does not start before it ends (507)";
    default:
        return nullptr;
    }
}
