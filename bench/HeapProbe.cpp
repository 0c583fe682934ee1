// What bench/heap runs under heaptrack: the same process with and without one
// channel brought up. "channel" keeps the channel alive to the end on
// purpose, so what the channel holds after init counts as still allocated at
// exit; "baseline" is everything else the process holds (simulator, root).
#include <cstdio>
#include <cstring>

#include "BenchDevice.h"
#include "support/ControllerTestAccess.h"

int main(int argc, char** argv) {
    const bool bChannel = argc > 1 && std::strcmp(argv[1], "channel") == 0;
    sensorbench::BenchDevice objDevice("ipc");
    if (bChannel) {
        ISensorController* pChannel = objDevice.bringUp().release();
        ISensorControllerTestAccess::stopThread(*pChannel);
        std::fprintf(stderr, "style_bytes %zu\n", objDevice.mergedStyle().size());
    }
    return 0;
}
