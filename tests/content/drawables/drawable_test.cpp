#include "drawables/drawable.h"

#include <gtest/gtest.h>

#include "content/support/blocks.h"
#include "content/support/objects.h"

namespace dorvex::content::drawable_test {
namespace {

using testing::as;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::storage;
using testing::textsIn;
using testing::Wire;

enum Type : int {
  kPlaceholder = 7,
  kShapeInfo = 2011,
  kStickyNote = 2014,
  kContents = 2240,
  kShape = 3004,
  kImage = 3005,
  kMovie = 3007,
  kGroup = 3008,
  kLine = 3009,
  kComment = 3056,
  kChart = 5021,
  kTable = 6000,
  kWrappedTable = 6007,
};
enum DrawableField : unsigned { kLink = 4, kCommentField = 6, kAlt = 8 };

// A message that lies in so many others, each the field 1 of the one around it.
Wire within(int depth, Wire inner) {
  for (; depth > 0; --depth) inner = Wire().message(1, inner);
  return inner;
}

Wire alt(std::string_view text) { return Wire().bytes(kAlt, text); }

Wire textBox(std::uint64_t text) {
  return Wire().message(1, Wire()).message(4, reference(text)).varint(6, 1);
}

std::optional<Block> read(Objects& objects, std::uint64_t identifier) {
  return readDrawable(objects.reading(), objects.object(identifier));
}

TEST(Drawable, IsATextBoxOrAShapeWithText) {
  Objects objects({object(10, kShapeInfo, textBox(11)), storage(11, {"Tea"}),
                   object(20, kShapeInfo, Wire().message(4, reference(21))),
                   storage(21, {"Cake"})});
  const auto box = read(objects, 10);
  ASSERT_TRUE(box);
  EXPECT_EQ(as<Box>(*box).kind, BoxKind::kTextBox);
  EXPECT_EQ(textsIn(as<Box>(*box).blocks), std::vector<std::string>{"Tea"});
  EXPECT_EQ(as<Box>(read(objects, 20).value()).kind, BoxKind::kShape);
}

TEST(Drawable, HasADescriptionWhereverItsTypeKeepsIt) {
  for (const auto& [type, depth] : std::vector<std::pair<int, int>>{{kShapeInfo, 2},
                                                                    {kStickyNote, 3},
                                                                    {kContents, 3},
                                                                    {kShape, 1},
                                                                    {kImage, 1},
                                                                    {kMovie, 1},
                                                                    {kGroup, 1},
                                                                    {kChart, 1},
                                                                    {kTable, 1},
                                                                    {kWrappedTable, 2}}) {
    Objects objects({object(10, type, within(depth, alt("A pot")))});
    const auto block = read(objects, 10);
    ASSERT_TRUE(block) << type;
    EXPECT_EQ(block->alt, "A pot") << type;
  }
}

TEST(Drawable, ShowsNothingWhereItIsAnEmptyBox) {
  for (const int type : {kShapeInfo, kShape, kGroup, kLine, kStickyNote, kContents}) {
    Objects objects({object(10, type, Wire())});
    EXPECT_FALSE(read(objects, 10)) << type;
  }
}

TEST(Drawable, ThatIsALineShowsNothingThoughItHasADescription) {
  Objects objects(
      {object(10, kLine, within(2, alt("Line 7"))),
       object(11, kLine, within(2, alt("Line 8").bytes(kLink, "https://tea.example")))});
  EXPECT_FALSE(read(objects, 10));
  EXPECT_TRUE(read(objects, 11));
}

TEST(Drawable, ThatIsAnEmptyShapeIsKeptForWhatWasSaidAboutIt) {
  Objects objects({object(10, kShape, within(1, Wire().message(kCommentField, reference(11)))),
                   object(11, kComment, Wire().bytes(1, "Why a circle?"))});
  EXPECT_EQ(read(objects, 10).value().comments.at(0).text, "Why a circle?");
}

TEST(Drawable, ThatIsAStickyNoteSaysItsCommentOnce) {
  const Wire note = Wire().message(1, Wire().message(4, reference(12))).message(2, reference(11));
  Objects objects({object(10, kStickyNote, note), object(11, kComment, Wire().bytes(1, "Warm it")),
                   storage(12, {"Warm it"})});
  const auto block = read(objects, 10);
  ASSERT_TRUE(block);
  EXPECT_TRUE(as<Box>(*block).blocks.empty());
  ASSERT_EQ(block->comments.size(), 1U);
  EXPECT_EQ(block->comments[0].text, "Warm it");
}

TEST(Drawable, IsAPlaceholderInKeynoteAndATextBoxElsewhere) {
  const auto objects = [](Application application) {
    return Objects({object(10, kPlaceholder, Wire().message(1, textBox(11)).varint(2, 3)),
                    storage(11, {"Tea"})},
                   application);
  };
  Objects keynote = objects(Application::kKeynote);
  const auto block = read(keynote, 10);
  ASSERT_TRUE(block);
  EXPECT_EQ(as<Box>(*block).kind, BoxKind::kPlaceholder);
  EXPECT_EQ(as<Box>(*block).placeholder, PlaceholderKind::kBody);
  Objects pages = objects(Application::kPages);
  const auto box = read(pages, 10);
  ASSERT_TRUE(box);
  EXPECT_EQ(as<Box>(*box).kind, BoxKind::kTextBox);
  EXPECT_EQ(textsIn(as<Box>(*box).blocks), std::vector<std::string>{"Tea"});
}

TEST(Drawable, HasTheRolesOfItsPlaceholder) {
  enum Kind : unsigned { kTitle = 2, kBody = 3, kObject = 4 };
  // The text of a placeholder whose style states a role, and one whose style does not.
  const auto roleIn = [](Kind kind, const char* style) {
    Objects objects({object(10, kPlaceholder, Wire().message(1, textBox(11)).varint(2, kind)),
                     object(11, testing::kStorageType,
                            Wire().bytes(3, "Tea").message(5, testing::objectTable({{0, 12}}))),
                     object(12, 2022, Wire().message(1, Wire().bytes(1, style)))},
                    Application::kKeynote);
    const auto block = read(objects, 10);
    return as<Paragraph>(as<Box>(block.value()).blocks.at(0)).role;
  };
  EXPECT_EQ(roleIn(kTitle, "Free Form"), Role::kTitle);
  EXPECT_EQ(roleIn(kTitle, "Heading 2"), Role::kTitle);
  EXPECT_EQ(roleIn(kBody, "Free Form"), Role::kBody);
  EXPECT_EQ(roleIn(kBody, "Subtitle"), Role::kSubtitle);
  EXPECT_EQ(roleIn(kBody, "Title"), Role::kBody);
  EXPECT_EQ(roleIn(kObject, "Free Form"), Role::kOther);
  EXPECT_EQ(roleIn(kObject, "Title"), Role::kOther);
  EXPECT_EQ(roleIn(kObject, "Caption"), Role::kCaption);
}

TEST(Drawable, IsNoTitleOfASlideForItsStyle) {
  const auto roleIn = [](Application application) {
    Objects objects({object(10, kShapeInfo, textBox(11)),
                     object(11, testing::kStorageType,
                            Wire().bytes(3, "Tea").message(5, testing::objectTable({{0, 12}}))),
                     object(12, 2022, Wire().message(1, Wire().bytes(1, "Title")))},
                    application);
    return as<Paragraph>(as<Box>(read(objects, 10).value()).blocks.at(0)).role;
  };
  EXPECT_EQ(roleIn(Application::kKeynote), Role::kOther);
  EXPECT_EQ(roleIn(Application::kPages), Role::kTitle);
}

TEST(Drawable, IsAGroupOfOthersInTheirOrder) {
  const Wire group =
      Wire().message(2, reference(11)).message(2, reference(12)).message(2, reference(13));
  Objects objects({object(10, kGroup, group), object(11, kImage, Wire()),
                   object(12, kShape, Wire()), object(13, kGroup, Wire().message(2, reference(14))),
                   object(14, kTable, Wire())});
  const auto block = read(objects, 10);
  ASSERT_TRUE(block);
  const auto& blocks = as<Box>(*block).blocks;
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_TRUE(std::holds_alternative<Media>(blocks[0].what));
  EXPECT_TRUE(std::holds_alternative<Table>(as<Box>(blocks[1]).blocks.at(0).what));
}

TEST(Drawable, ThatIsAWrappedTableIsATable) {
  Objects objects({object(10, kWrappedTable, within(1, Wire().message(2, reference(99))))});
  EXPECT_TRUE(std::holds_alternative<Table>(read(objects, 10).value().what));
}

TEST(Drawable, IsReadOnceSoThatGroupsOfThemselvesEnd) {
  Objects objects({object(10, kGroup, Wire().message(2, reference(11)).message(2, reference(10))),
                   object(11, kImage, Wire())});
  EXPECT_EQ(as<Box>(read(objects, 10).value()).blocks.size(), 1U);
  EXPECT_FALSE(read(objects, 10));
  EXPECT_FALSE(read(objects, 11));
}

TEST(Drawable, ThatLiesTooDeepIsAProblem) {
  std::vector<testing::Archive> groups;
  for (std::uint64_t i = 1; i <= 10'000; ++i)
    groups.push_back(object(i, kGroup, Wire().message(2, reference(i + 1))));
  Objects objects(groups);
  EXPECT_FALSE(read(objects, 1));
  EXPECT_EQ(objects.leftOut().problems.size(), 1U);
}

TEST(Drawable, OfAnUnknownTypeIsCounted) {
  Objects objects({object(10, 999, Wire()), object(11, 999, Wire())});
  EXPECT_FALSE(read(objects, 10));
  EXPECT_FALSE(read(objects, 11));
  EXPECT_EQ(objects.leftOut().unknownTypes.at(999), 2U);
}

// The wire of a drawable with a place, by which one of an unknown type is told.
Wire placed() {
  const Wire pair = Wire().fixed32(1, testing::bitsOfFloat(1)).fixed32(2, testing::bitsOfFloat(2));
  return Wire().message(1, Wire().message(1, pair).message(2, pair));
}

TEST(Drawable, OfAnUnknownTypeShowsItsTextWhereShapesHaveIt) {
  Objects objects(
      {object(10, 999, Wire().message(1, within(1, placed())).message(4, reference(11))),
       storage(11, {"Tea"})});
  const auto block = read(objects, 10);
  ASSERT_TRUE(block);
  EXPECT_EQ(textsIn(as<Box>(*block).blocks), std::vector<std::string>{"Tea"});
  EXPECT_EQ(objects.leftOut().unknownTypes.at(999), 1U);
}

TEST(Drawable, OfAnUnknownTypeShowsItsDescriptionAndTheDrawablesThatNameIt) {
  const auto image = [](std::uint64_t parent) {
    return Wire().message(1, Wire().message(2, reference(parent)));
  };
  Objects objects({object(10, 999,
                          Wire()
                              .message(1, placed().bytes(kAlt, "A sketch"))
                              .message(2, reference(11))
                              .message(2, reference(12))
                              .message(2, reference(99))),
                   object(11, kImage, image(10)), object(12, kImage, image(7))});
  const auto block = read(objects, 10);
  ASSERT_TRUE(block);
  EXPECT_EQ(block->alt, "A sketch");
  EXPECT_EQ(as<Box>(*block).kind, BoxKind::kGroup);
  EXPECT_EQ(as<Box>(*block).blocks.size(), 1U);
  EXPECT_EQ(objects.leftOut().dangling, 0U);
}

TEST(Drawable, ThatIsNotThereIsCounted) {
  Objects objects({});
  std::vector<Block> blocks;
  appendDrawable(objects.reading(), Message<TSP::Reference>(reference(99).str()), blocks);
  EXPECT_TRUE(blocks.empty());
  EXPECT_EQ(objects.leftOut().dangling, 1U);
}

}  // namespace
}  // namespace dorvex::content::drawable_test
