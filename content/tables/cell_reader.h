// Makes cells as people see them of cells as they are stored.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TSCEArchives.h"
#include "TSTArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"
#include "tables/cell_record.h"
#include "tables/data_list.h"
#include "tables/format.h"

namespace dorvex::content {

// The place of a cell in its table.
struct Place {
  std::uint32_t row = 0;
  std::uint32_t column = 0;
};

// A list of a data store, read when a cell refers to it first.
class LazyList {
 public:
  explicit LazyList(const Message<TSP::Reference>& reference) : reference_(reference) {}
  const DataList& get(Reading& reading);

 private:
  Message<TSP::Reference> reference_;
  std::optional<DataList> list_;
};

// The formats of a list, each compiled when a cell has it first.
class FormatList {
 public:
  // Formats of older documents refer to customs, the custom formats of their table.
  explicit FormatList(const Message<TSP::Reference>& reference,
                      const Message<TSP::Reference>& customs = {})
      : list_(reference), customs_(customs) {}
  // The format of that key, or null.
  const CellFormat* find(std::uint32_t key, Reading& reading, Formatting& formatting);

 private:
  CustomArchive customOf(const FormatArchive& format, Reading& reading);

  LazyList list_;
  LazyList customs_;
  std::vector<std::unique_ptr<CellFormat>> formats_;
};

class CellReader {
 public:
  // The cells of a data store; tableName says in problems where they are. The model is
  // the identifier of the table's, from which references in formulas count.
  CellReader(Reading& reading, const Message<TST::DataStore>& store, std::string tableName,
             std::uint64_t model);

  // Sets the cell, which is empty, to what the record says. What cannot be read leaves
  // it so, and is counted.
  void read(const CellRecord& record, const CellParts& parts, const Place& place, Cell& cell);

  // Counts a cell that cannot be read.
  void addProblem(std::string_view problem, const Place& place);

 private:
  using Entry = DataList::Entry;

  const Entry* find(LazyList& list, std::optional<std::uint32_t> key, std::string_view what,
                    const Place& place);
  const CellFormat& formatOf(const CellRecord& record, const Place& place);
  void readValue(const CellRecord& record, const CellFormat& format, const CellParts& parts,
                 const Place& place, Cell& cell);
  void readNumber(const CellRecord& record, const CellFormat& format, const CellParts& parts,
                  const Place& place, Cell& cell);
  void readChoice(std::uint32_t list, double number, const Place& place, Cell& cell);
  void setChosen(const Message<TSCE::CellValueArchive>& item, Cell& cell);
  void readText(const CellRecord& record, const CellFormat& format, const CellParts& parts,
                const Place& place, Cell& cell);
  void readRich(const CellRecord& record, const CellFormat& format, const CellParts& parts,
                const Place& place, Cell& cell);
  void readFormula(const CellRecord& record, const Place& place, Cell& cell);
  void readControl(const CellRecord& record, const CellFormat& format, const Place& place,
                   Cell& cell);
  void readComment(const CellRecord& record, const Place& place, Cell& cell);

  Reading& reading_;
  Formatting& formatting_;
  std::string tableName_;
  std::uint64_t model_;
  LazyList strings_, richTexts_, formulas_, controls_, comments_, choices_;
  FormatList formats_, olderFormats_;
  CellFormat plain_;
};

// The name of a column: A, B, ..., Z, AA.
std::string columnName(std::uint32_t column);

}  // namespace dorvex::content
