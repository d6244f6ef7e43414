// The rows of a table, read as they are asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TSTArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"
#include "tables/cell_reader.h"
#include "tables/row_index.h"

namespace dorvex::content {

class StoredRows : public TableRows {
 public:
  StoredRows(Reading& reading, const Message<TST::DataStore>& store, const Table& table,
             std::uint64_t model = 0);

  void read(std::uint32_t index, const CellParts& parts, std::vector<Cell>& cells) override;

 private:
  // Neighbouring cells of a row that a merge covers.
  struct Covered {
    std::uint32_t row, column, columns;
  };

  void findCovered();
  void readStored(std::uint32_t row, const CellParts& parts, std::vector<Cell>& cells);
  void applyMerges(std::uint32_t row, std::vector<Cell>& cells) const;

  RowIndex index_;
  CellReader reader_;
  std::uint32_t rows_, columns_;
  std::vector<Merge> merges_;
  std::vector<Covered> covered_;  // by row
};

}  // namespace dorvex::content
