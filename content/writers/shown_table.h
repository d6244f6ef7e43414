// A table as it is shown: in the shown order, without hidden rows and columns, and with
// merged cells at their places. It is read a row at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::content {

struct ShownCell {
  const Cell* cell = nullptr;  // of the merge where one covers the place; null for nothing
  bool covered = false;        // by a merge that begins elsewhere
  // How many shown rows and columns a merge that begins here takes.
  std::uint32_t rows = 1, columns = 1;
};

struct ShownRow {
  enum class Kind { kCells, kGroup, kSummary };
  Kind kind = Kind::kCells;
  bool header = false;
  bool footer = false;
  std::vector<ShownCell> cells;     // one for each shown column
  const ShownLine* line = nullptr;  // of a group or a summary; its cells show nothing
};

class ShownTable {
 public:
  // The table must outlive it.
  ShownTable(const Table& table, const CellParts& parts);

  std::size_t columns() const { return columns_.size(); }
  // The first columns that are headers.
  std::size_t headerColumns() const { return headerColumns_; }
  // Whether a merge takes both rows that are headers and rows that are not.
  bool headersAreApart() const;

  // Sets row to the next one, valid until the next call; false at the end.
  bool next(ShownRow& row);
  // The text of a cell of a row that is a group or a summary.
  std::string textOf(const ShownLine& line, std::size_t column) const;

 private:
  // A merge that reaches to a row further on, with the cell that it shows.
  struct Active {
    const Merge* merge;
    Cell cell;
  };

  bool nextLine(const ShownLine*& line, std::uint32_t& model);
  void readCells(std::uint32_t model, ShownRow& row);
  void beginMerges(std::uint32_t model);
  void placeMerges(std::uint32_t model, ShownRow& row);
  void place(const Active& active, std::uint32_t model, ShownRow& row);
  bool isHidden(std::uint32_t model) const;
  std::uint32_t shownRowsFrom(std::uint32_t first, std::uint32_t end) const;

  const Table& table_;
  CellParts parts_;
  std::vector<std::uint32_t> columns_;  // of the model, in the shown order
  std::size_t headerColumns_ = 0;
  std::uint32_t position_ = 0;              // the next line
  std::size_t nextMerge_ = 0;               // of those of the table
  std::map<std::uint32_t, Active> active_;  // by their first column
  std::vector<Cell> cells_;                 // of the current row
};

}  // namespace dorvex::content
