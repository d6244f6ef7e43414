#include "writers/text_writer.h"

#include <gtest/gtest.h>

#include "content/support/fixed_table.h"
#include "content/support/writing.h"

namespace dorvex::content::text_writer_test {
namespace {

using namespace testing;

constexpr Format kText = Format::kText;

TEST(TextWriter, EndsSlidesAndSheetsWithAFormFeed) {
  Slide slide;
  slide.title = "Tea";
  slide.blocks = {paragraph("a")};
  slide.notes = {paragraph("b")};
  EXPECT_EQ(writtenSlide(kText, slide), "Tea\na\n\nb\n\f");
  EXPECT_EQ(writtenSheet(kText, {"One", false, {paragraph("a")}}), "One\na\n\f");
}

TEST(TextWriter, PutsColumnsBelowEachOtherByTheirWidth) {
  const auto table =
      fixedTable("T", {{textCell("漢字"), textCell("n")}, {textCell("a"), numberCell(10, "10")}});
  EXPECT_EQ(writtenBody(kText, {blockOf(table)}), "T\n漢字  n\na     10\n");
}

TEST(TextWriter, IndentsItemsAndWhatFollowsInThem) {
  EXPECT_EQ(writtenBody(kText, {item(0, ListKind::kBullet, "•", "a\nb"),
                                item(1, ListKind::kNumber, "iv.", "c")}),
            "• a\n  b\n  iv. c\n");
}

TEST(TextWriter, ShowsMarksOfNotesAsTheyAreShown) {
  const Footnote note{"1", "†", false, {paragraph(" Or milk.")}};
  EXPECT_EQ(writtenBody(kText, {noted("Tea", "1", "†")}, {}, {note}), "Tea[†]\n[†] Or milk.\n");
  EXPECT_EQ(writtenBody(kText, {noted("Tea", "1", "")}, {}, {{"1", "", false, {}}}),
            "Tea[1]\n[1] \n");
}

TEST(TextWriter, ReadsADescriptionAloudButNoFileName) {
  Media media;
  media.name = "a.png";
  Block described = blockOf(media);
  described.alt = "A teapot";
  EXPECT_EQ(writtenBody(kText, {described, blockOf(media)}), "[A teapot]\n");
}

TEST(TextWriter, GivesASeriesInALine) {
  Chart chart{"pie_2d", "Pots", {"May", "June"}, {{"Assam", {12.0, std::monostate{}}}}, {}};
  EXPECT_EQ(writtenBody(kText, {blockOf(chart)}), "Pots\nAssam: May 12, June \n");
}

}  // namespace
}  // namespace dorvex::content::text_writer_test
