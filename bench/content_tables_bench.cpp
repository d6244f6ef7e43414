// How many cells of a table are read in a second, with what they show: by type, and for
// tables of more and more rows. --write_documents=FOLDER writes documents of such tables
// there instead, for bench/tables.py.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "TNArchives.h"
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
namespace TN = content::schema::TN;

constexpr std::uint64_t kDocument = 1, kSheet = 2, kInfo = 3, kModel = 4, kStrings = 5,
                        kFormats = 6, kUids = 7, kFirstTile = 100;
constexpr std::uint32_t kRowsOfTile = 256;

// A kind of cell: how the cell of a number is stored, and what that of 0 shows.
struct Sample {
  std::string_view name;
  std::function<std::string(std::uint64_t)> cell;
  std::string_view shown;
};

constexpr std::uint64_t kTexts = 1'000;

// Cells of each type, with their formats; no two that follow each other show the same.
std::vector<Sample> samples() {
  const auto kind = [](unsigned kind, unsigned key) { return little32(kind) + little32(key); };
  const auto cents = [](std::uint64_t n) {
    return testing::decimal128(123'456 + n * 7'919 % 10'000'000, -2);
  };
  const auto text = [](std::uint64_t n) {
    return testing::currentCell(3, 0x8, little32(n % kTexts + 1));
  };
  const auto number = [=](std::uint64_t n) {
    return testing::currentCell(2, 0x3001, cents(n) + kind(1, 1));
  };
  const auto automatic = [=](std::uint64_t n) { return testing::currentCell(2, 0x1, cents(n)); };
  const auto currency = [=](std::uint64_t n) {
    return testing::currentCell(10, 0x5001, cents(n) + kind(2, 2));
  };
  const auto date = [=](std::uint64_t n) {
    const double seconds = 800'721'312 + static_cast<double>(n % 10'000) * 86'411;
    return testing::currentCell(5, 0x9004, little64(seconds) + kind(3, 3));
  };
  const auto duration = [=](std::uint64_t n) {
    const double seconds = 5'400 + static_cast<double>(n % 100'000);
    return testing::currentCell(7, 0x11002, little64(seconds) + kind(4, 4));
  };
  const auto boolean = [](std::uint64_t n) {
    return testing::currentCell(6, 0x2, little64(n % 2 == 0 ? 1 : 0));
  };
  const auto percentage = [=](std::uint64_t n) {
    return testing::currentCell(2, 0x3001, cents(n) + kind(1, 5));
  };
  const auto custom = [=](std::uint64_t n) {
    return testing::currentCell(2, 0x3001, cents(n) + kind(1, 6));
  };
  using Make = std::function<std::string(std::uint64_t)>;
  const std::vector<Make> all{text,     number,  automatic,  currency, date,
                              duration, boolean, percentage, custom,   text};
  const auto mixed = [all](std::uint64_t n) { return all[n % all.size()](n); };
  return {
      {"text", text, "Groceries 1"},
      {"number", number, "1,234.56"},
      {"automatic", automatic, "1234.56"},
      {"currency", currency, "$1,234.56"},
      {"percentage", percentage, "123,456.00%"},
      {"custom", custom, "1,234.56 kg"},
      {"date", date, "Sun, 17 May 2026"},
      {"duration", duration, "1h 30m"},
      {"boolean", boolean, "TRUE"},
      {"mixed", mixed, "Groceries 1"},
  };
}

Wire customFormat() {
  using Format = TSK::FormatStructArchive;
  return Wire().message(TSK::CustomFormatArchive::default_format.number,
                        Wire()
                            .varint(Format::format_type.number, 270)
                            .bytes(Format::custom_format_string.number, "#,##0.00' kg'")
                            .varint(Format::show_thousands_separator.number, 1)
                            .varint(Format::num_nonspace_integer_digits.number, 1)
                            .varint(Format::num_nonspace_decimal_digits.number, 2));
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
                                   .varint(Format::use_automatic_duration_units.number, 1)))
      .message(kList, entry(5, grouped(258)))
      .message(kList, entry(6, format(270).message(Format::custom_format.number, customFormat())));
}

// The cells of a row, and where each of them begins.
Wire rowOf(const Sample& sample, std::uint32_t row, std::uint32_t columns) {
  std::string buffer;
  std::string offsets;
  for (std::uint32_t column = 0; column < columns; ++column) {
    offsets += testing::encodeLittleEndian(buffer.size(), 2);
    buffer += sample.cell(std::uint64_t{row} * columns + column);
  }
  return Wire()
      .varint(TST::TileRowInfo::tile_row_index.number, row % kRowsOfTile)
      .bytes(TST::TileRowInfo::cell_storage_buffer.number, buffer)
      .bytes(TST::TileRowInfo::cell_offsets.number, offsets);
}

Wire stringList() {
  Wire strings;
  for (std::uint64_t i = 1; i <= kTexts; ++i)
    strings.message(TST::TableDataList::entries.number,
                    Wire().varint(1, i).bytes(3, "Groceries " + std::to_string(i)));
  return strings;
}

// A sheet with one table of such cells; the tiles come first.
std::vector<testing::Archive> archivesOf(const Sample& sample, std::uint32_t rows,
                                         std::uint32_t columns) {
  std::vector<testing::Archive> archives;
  Wire tiles;
  for (std::uint32_t first = 0; first < rows; first += kRowsOfTile) {
    Wire tile;
    for (std::uint32_t row = first; row < std::min(rows, first + kRowsOfTile); ++row)
      tile.message(TST::Tile::rowInfos.number, rowOf(sample, row, columns));
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
  const Wire model =
      Wire()
          .message(TST::TableModelArchive::base_data_store.number, store)
          .message(TST::TableModelArchive::base_column_row_uids.number, reference(kUids))
          .varint(TST::TableModelArchive::number_of_rows.number, rows)
          .varint(TST::TableModelArchive::number_of_columns.number, columns);
  archives.push_back(testing::object(
      kInfo, 6000, Wire().message(TST::TableInfoArchive::tableModel.number, reference(kModel))));
  archives.push_back(testing::object(kModel, 6001, model));
  archives.push_back(testing::object(kStrings, 6005, stringList()));
  archives.push_back(testing::object(kFormats, 6005, formats()));
  archives.push_back(testing::object(kUids, 6267, uids));
  archives.push_back(testing::object(
      kSheet, 2, Wire().message(TN::SheetArchive::drawable_infos.number, reference(kInfo))));
  archives.push_back(testing::object(
      kDocument, 1, Wire().message(TN::DocumentArchive::sheets.number, reference(kSheet))));
  return archives;
}

// Reads all cells; the answer is compared before it is timed.
void readCells(benchmark::State& state, const Sample& sample, std::uint32_t rows,
               std::uint32_t columns) {
  testing::Objects objects(archivesOf(sample, rows, columns), content::Application::kNumbers);
  const auto info = objects.message<TST::TableInfoArchive>(kInfo);
  std::vector<Cell> cells;
  readTable(objects.reading(), info).cells->read(0, {}, cells);
  if (cells.size() != columns || cells.front().text != sample.shown)
    return state.SkipWithError(("wrong: " + (cells.empty() ? "" : cells.front().text)).c_str());
  for (auto _ : state) {
    const Table table = readTable(objects.reading(), info);
    for (std::uint32_t row = 0; row < table.rows; ++row) {
      table.cells->read(row, {}, cells);
      benchmark::DoNotOptimize(cells.data());
    }
  }
  state.counters["cells"] = benchmark::Counter(
      static_cast<double>(rows) * columns * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}

void registerBenchmarks(const std::vector<Sample>& all) {
  for (const Sample& sample : all) {
    benchmark::RegisterBenchmark(
        ("table/" + std::string(sample.name)).c_str(),
        [&sample](benchmark::State& state) { readCells(state, sample, 20'000, 10); })
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("table/rows",
                               [&all](benchmark::State& state) {
                                 readCells(state, all[1],
                                           static_cast<std::uint32_t>(state.range(0)), 2);
                               })
      ->Arg(10'000)
      ->Arg(100'000)
      ->Arg(1'000'000)
      ->Unit(benchmark::kMillisecond);
}

// Documents of tables of ten columns: a hundred thousand rows of each kind of cell, and
// all kinds in more and fewer rows. The names say kind, rows, and bytes of object streams.
void writeDocuments(const std::filesystem::path& folder, const std::vector<Sample>& all) {
  std::filesystem::create_directories(folder);
  const auto write = [&](const Sample& sample, std::uint32_t rows) {
    // As the application does it, each tile has a member of its own.
    auto rest = archivesOf(sample, rows, 10);
    const std::size_t tiles = (rows + kRowsOfTile - 1) / kRowsOfTile;
    std::vector<testing::Member> members;
    std::size_t bytes = 0;
    const auto add = [&](std::string name, const std::vector<testing::Archive>& archives) {
      const std::string stream = testing::objectStream(archives);
      bytes += stream.size();
      members.push_back({std::move(name), testing::iwa(stream)});
    };
    for (std::size_t i = 0; i < tiles; ++i)
      add("Index/Tables/Tile-" + std::to_string(i) + ".iwa", {std::move(rest[i])});
    rest.erase(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(tiles));
    add("Index/Document.iwa", rest);
    const std::string name = std::string(sample.name) + '-' + std::to_string(rows) + '-' +
                             std::to_string(bytes) + ".numbers";
    testing::writeFile(folder / name, testing::zip(members));
  };
  for (const Sample& sample : all) write(sample, 100'000);
  write(all.back(), 10'000);
  write(all.back(), 1'000'000);
}

}  // namespace
}  // namespace dorvex

int main(int argc, char** argv) {
  constexpr std::string_view kWrite = "--write_documents=";
  const auto all = dorvex::samples();
  if (argc == 2 && std::string_view(argv[1]).starts_with(kWrite)) {
    dorvex::writeDocuments(std::string_view(argv[1]).substr(kWrite.size()), all);
    return 0;
  }
  dorvex::registerBenchmarks(all);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
