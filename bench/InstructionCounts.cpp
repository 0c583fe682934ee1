// The instruction counts bench/run reports beside the times and checks
// against bench/baseline.txt: one init of the ipc device with its files
// present, a full uncached write, the same write equal to the cache, one
// getUIStyleFile and one idle pass of the sensor thread; and init and
// getUIStyleFile on styles of 1, 4 and 16 times the ipc style's controls.
//
// Run under `valgrind --tool=callgrind --collect-atstart=no`: each figure is
// the instructions between a zero and a dump of the counters, and the dump
// is named after the figure. Outside valgrind the requests do nothing and the
// program only runs the scenarios once (a quick check that they work).
#include <valgrind/callgrind.h>

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "BenchDevice.h"
#include "platform/VXClock.h"
#include "support/ControllerTestAccess.h"

namespace {

using sensorbench::BenchDevice;

// Counts what p_fnWork executes, under the name p_strName.
template <class Work> void count(const std::string& p_strName, Work&& p_fnWork) {
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    p_fnWork();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(p_strName.c_str());
}

// A channel brought up on the real clock: its thread sleeps through its
// one-second pause instead of spinning on the virtual clock, so nothing runs
// beside the counted work. Its own first pass in init waits that second too.
std::unique_ptr<ISensorController> bringUpQuiet(const BenchDevice& p_objDevice,
                                                const std::string& p_strName) {
    auto pVirtual = currentClock();
    installClock(nullptr);
    std::unique_ptr<ISensorController> pChannel;
    if (p_strName.empty()) {
        pChannel = p_objDevice.bringUp();
    } else {
        pChannel = std::make_unique<ISensorController>();
        pChannel->setChannelID(1);
        count(p_strName, [&] { pChannel->init(p_objDevice.module()); });
    }
    ISensorControllerTestAccess::stopThread(*pChannel);
    installClock(pVirtual);
    return pChannel;
}

void countChannelFigures() {
    BenchDevice objDevice("ipc");
    bringUpQuiet(objDevice, "")->uinit(); // the first start-up writes the files
    auto pChannel = bringUpQuiet(objDevice, "init");
    ISensorController& objChannel = *pChannel;
    const std::vector<KeyVal> vecSet = ISensorControllerTestAccess::row(
        objChannel, static_cast<u32>(ISensorControllerTestAccess::curScheme(objChannel)));
    std::vector<KeyVal> vecCopy = vecSet;
    count("set_uncached", [&] {
        objChannel.setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), false);
    });
    vecCopy = vecSet;
    count("set_cached", [&] {
        objChannel.setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), true);
    });
    count("style", [&] { objChannel.getUIStyleFile(); });
    objChannel.sensorThread(); // the first pass after a call checks the marker
    count("idle_pass", [&] { objChannel.sensorThread(); });
    objChannel.uinit();
}

// "controls_xN count" lines, printed once standard output is the report again.
std::vector<std::string> g_vecControlLines;

void countGrowth(int p_nScale) {
    BenchDevice objDevice("ipc", p_nScale);
    bringUpQuiet(objDevice, "")->uinit();
    const std::string strSuffix = "_x" + std::to_string(p_nScale);
    auto pChannel = bringUpQuiet(objDevice, "init" + strSuffix);
    count("style" + strSuffix, [&] { pChannel->getUIStyleFile(); });
    g_vecControlLines.push_back("controls" + strSuffix + " " +
                                std::to_string(objDevice.controlCount()));
    pChannel->uinit();
}

} // namespace

int main(int argc, char** argv) {
    // The module's traces go to /dev/null; the control counts to the
    // original standard output.
    const int nReportFd = sensorbench::silenceStandardOutput();
    if (nReportFd < 0) {
        return 1;
    }
    const bool bGrowth = !(argc > 1 && std::string(argv[1]) == "--no-growth");
    countChannelFigures();
    if (bGrowth) {
        for (const int nScale : {1, 4, 16}) {
            countGrowth(nScale);
        }
    }
    std::fflush(stdout);
    ::dup2(nReportFd, 1);
    for (const std::string& strLine : g_vecControlLines) {
        std::printf("%s\n", strLine.c_str());
    }
    return 0;
}
