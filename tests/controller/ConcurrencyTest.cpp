// Host threads writing one controller at once: each write is whole (the value
// stored is the value the ISP holds) and, in a ThreadSanitizer build, no data
// race is reported.
#include "ControllerFixture.h"

#include <thread>

namespace sensortest {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

class ConcurrencyTest : public ControllerTest {};

TEST_F(ConcurrencyTest, SetParameterFromSeveralThreadsStaysConsistent) {
    constexpr int kWrites = 150;
    const std::vector<u32> vecOwnKeys = {34, 2337, 2353, 2321};
    constexpr u32 kSharedKey = 96;
    const auto vecSet = makeSet({{34, 0}, {2337, 0}, {2353, 0}, {2321, 0}, {96, 0}, {145, 0}});
    install({vecSet, vecSet, vecSet}, 0);

    CaptureStdout();
    std::vector<std::thread> vecThreads;
    for (std::size_t t = 0; t < vecOwnKeys.size(); ++t) {
        vecThreads.emplace_back([this, t, nKey = vecOwnKeys[t]] {
            for (int v = 1; v <= kWrites; ++v) {
                ctl().setParameter(static_cast<int>(nKey), v, true);
                ctl().setParameter(static_cast<int>(kSharedKey), static_cast<int>(t) * 1000 + v,
                                   true);
                ctl().setParameter(145, v, true); // a handler reading partners from the set
                int nRead = 0;
                ctl().getParameter(static_cast<int>(nKey), nRead);
            }
        });
    }
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
    GetCapturedStdout();

    for (u32 nKey : vecOwnKeys) {
        EXPECT_EQ(stored(0, nKey), static_cast<u32>(kWrites)) << nKey;
        EXPECT_EQ(m_objIsp.getValue(0, nKey), kWrites) << nKey;
    }
    EXPECT_EQ(static_cast<int32_t>(stored(0, kSharedKey)), m_objIsp.getValue(0, kSharedKey));
    EXPECT_EQ(stored(0, 145), static_cast<u32>(kWrites));
}

} // namespace
} // namespace sensortest
