// The module's costs, each beside the reference it is judged against,
// measured in the same run: start-up and the style against one parse and
// print of the merged style, parameter writes against the bare ISP calls
// they make, and the release of a channel whose thread is waiting.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "BenchDevice.h"
#include "common/ia_ioctrl.h"
#include "config/SensorXml.h"
#include "isp/IspSimulator.h"
#include "platform/VXClock.h"
#include "support/ControllerTestAccess.h"

namespace sensorbench {
namespace {

using Clock = std::chrono::steady_clock;

// Mean seconds per iteration of every finished benchmark, by figure name.
std::map<std::string, double> g_mapSeconds;

// The parts of a benchmark that are timed; the rest of each iteration is
// set-up. Reported as manual time.
class Stopwatch {
public:
    explicit Stopwatch(benchmark::State& p_objState) : m_objState(p_objState) {}
    template <class Work> void time(Work&& p_fnWork) {
        const Clock::time_point t0 = Clock::now();
        p_fnWork();
        const double dSeconds = std::chrono::duration<double>(Clock::now() - t0).count();
        m_objState.SetIterationTime(dSeconds);
        m_dTotal += dSeconds;
        ++m_nCount;
    }
    // Keeps the mean under p_strName and returns it.
    double finish(const std::string& p_strName) {
        const double dMean = m_nCount > 0 ? m_dTotal / static_cast<double>(m_nCount) : 0.0;
        g_mapSeconds[p_strName] = dMean;
        return dMean;
    }

private:
    benchmark::State& m_objState;
    double m_dTotal = 0.0;
    long m_nCount = 0;
};

BenchDevice& device() {
    static BenchDevice s_objDevice("ipc");
    return s_objDevice;
}

// The channel the steady-state figures use; its thread is stopped so that
// it takes no time from the calls being measured.
ISensorController& channel() {
    static std::unique_ptr<ISensorController> s_pChannel = [] {
        auto pChannel = device().bringUp();
        ISensorControllerTestAccess::stopThread(*pChannel);
        return pChannel;
    }();
    return *s_pChannel;
}

std::vector<KeyVal> currentSet() {
    ISensorController& objChannel = channel();
    return ISensorControllerTestAccess::row(objChannel,
                                            ISensorControllerTestAccess::curScheme(objChannel));
}

void setRatio(benchmark::State& p_objState, double p_dMine, const std::string& p_strReference,
              double p_dLimit) {
    const double dReference = g_mapSeconds[p_strReference];
    p_objState.counters["ratio"] = dReference > 0 ? p_dMine / dReference : 0.0;
    p_objState.counters["limit"] = p_dLimit;
}

void Ref_ParsePrintMergedStyle(benchmark::State& p_objState) {
    channel(); // leaves the merged style on the root
    const std::string strStyle = device().mergedStyle();
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        objWatch.time([&] {
            TiXmlDocumentEx objDoc;
            objDoc.LoadMem(strStyle.c_str(), TIXML_ENCODING_UTF8);
            std::string strOut;
            objDoc.getXmlString(strOut);
            benchmark::DoNotOptimize(strOut);
        });
    }
    objWatch.finish("parse_print");
    p_objState.counters["style_bytes"] = static_cast<double>(strStyle.size());
}

void Init_IpcWithFiles(benchmark::State& p_objState) {
    channel(); // the parameter files and the stamp are present from here on
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        ISensorController objController;
        objController.setChannelID(1);
        IdleVideoModule objVideo;
        objController.setVideoStreamModule(&objVideo);
        objWatch.time([&] { objController.init(device().module()); });
        objController.uinit();
    }
    setRatio(p_objState, objWatch.finish("init"), "parse_print", 8.0);
}

void GetUIStyleFile(benchmark::State& p_objState) {
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        objWatch.time([&] { benchmark::DoNotOptimize(channel().getUIStyleFile()); });
    }
    setRatio(p_objState, objWatch.finish("style"), "parse_print", 3.0);
}

// The ISP calls one uncached write of the whole set makes, as the simulator
// logged them, ready to be made again without the module.
std::vector<IspSimulator::LogEntry> callsOfFullSet() {
    IspSimulator& objIsp = IspSimulator::instance();
    std::vector<KeyVal> vecSet = currentSet();
    objIsp.clearLog();
    objIsp.enableLog(true);
    channel().setParameters(vecSet.data(), static_cast<u32>(vecSet.size()), false);
    objIsp.enableLog(false);
    std::vector<IspSimulator::LogEntry> vecCalls = objIsp.log();
    objIsp.clearLog();
    return vecCalls;
}

void Ref_IoctrlCallsOfFullSet(benchmark::State& p_objState) {
    const std::vector<IspSimulator::LogEntry> vecCalls = callsOfFullSet();
    const std::size_t nKeys = currentSet().size();
    std::vector<std::vector<uint8_t>> vecData;
    for (const IspSimulator::LogEntry& stCall : vecCalls) {
        std::vector<uint8_t> vecBytes = stCall.bytes;
        if (vecBytes.empty()) {
            vecBytes.resize(sizeof(int32_t));
            std::memcpy(vecBytes.data(), &stCall.value, sizeof(int32_t));
        }
        vecData.push_back(std::move(vecBytes));
    }
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        objWatch.time([&] {
            for (std::size_t i = 0; i < vecCalls.size(); ++i) {
                ia_ioctrl_v2(vecCalls[i].channel, static_cast<ia_cmd_e>(vecCalls[i].cmd),
                             vecCalls[i].option, vecData[i].data());
            }
        });
    }
    objWatch.finish("ioctrl_loop");
    p_objState.counters["keys"] = static_cast<double>(nKeys);
    p_objState.counters["isp_calls"] = static_cast<double>(vecCalls.size());
}

void SetParameters_CacheOff(benchmark::State& p_objState) {
    const std::vector<KeyVal> vecSet = currentSet();
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        std::vector<KeyVal> vecCopy = vecSet; // handlers may rewrite the values they get
        objWatch.time([&] {
            channel().setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), false);
        });
    }
    const double dMine = objWatch.finish("set_uncached");
    const double dOverheadUs =
        (dMine - g_mapSeconds["ioctrl_loop"]) * 1e6 / static_cast<double>(vecSet.size());
    p_objState.counters["overhead_us_per_key"] = dOverheadUs;
    p_objState.counters["limit"] = 2.0;
}

void SetParameters_EqualToCache(benchmark::State& p_objState) {
    const std::vector<KeyVal> vecSet = currentSet();
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        std::vector<KeyVal> vecCopy = vecSet;
        objWatch.time([&] {
            channel().setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), true);
        });
    }
    const double dMine = objWatch.finish("set_cached");
    p_objState.counters["us_per_key"] = dMine * 1e6 / static_cast<double>(vecSet.size());
    p_objState.counters["limit"] = 0.2;
}

// The thread sits in its one-second pause on the real clock when the host
// releases the channel: uinit must wake it rather than wait the pause out.
void Uinit_ThreadWaiting(benchmark::State& p_objState) {
    auto pVirtual = currentClock();
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        installClock(pVirtual);
        auto pController = device().bringUp();
        installClock(nullptr); // the real clock: the next pause lasts a second
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        objWatch.time([&] { pController->uinit(); });
    }
    installClock(pVirtual);
    p_objState.counters["ms"] = objWatch.finish("uinit") * 1e3;
    p_objState.counters["limit"] = 50.0;
}

} // namespace
} // namespace sensorbench

int main(int argc, char** argv) {
    // The module prints its traces on standard output; they go to /dev/null
    // here and the report goes to the original standard output.
    const int nReportFd = ::dup(1);
    const int nNull = ::open("/dev/null", O_WRONLY);
    if (nReportFd < 0 || nNull < 0 || ::dup2(nNull, 1) < 0) {
        std::perror("redirecting standard output");
        return 1;
    }
    ::close(nNull);
    std::ofstream objReport("/proc/self/fd/" + std::to_string(nReportFd));

    using namespace sensorbench;
    // References first: the figures after them are judged against them.
    benchmark::RegisterBenchmark("reference/parse_print_merged_style", Ref_ParsePrintMergedStyle)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("init/ipc_with_files", Init_IpcWithFiles)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("getUIStyleFile", GetUIStyleFile)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("reference/ioctrl_calls_of_full_set", Ref_IoctrlCallsOfFullSet)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("setParameters/cache_off", SetParameters_CacheOff)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("setParameters/equal_to_cache", SetParameters_EqualToCache)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("uinit/thread_waiting", Uinit_ThreadWaiting)
        ->UseManualTime()
        ->Iterations(10)
        ->Unit(benchmark::kMillisecond);

    benchmark::Initialize(&argc, argv);
    benchmark::ConsoleReporter objConsole(benchmark::ConsoleReporter::OO_Tabular);
    objConsole.SetOutputStream(&objReport);
    objConsole.SetErrorStream(&objReport);
    benchmark::RunSpecifiedBenchmarks(&objConsole);
    benchmark::Shutdown();
    return 0;
}
