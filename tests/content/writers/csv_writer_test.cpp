#include "writers/csv_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <utility>

namespace dorvex::content {
namespace {

using Rows = std::vector<std::vector<Cell>>;

class FixedRows final : public TableRows {
 public:
  explicit FixedRows(Rows rows) : rows_(std::move(rows)) {}
  void read(std::uint32_t index, const CellParts&, std::vector<Cell>& cells) override {
    cells = rows_.at(index);
  }

 private:
  Rows rows_;
};

Cell text(std::string value) {
  Cell cell;
  cell.type = CellType::kText;
  cell.value = value;
  cell.text = std::move(value);
  return cell;
}

Cell number(double value, std::string shown) {
  Cell cell;
  cell.type = CellType::kNumber;
  cell.number = value;
  cell.text = std::move(shown);
  return cell;
}

Block table(std::string name, const Rows& rows, const std::function<void(Table&)>& change = {}) {
  Table table;
  table.name = std::move(name);
  table.rows = static_cast<std::uint32_t>(rows.size());
  table.columns = rows.empty() ? 0 : static_cast<std::uint32_t>(rows.front().size());
  table.headerRows = 1;
  table.cells = std::make_shared<FixedRows>(rows);
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

const Rows kRows = {{text("a"), text("b")}, {text("x,\"y\"\nz"), number(1.5, "1.50")}};

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
  const std::vector<Block> two = {table("A", kRows), table("B", {{text("q")}})};
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
      write({table("A/B", {{text("1")}}), table("A/B", {{text("2")}})}, options);
  EXPECT_EQ(written.output, "");
  EXPECT_EQ(written.files.at("Sheet 1-A-B.csv"), "1\r\n");
  EXPECT_EQ(written.files.at("Sheet 1-A-B-2.csv"), "2\r\n");
}

TEST(CsvWriter, LeavesHiddenRowsOutAndGivesMergedValuesOnce) {
  const Rows rows = {{text("m"), Cell{}}, {Cell{}, Cell{}}, {text("h"), text("i")}};
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
  EXPECT_EQ(write({table("T", {{text("=1+1"), number(-1, "-1")}})}, options).output,
            "'=1+1,-1\r\n");
}

TEST(CsvWriter, NamesTheTables) {
  CsvOptions options;
  options.listTables = true;
  EXPECT_EQ(write({table("A", kRows)}, options).output,
            "sheet,sheet_name,table,table_name,rows,columns\r\n1,Sheet 1,1,A,2,2\r\n");
}

}  // namespace
}  // namespace dorvex::content
