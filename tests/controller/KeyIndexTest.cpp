// The key indexes of the set loop: a lookup gives the first position a scan
// from the front would find, in every row, however the row is laid out.
#include <gtest/gtest.h>

#include <vector>

#include "controller/KeyIndex.h"

namespace {

TEST(KeyIndexTest, FindsTheFirstPositionOfEveryKeyAndNothingElse) {
    // Many keys, so that probes run into each other; a repeated key.
    std::vector<u32> vecKeys;
    for (u32 i = 0; i < 1000; ++i) {
        vecKeys.push_back(i * 4096 + 34);
    }
    vecKeys.push_back(34);
    KeyIndex objIndex;
    EXPECT_EQ(objIndex.find(34), -1) << "empty";
    objIndex.build(static_cast<u32>(vecKeys.size()), [&](u32 i) { return vecKeys[i]; });
    for (u32 i = 0; i < 1000; ++i) {
        ASSERT_EQ(objIndex.find(vecKeys[i]), static_cast<int>(i));
    }
    for (const u32 nMissing : {0u, 35u, 4096u, 0xFFFFFFFFu}) {
        EXPECT_EQ(objIndex.find(nMissing), -1) << nMissing;
    }
}

TEST(KeyIndexTest, SchemeSetsInAnotherOrderOrChangedAreStillFound) {
    std::vector<KeyVal> vecFactory = {{34, 1}, {7, 2}, {9, 3}, {7, 4}};
    std::vector<KeyVal> vecSame = vecFactory;
    std::vector<KeyVal> vecOther = {{9, 5}, {7, 6}, {34, 7}, {34, 8}};
    KeyVal* apRows[] = {vecSame.data(), vecOther.data(), vecFactory.data()};
    SchemeSetIndex objIndex;
    objIndex.build(apRows, 3, 4, 2);
    struct Case {
        u32 row, key;
        int pos;
    };
    const Case aCases[] = {{0, 34, 0}, {0, 7, 1}, {0, 9, 2},  {0, 5, -1}, {1, 34, 2},
                           {1, 7, 1},  {1, 9, 0}, {1, 5, -1}, {2, 7, 1}};
    for (const Case& c : aCases) {
        EXPECT_EQ(objIndex.find(c.row, apRows[c.row], 4, c.key), c.pos) << c.row << ':' << c.key;
    }
    // A row whose key moved after the index was built is scanned.
    vecSame[0].key = 9;
    vecSame[2].key = 34;
    EXPECT_EQ(objIndex.find(0, apRows[0], 4, 34), 2);
    // Another length than indexed: scanned.
    EXPECT_EQ(objIndex.find(1, apRows[1], 3, 34), 2);
    objIndex.clear();
    EXPECT_EQ(objIndex.find(2, apRows[2], 4, 9), 2);
}

} // namespace
