// The set loop: cache skip, stored-only keys, scheme policy, thermal routing,
// day/night governance, the infrared budget, the light-type twins, failures and
// the store step; the single-parameter operations; and host threads writing one
// controller at once: each write is whole (the value stored is the value the ISP
// holds) and, in a ThreadSanitizer build, no data race is reported.
#include "ControllerFixture.h"

#include <thread>
#include <tuple>

namespace sensortest {
namespace {

using SetParametersTest = ControllerTest;

TEST_F(SetParametersTest, CacheSkipsUnchangedRecordsAndStoresTheOthers) {
    const auto vecSet = makeSet("34=50 2337=60");
    installAlike(vecSet);
    CaptureStdout();
    EXPECT_EQ(ctl().setParameters(nullptr, 0, true), 0);
    EXPECT_EQ(GetCapturedStdout(), "\n");
    EXPECT_EQ(ctl().setParameters(nullptr, 3, true), -1);
    EXPECT_EQ(apply(vecSet), 0);
    EXPECT_EQ(apply({{34, 51}, {2337, 60}}, false), 0); // everything sent, nothing stored
    EXPECT_EQ(stored(0, 34), 50u);
    EXPECT_EQ(apply({{34, 52}}), 0);
    expectStored("34=52");
    EXPECT_EQ(sent(), "34=51 2337=60 34=52");
    // During a switch records compare with the scheme being left.
    install({makeSet("34=50"), makeSet("34=60"), makeSet("34=50")}, 1);
    Access::setLastScheme(ctl(), 0);
    Access::setState(ctl(), Access::switchingBit());
    EXPECT_EQ(apply({{34, 50}, {34, 60}}), 0);
    EXPECT_EQ(sent(), "34=60");
}

TEST_F(SetParametersTest, SchemeModeOfSchemeZeroIsThePolicyOfEveryUserScheme) {
    installAlike(makeSet(""), 0, 4);
    // Mode 1 by time, 2 by day and night, others neither; the factory set keeps its own.
    for (const auto& [nMode, bByTime, bByDN, szStored] :
         {std::make_tuple(2u, false, true, "0:8000=2 1:8000=2 2:8000=2 3:8000=2 4:8000=0"),
          std::make_tuple(1u, true, false, "0:8000=1 1:8000=1 2:8000=1 3:8000=1 4:8000=0"),
          std::make_tuple(7u, false, false, "0:8000=7 1:8000=0 2:8000=0 3:8000=0 4:8000=0")}) {
        EXPECT_EQ(apply({{8000, nMode}}), 0);
        EXPECT_EQ(Access::schemeByTime(ctl()), bByTime) << nMode;
        EXPECT_EQ(Access::schemeByDN(ctl()), bByDN) << nMode;
        expectStored(szStored);
    }
    // In another scheme the record is only stored there.
    Access::setCurScheme(ctl(), 1);
    EXPECT_EQ(apply({{8000, 2}}), 0);
    EXPECT_FALSE(Access::schemeByDN(ctl()));
    expectStored("1:8000=2 2:8000=0");
    EXPECT_EQ(sent(), "");
}

TEST_F(SetParametersTest, SpecialKeysAreRoutedStoredOrGoverned) {
    const auto dayNight = [this](bool p_bByDN, int p_nScheme) {
        return [this, p_bByDN, p_nScheme] {
            Access::setSchemePolicy(ctl(), false, p_bByDN);
            Access::setCurScheme(ctl(), p_nScheme);
        };
    };
    run("stored-only keys, and twins while the light is not intelligent", "10=0 11=0 13=0 224=0",
        "10=1 11=2 13=3 8001=8 8002=30 8003=18 8004=15 168=1 175=1 200=1 203=1", "",
        "13=3 8004=15 1:8001=0");
    run("a record of key 0 never reaches the ISP", "34=50", "0=0 34=40", "34=40", "34=40");
    run("the visual channel sends thermal keys to the ISP", "8201=0", "8201=3", "8201=3", "8201=3");
    run("the thermal channel routes its keys and ignores their failures",
        "2384=0 2385=0 2416=0 8201=0 8217=0 34=50", "2384=1 2416=1 8201=4 8217=1 34=40",
        "v1:2384=1 2384=1 v1:2416=1 2416=1 v1:8201=4 v1:8217=1 34=40", "2384=1 8201=4 34=40", {},
        [this] {
            Access::setThermal(ctl(), true);
            m_objIsp.failCommand(-1, 2384, -1, -1);
        });
    run("without a policy scheme 1 applies its own day/night keys", "144=0 145=60 146=30", "146=25",
        "146=60,25,0", "1:146=25", {}, dayNight(false, 1));
    run("by day and night scheme 1 only stores them", "144=0 145=60 146=30", "146=20 144=2", "",
        "1:146=20 1:144=2", {}, dayNight(true, 1));
    run("by day and night scheme 0 governs scheme 1", "144=0 145=60 146=30", "145=70",
        "145=70,30,0", "0:145=70 1:145=70 2:145=60", {}, dayNight(true, 0));
    run("plain light applies normal keys and copies them to the twins", "224=1 161=0 168=0",
        "161=2 168=5", "161=2", "161=2 168=2");
    run("intelligent light applies every twin under its normal key",
        "224=2 168=0 161=0 200=0 163=0 201=0 165=0 202=0 167=0 175=0 171=0 203=0 172=0 204=0 173=0 "
        "205=0 174=0",
        "161=1; 168=68 200=20 201=21 202=22 175=75 203=23 204=24 205=25",
        "161=68 163=20 165=21 167=22 169=75 170=23 171=24 172=25", // white light: other commands
        "161=68 168=68 163=20 200=20 165=21 201=21 167=22 202=22 171=75 175=75 172=23 203=23 "
        "173=24 204=24 174=25 205=25");
    run("a failing twin names its normal key", "224=2 161=0 168=0", "168=4 => -161", "161=4",
        "168=0", {}, [this] { m_objIsp.failCommand(-1, 161, -1, -1); });
}

TEST_F(SetParametersTest, InfraredBudgetRefusesWhatTheOtherStrengthLeavesNoRoomFor) {
    run("no budget on this device", "163=10 167=70", "163=31", "163=31", "163=31");
    run("far strength 70", "34=50 163=10 167=70 2337=5",
        "34=40 163=32 2337=9 => -163; 163=4294967280 => -163; 167=91 => -167; 163=30",
        "34=40 163=30", "34=40 2337=5 163=30 167=70", {},
        [this] { Access::setLimitedIrPower(ctl(), true); });
    run("an unreadable partner leaves the budget open", "167=10", "167=90", "get 163=-1 167=90",
        "167=90",
        {"SNS_SUCCESS == doIaCmd(p_nPartnerKey, IA_CMD_OPT_GET, &nVal)   ~~~Assertion failed.\n",
         "\033[0m\033[31mget key(163) val from 2a err\033[0m",
         "### KEY_IR_MANUAL_STRG_NEAR doIaCmd error\n"},
        [this] {
            Access::setLimitedIrPower(ctl(), true);
            m_objIsp.failCommand(-1, 163, 1, -1);
        });
    run("a partner missing from the set is read from the ISP", "163=10", "163=30 => -163",
        "get 167=80", "163=10", {"### KEY_IR_MANUAL_STRG_FAR doIaCmd sucess\n"}, [this] {
            Access::setLimitedIrPower(ctl(), true);
            m_objIsp.setValue(0, 167, 80);
        });
}

TEST_F(SetParametersTest, RefusedRecordsAndKeysMissingFromTheSets) {
    run("a record the ISP refuses ends the list and keeps earlier ones", "34=50 2337=50 2353=50",
        "34=40 2337=9 2353=7 => -2337", "34=40 2337=9", "34=40 2337=50 2353=50", {},
        [this] { m_objIsp.failCommand(-1, 2337, -1, -3); });
    run("so does one any handler refuses", "2368=0 2353=50", "2368=1 2353=7 => -2368",
        "v1:2370=0 v1:2368=1 2368=1 v1:2370=1", "2368=0 2353=50", {},
        [this] { m_objVideo.answer(2368, -9); });
    run("a key the set lacks is applied, not stored", "34=50", "2353=7", "2353=7", "",
        {"SET_KEY_VAL FAILED, m_nCurScheme(0), p_pKeyval[0].key(2353), p_pKeyval[0].value(7),  "
         "maybe jixin\n"},
        [this] { setDebugLevel(6); });
    run("so is one for the factory set", "34=50", "34=51", "34=51", "2:34=50", {},
        [this] { Access::setCurScheme(ctl(), 2); });
}

TEST_F(SetParametersTest, CacheAndSingleParameterCallsStayInsideTheSetsAndUseTheIsp) {
    installAlike(makeSet("34=50"));
    EXPECT_EQ(ctl().setKeyValToCache(0, 34, 41, false), 5);
    EXPECT_EQ(ctl().setKeyValToCache(0, 99, 41, false), -1);
    EXPECT_EQ(ctl().setKeyValToCache(2, 34, 41, false), -2); // the factory row needs force
    EXPECT_EQ(ctl().setKeyValToCache(2, 34, 42, true), 5);
    EXPECT_EQ(ctl().setKeyValToCache(3, 34, 43, true), -2); // beyond it: never
    u32 nStored = 7;
    EXPECT_EQ(ctl().getKeyValFromCache(3, 34, nStored), -1);
    EXPECT_EQ(ctl().getKeyValFromCache(0, 99, nStored), -1);
    EXPECT_EQ(nStored, 7u);
    EXPECT_TRUE(ctl().isKeyValSame({34, 41}));
    EXPECT_FALSE(ctl().isKeyValSame({99, 0}));

    m_objIsp.setValue(0, 2353, 12);
    int nValue = 0;
    EXPECT_TRUE(ctl().getParameter(34, nValue) && nValue == 41) << nValue;
    EXPECT_EQ(ctl().setParameter(34, 40, true), 0);
    EXPECT_EQ(ctl().setParameter(34, 40, true), 0);
    EXPECT_EQ(stored(0, 34), 40u);
    for (int nKey : {160, 161, 163, 165, 167, 2353}) { // infrared keys the set lacks: -1, no ISP
        EXPECT_TRUE(ctl().getParameter(nKey, nValue));
        EXPECT_EQ(nValue, nKey == 2353 ? 12 : -1) << nKey;
    }
    EXPECT_EQ(sent(), "34=40 get 2353=12");
    m_objIsp.failCommand(-1, 2337, -1, -1);
    EXPECT_EQ(ctl().setParameter(2337, 3, true), -2337);
    m_objIsp.failCommand(-1, 2353, 1, -1);
    CaptureStdout();
    EXPECT_FALSE(ctl().getParameter(2353, nValue));
    EXPECT_TRUE(
        contains(GetCapturedStdout(), "SNS_SUCCESS == doIaCmd(p_nKey, IA_CMD_OPT_GET, &p_nVal)"));
}

TEST_F(SetParametersTest, VideoNoticesGoToChannelOneOnTheDualSensorDevice) {
    EXPECT_EQ(ctl().notifyToVideo(8201, 1), 0);
    ctl().setChannelID(2);
    ctl().notifyToVideo(8201, 2);
    EXPECT_EQ(sent(), "v1:8201=1 v2:8201=2");
    reset(13);
    EXPECT_EQ(Access::cameraId(ctl()), 2);
    ctl().notifyToVideo(8201, 3);
    m_objVideo.answer(8201, -4);
    EXPECT_EQ(ctl().notifyToVideo(8201, 4), -4);
    EXPECT_EQ(sent(), "v1:8201=3 v1:8201=4");
    ctl().setVideoStreamModule(nullptr);
    EXPECT_EQ(ctl().notifyToVideo(8201, 5), 0);
}

using ConcurrencyTest = ControllerTest;

TEST_F(ConcurrencyTest, SetParameterFromSeveralThreadsStaysConsistent) {
    constexpr int kWrites = 150, kSharedKey = 96, aOwnKeys[] = {34, 2337, 2353, 2321};
    installAlike(makeSet("34=0 2337=0 2353=0 2321=0 96=0 145=0"));
    CaptureStdout();
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < 4; ++t) {
        vecThreads.emplace_back([this, t, nKey = aOwnKeys[t]] {
            for (int v = 1, nRead = 0; v <= kWrites; ++v) {
                ctl().setParameter(nKey, v, true);
                ctl().setParameter(kSharedKey, t * 1000 + v, true);
                ctl().setParameter(145, v, true); // a handler reading partners from the set
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
