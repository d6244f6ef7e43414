#include "drawables/attributes.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::attributes_test {
namespace {

using testing::object;
using testing::Objects;
using testing::reference;
using testing::storage;
using testing::Wire;

enum Type : int { kAuthor = 212, kCaption = 633, kComment = 3056, kStandIn = 3097 };
enum Field : unsigned { kLink = 4, kCommentField = 6, kAlt = 8, kTitle = 10, kCaptionField = 11 };
enum HiddenField : unsigned { kTitleHidden = 12, kCaptionHidden = 13 };

Block read(Objects& objects, const Wire& drawable) {
  Block block;
  readAttributes(objects.reading(), Message<TSD::DrawableArchive>(drawable.str()), block);
  return block;
}

// A caption, or a title, with its text in the storage of that identifier.
testing::Archive caption(std::uint64_t identifier, std::uint64_t text) {
  return object(identifier, kCaption, Wire().message(1, Wire().message(4, reference(text))));
}

TEST(Attributes, AreTheDescriptionAndTheLink) {
  Objects objects({});
  const Block block =
      read(objects, Wire().bytes(kAlt, "A brown pot").bytes(kLink, "https://tea.example/pot"));
  EXPECT_EQ(block.alt, "A brown pot");
  EXPECT_EQ(block.link, "https://tea.example/pot");
  EXPECT_TRUE(hasRemarks(block));
}

TEST(Attributes, AreTitleAndCaptionThatAreShown) {
  Objects objects({caption(10, 11), storage(11, {"The pot"}), caption(20, 21),
                   storage(21, {"Brown.\nNot silver."})});
  const Block block =
      read(objects, Wire().message(kTitle, reference(10)).message(kCaptionField, reference(20)));
  EXPECT_EQ(block.title, "The pot");
  EXPECT_EQ(block.caption, "Brown.\nNot silver.");
  EXPECT_EQ(objects.leftOut().hiddenTexts, 0U);
}

TEST(Attributes, CountHiddenTitlesAndCaptions) {
  Objects objects({caption(10, 11), storage(11, {"Title"}), caption(20, 21),
                   storage(21, {"caption"}), caption(30, 31), storage(31, {})});
  const Block block = read(objects, Wire()
                                        .message(kTitle, reference(10))
                                        .varint(kTitleHidden, 1)
                                        .message(kCaptionField, reference(20))
                                        .varint(kCaptionHidden, 1));
  EXPECT_EQ(block.title, "");
  EXPECT_EQ(block.caption, "");
  EXPECT_EQ(objects.leftOut().hiddenTexts, 2U);
  read(objects, Wire().message(kCaptionField, reference(30)).varint(kCaptionHidden, 1));
  EXPECT_EQ(objects.leftOut().hiddenTexts, 2U);
}

TEST(Attributes, TakeNoStandInForACaption) {
  const Wire standIn = Wire().message(1, Wire().message(4, reference(11)));
  Objects objects({object(10, kStandIn, standIn), storage(11, {"Caption"})});
  EXPECT_EQ(read(objects, Wire().message(kCaptionField, reference(10))).caption, "");
  EXPECT_TRUE(objects.leftOut().unknownTypes.empty());
}

TEST(Attributes, AreWhatSomebodySaidAboutTheDrawable) {
  Objects objects({object(5, kAuthor, Wire().bytes(1, "The tea lady")),
                   object(10, kComment, Wire().bytes(1, "Silver!").message(3, reference(5))),
                   object(11, kComment, Wire())});
  const Block block = read(objects, Wire().message(kCommentField, reference(10)));
  ASSERT_EQ(block.comments.size(), 1U);
  EXPECT_EQ(block.comments[0].author, "The tea lady");
  EXPECT_EQ(block.comments[0].text, "Silver!");
  EXPECT_TRUE(read(objects, Wire().message(kCommentField, reference(11))).comments.empty());
}

TEST(Attributes, OfADrawableWithoutAnyAreEmpty) {
  Objects objects({});
  const Block block = read(objects, Wire());
  EXPECT_EQ(block.alt, "");
  EXPECT_FALSE(hasRemarks(block));
  EXPECT_FALSE(hasRemarks(read(objects, Wire().bytes(kAlt, "A line"))));
}

}  // namespace
}  // namespace dorvex::content::attributes_test
