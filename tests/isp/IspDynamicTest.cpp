// The dynamic command list, the attribute records and correction.
#include "IspTestFixture.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t kGuard = 0xA5A5A5A5u;

ia_dynamic_params_attr_st listAttr(std::initializer_list<int32_t> p_lstItems) {
    ia_dynamic_params_attr_st stAttr{};
    stAttr.items_cnt = static_cast<int32_t>(p_lstItems.size());
    std::copy(p_lstItems.begin(), p_lstItems.end(), stAttr.item);
    return stAttr;
}

// A record followed by a guard word, to catch writes past the record.
template <typename Rec> struct WithGuard {
    Rec rec{};
    uint32_t guard = kGuard;
};

} // namespace

TEST_F(IspTest, ListAndRangesComeFromTheProfile) {
    WithGuard<ia_dynamic_cmd_list_st> stList;
    ASSERT_EQ(call(0, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &stList.rec), 0);
    const std::vector<uint32_t> vecExpected = {16, 49, 2368, 2369, 2464, 2497};
    ASSERT_EQ(stList.rec.cmd_cnt, static_cast<int32_t>(vecExpected.size()));
    EXPECT_TRUE(std::equal(vecExpected.begin(), vecExpected.end(), stList.rec.cmd_list));
    EXPECT_EQ(stList.guard, kGuard);
    EXPECT_EQ(get(0, 49), 6); // a dynamic command without a value starts at its default

    WithGuard<ia_dynamic_params_attr_st> stAttr;
    ASSERT_EQ(call(1, 2368, IA_CMD_OPT_GET_PARAM_RNAGE, &stAttr.rec), 0);
    EXPECT_EQ(stAttr.rec.param_type, 0);
    EXPECT_EQ(stAttr.rec.max_val, 2);
    ASSERT_EQ(stAttr.rec.items_cnt, 3);
    EXPECT_EQ(stAttr.rec.item[2], 2);
    EXPECT_EQ(stAttr.guard, kGuard);
    ASSERT_EQ(call(1, 2369, IA_CMD_OPT_GET_PARAM_RNAGE, &stAttr.rec), 0);
    EXPECT_NE(stAttr.rec.param_type, 0);
    EXPECT_EQ(stAttr.rec.max_val, 100);
    EXPECT_EQ(stAttr.rec.default_val, 50);

    ia_dynamic_params_attr_st stNone{};
    EXPECT_EQ(call(1, 34, IA_CMD_OPT_GET_PARAM_RNAGE, &stNone), IspSimulator::ERR_NOT_DYNAMIC);
}

TEST_F(IspTest, CorrectionPicksTheNearestItemOrClamps) {
    EXPECT_EQ(correct(0, 49, 100), 8); // max shutter list 1..8
    EXPECT_EQ(correct(0, 49, -3), 1);
    EXPECT_EQ(correct(0, 49, 5), 5);
    // Ties go to the lower item, whatever the item order.
    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({30, 10, 20})));
    EXPECT_EQ(correct(0, 4000, 15), 10);
    EXPECT_EQ(correct(0, 4000, 25), 20);
    EXPECT_EQ(correct(0, 4000, 26), 30);
    // Distances beyond 32 bits do not overflow.
    ASSERT_TRUE(sim().setAttribute(0, 4001, listAttr({INT32_MIN, INT32_MAX})));
    EXPECT_EQ(correct(0, 4001, -1), INT32_MIN);
    EXPECT_EQ(correct(0, 4001, 0), INT32_MAX);
    EXPECT_EQ(correct(0, 2369, 150), 100); // WDR strength range 0..100
    EXPECT_EQ(correct(0, 2369, -5), 0);
    EXPECT_EQ(correct(0, 2369, 42), 42);
    EXPECT_EQ(correct(0, 34, 999), 999); // not dynamic: allowed as it is
    EXPECT_EQ(get(0, 49), 6);            // correction never stores
}

TEST_F(IspTest, CorrectionSurvivesMalformedAttributes) {
    // An empty list, or a count below zero, offers nothing: the value stays.
    ASSERT_TRUE(sim().setAttribute(0, 4000, listAttr({})));
    EXPECT_EQ(correct(0, 4000, 17), 17);
    ia_dynamic_params_attr_st stAttr = listAttr({1});
    stAttr.items_cnt = -5;
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 17), 17);
    // A count beyond the record reads only the record's 64 items.
    stAttr.items_cnt = 1000;
    for (int i = 0; i < IA_DYNAMIC_ITEM_MAX; ++i) {
        stAttr.item[i] = 1000 + i;
    }
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 5000), 1063);
    // A range with min above max cannot correct and says so.
    stAttr.param_type = 1;
    stAttr.min_val = 10;
    stAttr.max_val = 0;
    ASSERT_TRUE(sim().setAttribute(0, 4000, stAttr));
    EXPECT_EQ(correct(0, 4000, 5, IspSimulator::ERR_BAD_ATTRIBUTE), 5);
}

TEST_F(IspTest, OverridesReportCountsAsSetButStayInsideTheRecords) {
    std::vector<uint32_t> vecCmds(20);
    for (std::size_t i = 0; i < vecCmds.size(); ++i) {
        vecCmds[i] = static_cast<uint32_t>(100 + i);
    }
    ASSERT_TRUE(sim().setDynamicCommands(-1, vecCmds));
    WithGuard<ia_dynamic_cmd_list_st> stList;
    ASSERT_EQ(call(2, IA_CMD_DYNAMIC_PARAMS_CMDS_GET, IA_CMD_OPT_GET, &stList.rec), 0);
    EXPECT_EQ(stList.rec.cmd_cnt, 20);
    EXPECT_EQ(stList.rec.cmd_list[15], 115u);
    EXPECT_EQ(stList.guard, kGuard);

    ia_dynamic_params_attr_st stHuge = listAttr({4, 5});
    stHuge.items_cnt = 65;
    ASSERT_TRUE(sim().setAttribute(1, 34, stHuge));
    WithGuard<ia_dynamic_params_attr_st> stAttr;
    ASSERT_EQ(call(1, 34, IA_CMD_OPT_GET_PARAM_RNAGE, &stAttr.rec), 0);
    EXPECT_EQ(stAttr.rec.items_cnt, 65);
    EXPECT_EQ(stAttr.rec.item[1], 5);
    EXPECT_EQ(stAttr.guard, kGuard);
    ia_dynamic_params_attr_st stOther{}; // only channel 1 got it
    EXPECT_EQ(call(0, 34, IA_CMD_OPT_GET_PARAM_RNAGE, &stOther), IspSimulator::ERR_NOT_DYNAMIC);

    EXPECT_FALSE(sim().setDynamicCommands(4, {}));
    EXPECT_FALSE(sim().setAttribute(-3, 34, stHuge));
}
