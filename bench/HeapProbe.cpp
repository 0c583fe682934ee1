// What bench/heap runs under heaptrack: the same process with and without
// channels brought up. "channel" keeps one channel alive to the end on
// purpose, so what the channel holds after init counts as still allocated at
// exit; "eight" does the same with channels 1 to 8; "baseline" is everything
// else the process holds (simulator, root).
#include <cstdio>
#include <cstring>

#include "BenchDevice.h"
#include "support/ControllerTestAccess.h"

int main(int argc, char** argv) {
    const bool bChannel = argc > 1 && std::strcmp(argv[1], "channel") == 0;
    const bool bEight = argc > 1 && std::strcmp(argv[1], "eight") == 0;
    sensorbench::BenchDevice objDevice("ipc");
    for (int nChannel = 1; nChannel <= (bEight ? 8 : bChannel ? 1 : 0); ++nChannel) {
        ISensorController* pChannel = objDevice.bringUp(nChannel).release();
        ISensorControllerTestAccess::stopThread(*pChannel);
    }
    if (bChannel) {
        std::fprintf(stderr, "style_bytes %zu\n", objDevice.mergedStyle().size());
    }
    return 0;
}
