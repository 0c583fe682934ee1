// When the marker file "/tmp/Debug.sign" is looked at: once per host call and
// per sensor-thread pass, at the first diagnostic after it began; a change
// made while the module runs, in whatever way, is obeyed from the next call
// or pass on, never by diagnostics of a call already under way.
#include "ControllerFixture.h"

#include <filesystem>
#include <fstream>
#include <functional>
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

// The watch on the marker sees it created, written in place, renamed into
// place, written through a link in another directory, its directory made anew;
// a marker that is a symbolic link is read at every check instead.
TEST_F(MarkerCheckTest, EveryWayOfChangingTheMarkerIsObeyedFromTheNextCall) {
    namespace fs = std::filesystem;
    const fs::path objMarker = m_objRoot.hostPath("/tmp/Debug.sign");
    const fs::path objOther = m_objRoot.hostPath("/mnt/mtd/level");
    const auto write = [](const fs::path& p_objPath, int p_nLevel) {
        std::ofstream(p_objPath, std::ios::trunc) << p_nLevel << "\n0\n";
    };
    const std::pair<const char*, std::function<void(int)>> aWays[] = {
        {"in place", [&](int n) { write(objMarker, n); }},
        {"renamed over",
         [&](int n) {
             write(objMarker.string() + ".new", n);
             fs::rename(objMarker.string() + ".new", objMarker);
         }},
        {"through a hard link",
         [&](int n) {
             if (!fs::exists(objOther)) {
                 write(objOther, 1);
                 fs::create_hard_link(objOther, objMarker);
             }
             write(objOther, n);
         }},
        {"symbolic link's target",
         [&](int n) {
             if (!fs::is_symlink(objMarker)) {
                 fs::remove(objMarker);
                 fs::create_symlink(objOther, objMarker);
             }
             write(objOther, n);
         }},
        {"directory made anew", [&](int n) {
             fs::remove_all(objMarker.parent_path());
             fs::create_directories(objMarker.parent_path());
             write(objMarker, n);
         }}};
    installAlike(makeSet("34=50"));
    int nOut = 0;
    for (const auto& [szWay, fnChange] : aWays) {
        SCOPED_TRACE(szWay);
        fs::remove(objOther);
        fs::remove(objMarker); // no marker: level 1
        fs::create_directories(objMarker.parent_path());
        fs::create_directories(objOther.parent_path());
        ctl().getParamMode(nOut);
        ASSERT_EQ(sensordiag::debugLevel(), 1);
        for (const int nLevel : {6, 2}) {
            fnChange(nLevel);
            EXPECT_NE(sensordiag::debugLevel(), nLevel) << "read before any call began";
            ctl().getParamMode(nOut);
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
