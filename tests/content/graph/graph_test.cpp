#include "graph/graph.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "content/support/objects.h"

namespace dorvex::content::graph_test {
namespace {

using testing::Archive;
using testing::Member;
using testing::object;
using testing::Objects;

// Members with one object each, whose payloads do not fit into a megabyte together.
std::vector<Member> longMembers() {
  std::vector<Member> members;
  for (int i = 0; i < 5; ++i) {
    const std::string payload(600'000, static_cast<char>('a' + i));
    const auto identifier = static_cast<std::uint64_t>(100 + i);
    members.push_back({"Index/Long-" + std::to_string(i) + ".iwa",
                       testing::iwa(std::vector<Archive>{object(identifier, 9, payload)})});
  }
  return members;
}

TEST(Graph, KeepsTheObjectsOfEachMemberWhileOthersAreRead) {
  const Objects objects({}, Application::kPages, longMembers());
  for (int i = 0; i < 5; ++i) {
    const auto payload = objects.object(static_cast<std::uint64_t>(100 + i)).payload;
    EXPECT_EQ(payload, std::string(600'000, static_cast<char>('a' + i))) << i;
  }
  EXPECT_TRUE(objects.leftOut().damaged.empty());
}

TEST(Graph, ReadsAMemberUpToTheChunkThatLiesAboutItsLength) {
  auto members = longMembers();
  // The preamble of a block states how long it is decompressed: here 2 GiB - 1.
  const std::string lie = testing::chunk("\xFF\xFF\xFF\xFF\x07lie");
  members[1].contents += lie;
  members[2].contents = lie + members[2].contents;
  const Objects objects({}, Application::kPages, members);
  EXPECT_EQ(objects.object(101).payload.size(), 600'000U);
  EXPECT_EQ(objects.object(104).payload.size(), 600'000U);
  ASSERT_EQ(objects.leftOut().damaged.size(), 1U);
  EXPECT_EQ(objects.leftOut().damaged.front().name, "Index/Long-1.iwa");
  EXPECT_EQ(objects.leftOut().passedOver, 1U) << "a member that begins with a lie has nothing";
}

TEST(Graph, TellsOfObjectsWhoseIdentifierIsTaken) {
  const auto member = [](const char* name, const std::vector<Archive>& archives) {
    return Member{name, testing::iwa(archives)};
  };
  const Objects objects({}, Application::kPages,
                        {member("Index/A.iwa", {object(7, 9, "first"), object(8, 9, "eight")}),
                         member("Index/B.iwa", {object(7, 9, "second"), object(9, 9, "nine")}),
                         member("Index/C.iwa", {object(8, 9, "x"), object(9, 9, "y")}),
                         member("Index/D.iwa", {object(5, 9, "five"), object(5, 9, "six")})});
  EXPECT_EQ(objects.object(7).payload, "first");
  EXPECT_EQ(objects.object(9).payload, "nine");
  EXPECT_EQ(objects.object(5).payload, "five");
  EXPECT_EQ(
      objects.leftOut().problems,
      (std::vector<std::string>{
          "Index/B.iwa: its object 7 is dropped, since Index/A.iwa has one of that identifier",
          "Index/C.iwa: 2 of its objects are dropped, since Index/A.iwa or another member has "
          "one of each of their identifiers",
          "Index/D.iwa: its object 5 is dropped, since it has another of that identifier"}));
  EXPECT_EQ(objects.leftOut().damaged.size(), 3U);
}

TEST(Graph, PassesOverArchivesWithoutAHeader) {
  const std::string empty(5'000'000, '\0');
  const std::string stream = empty + testing::objectStream({object(100, 9, "behind them")}) + empty;
  const Objects objects({}, Application::kPages, {{"Index/Empty.iwa", testing::iwa(stream)}});
  EXPECT_EQ(objects.object(100).payload, "behind them");
  EXPECT_TRUE(objects.leftOut().damaged.empty());
}

}  // namespace
}  // namespace dorvex::content::graph_test
