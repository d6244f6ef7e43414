// References of formulas to cells, ranges, whole rows and columns, as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TSCEArchives.h"
#include "tables/cell_reader.h"
#include "tables/table_directory.h"

namespace dorvex::content {

// What a formula refers to from the cell that holds it.
struct Host {
  const NamedTable* table = nullptr;  // null where it is not known
  Place place;
};

// A reference as a formula has it.
struct ReferenceText {
  std::string table;  // what stands before the place in another table; else empty
  std::string place;
};

class References {
 public:
  using Node = TSCE::ASTNodeArrayArchive_ASTNodeArchive;
  using OtherTable = TSCE::ASTNodeArrayArchive_ASTCrossTableReferenceExtraInfoArchive;

  References(TableDirectory& directory, const Host& host) : directory_(directory), host_(host) {}

  // A cell, a whole column or a whole row. Nothing where the node does not tell which.
  std::optional<ReferenceText> cell(const Message<Node>& node) const;
  // A range that is one node.
  std::optional<ReferenceText> tract(const Message<Node>& node) const;
  // A cell that is named by the identifiers of its row and column.
  std::optional<ReferenceText> cellByUid(const Message<Node>& node) const;

 private:
  // A row or column number with its mark.
  struct Line {
    std::int64_t number = 0;
    bool absolute = false;
  };
  struct Lines {
    Line first, last;
    bool all = false;
  };

  // The table that a node means; nothing for one that is not known.
  std::optional<const NamedTable*> tableOf(const Message<Node>& node) const;
  std::optional<const NamedTable*> tableOf(const std::optional<Message<OtherTable>>& other) const;
  std::string qualifier(const NamedTable* table) const;
  std::optional<std::string> column(const NamedTable* table, const Line& line, bool whole) const;
  std::optional<std::string> row(const NamedTable* table, const Line& line, bool whole) const;
  // One end of a range; without a column it is a whole row, without a row a whole column.
  std::optional<std::string> corner(const NamedTable* table, const Line* columnLine,
                                    const Line* rowLine) const;

  TableDirectory& directory_;
  Host host_;
};

}  // namespace dorvex::content
