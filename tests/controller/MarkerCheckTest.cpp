// When the marker file "/tmp/Debug.sign" is read: once per host call and per
// sensor-thread pass, at the first diagnostic after it began; a change
// written while the module runs is obeyed from the next call or pass on,
// never by diagnostics of a call already under way.
#include "ControllerFixture.h"

#include <memory>

#include "common/SensorDebug.h"
#include "platform/VXClock.h"

namespace sensortest {
namespace {

class MarkerCheckTest : public ControllerTest {
protected:
    MarkerCheckTest() { installClock(std::make_shared<VirtualClock>()); }
    ~MarkerCheckTest() override { installClock(nullptr); }
    // What one host call (a write of brightness) prints.
    std::string printedBySet(u32 p_nValue) {
        CaptureStdout();
        apply({{34, p_nValue}}, false);
        return GetCapturedStdout();
    }
};

TEST_F(MarkerCheckTest, ChangeIsObeyedFromTheNextHostCallOrPass) {
    static KeyVal s_stRecord{34, 44};
    static int s_nOut = 0;
    const std::pair<const char*, void (*)(ISensorController&)> aCases[] = {
        {"setParameters", [](ISensorController& c) { c.setParameters(&s_stRecord, 1, false); }},
        {"getParameter", [](ISensorController& c) { c.getParameter(34, s_nOut); }},
        {"getParamMode", [](ISensorController& c) { c.getParamMode(s_nOut); }},
        {"sensor-thread pass", [](ISensorController& c) { c.sensorThread(); }}};
    for (const auto& [szWhat, fnBegin] : aCases) {
        SCOPED_TRACE(szWhat);
        reset();
        installAlike(makeSet("34=50"));
        for (const int nLevel : {6, 1}) {
            sensordiag::debugLevel(); // a check already due is made before the change
            setDebugLevel(nLevel);
            EXPECT_NE(sensordiag::debugLevel(), nLevel) << "read before any call began";
            fnBegin(ctl());
            EXPECT_EQ(sensordiag::debugLevel(), nLevel);
        }
    }
}

// A change of level between two calls is followed by the traces: TracesTest.
TEST_F(MarkerCheckTest, ARemovedMarkerCountsAsLevelOneLikeOneNeverWritten) {
    installAlike(makeSet("34=50"));
    setDebugLevel(6);
    EXPECT_TRUE(contains(printedBySet(43), "set KEY_BRIGHTNESS (34,43)"));
    std::remove(m_objRoot.hostPath("/tmp/Debug.sign").c_str());
    EXPECT_FALSE(contains(printedBySet(44), "KEY_BRIGHTNESS"));
}

} // namespace
} // namespace sensortest
