#include "tables/table.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TSWPArchives.h"
#include "cells.h"
#include "content/support/objects.h"
#include "newer.h"
#include "tables/cell_reader.h"

namespace dorvex::content::table_test {
namespace {

using Info = TST::TableInfoArchive;
using Model = TST::TableModelArchive;
using Store = TST::DataStore;
using Entry = TST::TableDataList_ListEntry;
using testing::Archive;
using testing::currentCell;
using testing::decimal128;
using testing::little32;
using testing::little64;
using testing::object;
using testing::Objects;
using testing::olderCell;
using testing::reference;
using testing::Wire;

constexpr std::uint64_t kInfo = 10, kModel = 11, kTile = 12, kStrings = 13, kFormulas = 14,
                        kControls = 15, kFormats = 16, kUids = 17, kOlderFormats = 18,
                        kSegment = 19, kRichTexts = 20, kChoices = 21, kMenu = 22, kCustoms = 23,
                        kBucket = 24, kColumnBucket = 25;

Wire word(std::uint16_t offset) { return Wire().raw(testing::encodeLittleEndian(offset, 2)); }

// A row whose cells stand one behind the other; an empty one is none.
Wire rowOf(unsigned number, const std::vector<std::string>& cells, bool wide = false) {
  std::string buffer;
  std::string offsets;
  for (const std::string& cell : cells) {
    const auto offset = wide ? buffer.size() / 4 : buffer.size();
    offsets += word(cell.empty() ? 0xFFFF : static_cast<std::uint16_t>(offset)).str();
    buffer += cell;
  }
  Wire row = Wire()
                 .varint(TST::TileRowInfo::tile_row_index.number, number)
                 .bytes(TST::TileRowInfo::cell_storage_buffer.number, buffer)
                 .bytes(TST::TileRowInfo::cell_offsets.number, offsets);
  return wide ? row.varint(newer::TST_TileRowInfo::has_wide_offsets.number, 1) : row;
}

Wire listOf(const std::vector<Wire>& entries) {
  Wire list;
  for (const Wire& entry : entries) list.message(TST::TableDataList::entries.number, entry);
  return list;
}
Wire stringEntry(unsigned key, std::string_view text) {
  return Wire().varint(Entry::key.number, key).bytes(Entry::string.number, text);
}

struct Parts {
  std::vector<Wire> rows;
  std::vector<Wire> strings = {};
  unsigned rowCount = 3, columnCount = 3;
  Wire model = Wire();
  Wire info = Wire();
  std::vector<Archive> more = {};
};

std::vector<Archive> archivesOf(const Parts& parts) {
  Wire tile;
  for (const Wire& row : parts.rows) tile.message(TST::Tile::rowInfos.number, row);
  const Wire tiles = Wire().message(
      TST::TileStorage::tiles.number,
      Wire().varint(1, 0).message(TST::TileStorage_Tile::tile.number, reference(kTile)));
  const Wire store =
      Wire()
          .message(Store::tiles.number, tiles)
          .message(Store::stringTable.number, reference(kStrings))
          .message(Store::rich_text_table.number, reference(kRichTexts))
          .message(Store::formula_table.number, reference(kFormulas))
          .message(Store::control_cell_spec_table.number, reference(kControls))
          .message(Store::format_table.number, reference(kFormats))
          .message(Store::format_table_pre_bnc.number, reference(kOlderFormats))
          .message(Store::multipleChoiceListFormatTable.number, reference(kChoices))
          .message(Store::customFormatTable.number, reference(kCustoms))
          .message(Store::rowHeaders.number,
                   Wire().message(TST::HeaderStorage::buckets.number, reference(kBucket)))
          .message(Store::columnHeaders.number, reference(kColumnBucket));
  Wire model = parts.model;
  model.message(Model::base_data_store.number, store)
      .varint(Model::number_of_rows.number, parts.rowCount)
      .varint(Model::number_of_columns.number, parts.columnCount)
      .bytes(Model::table_name.number, "Numbers\x01");
  Wire info = parts.info;
  info.message(Info::tableModel.number, reference(kModel));
  std::vector<Archive> archives = {object(kInfo, 6000, info), object(kModel, 6001, model),
                                   object(kTile, 6002, tile),
                                   object(kStrings, 6005, listOf(parts.strings))};
  archives.insert(archives.end(), parts.more.begin(), parts.more.end());
  return archives;
}

class TableTest : public ::testing::Test {
 protected:
  Table read(const Parts& parts) {
    objects_ = std::make_unique<Objects>(archivesOf(parts), Application::kNumbers);
    return readTable(objects_->reading(), objects_->message<Info>(kInfo));
  }
  std::vector<Cell> row(const Table& table, std::uint32_t number) {
    std::vector<Cell> cells;
    table.cells->read(number, {}, cells);
    return cells;
  }
  const std::vector<std::string>& problems() { return objects_->leftOut().problems; }

  std::unique_ptr<Objects> objects_;
};

std::string textCell(unsigned key) { return currentCell(3, 0x8, little32(key)); }
std::string numberCell(std::uint64_t number) { return currentCell(2, 0x1, decimal128(number, 0)); }

TEST_F(TableTest, HasTheShapeThatItsModelSays) {
  Parts parts;
  parts.model.varint(Model::number_of_header_rows.number, 1)
      .varint(Model::number_of_header_columns.number, 9)
      .varint(Model::number_of_footer_rows.number, 7)
      .varint(Model::table_name_enabled.number, 1);
  const Table table = read(parts);
  EXPECT_EQ(table.name, "Numbers");
  EXPECT_TRUE(table.nameShown);
  EXPECT_EQ(table.rows, 3U);
  EXPECT_EQ(table.columns, 3U);
  EXPECT_EQ(table.headerRows, 1U);
  EXPECT_EQ(table.headerColumns, 3U) << "no more than there are";
  EXPECT_EQ(table.footerRows, 2U) << "no more than there are";
}

TEST_F(TableTest, ReadsCellsOfEachType) {
  Parts parts;
  parts.columnCount = 8;
  parts.strings = {stringEntry(7, "one\ntwo")};
  parts.rows = {rowOf(1, {textCell(7), "", numberCell(42), currentCell(5, 0x4, little64(0)),
                          currentCell(6, 0x2, little64(1)), currentCell(7, 0x2, little64(90)),
                          currentCell(8, 0, ""), currentCell(3, 0, "")})};
  const auto cells = row(read(parts), 1);
  ASSERT_EQ(cells.size(), 8U);
  EXPECT_EQ(cells[0].type, CellType::kText);
  EXPECT_EQ(cells[0].value, "one\ntwo");
  EXPECT_EQ(cells[1].type, CellType::kNone);
  EXPECT_EQ(cells[2].type, CellType::kNumber);
  EXPECT_EQ(cells[2].number, 42);
  EXPECT_EQ(cells[2].text, "42");
  EXPECT_EQ(cells[3].type, CellType::kDate);
  EXPECT_EQ(cells[3].value, "2001-01-01T00:00:00");
  EXPECT_EQ(cells[4].type, CellType::kBool);
  EXPECT_EQ(cells[4].text, "TRUE");
  EXPECT_EQ(cells[5].type, CellType::kDuration);
  EXPECT_EQ(cells[5].text, "1m 30s");
  EXPECT_EQ(cells[6].type, CellType::kError);
  EXPECT_EQ(cells[7].type, CellType::kText) << "a text without a key is an empty one";
  EXPECT_TRUE(problems().empty());
}

TEST_F(TableTest, FindsCellsByWideOffsets) {
  Parts parts;
  parts.rows = {rowOf(0, {numberCell(1), "", numberCell(3)}, true)};
  const auto cells = row(read(parts), 0);
  EXPECT_EQ(cells[0].number, 1);
  EXPECT_EQ(cells[2].number, 3);
}

TEST_F(TableTest, CountsRowsByTheSizeOfTiles) {
  using Storage = TST::TileStorage;
  const auto tile = [](unsigned id, std::uint64_t object) {
    return Wire().varint(1, id).message(TST::TileStorage_Tile::tile.number, reference(object));
  };
  const Wire tiles = Wire()
                         .message(Storage::tiles.number, tile(0, kTile))
                         .message(Storage::tiles.number, tile(1, kTile + 100))
                         .varint(newer::TST_TileStorage::tile_size.number, 2);
  const auto archives = [&](const Wire& store) {
    const Wire model = Wire()
                           .message(Model::base_data_store.number, store)
                           .varint(Model::number_of_rows.number, 4)
                           .varint(Model::number_of_columns.number, 1);
    const auto rows = TST::Tile::rowInfos.number;
    return std::vector<Archive>{
        object(kInfo, 6000, Wire().message(Info::tableModel.number, reference(kModel))),
        object(kModel, 6001, model),
        object(kTile, 6002, Wire().message(rows, rowOf(0, {numberCell(1)}))),
        object(kTile + 100, 6002, Wire().message(rows, rowOf(1, {numberCell(2)})))};
  };
  const auto numberAt = [&](const Wire& store, std::uint32_t number) {
    objects_ = std::make_unique<Objects>(archives(store), Application::kNumbers);
    return row(readTable(objects_->reading(), objects_->message<Info>(kInfo)), number).at(0).number;
  };
  const Wire plain = Wire().message(Store::tiles.number, tiles);
  EXPECT_EQ(numberAt(plain, 0), 1);
  EXPECT_EQ(numberAt(plain, 3), 2);
  // Where a tree says where tiles begin, that counts.
  Wire tree = plain;
  tree.message(Store::rowTileTree.number,
               Wire().message(TST::TableRBTree::nodes.number,
                              Wire()
                                  .varint(TST::TableRBTree_Node::key.number, 1)
                                  .varint(TST::TableRBTree_Node::value.number, 1)));
  EXPECT_EQ(numberAt(tree, 2), 2);
}

TEST_F(TableTest, ReadsOlderCellsOnlyWhereThereAreNoOthers) {
  const std::string older = olderCell(2, 0x20, little64(2.5));
  const auto pair = [&](Wire wire) {
    return wire.bytes(TST::TileRowInfo::cell_storage_buffer_pre_bnc.number, older)
        .bytes(TST::TileRowInfo::cell_offsets_pre_bnc.number, word(0).str());
  };
  Parts parts;
  parts.rows = {pair(rowOf(0, {numberCell(1)})),
                pair(Wire().varint(TST::TileRowInfo::tile_row_index.number, 1))};
  const Table table = read(parts);
  EXPECT_EQ(row(table, 0)[0].number, 1);
  EXPECT_EQ(row(table, 1)[0].number, 2.5);
  EXPECT_EQ(row(table, 2)[0].type, CellType::kNone);
  EXPECT_TRUE(row(table, 3).empty()) << "there is no such row";
}

TEST_F(TableTest, ReusesCellsWithoutWhatTheyHad) {
  Parts parts;
  parts.strings = {stringEntry(7, "text")};
  parts.rows = {rowOf(0, {textCell(7)})};
  const Table table = read(parts);
  std::vector<Cell> cells;
  table.cells->read(0, {}, cells);
  EXPECT_EQ(cells[0].text, "text");
  table.cells->read(1, {}, cells);
  EXPECT_EQ(cells[0].type, CellType::kNone);
  EXPECT_EQ(cells[0].text, "");
}

TEST_F(TableTest, LeavesOutTheTextThatNobodyAskedFor) {
  Parts parts;
  parts.rows = {rowOf(0, {numberCell(5)})};
  std::vector<Cell> cells;
  read(parts).cells->read(0, {false, false, false}, cells);
  EXPECT_EQ(cells[0].number, 5);
  EXPECT_EQ(cells[0].text, "");
}

TEST_F(TableTest, CountsCellsThatCannotBeRead) {
  Parts parts;
  parts.rows = {
      rowOf(0, {textCell(99), numberCell(1).substr(0, 20), currentCell(2, 0, "")}),
      rowOf(1, {currentCell(2, 0x4000, little32(1)), currentCell(3, 0x200, little32(9))})};
  const Table table = read(parts);
  const auto first = row(table, 0);
  for (const Cell& cell : first) EXPECT_EQ(cell.type, CellType::kNone);
  ASSERT_EQ(problems().size(), 3U);
  EXPECT_EQ(problems()[0], "Table \"Numbers\", A1: its text is missing");
  EXPECT_EQ(problems()[1], "Table \"Numbers\", B1: it cannot be read");
  EXPECT_EQ(problems()[2], "Table \"Numbers\", C1: it has no number");
  EXPECT_EQ(row(table, 1)[1].formulaProblem, "its formula is missing");
}

TEST_F(TableTest, HoldsAgainstOffsetsThatAreNone) {
  for (const std::string& offsets :
       {word(5000).str() + word(1).str(), word(28).str() + word(0).str(),
        word(0).str() + word(0).str(), std::string("\0", 1), word(0xFFFE).str()}) {
    Parts parts;
    parts.rows = {Wire()
                      .bytes(TST::TileRowInfo::cell_storage_buffer.number, numberCell(1))
                      .bytes(TST::TileRowInfo::cell_offsets.number, offsets)};
    const auto cells = row(read(parts), 0);
    EXPECT_EQ(cells.size(), 3U);
  }
}

TEST_F(TableTest, ClampsCountsThatNothingBearsOut) {
  Parts parts;
  parts.rowCount = 4'000'000'000;
  parts.columnCount = 4'000'000'000;
  const Table table = read(parts);
  EXPECT_EQ(table.rows, 65'535U);
  EXPECT_EQ(table.columns, 256U);
  ASSERT_EQ(problems().size(), 1U);
}

TEST_F(TableTest, ReadsTheSegmentsOfALongList) {
  Parts parts;
  parts.rows = {rowOf(0, {textCell(1), textCell(2)})};
  auto archives = archivesOf(parts);
  archives[3] =
      object(kStrings, 6005,
             listOf({stringEntry(1, "first")})
                 .message(newer::TST_TableDataList::segments.number, reference(kSegment))
                 .message(newer::TST_TableDataList::segments.number, reference(kSegment)));
  archives.push_back(object(kSegment, 6011, listOf({stringEntry(2, "second")})));
  objects_ = std::make_unique<Objects>(archives, Application::kNumbers);
  const Table table = readTable(objects_->reading(), objects_->message<Info>(kInfo));
  EXPECT_EQ(row(table, 0)[0].value, "first");
  EXPECT_EQ(row(table, 0)[1].value, "second");
}

Wire mergeFormula(unsigned row, unsigned lastRow, unsigned column, unsigned lastColumn) {
  using Node = TSCE::ASTNodeArrayArchive_ASTNodeArchive;
  using Tract = TSCE::ASTNodeArrayArchive_ASTColonTractArchive;
  const Wire tract =
      Wire()
          .message(Tract::absolute_row.number, Wire().varint(1, row).varint(2, lastRow))
          .message(Tract::absolute_column.number, Wire().varint(1, column).varint(2, lastColumn));
  const Wire node =
      Wire().varint(Node::AST_node_type.number, 67).message(Node::AST_colon_tract.number, tract);
  const Wire formula =
      Wire().message(TSCE::FormulaArchive::AST_node_array.number,
                     Wire().message(TSCE::ASTNodeArrayArchive::AST_node.number, node));
  return Wire().message(TST::FormulaStoreArchive_FormulaStorePair::formula.number, formula);
}

TEST_F(TableTest, ShowsWhatIsMergedOnce) {
  Parts parts;
  const Wire store =
      Wire()
          .message(TST::FormulaStoreArchive::formulas.number, mergeFormula(2, 1, 0, 1))  // upwards
          .message(TST::FormulaStoreArchive::formulas.number, mergeFormula(0, 0, 1, 9))
          .message(TST::FormulaStoreArchive::formulas.number, mergeFormula(8, 9, 0, 1));
  parts.model.message(Model::merge_owner.number,
                      Wire().message(TST::MergeOwnerArchive::formula_store.number, store));
  parts.rows = {rowOf(1, {numberCell(1), numberCell(2), numberCell(3)}),
                rowOf(2, {numberCell(4), numberCell(5), numberCell(6)})};
  const Table table = read(parts);
  EXPECT_EQ(table.merges, (std::vector<Merge>{{0, 1, 1, 2}, {1, 0, 2, 2}}));
  EXPECT_EQ(row(table, 0)[1].type, CellType::kEmpty) << "the merge has no value";
  EXPECT_EQ(row(table, 1)[0].number, 1);
  EXPECT_EQ(row(table, 1)[1].type, CellType::kNone);
  EXPECT_EQ(row(table, 1)[2].number, 3);
  EXPECT_EQ(row(table, 2)[0].type, CellType::kNone);
  EXPECT_EQ(row(table, 2)[2].number, 6);
}

TEST_F(TableTest, ReadsMergesOfOlderDocuments) {
  Parts parts;
  auto archives = archivesOf(parts);
  constexpr std::uint64_t kRegions = 30;
  const Wire range = Wire()
                         .message(TST::CellRange::origin.number, Wire().fixed32(1, 1U << 16 | 0))
                         .message(TST::CellRange::size.number, Wire().fixed32(1, 2U << 16 | 3));
  Wire model = Wire()
                   .message(Model::base_data_store.number,
                            Wire().message(Store::merge_region_map.number, reference(kRegions)))
                   .varint(Model::number_of_rows.number, 3)
                   .varint(Model::number_of_columns.number, 3);
  archives[1] = object(kModel, 6001, model);
  archives.push_back(object(kRegions, 6144, Wire().message(1, range)));
  objects_ = std::make_unique<Objects>(archives, Application::kNumbers);
  const Table table = readTable(objects_->reading(), objects_->message<Info>(kInfo));
  EXPECT_EQ(table.merges, (std::vector<Merge>{{0, 1, 3, 2}}));
}

Wire uid(std::uint64_t lower) { return Wire().varint(1, lower).varint(2, 9); }

// Rows of the identifiers 101, 102, ... and columns of 201, 202, ...
Wire uidMap(const std::vector<std::uint64_t>& rows, const std::vector<std::uint64_t>& columns) {
  using Map = TST::ColumnRowUIDMapArchive;
  Wire map;
  for (const auto row : rows) map.message(Map::sorted_row_uids.number, uid(row));
  for (const auto column : columns) map.message(Map::sorted_column_uids.number, uid(column));
  for (std::size_t i = 0; i < rows.size(); ++i) map.varint(Map::row_uid_for_index.number, i);
  for (std::size_t i = 0; i < columns.size(); ++i) map.varint(Map::column_uid_for_index.number, i);
  return map;
}

TEST_F(TableTest, KnowsWhatIsHidden) {
  using State = TST::HiddenStateExtentArchive_RowOrColumnState;
  const auto hidden = [](std::uint64_t line, unsigned field) {
    return Wire().message(State::row_or_column_uid.number, uid(line)).varint(field, 1);
  };
  Wire rows;
  rows.message(2, hidden(103, 2)).message(2, hidden(101, 3)).message(2, hidden(999, 2));
  Wire columns;
  columns.message(
      2, hidden(202, newer::TST_HiddenStateExtentArchive_RowOrColumnState::pivot_hidden.number));
  const Wire states =
      Wire()
          .message(TST::HiddenStatesArchive::column_hidden_state_extent.number, columns)
          .message(TST::HiddenStatesArchive::row_hidden_state_extent.number, rows);
  Parts parts;
  parts.model
      .message(Model::hidden_states_owner.number,
               Wire().message(TST::HiddenStatesOwnerArchive::hidden_states.number, states))
      .message(Model::base_column_row_uids.number, reference(kUids));
  parts.more = {object(kUids, 6267, uidMap({101, 102, 103}, {201, 202, 203}))};
  const Table table = read(parts);
  EXPECT_EQ(table.hiddenRows, (std::vector<std::uint32_t>{0, 2}));
  EXPECT_EQ(table.hiddenColumns, (std::vector<std::uint32_t>{1}));
}

Wire headersOf(const std::vector<std::pair<unsigned, unsigned>>& hidingStates) {
  using Bucket = TST::HeaderStorageBucket;
  using Header = TST::HeaderStorageBucket_Header;
  Wire bucket;
  for (const auto& [index, state] : hidingStates)
    bucket.message(
        Bucket::headers.number,
        Wire().varint(Header::index.number, index).varint(Header::hidingState.number, state));
  return bucket;
}

// Before there were owners of hidden states.
TEST_F(TableTest, KnowsWhatTheHeadersOfItsLinesHide) {
  Parts parts;
  parts.more = {object(kBucket, 6006, headersOf({{2, 1}, {0, 0}, {1, 2}})),
                object(kColumnBucket, 6006, headersOf({{1, 1}, {9, 1}}))};
  const Table older = read(parts);
  EXPECT_EQ(older.hiddenRows, (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(older.hiddenColumns, (std::vector<std::uint32_t>{1}));
  parts.model.message(Model::hidden_states_owner.number, Wire());
  EXPECT_TRUE(read(parts).hiddenRows.empty());
}

// As test-categories shows it: the lines of groups among the rows, and a column before.
TEST_F(TableTest, KnowsTheOrderThatCategoriesShow) {
  using GroupBy = TST::CategoryOwnerArchive_GroupByArchive;
  using Group = TST::CategoryOwnerArchive_GroupByArchive_GroupNodeArchive;
  using Value = TSCE::CellValueArchive;
  const Wire value =
      Wire().message(Value::string_value.number,
                     Wire().bytes(TSCE::StringCellValueArchive::value.number, "Fruit"));
  const Wire group = Wire()
                         .message(Group::group_uid.number, uid(500))
                         .message(Group::group_cell_value.number, value);
  const Wire groupBy =
      Wire()
          .varint(GroupBy::is_enabled.number, 1)
          .message(GroupBy::group_node_root.number, Wire().message(Group::child.number, group));
  constexpr std::uint64_t kView = 31;
  Parts parts;
  parts.model
      .message(Model::category_owner.number,
               Wire().message(TST::CategoryOwnerArchive::group_by.number, groupBy))
      .message(Model::base_column_row_uids.number, reference(kUids));
  parts.info.message(Info::view_column_row_uids.number, reference(kView));
  parts.more = {object(kUids, 6267, uidMap({101, 102, 103}, {201, 202, 203})),
                object(kView, 6267, uidMap({101, 500, 103, 102}, {77, 201, 202, 203}))};
  const Table table = read(parts);
  ASSERT_EQ(table.shownRows.size(), 4U);
  EXPECT_EQ(table.shownRows[0].model, 0U);
  EXPECT_FALSE(table.shownRows[1].model);
  EXPECT_EQ(table.shownRows[1].group, "Fruit");
  EXPECT_EQ(table.shownRows[1].level, 1U);
  EXPECT_EQ(table.shownRows[2].model, 2U);
  EXPECT_EQ(table.shownRows[3].model, 1U);
  ASSERT_EQ(table.shownColumns.size(), 4U);
  EXPECT_FALSE(table.shownColumns[0].model);
}

// A cell with that storage for its text.
Parts richCell(const Wire& storage, std::vector<Archive> more) {
  using Payload = TST::RichTextPayloadArchive;
  Parts parts;
  parts.rows = {rowOf(0, {currentCell(9, 0x10, little32(4))})};
  more.push_back(object(kRichTexts, 6005,
                        listOf({Wire()
                                    .varint(Entry::key.number, 4)
                                    .message(Entry::rich_text_payload.number, reference(30))})));
  more.push_back(object(30, 6218, Wire().message(Payload::storage.number, reference(31))));
  more.push_back(object(31, testing::kStorageType, storage));
  parts.more = std::move(more);
  return parts;
}

// Positions count UTF-16 units: the second line begins at 4, the third at 8.
TEST_F(TableTest, ReadsParagraphsLinksAndListsOfRichText) {
  using Storage = TSWP::StorageArchive;
  using List = TSWP::ListStyleArchive;
  const Wire bullets = Wire()
                           .varint(List::label_types.number, 2)
                           .varint(List::label_types.number, 2)
                           .bytes(List::strings.number, "•")
                           .bytes(List::strings.number, "◦");
  const Wire storage =
      Wire()
          .bytes(Storage::text.number, "😀a\nte")
          .bytes(Storage::text.number,
                 "a\nb\xE2\x80\xA8"
                 "c")
          .message(Storage::table_smartfield.number, testing::objectTable({{4, 40}, {6, 0}}))
          .message(Storage::table_list_style.number, testing::objectTable({{0, 41}, {8, 42}}))
          .message(Storage::table_para_data.number, testing::numberTable({{0, 0}, {4, 1}}));
  const auto cells =
      row(read(richCell(storage, {object(40, 2032,
                                         Wire().bytes(TSWP::HyperlinkFieldArchive::url_ref.number,
                                                      "https://tea.example/")),
                                  object(41, 2023, bullets), object(42, 2023, Wire())})),
          0);
  EXPECT_EQ(cells[0].type, CellType::kRich);
  EXPECT_EQ(cells[0].value, "😀a\ntea\nb\nc");
  EXPECT_EQ(cells[0].text, cells[0].value);
  ASSERT_EQ(cells[0].paragraphs.size(), 3U);
  const auto& lines = cells[0].paragraphs;
  ASSERT_TRUE(lines[0].list && lines[1].list);
  EXPECT_EQ(lines[0].list->label, "•");
  EXPECT_EQ(lines[1].list->label, "◦");
  EXPECT_FALSE(lines[2].list);
  ASSERT_EQ(lines[1].runs.size(), 2U);
  EXPECT_EQ(lines[1].runs[0].text, "te");
  EXPECT_EQ(lines[1].runs[0].link, "https://tea.example/");
  EXPECT_EQ(lines[1].runs[1].link, "");
  EXPECT_EQ(lines[2].text, "b\nc");
  EXPECT_TRUE(problems().empty());
}

TEST_F(TableTest, TellsOfAFootnoteInACell) {
  using Storage = TSWP::StorageArchive;
  const Wire storage =
      Wire()
          .bytes(Storage::text.number, "a\x0E")
          .message(Storage::table_footnote.number, testing::objectTable({{1, 40}}));
  const auto cells = row(read(richCell(storage, {object(40, 2008, Wire())})), 0);
  EXPECT_EQ(cells[0].text, "a");
  EXPECT_EQ(problems(),
            std::vector<std::string>{"Table \"Numbers\", A1: a footnote in its text is not shown"});
}

TEST_F(TableTest, KnowsTheControlOfACellWithoutAValue) {
  Parts parts;
  parts.rows = {rowOf(0, {currentCell(0, 0x400, little32(1))})};
  parts.more = {object(
      kControls, 6005,
      listOf({Wire()
                  .varint(Entry::key.number, 1)
                  .message(Entry::cell_spec.number,
                           Wire().varint(TST::CellSpecArchive::interaction_type.number, 7))}))};
  const auto cells = row(read(parts), 0);
  EXPECT_EQ(cells[0].type, CellType::kEmpty);
  EXPECT_EQ(cells[0].control, Control::kPopup);
}

Wire olderRow(const std::vector<std::string>& cells) {
  std::string buffer;
  std::string offsets;
  for (const std::string& cell : cells) {
    offsets += word(static_cast<std::uint16_t>(buffer.size())).str();
    buffer += cell;
  }
  return Wire()
      .bytes(TST::TileRowInfo::cell_storage_buffer_pre_bnc.number, buffer)
      .bytes(TST::TileRowInfo::cell_offsets_pre_bnc.number, offsets);
}

// An older number in the format of that key.
std::string olderNumber(double number, unsigned format) {
  return olderCell(2, 0x24, little32(format) + little64(number));
}

Wire formatEntry(unsigned key, const Wire& format) {
  return Wire().varint(Entry::key.number, key).message(Entry::format.number, format);
}

// As older documents store menus: the cell has the number of its item.
TEST_F(TableTest, ShowsWhatAnOlderPopUpMenuHasChosen) {
  using Format = TSK::FormatStructArchive;
  using Item = TST::PopUpMenuModel_CellValue;
  const Wire percentage =
      Wire().varint(Format::format_type.number, 258).varint(Format::decimal_places.number, 0);
  const Wire items[] = {
      Wire(), Wire().message(Item::string_value.number, Wire().bytes(1, "Assam")),
      Wire().message(Item::number_value.number,
                     Wire().fixed64(1, testing::bitsOf(0.25)).message(3, percentage)),
      Wire().message(Item::date_value.number, Wire().fixed64(1, testing::bitsOf(86400))),
      Wire().message(Item::boolean_value.number, Wire().varint(1, 1))};
  Wire menu;
  for (const Wire& item : items) menu.message(TST::PopUpMenuModel::item.number, item);
  Parts parts;
  parts.columnCount = 6;
  std::vector<std::string> cells;
  for (unsigned i = 0; i < parts.columnCount; ++i) cells.push_back(olderNumber(i, 1));
  parts.rows = {olderRow(cells)};
  parts.more = {
      object(kOlderFormats, 6005,
             listOf({formatEntry(1, Wire()
                                        .varint(Format::format_type.number, 266)
                                        .varint(Format::multiple_choice_list_id.number, 8))})),
      object(kChoices, 6005,
             listOf({Wire()
                         .varint(Entry::key.number, 8)
                         .message(Entry::reference.number, reference(kMenu))})),
      object(kMenu, 6206, menu)};
  const auto shown = row(read(parts), 0);
  EXPECT_EQ(shown[0].type, CellType::kEmpty);
  EXPECT_EQ(shown[1].type, CellType::kText);
  EXPECT_EQ(shown[1].text, "Assam");
  EXPECT_EQ(shown[2].type, CellType::kNumber);
  EXPECT_EQ(shown[2].text, "25%") << "in the item's own format";
  EXPECT_EQ(shown[3].type, CellType::kDate);
  EXPECT_EQ(shown[3].value, "2001-01-02T00:00:00");
  EXPECT_EQ(shown[4].type, CellType::kBool);
  EXPECT_EQ(shown[4].text, "TRUE");
  EXPECT_EQ(shown[5].type, CellType::kNone);
  EXPECT_EQ(problems(),
            std::vector<std::string>{"Table \"Numbers\", F1: its pop-up menu has no such item"});
}

// Before documents had a list of them, each table had its own.
TEST_F(TableTest, ShowsTheCustomFormatsOfAnOlderTable) {
  using Format = TSK::FormatStructArchive;
  using Custom = TSK::CustomFormatArchive;
  const Wire pattern = Wire()
                           .varint(Format::format_type.number, 270)
                           .bytes(Format::custom_format_string.number, "#' cups'");
  const auto use = [](unsigned key, unsigned custom) {
    return formatEntry(
        key,
        Wire().varint(Format::format_type.number, 270).varint(Format::custom_id.number, custom));
  };
  Parts parts;
  parts.rows = {olderRow({olderNumber(3, 1), olderNumber(3, 2)})};
  parts.more = {
      object(kOlderFormats, 6005, listOf({use(1, 5), use(2, 6)})),
      object(kCustoms, 6005,
             listOf({Wire()
                         .varint(Entry::key.number, 5)
                         .message(Entry::custom_format.number,
                                  Wire().message(Custom::default_format.number, pattern))}))};
  const auto shown = row(read(parts), 0);
  EXPECT_EQ(shown[0].text, "3 cups");
  EXPECT_EQ(shown[0].format, "custom");
  EXPECT_EQ(shown[1].text, "3") << "there is no such format";
}

// A cell keeps formats that it had before: the format kind says which one counts.
TEST_F(TableTest, ShowsTheFormatThatTheCellSays) {
  using Format = TSK::FormatStructArchive;
  const auto entry = [](unsigned key, unsigned type) {
    return Wire()
        .varint(Entry::key.number, key)
        .message(Entry::format.number, Wire()
                                           .varint(Format::format_type.number, type)
                                           .varint(Format::decimal_places.number, 1));
  };
  Parts parts;
  parts.rows = {rowOf(
      0, {currentCell(2, 0x7001, decimal128(5, -1) + little32(1) + little32(1) + little32(2))})};
  parts.more = {object(kFormats, 6005, listOf({entry(1, 258), entry(2, 257)}))};
  const auto cells = row(read(parts), 0);
  EXPECT_EQ(cells[0].type, CellType::kPercentage);
  EXPECT_EQ(cells[0].text, "50.0%");
  EXPECT_EQ(cells[0].format, "percentage");
}

TEST(ColumnName, CountsInLetters) {
  EXPECT_EQ(columnName(0), "A");
  EXPECT_EQ(columnName(25), "Z");
  EXPECT_EQ(columnName(26), "AA");
  EXPECT_EQ(columnName(701), "ZZ");
  EXPECT_EQ(columnName(702), "AAA");
}

}  // namespace
}  // namespace dorvex::content::table_test
