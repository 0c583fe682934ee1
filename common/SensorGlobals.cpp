#include "common/SensorTypes.h"

std::atomic<bool> g_bShoWBeawayFalg{true};

void setshowBeawayFalg(bool p_bShow) {
    g_bShoWBeawayFalg = p_bShow;
}

bool getshowBeawayFalg() {
    return g_bShoWBeawayFalg;
}
