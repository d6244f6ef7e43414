#include "writers/text_writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <variant>
#include <vector>

#include "writers/display_width.h"
#include "writers/plain.h"
#include "writers/shown_table.h"

namespace dorvex::content {
namespace {

constexpr std::size_t kIndent = 2;          // for each level of a list
constexpr std::size_t kDeepestIndent = 20;  // levels that are indented
constexpr std::size_t kWidest = 60;         // columns are aligned up to this width
constexpr std::uint32_t kMeasuredRows = 1000;
constexpr std::string_view kGap = "  ";

std::string oneLine(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  return text;
}

// What a cell shows; the items of a list in it with their labels, which part them.
std::string listedText(const Cell& cell) {
  const auto isItem = [](const Paragraph& paragraph) { return paragraph.list.has_value(); };
  if (std::ranges::none_of(cell.paragraphs, isItem)) return shownText(cell);
  std::string text;
  for (const Paragraph& paragraph : cell.paragraphs) {
    if (!text.empty()) text += ' ';
    if (paragraph.list && !paragraph.list->label.empty())
      text += cleanText(paragraph.list->label) + " ";
    text += shownText(paragraph, ShownChanges::kFinal);
  }
  return text;
}

std::string textAt(const ShownTable& shown, const ShownRow& row, std::size_t column) {
  if (row.kind != ShownRow::Kind::kCells)
    return oneLine(cleanText(shown.textOf(*row.line, column)));
  const ShownCell& cell = row.cells[column];
  return cell.cell == nullptr || cell.covered ? "" : oneLine(listedText(*cell.cell));
}

// The widths of the columns by their first rows: a long table is not read twice.
std::vector<std::size_t> widthsOf(const Table& table, const CellParts& parts) {
  ShownTable shown(table, parts);
  std::vector<std::size_t> widths(shown.columns(), 0);
  ShownRow row;
  for (std::uint32_t read = 0; read < kMeasuredRows && shown.next(row); ++read) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      const std::size_t width = displayWidth(textAt(shown, row, column));
      widths[column] = std::max(widths[column], std::min(width, kWidest));
    }
  }
  return widths;
}

std::string rowText(const ShownTable& shown, const ShownRow& row,
                    const std::vector<std::size_t>& widths) {
  std::string text;
  for (std::size_t column = 0; column < widths.size(); ++column) {
    if (column > 0) text += kGap;
    const Cell* cell = row.cells[column].cell;
    text +=
        padded(textAt(shown, row, column), widths[column], cell != nullptr && standsRight(*cell));
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string noteMark(const std::string& mark) { return "[" + oneLine(cleanText(mark)) + "]"; }

std::string textWithMarks(const Paragraph& paragraph, ShownChanges changes) {
  std::string text;
  for (const Run& run : shownRuns(paragraph, changes)) {
    text += run.text;
    if (!run.footnote.empty())
      text += noteMark(run.footnoteMark.empty() ? run.footnote : run.footnoteMark);
  }
  return text;
}

}  // namespace

void TextWriter::line(const std::string& text) {
  output_.put(std::exchange(lead_, {}));
  output_.put(text);
  output_.put('\n');
}

void TextWriter::beginSlide(const Slide&, const Paragraph* title) {
  if (title != nullptr) line(oneLine(shownText(*title, options().changes)));
}

void TextWriter::beginNotes() { line(""); }

void TextWriter::beginSheet(const Sheet& sheet) { line(oneLine(cleanText(sheet.name))); }

void TextWriter::put(const Paragraph& paragraph) {
  std::string text = textWithMarks(paragraph, options().changes);
  // What stands behind the mark of a note often begins with the space that parts them.
  if (!lead_.empty()) text.erase(0, text.find_first_not_of(' '));
  std::string before;
  if (paragraph.list) {
    before.assign(kIndent * std::min<std::size_t>(paragraph.list->level, kDeepestIndent), ' ');
    const std::string label = oneLine(cleanText(paragraph.list->label));
    if (!label.empty()) before += label + " ";
  }
  const std::string indent(displayWidth(before), ' ');
  for (std::size_t feed = 0; (feed = text.find('\n', feed)) != std::string::npos;
       feed += 1 + indent.size())
    text.insert(feed + 1, indent);
  line(before + text);
  if (options().comments != CommentPlace::kInline) return;
  for (const Run& run : shownRuns(paragraph, ShownChanges::kAll))
    for (const Comment& comment : run.comments) put(comment);
}

void TextWriter::put(const Table& table) {
  if (table.nameShown && !table.name.empty()) line(oneLine(cleanText(table.name)));
  const CellParts parts{.text = true, .formula = false, .rich = true};
  const auto widths = widthsOf(table, parts);
  ShownTable shown(table, parts);
  ShownRow row;
  while (shown.next(row)) line(rowText(shown, row, widths));
  if (!table.caption.empty()) line(oneLine(cleanText(table.caption)));
}

void TextWriter::put(const Chart& chart) {
  if (!chart.title.empty()) line(oneLine(cleanText(chart.title)));
  for (const ChartSeries& series : chart.series) {
    std::string text = cleanText(series.name) + ":";
    for (std::size_t i = 0; i < series.values.size(); ++i) {
      const std::string category =
          i < chart.categories.size() ? cleanText(chart.categories[i]) + " " : "";
      text += (i > 0 ? ", " : " ") + category + valueText(series.values[i]);
    }
    line(oneLine(text));
  }
}

void TextWriter::put(const Equation& equation) { line(cleanText(equation.source)); }

// A picture is read aloud by its description; a file name says nothing.
void TextWriter::put(const Media& media, const std::string& alt, const std::string&) {
  if (!alt.empty() && alt != media.name) line("[" + oneLine(cleanText(alt)) + "]");
}

void TextWriter::putCaption(const std::string& text) { line(cleanText(text)); }

void TextWriter::putFootnote(const Footnote& footnote) {
  lead_ = noteMark(footnote.mark.empty() ? footnote.id : footnote.mark) + " ";
  visit(footnote.blocks);
  if (!lead_.empty()) line("");
}

void TextWriter::putRunning(Running, PageClass, const HeaderText& text) {
  line(joinedParts(text, kGap));
}

void TextWriter::put(const Comment& comment) {
  line("[" + byline(comment.author, comment.date) + ": " + oneLine(cleanText(comment.text)) + "]");
  for (const Comment& reply : comment.replies) put(reply);
}

void TextWriter::putComments(const std::vector<Comment>& comments) {
  line("");
  for (const Comment& comment : comments) put(comment);
}

void TextWriter::putEnd() { output_.flush(); }

}  // namespace dorvex::content
