#include "writers/markdown_inline.h"

#include <gtest/gtest.h>

namespace dorvex::content::markdown_inline_test {
namespace {

std::string escaped(std::string_view text, MarkdownPlace place = MarkdownPlace::kBlock,
                    bool pandoc = false) {
  return markdownEscaped(text, place, pandoc);
}

std::string inlined(const std::vector<Run>& runs, const WriterOptions& options = {}) {
  Paragraph paragraph;
  paragraph.runs = runs;
  return markdownInline(paragraph, MarkdownPlace::kBlock, options);
}

Run run(std::string text, bool Run::*mark = nullptr) {
  Run run;
  run.text = std::move(text);
  if (mark != nullptr) run.*mark = true;
  return run;
}

// In a test, Run is a function of its own.
constexpr bool Run::*kBold = &Run::bold;
constexpr bool Run::*kItalic = &Run::italic;

TEST(MarkdownInline, EscapesWhatWouldBeMarkup) {
  EXPECT_EQ(escaped("a*b [c](d) <e> `f` ~g~ $h$"),
            "a\\*b \\[c\\](d) \\<e\\> \\`f\\` \\~g\\~ \\$h\\$");
  EXPECT_EQ(escaped("AT&T &amp; Co"), "AT&T \\&amp; Co");
}

TEST(MarkdownInline, EscapesWhatBeginsALine) {
  EXPECT_EQ(escaped("- a\n# b\n12. c\n> d"), "\\- a\\\n\\# b\\\n12\\. c\\\n\\> d");
  EXPECT_EQ(escaped("a. b", MarkdownPlace::kBlock, true), "a\\. b");
  EXPECT_EQ(escaped("   a"), "a");
}

TEST(MarkdownInline, LeavesAloneWhatBeginsALineAndNothingElse) {
  EXPECT_EQ(escaped("-h, --help\n--verbose\n+1\n=A1"), "-h, --help\\\n--verbose\\\n+1\\\n=A1");
  EXPECT_EQ(escaped("1.1 Download\n(3) a"), "1.1 Download\\\n(3) a");
  EXPECT_EQ(escaped("1.1 Download", MarkdownPlace::kBlock, true), "1.1 Download");
  EXPECT_EQ(escaped("1. Introduction", MarkdownPlace::kHeading), "1. Introduction");
}

TEST(MarkdownInline, EscapesRules) {
  EXPECT_EQ(escaped("--- -\n--|--\n=="), "\\--- -\\\n\\--|--\\\n\\==");
}

TEST(MarkdownInline, LeavesNamesAndTimesOfDayAlone) {
  EXPECT_EQ(escaped("snake_case at 10:00:00"), "snake_case at 10:00:00");
  EXPECT_EQ(escaped("a :smile: b"), "a \\:smile: b");
}

TEST(MarkdownInline, KeepsCellsInOneLine) {
  EXPECT_EQ(escaped("a|b\nc", MarkdownPlace::kCell), "a\\|b<br>c");
}

TEST(MarkdownInline, EscapesALineThatFollowsASingleMark) {
  EXPECT_EQ(escaped("=\n|a"), "\\=\\\n\\|a");
  EXPECT_EQ(escaped("1.\n- b"), "1\\.\\\n\\- b");
}

TEST(MarkdownInline, LetsNoAuthorPartCells) {
  auto inserted = run("new");
  inserted.inserted = Change{"A|B", ""};
  WriterOptions options;
  options.changes = ShownChanges::kAll;
  options.pandoc = true;
  EXPECT_EQ(inlined({inserted}, options), "[new]{.insertion author=\"A&#124;B\"}");
}

TEST(MarkdownInline, PutsSpacesOutsideOfMarks) {
  EXPECT_EQ(inlined({run("a"), run(" b ", kBold), run("c")}), "a **b** c");
}

TEST(MarkdownInline, WritesTagsWhereDelimitersWouldNotBeSeen) {
  EXPECT_EQ(inlined({run("a"), run("(b)", kBold), run("c")}), "a<strong>(b)</strong>c");
  EXPECT_EQ(inlined({run("a", kBold), run("b", kItalic)}), "<strong>a</strong>*b*");
}

TEST(MarkdownInline, GivesTheTextOfChangesThatWasAskedFor) {
  auto inserted = run("new");
  inserted.inserted = Change{"Ann", "2024-01-02T03:04:05Z"};
  auto deleted = run("old");
  deleted.deleted = Change{"Ann", ""};
  WriterOptions options;
  EXPECT_EQ(inlined({inserted, deleted}, options), "new");
  options.changes = ShownChanges::kOriginal;
  EXPECT_EQ(inlined({inserted, deleted}, options), "old");
  options.changes = ShownChanges::kAll;
  EXPECT_EQ(inlined({inserted, deleted}, options), "<ins>new</ins><del>old</del>");
  options.pandoc = true;
  EXPECT_EQ(inlined({inserted, deleted}, options),
            "[new]{.insertion author=\"Ann\" date=\"2024-01-02T03:04:05Z\"}"
            "[old]{.deletion author=\"Ann\"}");
}

TEST(MarkdownInline, EndsNoParagraphWithALineBreak) { EXPECT_EQ(inlined({run("a\n")}), "a"); }

TEST(MarkdownInline, FollowsNoLinkOfAScript) {
  auto link = run("a");
  link.link = "javascript:alert(1)";
  EXPECT_EQ(inlined({link}), "a");
  link.link = "https://a.example/b(c)";
  EXPECT_EQ(inlined({link}), "[a](<https://a.example/b(c)>)");
}

}  // namespace
}  // namespace dorvex::content::markdown_inline_test
