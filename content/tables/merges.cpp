#include "tables/merges.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "TSCEArchives.h"

namespace dorvex::content {
namespace {

using Nodes = TSCE::ASTNodeArrayArchive;
using Node = TSCE::ASTNodeArrayArchive_ASTNodeArchive;
using NodeType = TSCE::ASTNodeArrayArchive_ASTNodeType;
using Tract = TSCE::ASTNodeArrayArchive_ASTColonTractArchive;
using Range = TSCE::ASTNodeArrayArchive_ASTColonTractArchive_ASTColonTractAbsoluteRangeArchive;

struct Corner {
  std::uint32_t row, column;
};

// From one corner to the opposite one, both included.
Merge between(const Corner& one, const Corner& other) {
  const auto [top, bottom] = std::minmax(one.row, other.row);
  const auto [left, right] = std::minmax(one.column, other.column);
  return {top, left, bottom - top + 1, right - left + 1};
}

std::pair<std::uint32_t, std::uint32_t> bounds(const Message<Range>& range) {
  const std::uint32_t begin = range.get(Range::range_begin);
  return {begin, range.get(Range::range_end, begin)};
}

std::optional<Merge> fromTract(const Message<Tract>& tract) {
  const auto row = tract.all(Tract::absolute_row).first();
  const auto column = tract.all(Tract::absolute_column).first();
  if (!row || !column) return std::nullopt;
  const auto [top, bottom] = bounds(*row);
  const auto [left, right] = bounds(*column);
  return between({top, left}, {bottom, right});
}

Corner cornerOf(const Message<Node>& node) {
  using Row = TSCE::ASTNodeArrayArchive_ASTRowCoordinateArchive;
  using Column = TSCE::ASTNodeArrayArchive_ASTColumnCoordinateArchive;
  return {static_cast<std::uint32_t>(node.get(Node::AST_row).get(Row::row)),
          static_cast<std::uint32_t>(node.get(Node::AST_column).get(Column::column))};
}

// A merge is the formula of its range.
std::optional<Merge> fromFormula(const Message<Nodes>& nodes) {
  std::optional<Corner> first;
  for (const auto& node : nodes.all(Nodes::AST_node)) {
    const auto type = node.get(Node::AST_node_type);
    if (type == NodeType::COLON_TRACT_NODE) return fromTract(node.get(Node::AST_colon_tract));
    if (type != NodeType::CELL_REFERENCE_NODE) return std::nullopt;
    if (first) return between(*first, cornerOf(node));
    first = cornerOf(node);
  }
  return std::nullopt;
}

std::vector<Merge> fromFormulas(const Message<TST::TableModelArchive>& model) {
  using Store = TST::FormulaStoreArchive;
  std::vector<Merge> merges;
  const auto store =
      model.get(TST::TableModelArchive::merge_owner).get(TST::MergeOwnerArchive::formula_store);
  for (const auto& pair : store.all(Store::formulas)) {
    const auto formula = pair.get(TST::FormulaStoreArchive_FormulaStorePair::formula);
    if (const auto merge = fromFormula(formula.get(TSCE::FormulaArchive::AST_node_array)))
      merges.push_back(*merge);
  }
  return merges;
}

std::vector<Merge> fromRegions(Reading& reading, const Message<TST::TableModelArchive>& model) {
  using Map = TST::MergeRegionMapArchive;
  std::vector<Merge> merges;
  const auto store = model.get(TST::TableModelArchive::base_data_store);
  const auto map = reading.get<Map>(store.get(TST::DataStore::merge_region_map));
  for (const auto& range : map.all(Map::cell_range)) {
    // Both words have the column's part high and the row's part low.
    const auto origin = range.get(TST::CellRange::origin).get(TST::CellID::packedData);
    const auto size = range.get(TST::CellRange::size).get(TST::TableSize::packedData);
    merges.push_back({origin & 0xFFFF, origin >> 16, size & 0xFFFF, size >> 16});
  }
  return merges;
}

}  // namespace

std::vector<Merge> readMerges(Reading& reading, const Message<TST::TableModelArchive>& model,
                              std::uint32_t rows, std::uint32_t columns) {
  std::vector<Merge> merges = fromFormulas(model);
  if (merges.empty()) merges = fromRegions(reading, model);
  const auto isOutside = [&](const Merge& merge) {
    return merge.row >= rows || merge.column >= columns || merge.rows == 0 || merge.columns == 0;
  };
  std::erase_if(merges, isOutside);
  for (Merge& merge : merges) {
    merge.rows = std::min(merge.rows, rows - merge.row);
    merge.columns = std::min(merge.columns, columns - merge.column);
  }
  std::erase_if(merges, [](const Merge& merge) { return merge.rows == 1 && merge.columns == 1; });
  std::ranges::sort(merges, {}, [](const Merge& m) { return std::tuple(m.row, m.column); });
  return merges;
}

}  // namespace dorvex::content
