// Field-of-view sync: entries, comma rule, substring search, one printed line per line.
#include "DeviceControlFixture.h"

namespace sensortest {

namespace {
constexpr uint32_t kZoomPosition = 1568;
} // namespace

class FieldOfViewSyncTest : public DeviceControlTest {
protected:
    // Runs the sync on p_szFile (nullptr: no file) and returns what it printed.
    std::string sync(ISensorController& c, const char* p_szFile) {
        if (p_szFile != nullptr) {
            m_objRoot.writeFile("/mnt/mtd/hd1/program/config/sync_fov.ini", p_szFile);
        }
        m_objIsp.clearLog();
        testing::internal::CaptureStdout();
        EXPECT_EQ(1, c.sync_fov());
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(FieldOfViewSyncTest, LinesPrintedAndZoomSentPerCalibrationFile) {
    const struct {
        const char* szFile;
        const char* szPrinted;
        std::vector<int32_t> vecZoom;
    } aCases[] = {
        {nullptr, "", {}}, // no file yet
        {"", "", {}},
        // Both entries on one line stop the search.
        {"zoom1=12000,focus1=3400,\nzoom1=500,focus1=600,\n",
         "zoom= 12000,focus= 3400 \n",
         {12000}},
        // Entries on two lines carry over; the search stops before 999.
        {"[fov]\nzoom1=12000,\nfocus1=3400,\nzoom1=999,\n",
         "zoom= -1,focus= -1 \nzoom= 12000,focus= -1 \nzoom= 12000,focus= 3400 \n",
         {12000}},
        // An entry without a comma after its value is ignored ...
        {"zoom1=5000\nfocus1=3400,\n", "zoom= -1,focus= -1 \nzoom= -1,focus= 3400 \n", {}},
        // ... so the whole file is read, and the zoom alone is still sent.
        {"zoom1=12000,focus1=3400\nnothing here\n",
         "zoom= 12000,focus= -1 \nzoom= 12000,focus= -1 \n",
         {12000}},
        // Channel 12's entries hold the needle of channel 1.
        {"zoom12=7000,focus12=800,\n", "zoom= 7000,focus= 800 \n", {7000}},
        // A zoom that is no positive number is not sent.
        {"zoom1=abc,focus1=5,\nzoom1= -30,focus1= 40,\n",
         "zoom= 0,focus= 5 \nzoom= -30,focus= 40 \n",
         {}}};
    ISensorController& c = upDome();
    for (const auto& stCase : aCases) {
        SCOPED_TRACE(stCase.szFile == nullptr ? "(no file)" : stCase.szFile);
        EXPECT_EQ(stCase.szPrinted, sync(c, stCase.szFile));
        EXPECT_EQ(stCase.vecZoom, setsOf(kZoomPosition));
    }
}

TEST_F(FieldOfViewSyncTest, ChannelTwoReadsItsOwnEntriesAndNoLensSendsNothing) {
    ISensorController& c = upDome("(max_scheme=2)(lensId=1)", 2);
    EXPECT_EQ("zoom= 2500,focus= 20 \n", sync(c, "zoom1=1500,focus1=10,zoom2=2500,focus2=20,\n"));
    EXPECT_EQ(std::vector<int32_t>{2500}, setsOf(kZoomPosition, 1));

    ISensorController& d = upDome("(max_scheme=2)(lensId=0)");
    EXPECT_EQ("zoom= 12000,focus= 3400 \n", sync(d, "zoom1=12000,focus1=3400,\n"));
    EXPECT_TRUE(calls().empty());
}

} // namespace sensortest
