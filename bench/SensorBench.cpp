// The module's costs, each beside the reference it is judged against,
// measured in the same run: start-up and the style against one parse and
// print of the merged style, parameter writes against the bare ISP calls
// they make (on one channel, and on eight written by four threads at once),
// an idle pass of the sensor thread, and the release of a channel whose
// thread is waiting.
#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <numeric>
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

// CPU seconds the calling thread has used.
double threadCpuSeconds() {
    timespec stNow{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &stNow);
    return static_cast<double>(stNow.tv_sec) + static_cast<double>(stNow.tv_nsec) * 1e-9;
}

double wallSeconds() {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

// The parts of a benchmark that are timed; the rest of each iteration is
// set-up. Reported as manual time. The work figures take the CPU time of the
// calling thread: on a shared machine the wall time also holds whatever else
// ran meanwhile. A latency (uinit) takes the wall time.
class Stopwatch {
public:
    enum class Measure { Cpu, Wall };
    explicit Stopwatch(benchmark::State& p_objState, Measure p_eMeasure = Measure::Cpu)
        : m_objState(p_objState),
          m_fnNow(p_eMeasure == Measure::Cpu ? threadCpuSeconds : wallSeconds) {}
    template <class Work> void time(Work&& p_fnWork) {
        const double t0 = m_fnNow();
        p_fnWork();
        const double dSeconds = m_fnNow() - t0;
        m_objState.SetIterationTime(dSeconds);
        m_dTotal += dSeconds;
        ++m_nCount;
    }
    // The mean seconds per timed run.
    double finish() const { return m_nCount > 0 ? m_dTotal / static_cast<double>(m_nCount) : 0.0; }

private:
    benchmark::State& m_objState;
    double (*m_fnNow)();
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

// One parse and print of the merged style, the reference of init and
// getUIStyleFile; returns its CPU time.
double parsePrintOnce(const std::string& p_strStyle) {
    const double t0 = threadCpuSeconds();
    TiXmlDocumentEx objDoc;
    objDoc.LoadMem(p_strStyle.c_str(), TIXML_ENCODING_UTF8);
    std::string strOut;
    objDoc.getXmlString(strOut);
    benchmark::DoNotOptimize(strOut);
    return threadCpuSeconds() - t0;
}

// Each iteration makes a few parse+prints of the merged style, then as many
// runs of p_fnWork under the stopwatch: the figure and its reference see the
// same state of the machine, and neither starts every run on the other's
// leftovers. Reports the reference's mean and the figure's ratio to it.
template <class Work>
void timeAgainstParsePrint(benchmark::State& p_objState, double p_dLimit, Work&& p_fnWork) {
    channel(); // leaves the merged style on the root
    const std::string strStyle = device().mergedStyle();
    double dReference = 0.0;
    Stopwatch objWatch(p_objState);
    constexpr int kRuns = 8;
    for (auto _ : p_objState) {
        for (int i = 0; i < kRuns; ++i) {
            dReference += parsePrintOnce(strStyle);
        }
        for (int i = 0; i < kRuns; ++i) {
            p_fnWork(objWatch);
        }
    }
    const double dMine = objWatch.finish();
    const double dRefMean = dReference / static_cast<double>(p_objState.iterations() * kRuns);
    p_objState.counters["us"] = dMine * 1e6;
    p_objState.counters["parse_print_us"] = dRefMean * 1e6;
    p_objState.counters["ratio"] = dMine / dRefMean;
    p_objState.counters["limit"] = p_dLimit;
}

void Init_IpcWithFiles(benchmark::State& p_objState) {
    // The parameter files and the stamp are present from here on.
    timeAgainstParsePrint(p_objState, 3.0, [](Stopwatch& p_objWatch) {
        ISensorController objController;
        objController.setChannelID(1);
        IdleVideoModule objVideo;
        objController.setVideoStreamModule(&objVideo);
        p_objWatch.time([&] { objController.init(device().module()); });
        objController.uinit();
    });
}

void GetUIStyleFile(benchmark::State& p_objState) {
    timeAgainstParsePrint(p_objState, 1.2, [](Stopwatch& p_objWatch) {
        p_objWatch.time([&] { benchmark::DoNotOptimize(channel().getUIStyleFile()); });
    });
}

// The ISP calls one uncached write of the whole set makes, as the simulator
// logged them, ready to be made again without the module.
std::vector<IspSimulator::LogEntry> callsOfSet(ISensorController& p_objChannel,
                                               std::vector<KeyVal> p_vecSet) {
    IspSimulator& objIsp = IspSimulator::instance();
    objIsp.clearLog();
    objIsp.enableLog(true);
    p_objChannel.setParameters(p_vecSet.data(), static_cast<u32>(p_vecSet.size()), false);
    objIsp.enableLog(false);
    std::vector<IspSimulator::LogEntry> vecCalls = objIsp.log();
    objIsp.clearLog();
    return vecCalls;
}

// The logged calls with the data each one passes, made again without the module.
class IspReplay {
public:
    explicit IspReplay(std::vector<IspSimulator::LogEntry> p_vecCalls)
        : m_vecCalls(std::move(p_vecCalls)) {
        for (const IspSimulator::LogEntry& stCall : m_vecCalls) {
            std::vector<uint8_t> vecBytes = stCall.bytes;
            if (vecBytes.empty()) {
                vecBytes.resize(sizeof(int32_t));
                std::memcpy(vecBytes.data(), &stCall.value, sizeof(int32_t));
            }
            m_vecData.push_back(std::move(vecBytes));
        }
    }
    void run() {
        for (std::size_t i = 0; i < m_vecCalls.size(); ++i) {
            ia_ioctrl_v2(m_vecCalls[i].channel, static_cast<ia_cmd_e>(m_vecCalls[i].cmd),
                         m_vecCalls[i].option, m_vecData[i].data());
        }
    }
    std::size_t calls() const { return m_vecCalls.size(); }

private:
    std::vector<IspSimulator::LogEntry> m_vecCalls;
    std::vector<std::vector<uint8_t>> m_vecData;
};

// Each iteration makes the ISP calls of the set alone, then the set through
// the module: the two times see the same state of the machine, and the
// figure is their difference.
void SetParameters_CacheOff(benchmark::State& p_objState) {
    const std::vector<KeyVal> vecSet = currentSet();
    IspReplay objReplay(callsOfSet(channel(), vecSet));
    double dIsp = 0.0;
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        std::vector<KeyVal> vecCopy = vecSet; // handlers may rewrite the values they get
        const double t0 = threadCpuSeconds();
        objReplay.run();
        dIsp += threadCpuSeconds() - t0;
        objWatch.time([&] {
            channel().setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), false);
        });
    }
    const double dMine = objWatch.finish();
    const double dIspMean = dIsp / static_cast<double>(p_objState.iterations());
    p_objState.counters["isp_us"] = dIspMean * 1e6;
    p_objState.counters["keys"] = static_cast<double>(vecSet.size());
    p_objState.counters["isp_calls"] = static_cast<double>(objReplay.calls());
    p_objState.counters["overhead_us_per_key"] =
        (dMine - dIspMean) * 1e6 / static_cast<double>(vecSet.size());
    p_objState.counters["limit"] = 0.25;
}

void SetParameters_EqualToCache(benchmark::State& p_objState) {
    // A set equal to the cache applies nothing and so rewrites no value: one
    // copy serves a batch of calls, and the batch makes the clock's own cost
    // negligible beside calls of about a microsecond.
    constexpr int kCalls = 100;
    std::vector<KeyVal> vecCopy = currentSet();
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        objWatch.time([&] {
            for (int i = 0; i < kCalls; ++i) {
                channel().setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()), true);
            }
        });
    }
    const double dMine = objWatch.finish() / kCalls;
    p_objState.counters["us_per_key"] = dMine * 1e6 / static_cast<double>(vecCopy.size());
    p_objState.counters["limit"] = 0.02;
}

// The clock of the idle-pass figure: its pause takes no time at all, so the
// figure is the pass's own work (on the camera the pause is a sleep).
class InstantClock : public VXClock {
public:
    void wait(long, long) override {}
    VXTime now() override { return VXTime{2024, 1, 1, 12, 0, 0}; }
};

// One pass of the sensor thread with nothing to do (no policy, no mail),
// without its pause; CPU time of a batch of passes, per pass.
void SensorThread_IdlePass(benchmark::State& p_objState) {
    constexpr int kPasses = 1000;
    ISensorController& objChannel = channel();
    auto pBefore = currentClock();
    installClock(std::make_shared<InstantClock>());
    Stopwatch objWatch(p_objState);
    for (auto _ : p_objState) {
        objWatch.time([&] {
            for (int i = 0; i < kPasses; ++i) {
                objChannel.sensorThread();
            }
        });
    }
    installClock(pBefore);
    p_objState.counters["us_per_pass"] = objWatch.finish() / kPasses * 1e6;
    p_objState.counters["limit"] = 5.0;
}

// Eight channels up in one process, then four host threads writing full
// uncached sets on all of them at once: thread t writes channels t and t + 4
// in turn, so every channel is written while the others are, and no two
// threads write one channel (a channel's set loop belongs to one caller at a
// time). The figure is CPU time per key of all threads, beside the same for
// one channel alone.
constexpr int kChannels = 8;
constexpr int kWriters = 4;
constexpr int kWritesPerThread = 64;

std::vector<std::unique_ptr<ISensorController>>& eightChannels() {
    static std::vector<std::unique_ptr<ISensorController>> s_vecChannels = [] {
        std::vector<std::unique_ptr<ISensorController>> vecChannels;
        for (int nChannel = 1; nChannel <= kChannels; ++nChannel) {
            vecChannels.push_back(device().bringUp(nChannel));
            ISensorControllerTestAccess::stopThread(*vecChannels.back());
        }
        return vecChannels;
    }();
    return s_vecChannels;
}

std::vector<std::vector<KeyVal>> setsOfEightChannels() {
    std::vector<std::vector<KeyVal>> vecSets;
    for (const auto& pChannel : eightChannels()) {
        vecSets.push_back(ISensorControllerTestAccess::row(
            *pChannel, static_cast<u32>(ISensorControllerTestAccess::curScheme(*pChannel))));
    }
    return vecSets;
}

// One round of four threads writing the eight channels at once, thread t
// channels t and t + 4 in turn; p_fnWrite(channel) makes one write. Returns
// the CPU time of all threads, after each thread's first write of each of its
// channels: a host thread of the camera lives for years, and the first
// writes of a new thread (its stack's pages, its allocator cache) are not
// part of the per-key figure.
template <class Write> double fourWritersRound(Write&& p_fnWrite) {
    std::array<double, kWriters> arrCpu{};
    std::atomic<int> nReady{0};
    std::atomic<bool> bGo{false};
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < kWriters; ++t) {
        vecThreads.emplace_back([&, t] {
            p_fnWrite(t);
            p_fnWrite(t + kWriters);
            ++nReady;
            while (!bGo.load()) {
                std::this_thread::yield();
            }
            const double dCpu0 = threadCpuSeconds();
            for (int w = 0; w < kWritesPerThread; ++w) {
                p_fnWrite(t + (w % 2) * kWriters);
            }
            arrCpu[t] = threadCpuSeconds() - dCpu0;
        });
    }
    while (nReady.load() < kWriters) {
        std::this_thread::yield();
    }
    bGo = true;
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
    return std::accumulate(arrCpu.begin(), arrCpu.end(), 0.0);
}

// Each iteration a round of the same ISP calls made by four threads without
// the module, then a round through the module: the figure is the CPU time per
// key of the second over the first, both seeing the same state of the
// machine.
void EightChannels_FourWriters(benchmark::State& p_objState) {
    auto& vecChannels = eightChannels();
    const std::vector<std::vector<KeyVal>> vecSets = setsOfEightChannels();
    std::vector<IspReplay> vecReplays;
    for (std::size_t i = 0; i < vecSets.size(); ++i) {
        vecReplays.emplace_back(callsOfSet(*vecChannels[i], vecSets[i]));
    }
    double dIsp = 0.0;
    double dModule = 0.0;
    Stopwatch objWatch(p_objState, Stopwatch::Measure::Wall);
    for (auto _ : p_objState) {
        dIsp += fourWritersRound(
            [&](int p_nChannel) { vecReplays[static_cast<std::size_t>(p_nChannel)].run(); });
        objWatch.time([&] {
            dModule += fourWritersRound([&](int p_nChannel) {
                const auto i = static_cast<std::size_t>(p_nChannel);
                std::vector<KeyVal> vecCopy = vecSets[i]; // handlers may rewrite the values
                vecChannels[i]->setParameters(vecCopy.data(), static_cast<u32>(vecCopy.size()),
                                              false);
            });
        });
    }
    const double dKeys = static_cast<double>(p_objState.iterations()) * kWriters *
                         kWritesPerThread * static_cast<double>(vecSets.front().size());
    p_objState.counters["cpu_us_per_key"] = dModule / dKeys * 1e6;
    p_objState.counters["isp_cpu_us_per_key"] = dIsp / dKeys * 1e6;
}

// The thread sits in its one-second pause on the real clock when the host
// releases the channel: uinit must wake it rather than wait the pause out.
void Uinit_ThreadWaiting(benchmark::State& p_objState) {
    auto pVirtual = currentClock();
    Stopwatch objWatch(p_objState, Stopwatch::Measure::Wall);
    for (auto _ : p_objState) {
        installClock(pVirtual);
        auto pController = device().bringUp();
        installClock(nullptr); // the real clock: the next pause lasts a second
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        objWatch.time([&] { pController->uinit(); });
    }
    installClock(pVirtual);
    p_objState.counters["ms"] = objWatch.finish() * 1e3;
    p_objState.counters["limit"] = 50.0;
}

} // namespace
} // namespace sensorbench

int main(int argc, char** argv) {
    // The module prints its traces on standard output; they go to /dev/null
    // here and the report goes to the original standard output.
    const int nReportFd = sensorbench::silenceStandardOutput();
    if (nReportFd < 0) {
        return 1;
    }
    std::ofstream objReport("/proc/self/fd/" + std::to_string(nReportFd));

    using namespace sensorbench;
    // References first: the figures after them are judged against them.
    benchmark::RegisterBenchmark("init/ipc_with_files", Init_IpcWithFiles)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("getUIStyleFile", GetUIStyleFile)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("setParameters/cache_off", SetParameters_CacheOff)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("setParameters/equal_to_cache", SetParameters_EqualToCache)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("sensorThread/idle_pass_x1000", SensorThread_IdlePass)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("eight_channels/four_writers", EightChannels_FourWriters)
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
