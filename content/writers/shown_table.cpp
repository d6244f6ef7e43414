#include "writers/shown_table.h"

#include <algorithm>

namespace dorvex::content {
namespace {

bool contains(const std::vector<std::uint32_t>& ascending, std::uint32_t value) {
  return std::ranges::binary_search(ascending, value);
}

std::uint32_t endOf(std::uint32_t first, std::uint32_t count, std::uint32_t most) {
  return count > most - std::min(first, most) ? most : first + count;
}

}  // namespace

ShownTable::ShownTable(const Table& table, const CellParts& parts) : table_(table), parts_(parts) {
  const auto add = [this](std::uint32_t column) {
    if (column >= table_.columns || contains(table_.hiddenColumns, column)) return;
    columns_.push_back(column);
    if (column < table_.headerColumns && headerColumns_ + 1 == columns_.size()) ++headerColumns_;
  };
  if (table.shownColumns.empty()) {
    for (std::uint32_t column = 0; column < table.columns; ++column) add(column);
  } else {
    for (const ShownLine& line : table.shownColumns)
      if (line.model) add(*line.model);
  }
}

bool ShownTable::headersAreApart() const {
  return std::ranges::all_of(table_.merges, [this](const Merge& merge) {
    return merge.row >= table_.headerRows ||
           endOf(merge.row, merge.rows, table_.rows) <= table_.headerRows;
  });
}

bool ShownTable::isHidden(std::uint32_t model) const { return contains(table_.hiddenRows, model); }

bool ShownTable::nextLine(const ShownLine*& line, std::uint32_t& model) {
  if (table_.shownRows.empty()) {
    while (position_ < table_.rows && isHidden(position_)) ++position_;
    model = position_;
    return position_++ < table_.rows;
  }
  while (position_ < table_.shownRows.size()) {
    line = &table_.shownRows[position_++];
    if (!line->model) return true;
    model = *line->model;
    if (model < table_.rows && !isHidden(model)) return true;
  }
  return false;
}

bool ShownTable::next(ShownRow& row) {
  const ShownLine* line = nullptr;
  std::uint32_t model = 0;
  if (!nextLine(line, model)) return false;
  row.cells.assign(columns_.size(), {});
  row.line = line;
  row.header = row.footer = false;
  row.kind = ShownRow::Kind::kCells;
  if (line != nullptr && !line->model) {
    row.kind = line->summary.empty() ? ShownRow::Kind::kGroup : ShownRow::Kind::kSummary;
    return true;
  }
  row.header = model < table_.headerRows;
  row.footer = table_.rows - model <= table_.footerRows;
  readCells(model, row);
  return true;
}

std::string ShownTable::textOf(const ShownLine& line, std::size_t column) const {
  if (line.summary.empty()) return column == 0 ? line.group : "";
  return columns_[column] < line.summary.size() ? line.summary[columns_[column]] : "";
}

void ShownTable::readCells(std::uint32_t model, ShownRow& row) {
  table_.cells->read(model, parts_, cells_);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::uint32_t column = columns_[i];
    if (column < cells_.size() && cells_[column].type != CellType::kNone)
      row.cells[i].cell = &cells_[column];
  }
  // Merges belong to the order of the model; where rows are shown in another, there are
  // none.
  if (!table_.shownRows.empty()) return;
  beginMerges(model);
  placeMerges(model, row);
}

// A merge whose first row is hidden shows its cell all the same.
void ShownTable::beginMerges(std::uint32_t model) {
  std::erase_if(active_, [&](const auto& entry) {
    const Merge& merge = *entry.second.merge;
    return endOf(merge.row, merge.rows, table_.rows) <= model;
  });
  std::vector<Cell> cells;
  for (; nextMerge_ < table_.merges.size() && table_.merges[nextMerge_].row <= model;
       ++nextMerge_) {
    const Merge& merge = table_.merges[nextMerge_];
    if (endOf(merge.row, merge.rows, table_.rows) <= model || merge.column >= table_.columns)
      continue;
    Cell cell;
    if (merge.row == model) {
      if (merge.column < cells_.size()) cell = cells_[merge.column];
    } else {
      table_.cells->read(merge.row, parts_, cells);
      if (merge.column < cells.size()) cell = cells[merge.column];
    }
    active_.insert_or_assign(merge.column, Active{&merge, std::move(cell)});
  }
}

void ShownTable::placeMerges(std::uint32_t model, ShownRow& row) {
  for (const auto& [column, active] : active_) place(active, model, row);
}

void ShownTable::place(const Active& active, std::uint32_t model, ShownRow& row) {
  const Merge& merge = *active.merge;
  const std::uint32_t end = endOf(merge.column, merge.columns, table_.columns);
  // Columns in another order than the model's would tear it apart.
  const auto first = std::ranges::lower_bound(columns_, merge.column);
  const auto last = std::ranges::lower_bound(columns_, end);
  if (!table_.shownColumns.empty() || first == last) return;
  const bool begins = merge.row == model || shownRowsFrom(merge.row, model) == 0;
  for (auto column = first; column != last; ++column) {
    ShownCell& cell = row.cells[static_cast<std::size_t>(column - columns_.begin())];
    cell = {active.cell.type == CellType::kNone ? nullptr : &active.cell, true, 1, 1};
  }
  if (!begins) return;
  ShownCell& cell = row.cells[static_cast<std::size_t>(first - columns_.begin())];
  cell.covered = false;
  cell.columns = static_cast<std::uint32_t>(last - first);
  cell.rows = shownRowsFrom(model, endOf(merge.row, merge.rows, table_.rows));
}

std::uint32_t ShownTable::shownRowsFrom(std::uint32_t first, std::uint32_t end) const {
  const auto hiddenBefore = [this](std::uint32_t row) {
    return static_cast<std::uint32_t>(std::ranges::lower_bound(table_.hiddenRows, row) -
                                      table_.hiddenRows.begin());
  };
  return end - first - (hiddenBefore(end) - hiddenBefore(first));
}

}  // namespace dorvex::content
