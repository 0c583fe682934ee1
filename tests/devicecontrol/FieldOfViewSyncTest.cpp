// Field-of-view sync: the calibration file's entries for this channel, the
// comma rule, the plain substring search, and the one printed line per line read.
#include "DeviceControlFixture.h"

namespace sensortest {

namespace {
constexpr const char* kCalibration = "/mnt/mtd/hd1/program/config/sync_fov.ini";
constexpr uint32_t kZoomPosition = 1568;
} // namespace

class FieldOfViewSyncTest : public DeviceControlTest {
protected:
    // Runs the sync on p_strFile (nullptr: no file) and returns what it printed.
    std::string sync(ISensorController& c, const char* p_szFile) {
        if (p_szFile != nullptr) {
            m_objRoot.writeFile(kCalibration, p_szFile);
        }
        testing::internal::CaptureStdout();
        EXPECT_EQ(1, c.sync_fov());
        return testing::internal::GetCapturedStdout();
    }
    std::vector<int32_t> zoomSent(int p_nChannel = 0) const {
        return setsOf(kZoomPosition, p_nChannel);
    }
};

TEST_F(FieldOfViewSyncTest, BothEntriesOnOneLineStopTheSearch) {
    ISensorController& c = upMini();
    EXPECT_EQ("zoom= 12000,focus= 3400 \n",
              sync(c, "zoom1=12000,focus1=3400,\nzoom1=500,focus1=600,\n"));
    EXPECT_EQ(std::vector<int32_t>{12000}, zoomSent());
}

TEST_F(FieldOfViewSyncTest, EntriesOnTwoLinesCarryOver) {
    ISensorController& c = upMini();
    EXPECT_EQ("zoom= -1,focus= -1 \nzoom= 12000,focus= -1 \nzoom= 12000,focus= 3400 \n",
              sync(c, "[fov]\nzoom1=12000,\nfocus1=3400,\nzoom1=999,\n"));
    EXPECT_EQ(std::vector<int32_t>{12000}, zoomSent()) << "the search stopped before 999";
}

TEST_F(FieldOfViewSyncTest, EntriesWithoutACommaAfterTheirValueAreIgnored) {
    ISensorController& c = upMini();
    EXPECT_EQ("zoom= -1,focus= -1 \nzoom= -1,focus= 3400 \n",
              sync(c, "zoom1=5000\nfocus1=3400,\n"));
    EXPECT_TRUE(zoomSent().empty());

    // A focus value ending its line is not taken, so the whole file is read
    // and the zoom is still sent.
    m_objIsp.clearLog();
    EXPECT_EQ("zoom= 12000,focus= -1 \nzoom= 12000,focus= -1 \n",
              sync(c, "zoom1=12000,focus1=3400\nnothing here\n"));
    EXPECT_EQ(std::vector<int32_t>{12000}, zoomSent());
}

TEST_F(FieldOfViewSyncTest, ChannelTwelveMatchesTheNeedleOfChannelOne) {
    ISensorController& c = upMini();
    EXPECT_EQ("zoom= 7000,focus= 800 \n", sync(c, "zoom12=7000,focus12=800,\n"));
    EXPECT_EQ(std::vector<int32_t>{7000}, zoomSent());
}

TEST_F(FieldOfViewSyncTest, ChannelTwoReadsOnlyItsOwnEntries) {
    ISensorController& c = upMini("(max_scheme=2)(lensId=1)", 2);
    EXPECT_EQ("zoom= 2500,focus= 20 \n", sync(c, "zoom1=1500,focus1=10,zoom2=2500,focus2=20,\n"));
    EXPECT_EQ(std::vector<int32_t>{2500}, zoomSent(1));
}

TEST_F(FieldOfViewSyncTest, NoFileEmptyFileOrNonPositiveZoomSendsNothing) {
    ISensorController& c = upMini();
    EXPECT_EQ("", sync(c, nullptr));
    EXPECT_EQ("", sync(c, ""));
    EXPECT_EQ("zoom= 0,focus= 5 \nzoom= -30,focus= 40 \n",
              sync(c, "zoom1=abc,focus1=5,\nzoom1= -30,focus1= 40,\n"));
    EXPECT_TRUE(zoomSent().empty());
}

TEST_F(FieldOfViewSyncTest, WithoutALensTheLineIsPrintedButNothingSent) {
    ISensorController& c = upMini("(max_scheme=2)(lensId=0)");
    EXPECT_EQ("zoom= 12000,focus= 3400 \n", sync(c, "zoom1=12000,focus1=3400,\n"));
    EXPECT_TRUE(calls().empty());
}

} // namespace sensortest
