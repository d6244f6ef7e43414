// The sample of formats and formulas holds each kind of format and each node of formulas,
// and shows them as the files beside it say. scripts/render-samples renders them anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "content/support/files.h"
#include "writers/options.h"

namespace dorvex::testing::kinds_test {
namespace {

namespace fs = std::filesystem;
using namespace content;
using nlohmann::json;

const fs::path kSamples = DORVEX_SAMPLES;

std::string rendered(const WriterOptions& options) {
  std::string output;
  const auto writer =
      makeWriter(options, {[&](std::string_view bytes) { output += bytes; }, {}, {}});
  MemoryPackage package = packageAt(kSamples / "formats.numbers");
  EXPECT_EQ(read(package, *writer), Outcome::kRead);
  return output;
}

std::string csvOf(const std::string& table, CellValues values) {
  WriterOptions options;
  options.format = Format::kCsv;
  options.csv.values = values;
  options.csv.table = table;
  options.csv.sheet = table;
  return rendered(options);
}

// The cells of all tables, with the text of the first cell of their row.
void eachCell(const std::function<void(const std::string&, const json&)>& visit) {
  WriterOptions options;
  options.format = Format::kJson;
  const json document = json::parse(rendered(options));
  for (const json& sheet : document.at("sheets"))
    for (const json& block : sheet.at("blocks"))
      for (const json& row : block.at("cells"))
        for (const json& cell : row)
          if (!cell.is_null()) visit(row.at(0).at("text"), cell);
}

TEST(SampleOfFormats, ShowsWhatIsKept) {
  EXPECT_EQ(csvOf("Formats", CellValues::kShown), readFile(kSamples / "formats-shown.csv"));
  EXPECT_EQ(csvOf("Formulas", CellValues::kFormula), readFile(kSamples / "formats-formulas.csv"));
}

struct Kind {
  unsigned number;  // as documents store it
  const char* name;
  const char* row;
  const char* shown;
};

// clang-format off
const Kind kKinds[] = {
    {1, "boolean", "boolean", "TRUE"},
    {256, "number", "number with separators", "1,234,567.89"},
    {257, "currency", "currency", "£1,234.50"},
    {258, "percentage", "percentage", "20%"},
    {259, "scientific", "scientific", "1.23E+04"},
    {260, "text", "text", "as it is"},
    {261, "date", "date in full", "Sunday, 17 May 2026 14:35:12"},
    {262, "fraction", "fraction in quarters", "2/4"},
    {263, "checkbox", "checkbox", "TRUE"},
    {264, "stepper", "stepper", "50%"},
    {265, "slider", "slider", "7.0"},
    {266, "popup", "pop-up menu", "Darjeeling"},
    {267, "rating", "rating", "★★★"},
    {268, "duration", "duration with colons", "1:0:01:01.001"},
    {269, "base", "base 16", "FF"},
    {270, "custom", "custom number", "1,234.50 kg"},
    {271, "custom", "custom text", "«Assam»"},
    {272, "custom", "custom date", "Q2 2026"},
    {274, "custom", "custom currency", "£ 12.50"},
};
// clang-format on

TEST(SampleOfFormats, HoldsEachKindOfFormat) {
  std::set<unsigned> stored;
  const auto collect = [&](const auto& self, const json& at) -> void {
    if (at.is_object() && at.contains("format_type"))
      stored.insert(at.at("format_type").get<unsigned>());
    if (at.is_structured())
      for (const json& each : at) self(self, each);
  };
  collect(collect, json::parse(readFile(kSamples / "formats.json")));
  std::set<std::vector<std::string>> shown;
  eachCell([&](const std::string& row, const json& cell) {
    if (cell.contains("format")) shown.insert({row, cell["format"]["kind"], cell["text"]});
  });
  for (const Kind& kind : kKinds) {
    EXPECT_TRUE(stored.contains(kind.number)) << kind.number;
    EXPECT_TRUE(shown.contains({kind.row, kind.name, kind.shown})) << kind.row;
  }
  EXPECT_EQ(stored.size(), std::size(kKinds)) << "a kind that the table lacks";
}

// The names of the nodes that the archive schema has.
std::set<std::string> nodesOfSchema() {
  std::istringstream lines(readFile(
      kSamples.parent_path() / "Core/src/Tools/formats/vniwork13/messages" / "TSCEArchives.proto"));
  std::set<std::string> names;
  bool within = false;
  for (std::string line; std::getline(lines, line);) {
    if (within && line.find('}') != line.npos) break;
    const auto first = line.find_first_not_of(' ');
    if (within && first != line.npos)
      names.insert(line.substr(first, line.find(' ', first) - first));
    within = within || line.find("enum ASTNodeType {") != line.npos;
  }
  return names;
}

// A node stands in the row of its name, or within the formula of another row.
TEST(SampleOfFormats, HoldsEachNodeOfFormulas) {
  std::set<std::string> stored;
  const auto collect = [&](const auto& self, const json& at) -> void {
    if (at.is_object() && at.contains("AST_node_type"))
      stored.insert(at.at("AST_node_type").get<std::string>());
    if (at.is_structured())
      for (const json& each : at) self(self, each);
  };
  collect(collect, json::parse(readFile(kSamples / "formats.json")));
  EXPECT_GT(stored.size(), 40U);
  EXPECT_EQ(stored, nodesOfSchema());
}

TEST(SampleOfFormats, TellsWhichFormulasItCannotTell) {
  std::set<std::string> untold;
  eachCell([&](const std::string& row, const json& cell) {
    if (cell.contains("formula_problem")) untold.insert(row);
  });
  EXPECT_EQ(untold, (std::set<std::string>{"CATEGORY_REF_NODE", "CROSS_TABLE_CELL_REFERENCE_NODE",
                                           "LOCAL_CELL_REFERENCE_NODE"}));
}

}  // namespace
}  // namespace dorvex::testing::kinds_test
