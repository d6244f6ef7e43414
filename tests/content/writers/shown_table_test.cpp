#include "writers/shown_table.h"

#include <gtest/gtest.h>

#include "content/support/fixed_table.h"

namespace dorvex::content::shown_table_test {
namespace {

using testing::textCell;

// What is shown, a text for each cell; covered cells in brackets.
std::vector<std::string> shownTexts(const Table& table) {
  ShownTable shown(table, {});
  std::vector<std::string> lines;
  ShownRow row;
  while (shown.next(row)) {
    std::string line;
    for (std::size_t column = 0; column < shown.columns(); ++column) {
      const ShownCell& cell = row.cells[column];
      std::string text = cell.cell != nullptr ? cell.cell->text : "";
      if (row.kind != ShownRow::Kind::kCells) text = shown.textOf(*row.line, column);
      line += (column > 0 ? "|" : "") + (cell.covered ? "[" + text + "]" : text);
      if (cell.rows * cell.columns > 1)
        line += "*" + std::to_string(cell.rows) + "x" + std::to_string(cell.columns);
    }
    lines.push_back(line);
  }
  return lines;
}

Table grid() {
  return testing::fixedTable("T", {{textCell("a"), textCell("b"), textCell("c")},
                                   {textCell("d"), textCell("e"), textCell("f")},
                                   {textCell("g"), textCell("h"), textCell("i")}});
}

ShownLine line(std::uint32_t model) {
  ShownLine line;
  line.model = model;
  return line;
}

using Lines = std::vector<std::string>;

TEST(ShownTable, LeavesHiddenRowsAndColumnsOut) {
  Table table = grid();
  table.hiddenRows = {1};
  table.hiddenColumns = {0};
  EXPECT_EQ(shownTexts(table), (Lines{"b|c", "h|i"}));
}

TEST(ShownTable, ShowsAMergeAsFarAsItIsSeen) {
  Table table = grid();
  table.merges = {{1, 0, 2, 2}};
  EXPECT_EQ(shownTexts(table), (Lines{"a|b|c", "d*2x2|[d]|f", "[d]|[d]|i"}));
  table.hiddenRows = {1};
  EXPECT_EQ(shownTexts(table), (Lines{"a|b|c", "d*1x2|[d]|i"}));
}

TEST(ShownTable, KeepsAMergeInTheTable) {
  Table table = grid();
  table.merges = {{2, 2, UINT32_MAX, UINT32_MAX}, {7, 7, 1, 1}};
  EXPECT_EQ(shownTexts(table), (Lines{"a|b|c", "d|e|f", "g|h|i"}));
}

TEST(ShownTable, FollowsTheOrderThatIsShown) {
  Table table = grid();
  table.shownRows = {line(0), {}, line(2), line(9), {}};
  table.shownRows[1].group = "Green";
  table.shownRows[4].summary = {"1", "", "3"};
  table.shownColumns = {line(2), line(0)};
  EXPECT_EQ(shownTexts(table), (Lines{"c|a", "Green|", "i|g", "3|1"}));
}

TEST(ShownTable, TellsHeadersAndFooters) {
  Table table = grid();
  table.footerRows = 1;
  table.headerColumns = 2;
  table.hiddenColumns = {1};
  ShownTable shown(table, {});
  EXPECT_EQ(shown.headerColumns(), 1U);
  ShownRow row;
  ASSERT_TRUE(shown.next(row));
  EXPECT_TRUE(row.header && !row.footer);
  ASSERT_TRUE(shown.next(row));
  EXPECT_TRUE(!row.header && !row.footer);
  ASSERT_TRUE(shown.next(row));
  EXPECT_TRUE(!row.header && row.footer);
}

TEST(ShownTable, SeesAMergeAcrossTheHeader) {
  Table table = grid();
  EXPECT_TRUE(ShownTable(table, {}).headersAreApart());
  table.merges = {{0, 0, 2, 1}};
  EXPECT_FALSE(ShownTable(table, {}).headersAreApart());
}

}  // namespace
}  // namespace dorvex::content::shown_table_test
