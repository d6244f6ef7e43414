#include "text/list_numbers.h"

#include <gtest/gtest.h>

namespace dorvex::content::list_numbers_test {
namespace {

using Numbers = std::vector<std::uint32_t>;

class ListNumbersTest : public ::testing::Test {
 protected:
  Numbers count(std::size_t level, std::uint32_t start = 0) { return numbers_.count(level, start); }

  ListNumbers numbers_;
};

TEST_F(ListNumbersTest, CountsItemsOfALevel) {
  EXPECT_EQ(count(0), Numbers{1});
  EXPECT_EQ(count(0), Numbers{2});
}

TEST_F(ListNumbersTest, GivesTheNumbersOfTheLevelsAbove) {
  count(0);
  count(0);
  EXPECT_EQ(count(1), (Numbers{2, 1}));
  EXPECT_EQ(count(2), (Numbers{2, 1, 1}));
}

TEST_F(ListNumbersTest, BeginsLowerLevelsAnewAfterAnItemAbove) {
  count(0);
  count(1);
  count(1);
  count(0);
  EXPECT_EQ(count(1), (Numbers{2, 1}));
}

TEST_F(ListNumbersTest, CountsOnAboveAfterItemsBelow) {
  count(0);
  count(2);
  EXPECT_EQ(count(0), Numbers{2});
}

TEST_F(ListNumbersTest, StartsWhereAnItemSays) {
  EXPECT_EQ(count(0, 7), Numbers{7});
  EXPECT_EQ(count(0), Numbers{8});
  EXPECT_EQ(count(0, 1), Numbers{1});
}

TEST_F(ListNumbersTest, PassesOverItemsWithoutNumbers) {
  count(0);
  numbers_.pass(0);
  EXPECT_EQ(count(0), Numbers{2});
}

TEST_F(ListNumbersTest, BeginsAnewBelowItemsWithoutNumbers) {
  EXPECT_EQ(count(1), (Numbers{0, 1}));
  EXPECT_EQ(count(1), (Numbers{0, 2}));
  numbers_.pass(0);
  EXPECT_EQ(count(1), (Numbers{0, 1}));
}

TEST_F(ListNumbersTest, SaysZeroForLevelsWithoutItems) { EXPECT_EQ(count(2), (Numbers{0, 0, 1})); }

TEST_F(ListNumbersTest, CountsOnTheDeepestLevel) {
  constexpr std::size_t kDeepest = ListNumbers::kLevels - 1;
  count(kDeepest);
  EXPECT_EQ(count(kDeepest).at(kDeepest), 2U);
}

}  // namespace
}  // namespace dorvex::content::list_numbers_test
