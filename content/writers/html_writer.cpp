#include "writers/html_writer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <string_view>
#include <variant>

#include "writers/html.h"
#include "writers/plain.h"

namespace dorvex::content {
namespace {

constexpr const char kStyle[] = R"css(
:root { color-scheme: light dark; }
body { font: 1rem/1.5 system-ui, sans-serif; max-width: 60rem; margin: 2rem auto; padding: 0 1rem; }
p, li, td, th, h1, h2, h3, h4, h5, h6 { unicode-bidi: plaintext; }
section { border-bottom: 1px solid #8886; padding: 1rem 0; }
section.skipped, section.hidden { opacity: .6; }
table { border-collapse: collapse; margin: 1rem 0; display: block; overflow-x: auto; }
th, td { border: 1px solid #8888; padding: .25rem .6rem; text-align: left; vertical-align: top; }
th { background: #8882; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
aside { border-left: 4px solid #8888; padding: .1rem 1rem; margin: 1rem 0; }
header p, footer p { display: flex; justify-content: space-between; gap: 1rem; color: GrayText; }
figure { margin: 1rem 0; }
img { max-width: 100%; height: auto; }
figcaption, caption, .caption { color: GrayText; font-size: .9rem; text-align: left; }
ins { background: #2a62; }
del { background: #c442; }
.comment { background: #cc04; padding: 0 .3rem; }
)css";

std::string titleOf(Application application) {
  switch (application) {
    case Application::kKeynote:
      return "Presentation";
    case Application::kPages:
      return "Document";
    case Application::kNumbers:
      break;
  }
  return "Spreadsheet";
}

// A language tag has no other characters.
std::string languageOf(const Metadata& metadata) {
  std::string tag = metadata.language;
  std::ranges::replace(tag, '_', '-');
  const bool sound = !tag.empty() && tag.size() < 36 && std::ranges::all_of(tag, [](char byte) {
    return byte == '-' || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z');
  });
  return sound ? tag : "";
}

// The number of a label that browsers write by themselves, "3."; 0 for any other.
unsigned numberOf(std::string_view label) {
  constexpr std::size_t kMostDigits = 9;
  if (!label.ends_with('.') || label.size() > kMostDigits + 1) return 0;
  unsigned number = 0;
  const char* const end = label.data() + label.size() - 1;
  return std::from_chars(label.data(), end, number).ptr == end ? number : 0;
}

// Whether a label can stand in a style as it is: "(iv)".
bool isPlainLabel(std::string_view label) {
  return !label.empty() && std::ranges::all_of(label, [](char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x80 || std::isalnum(value) != 0 || byte == '(' || byte == ')' || byte == '.';
  });
}

}  // namespace

void HtmlWriter::line(const std::string& html) {
  output_.put(html);
  output_.put('\n');
}

void HtmlWriter::element(const std::string& name, const std::string& content) {
  leaveLists(0);
  line("<" + name + ">" + content + "</" + name + ">");
}

void HtmlWriter::putBeginning(const Metadata& metadata) {
  const std::string language = languageOf(metadata);
  line("<!DOCTYPE html>");
  line(language.empty() ? "<html>" : "<html lang=\"" + language + "\">");
  line("<head>");
  line(R"(<meta charset="utf-8">)");
  line(R"(<meta name="viewport" content="width=device-width, initial-scale=1">)");
  line("<title>" + titleOf(application()) + "</title>");
  line(std::string("<style>") + kStyle + "</style>");
  line("</head>");
  line("<body>");
  line("<main>");
}

void HtmlWriter::putEnd() {
  leaveLists(0);
  leaveNotes();
  line("</main>");
  line("</body>");
  line("</html>");
  output_.flush();
}

void HtmlWriter::beginSlide(const Slide& slide, const Paragraph* title) {
  line(std::string("<section class=\"slide") + (slide.skipped ? " skipped" : "") +
       "\" id=\"slide-" + std::to_string(slide.number) + "\">");
  if (title != nullptr) element("h1", htmlInline(*title, options()));
}

void HtmlWriter::beginNotes() {
  leaveLists(0);
  line("<aside class=\"notes\">");
}

void HtmlWriter::endNotes() {
  leaveLists(0);
  line("</aside>");
}

void HtmlWriter::endSlide() {
  leaveLists(0);
  line("</section>");
}

void HtmlWriter::beginSheet(const Sheet& sheet) {
  line(std::string("<section class=\"sheet") + (sheet.hidden ? " hidden" : "") + "\">");
  if (!sheet.name.empty()) element("h2", htmlEscaped(sheet.name));
}

void HtmlWriter::endSheet() { endSlide(); }

// The text of a paragraph, behind the places of the bookmarks that begin in it.
std::string HtmlWriter::content(const Paragraph& paragraph) {
  std::string html = htmlInline(paragraph, options());
  for (const Run& run : paragraph.runs) {
    if (run.bookmark.empty()) continue;
    const std::string id = htmlId(run.bookmark);
    if (bookmarks_.insert(id).second) html.insert(0, "<a id=\"" + id + "\"></a>");
  }
  if (html.empty() || mark_.empty()) return html;
  // Most notes have a space behind the mark that they hold themselves.
  if (!html.starts_with(' ')) html.insert(0, " ");
  return std::exchange(mark_, {}) + html;
}

void HtmlWriter::put(const Paragraph& paragraph) {
  const unsigned heading = headingLevel(paragraph);
  if (heading == 0 && paragraph.list) return putItem(paragraph);
  const std::string html = content(paragraph);
  if (!html.empty()) element(heading > 0 ? "h" + std::to_string(heading) : "p", html);
}

// An item stays open, since deeper items lie in it.
void HtmlWriter::putItem(const Paragraph& paragraph) {
  const ListMark& mark = *paragraph.list;
  const std::string name = mark.kind == ListKind::kNumber ? "ol" : "ul";
  const std::size_t depth = std::min(mark.level, kDeepestList) + 1;
  leaveLists(depth);
  if (lists_.size() == depth && lists_.back().element != name) leaveLists(depth - 1);
  if (lists_.size() == depth) output_.put("</li>\n");
  while (lists_.size() < depth) {
    const bool between = lists_.size() + 1 < depth;
    lists_.push_back({between ? "ul" : name, 0});
    line("<" + lists_.back().element + ">");
    if (between) output_.put("<li>");
  }
  output_.put(itemTag(mark));
  output_.put(content(paragraph));
}

// The tag of an item whose label is not the one that it would have by itself says which.
std::string HtmlWriter::itemTag(const ListMark& mark) {
  OpenList& list = lists_.back();
  if (mark.kind == ListKind::kBullet && mark.label.empty())
    return "<li style=\"list-style-type: none\">";
  if (mark.kind != ListKind::kNumber) return "<li>";
  const unsigned number = numberOf(mark.label);
  const unsigned next = list.number + 1;
  list.number = number > 0 ? number : next;
  if (number == next) return "<li>";
  if (number > 0) return "<li value=\"" + std::to_string(number) + "\">";
  if (!isPlainLabel(mark.label)) return "<li>";
  return "<li style=\"list-style-type: '" + htmlEscaped(mark.label) + " '\">";
}

void HtmlWriter::leaveLists(std::size_t depth) {
  while (lists_.size() > depth) {
    line("</li>");
    line("</" + lists_.back().element + ">");
    lists_.pop_back();
  }
}

void HtmlWriter::put(const Table& table) {
  leaveLists(0);
  const bool named =
      !table.name.empty() && (table.nameShown || application() == Application::kNumbers);
  if (named) element("h3", htmlEscaped(table.name));
  putHtmlTable(table, options(), output_);
  output_.put('\n');
}

void HtmlWriter::put(const Chart& chart) {
  leaveLists(0);
  line("<figure class=\"chart\">");
  if (!chart.title.empty()) line("<figcaption>" + htmlEscaped(chart.title) + "</figcaption>");
  line("<table>");
  std::string head = "<thead>\n<tr><td></td>";
  for (const ChartSeries& series : chart.series)
    head += "<th scope=\"col\">" + htmlEscaped(series.name) + "</th>";
  line(head + "</tr>\n</thead>\n<tbody>");
  std::size_t rows = chart.categories.size();
  for (const ChartSeries& series : chart.series) rows = std::max(rows, series.values.size());
  for (std::size_t row = 0; row < rows; ++row) {
    std::string text = "<tr><th scope=\"row\">" +
                       (row < chart.categories.size() ? htmlEscaped(chart.categories[row]) : "") +
                       "</th>";
    for (const ChartSeries& series : chart.series) {
      text += "<td class=\"number\">" +
              (row < series.values.size() ? htmlEscaped(valueText(series.values[row])) : "") +
              "</td>";
    }
    line(text + "</tr>");
  }
  if (rows == 0) line("<tr><td></td></tr>");
  line("</tbody>\n</table>\n</figure>");
}

// MathML is a document's own markup and is shown, not taken in.
void HtmlWriter::put(const Equation& equation) {
  element("p", "<code>" + htmlEscaped(equation.source) + "</code>");
}

void HtmlWriter::put(const Media& media, const std::string& alt, const std::string& link) {
  leaveLists(0);
  const std::string text = htmlEscaped(alt);
  if (link.empty() && text.empty()) return;
  line("<figure>");
  if (link.empty()) {
    line("<p>" + text + "</p>");
  } else if (media.kind == MediaKind::kImage) {
    line("<img src=\"" + htmlEscaped(link) + "\" alt=\"" + text + "\">");
  } else {
    line("<a href=\"" + htmlEscaped(link) + "\">" + (text.empty() ? "media" : text) + "</a>");
  }
  line("</figure>");
}

void HtmlWriter::putCaption(const std::string& text) {
  leaveLists(0);
  line("<p class=\"caption\">" + htmlEscaped(text, true) + "</p>");
}

void HtmlWriter::putLink(const std::string& url) {
  const std::string text = htmlEscaped(url);
  element("p", "<a href=\"" + text + "\">" + text + "</a>");
}

void HtmlWriter::putFootnote(const Footnote& footnote) {
  leaveLists(0);
  if (!std::exchange(inFootnotes_, true)) line("<section class=\"footnotes\">");
  line("<aside id=\"note-" + htmlId(footnote.id) + "\">");
  if (!footnote.mark.empty()) mark_ = "<sup>" + htmlEscaped(footnote.mark) + "</sup>";
  visit(footnote.blocks);
  if (!mark_.empty()) element("p", std::exchange(mark_, {}));
  leaveLists(0);
  line("</aside>");
}

// The title says for which pages a line is, if not for all.
void HtmlWriter::putRunning(Running place, PageClass pages, const HeaderText& text) {
  const std::string name = place == Running::kHeader ? "header" : "footer";
  const std::string_view which = nameOfPages(pages);
  std::string parts;
  for (const std::string_view part : shownParts(text))
    parts += "<span>" + htmlEscaped(part, true) + "</span>";
  leaveLists(0);
  line("<" + name + (which.empty() ? "" : " title=\"" + std::string(which) + "\"") + "><p>" +
       parts + "</p></" + name + ">");
}

void HtmlWriter::leaveNotes() {
  if (std::exchange(inFootnotes_, false)) line("</section>");
}

void HtmlWriter::put(const Comment& comment) {
  leaveLists(0);
  line("<aside class=\"comment\"><p>" + htmlComment(comment) + "</p></aside>");
}

void HtmlWriter::putComments(const std::vector<Comment>& comments) {
  leaveLists(0);
  leaveNotes();
  line("<section class=\"comments\">");
  for (const Comment& each : comments) put(each);
  line("</section>");
}

}  // namespace dorvex::content
