#include "writers/block_walk.h"

#include <gtest/gtest.h>

#include "content/support/writing.h"

namespace dorvex::content::block_walk_test {
namespace {

using namespace testing;

Block titled(std::vector<Block> blocks) {
  return blockOf(Box{BoxKind::kPlaceholder, PlaceholderKind::kTitle, std::move(blocks)});
}

TEST(BlockWalk, ShowsTheTitleOfASlideOnce) {
  Slide slide;
  slide.number = 1;
  slide.title = "Tea";
  slide.blocks = {titled({paragraph("Tea")}), paragraph("a")};
  EXPECT_EQ(writtenSlide(Format::kText, slide), "Tea\na\n\f");
}

TEST(BlockWalk, MakesOneHeadingOfATitleOfSeveralParagraphs) {
  Slide slide;
  slide.number = 1;
  slide.title = "Tea\nand milk";
  slide.blocks = {titled({paragraph("Tea"), paragraph("and milk")})};
  EXPECT_EQ(writtenSlide(Format::kText, slide), "Tea and milk\n\f");
}

TEST(BlockWalk, ShowsATitleThatIsEmptyAsWhatItHolds) {
  Slide slide;
  slide.number = 1;
  slide.title = "";
  slide.blocks = {titled({paragraph("")}), paragraph("a")};
  EXPECT_EQ(writtenSlide(Format::kMarkdown, slide), "<!-- Slide number: 1 -->\n\na\n");
}

TEST(BlockWalk, PutsTitleAndCaptionBehindWhatTheyBelongTo) {
  Block block = paragraph("a");
  block.title = "t";
  block.caption = "c";
  EXPECT_EQ(writtenBody(Format::kText, {block}), "a\nt\nc\n");
}

}  // namespace
}  // namespace dorvex::content::block_walk_test
