#include "writers/csv_writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <variant>

#include "writers/cell_text.h"
#include "writers/file_names.h"
#include "writers/plain.h"

namespace dorvex::content {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string shortest(double value) {
  std::array<char, 32> digits;
  auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

std::string rawValue(const Cell& cell) {
  switch (cell.type) {
    case CellType::kNumber:
    case CellType::kCurrency:
    case CellType::kPercentage:
      return cell.decimal.empty() ? shortest(cell.number) : cleanText(cell.decimal);
    case CellType::kDuration:
      return shortest(cell.number);
    case CellType::kBool:
      return cell.number != 0 ? "TRUE" : "FALSE";
    case CellType::kText:
    case CellType::kDate:
      return cleanText(cell.value);
    case CellType::kRich:
      return cleanText(richValue(cell));
    case CellType::kError:
      return cleanText(cell.text);
    case CellType::kEmpty:
    case CellType::kNone:
      break;
  }
  return {};
}

// What spreadsheets take for the beginning of a formula.
bool looksLikeFormula(std::string_view value) {
  return !value.empty() && std::string_view("=+-@\t").find(value.front()) != std::string_view::npos;
}

bool isNumber(const ShownCell& cell) { return cell.cell != nullptr && standsRight(*cell.cell); }

}  // namespace

CsvWriter::CsvWriter(CsvOptions options, Receiver receiver)
    : options_(std::move(options)), receiver_(std::move(receiver)), output_(receiver_.output) {}

void CsvWriter::enterPart(std::string name) {
  part_ = std::move(name);
  ++partNumber_;
  tableNumber_ = 0;
}

void CsvWriter::slide(const Slide& slide) {
  enterPart(slide.title.value_or("Slide " + std::to_string(slide.number)));
  tablesIn(slide.blocks);
}

void CsvWriter::sheet(const Sheet& sheet) {
  enterPart(sheet.name);
  tablesIn(sheet.blocks);
}

// The body is one part, and what floats belongs to it.
void CsvWriter::body(const Block& block) {
  if (partNumber_ == 0) enterPart("");
  tableOf(block);
}

void CsvWriter::floating(const FloatingPage& page) {
  if (partNumber_ == 0) enterPart("");
  tablesIn(page.blocks);
}

void CsvWriter::tablesIn(const std::vector<Block>& blocks) {
  for (const Block& block : blocks) tableOf(block);
}

void CsvWriter::tableOf(const Block& block) {
  if (const auto* table = std::get_if<Table>(&block.what)) {
    ++tableNumber_;
    if (wants(*table)) this->table(*table);
  } else if (const auto* box = std::get_if<Box>(&block.what)) {
    tablesIn(box->blocks);
  }
}

bool CsvWriter::wantsPart() const {
  return options_.sheet.empty() || options_.sheet == part_ ||
         options_.sheet == std::to_string(partNumber_);
}

bool CsvWriter::wants(const Table& table) const {
  return wantsPart() && (options_.table.empty() || options_.table == table.name ||
                         options_.table == std::to_string(tableNumber_));
}

void CsvWriter::table(const Table& table) {
  ++written_;
  if (options_.listTables) return list(table);
  if (options_.eachTable) {
    receiver_.beginFile(fileNameFor(table));
    Output file(receiver_.fileBytes);
    write(table, file);
    file.flush();
    return;
  }
  // Nothing is written before it is known to be the only one.
  const std::string name = "\"" + part_ + "\", \"" + table.name + "\"";
  if (written_ > 1) {
    throw NoSuchTable("several tables (" + firstWritten_ + "; " + name +
                      "): choose with --sheet and --table (--list names them), or give a folder");
  }
  firstWritten_ = name;
  only_ = table;
}

void CsvWriter::list(const Table& table) {
  const std::array<std::string, 6> columns = {
      std::to_string(partNumber_), cleanText(part_),           std::to_string(tableNumber_),
      cleanText(table.name),       std::to_string(table.rows), std::to_string(table.columns)};
  if (written_ == 1) output_.put("sheet,sheet_name,table,table_name,rows,columns\r\n");
  for (const std::string& column : columns) {
    if (&column != &columns.front()) output_.put(options_.delimiter);
    put(column, output_);
  }
  output_.put(kLineEnd);
}

std::string CsvWriter::fileNameFor(const Table& table) {
  const std::string part = part_.empty() ? "" : part_ + "-";
  const std::string stem = safeFileName(part + table.name);
  std::string name = stem;
  for (unsigned number = 2; !fileNames_.insert(name).second; ++number)
    name = stem + "-" + std::to_string(number);
  return name + ".csv";
}

void CsvWriter::write(const Table& table, Output& output) {
  const CellParts parts{.text = options_.values != CellValues::kRaw,
                        .formula = options_.values == CellValues::kFormula,
                        .rich = true};
  ShownTable shown(table, parts);
  ShownRow row;
  while (shown.next(row)) {
    if (!row.header || options_.header) writeRow(shown, row, output);
  }
}

void CsvWriter::writeRow(const ShownTable& shown, const ShownRow& row, Output& output) {
  for (std::size_t column = 0; column < row.cells.size(); ++column) {
    if (column > 0) output.put(options_.delimiter);
    if (row.kind != ShownRow::Kind::kCells) {
      put(cleanText(shown.textOf(*row.line, column)), output);
      continue;
    }
    const ShownCell& cell = row.cells[column];
    const std::string value = valueOf(cell);
    const bool guarded = options_.guard && !isNumber(cell) && looksLikeFormula(value);
    put(guarded ? "'" + value : value, output);
  }
  // A line without anything would be no row.
  if (row.cells.size() == 1 && row.cells.front().cell == nullptr && row.line == nullptr)
    output.put("\"\"");
  output.put(kLineEnd);
}

std::string CsvWriter::valueOf(const ShownCell& cell) const {
  if (cell.cell == nullptr || (cell.covered && !options_.fillMerged)) return {};
  switch (options_.values) {
    case CellValues::kShown:
      return shownText(*cell.cell);
    case CellValues::kRaw:
      return rawValue(*cell.cell);
    case CellValues::kFormula:
      break;
  }
  return cell.cell->formula.empty() ? shownText(*cell.cell) : "=" + cleanText(cell.cell->formula);
}

void CsvWriter::put(std::string_view value, Output& output) const {
  const auto needsQuotes = [&](char c) {
    return c == '"' || c == '\r' || c == '\n' || c == options_.delimiter;
  };
  const bool plain = std::none_of(value.begin(), value.end(), needsQuotes) &&
                     (value.empty() || (value.front() != ' ' && value.back() != ' '));
  if (plain) return output.put(value);
  output.put('"');
  for (std::size_t quote = 0; (quote = value.find('"')) != std::string_view::npos;) {
    output.put(value.substr(0, quote + 1));
    output.put('"');
    value.remove_prefix(quote + 1);
  }
  output.put(value);
  output.put('"');
}

void CsvWriter::end(const Summary&) {
  if (only_) write(*only_, output_);
  output_.flush();
  if (written_ > 0) return;
  const bool any = options_.sheet.empty() && options_.table.empty();
  throw NoSuchTable(any ? "no table in the document" : "no such table (--list names them)");
}

}  // namespace dorvex::content
