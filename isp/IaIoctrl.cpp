// The ISP adaptation library's entry point, served by the simulator.
#include "common/ia_ioctrl.h"
#include "isp/IspSimulator.h"

extern "C" int ia_ioctrl_v2(int channel, ia_cmd_e cmd, int option, void* data) {
    return IspSimulator::instance().ioctrl(channel, static_cast<uint32_t>(cmd), option, data);
}
