// Shutter stepping along the ISP's list of allowed maximum-shutter values: the
// list order, the ends, values missing from the list, the 30-value cap, and the
// stored result.
#include "DeviceControlFixture.h"

#include "common/SensorKeys.h"

namespace sensortest {

namespace {
constexpr uint32_t kMaxShutter = 49;
} // namespace

class ShutterTest : public DeviceControlTest {
protected:
    // The ISP reports p_vecItems as the allowed maximum-shutter values and
    // p_nCurrent as the present one.
    void offerShutters(const std::vector<int32_t>& p_vecItems, int32_t p_nCurrent) {
        ia_dynamic_params_attr_st stAttr{};
        stAttr.param_type = 0;
        stAttr.default_val = p_vecItems.front();
        stAttr.items_cnt = static_cast<int32_t>(p_vecItems.size());
        std::copy(p_vecItems.begin(), p_vecItems.end(), stAttr.item);
        ASSERT_TRUE(m_objIsp.setDynamicCommands(0, {kMaxShutter}));
        ASSERT_TRUE(m_objIsp.setAttribute(0, kMaxShutter, stAttr));
        ASSERT_TRUE(m_objIsp.setValue(0, kMaxShutter, p_nCurrent));
        m_objIsp.clearLog();
    }
    std::vector<int32_t> shutterWrites() const { return setsOf(kMaxShutter); }
    int stored(ISensorController& c) {
        int nValue = -1;
        EXPECT_TRUE(c.getParameter(KEY_MAX_SHUTTER, nValue));
        return nValue;
    }
};

TEST_F(ShutterTest, StepsFollowTheListAndStayAtTheEnds) {
    ISensorController& c = upMini();
    const struct {
        int32_t nCurrent;
        bool bUp;
        int32_t nWritten;
    } aCases[] = {{4, true, 8}, {4, false, 2}, {8, true, 8}, {1, false, 1}, {2, true, 4}};
    for (const auto& stCase : aCases) {
        offerShutters({1, 2, 4, 8}, stCase.nCurrent);
        EXPECT_TRUE(stCase.bUp ? c.shutterUp() : c.shutterDown());
        EXPECT_EQ(std::vector<int32_t>{stCase.nWritten}, shutterWrites())
            << (stCase.bUp ? "up from " : "down from ") << stCase.nCurrent;
        EXPECT_EQ(stCase.nWritten, stored(c)) << "the step is stored in the current scheme";
    }
}

TEST_F(ShutterTest, StepsFollowTheIspOrderNotTheNumbers) {
    ISensorController& c = upMini();
    offerShutters({8, 1, 4}, 1);
    EXPECT_TRUE(c.shutterUp());
    EXPECT_EQ(std::vector<int32_t>{4}, shutterWrites());
    offerShutters({8, 1, 4}, 1);
    EXPECT_TRUE(c.shutterDown());
    EXPECT_EQ(std::vector<int32_t>{8}, shutterWrites());
    int nIndex = -1;
    EXPECT_TRUE(c.getShutterValue(nIndex));
    EXPECT_EQ(0, nIndex);
}

TEST_F(ShutterTest, ValueMissingFromTheListChangesNothing) {
    ISensorController& c = upMini();
    const int nBefore = stored(c);
    offerShutters({1, 2, 4, 8}, 3);
    int nIndex = 99;
    EXPECT_FALSE(c.getShutterValue(nIndex));
    EXPECT_EQ(99, nIndex);
    EXPECT_FALSE(c.shutterUp());
    EXPECT_FALSE(c.shutterDown());
    EXPECT_TRUE(shutterWrites().empty());
    EXPECT_EQ(nBefore, stored(c));
}

TEST_F(ShutterTest, RefusedReadOrEmptyListIsFalse) {
    ISensorController& c = upMini();
    offerShutters({1, 2}, 1);
    m_objIsp.failCommand(0, kMaxShutter, IA_CMD_OPT_GET, -5);
    int nIndex = -1;
    EXPECT_FALSE(c.getShutterValue(nIndex));
    EXPECT_FALSE(c.shutterUp());
    m_objIsp.clearFailures();

    // A continuous range gives no list: nothing can be chosen by index.
    ia_dynamic_params_attr_st stAttr{};
    stAttr.param_type = 1;
    stAttr.min_val = 1;
    stAttr.max_val = 100;
    ASSERT_TRUE(m_objIsp.setAttribute(0, kMaxShutter, stAttr));
    EXPECT_FALSE(c.setShutterValue(0));
    EXPECT_FALSE(c.getShutterValue(nIndex));
    EXPECT_TRUE(shutterWrites().empty());
}

TEST_F(ShutterTest, SetByIndexChecksTheBounds) {
    ISensorController& c = upMini();
    offerShutters({1, 2, 4, 8}, 2);
    EXPECT_FALSE(c.setShutterValue(4));
    EXPECT_FALSE(c.setShutterValue(-1));
    EXPECT_TRUE(shutterWrites().empty());
    EXPECT_TRUE(c.setShutterValue(3));
    EXPECT_EQ(std::vector<int32_t>{8}, shutterWrites());
    EXPECT_EQ(8, stored(c));
    int nIndex = -1;
    EXPECT_TRUE(c.getShutterValue(nIndex));
    EXPECT_EQ(3, nIndex);
}

TEST_F(ShutterTest, OnlyTheFirstThirtyValuesCanBeReached) {
    ISensorController& c = upMini();
    std::vector<int32_t> vecItems;
    for (int32_t v = 1; v <= 40; ++v) {
        vecItems.push_back(v * 10);
    }
    offerShutters(vecItems, 300); // index 29, the last one taken
    int nIndex = -1;
    EXPECT_TRUE(c.getShutterValue(nIndex));
    EXPECT_EQ(29, nIndex);
    EXPECT_TRUE(c.shutterUp());
    EXPECT_EQ(std::vector<int32_t>{300}, shutterWrites()) << "index 29 is the end of the list";

    EXPECT_FALSE(c.setShutterValue(30));
    m_objIsp.setValue(0, kMaxShutter, 310);
    EXPECT_FALSE(c.getShutterValue(nIndex)) << "the 31st value is not in the list";
    EXPECT_FALSE(c.shutterDown());
}

} // namespace sensortest
