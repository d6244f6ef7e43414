#include "tables/references.h"

#include <limits>

#include "graph/find_each.h"

namespace dorvex::content {
namespace {

using Node = References::Node;
using RowCoordinate = TSCE::ASTNodeArrayArchive_ASTRowCoordinateArchive;
using ColumnCoordinate = TSCE::ASTNodeArrayArchive_ASTColumnCoordinateArchive;
using Tract = TSCE::ASTNodeArrayArchive_ASTColonTractArchive;
using RelativeRange =
    TSCE::ASTNodeArrayArchive_ASTColonTractArchive_ASTColonTractRelativeRangeArchive;
using AbsoluteRange =
    TSCE::ASTNodeArrayArchive_ASTColonTractArchive_ASTColonTractAbsoluteRangeArchive;
using StickyBits = TSCE::ASTNodeArrayArchive_ASTStickyBits;

// What stands for the last row or column of whole columns and rows.
constexpr std::int64_t kAllRows = 0x7FFFFFFF;
constexpr std::int64_t kAllColumns = 0x7FFF;

// Rows and columns of this many and more no table has.
constexpr std::int64_t kMostLines = 10'000'000;

struct Ends {
  std::int64_t first, last;
};

template <typename Range>
std::optional<Ends> endsOf(const Values<Message<Range>, Encoding::kMessage>& ranges,
                           std::int64_t origin, std::int64_t all) {
  const auto range = ranges.first();
  if (!range) return std::nullopt;
  const std::int64_t begin = range->get(Range::range_begin);
  const std::int64_t end = range->find(Range::range_end).value_or(static_cast<std::int32_t>(begin));
  if (begin == all || end == all) return Ends{all, all};
  return Ends{begin + origin, end + origin};
}

// Each end is relative or absolute as its mark says; where both ends are the same, they
// are the begin and end of one range.
std::optional<Ends> markedEnds(const std::optional<Ends>& relative,
                               const std::optional<Ends>& absolute, bool firstAbsolute,
                               bool lastAbsolute) {
  const auto& other = relative ? relative : absolute;
  const auto& first = firstAbsolute && absolute ? absolute : other;
  const auto& last = lastAbsolute && absolute ? absolute : other;
  if (!first || !last) return std::nullopt;
  return Ends{first->first, last->last};
}

}  // namespace

std::optional<const NamedTable*> References::tableOf(const Message<Node>& node) const {
  return tableOf(node.find(Node::AST_cross_table_reference_extra_info));
}

std::optional<const NamedTable*> References::tableOf(
    const std::optional<Message<OtherTable>>& other) const {
  if (!other) return host_.table;
  const NamedTable* table = directory_.byOwner(Uid(other->get(OtherTable::table_id)));
  if (table == nullptr) return std::nullopt;
  return table;
}

std::string References::qualifier(const NamedTable* table) const {
  return table == nullptr ? std::string() : directory_.qualifier(*table, host_.table);
}

// A whole column goes by its header where that has a text.
std::optional<std::string> References::column(const NamedTable* table, const Line& line,
                                              bool whole) const {
  if (line.number < 0 || line.number >= kMostLines) return std::nullopt;
  const auto number = static_cast<std::uint32_t>(line.number);
  const std::string mark = line.absolute ? "$" : "";
  if (whole && table != nullptr) {
    const std::string_view header = directory_.columnHeader(*table, number);
    if (!header.empty()) return mark + quotedName(header);
  }
  return mark + columnName(number);
}

std::optional<std::string> References::row(const NamedTable* table, const Line& line,
                                           bool whole) const {
  if (line.number < 0 || line.number >= kMostLines) return std::nullopt;
  const std::string mark = line.absolute ? "$" : "";
  if (whole && table != nullptr) {
    const std::string_view header =
        directory_.rowHeader(*table, static_cast<std::uint32_t>(line.number));
    if (!header.empty()) return mark + quotedName(header);
  }
  return mark + std::to_string(line.number + 1);
}

std::optional<ReferenceText> References::cell(const Message<Node>& node) const {
  const auto [other, columnCoordinate, rowCoordinate] =
      findEach(node, Node::AST_cross_table_reference_extra_info, Node::AST_column, Node::AST_row);
  const auto table = tableOf(other);
  if (!table) return std::nullopt;
  std::optional<std::string> columnText = "";
  std::optional<std::string> rowText = "";
  if (columnCoordinate) {
    const bool absolute = columnCoordinate->get(ColumnCoordinate::absolute);
    const std::int64_t origin = absolute ? 0 : host_.place.column;
    columnText =
        column(*table, {columnCoordinate->get(ColumnCoordinate::column) + origin, absolute},
               !rowCoordinate);
  }
  if (rowCoordinate) {
    const bool absolute = rowCoordinate->get(RowCoordinate::absolute);
    const std::int64_t origin = absolute ? 0 : host_.place.row;
    rowText =
        row(*table, {rowCoordinate->get(RowCoordinate::row) + origin, absolute}, !columnCoordinate);
  }
  if (!columnText || !rowText || (columnText->empty() && rowText->empty())) return std::nullopt;
  ReferenceText text{qualifier(*table), *columnText + *rowText};
  // A row without columns looks like a number.
  if (columnText->empty() && rowText->find_first_not_of("$0123456789") == std::string::npos)
    text.place += ':' + *rowText;
  return text;
}

std::optional<std::string> References::corner(const NamedTable* table, const Line* columnLine,
                                              const Line* rowLine) const {
  std::optional<std::string> columnText = "";
  std::optional<std::string> rowText = "";
  if (columnLine != nullptr) columnText = column(table, *columnLine, rowLine == nullptr);
  if (rowLine != nullptr) rowText = row(table, *rowLine, columnLine == nullptr);
  if (!columnText || !rowText) return std::nullopt;
  return *columnText + *rowText;
}

std::optional<ReferenceText> References::tract(const Message<Node>& node) const {
  const auto table = tableOf(node);
  if (!table) return std::nullopt;
  const auto tract = node.get(Node::AST_colon_tract);
  const auto sticky = node.get(Node::AST_sticky_bits);

  const auto linesOf = [](const std::optional<Ends>& ends, bool firstAbsolute, bool lastAbsolute,
                          std::int64_t all) {
    std::optional<Lines> lines;
    if (ends)
      lines = {{ends->first, firstAbsolute},
               {ends->last, lastAbsolute},
               ends->first == all || ends->last == all};
    return lines;
  };
  const bool firstColumn = sticky.get(StickyBits::begin_column_is_absolute);
  const bool lastColumn = sticky.get(StickyBits::end_column_is_absolute);
  const auto columns = linesOf(
      markedEnds(
          endsOf<RelativeRange>(tract.all(Tract::relative_column), host_.place.column, kAllColumns),
          endsOf<AbsoluteRange>(tract.all(Tract::absolute_column), 0, kAllColumns), firstColumn,
          lastColumn),
      firstColumn, lastColumn, kAllColumns);
  const bool firstRow = sticky.get(StickyBits::begin_row_is_absolute);
  const bool lastRow = sticky.get(StickyBits::end_row_is_absolute);
  const auto rows = linesOf(
      markedEnds(endsOf<RelativeRange>(tract.all(Tract::relative_row), host_.place.row, kAllRows),
                 endsOf<AbsoluteRange>(tract.all(Tract::absolute_row), 0, kAllRows), firstRow,
                 lastRow),
      firstRow, lastRow, kAllRows);
  const bool noColumns = !columns || columns->all;
  const bool noRows = !rows || rows->all;
  if (noColumns && noRows) return std::nullopt;

  const auto first =
      corner(*table, noColumns ? nullptr : &columns->first, noRows ? nullptr : &rows->first);
  const auto last =
      corner(*table, noColumns ? nullptr : &columns->last, noRows ? nullptr : &rows->last);
  if (!first || !last) return std::nullopt;
  const bool single = *first == *last && !noColumns;
  return ReferenceText{qualifier(*table), *first + (single ? "" : ":" + *last)};
}

std::optional<ReferenceText> References::cellByUid(const Message<Node>& node) const {
  using Coordinate = TSCE::ASTNodeArrayArchive_ASTUidCoordinateArchive;
  const auto table = tableOf(node);
  const auto coordinate = node.find(Node::AST_uid_coordinate);
  if (!table || *table == nullptr || !coordinate) return std::nullopt;
  const UidMap& uids = directory_.uids(**table);
  const auto columnPlace = uids.columns.placeOf(Uid(coordinate->get(Coordinate::column_uid)));
  const auto rowPlace = uids.rows.placeOf(Uid(coordinate->get(Coordinate::row_uid)));
  if (!columnPlace || !rowPlace) return std::nullopt;
  const auto columnText =
      column(*table, {*columnPlace, coordinate->get(Coordinate::column_absolute)}, false);
  const auto rowText = row(*table, {*rowPlace, coordinate->get(Coordinate::row_absolute)}, false);
  if (!columnText || !rowText) return std::nullopt;
  return ReferenceText{qualifier(*table), *columnText + *rowText};
}

}  // namespace dorvex::content
