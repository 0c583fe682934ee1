// Parameters are never lost or mixed: the set's keys across init cycles,
// scheme files of other shapes, resets, restores and resets to last, records a
// refusal kept from the ISP, and flushes of valid windows only.
#include <filesystem>
#include <functional>

#include "ChannelFixture.h"
#include "config/SensorFile.h"

namespace sensortest {

namespace {

constexpr const char* kErrorLog = "/mnt/mtd/log/SensorError.log";
// The value scheme files are given for a key in the tests below.
u32 v60(u32 p_nKey) {
    return 60 + p_nKey % 7;
}

} // namespace

class ParameterSafetyTest : public ChannelTest {
protected:
    // Scheme s of camera 1 with the value v60 for four of its keys.
    void writeV60(int p_nScheme) const {
        std::vector<KeyVal> vecSet = readSet(schemeFile(1, p_nScheme));
        for (KeyVal& st : vecSet) {
            for (const u32 nKey :
                 {KEY_BRIGHTNESS, KEY_SATURATION, KEY_METER_AREA, KEY_MIN_SHUTTER}) {
                st.value = st.key == nKey ? v60(nKey) : st.value;
            }
        }
        writeSet(schemeFile(1, p_nScheme), vecSet);
    }
};

// uinit releases once and init can follow. The end of init hides LDC (no
// support reported) and KEY_EMPTY2 for the host's pages; the set keeps them, and
// a style of more controls than the key-command table keeps them all, at every
// later init and after a factory reset.
TEST_F(ParameterSafetyTest, UinitInitAndResetKeepTheSetsKeysAndTheKeyCommandTable) {
    useMiniDevice(1, "(max_scheme=2)");
    std::string strStyle = R"(<Style><Tab key="scheme"><Control id="8000" value="0"/>
<Control id="8001" value="0"/><Control id="8002" value="0"/><Control id="8003" value="24"/>
<Control id="8004" value="0"/></Tab><Tab key="image"><Control id="34" value="50"/>
<Control id="2048" value="1"/><Control id="2064" value="3"/><Control id="11" value="0"/>)";
    for (int i = 0; i < 180; ++i) {
        strStyle += R"(<Control id="13" value="0"/>)"; // KEY_EMPTY3, stored only
    }
    for (const std::string strSuffix : {"", "_dome", "_Thermal"}) {
        m_objRoot.writeFile("/hd1/moduleConfig/sensorConfig/style/Style" + strSuffix + ".xml",
                            strStyle + "</Tab></Style>");
    }
    setshowBeawayFalg(false); // as the host left it: the first init keeps KEY_EMPTY2
    ISensorController& c = bringUp();
    Access::stopThread(c);
    const auto vecKeys = pairsOf(Access::row(c, 2), true);
    ASSERT_EQ(189u, vecKeys.size()) << "every control of the style";
    for (const char* szHidden : {"id=\"2048\"", "id=\"11\""}) {
        EXPECT_THAT(c.getUIStyleFile(), Not(HasSubstr(szHidden))) << "the flags still decide";
    }

    const auto expectSameSet = [&](const char* szWhen) {
        EXPECT_EQ(vecKeys, pairsOf(Access::row(*m_pController, 0), true)) << szWhen;
        EXPECT_EQ(vecKeys, pairsOf(readSet(schemeFile(1, 1)), true)) << szWhen;
    };
    EXPECT_EQ(165u, Access::keyCmdSum(c));
    c.uinit();
    EXPECT_EQ(1, c.getSensorStatus()) << "the ready bit stays set after uinit";
    EXPECT_EQ(-1, Access::curScheme(c));
    c.uinit(); // a second release frees nothing twice
    ModuleConfigure objModule;
    objModule.setDetail(m_strDetail);
    c.init(objModule);
    Access::stopThread(c);
    EXPECT_EQ(165u, Access::keyCmdSum(c));
    EXPECT_EQ(189u, Access::keyValSum(c));
    EXPECT_EQ(0, Access::curScheme(c));
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));
    expectSameSet("after uinit and init");
    c.resetParameters();
    Access::stopThread(c);
    expectSameSet("after a factory reset");
}

// A file of another length, order or keys is matched by key: no zeros, no
// foreign keys, no command 0; the error log names the file once; the next
// flush writes the whole set.
TEST_F(ParameterSafetyTest, SchemeFilesOfOtherShapesAreMatchedByKey) {
    upMini();
    const std::vector<KeyVal> vecFactory = Access::row(*m_pController, 2);
    takeDown();
    m_objRoot.writeFile(schemeFile(1, 3), "not a scheme of this channel");
    std::vector<KeyVal> vecSet = vecFactory;
    vecSet[5].value = 77; // brightness, inside the first 100 bytes
    std::vector<KeyVal> vecReversed(vecSet.rbegin(), vecSet.rend());
    vecReversed.push_back({4242, 9});
    std::vector<KeyVal> vecLonger = vecSet;
    vecLonger.push_back({KEY_BRIGHTNESS, 99}); // a second record of a key is dropped
    const auto bytesOf = [this](const std::vector<KeyVal>& p_vecSet) {
        writeSet(schemeFile(1, 0), p_vecSet);
        return m_objRoot.readFile(schemeFile(1, 0));
    };
    const struct {
        const char* szCase;
        std::string strBytes;
        u32 nBrightness;
    } aCases[] = {
        {"cut after 100 bytes", bytesOf(vecSet).substr(0, 100), 77},
        {"reversed, with a foreign key", bytesOf(vecReversed), 77},
        {"one record too many", bytesOf(vecLonger), 77},
        {"empty", "", 50},
    };
    for (const auto& stCase : aCases) {
        SCOPED_TRACE(stCase.szCase);
        m_objRoot.writeFile(schemeFile(1, 0), stCase.strBytes);
        m_objRoot.writeFile(kErrorLog, "");
        m_objIsp.clearLog();
        ISensorController& c = bringUp();
        Access::stopThread(c);
        const std::vector<KeyVal> vecRow = Access::row(c, 0);
        EXPECT_EQ(pairsOf(vecFactory, true), pairsOf(vecRow, true));
        EXPECT_EQ(stCase.nBrightness, valueOf(vecRow, KEY_BRIGHTNESS));
        EXPECT_EQ(std::vector<int32_t>{int32_t(stCase.nBrightness)}, setsOf(KEY_BRIGHTNESS));
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

// With six user schemes the factory reset and the version wipe rebuild all
// six, on flash and in memory; another camera's files stay.
TEST_F(ParameterSafetyTest, ResetsCoverEveryUserSchemeAndNoOtherCamera) {
    for (const bool bReset : {true, false}) {
        SCOPED_TRACE(bReset ? "factory reset" : "version wipe");
        upMini(1, "(max_scheme=12)");
        takeDown();
        for (int s = 0; s < 12; ++s) {
            writeV60(s);
        }
        m_objRoot.writeFile(schemeFile(2, 5), "camera 2");
        m_objRoot.writeFile(schemeFile(11, 4), "camera 11");
        if (!bReset) {
            ASSERT_EQ(0, setVersion(7));
        }
        ISensorController& c = upMini(1, "(max_scheme=12)");
        if (bReset) {
            ASSERT_EQ(v60(KEY_BRIGHTNESS), valueOf(Access::row(c, 11), KEY_BRIGHTNESS));
            ASSERT_TRUE(c.setParamScheme(1));
            EXPECT_TRUE(c.resetParameters());
            EXPECT_EQ(0, Access::curScheme(c));
            EXPECT_EQ(1, c.getSensorStatus());
            EXPECT_EQ(50, param(KEY_BRIGHTNESS));
        }
        for (u32 s = 0; s < 12; ++s) {
            EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, static_cast<int>(s))), KEY_BRIGHTNESS))
                << "scheme " << s;
            EXPECT_EQ(50u, valueOf(Access::row(*m_pController, s), KEY_BRIGHTNESS))
                << "scheme " << s;
        }
        EXPECT_EQ("camera 2", m_objRoot.readFile(schemeFile(2, 5)));
        EXPECT_EQ("camera 11", m_objRoot.readFile(schemeFile(11, 4)));
    }
}

// The ISP refuses saturation during a switch: the records from it on are
// pending, and each way of sending them again does so even though the cache
// already holds their values.
TEST_F(ParameterSafetyTest, RecordsARefusalKeptFromTheIspAreSentLater) {
    const std::vector<u32> vecAfterStop = {KEY_SATURATION, KEY_METER_AREA, KEY_MIN_SHUTTER};
    const struct {
        const char* szAction;
        std::function<void(ISensorController&)> fnAction;
        std::vector<u32> vecSent; // and nothing stays pending unless only one key was sent
    } aCases[] = {
        {"set the same value",
         [](ISensorController& c) { c.setParameter(KEY_SATURATION, v60(KEY_SATURATION), true); },
         {KEY_SATURATION}},
        {"reset to last", [](ISensorController& c) { c.resetToLastParameters(); }, vecAfterStop},
        {"restore another key", [](ISensorController& c) { c.restore(KEY_BRIGHTNESS); },
         vecAfterStop},
        {"switch", [](ISensorController& c) { c.setParamScheme(0); }, vecAfterStop},
    };
    for (const auto& stCase : aCases) {
        SCOPED_TRACE(stCase.szAction);
        upMini();
        takeDown();
        writeV60(0);
        writeV60(1);
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
        stCase.fnAction(c);
        for (const u32 nKey : stCase.vecSent) {
            EXPECT_EQ(v60(nKey), m_objIsp.getValue(0, nKey).value_or(0)) << nKey;
        }
        EXPECT_EQ(stCase.vecSent.size() == 1 ? vecPending.size() - 1 : 0u,
                  c.getPendingKeys().size());
    }
}

TEST_F(ParameterSafetyTest, FlushStoresOnlyValidWindows) {
    EXPECT_EQ(SNS_FAILED, ISensorController().paramCheck()) << "no current set to judge";
    ISensorController& c = upMini();
    const struct {
        const char* szWindow;
        int nResult;
        u32 nStoredStart; // of the file after the flush
    } aCases[] = {{"(8001,18)(8002,0)(8003,8)(8004,0)", SNS_ERR_TIME_ORDER, 0},
                  {"(8001,8)(8002,0)(8003,8)(8004,0)", SNS_ERR_TIME_ORDER, 0},
                  {"(8001,24)(8002,1)(8003,24)(8004,30)", SNS_ERR_START_TIME, 0},
                  {"(8001,25)(8003,26)", SNS_ERR_START_TIME, 0},
                  {"(8001,8)(8002,0)(8003,24)(8004,30)", SNS_ERR_END_TIME, 0},
                  {"(8001,8)(8002,30)(8003,18)(8004,0)(34,66)", SNS_SUCCESS, 8},
                  {"(8001,23)(8002,99)(8003,24)(8004,0)", SNS_SUCCESS, 23}};
    for (const auto& stCase : aCases) {
        ASSERT_EQ(SNS_SUCCESS, c.setParameters(std::string(stCase.szWindow), true));
        EXPECT_EQ(stCase.nResult, c.flush()) << stCase.szWindow;
        EXPECT_EQ(stCase.nStoredStart, valueOf(readSet(schemeFile(1, 0)), 8001))
            << stCase.szWindow << ": an invalid window is never stored";
    }
    EXPECT_EQ(66u, valueOf(readSet(schemeFile(1, 0)), KEY_BRIGHTNESS));
    EXPECT_EQ(50u, valueOf(readSet(schemeFile(1, 1)), KEY_BRIGHTNESS)) << "only the current scheme";
}

TEST_F(ParameterSafetyTest, RestoreResendsTheStoredValue) {
    ISensorController& c = upMini();
    EXPECT_EQ(SNS_SUCCESS, c.restore(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS)) << "sent although the ISP has it";
    EXPECT_EQ(SNS_FAILED, c.restore(4242));
    // No lens and no exposure mode in the mini style: nothing to restore.
    EXPECT_FALSE(c.restoreAeMode());
    EXPECT_TRUE(setsOf(KEY_AUTO_FOCUS_MODE).empty());
}

TEST_F(ParameterSafetyTest, ResetToLastAppliesExactlyTheUnsavedChangesOrKeepsAFilelessScheme) {
    ISensorController& c = upMini();
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_BRIGHTNESS, 70, true));
    ASSERT_EQ(SNS_SUCCESS, c.setParameter(KEY_SATURATION, 71, true));
    m_objIsp.clearLog();
    EXPECT_TRUE(c.resetToLastParameters());
    EXPECT_EQ(std::vector<int32_t>{50}, setsOf(KEY_BRIGHTNESS));
    EXPECT_EQ(std::vector<int32_t>{128}, setsOf(KEY_SATURATION));
    const auto vecLog = m_objIsp.log();
    EXPECT_EQ(2, std::count_if(vecLog.begin(), vecLog.end(),
                               [](const auto& st) { return st.option == 0; }))
        << "nothing else is applied";
    EXPECT_EQ(50, param(KEY_BRIGHTNESS));

    // A scheme whose file is gone or unreadable keeps its values (never those of
    // scheme 0, read before it) and the call says it failed.
    ASSERT_TRUE(c.setParamScheme(1));
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
