#include "writers/display_width.h"

#include <gtest/gtest.h>

namespace dorvex::content::display_width_test {
namespace {

TEST(DisplayWidth, IsThatOfATerminal) {
  EXPECT_EQ(displayWidth("tea"), 3U);
  EXPECT_EQ(displayWidth("漢字"), 4U);
  EXPECT_EQ(displayWidth("e\xCC\x81"), 1U);  // with an accent of its own
  EXPECT_EQ(displayWidth(""), 0U);
}

TEST(DisplayWidth, IsPaddedOnTheSideThatIsAskedFor) {
  EXPECT_EQ(padded("漢", 4, false), "漢  ");
  EXPECT_EQ(padded("1", 3, true), "  1");
  EXPECT_EQ(padded("long", 2, false), "long");
}

}  // namespace
}  // namespace dorvex::content::display_width_test
