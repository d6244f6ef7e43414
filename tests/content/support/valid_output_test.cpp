#include "content/support/valid_output.h"

#include <gtest/gtest.h>

namespace dorvex::testing::valid_output_test {
namespace {

TEST(ValidOutput, FindsWhatIsNoText) {
  EXPECT_EQ(flawOfText("a\n", "\n"), "");
  EXPECT_NE(flawOfText("a\n", ""), "");
  EXPECT_NE(flawOfText("\x7F", "\n"), "");
  EXPECT_NE(flawOfText("\xFF", ""), "");
}

TEST(ValidOutput, FindsJsonThatDoesNotParseOrHasAKeyTwice) {
  EXPECT_EQ(flawOfJson(R"({"a": 1})", "{}", false), "");
  EXPECT_NE(flawOfJson(R"({"a": 1)", "{}", false), "");
  EXPECT_NE(flawOfJson(R"({"a": 1, "a": 1})", "{}", false), "");
  EXPECT_NE(flawOfJson("{\n}\n", "{}", true), "");
  EXPECT_NE(flawOfJson("{}", R"({"type": "array"})", false), "");
}

TEST(ValidOutput, FindsHtmlThatIsNotBalanced) {
  EXPECT_EQ(flawOfHtml("<p>a<br>&amp; <a href=\"x\">b</a></p>"), "");
  for (const char* html :
       {"<p>", "</p>", "<b><i></b></i>", "a & b", "a > b", "<a href=x></a>", "<p><p></p></p>",
        "<a href=\"x\"><a href=\"y\"></a></a>", "<a href=\"javascript:x\"></a>", "<p"})
    EXPECT_NE(flawOfHtml(html), "") << html;
}

TEST(ValidOutput, FindsTablesOfMarkdownWithOtherCells) {
  EXPECT_EQ(flawOfMarkdown("| a\\| | b |\n| --- | ---: |\n| c | d |\n\n| e |\n| --- |\n"), "");
  EXPECT_EQ(flawOfMarkdown("```\n| a\n```\n"), "");
  EXPECT_EQ(flawOfMarkdown("+---+\n| a |\n+===+\n"), "");
  for (const char* markdown :
       {"| a |\n| --- |\n| b | c |\n", "| a |\n", "| a |\n| b |\n", "| a |\n| --- |\n| b\n",
        "+---+\n| ab |\n", "```\n", "::: notes\n", "[a](javascript:b)"})
    EXPECT_NE(flawOfMarkdown(markdown), "") << markdown;
}

TEST(ValidOutput, TakesNoWordsOfACommentForTheEndOfALabel) {
  EXPECT_EQ(flawOfMarkdown("[^a]<!-- b]: $$ -->\n\n::: notes\n\nc\n\n:::\n"), "");
  EXPECT_NE(flawOfMarkdown("[^a]: ::: notes\n"), "");
}

TEST(ValidOutput, ReadsCsvAndFindsRowsOfAnotherLength) {
  EXPECT_EQ(flawOfCsv("a,\"b\r\n\"\"\"\r\nc,\r\n", ','), "");
  EXPECT_EQ(csvRows("a,\"b\r\n\"\"\"\r\nc,\r\n", ','),
            (std::vector<std::vector<std::string>>{{"a", "b\r\n\""}, {"c", ""}}));
  for (const char* csv : {"a,b\r\nc\r\n", "a", "a\n", "\"a\r\n", "\"a\"b\r\n", "a\"b\r\n"})
    EXPECT_NE(flawOfCsv(csv, ','), "") << csv;
}

}  // namespace
}  // namespace dorvex::testing::valid_output_test
