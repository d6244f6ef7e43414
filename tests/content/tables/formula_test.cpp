#include "tables/formula.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TNArchives.h"
#include "TSTArchives.h"
#include "cells.h"
#include "content/support/objects.h"
#include "newer.h"

namespace dorvex::content::formula_test {
namespace {

using Nodes = TSCE::ASTNodeArrayArchive;
using Node = TSCE::ASTNodeArrayArchive_ASTNodeArchive;
using Type = TSCE::ASTNodeArrayArchive_ASTNodeType;
using testing::bitsOf;
using testing::Wire;

std::uint64_t zigzag(std::int64_t value) {
  return static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63);
}

Wire node(Type type) {
  return Wire().varint(Node::AST_node_type.number, static_cast<std::uint64_t>(type));
}
Wire number(double value) {
  return node(Type::NUMBER_NODE).fixed64(Node::AST_number_node_number.number, bitsOf(value));
}
Wire text(std::string_view value) {
  return node(Type::STRING_NODE).bytes(Node::AST_string_node_string.number, value);
}
// So many of a unit, as a person typed it in units from the largest to the smallest.
Wire literalDuration(double count, unsigned unit, unsigned smallest) {
  return node(Type::DURATION_NODE)
      .fixed64(Node::AST_duration_node_unitNum.number, bitsOf(count))
      .varint(Node::AST_duration_node_unit.number, unit)
      .varint(Node::AST_duration_node_duration_unit_largest.number, unit)
      .varint(Node::AST_duration_node_duration_unit_smallest.number, smallest);
}
Wire function(unsigned index, unsigned arguments) {
  return node(Type::FUNCTION_NODE)
      .varint(Node::AST_function_node_index.number, index)
      .varint(Node::AST_function_node_numArgs.number, arguments);
}
Wire coordinate(std::int64_t value, bool absolute) {
  return Wire().varint(1, zigzag(value)).varint(2, absolute ? 1 : 0);
}
Wire cell(std::int64_t column, std::int64_t row, bool absoluteColumn = false,
          bool absoluteRow = false) {
  return node(Type::CELL_REFERENCE_NODE)
      .message(Node::AST_column.number, coordinate(column, absoluteColumn))
      .message(Node::AST_row.number, coordinate(row, absoluteRow));
}
Wire column(std::int64_t offset) {
  return node(Type::CELL_REFERENCE_NODE)
      .message(Node::AST_column.number, coordinate(offset, false));
}
Wire row(std::int64_t offset) {
  return node(Type::CELL_REFERENCE_NODE).message(Node::AST_row.number, coordinate(offset, false));
}
Wire list(const std::vector<Wire>& nodes) {
  Wire wire;
  for (const Wire& one : nodes) wire.message(Nodes::AST_node.number, one);
  return wire;
}

// The formula of a cell B3 of a table that is not known.
FormulaText decoded(const std::vector<Wire>& nodes) {
  testing::Objects objects({});
  const Wire formula = Wire().message(TSCE::FormulaArchive::AST_node_array.number, list(nodes));
  return formulaText(objects.reading(), Message<TSCE::FormulaArchive>(formula.str()),
                     {nullptr, {2, 1}});
}

struct Row {
  const char* document;
  std::vector<Wire> nodes;
  const char* text;
};

TEST(Formula, IsWrittenWithItsOperators) {
  const Row rows[] = {
      {"issue-121", {cell(0, -2), number(31), node(Type::ADDITION_NODE)}, "B1+31"},
      {"testNumbers2013", {number(3), number(1), node(Type::SUBTRACTION_NODE)}, "3-1"},
      {"libetonyek__pages5-extra-dir",
       {cell(0, 0), cell(1, 0), node(Type::MULTIPLICATION_NODE)},
       "B3×C3"},
      {"test-8", {number(0), number(0), node(Type::DIVISION_NODE)}, "0÷0"},
      {"none", {number(2), number(8), node(Type::POWER_NODE)}, "2^8"},
      {"test-3",
       {text("COLUMN"), function(22, 0), node(Type::CONCATENATION_NODE)},
       "\"COLUMN\"&COLUMN()"},
      {"test-new-formulas", {number(1), number(2), node(Type::GREATER_THAN_NODE)}, "1>2"},
      {"none", {number(1), number(2), node(Type::GREATER_THAN_OR_EQUAL_TO_NODE)}, "1≥2"},
      {"none", {number(1), number(2), node(Type::LESS_THAN_NODE)}, "1<2"},
      {"none", {number(1), number(2), node(Type::LESS_THAN_OR_EQUAL_TO_NODE)}, "1≤2"},
      {"test-new-formulas", {number(1), number(2), node(Type::EQUAL_TO_NODE)}, "1=2"},
      {"none", {number(1), number(2), node(Type::NOT_EQUAL_TO_NODE)}, "1≠2"},
      {"issue-121", {cell(0, 0), node(Type::NEGATION_NODE)}, "-B3"},
      {"none", {cell(0, 0), node(Type::PLUS_SIGN_NODE)}, "+B3"},
      {"none", {number(5), node(Type::PERCENT_NODE)}, "5%"},
      {"none", {cell(0, 0), cell(1, 1), node(Type::COLON_NODE)}, "B3:C4"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(decoded(row.nodes).text, row.text) << row.document;
    EXPECT_EQ(decoded(row.nodes).problem, "") << row.document;
  }
}

TEST(Formula, HasTheBracketsThatItNeedsAndNoMore) {
  const auto plus = node(Type::ADDITION_NODE);
  const auto minus = node(Type::SUBTRACTION_NODE);
  const auto times = node(Type::MULTIPLICATION_NODE);
  const Row rows[] = {
      {"none", {number(1), number(2), plus, number(3), times}, "(1+2)×3"},
      {"none", {number(1), number(2), number(3), times, plus}, "1+2×3"},
      {"none", {number(1), number(2), number(3), minus, minus}, "1-(2-3)"},
      {"none", {number(1), number(2), minus, number(3), minus}, "1-2-3"},
      {"none", {number(1), number(2), plus, node(Type::NEGATION_NODE)}, "-(1+2)"},
      {"none", {number(1), number(2), plus, node(Type::PERCENT_NODE)}, "(1+2)%"},
      {"none", {number(5), node(Type::NEGATION_NODE), node(Type::PERCENT_NODE)}, "-5%"},
      {"none", {number(5), node(Type::PERCENT_NODE), node(Type::NEGATION_NODE)}, "-5%"},
      // Brackets that a person typed are a list of one.
      {"none",
       {number(1), node(Type::LIST_NODE).varint(Node::AST_list_node_numArgs.number, 1), number(2),
        times},
       "(1)×2"},
  };
  for (const Row& row : rows) EXPECT_EQ(decoded(row.nodes).text, row.text) << row.document;
}

TEST(Formula, HasItsOperandsInEachForm) {
  using Newer = newer::TSCE_ASTNodeArchive;
  const Wire decimal = number(12)
                           .varint(Newer::decimal_low.number, 125)
                           .varint(Newer::decimal_high.number, std::uint64_t{6175} << 49);
  const Row rows[] = {
      {"custom-format-stress", {decimal}, "12.5"},
      {"testNumbers2013", {number(3)}, "3"},
      {"none", {node(Type::BOOLEAN_NODE).varint(Node::AST_boolean_node_boolean.number, 1)}, "TRUE"},
      {"none", {node(Type::TOKEN_NODE).varint(Node::AST_token_node_boolean.number, 0)}, "FALSE"},
      {"none", {text("say \"no\"")}, "\"say \"\"no\"\"\""},
      {"none",
       {node(Type::DATE_NODE).fixed64(Node::AST_date_node_dateNum.number, bitsOf(0))},
       "DATE(2001,1,1)"},
      {"none",
       {node(Type::DATE_NODE).fixed64(Node::AST_date_node_dateNum.number, bitsOf(3661))},
       "DATE(2001,1,1)+DURATION(,,1,1,1)"},
      {"none",
       {node(Type::DURATION_NODE)
            .fixed64(Node::AST_duration_node_unitNum.number, bitsOf(1.5))
            .varint(Node::AST_duration_node_unit.number, 4)},
       "1h 30m"},
      {"none", {literalDuration(90, 8, 8)}, "90m"},
      {"none", {literalDuration(1.5, 8, 8)}, "1m 30s"},
      {"date_formats",
       {node(Type::EMPTY_ARGUMENT_NODE), node(Type::EMPTY_ARGUMENT_NODE), cell(0, 0),
        function(212, 3)},
       "DURATION(,,B3)"},
      {"test-new-formulas",
       {number(1), number(2), number(3), number(4),
        node(Type::ARRAY_NODE)
            .varint(Node::AST_array_node_numCol.number, 2)
            .varint(Node::AST_array_node_numRow.number, 2)},
       "{1,2;3,4}"},
      {"issue-121", {node(Type::REFERENCE_ERROR_WITH_UIDS)}, "#REF!"},
      {"none", {node(Type::REFERENCE_ERROR_NODE)}, "#REF!"},
      {"none",
       {number(1), node(Type::UNKNOWN_FUNCTION_NODE)
                       .bytes(Node::AST_unknown_function_node_string.number, "FOO")
                       .varint(Node::AST_unknown_function_node_numArgs.number, 1)},
       "FOO(1)"},
      {"test-new-formulas",
       {node(Type::BEGIN_EMBEDDED_NODE_ARRAY), number(1), node(Type::END_THUNK_NODE)},
       "1"},
      {"none",
       {node(Type::THUNK_NODE).message(Node::AST_thunk_node_array.number, list({number(1)}))},
       "1"},
      {"test-new-formulas",
       {number(1), node(Type::APPEND_WHITESPACE_NODE).bytes(Node::AST_whitespace.number, " ")},
       "1 "},
      {"none",
       {number(1),
        node(Type::LET_NODE)
            .bytes(Node::AST_let_identifier.number, "x")
            .message(Node::AST_let_e2.number,
                     list({node(Type::LET_VAR_NODE).bytes(Node::AST_let_identifier.number, "x"),
                           number(2), node(Type::ADDITION_NODE)}))},
       "LET(x,1,x+2)"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(decoded(row.nodes).text, row.text) << row.document;
    EXPECT_EQ(decoded(row.nodes).problem, "") << row.document;
  }
}

Wire sticky(bool firstRow, bool firstColumn, bool lastRow, bool lastColumn) {
  return Wire()
      .varint(1, firstRow ? 1 : 0)
      .varint(2, firstColumn ? 1 : 0)
      .varint(3, lastRow ? 1 : 0)
      .varint(4, lastColumn ? 1 : 0);
}
Wire range(std::int64_t first, std::int64_t last) {
  return Wire()
      .varint(1, static_cast<std::uint64_t>(first))
      .varint(2, static_cast<std::uint64_t>(last));
}
Wire tract(const Wire& ranges, const Wire& marks) {
  return node(Type::COLON_TRACT_NODE)
      .message(Node::AST_colon_tract.number, ranges)
      .message(Node::AST_sticky_bits.number, marks);
}

TEST(Formula, RefersToCellsAndRanges) {
  const Row rows[] = {
      {"issue-54", {cell(0, 0)}, "B3"},
      {"testNumbers2013", {cell(5, 0, true, true)}, "$F$1"},
      {"none", {cell(30, 0)}, "AF3"},
      {"none", {cell(5, 0, true, false)}, "$F3"},
      {"test-xref-coverage", {column(-1)}, "A"},
      {"none", {row(1)}, "4:4"},
      {"issue-102-v15.1",
       {tract(Wire().message(1, range(0, 8)).message(2, range(-2, -1)),
              sticky(false, false, false, false))},
       "B1:J2"},
      {"issue-54",
       {tract(Wire()
                  .message(1, Wire().varint(1, static_cast<std::uint64_t>(-1)))
                  .message(2, range(-2, 0))
                  .message(3, Wire().varint(1, 3)),
              sticky(false, true, false, false))},
       "$D1:A3"},
      {"none",
       {tract(Wire().message(3, range(0, 2)).message(4, range(0x7FFFFFFF, 0x7FFFFFFF)),
              sticky(false, true, false, true))},
       "$A:$C"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(decoded(row.nodes).text, row.text) << row.document;
    EXPECT_EQ(decoded(row.nodes).problem, "") << row.document;
  }
}

// A document of sheets with tables of those names; the identifiers of the tables count
// up from 1, those of their models from 101.
std::vector<testing::Archive> documentOf(
    const std::vector<std::pair<std::string, std::vector<std::string>>>& sheets) {
  using Sheet = TN::SheetArchive;
  using Model = TST::TableModelArchive;
  std::vector<testing::Archive> archives;
  Wire document;
  std::uint64_t tables = 0;
  for (std::uint64_t s = 0; s < sheets.size(); ++s) {
    Wire sheet = Wire().bytes(Sheet::name.number, sheets[s].first);
    for (const std::string& name : sheets[s].second) {
      const std::uint64_t number = ++tables;
      sheet.message(Sheet::drawable_infos.number, testing::reference(200 + number));
      archives.push_back(testing::object(200 + number, 6000,
                                         Wire().message(TST::TableInfoArchive::tableModel.number,
                                                        testing::reference(100 + number))));
      archives.push_back(testing::object(
          100 + number, 6001,
          Wire()
              .bytes(Model::table_id.number,
                     "0" + std::to_string(number) + "000000-0000-0000-0000-000000000000")
              .bytes(Model::table_name.number, name)
              .varint(Model::number_of_rows.number, 9)
              .varint(Model::number_of_columns.number, 9)));
    }
    archives.push_back(testing::object(50 + s, 2, sheet));
    document.message(TN::DocumentArchive::sheets.number, testing::reference(50 + s));
  }
  archives.push_back(testing::object(1, 1, document));
  return archives;
}

// A node that refers to the table of that number.
Wire inTable(Wire reference, unsigned number) {
  return reference.message(Node::AST_cross_table_reference_extra_info.number,
                           Wire().message(1, Wire().varint(2, number)));
}

TEST(Formula, NamesOtherTablesAsShortAsTheyCanBeTold) {
  testing::Objects objects(documentOf({{"Home", {"Here", "Twice"}}, {"Away", {"There", "Twice"}}}),
                           Application::kNumbers);
  const auto shown = [&](const std::vector<Wire>& nodes) {
    const Wire formula = Wire().message(TSCE::FormulaArchive::AST_node_array.number, list(nodes));
    const Host host{objects.reading().keep<TableDirectory>().byModel(101), {2, 1}};
    return formulaText(objects.reading(), Message<TSCE::FormulaArchive>(formula.str()), host).text;
  };
  const Wire colon = node(Type::COLON_NODE);
  EXPECT_EQ(shown({inTable(cell(0, 0), 1)}), "B3");
  EXPECT_EQ(shown({inTable(cell(0, 0), 2)}), "Twice::B3");
  EXPECT_EQ(shown({inTable(cell(0, 0), 3)}), "There::B3");
  EXPECT_EQ(shown({inTable(cell(0, 0), 4)}), "Away::Twice::B3");
  EXPECT_EQ(shown({inTable(cell(0, 0), 3), inTable(cell(1, 1), 3), colon}), "There::B3:C4")
      << "a range names its table once";
  EXPECT_EQ(shown({inTable(cell(0, 0), 3), inTable(cell(1, 1), 2), colon}), "There::B3:Twice::C4");
  EXPECT_EQ(shown({inTable(row(1), 3)}), "There::4:4");
}

TEST(Formula, NamesNoSheetForTheSakeOfATableThatIsOnNone) {
  auto archives = documentOf({{"Home", {"Here"}}, {"Away", {"There"}}});
  archives.push_back(
      testing::object(150, 6001, Wire().bytes(TST::TableModelArchive::table_name.number, "There")));
  testing::Objects objects(archives, Application::kNumbers);
  const Wire formula =
      Wire().message(TSCE::FormulaArchive::AST_node_array.number, list({inTable(cell(0, 0), 2)}));
  const Host host{objects.reading().keep<TableDirectory>().byModel(101), {2, 1}};
  EXPECT_EQ(formulaText(objects.reading(), Message<TSCE::FormulaArchive>(formula.str()), host).text,
            "There::B3");
}

TEST(Formula, IsAProblemWhereItCannotBeTold) {
  const std::vector<std::vector<Wire>> all = {
      {},
      {node(Type::ADDITION_NODE)},
      {number(1), number(2)},
      {function(168, 4'000'000'000)},
      {number(1), function(169, 1)},
      {node(Type::CATEGORY_REF_NODE)},
      {node(Type::LOCAL_CELL_REFERENCE_NODE)},
      {node(static_cast<Type>(99))},
      {cell(-5, 0)},
      {node(Type::CELL_REFERENCE_NODE)},
      {node(Type::NUMBER_NODE)},
      {number(1), node(Type::ARRAY_NODE)
                      .varint(Node::AST_array_node_numCol.number, 0xFFFFFFFF)
                      .varint(Node::AST_array_node_numRow.number, 0xFFFFFFFF)},
      {cell(0, 0).message(Node::AST_cross_table_reference_extra_info.number,
                          Wire().message(1, Wire().varint(2, 7)))},
  };
  for (std::size_t i = 0; i < all.size(); ++i) {
    const FormulaText formula = decoded(all[i]);
    EXPECT_EQ(formula.text, "") << i;
    EXPECT_NE(formula.problem, "") << i;
  }
}

TEST(Formula, EndsWhereItIsNestedWithoutEnd) {
  Wire nested = number(1);
  for (int i = 0; i < 1000; ++i)
    nested = node(Type::THUNK_NODE).message(Node::AST_thunk_node_array.number, list({nested}));
  EXPECT_NE(decoded({nested}).problem, "");
}

TEST(QuotedName, QuotesWhatLooksLikeAnOperator) {
  EXPECT_EQ(quotedName("Column X & Y"), "'Column X & Y'");  // test-xref-coverage
  EXPECT_EQ(quotedName("Column 'A'"), "Column '''A'''");    // test-xref-coverage
  EXPECT_EQ(quotedName("Sheet 2"), "Sheet 2");              // issue-54
}

}  // namespace
}  // namespace dorvex::content::formula_test
