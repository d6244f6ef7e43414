#include "writers/csv_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <utility>

#include "content/support/fixed_table.h"

namespace dorvex::content::csv_writer_test {
namespace {

using testing::CellRows;
using testing::numberCell;
using testing::textCell;

Block table(std::string name, const CellRows& rows,
            const std::function<void(Table&)>& change = {}) {
  Table table = testing::fixedTable(std::move(name), rows);
  if (change) change(table);
  Block block;
  block.what = std::move(table);
  return block;
}

struct Written {
  std::string output;
  std::map<std::string, std::string> files;
};

Written write(const std::vector<Block>& blocks, const CsvOptions& options = {}) {
  Written written;
  std::string* file = nullptr;
  CsvWriter writer(options,
                   {[&](std::string_view bytes) { written.output += bytes; },
                    [&](std::string_view name) { file = &written.files[std::string(name)]; },
                    [&](std::string_view bytes) { *file += bytes; }});
  writer.document(Application::kNumbers, {});
  Sheet sheet;
  sheet.name = "Sheet 1";
  sheet.blocks = blocks;
  writer.sheet(sheet);
  writer.end({});
  return written;
}

const CellRows kRows = {{textCell("a"), textCell("b")},
                        {textCell("x,\"y\"\nz"), numberCell(1.5, "1.50")}};

TEST(CsvWriter, QuotesWhatNeedsIt) {
  EXPECT_EQ(write({table("T", kRows)}).output, "a,b\r\n\"x,\"\"y\"\"\nz\",1.50\r\n");
}

TEST(CsvWriter, GivesValuesAndLeavesHeadersOutOnRequest) {
  CsvOptions options;
  options.values = CellValues::kRaw;
  options.header = false;
  options.delimiter = ';';
  EXPECT_EQ(write({table("T", kRows)}, options).output, "\"x,\"\"y\"\"\nz\";1.5\r\n");
}

TEST(CsvWriter, NeedsAChoiceOfSeveralTables) {
  const std::vector<Block> two = {table("A", kRows), table("B", {{textCell("q")}})};
  EXPECT_THROW(write(two), NoSuchTable);
  CsvOptions options;
  options.table = "B";
  EXPECT_EQ(write(two, options).output, "q\r\n");
  options.table = "1";
  EXPECT_TRUE(write(two, options).output.starts_with("a,b\r\n"));
  options.table = "C";
  EXPECT_THROW(write(two, options), NoSuchTable);
}

TEST(CsvWriter, GivesEachTableAsAFileOfItsOwnName) {
  CsvOptions options;
  options.eachTable = true;
  const Written written =
      write({table("A/B", {{textCell("1")}}), table("A/B", {{textCell("2")}})}, options);
  EXPECT_EQ(written.output, "");
  EXPECT_EQ(written.files.at("Sheet 1-A-B.csv"), "1\r\n");
  EXPECT_EQ(written.files.at("Sheet 1-A-B-2.csv"), "2\r\n");
}

TEST(CsvWriter, LeavesHiddenRowsOutAndGivesMergedValuesOnce) {
  const CellRows rows = {{textCell("m"), Cell{}}, {Cell{}, Cell{}}, {textCell("h"), textCell("i")}};
  const auto block = table("T", rows, [](Table& table) {
    table.merges = {{0, 0, 2, 2}};
    table.hiddenRows = {2};
  });
  EXPECT_EQ(write({block}).output, "m,\r\n,\r\n");
  CsvOptions options;
  options.fillMerged = true;
  EXPECT_EQ(write({block}, options).output, "m,m\r\nm,m\r\n");
}

TEST(CsvWriter, GuardsTextsThatLookLikeFormulas) {
  CsvOptions options;
  options.guard = true;
  EXPECT_EQ(write({table("T", {{textCell("=1+1"), numberCell(-1, "-1")}})}, options).output,
            "'=1+1,-1\r\n");
}

TEST(CsvWriter, NamesTheTables) {
  CsvOptions options;
  options.listTables = true;
  EXPECT_EQ(write({table("A", kRows)}, options).output,
            "sheet,sheet_name,table,table_name,rows,columns\r\n1,Sheet 1,1,A,2,2\r\n");
}

}  // namespace
}  // namespace dorvex::content::csv_writer_test
