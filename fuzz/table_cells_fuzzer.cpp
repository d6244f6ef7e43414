// A table from its parts: rows of cells of both generations, and the lists that they
// refer to.
//
// Input: one word, the length of a row; that payload, of a TileRowInfo; the payload of a
// TableDataList, which stands for every list of the table.
#include <cstdint>
#include <string>
#include <vector>

#include "TSTArchives.h"
#include "content/support/objects.h"
#include "fuzz_input.h"
#include "graph/utf8.h"
#include "tables/cell_record.h"
#include "tables/table.h"

namespace dorvex::fuzz {
namespace {

namespace content = dorvex::content;
namespace TST = content::schema::TST;
using testing::reference;
using testing::Wire;

constexpr std::uint64_t kInfo = 1, kModel = 2, kTile = 3, kList = 4;
constexpr std::uint64_t kRows = 3, kColumns = 40;
// A text of a list, and what the longest format and formula make.
constexpr std::size_t kMostBytes = 1 << 20;

std::vector<testing::Archive> tableOf(std::string_view row, std::string_view list) {
  using Store = TST::DataStore;
  const Wire tiles =
      Wire().message(TST::TileStorage::tiles.number,
                     Wire().message(TST::TileStorage_Tile::tile.number, reference(kTile)));
  Wire store = Wire().message(Store::tiles.number, tiles);
  for (const auto field : {Store::stringTable, Store::formula_table, Store::rich_text_table})
    store.message(field.number, reference(kList));
  for (const auto field :
       {Store::format_table, Store::format_table_pre_bnc, Store::control_cell_spec_table,
        Store::commentStorageTable, Store::multipleChoiceListFormatTable})
    store.message(field.number, reference(kList));
  const Wire model = Wire()
                         .message(TST::TableModelArchive::base_data_store.number, store)
                         .varint(TST::TableModelArchive::number_of_rows.number, kRows)
                         .varint(TST::TableModelArchive::number_of_columns.number, kColumns);
  const Wire info = Wire().message(TST::TableInfoArchive::tableModel.number, reference(kModel));
  const Wire tile = Wire().bytes(TST::Tile::rowInfos.number, row);
  return {testing::object(kInfo, 6000, info), testing::object(kModel, 6001, model),
          testing::object(kTile, 6002, tile), testing::object(kList, 6005, Wire().raw(list))};
}

void checkText(const std::string& text) {
  require(text.size() <= kMostBytes, "what a cell shows is bounded");
  require(content::validUtf8(text) == text, "what a cell shows is UTF-8");
}

void checkTable(std::string_view row, std::string_view list) {
  testing::Objects objects(tableOf(row, list), content::Application::kNumbers);
  const content::Table table =
      content::readTable(objects.reading(), objects.message<TST::TableInfoArchive>(kInfo));
  std::vector<content::Cell> cells;
  for (std::uint32_t number = 0; number < kRows; ++number) {
    table.cells->read(number, {}, cells);
    require(cells.size() == kColumns, "a row has as many cells as the table has columns");
    for (const content::Cell& cell : cells) {
      for (const std::string* text : {&cell.value, &cell.text, &cell.formula, &cell.decimal})
        checkText(*text);
      require(cell.formula.empty() || cell.formulaProblem.empty(),
              "a formula that cannot be told has no text");
    }
  }
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::size_t rowSize = input.word();
  const std::string_view row = input.take(rowSize);
  const std::string list(input.rest());
  static_cast<void>(dorvex::content::readCurrentCell(list));
  static_cast<void>(dorvex::content::readOlderCell(list));
  checkTable(row, list);
  return 0;
}
