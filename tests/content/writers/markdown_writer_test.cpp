#include "writers/markdown_writer.h"

#include <gtest/gtest.h>

#include "content/support/fixed_table.h"
#include "content/support/writing.h"

namespace dorvex::content::markdown_writer_test {
namespace {

using namespace testing;

constexpr Format kMarkdown = Format::kMarkdown;

TEST(MarkdownWriter, NumbersSlidesAndMarksThoseThatAreSkipped) {
  Slide slide;
  slide.number = 3;
  slide.skipped = true;
  slide.title = "Tea";
  slide.blocks = {paragraph("a")};
  slide.notes = {paragraph("b")};
  EXPECT_EQ(writtenSlide(kMarkdown, slide),
            "<!-- Slide number: 3 (skipped) -->\n# Tea\n\na\n\n### Notes:\nb\n");
  WriterOptions options;
  options.dropSkipped = true;
  EXPECT_EQ(writtenSlide(kMarkdown, slide, options), "");
}

TEST(MarkdownWriter, MarksHiddenSheetsOrLeavesThemOut) {
  const Sheet sheet{"One", true, {paragraph("a")}};
  EXPECT_EQ(writtenSheet(kMarkdown, sheet), "<!-- Hidden sheet -->\n\n## One\n\na\n");
  WriterOptions options;
  options.dropSkipped = true;
  EXPECT_EQ(writtenSheet(kMarkdown, sheet, options), "");
}

TEST(MarkdownWriter, RepeatsAMergedValueAndPutsNumbersToTheRight) {
  Table table = fixedTable("T", {{textCell("a"), textCell("b|c")},
                                 {numberCell(1, "1"), textCell("d\ne")},
                                 {numberCell(2, "2"), Cell{}}});
  table.merges = {{1, 1, 2, 1}};
  EXPECT_EQ(writtenBody(kMarkdown, {blockOf(table)}),
            "### T\n\n| a | b\\|c |\n| ---: | --- |\n| 1 | d<br>e |\n| 2 | d<br>e |\n");
}

TEST(MarkdownWriter, GivesPandocGridsForCellsOfSeveralLines) {
  Table table = fixedTable("", {{textCell("a"), textCell("b")}, {textCell("c"), textCell("d\ne")}});
  WriterOptions options;
  options.pandoc = true;
  EXPECT_EQ(writtenBody(kMarkdown, {blockOf(table)}, options),
            "+-----+-----+\n| a   | b   |\n+=====+=====+\n| c   | d\\  |\n|     | e   |\n"
            "+-----+-----+\n");
}

TEST(MarkdownWriter, KeepsLevelsOfHeadingsAndNumbersOfItems) {
  EXPECT_EQ(writtenBody(kMarkdown, {heading(Role::kTitle, 0, "T"), heading(Role::kHeading, 2, "H"),
                                    item(0, ListKind::kNumber, "7.", "a"),
                                    item(1, ListKind::kBullet, "•", "b")}),
            "# T\n\n## H\n\n7. a\n   - b\n");
}

TEST(MarkdownWriter, PutsNotesBehindTheText) {
  const Footnote note{"1", "†", false, {paragraph("Or milk."), paragraph("Or both.")}};
  EXPECT_EQ(writtenBody(kMarkdown, {noted("Tea", "1", "†")}, {}, {note}),
            "Tea[^1]\n\n[^1]: Or milk.\n\n    Or both.\n");
}

TEST(MarkdownWriter, ShowsEachPictureOfAGallery) {
  Gallery gallery;
  gallery.images.resize(2);
  gallery.images[0].media.index = 0;
  gallery.images[0].media.file = std::make_shared<MediaFile>(MediaFile{"a.png", "Data/a b.png", 1});
  gallery.images[0].alt = "A pot";
  gallery.images[0].caption = "Brown";
  gallery.images[1].alt = "A cup";
  EXPECT_EQ(writtenBody(kMarkdown, {blockOf(gallery)}),
            "![A pot](Data/a%20b.png)\n\nBrown\n\nA cup\n");
}

TEST(MarkdownWriter, BeginsWithMetadataOnRequest) {
  WriterOptions options;
  options.frontMatter = true;
  const std::string text = written(kMarkdown, options, [](Sink& sink) {
    Metadata metadata;
    metadata.language = "en";
    metadata.authors = {"Ann \"A\""};
    sink.document(Application::kPages, metadata);
    sink.body(paragraph("a"));
  });
  EXPECT_EQ(text,
            "---\nkind: \"pages\"\nlang: \"en\"\nauthors:\n  - \"Ann \\\"A\\\"\"\n---\n\na\n");
}

TEST(MarkdownWriter, PutsCommentsWhereTheyAreAskedFor) {
  Block block = paragraph("a");
  block.comments = {{"Ann", "", "why--?", {{"Bob", "", "so", {}}}}};
  WriterOptions options;
  options.comments = CommentPlace::kInline;
  EXPECT_EQ(writtenBody(kMarkdown, {block}, options), "a\n\n<!-- Ann: why- -? / Bob: so -->\n");
  options.comments = CommentPlace::kEnd;
  EXPECT_EQ(writtenBody(kMarkdown, {block}, options),
            "a\n\n## Comments\n\n- Ann: why--?\n  - Bob: so\n");
}

}  // namespace
}  // namespace dorvex::content::markdown_writer_test
