#include "keynote/slide_tree.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::slide_tree_test {
namespace {

using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

enum Type : int { kNode = 4, kSlide = 5 };

constexpr auto kKeynote = Application::kKeynote;

// A node of the slide whose identifier is a hundred more.
Wire node(std::uint64_t identifier, unsigned depth = 1, bool hidden = false) {
  return Wire().message(2, reference(identifier + 100)).varint(4, hidden).varint(21, depth);
}

std::vector<SlideNode> read(Objects& objects, const Wire& tree) {
  return readSlideTree(objects.reading(), Message<KN::SlideTreeArchive>(tree.str()));
}

std::vector<std::uint64_t> slidesOf(const std::vector<SlideNode>& nodes) {
  std::vector<std::uint64_t> slides;
  for (const SlideNode& each : nodes) slides.push_back(each.slide->identifier);
  return slides;
}

std::vector<testing::Archive> withSlides(std::vector<testing::Archive> nodes) {
  const auto count = nodes.size();
  for (std::size_t i = 0; i < count; ++i)
    nodes.push_back(object(*nodes[i].identifier + 100, kSlide, Wire()));
  return nodes;
}

TEST(SlideTree, ListsSlidesInTheOrderOfPresentation) {
  Objects objects(withSlides({object(10, kNode, node(10)), object(11, kNode, node(11, 2, true)),
                              object(12, kNode, node(12, 3))}),
                  kKeynote);
  const Wire tree =
      Wire().message(2, reference(12)).message(2, reference(10)).message(2, reference(11));
  const auto nodes = read(objects, tree);
  EXPECT_EQ(slidesOf(nodes), (std::vector<std::uint64_t>{112, 110, 111}));
  EXPECT_EQ(nodes[0].depth, 3U);
  EXPECT_FALSE(nodes[1].skipped);
  EXPECT_TRUE(nodes[2].skipped);
}

TEST(SlideTree, HasADepthOfOneWhereNoneIsGiven) {
  Objects objects(withSlides({object(10, kNode, Wire().message(2, reference(110)))}), kKeynote);
  EXPECT_EQ(read(objects, Wire().message(2, reference(10))).at(0).depth, 1U);
}

TEST(SlideTree, WalksTheOlderFormFromItsRoot) {
  const Wire root = Wire().message(1, reference(11)).message(1, reference(13)).varint(4, 0);
  Objects objects(
      {object(10, kNode, root), object(11, kNode, node(11).message(1, reference(12))),
       object(12, kNode, node(12)), object(13, kNode, node(13)), object(111, kSlide, Wire()),
       object(112, kSlide, Wire()), object(113, kSlide, Wire())},
      kKeynote);
  const auto nodes = read(objects, Wire().message(1, reference(10)));
  EXPECT_EQ(slidesOf(nodes), (std::vector<std::uint64_t>{111, 112, 113}));
  EXPECT_EQ(nodes[0].depth, 1U);
  EXPECT_EQ(nodes[1].depth, 2U);
  EXPECT_EQ(nodes[2].depth, 1U);
}

TEST(SlideTree, TakesTheNewerFormWhereBothAreThere) {
  Objects objects(withSlides({object(10, kNode, node(10)), object(11, kNode, node(11))}), kKeynote);
  const Wire tree = Wire().message(1, reference(10)).message(2, reference(11));
  EXPECT_EQ(slidesOf(read(objects, tree)), std::vector<std::uint64_t>{111});
}

TEST(SlideTree, PassesOverNodesAndSlidesThatAreNotThere) {
  Objects objects(
      {object(10, kNode, node(10)), object(11, kNode, node(11)), object(111, kSlide, Wire())},
      kKeynote);
  const Wire tree =
      Wire().message(2, reference(10)).message(2, reference(11)).message(2, reference(99));
  EXPECT_EQ(slidesOf(read(objects, tree)), std::vector<std::uint64_t>{111});
  EXPECT_EQ(objects.leftOut().dangling, 2U);
}

TEST(SlideTree, CountsWhatIsNoNodeOrSlide) {
  Objects objects({object(10, 999, Wire()), object(11, kNode, node(11)), object(111, 998, Wire())},
                  kKeynote);
  const Wire tree = Wire().message(2, reference(10)).message(2, reference(11));
  EXPECT_TRUE(read(objects, tree).empty());
  EXPECT_EQ(objects.leftOut().unknownTypes,
            (std::map<std::uint32_t, std::uint64_t>{{998, 1}, {999, 1}}));
}

TEST(SlideTree, TakesEachSlideOnceAndEndsInCycles) {
  Objects objects(withSlides({object(10, kNode, node(10).message(1, reference(11))),
                              object(11, kNode, node(11).message(1, reference(10)))}),
                  kKeynote);
  EXPECT_EQ(slidesOf(read(objects, Wire().message(1, reference(10)))),
            (std::vector<std::uint64_t>{110, 111}));
}

TEST(SlideTree, EndsInATreeThatIsTooDeep) {
  std::vector<testing::Archive> nodes;
  for (std::uint64_t i = 1; i <= 100'000; ++i)
    nodes.push_back(object(i, kNode, Wire().message(1, reference(i + 1))));
  Objects objects(nodes, kKeynote);
  EXPECT_TRUE(read(objects, Wire().message(1, reference(1))).empty());
}

}  // namespace
}  // namespace dorvex::content::slide_tree_test
