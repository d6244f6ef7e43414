#include "tables/table.h"

#include <algorithm>
#include <memory>

#include "graph/plain_text.h"
#include "newer.h"
#include "tables/hidden_lines.h"
#include "tables/merges.h"
#include "tables/shown_lines.h"
#include "tables/table_rows.h"
#include "tables/uid_map.h"

namespace dorvex::content {
namespace {

using Model = TST::TableModelArchive;
using Info = TST::TableInfoArchive;

// What tables of documents without identifiers for rows and columns may have.
constexpr std::size_t kMostRows = 65'535;
constexpr std::size_t kMostColumns = 256;

// What no table exceeds, whatever bears it out.
constexpr std::size_t kLargest = 10'000'000;
constexpr std::size_t kLargestWidth = 10'000;

// The number of rows or columns. One that nothing else bears out is damage: a table
// would come out as large as that.
std::uint32_t boundedCount(std::uint32_t count, std::size_t known, std::size_t most,
                           std::size_t largest) {
  return static_cast<std::uint32_t>(
      std::min<std::size_t>(count, std::min(std::max(known, most), largest)));
}

void setShape(const Message<Model>& model, const UidMap& uids, Reading& reading, Table& table) {
  table.rows =
      boundedCount(model.get(Model::number_of_rows), uids.rows.size(), kMostRows, kLargest);
  table.columns = boundedCount(model.get(Model::number_of_columns), uids.columns.size(),
                               kMostColumns, kLargestWidth);
  if (table.rows != model.get(Model::number_of_rows) ||
      table.columns != model.get(Model::number_of_columns))
    reading.addProblem("Table \"" + table.name + "\" has more rows or columns than can be");
  table.headerRows = std::min(model.get(Model::number_of_header_rows), table.rows);
  table.headerColumns = std::min(model.get(Model::number_of_header_columns), table.columns);
  table.footerRows =
      std::min(model.get(Model::number_of_footer_rows), table.rows - table.headerRows);
}

void setHiddenLines(HiddenLines hidden, Table& table) {
  const auto beyond = [](std::vector<std::uint32_t>& lines, std::uint32_t count) {
    lines.erase(std::ranges::lower_bound(lines, count), lines.end());
  };
  beyond(hidden.rows, table.rows);
  beyond(hidden.columns, table.columns);
  table.hiddenRows = std::move(hidden.rows);
  table.hiddenColumns = std::move(hidden.columns);
}

// The table without its cells. The identifiers of its lines, 20 bytes for each, are not
// kept.
Table readLines(Reading& reading, const Message<Info>& info, const Message<Model>& model) {
  const UidMap uids(
      reading.get<TST::ColumnRowUIDMapArchive>(model.get(Model::base_column_row_uids)));
  Table table;
  table.name = plainText(model.get(Model::table_name));
  table.nameShown = model.get(Model::table_name_enabled);
  setShape(model, uids, reading, table);
  setHiddenLines(readHiddenLines(reading, info, model, uids), table);
  table.merges = readMerges(reading, model, table.rows, table.columns);
  readShownLines(reading, info, model, uids, table);
  return table;
}

}  // namespace

Table readTable(Reading& reading, const Message<Info>& info) {
  const auto model = reading.get<Model>(info.get(Info::tableModel));
  Table table = readLines(reading, info, model);
  table.cells =
      std::make_shared<StoredRows>(reading, model.get(Model::base_data_store), table,
                                   info.get(Info::tableModel).get(TSP::Reference::identifier));
  return table;
}

}  // namespace dorvex::content
