// Shutter steps along the ISP's list of allowed maximum-shutter values (at most 30).
#include "DeviceControlFixture.h"

namespace sensortest {

class ShutterTest : public DeviceControlTest {
protected:
    // The ISP lists p_vecItems as the allowed maximum-shutter values, p_nCurrent the present one.
    void offer(const std::vector<int32_t>& p_vecItems, int32_t p_nCurrent) {
        ASSERT_TRUE(m_objIsp.setDynamicCommands(0, {KEY_MAX_SHUTTER}));
        ASSERT_TRUE(m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(0, p_vecItems[0], p_vecItems)));
        ASSERT_TRUE(m_objIsp.setValue(0, KEY_MAX_SHUTTER, p_nCurrent));
        m_objIsp.clearLog();
    }
    std::vector<int32_t> writes() const { return setsOf(KEY_MAX_SHUTTER); }
    std::optional<int> index() const { return read(&ISensorController::getShutterValue); }
};

TEST_F(ShutterTest, StepsFollowTheIspListOrderAndStayAtTheEnds) {
    ISensorController& c = upDome();
    const struct {
        std::vector<int32_t> vecList;
        int32_t nCurrent;
        bool bUp;
        int32_t nWritten;
    } aCases[] = {{{1, 2, 4, 8}, 4, true, 8},  {{1, 2, 4, 8}, 4, false, 2},
                  {{8, 1, 4}, 1, true, 4},     {{1, 2, 4, 8}, 8, true, 8},
                  {{1, 2, 4, 8}, 1, false, 1}, {{1, 2, 4, 8}, 2, true, 4},
                  {{8, 1, 4}, 1, false, 8}}; // consecutive writes differ: the cache skips none
    for (const auto& stCase : aCases) {
        SCOPED_TRACE((stCase.bUp ? "up from " : "down from ") + std::to_string(stCase.nCurrent));
        offer(stCase.vecList, stCase.nCurrent);
        EXPECT_TRUE(stCase.bUp ? c.shutterUp() : c.shutterDown());
        EXPECT_EQ(std::vector<int32_t>{stCase.nWritten}, writes());
        EXPECT_EQ(stCase.nWritten, param(KEY_MAX_SHUTTER))
            << "the step is stored in the current scheme";
    }
    EXPECT_EQ(0, index()) << "8 is first in the ISP's order";
}

TEST_F(ShutterTest, ValueMissingRefusedReadOrNoListChangesNothing) {
    ISensorController& c = upDome();
    const std::optional<int> nBefore = param(KEY_MAX_SHUTTER);
    offer({1, 2, 4, 8}, 3);
    int nIndex = 99;
    EXPECT_FALSE(c.getShutterValue(nIndex));
    EXPECT_EQ(99, nIndex);
    EXPECT_FALSE(c.shutterUp());
    EXPECT_FALSE(c.shutterDown());
    offer({1, 2}, 1);
    m_objIsp.failCommand(0, KEY_MAX_SHUTTER, IA_CMD_OPT_GET, -5);
    EXPECT_EQ(std::nullopt, index());
    EXPECT_FALSE(c.shutterUp());
    m_objIsp.clearFailures();
    // A continuous range gives no list: nothing can be chosen by index.
    ASSERT_TRUE(m_objIsp.setAttribute(0, KEY_MAX_SHUTTER, attr(1, 1, {})));
    EXPECT_FALSE(c.setShutterValue(0));
    EXPECT_EQ(std::nullopt, index());
    EXPECT_TRUE(writes().empty());
    EXPECT_EQ(nBefore, param(KEY_MAX_SHUTTER));
}

TEST_F(ShutterTest, SetByIndexChecksTheBoundsAndOnlyThirtyValuesCount) {
    ISensorController& c = upDome();
    offer({1, 2, 4, 8}, 2);
    EXPECT_FALSE(c.setShutterValue(4));
    EXPECT_FALSE(c.setShutterValue(-1));
    EXPECT_TRUE(writes().empty());
    EXPECT_TRUE(c.setShutterValue(3));
    EXPECT_EQ(std::vector<int32_t>{8}, writes());
    EXPECT_EQ(8, param(KEY_MAX_SHUTTER));
    EXPECT_EQ(3, index());

    std::vector<int32_t> vecItems;
    for (int32_t v = 1; v <= 40; ++v) {
        vecItems.push_back(v * 10);
    }
    offer(vecItems, 300); // index 29, the last one taken
    EXPECT_EQ(29, index());
    EXPECT_TRUE(c.shutterUp());
    EXPECT_EQ(std::vector<int32_t>{300}, writes()) << "index 29 is the end of the list";
    EXPECT_FALSE(c.setShutterValue(30));
    m_objIsp.setValue(0, KEY_MAX_SHUTTER, 310);
    EXPECT_EQ(std::nullopt, index()) << "the 31st value is not in the list";
    EXPECT_FALSE(c.shutterDown());
}

} // namespace sensortest
