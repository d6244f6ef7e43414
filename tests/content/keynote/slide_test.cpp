#include "keynote/slide.h"

#include <gtest/gtest.h>

#include "content/support/blocks.h"
#include "content/support/objects.h"

namespace dorvex::content::slide_test {
namespace {

using testing::as;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::storage;
using testing::textsIn;
using testing::Wire;

enum Type : int {
  kSlide = 5,
  kPlaceholder = 7,
  kNote = 15,
  kStickyNote = 2014,
  kImage = 3005,
  kComment = 3056,
};
enum SlideField : unsigned {
  kTitle = 5,
  kBody = 6,
  kOwned = 7,
  kName = 10,
  kMaster = 17,
  kNotes = 27,
  kOrder = 42,
};
enum Kind : unsigned { kNoKind = 0, kSlideNumberKind = 1, kTitleKind = 2, kBodyKind = 3 };

// A placeholder with its text in the storage of an identifier that is a hundred more.
testing::Archive placeholder(std::uint64_t identifier, Kind kind) {
  return object(identifier, kPlaceholder,
                Wire().message(1, Wire().message(4, reference(identifier + 100))).varint(2, kind));
}

class SlideTest : public ::testing::Test {
 protected:
  Slide read(const Wire& slide, std::vector<testing::Archive> others) {
    others.push_back(object(10, kSlide, slide));
    objects_.emplace(others, Application::kKeynote);
    return readSlide(objects_->reading(), objects_->object(10));
  }
  const LeftOut& leftOut() const { return objects_->leftOut(); }

  std::optional<Objects> objects_;
};

TEST_F(SlideTest, HasTitleAndBodyFirstWhereverTheyAreDrawn) {
  const Wire slide = Wire()
                         .message(kOrder, reference(22))
                         .message(kOrder, reference(21))
                         .message(kOrder, reference(20));
  const Slide read = this->read(
      slide, {placeholder(20, kTitleKind), storage(120, {"Tea"}), placeholder(21, kBodyKind),
              storage(121, {"Leaf\nWater"}), object(22, kImage, Wire())});
  ASSERT_EQ(read.blocks.size(), 3U);
  EXPECT_EQ(as<Box>(read.blocks[0]).placeholder, PlaceholderKind::kTitle);
  EXPECT_EQ(as<Box>(read.blocks[1]).placeholder, PlaceholderKind::kBody);
  EXPECT_EQ(textsIn(as<Box>(read.blocks[1]).blocks), (std::vector<std::string>{"Leaf", "Water"}));
  EXPECT_TRUE(std::holds_alternative<Media>(read.blocks[2].what));
  EXPECT_EQ(read.title, "Tea");
}

TEST_F(SlideTest, KnowsPlaceholdersThatSayNoKindByTheirPlace) {
  const Wire slide = Wire()
                         .message(kOrder, reference(21))
                         .message(kOrder, reference(20))
                         .message(kTitle, reference(20))
                         .message(kBody, reference(21));
  const Slide read = this->read(slide, {placeholder(20, kNoKind), storage(120, {"Tea"}),
                                        placeholder(21, kNoKind), storage(121, {"Leaf"})});
  EXPECT_EQ(read.title, "Tea");
  ASSERT_EQ(read.blocks.size(), 2U);
  EXPECT_EQ(as<Paragraph>(as<Box>(read.blocks[0]).blocks[0]).role, Role::kTitle);
  EXPECT_EQ(as<Box>(read.blocks[1]).placeholder, PlaceholderKind::kBody);
  EXPECT_EQ(as<Paragraph>(as<Box>(read.blocks[1]).blocks[0]).role, Role::kBody);
}

TEST_F(SlideTest, BelievesTheKindOfAPlaceholderBeforeItsPlace) {
  const Wire slide = Wire().message(kOwned, reference(20)).message(kTitle, reference(20));
  const Slide read = this->read(slide, {placeholder(20, kBodyKind), storage(120, {"Leaf"})});
  EXPECT_EQ(read.title, std::nullopt);
}

TEST_F(SlideTest, HasNoTitleWhereThePlaceholderIsEmpty) {
  const Slide read =
      this->read(Wire().message(kOwned, reference(20)).message(kTitle, reference(20)),
                 {placeholder(20, kTitleKind), storage(120, {})});
  EXPECT_EQ(read.title, std::nullopt);
  EXPECT_TRUE(read.blocks.empty());
}

TEST_F(SlideTest, DrawsInTheOrderGivenAndThenWhatThatLacks) {
  const auto image = [](std::uint64_t identifier, std::string_view alt) {
    return object(identifier, kImage, Wire().message(1, Wire().bytes(8, alt)));
  };
  const Wire slide = Wire()
                         .message(kOwned, reference(20))
                         .message(kOwned, reference(21))
                         .message(kOwned, reference(22))
                         .message(kOrder, reference(21))
                         .message(kOrder, reference(20));
  const Slide read = this->read(slide, {image(20, "cup"), image(21, "pot"), image(22, "spoon")});
  ASSERT_EQ(read.blocks.size(), 3U);
  EXPECT_EQ(read.blocks[0].alt, "pot");
  EXPECT_EQ(read.blocks[1].alt, "cup");
  EXPECT_EQ(read.blocks[2].alt, "spoon");
}

TEST_F(SlideTest, CountsTheTextsOfPlaceholdersThatAreSwitchedOff) {
  const Slide read = this->read(Wire().message(kTitle, reference(20)).message(kBody, reference(21)),
                                {placeholder(20, kTitleKind), storage(120, {"Tea"}),
                                 placeholder(21, kBodyKind), storage(121, {})});
  EXPECT_TRUE(read.blocks.empty());
  EXPECT_EQ(read.title, std::nullopt);
  EXPECT_EQ(leftOut().hiddenTexts, 1U);
}

TEST_F(SlideTest, TakesAStickyNoteForACommentOnIt) {
  const Wire note = Wire().message(1, Wire().message(4, reference(22))).message(2, reference(21));
  const Slide read =
      this->read(Wire().message(kOwned, reference(20)),
                 {object(20, kStickyNote, note), object(21, kComment, Wire().bytes(1, "Warm it")),
                  storage(22, {"Warm it"})});
  EXPECT_TRUE(read.blocks.empty());
  ASSERT_EQ(read.comments.size(), 1U);
  EXPECT_EQ(read.comments[0].text, "Warm it");
}

TEST_F(SlideTest, HasTheNameOfItsLayout) {
  EXPECT_EQ(this->read(Wire().bytes(kName, "own").message(kMaster, reference(20)),
                       {object(20, kSlide, Wire().bytes(kName, "Title & Bullets"))})
                .layout,
            "Title & Bullets");
}

TEST_F(SlideTest, HasNotesThatSaySomething) {
  const Wire slide = Wire().message(kNotes, reference(20));
  const testing::Archive note = object(20, kNote, Wire().message(1, reference(21)));
  EXPECT_EQ(textsIn(read(slide, {note, storage(21, {"Pause.\nSmell it."})}).notes),
            (std::vector<std::string>{"Pause.", "Smell it."}));
  EXPECT_TRUE(read(slide, {note, storage(21, {})}).notes.empty());
}

}  // namespace
}  // namespace dorvex::content::slide_test
