#include "tables/row_index.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "graph/sorted.h"
#include "newer.h"
#include "tables/cell_fields.h"

namespace dorvex::content {
namespace {

constexpr std::uint16_t kNoCell = 0xFFFF;
constexpr std::size_t kWideUnit = 4;
constexpr std::uint32_t kRowsOfTile = 256;  // where a document does not say
constexpr unsigned char kLastOlderVersion = 4;

// Where each tile begins: the rows are the keys of a tree, its values the tiles.
std::vector<std::pair<std::uint32_t, std::uint32_t>> tileStarts(
    const Message<TST::DataStore>& store) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> starts;
  const auto tree = store.get(TST::DataStore::rowTileTree);
  for (const auto& node : tree.all(TST::TableRBTree::nodes))
    starts.emplace_back(node.get(TST::TableRBTree_Node::value),
                        node.get(TST::TableRBTree_Node::key));
  std::ranges::sort(starts);
  return starts;
}

}  // namespace

StoredRow::StoredRow(const Message<TST::TileRowInfo>& info) {
  using Info = TST::TileRowInfo;
  offsets_ = info.get(Info::cell_offsets);
  if (!offsets_.empty()) {
    cells_ = info.get(Info::cell_storage_buffer);
    const bool wide =
        info.as<newer::TST_TileRowInfo>().get(newer::TST_TileRowInfo::has_wide_offsets);
    unit_ = wide ? kWideUnit : 1;
    return;
  }
  // Newer documents put four bytes that are no cells here.
  cells_ = info.get(Info::cell_storage_buffer_pre_bnc);
  older_ = true;
  if (cells_.empty() || static_cast<unsigned char>(cells_.front()) > kLastOlderVersion) return;
  offsets_ = info.get(Info::cell_offsets_pre_bnc);
}

std::optional<std::size_t> StoredRow::offsetAt(std::size_t column) const {
  const auto word = valueAt<std::uint16_t>(offsets_, column * 2);
  return word == kNoCell ? std::nullopt : std::optional(word * unit_);
}

std::size_t StoredRow::nextPresent(std::size_t column) const {
  const std::size_t end = offsets_.size() / 2;
  while (column < end && valueAt<std::uint16_t>(offsets_, column * 2) == kNoCell) ++column;
  return column;
}

std::optional<StoredCell> StoredRow::next() {
  const std::size_t end = offsets_.size() / 2;
  const std::size_t column = nextPresent(column_);
  if (column >= end) return std::nullopt;
  column_ = nextPresent(column + 1);
  const std::size_t first = *offsetAt(column);
  const std::size_t last = column_ < end ? *offsetAt(column_) : cells_.size();
  StoredCell cell{static_cast<std::uint32_t>(column), {}};
  if (first < last && last <= cells_.size()) cell.bytes = cells_.substr(first, last - first);
  return cell;
}

RowIndex::RowIndex(Reading& reading, const Message<TST::DataStore>& store) {
  const auto starts = tileStarts(store);
  const auto storage = store.get(TST::DataStore::tiles);
  const std::uint64_t rowsOfTile =
      storage.as<newer::TST_TileStorage>().get(newer::TST_TileStorage::tile_size, kRowsOfTile);
  std::set<std::uint64_t> read;  // a tile that is referred to again has no other rows
  for (const auto& tile : storage.all(TST::TileStorage::tiles)) {
    const auto reference = tile.get(TST::TileStorage_Tile::tile);
    if (!read.insert(reference.get(TSP::Reference::identifier)).second) continue;
    const auto id = tile.get(TST::TileStorage_Tile::tileid);
    const auto start = std::ranges::lower_bound(starts, id, {}, [](auto& s) { return s.first; });
    const bool known = start != starts.end() && start->first == id;
    addTile(known ? start->second : id * rowsOfTile, reading.get<TST::Tile>(reference));
  }
  sortAndKeepFirst(rows_, &Entry::row);
}

void RowIndex::addTile(std::uint64_t firstRow, const Message<TST::Tile>& tile) {
  for (const auto& info : tile.all(TST::Tile::rowInfos)) {
    const std::uint64_t row = firstRow + info.get(TST::TileRowInfo::tile_row_index);
    if (row <= std::numeric_limits<std::uint32_t>::max())
      rows_.push_back({static_cast<std::uint32_t>(row), info});
  }
}

StoredRow RowIndex::find(std::uint32_t row) const {
  // Rows without a gap before them are found at once.
  if (row < rows_.size() && rows_[row].row == row) return StoredRow(rows_[row].info);
  const auto entry = std::ranges::lower_bound(rows_, row, {}, &Entry::row);
  const bool found = entry != rows_.end() && entry->row == row;
  return found ? StoredRow(entry->info) : StoredRow();
}

std::vector<std::uint32_t> RowIndex::rows() const {
  std::vector<std::uint32_t> rows;
  rows.reserve(rows_.size());
  for (const Entry& entry : rows_) rows.push_back(entry.row);
  return rows;
}

}  // namespace dorvex::content
