#include "writers/json_blocks.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "content/support/fixed_table.h"
#include "content/support/writing.h"

namespace dorvex::content::json_blocks_test {
namespace {

using nlohmann::json;
using namespace testing;

json jsonOf(const Block& block) {
  return json::parse(writtenBody(Format::kJson, {block}))["body"][0];
}

TEST(JsonBlocks, GiveRunsOnlyWhereSomethingIsMarked) {
  EXPECT_EQ(jsonOf(paragraph("a")), json::parse(R"({"type": "paragraph", "role": "other",
                                                    "text": "a"})"));
  const json runs = jsonOf(noted("a", "1", "†"))["runs"];
  EXPECT_EQ(runs, json::parse(R"([{"text": "a"}, {"text": "", "footnote": "1"}])"));
}

TEST(JsonBlocks, GiveEachTypeOfCellItsValue) {
  Cell exact = numberCell(0.1, "0.1");
  exact.decimal = "0.1000000000000000055";
  Cell yes;
  yes.type = CellType::kBool;
  yes.number = 1;
  yes.text = "TRUE";
  Cell empty;
  empty.type = CellType::kEmpty;
  const json cells = jsonOf(blockOf(fixedTable("T", {{exact, yes, empty, Cell{}}})))["cells"][0];
  EXPECT_EQ(cells[0], json::parse(R"({"type": "number", "value": 0.1,
                                      "decimal": "0.1000000000000000055", "text": "0.1"})"));
  EXPECT_EQ(cells[1], json::parse(R"({"type": "bool", "value": true, "text": "TRUE"})"));
  EXPECT_EQ(cells[2], json::parse(R"({"type": "empty", "value": null, "text": ""})"));
  EXPECT_EQ(cells[3], nullptr);
}

TEST(JsonBlocks, GiveGapsAndDatesOfCharts) {
  const Chart chart{"line_2d", "", {"a"}, {{"s", {1.5, std::monostate{}, "2024-01-02"}}}, {}};
  EXPECT_EQ(jsonOf(blockOf(chart)),
            json::parse(R"({"type": "chart", "chart_type": "line_2d", "categories": ["a"],
                            "series": [{"name": "s", "values": [1.5, null, "2024-01-02"]}]})"));
}

TEST(JsonBlocks, PutOneInTheOther) {
  Block box = blockOf(Box{BoxKind::kPlaceholder, PlaceholderKind::kBody, {paragraph("a")}});
  box.alt = "why";
  const json found = jsonOf(box);
  EXPECT_EQ(found["type"], "placeholder");
  EXPECT_EQ(found["kind"], "body");
  EXPECT_EQ(found["blocks"][0]["text"], "a");
  EXPECT_EQ(found["alt"], "why");
}

}  // namespace
}  // namespace dorvex::content::json_blocks_test
