// The writer of CSV, over any document: every table reads back, with as many fields in
// every row, and one table by itself with the very texts of its cells.
//
// Input: one word, the options; the choices that make the document.
#include <string>
#include <vector>

#include "content/support/odd_document.h"
#include "content/support/valid_output.h"
#include "fuzz_choices.h"
#include "fuzz_input.h"
#include "writers/plain.h"
#include "writers/shown_table.h"
#include "written_document.h"

namespace dorvex::fuzz {
namespace {

using namespace content;
using Rows = std::vector<std::vector<std::string>>;

Rows shownRows(const Table& table) {
  ShownTable shown(table, {.text = true, .formula = false, .rich = true});
  Rows rows;
  ShownRow row;
  while (shown.next(row)) {
    auto& texts = rows.emplace_back();
    for (std::size_t column = 0; column < shown.columns(); ++column) {
      const ShownCell& cell = row.cells[column];
      if (row.kind != ShownRow::Kind::kCells) {
        texts.push_back(cleanText(shown.textOf(*row.line, column)));
      } else {
        texts.push_back(cell.cell == nullptr || cell.covered ? "" : shownText(*cell.cell));
      }
    }
  }
  return rows;
}

void checkOneTable(FuzzInput input) {
  FuzzChoices choices(input);
  Sheet sheet;
  sheet.blocks.emplace_back().what = testing::oddTable(choices);
  std::string csv;
  WriterOptions options;
  options.format = Format::kCsv;
  const auto writer = makeWriter(options, {[&](std::string_view bytes) { csv += bytes; }, {}, {}});
  writer->document(Application::kNumbers, {});
  writer->sheet(sheet);
  writer->end({});
  Rows expected = shownRows(std::get<Table>(sheet.blocks.front().what));
  // A row without columns is a line with an empty field.
  for (auto& row : expected)
    if (row.empty()) row.emplace_back();
  requireNoFlaw(testing::flawOfCsv(csv, ','), csv);
  require(testing::csvRows(csv, ',') == expected, "CSV reads back as what is shown");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex;
  fuzz::FuzzInput input(data, size);
  fuzz::checkOneTable(input);
  const fuzz::Rendering rendering = fuzz::writtenDocument(input, content::Format::kCsv);
  for (const std::string& file : rendering.files) {
    fuzz::requireNoFlaw(testing::flawOfText(file, "\r\n\t"), file);
    fuzz::requireNoFlaw(testing::flawOfCsv(file, rendering.options.csv.delimiter), file);
  }
  return 0;
}
