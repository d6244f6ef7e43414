// Paragraphs whose ends were deleted or inserted, in each rendering.
#include <gtest/gtest.h>

#include "content/support/writing.h"
#include "writers/plain.h"

namespace dorvex::content::changes_test {
namespace {

using testing::blockOf;
using testing::paragraph;
using testing::writtenBody;

Run run(std::string text) {
  Run run;
  run.text = std::move(text);
  return run;
}

Run deletedEnd() {
  Run end = run("\n");
  end.endsParagraph = true;
  end.deleted = Change{"Ann", ""};
  return end;
}

// "Tea" was a heading of its own before its end was deleted.
Block joined() {
  Paragraph paragraph;
  paragraph.role = Role::kHeading;
  paragraph.level = 1;
  paragraph.text = "Teapot";
  paragraph.runs = {run("Tea"), deletedEnd(), run("pot")};
  paragraph.original.resize(2);
  paragraph.original[0].role = Role::kHeading;
  paragraph.original[0].level = 1;
  paragraph.original[1].role = Role::kBody;
  return blockOf(std::move(paragraph));
}

// Whose end was inserted.
Block parted(Run text, Role role = Role::kBody) {
  Paragraph paragraph;
  paragraph.role = role;
  paragraph.level = role == Role::kHeading ? 1 : 0;
  paragraph.text = text.text;
  paragraph.runs = {std::move(text)};
  paragraph.endInserted = true;
  return blockOf(std::move(paragraph));
}

Run inserted(std::string text) {
  Run made = run(std::move(text));
  made.inserted = Change{"Ann", ""};
  return made;
}

WriterOptions showing(ShownChanges changes) {
  WriterOptions options;
  options.changes = changes;
  return options;
}

TEST(ChangedEnds, JoinParagraphsInTheFinalText) {
  EXPECT_EQ(writtenBody(Format::kMarkdown, {joined()}), "# Teapot\n");
}

TEST(ChangedEnds, PartThemInTheOriginalAndWhereAllIsShown) {
  for (const ShownChanges changes : {ShownChanges::kOriginal, ShownChanges::kAll}) {
    EXPECT_EQ(writtenBody(Format::kMarkdown, {joined()}, showing(changes)), "# Tea\n\npot\n");
    EXPECT_EQ(writtenBody(Format::kText, {joined()}, showing(changes)), "Tea\npot\n");
    const std::string html = writtenBody(Format::kHtml, {joined()}, showing(changes));
    EXPECT_NE(html.find("<h1>Tea</h1>\n<p>pot</p>"), std::string::npos);
  }
}

TEST(ChangedEnds, PartTheFinalTextWhereTheyAreInserted) {
  const std::vector<Block> body = {parted(run("Tea")), paragraph("pot")};
  EXPECT_EQ(writtenBody(Format::kText, body), "Tea\npot\n");
  EXPECT_EQ(writtenBody(Format::kText, body, showing(ShownChanges::kAll)), "Tea\npot\n");
}

TEST(ChangedEnds, AreNotInTheOriginalWhereTheyAreInserted) {
  const std::vector<Block> body = {parted(run("Tea")), parted(run("p")), paragraph("ot")};
  EXPECT_EQ(writtenBody(Format::kText, body, showing(ShownChanges::kOriginal)), "Teapot\n");
}

TEST(ChangedEnds, LeaveTheFormOfWhatIsOriginal) {
  const std::vector<Block> body = {parted(inserted("New"), Role::kHeading), paragraph("Tea")};
  EXPECT_EQ(writtenBody(Format::kMarkdown, body, showing(ShownChanges::kOriginal)), "Tea\n");
}

TEST(ChangedEnds, LoseNoParagraphAtTheEnd) {
  EXPECT_EQ(writtenBody(Format::kText, {parted(run("Tea"))}, showing(ShownChanges::kOriginal)),
            "Tea\n");
  EXPECT_EQ(writtenBody(Format::kText, {parted(run("Tea")), blockOf(Break::kPage), paragraph("b")},
                        showing(ShownChanges::kOriginal)),
            "Tea\nb\n");
}

}  // namespace
}  // namespace dorvex::content::changes_test
