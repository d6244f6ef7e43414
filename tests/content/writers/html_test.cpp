#include "writers/html.h"

#include <gtest/gtest.h>

#include "content/support/fixed_table.h"

namespace dorvex::content::html_test {
namespace {

using testing::numberCell;
using testing::textCell;

std::string tableOf(const Table& table) {
  std::string html;
  Output output([&html](std::string_view bytes) { html += bytes; });
  putHtmlTable(table, {}, output);
  output.flush();
  std::erase(html, '\n');
  return html;
}

TEST(Html, EscapesWhatIsMarkup) {
  EXPECT_EQ(htmlEscaped("<a href='x'>\"&\n"), "&lt;a href=&#39;x&#39;&gt;&quot;&amp; ");
  EXPECT_EQ(htmlEscaped("a\nb", true), "a<br>b");
}

TEST(Html, NestsTheMarksOfARun) {
  Paragraph paragraph;
  paragraph.runs.resize(1);
  paragraph.runs[0].text = "a";
  paragraph.runs[0].bold = paragraph.runs[0].italic = true;
  paragraph.runs[0].link = "https://a.example/?b&c";
  paragraph.runs[0].ruby = "r";
  EXPECT_EQ(htmlInline(paragraph, {}),
            "<a href=\"https://a.example/?b&amp;c\"><ruby><em><strong>a</strong></em><rt>r</rt>"
            "</ruby></a>");
  paragraph.runs[0].link = "javascript:a";
  EXPECT_EQ(htmlInline(paragraph, {}).find("href"), std::string::npos);
}

TEST(Html, GivesTablesTheirHeadersAndMerges) {
  Table table = testing::fixedTable("T", {{textCell("a"), textCell("b")},
                                          {textCell("c"), numberCell(1, "1")},
                                          {textCell("d"), textCell("e")}});
  table.headerColumns = 1;
  table.merges = {{1, 1, 2, 1}};
  EXPECT_EQ(tableOf(table),
            "<table><thead><tr><th scope=\"col\">a</th><th scope=\"col\">b</th></tr></thead>"
            "<tbody><tr><th scope=\"row\">c</th><td rowspan=\"2\" class=\"number\">1</td></tr>"
            "<tr><th scope=\"row\">d</th></tr></tbody></table>");
}

TEST(Html, MakesIdsOfPlainCharacters) {
  EXPECT_EQ(htmlId("a b\"é"), "a-b---");
  EXPECT_EQ(htmlId(""), "-");
}

TEST(Html, ShowsACommentWithItsReplies) {
  EXPECT_EQ(htmlComment({"Ann", "2024-05-06T07:08:09Z", "a<b", {{"Bob", "", "c", {}}}}),
            "<b>Ann, 2024-05-06</b> a&lt;b<br><b>Bob</b> c");
}

}  // namespace
}  // namespace dorvex::content::html_test
