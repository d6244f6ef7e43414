#include "writers/html.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "writers/plain.h"
#include "writers/shown_table.h"

namespace dorvex::content {
namespace {

struct Tag {
  bool Run::*mark;
  const char* name;
};
constexpr std::array<Tag, 4> kTags = {
    {{&Run::bold, "strong"}, {&Run::italic, "em"}, {&Run::underline, "u"}, {&Run::strike, "s"}}};

std::string element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

std::string changed(const char* name, const Change& change, const std::string& content) {
  const std::string who = byline(change.author, change.date);
  return std::string("<") + name + (who.empty() ? "" : " title=\"" + htmlEscaped(who) + "\"") +
         ">" + content + "</" + name + ">";
}

// The text of a run between the tags of its marks, link and changes.
std::string markedText(const Run& run, const WriterOptions& options) {
  std::string html = htmlEscaped(run.text, true);
  if (html.empty()) return html;
  for (const Tag& tag : kTags)
    if (run.*tag.mark) html = element(tag.name, html);
  if (run.baseline == Baseline::kSuperscript) html = element("sup", html);
  if (run.baseline == Baseline::kSubscript) html = element("sub", html);
  if (!run.ruby.empty()) html = "<ruby>" + html + "<rt>" + htmlEscaped(run.ruby) + "</rt></ruby>";
  const std::string link = safeLink(run.link);
  if (!link.empty()) html = "<a href=\"" + htmlEscaped(link) + "\">" + html + "</a>";
  if (options.changes == ShownChanges::kAll) {
    if (run.inserted) html = changed("ins", *run.inserted, html);
    if (run.deleted) html = changed("del", *run.deleted, html);
  }
  return html;
}

std::string htmlRun(const Run& run, const WriterOptions& options, bool footnotes) {
  std::string html = markedText(run, options);
  if (footnotes && !run.footnote.empty()) {
    const std::string id = htmlId(run.footnote);
    const std::string mark = run.footnoteMark.empty() ? id : htmlEscaped(run.footnoteMark);
    html += "<sup><a href=\"#note-" + id + "\">" + mark + "</a></sup>";
  }
  if (options.comments == CommentPlace::kInline) {
    for (const Comment& comment : run.comments)
      html += "<small class=\"comment\">" + htmlComment(comment) + "</small>";
  }
  return html;
}

std::string cellContent(const Cell& cell, const WriterOptions& options) {
  if (cell.paragraphs.empty()) return htmlEscaped(shownText(cell), true);
  std::string html;
  for (const Paragraph& paragraph : cell.paragraphs) {
    if (!html.empty()) html += "<br>";
    if (paragraph.list && !paragraph.list->label.empty())
      html += htmlEscaped(paragraph.list->label) + " ";
    html += htmlInline(paragraph, options, false);
  }
  return html;
}

std::string cellAttributes(const ShownCell& cell, const char* scope) {
  std::string attributes = scope;
  if (cell.columns > 1) attributes += " colspan=\"" + std::to_string(cell.columns) + "\"";
  if (cell.rows > 1) attributes += " rowspan=\"" + std::to_string(cell.rows) + "\"";
  if (cell.cell != nullptr && standsRight(*cell.cell)) attributes += " class=\"number\"";
  return attributes;
}

class TableWriter {
 public:
  TableWriter(const Table& table, const WriterOptions& options, Output& output)
      : table_(table), options_(options), output_(output), shown_(table, {.formula = false}) {}

  void write() {
    output_.put("<table>\n");
    if (!table_.caption.empty())
      output_.put("<caption>" + htmlEscaped(table_.caption) + "</caption>\n");
    const bool apart = shown_.headersAreApart();
    ShownRow row;
    bool any = false;
    while (shown_.next(row)) {
      enter(row.header && apart ? "thead" : "tbody");
      writeRow(row);
      any = true;
    }
    if (!any) enter("tbody"), output_.put("<tr><td></td></tr>\n");
    leave();
    output_.put("</table>");
  }

 private:
  void enter(const char* group) {
    if (group_ == group) return;
    leave();
    group_ = group;
    output_.put("<" + group_ + ">\n");
  }

  void leave() {
    if (!group_.empty()) output_.put("</" + group_ + ">\n");
    group_.clear();
  }

  void writeRow(const ShownRow& row) {
    output_.put("<tr>");
    if (row.kind == ShownRow::Kind::kGroup && !row.cells.empty()) {
      output_.put(R"(<th scope="rowgroup" colspan=")" + std::to_string(row.cells.size()) + "\">" +
                  htmlEscaped(row.line->group) + "</th>");
    } else {
      for (std::size_t column = 0; column < row.cells.size(); ++column) writeCell(row, column);
      if (row.cells.empty()) output_.put("<td></td>");
    }
    output_.put("</tr>\n");
  }

  void writeCell(const ShownRow& row, std::size_t column) {
    const ShownCell& cell = row.cells[column];
    if (row.kind == ShownRow::Kind::kSummary) {
      output_.put("<td>" + htmlEscaped(shown_.textOf(*row.line, column)) + "</td>");
      return;
    }
    if (cell.covered) return;
    const bool headsRow = column < shown_.headerColumns();
    const char* scope = row.header ? " scope=\"col\"" : (headsRow ? " scope=\"row\"" : "");
    const char* name = row.header || headsRow ? "th" : "td";
    output_.put(std::string("<") + name + cellAttributes(cell, scope) + ">");
    if (cell.cell != nullptr) output_.put(cellContent(*cell.cell, options_));
    output_.put(std::string("</") + name + ">");
  }

  const Table& table_;
  const WriterOptions& options_;
  Output& output_;
  ShownTable shown_;
  std::string group_;
};

}  // namespace

std::string htmlEscaped(std::string_view text, bool breakLines) {
  std::string escaped;
  for (const char byte : cleanText(text)) {
    switch (byte) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      case '\n':
        escaped += breakLines ? "<br>" : " ";
        break;
      default:
        escaped += byte;
    }
  }
  return escaped;
}

std::string htmlId(std::string_view id) {
  std::string safe(id);
  std::ranges::replace_if(
      safe, [](unsigned char byte) { return byte >= 0x80 || std::isalnum(byte) == 0; }, '-');
  return safe.empty() ? "-" : safe;
}

std::string htmlInline(const Paragraph& paragraph, const WriterOptions& options, bool footnotes) {
  std::string html;
  for (const Run& run : shownRuns(paragraph, options.changes))
    html += htmlRun(run, options, footnotes);
  return html;
}

std::string htmlComment(const Comment& comment) {
  std::string html = "<b>" + htmlEscaped(byline(comment.author, comment.date)) + "</b> " +
                     htmlEscaped(comment.text, true);
  for (const Comment& reply : comment.replies) html += "<br>" + htmlComment(reply);
  return html;
}

void putHtmlTable(const Table& table, const WriterOptions& options, Output& output) {
  TableWriter(table, options, output).write();
}

}  // namespace dorvex::content
