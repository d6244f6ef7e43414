// Lists as Markdown and HTML have them.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "writers/html_writer.h"
#include "writers/markdown_writer.h"
#include "writers/text_writer.h"

namespace dorvex::content::lists_test {
namespace {

Block item(unsigned level, ListKind kind, std::string label, std::string text) {
  Paragraph paragraph;
  paragraph.role = Role::kList;
  paragraph.list = ListMark{level, kind, std::move(label)};
  paragraph.text = std::move(text);
  Block block;
  block.what = std::move(paragraph);
  return block;
}

Block bullet(unsigned level, std::string text) {
  return item(level, ListKind::kBullet, "•", std::move(text));
}

Block number(std::string label, std::string text) {
  return item(0, ListKind::kNumber, std::move(label), std::move(text));
}

template <typename Writer>
std::string written(const std::vector<Block>& blocks) {
  std::string text;
  Writer writer(WriterOptions(), [&](std::string_view bytes) { text += bytes; });
  Sink& sink = writer;
  sink.document(Application::kPages, {});
  for (const Block& block : blocks) sink.body(block);
  sink.end({});
  return text;
}

std::string markdown(const std::vector<Block>& blocks) { return written<MarkdownWriter>(blocks); }

// What stands in the page, without line feeds.
std::string html(const std::vector<Block>& blocks) {
  std::string text = written<HtmlWriter>(blocks);
  std::erase(text, '\n');
  const auto begin = text.find("<main>") + 6;
  return text.substr(begin, text.find("</main>") - begin);
}

TEST(ListsInMarkdown, NestNumbersAndBullets) {
  EXPECT_EQ(markdown({number("1.", "a"), bullet(1, "b"), number("2.", "c"), bullet(0, "d")}),
            "1. a\n   - b\n2. c\n- d\n");
}

TEST(ListsInMarkdown, KeepTheirLevelsWhereOneIsPassedOver) {
  EXPECT_EQ(markdown({bullet(1, "a"), bullet(1, "b")}), "- - a\n  - b\n");
}

TEST(ListsInHtml, HaveTheNumbersOfTheirLabels) {
  EXPECT_EQ(html({number("1.", "a"), number("2.", "b"), number("7.", "c"), number("8.", "d")}),
            "<ol><li>a</li><li>b</li><li value=\"7\">c</li><li>d</li></ol>");
}

TEST(ListsInHtml, HaveLabelsThatBrowsersDoNotWriteByThemselves) {
  EXPECT_EQ(html({number("(iv)", "a")}), "<ol><li style=\"list-style-type: '(iv) '\">a</li></ol>");
  EXPECT_EQ(html({number("';}", "a")}), "<ol><li>a</li></ol>");
}

TEST(ListsInHtml, HaveNoSignWhereThatIsEmpty) {
  EXPECT_EQ(html({item(0, ListKind::kBullet, "", "a"), bullet(0, "b")}),
            "<ul><li style=\"list-style-type: none\">a</li><li>b</li></ul>");
}

// A cell with one paragraph that is an item.
class OneCell : public TableRows {
 public:
  void read(std::uint32_t, const CellParts&, std::vector<Cell>& cells) override {
    cells.assign(1, {});
    cells[0].type = CellType::kRich;
    cells[0].paragraphs = {std::get<Paragraph>(bullet(0, "a").what)};
  }
};

TEST(ListsInTables, KeepTheirLabels) {
  Table table;
  table.rows = table.columns = 1;
  table.cells = std::make_shared<OneCell>();
  Block block;
  block.what = table;
  EXPECT_EQ(markdown({block}), "| |\n| --- |\n| • a |\n");
  EXPECT_NE(html({block}).find("<td>• a</td>"), std::string::npos);
  EXPECT_EQ(written<TextWriter>({block}), "• a\n");
}

}  // namespace
}  // namespace dorvex::content::lists_test
