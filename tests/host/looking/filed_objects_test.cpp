#include "looking/filed_objects.h"

#include <gtest/gtest.h>

#include <numeric>

namespace dorvex::filed_objects_test {
namespace {

TEST(FiledObjects, DropNoneWhileTheirIdentifiersDiffer) {
  FiledObjects filed;
  EXPECT_TRUE(filed.dropped().empty());
  filed.add("a", {3, 1});
  filed.add("b", {2});
  EXPECT_TRUE(filed.dropped().empty());
}

TEST(FiledObjects, NameTheMemberOfADroppedObjectAndWhatTookItsIdentifier) {
  FiledObjects filed;
  filed.add("a", {3, 1});
  filed.add("b", {2, 3});
  filed.add("c", {3, 1, 2});
  EXPECT_EQ(filed.dropped(),
            (std::vector<SkippedMember>{
                {"b", "its object 3 is dropped, since a has one of that identifier"},
                {"c", "its objects 1, 3 are dropped, since a has one of each of those identifiers"},
                {"c", "its object 2 is dropped, since b has one of that identifier"}}));
}

TEST(FiledObjects, CountThoseBeyondTen) {
  std::vector<std::uint64_t> many(1000);
  std::iota(many.begin(), many.end(), 1);
  FiledObjects filed;
  filed.add("a", many);
  filed.add("b", many);
  ASSERT_EQ(filed.dropped().size(), 1u);
  EXPECT_EQ(filed.dropped().front().reason,
            "its objects 1, 2, 3, 4, 5, 6, 7, 8, 9, 10 and 990 more are dropped, since a has one "
            "of each of those identifiers");
}

TEST(FiledObjects, TellOfAMemberThatHasAnIdentifierTwice) {
  FiledObjects filed;
  filed.add("a", {4, 1, 4, 4});
  EXPECT_EQ(filed.dropped(),
            (std::vector<SkippedMember>{
                {"a", "its object 4 is dropped, since it has another of that identifier"}}));
}

}  // namespace
}  // namespace dorvex::filed_objects_test
