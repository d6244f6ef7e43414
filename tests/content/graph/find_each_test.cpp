#include "graph/find_each.h"

#include <gtest/gtest.h>

#include "TSPMessages.h"
#include "content/support/objects.h"

namespace dorvex::content::find_each_test {
namespace {

using testing::Wire;

TEST(FindEach, GivesEachFieldAsFindDoes) {
  // A field of another type and one of another number; of two the last counts.
  const Wire uid = Wire().varint(2, 7).bytes(1, "x").varint(9, 1).varint(2, 8);
  const Message<TSP::UUID> message(uid.str());
  const auto [upper, lower] = findEach(message, TSP::UUID::upper, TSP::UUID::lower);
  EXPECT_EQ(upper, 8U);
  EXPECT_EQ(lower, std::nullopt);
  EXPECT_EQ(upper, message.find(TSP::UUID::upper));
  EXPECT_EQ(lower, message.find(TSP::UUID::lower));
}

}  // namespace
}  // namespace dorvex::content::find_each_test
