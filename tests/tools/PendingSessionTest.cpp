// sensorctl shows the values a refused ISP command kept from the ISP, and that
// they are sent once the ISP accepts them again.
#include "SensorctlSession.h"

namespace sensortest {

using PendingSessionTest = SensorctlTest;

TEST_F(PendingSessionTest, ValuesARefusalKeptFromTheIspArePendingUntilSent) {
    run("scheme 1\nset saturation 100\nflush\nscheme 0\nfail saturation set -1\nscheme 1\n"
        "pending\nfail clear\nresetlast\npending\nisp saturation\n")
        .expect(0, {{"pending", Shows::Has, "2337 KEY_SATURATION = 100 (pending)"},
                    {"pending", Shows::Is,
                     "  nothing pending: the ISP holds every value of the current scheme\n", 1},
                    {"isp saturation", Shows::Has, "100"}});
}

} // namespace sensortest
