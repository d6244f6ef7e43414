#include "text/list_numbers.h"

#include <gtest/gtest.h>

namespace dorvex::content {
namespace {

using Numbers = std::vector<std::uint32_t>;

class ListNumbersTest : public ::testing::Test {
 protected:
  Numbers count(const Object& style, std::size_t level, std::uint32_t start = 0) {
    return numbers_.count(&style, level, start);
  }

  ListNumbers numbers_;
  Object style_, other_;
};

TEST_F(ListNumbersTest, CountsItemsOfALevel) {
  EXPECT_EQ(count(style_, 0), Numbers{1});
  EXPECT_EQ(count(style_, 0), Numbers{2});
}

TEST_F(ListNumbersTest, GivesTheNumbersOfTheLevelsAbove) {
  count(style_, 0);
  count(style_, 0);
  EXPECT_EQ(count(style_, 1), (Numbers{2, 1}));
  EXPECT_EQ(count(style_, 2), (Numbers{2, 1, 1}));
}

TEST_F(ListNumbersTest, BeginsLowerLevelsAnewAfterAnItemAbove) {
  count(style_, 0);
  count(style_, 1);
  count(style_, 1);
  count(style_, 0);
  EXPECT_EQ(count(style_, 1), (Numbers{2, 1}));
}

TEST_F(ListNumbersTest, CountsOnAboveAfterItemsBelow) {
  count(style_, 0);
  count(style_, 2);
  EXPECT_EQ(count(style_, 0), Numbers{2});
}

TEST_F(ListNumbersTest, StartsWhereAnItemSays) {
  EXPECT_EQ(count(style_, 0, 7), Numbers{7});
  EXPECT_EQ(count(style_, 0), Numbers{8});
  EXPECT_EQ(count(style_, 0, 1), Numbers{1});
}

TEST_F(ListNumbersTest, CountsEachStyleByItself) {
  count(style_, 0);
  EXPECT_EQ(count(other_, 0), Numbers{1});
  EXPECT_EQ(count(style_, 0), Numbers{2});
}

TEST_F(ListNumbersTest, BeginsAnewBelowItemsOfAnotherStyle) {
  count(style_, 0);
  EXPECT_EQ(count(other_, 1), (Numbers{0, 1}));
  EXPECT_EQ(count(other_, 1), (Numbers{0, 2}));
  count(style_, 0);
  EXPECT_EQ(count(other_, 1), (Numbers{0, 1}));
}

TEST_F(ListNumbersTest, SaysZeroForLevelsWithoutItems) {
  EXPECT_EQ(count(style_, 2), (Numbers{0, 0, 1}));
}

}  // namespace
}  // namespace dorvex::content
