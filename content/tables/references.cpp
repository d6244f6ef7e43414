#include "tables/references.h"

#include <limits>

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

}  // namespace

std::optional<const NamedTable*> References::tableOf(const Message<Node>& node) const {
  using Extra = TSCE::ASTNodeArrayArchive_ASTCrossTableReferenceExtraInfoArchive;
  const auto extra = node.find(Node::AST_cross_table_reference_extra_info);
  if (!extra) return host_.table;
  const NamedTable* table = directory_.byOwner(Uid(extra->get(Extra::table_id)));
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

std::optional<std::string> References::cell(const Message<Node>& node) const {
  const auto table = tableOf(node);
  if (!table) return std::nullopt;
  const auto columnCoordinate = node.find(Node::AST_column);
  const auto rowCoordinate = node.find(Node::AST_row);
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
  std::string text = qualifier(*table) + *columnText + *rowText;
  // A row without columns looks like a number.
  if (columnText->empty() && rowText->find_first_not_of("$0123456789") == rowText->npos)
    text += ':' + *rowText;
  return text;
}

std::optional<std::string> References::tract(const Message<Node>& node) const {
  const auto table = tableOf(node);
  if (!table) return std::nullopt;
  const auto tract = node.get(Node::AST_colon_tract);
  const auto sticky = node.get(Node::AST_sticky_bits);

  // Each end is relative or absolute as its mark says; where both ends are the same,
  // they are the begin and end of one range.
  const auto linesOf = [](const std::optional<Ends>& relative, const std::optional<Ends>& absolute,
                          bool firstAbsolute, bool lastAbsolute,
                          std::int64_t all) -> std::optional<Lines> {
    const auto& first = firstAbsolute && absolute ? absolute : relative ? relative : absolute;
    const auto& last = lastAbsolute && absolute ? absolute : relative ? relative : absolute;
    if (!first || !last) return std::nullopt;
    Lines lines{{first->first, firstAbsolute}, {last->last, lastAbsolute}, false};
    lines.all = first->first == all || last->last == all;
    return lines;
  };
  const auto columns = linesOf(
      endsOf<RelativeRange>(tract.all(Tract::relative_column), host_.place.column, kAllColumns),
      endsOf<AbsoluteRange>(tract.all(Tract::absolute_column), 0, kAllColumns),
      sticky.get(StickyBits::begin_column_is_absolute),
      sticky.get(StickyBits::end_column_is_absolute), kAllColumns);
  const auto rows =
      linesOf(endsOf<RelativeRange>(tract.all(Tract::relative_row), host_.place.row, kAllRows),
              endsOf<AbsoluteRange>(tract.all(Tract::absolute_row), 0, kAllRows),
              sticky.get(StickyBits::begin_row_is_absolute),
              sticky.get(StickyBits::end_row_is_absolute), kAllRows);
  const bool noColumns = !columns || columns->all;
  const bool noRows = !rows || rows->all;
  if (noColumns && noRows) return std::nullopt;

  const auto corner = [&](bool last) -> std::optional<std::string> {
    std::optional<std::string> columnText = "";
    std::optional<std::string> rowText = "";
    if (!noColumns) columnText = column(*table, last ? columns->last : columns->first, noRows);
    if (!noRows) rowText = row(*table, last ? rows->last : rows->first, noColumns);
    if (!columnText || !rowText) return std::nullopt;
    return *columnText + *rowText;
  };
  const auto first = corner(false);
  const auto last = corner(true);
  if (!first || !last) return std::nullopt;
  const bool single = *first == *last && !noColumns;
  return qualifier(*table) + *first + (single ? "" : ":" + *last);
}

std::optional<std::string> References::cellByUid(const Message<Node>& node) const {
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
  return qualifier(*table) + *columnText + *rowText;
}

}  // namespace dorvex::content
