#include "writers/plain.h"

#include <gtest/gtest.h>

namespace dorvex::content::plain_test {
namespace {

TEST(Plain, TextsHaveNoControlCharacters) {
  EXPECT_EQ(cleanText("a\tb\nc"), "a\tb\nc");
  EXPECT_EQ(cleanText(std::string("a\0\x01\x7F\xC2\x85z", 7)), "az");
  EXPECT_EQ(cleanText("a\xE2\x80\xA8z\xEF\xBF\xBC"), "a\nz");
  EXPECT_EQ(cleanText("a\xFFz"), "a\xEF\xBF\xBDz");
}

TEST(Plain, RunsAreThoseOfTheTextThatWasAskedFor) {
  Paragraph paragraph;
  paragraph.runs.resize(3);
  paragraph.runs[0].text = "a";
  paragraph.runs[1].text = "new";
  paragraph.runs[1].inserted = Change{};
  paragraph.runs[2].text = "old";
  paragraph.runs[2].deleted = Change{};
  EXPECT_EQ(shownText(paragraph, ShownChanges::kFinal), "anew");
  EXPECT_EQ(shownText(paragraph, ShownChanges::kOriginal), "aold");
  EXPECT_EQ(shownText(paragraph, ShownChanges::kAll), "anewold");
}

TEST(Plain, LinksLeadToNoScripts) {
  for (const char* link : {"https://a.example/", "mailto:a@b.example", "../a", "#a", "a:b/../c"})
    EXPECT_EQ(safeLink(link) == link, std::string_view(link) != "a:b/../c") << link;
  for (const char* link : {"javascript:a", " JavaScript:a", "java\nscript:a", "data:text/html,a"})
    EXPECT_EQ(safeLink(link), "") << link;
}

TEST(Plain, BylinesSayWhoAndWhen) {
  EXPECT_EQ(byline("Ann", "2024-05-06T07:08:09Z"), "Ann, 2024-05-06");
  EXPECT_EQ(byline("", "2024-05-06T07:08:09Z"), "2024-05-06");
  EXPECT_EQ(byline("Ann", ""), "Ann");
}

}  // namespace
}  // namespace dorvex::content::plain_test
