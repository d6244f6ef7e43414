#include "tables/table_rows.h"

#include <algorithm>

namespace dorvex::content {
namespace {

// As it is made, but with what its strings have allocated.
void clear(Cell& cell) {
  cell.type = CellType::kNone;
  cell.number = 0;
  for (std::string* text : {&cell.decimal, &cell.value, &cell.text, &cell.formula,
                            &cell.formulaProblem, &cell.format, &cell.currency})
    text->clear();
  cell.paragraphs.clear();
  cell.control = Control::kNone;
  cell.comments.clear();
}

}  // namespace

StoredRows::StoredRows(Reading& reading, const Message<TST::DataStore>& store, const Table& table,
                       std::uint64_t model)
    : index_(reading, store),
      reader_(reading, store, table.name, model),
      rows_(table.rows),
      columns_(table.columns),
      merges_(table.merges) {
  findCovered();
}

// Only rows with a storage can have cells where a merge lies. In a sound table no more
// merges lie in a row than it has columns.
void StoredRows::findCovered() {
  if (merges_.empty()) return;
  std::vector<const Merge*> active;
  auto next = merges_.begin();
  for (const std::uint32_t row : index_.rows()) {
    std::erase_if(active, [&](const Merge* merge) { return merge->row + merge->rows <= row; });
    for (; next != merges_.end() && next->row <= row; ++next) {
      if (next->row + next->rows > row && active.size() < columns_) active.push_back(&*next);
    }
    for (const Merge* merge : active) {
      const std::uint32_t first = merge->row == row ? 1 : 0;
      covered_.push_back({row, merge->column + first, merge->columns - first});
    }
  }
}

void StoredRows::read(std::uint32_t index, const CellParts& parts, std::vector<Cell>& cells) {
  if (index >= rows_) return cells.clear();
  cells.resize(columns_);
  std::ranges::for_each(cells, clear);
  readStored(index, parts, cells);
  if (!merges_.empty()) applyMerges(index, cells);
}

void StoredRows::readStored(std::uint32_t row, const CellParts& parts, std::vector<Cell>& cells) {
  StoredRow stored = index_.find(row);
  while (const auto cell = stored.next()) {
    if (cell->column >= columns_) return;
    const Place place{row, cell->column};
    const auto record =
        stored.isOlder() ? readOlderCell(cell->bytes) : readCurrentCell(cell->bytes);
    if (record) {
      reader_.read(*record, parts, place, cells[cell->column]);
    } else {
      reader_.addProblem("it cannot be read", place);
    }
  }
}

void StoredRows::applyMerges(std::uint32_t row, std::vector<Cell>& cells) const {
  for (auto covered = std::ranges::lower_bound(covered_, row, {}, &Covered::row);
       covered != covered_.end() && covered->row == row; ++covered)
    std::for_each_n(cells.begin() + covered->column, covered->columns, clear);
  for (auto merge = std::ranges::lower_bound(merges_, row, {}, &Merge::row);
       merge != merges_.end() && merge->row == row; ++merge) {
    Cell& cell = cells[merge->column];
    if (cell.type == CellType::kNone) cell.type = CellType::kEmpty;
  }
}

}  // namespace dorvex::content
