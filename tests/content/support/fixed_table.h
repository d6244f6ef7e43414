// Tables of fixed cells, for tests of writers.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::testing {

using CellRows = std::vector<std::vector<content::Cell>>;

class FixedRows final : public content::TableRows {
 public:
  explicit FixedRows(CellRows rows) : rows_(std::move(rows)) {}
  void read(std::uint32_t index, const content::CellParts&,
            std::vector<content::Cell>& cells) override {
    cells = index < rows_.size() ? rows_[index] : std::vector<content::Cell>();
  }

 private:
  CellRows rows_;
};

inline content::Cell textCell(std::string value) {
  content::Cell cell;
  cell.type = content::CellType::kText;
  cell.value = value;
  cell.text = std::move(value);
  return cell;
}

inline content::Cell numberCell(double value, std::string shown) {
  content::Cell cell;
  cell.type = content::CellType::kNumber;
  cell.number = value;
  cell.text = std::move(shown);
  return cell;
}

// A table whose first row is a header.
inline content::Table fixedTable(std::string name, const CellRows& rows) {
  content::Table table;
  table.name = std::move(name);
  table.nameShown = true;
  table.rows = static_cast<std::uint32_t>(rows.size());
  table.columns = rows.empty() ? 0 : static_cast<std::uint32_t>(rows.front().size());
  table.headerRows = 1;
  table.cells = std::make_shared<FixedRows>(rows);
  return table;
}

}  // namespace dorvex::testing
