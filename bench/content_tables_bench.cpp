// How many cells of a table are read in a second, with what they show: by type, and for
// tables of more and more rows.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TSKArchives.h"
#include "TSTArchives.h"
#include "content/support/objects.h"
#include "content/tables/cells.h"
#include "tables/table.h"

namespace dorvex {
namespace {

using content::Cell;
using content::Table;
using testing::little32;
using testing::little64;
using testing::reference;
using testing::Wire;
namespace TST = content::schema::TST;
namespace TSK = content::schema::TSK;

constexpr std::uint64_t kInfo = 1, kModel = 2, kStrings = 3, kFormats = 4, kFirstTile = 100;
constexpr std::uint32_t kRowsOfTile = 256;

struct Sample {
  std::string_view name;
  std::string cell;
  std::string_view shown;
};

// A cell of each type, with its format, and what it shows.
std::vector<Sample> samples() {
  const auto kind = [](unsigned kind, unsigned key) { return little32(kind) + little32(key); };
  const std::string number = testing::decimal128(123'456, -2);
  return {
      {"text", testing::currentCell(3, 0x8, little32(1)), "Groceries"},
      {"number", testing::currentCell(2, 0x3001, number + kind(1, 1)), "1,234.56"},
      {"automatic", testing::currentCell(2, 0x1, number), "1234.56"},
      {"currency", testing::currentCell(10, 0x5001, number + kind(2, 2)), "$1,234.56"},
      {"date", testing::currentCell(5, 0x9004, little64(800'721'312) + kind(3, 3)),
       "Sun, 17 May 2026"},
      {"duration", testing::currentCell(7, 0x11002, little64(5'400) + kind(4, 4)), "1h 30m"},
      {"boolean", testing::currentCell(6, 0x2, little64(1)), "TRUE"},
  };
}

Wire formats() {
  using Entry = TST::TableDataList_ListEntry;
  using Format = TSK::FormatStructArchive;
  const auto entry = [](unsigned key, const Wire& format) {
    return Wire().varint(Entry::key.number, key).message(Entry::format.number, format);
  };
  const auto format = [](unsigned type) { return Wire().varint(Format::format_type.number, type); };
  const auto grouped = [&](unsigned type) {
    return format(type)
        .varint(Format::decimal_places.number, 2)
        .varint(Format::show_thousands_separator.number, 1);
  };
  constexpr unsigned kList = TST::TableDataList::entries.number;
  return Wire()
      .message(kList, entry(1, grouped(256)))
      .message(kList, entry(2, grouped(257).bytes(Format::currency_code.number, "USD")))
      .message(kList, entry(3, format(261).bytes(Format::date_time_format.number, "EEE, d MMM y")))
      .message(kList, entry(4, format(268)
                                   .varint(Format::duration_style.number, 1)
                                   .varint(Format::use_automatic_duration_units.number, 1)));
}

// A document of one table, whose cells are all alike.
std::unique_ptr<testing::Objects> documentOf(const std::string& cell, std::uint32_t rows,
                                             std::uint32_t columns) {
  std::string buffer;
  std::string offsets;
  for (std::uint32_t column = 0; column < columns; ++column) {
    offsets += testing::encodeLittleEndian(buffer.size(), 2);
    buffer += cell;
  }
  std::vector<testing::Archive> archives;
  Wire tiles;
  for (std::uint32_t first = 0; first < rows; first += kRowsOfTile) {
    Wire tile;
    for (std::uint32_t row = 0; row < kRowsOfTile && first + row < rows; ++row)
      tile.message(TST::Tile::rowInfos.number,
                   Wire()
                       .varint(TST::TileRowInfo::tile_row_index.number, row)
                       .bytes(TST::TileRowInfo::cell_storage_buffer.number, buffer)
                       .bytes(TST::TileRowInfo::cell_offsets.number, offsets));
    const std::uint32_t id = first / kRowsOfTile;
    archives.push_back(testing::object(kFirstTile + id, 6002, tile));
    tiles.message(TST::TileStorage::tiles.number,
                  Wire().varint(1, id).message(2, reference(kFirstTile + id)));
  }
  using Map = TST::ColumnRowUIDMapArchive;
  Wire uids;  // bear out how many rows there are
  for (std::uint32_t row = 0; row < rows; ++row)
    uids.varint(Map::row_uid_for_index.number, row)
        .message(Map::sorted_row_uids.number, Wire().varint(1, row));
  const Wire store = Wire()
                         .message(TST::DataStore::tiles.number, tiles)
                         .message(TST::DataStore::stringTable.number, reference(kStrings))
                         .message(TST::DataStore::format_table.number, reference(kFormats));
  const Wire model = Wire()
                         .message(TST::TableModelArchive::base_data_store.number, store)
                         .message(TST::TableModelArchive::base_column_row_uids.number, reference(5))
                         .varint(TST::TableModelArchive::number_of_rows.number, rows)
                         .varint(TST::TableModelArchive::number_of_columns.number, columns);
  const Wire strings =
      Wire().message(TST::TableDataList::entries.number, Wire().varint(1, 1).bytes(3, "Groceries"));
  archives.push_back(testing::object(
      kInfo, 6000, Wire().message(TST::TableInfoArchive::tableModel.number, reference(kModel))));
  archives.push_back(testing::object(kModel, 6001, model));
  archives.push_back(testing::object(kStrings, 6005, strings));
  archives.push_back(testing::object(kFormats, 6005, formats()));
  archives.push_back(testing::object(5, 6267, uids));
  return std::make_unique<testing::Objects>(archives, content::Application::kNumbers);
}

// Reads all cells; the answer is compared before it is timed.
void readCells(benchmark::State& state, const Sample& sample, std::uint32_t rows,
               std::uint32_t columns) {
  const auto objects = documentOf(sample.cell, rows, columns);
  const auto info = objects->message<TST::TableInfoArchive>(kInfo);
  std::vector<Cell> cells;
  readTable(objects->reading(), info).cells->read(rows - 1, {}, cells);
  if (cells.size() != columns || cells.back().text != sample.shown)
    return state.SkipWithError(("wrong: " + (cells.empty() ? "" : cells.back().text)).c_str());
  for (auto _ : state) {
    const Table table = readTable(objects->reading(), info);
    for (std::uint32_t row = 0; row < table.rows; ++row) {
      table.cells->read(row, {}, cells);
      benchmark::DoNotOptimize(cells.data());
    }
  }
  state.counters["cells"] = benchmark::Counter(
      static_cast<double>(rows) * columns * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}

const bool registered = [] {
  static const std::vector<Sample> all = samples();
  for (const Sample& sample : all) {
    benchmark::RegisterBenchmark(
        ("table/" + std::string(sample.name)).c_str(),
        [&sample](benchmark::State& state) { readCells(state, sample, 20'000, 10); })
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("table/rows",
                               [](benchmark::State& state) {
                                 readCells(state, all[1],
                                           static_cast<std::uint32_t>(state.range(0)), 2);
                               })
      ->Arg(10'000)
      ->Arg(100'000)
      ->Arg(1'000'000)
      ->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
}  // namespace dorvex

BENCHMARK_MAIN();
