// Parameters are never lost or mixed: init cycles, resets, restores, refusals, flushes.
#include <filesystem>
#include <tuple>

#include "ChannelFixture.h"

namespace sensortest {
namespace {

constexpr const char* kErrorLog = "/mnt/mtd/log/SensorError.log";
constexpr u32 kV60Keys[] = {KEY_BRIGHTNESS, KEY_SATURATION, KEY_METER_AREA, KEY_MIN_SHUTTER};
// The value scheme files are given for the keys above in the tests below.
u32 v60(u32 p_nKey) {
    return 60 + p_nKey % 7;
}
} // namespace

class ParameterSafetyTest : public ChannelTest {
protected:
    // Schemes 0..n-1 of camera 1 with v60 for the keys above; files of other cameras.
    void writeV60(int p_nSchemes) const {
        for (int s = 0; s < p_nSchemes; ++s) {
            std::vector<KeyVal> vecSet = readSet(schemeFile(1, s));
            for (KeyVal& st : vecSet) {
                const bool bV60 = std::count(std::begin(kV60Keys), std::end(kV60Keys), st.key);
                st.value = bV60 ? v60(st.key) : st.value;
            }
            writeSet(schemeFile(1, s), vecSet);
        }
        m_objRoot.writeFile(schemeFile(2, 5), "camera 2");
        m_objRoot.writeFile(schemeFile(11, 4), "camera 11");
    }
};

// The end of init hides LDC (no support reported) and KEY_EMPTY2 from the host's
// pages, never from the set, which keeps more controls than the key-command table.
TEST_F(ParameterSafetyTest, UinitInitAndResetKeepTheSetsKeysAndTheKeyCommandTable) {
    useMiniDevice(1, "(max_scheme=12)");
    const std::string strFile = "/hd1/moduleConfig/sensorConfig/style/Style.xml";
    std::string strStyle = m_objRoot.readFile(strFile);
    std::string strMore = R"(<Control id="2048" value="1"/><Control id="2064" value="3"/>)";
    strMore += R"(<Control id="11" value="0"/>)";
    for (int i = 0; i < 180; ++i) {
        strMore += R"(<Control id="13" value="0"/>)"; // KEY_EMPTY3, stored only
    }
    m_objRoot.writeFile(strFile, strStyle.insert(strStyle.rfind("</Tab>"), strMore));
    setshowBeawayFalg(false); // as the host left it: the first init keeps KEY_EMPTY2
    ISensorController& c = bringUp();
    Access::stopThread(c);
    const auto vecKeys = pairsOf(Access::row(c, 12), true);
    ASSERT_EQ(196u, vecKeys.size()) << "every control of the style";
    for (const char* szHidden : {"id=\"2048\"", "id=\"11\""}) {
        EXPECT_THAT(c.getUIStyleFile(), Not(HasSubstr(szHidden))) << "the flags still decide";
    }
    c.uinit();
    EXPECT_EQ(1, c.getSensorStatus()) << "the ready bit stays set after uinit";
    EXPECT_EQ(-1, Access::curScheme(c));
    c.uinit(); // a second release frees nothing twice
    writeV60(12);
    c.init(deviceModules().at(0));
    Access::stopThread(c);
    EXPECT_EQ(165u, Access::keyCmdSum(c));
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(v60(KEY_BRIGHTNESS), param(KEY_BRIGHTNESS));
    EXPECT_EQ(v60(KEY_BRIGHTNESS), valueOf(Access::row(c, 11), KEY_BRIGHTNESS));
    for (const char* szWhen : {"after uinit and init", "after a factory reset"}) {
        EXPECT_EQ(vecKeys, pairsOf(Access::row(c, 0), true)) << szWhen;
        EXPECT_EQ(vecKeys, pairsOf(readSet(schemeFile(1, 1)), true)) << szWhen;
        ASSERT_TRUE(c.setParamScheme(1));
        EXPECT_TRUE(c.resetParameters());
        Access::stopThread(c);
    }
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));
    // The reset and a version wipe rebuild every user scheme, not other cameras' files.
    for (const char* szWhen : {"after the reset", "after a version wipe"}) {
        for (int s = 0; s < 12; ++s) {
            EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, s)), KEY_BRIGHTNESS)) << szWhen << s;
            EXPECT_EQ(50u, valueOf(Access::row(c, u32(s)), KEY_BRIGHTNESS)) << szWhen << s;
        }
        EXPECT_EQ("camera 2", m_objRoot.readFile(schemeFile(2, 5)));
        EXPECT_EQ("camera 11", m_objRoot.readFile(schemeFile(11, 4)));
        c.uinit();
        writeV60(12);
        ASSERT_EQ(0, setVersion(7));
        c.init(deviceModules().at(0));
        Access::stopThread(c);
    }
}

// Matched by key: no zeros, no foreign keys, no command 0; the log names the file once.
TEST_F(ParameterSafetyTest, SchemeFilesOfOtherShapesAreMatchedByKey) {
    const std::vector<KeyVal> vecFactory = Access::row(upMini(), 2);
    takeDown();
    m_objRoot.writeFile(schemeFile(1, 3), "not a scheme of this channel");
    std::vector<KeyVal> vecSet = vecFactory;
    vecSet[5].value = 77; // brightness, inside the first 100 bytes
    std::vector<KeyVal> vecReversed(vecSet.rbegin(), vecSet.rend()), vecLonger = vecSet;
    vecReversed.push_back({4242, 9});
    vecLonger.push_back({KEY_BRIGHTNESS, 99}); // a second record of a key is dropped
    const auto bytesOf = [this](const std::vector<KeyVal>& p_vecSet) {
        writeSet(schemeFile(1, 0), p_vecSet);
        return m_objRoot.readFile(schemeFile(1, 0));
    };
    for (const auto& [szCase, strBytes, nBrightness] :
         std::vector<std::tuple<const char*, std::string, u32>>{
             {"cut after 100 bytes", bytesOf(vecSet).substr(0, 100), 77},
             {"reversed, with a foreign key", bytesOf(vecReversed), 77},
             {"one record too many", bytesOf(vecLonger), 77},
             {"empty", "", 50}}) {
        SCOPED_TRACE(szCase);
        m_objRoot.writeFile(schemeFile(1, 0), strBytes);
        m_objRoot.writeFile(kErrorLog, "");
        m_objIsp.clearLog();
        ISensorController& c = bringUp();
        Access::stopThread(c);
        const std::vector<KeyVal> vecRow = Access::row(c, 0);
        EXPECT_EQ(pairsOf(vecFactory, true), pairsOf(vecRow, true));
        EXPECT_EQ(nBrightness, valueOf(vecRow, KEY_BRIGHTNESS));
        EXPECT_EQ(std::vector<int32_t>{int32_t(nBrightness)}, setsOf(KEY_BRIGHTNESS));
        EXPECT_EQ(vecFactory.back().value, vecRow.back().value) << "factory where missing";
        EXPECT_TRUE(setsOf(0).empty()) << "nothing with command 0 reaches the ISP";
        const std::string strLog = m_objRoot.readFile(kErrorLog);
        EXPECT_NE(std::string::npos, strLog.find("sensor1_0.cfg"));
        EXPECT_EQ(strLog.find("sensor1_0.cfg"), strLog.rfind("sensor1_0.cfg")) << "once";
        EXPECT_EQ(SNS_SUCCESS, c.flush());
        EXPECT_EQ(pairsOf(vecFactory, true), pairsOf(readSet(schemeFile(1, 0)), true));
        takeDown();
    }
    EXPECT_EQ("not a scheme of this channel", m_objRoot.readFile(schemeFile(1, 3)))
        << "with the stamp in place nothing is removed";
}

// The ISP refuses saturation in a switch: the records from it on are pending, and are
// sent again by each of these although the cache holds their values.
TEST_F(ParameterSafetyTest, RecordsARefusalKeptFromTheIspAreSentLater) {
    const std::vector<u32> vecAfterStop = {KEY_SATURATION, KEY_METER_AREA, KEY_MIN_SHUTTER};
    const std::pair<const char*, void (*)(ISensorController&)> aCases[] = {
        {"set the same value",
         [](ISensorController& c) { c.setParameter(KEY_SATURATION, v60(KEY_SATURATION), true); }},
        {"reset to last", [](ISensorController& c) { c.resetToLastParameters(); }},
        {"restore another key", [](ISensorController& c) { c.restore(KEY_BRIGHTNESS); }},
        {"switch", [](ISensorController& c) { c.setParamScheme(0); }}};
    upMini();
    takeDown();
    writeV60(2); // no action below writes a file
    for (const auto& [szAction, fnAction] : aCases) {
        SCOPED_TRACE(szAction);
        ISensorController& c = upMini();
        ASSERT_TRUE(c.setParamScheme(2)); // the factory set: every checked key differs
        m_objIsp.failCommand(0, KEY_SATURATION, 0, -1);
        c.setParamScheme(1);
        EXPECT_EQ(v60(KEY_BRIGHTNESS), m_objIsp.getValue(0, KEY_BRIGHTNESS).value_or(0));
        const std::vector<u32> vecPending = c.getPendingKeys();
        for (const u32 nKey : vecAfterStop) {
            EXPECT_EQ(1, std::count(vecPending.begin(), vecPending.end(), nKey)) << nKey;
            EXPECT_NE(v60(nKey), m_objIsp.getValue(0, nKey).value_or(0)) << nKey;
        }
        m_objIsp.clearFailures();
        fnAction(c);
        const bool bOneKey = fnAction == aCases[0].second;
        for (const u32 nKey : bOneKey ? std::vector<u32>{KEY_SATURATION} : vecAfterStop) {
            EXPECT_EQ(v60(nKey), m_objIsp.getValue(0, nKey).value_or(0)) << nKey;
        }
        EXPECT_EQ(bOneKey ? vecPending.size() - 1 : 0u, c.getPendingKeys().size());
    }
}

// Reset to last applies exactly the unsaved changes; a scheme whose file is gone or
// unreadable keeps its values (never those of scheme 0, read before it).
TEST_F(ParameterSafetyTest, FlushRestoreAndResetToLastKeepEveryStoredValue) {
    EXPECT_EQ(SNS_FAILED, ISensorController().paramCheck()) << "no current set to judge";
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.restore(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS)) << "sent although the ISP has it";
    EXPECT_EQ(SNS_FAILED, c.restore(4242));
    EXPECT_FALSE(c.restoreAeMode()) << "no lens and no exposure mode in the mini style";
    EXPECT_TRUE(setsOf(KEY_AUTO_FOCUS_MODE).empty());
    // The stored start hour after each flush: an invalid window is never stored.
    for (const auto& [szWindow, nResult, nStoredStart] :
         std::vector<std::tuple<const char*, int, u32>>{
             {"(8001,18)(8002,0)(8003,8)(8004,0)", SNS_ERR_TIME_ORDER, 0},
             {"(8001,8)(8002,0)(8003,8)(8004,0)", SNS_ERR_TIME_ORDER, 0},
             {"(8001,24)(8002,1)(8003,24)(8004,30)", SNS_ERR_START_TIME, 0},
             {"(8001,25)(8003,26)", SNS_ERR_START_TIME, 0},
             {"(8001,8)(8002,0)(8003,24)(8004,30)", SNS_ERR_END_TIME, 0},
             {"(8001,8)(8002,30)(8003,18)(8004,0)(34,66)", SNS_SUCCESS, 8},
             {"(8001,23)(8002,99)(8003,24)(8004,0)", SNS_SUCCESS, 23}}) {
        SCOPED_TRACE(szWindow);
        ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string(szWindow), true));
        EXPECT_EQ(nResult, c.flush());
        EXPECT_EQ(nStoredStart, valueOf(readSet(schemeFile(1, 0)), 8001));
    }
    EXPECT_EQ(66u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 1)), KEY_BRIGHTNESS)) << "only the current scheme";
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 70, true));
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_SATURATION, 71, true));
    m_objIsp.clearLog();
    EXPECT_TRUE(c.resetToLastParameters());
    EXPECT_EQ(std::vector<int32_t>{66}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    const auto vecLog = m_objIsp.log();
    EXPECT_EQ(2, std::count_if(vecLog.begin(), vecLog.end(),
                               [](const auto& st) { return st.option == 0; }))
        << "nothing else is applied";
    EXPECT_EQ(66, param(KEY_BRIGHTNESS));
    ASSERT_TRUE(c.setParamScheme(1));
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 69, true));
    ASSERT_EQ(SNS_SUCCESS, c.flush());
    EXPECT_EQ(std::make_pair(66u, 69u), std::make_pair(valueOf(readSet(schemeFile(1, 0)), 34),
                                                       valueOf(readSet(schemeFile(1, 1)), 34)))
        << "each scheme saved to its own file";
    for (const bool bDirectory : {false, true}) {
        ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 70, true));
        const std::vector<KeyVal> vecBefore = Access::row(c, 1);
        std::filesystem::remove_all(m_objRoot.hostPath(schemeFile(1, 1)));
        if (bDirectory) {
            std::filesystem::create_directory(m_objRoot.hostPath(schemeFile(1, 1)));
        }
        m_objIsp.clearLog();
        EXPECT_FALSE(c.resetToLastParameters()) << bDirectory;
        EXPECT_EQ(pairsOf(vecBefore), pairsOf(Access::row(c, 1)));
        EXPECT_TRUE(setsOf(KEY_BRIGHTNESS).empty());
    }
}

} // namespace sensortest
