#include "drawables/nesting.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::nesting_test {
namespace {

using testing::Wire;

Wire pair() {
  return Wire().fixed32(1, testing::bitsOfFloat(10)).fixed32(2, testing::bitsOfFloat(20));
}

Wire drawable() { return Wire().message(1, Wire().message(1, pair()).message(2, pair())); }

Wire within(int depth, Wire inner) {
  for (; depth > 0; --depth) inner = Wire().message(1, inner);
  return inner;
}

TEST(Nested, IsTheMessageSoManyLevelsBelow) {
  const std::string payload = within(2, Wire().bytes(7, "x")).str();
  EXPECT_EQ(nested(payload, 2), Wire().bytes(7, "x").str());
  EXPECT_EQ(nested(payload, 0), payload);
  EXPECT_EQ(nested(payload, 9), "");
}

TEST(DepthOfDrawable, IsWhereTheGeometryLies) {
  for (unsigned depth = 0; depth <= 4; ++depth)
    EXPECT_EQ(depthOfDrawable(within(static_cast<int>(depth), drawable()).str()), depth);
}

TEST(DepthOfDrawable, IsNothingForOtherMessages) {
  EXPECT_EQ(depthOfDrawable(""), std::nullopt);
  EXPECT_EQ(depthOfDrawable("no message"), std::nullopt);
  EXPECT_EQ(depthOfDrawable(within(5, drawable()).str()), std::nullopt);
  EXPECT_EQ(depthOfDrawable(Wire().message(1, Wire().message(1, pair())).str()), std::nullopt);
}

}  // namespace
}  // namespace dorvex::content::nesting_test
