#include "looking/read_types.h"

#include <gtest/gtest.h>

namespace dorvex::read_types_test {
namespace {

TEST(IsReadType, KnowsThoseThatApplicationsShareAndThoseOfPages) {
  for (const std::uint64_t type : {200u, 2001u, 3056u, 6005u, 7u, 10000u, 10157u})
    EXPECT_TRUE(isReadType(type)) << type;
}

TEST(IsReadType, KnowsNoneOfTheOtherApplicationsAndNoneInBetween) {
  for (const std::uint64_t type : {0u, 1u, 2u, 8u, 201u + 3u, 12026u, 4000000000u})
    EXPECT_FALSE(isReadType(type)) << type;
}

TEST(IsReadType, CountsThirtyTwoBits) { EXPECT_TRUE(isReadType(0x5'0000'0000 + 2001)); }

}  // namespace
}  // namespace dorvex::read_types_test
