// Host threads writing one controller at once: each write is whole (the value
// stored is the value the ISP holds) and, in a ThreadSanitizer build, no data
// race is reported.
#include "ControllerFixture.h"

#include <thread>

namespace sensortest {
namespace {

using ConcurrencyTest = ControllerTest;

TEST_F(ConcurrencyTest, SetParameterFromSeveralThreadsStaysConsistent) {
    constexpr int kWrites = 150;
    constexpr int kSharedKey = 96;
    const int aOwnKeys[] = {34, 2337, 2353, 2321};
    installAlike(makeSet("34=0 2337=0 2353=0 2321=0 96=0 145=0"));

    CaptureStdout();
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < 4; ++t) {
        vecThreads.emplace_back([this, t, nKey = aOwnKeys[t]] {
            for (int v = 1; v <= kWrites; ++v) {
                ctl().setParameter(nKey, v, true);
                ctl().setParameter(kSharedKey, t * 1000 + v, true);
                ctl().setParameter(145, v, true); // a handler reading partners from the set
                int nRead = 0;
                ctl().getParameter(nKey, nRead);
            }
        });
    }
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
    GetCapturedStdout();

    for (int nKey : aOwnKeys) {
        EXPECT_EQ(stored(0, nKey), static_cast<u32>(kWrites)) << nKey;
        EXPECT_EQ(m_objIsp.getValue(0, nKey), kWrites) << nKey;
    }
    EXPECT_EQ(static_cast<int32_t>(stored(0, kSharedKey)), m_objIsp.getValue(0, kSharedKey));
    EXPECT_EQ(stored(0, 145), static_cast<u32>(kWrites));
}

} // namespace
} // namespace sensortest
