#include "writers/markdown_writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <variant>

#include "writers/display_width.h"
#include "writers/html.h"
#include "writers/json_emitter.h"
#include "writers/plain.h"

namespace dorvex::content {
namespace {

constexpr unsigned kLargestNumber = 999'999'999;  // Markdown takes nine digits
constexpr std::uint64_t kMostGridCells = 10'000;

// The number in a label such as "3." or "(3)"; 0 for none.
unsigned numberIn(const std::string& label) {
  const std::size_t first = label.find_first_of("0123456789");
  if (first == std::string::npos) return 0;
  unsigned number = 0;
  std::from_chars(label.data() + first, label.data() + label.size(), number);
  return std::min(number, kLargestNumber);
}

std::string quoted(std::string_view text) {
  std::string out;
  Output output([&out](std::string_view bytes) { out += bytes; });
  JsonEmitter(output).string(text);
  output.flush();
  return out;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t from = 0;
  for (std::size_t end = 0; (end = text.find('\n', from)) != std::string::npos; from = end + 1)
    lines.push_back(text.substr(from, end - from));
  lines.push_back(text.substr(from));
  return lines;
}

std::string codeBlock(const char* language, const std::string& text) {
  std::string fence = "```";
  while (text.find(fence) != std::string::npos) fence += '`';
  return fence + language + "\n" + text + "\n" + fence;
}

}  // namespace

std::string MarkdownWriter::escaped(std::string_view text, MarkdownPlace place) const {
  return markdownEscaped(text, place, options().pandoc);
}

// Each line with the indent, but the first where something stands for it.
void MarkdownWriter::indented(const std::string& lines) {
  for (const std::string& line : linesOf(lines)) {
    if (!first_.empty()) {
      output_.put(std::exchange(first_, {}));
    } else if (!line.empty()) {
      output_.put(indent_);
    }
    output_.put(line);
    output_.put('\n');
  }
}

// A block of its own, behind an empty line.
void MarkdownWriter::block(std::string text) {
  const bool afterList = !lists_.empty();
  lists_.clear();
  if (std::exchange(any_, true)) output_.put('\n');
  // Between a list and an indented block of a note nothing else tells them apart.
  if (afterList && !indent_.empty()) indented("<!-- -->\n");
  indented(text);
}

void MarkdownWriter::heading(unsigned level, const std::string& text) {
  block(std::string(level, '#') + " " + text);
}

void MarkdownWriter::putBeginning(const Metadata& metadata) {
  if (!options().frontMatter) return;
  output_.put("---\n");
  const auto field = [this](const char* key, const std::string& value) {
    if (!value.empty()) output_.put(std::string(key) + ": " + quoted(value) + "\n");
  };
  const auto list = [this](const char* key, const std::vector<std::string>& values) {
    if (values.empty()) return;
    output_.put(std::string(key) + ":\n");
    for (const std::string& value : values) output_.put("  - " + quoted(value) + "\n");
  };
  constexpr std::array<const char*, 3> kKinds = {"keynote", "pages", "numbers"};
  field("kind", kKinds[static_cast<std::size_t>(application())]);
  field("lang", metadata.language);
  field("locale", metadata.locale);
  field("template", metadata.templateName);
  field("created", metadata.created);
  field("document_id", metadata.documentId);
  list("authors", metadata.authors);
  output_.put("---\n");
  any_ = true;
}

void MarkdownWriter::putEnd() { output_.flush(); }

void MarkdownWriter::beginSlide(const Slide& slide, const Paragraph* title) {
  block("<!-- Slide number: " + std::to_string(slide.number) + (slide.skipped ? " (skipped)" : "") +
        " -->");
  any_ = false;
  if (title != nullptr) heading(1, markdownInline(*title, MarkdownPlace::kHeading, options()));
  any_ = true;
}

void MarkdownWriter::beginNotes() {
  if (options().pandoc) return block("::: notes");
  block("### Notes:");
  any_ = false;
}

void MarkdownWriter::endNotes() {
  if (options().pandoc) block(":::");
  any_ = true;
}

void MarkdownWriter::beginSheet(const Sheet& sheet) {
  if (sheet.hidden) block("<!-- Hidden sheet -->");
  if (!sheet.name.empty()) heading(2, escaped(sheet.name, MarkdownPlace::kHeading));
}

void MarkdownWriter::put(const Paragraph& paragraph) {
  if (const unsigned level = headingLevel(paragraph); level > 0) {
    const std::string text = markdownInline(paragraph, MarkdownPlace::kHeading, options());
    if (!text.empty()) heading(level, text);
  } else if (paragraph.list) {
    putItem(paragraph);
  } else {
    const std::string text = markdownInline(paragraph, MarkdownPlace::kBlock, options());
    if (text.find_first_not_of(" \\\n") != std::string::npos) block(text);
  }
}

// Levels that are passed over are lists of one item each in the same line.
std::string MarkdownWriter::marksFor(const ListMark& mark) {
  const std::size_t depth = std::min(mark.level, kDeepestList) + 1;
  const bool numbered = mark.kind == ListKind::kNumber;
  if (lists_.size() > depth) lists_.resize(depth);
  if (lists_.size() == depth && lists_.back().numbered != numbered) lists_.pop_back();
  const bool continues = lists_.size() == depth;
  std::string marks;
  for (std::size_t level = 0; level + (continues ? 1 : 0) < lists_.size(); ++level)
    marks.append(lists_[level].width, ' ');
  while (lists_.size() + 1 < depth) {
    lists_.push_back({});
    marks += "- ";
  }
  if (!continues) lists_.push_back({numbered, 0, 2});
  OpenList& list = lists_.back();
  if (!numbered) return marks + "- ";
  const unsigned stated = numberIn(mark.label);
  list.number = stated > 0 ? stated : std::min(list.number + 1, kLargestNumber);
  const std::string own = std::to_string(list.number) + ". ";
  list.width = own.size();
  return marks + own;
}

void MarkdownWriter::putItem(const Paragraph& paragraph) {
  const bool begins = lists_.empty();
  if (begins && std::exchange(any_, true)) output_.put('\n');
  const std::string marks = marksFor(*paragraph.list);
  const std::string hanging(marks.size(), ' ');
  std::string text = markdownInline(paragraph, MarkdownPlace::kBlock, options());
  for (std::size_t feed = 0; (feed = text.find('\n', feed)) != std::string::npos;
       feed += 1 + hanging.size())
    text.insert(feed + 1, hanging);
  indented(marks + text);
}

// --- Tables ---

std::string MarkdownWriter::cellText(const Cell& cell) const {
  if (cell.paragraphs.empty()) return escaped(shownText(cell), MarkdownPlace::kCell);
  std::string text;
  for (const Paragraph& paragraph : cell.paragraphs) {
    if (!text.empty()) text += "<br>";
    // Pandoc would take them for text of the cell.
    if (paragraph.list && !paragraph.list->label.empty() && !options().pandoc)
      text += escaped(paragraph.list->label, MarkdownPlace::kCell) + " ";
    text += markdownInline(paragraph, MarkdownPlace::kCell, options());
  }
  return text;
}

std::string MarkdownWriter::cellText(const ShownTable& shown, const ShownRow& row,
                                     std::size_t column) const {
  if (row.kind != ShownRow::Kind::kCells)
    return escaped(shown.textOf(*row.line, column), MarkdownPlace::kCell);
  const Cell* cell = row.cells[column].cell;
  return cell != nullptr ? cellText(*cell) : "";
}

void MarkdownWriter::pipeRow(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + (cell.empty() ? "|" : " |");
  indented(line);
}

void MarkdownWriter::put(const Table& table) {
  const bool named =
      !table.name.empty() && (table.nameShown || application() == Application::kNumbers);
  if (named) heading(3, escaped(table.name, MarkdownPlace::kHeading));
  if (options().htmlTables) {
    block("");
    putHtmlTable(table, options(), output_);
    output_.put('\n');
  } else if (options().pandoc && needsGrid(table)) {
    gridTable(table);
  } else {
    pipeTable(table);
  }
  if (!table.caption.empty()) putCaption(table.caption);
}

// The first row of values tells which columns stand to the right.
void MarkdownWriter::pipeTable(const Table& table) {
  ShownTable shown(table, {.text = true, .formula = false, .rich = true});
  if (shown.columns() == 0) return;
  const auto textsOf = [&](const ShownRow& row) {
    std::vector<std::string> texts;
    for (std::size_t column = 0; column < shown.columns(); ++column)
      texts.push_back(cellText(shown, row, column));
    return texts;
  };
  ShownRow row;
  if (!shown.next(row)) return;
  if (std::exchange(any_, true)) output_.put('\n');
  lists_.clear();
  std::vector<std::string> header(shown.columns());
  bool more = true;
  if (row.header) {
    header = textsOf(row);
    more = shown.next(row);
  }
  std::vector<std::string> rule(shown.columns(), "---");
  for (std::size_t column = 0; more && column < shown.columns(); ++column) {
    const Cell* cell = row.cells[column].cell;
    if (cell != nullptr && standsRight(*cell)) rule[column] = "---:";
  }
  pipeRow(header);
  pipeRow(rule);
  for (; more; more = shown.next(row)) pipeRow(textsOf(row));
}

// A pipe table has one line for each row. Grid tables are measured before they are
// written, so that only smaller ones are.
bool MarkdownWriter::needsGrid(const Table& table) const {
  if (std::uint64_t{table.rows} * table.columns > kMostGridCells) return false;
  ShownTable shown(table, {.text = true, .formula = false, .rich = true});
  ShownRow row;
  while (shown.next(row)) {
    for (const ShownCell& cell : row.cells) {
      if (cell.cell == nullptr) continue;
      if (cell.cell->paragraphs.size() > 1 || shownText(*cell.cell).find('\n') != std::string::npos)
        return true;
    }
  }
  return false;
}

namespace {

using GridRow = std::vector<std::vector<std::string>>;  // of cells of lines

std::vector<std::string> gridCell(std::string text) {
  for (std::size_t at = 0; (at = text.find("<br>", at)) != std::string::npos;)
    text.replace(at, 4, "\\\n");
  return linesOf(text);
}

std::string gridRule(const std::vector<std::size_t>& widths, char line) {
  std::string rule = "+";
  for (const std::size_t width : widths) rule += std::string(width + 2, line) + "+";
  return rule;
}

std::string gridLines(const GridRow& row, const std::vector<std::size_t>& widths) {
  std::size_t height = 1;
  for (const auto& cell : row) height = std::max(height, cell.size());
  std::string lines;
  for (std::size_t line = 0; line < height; ++line) {
    lines += "|";
    for (std::size_t column = 0; column < widths.size(); ++column) {
      const auto& cell = row[column];
      lines += " " + padded(line < cell.size() ? cell[line] : "", widths[column], false) + " |";
    }
    lines += "\n";
  }
  return lines;
}

}  // namespace

void MarkdownWriter::gridTable(const Table& table) {
  ShownTable shown(table, {.text = true, .formula = false, .rich = true});
  std::vector<GridRow> rows;
  std::vector<std::size_t> widths(shown.columns(), 3);
  bool header = false;
  ShownRow row;
  while (shown.next(row)) {
    if (rows.empty()) header = row.header;
    GridRow& cells = rows.emplace_back();
    for (std::size_t column = 0; column < shown.columns(); ++column) {
      cells.push_back(gridCell(cellText(shown, row, column)));
      for (const std::string& line : cells.back())
        widths[column] = std::max(widths[column], displayWidth(line));
    }
  }
  if (rows.empty() || widths.empty()) return;
  std::string grid = gridRule(widths, '-');
  for (std::size_t index = 0; index < rows.size(); ++index)
    grid +=
        "\n" + gridLines(rows[index], widths) + gridRule(widths, header && index == 0 ? '=' : '-');
  block(grid);
}

// --- Other drawables ---

void MarkdownWriter::put(const Chart& chart) {
  heading(3, chart.title.empty() ? "Chart" : escaped(chart.title, MarkdownPlace::kHeading));
  if (std::exchange(any_, true)) output_.put('\n');
  std::vector<std::string> cells = {""};
  std::size_t rows = chart.categories.size();
  for (const ChartSeries& series : chart.series) {
    cells.push_back(escaped(series.name, MarkdownPlace::kCell));
    rows = std::max(rows, series.values.size());
  }
  pipeRow(cells);
  std::vector<std::string> rule(cells.size(), "---:");
  rule.front() = "---";
  pipeRow(rule);
  for (std::size_t row = 0; row < rows; ++row) {
    cells = {row < chart.categories.size() ? escaped(chart.categories[row], MarkdownPlace::kCell)
                                           : ""};
    for (const ChartSeries& series : chart.series)
      cells.push_back(row < series.values.size()
                          ? escaped(valueText(series.values[row]), MarkdownPlace::kCell)
                          : "");
    pipeRow(cells);
  }
}

void MarkdownWriter::put(const Equation& equation) {
  const std::string source = cleanText(equation.source);
  if (source.empty()) return;
  if (equation.notation == Notation::kMathml) return block(codeBlock("xml", source));
  const bool plain = source.find('$') == std::string::npos &&
                     source.find("\n\n") == std::string::npos && !isspace(source.front()) &&
                     !isspace(source.back());
  block(plain ? "$$" + source + "$$" : codeBlock("math", source));
}

void MarkdownWriter::put(const Media& media, const std::string& alt, const std::string& link) {
  if (link.empty()) {
    const std::string text = escaped(alt, MarkdownPlace::kBlock);
    if (!text.empty()) block(text);
  } else {
    const std::string text = escaped(alt, MarkdownPlace::kHeading);
    const char* mark = media.kind == MediaKind::kImage ? "!" : "";
    block(mark + ("[" + text + "](" + markdownTarget(link) + ")"));
  }
}

void MarkdownWriter::putCaption(const std::string& text) {
  const std::string caption = escaped(text, MarkdownPlace::kBlock);
  if (!caption.empty()) block(caption);
}

void MarkdownWriter::putLink(const std::string& url) {
  block("[" + escaped(url, MarkdownPlace::kHeading) + "](" + markdownTarget(url) + ")");
}

void MarkdownWriter::putFootnote(const Footnote& footnote) {
  lists_.clear();
  if (std::exchange(any_, true)) output_.put('\n');
  any_ = false;
  indent_ = "    ";
  first_ = "[^" + markdownLabel(footnote.id) + "]: ";
  visit(footnote.blocks);
  if (!first_.empty()) indented("");
  lists_.clear();
  indent_.clear();
  any_ = true;
}

// Among the text these lines would be taken for it.
void MarkdownWriter::putRunning(Running place, PageClass pages, const HeaderText& text) {
  const std::string_view which = nameOfPages(pages);
  std::string label = place == Running::kHeader ? "Header" : "Footer";
  if (!which.empty()) label.append(", ").append(which);
  block(markdownHidden(label + ": " + joinedParts(text, " / ")));
}

void MarkdownWriter::put(const Comment& comment) { block(markdownComment(comment)); }

void MarkdownWriter::putComments(const std::vector<Comment>& comments) {
  heading(2, "Comments");
  for (const Comment& comment : comments) {
    const auto item = [&](unsigned level, const Comment& each) {
      Paragraph paragraph;
      paragraph.list = ListMark{level, ListKind::kBullet, ""};
      const std::string who = byline(each.author, each.date);
      paragraph.text = who + (who.empty() ? "" : ": ") + each.text;
      putItem(paragraph);
    };
    item(0, comment);
    for (const Comment& reply : comment.replies) item(1, reply);
  }
}

}  // namespace dorvex::content
