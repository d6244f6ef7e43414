#include "content/support/valid_output.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>

#include "content/support/json_shape.h"
#include "graph/utf8.h"
#include "writers/display_width.h"

namespace dorvex::testing {
namespace {

std::string quoted(std::string_view part) { return "\"" + std::string(part.substr(0, 80)) + "\""; }

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

bool isBlockElement(std::string_view name) {
  static const std::set<std::string_view> kNames = {"p",     "ul",      "ol",     "li",   "table",
                                                    "aside", "section", "figure", "main", "h1",
                                                    "h2",    "h3",      "h4",     "h5",   "h6"};
  return kNames.contains(name);
}

bool isVoid(std::string_view name) {
  return name == "br" || name == "img" || name == "meta" || name == "!DOCTYPE";
}

// The elements of a text of HTML, by a reading as strict as that of XML.
class Elements {
 public:
  // tag stands between angle brackets.
  std::string flawOf(std::string_view tag) {
    const std::string_view name = tag.substr(0, tag.find(' '));
    if (std::string flaw = flawOfAttributes(tag.substr(name.size())); !flaw.empty()) return flaw;
    if (name.starts_with('/')) return flawOfEnd(name.substr(1));
    if (name.empty() || name.find_first_not_of("abcdefghijklmnopqrstuvwxyz123456!DOCTYPE") !=
                            std::string_view::npos)
      return "no tag: " + quoted(tag);
    if (isVoid(name)) return {};
    const bool inText = std::ranges::any_of(open_, [](const std::string& outer) {
      return outer == "p" || (outer.size() == 2 && outer[0] == 'h' && outer[1] < '7');
    });
    if (inText && isBlockElement(name)) return "a block in a line of text: " + quoted(tag);
    if (name == "a" && std::ranges::find(open_, "a") != open_.end()) return "a link in a link";
    open_.emplace_back(name);
    return {};
  }

  std::string flawAtTheEnd() const { return open_.empty() ? "" : "open: " + open_.back(); }

 private:
  std::string flawOfEnd(std::string_view name) {
    if (open_.empty() || open_.back() != name) return "ends without a beginning: " + quoted(name);
    open_.pop_back();
    return {};
  }

  static std::string flawOfAttributes(std::string_view attributes) {
    if (attributes == " html") return {};  // of the document type
    while (!attributes.empty()) {
      const std::size_t value = attributes.find("=\"");
      if (attributes.front() != ' ' || value == std::string_view::npos) return "bare attribute";
      const std::size_t end = attributes.find('"', value + 2);
      if (end == std::string_view::npos) return "an attribute without end";
      attributes.remove_prefix(end + 1);
    }
    return {};
  }

  std::vector<std::string> open_;
};

bool isEntity(std::string_view text) {
  return std::ranges::any_of(
      std::initializer_list<std::string_view>{"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"},
      [&](std::string_view entity) { return text.starts_with(entity); });
}

// What a line says, without the indent, or the label, of a footnote.
std::string_view withoutIndent(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const std::size_t label = line.starts_with("[^") ? line.find(']') : std::string_view::npos;
  if (label != std::string_view::npos && line.substr(label).starts_with("]: "))
    line.remove_prefix(label + 3);
  return line;
}

std::size_t unescapedPipes(std::string_view line) {
  std::size_t pipes = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;
    } else if (line[at] == '|') {
      ++pipes;
    }
  }
  return pipes;
}

// Markdown, a line at a time.
class MarkdownLines {
 public:
  std::string flawOf(std::string_view line) {
    const std::string_view content = withoutIndent(line);
    if (isCode(content)) return {};
    if (content.starts_with(":::")) return flawOfBox(content);
    if (grid_ > 0 || content.starts_with("+-")) return flawOfGrid(content);
    if (content.starts_with("|")) return flawOfRow(content);
    if (rows_ == 1) return "a table without a rule";
    rows_ = 0;
    return {};
  }

  std::string flawAtTheEnd() const {
    if (!fence_.empty()) return "an open fence";
    if (rows_ == 1) return "a table without a rule";
    return boxes_ == 0 ? "" : "an open box";
  }

 private:
  // Whether the line belongs to a block of code, or to a formula of its own.
  bool isCode(std::string_view content) {
    if (!fence_.empty()) {
      if (content == fence_) fence_.clear();
      return true;
    }
    if (inFormula_ || content.starts_with("$$")) {
      const std::size_t ends = content.find("$$", inFormula_ ? 0 : 2);
      inFormula_ = ends == std::string_view::npos;
      return true;
    }
    if (!content.starts_with("```")) return false;
    fence_ = content.substr(0, content.find_first_not_of('`'));
    return true;
  }

  std::string flawOfBox(std::string_view content) {
    boxes_ += content == ":::" ? -1 : 1;
    return boxes_ == 0 || boxes_ == 1 ? "" : "boxes do not nest";
  }

  std::string flawOfGrid(std::string_view content) {
    if (!content.starts_with('+') && !content.starts_with('|')) {
      grid_ = 0;
      return {};
    }
    const std::size_t width = content::displayWidth(content);
    if (grid_ == 0) grid_ = width;
    return width == grid_ ? "" : "a line of another width: " + quoted(content);
  }

  std::string flawOfRow(std::string_view content) {
    const std::size_t pipes = unescapedPipes(content);
    if (++rows_ == 1) pipes_ = pipes;
    if (!content.ends_with('|') || pipes != pipes_) return "other cells: " + quoted(content);
    if (rows_ == 2 && content.find_first_not_of("|-: ") != std::string_view::npos)
      return "no rule: " + quoted(content);
    return {};
  }

  std::string fence_;  // of the open one
  bool inFormula_ = false;
  int boxes_ = 0;
  std::size_t grid_ = 0;   // the width of the open one
  std::size_t rows_ = 0;   // of the pipe table so far
  std::size_t pipes_ = 0;  // in each of them
};

// Whether the parser met a key twice in one object.
class Keys {
 public:
  bool operator()(int, nlohmann::json::parse_event_t event, nlohmann::json& value) {
    using Event = nlohmann::json::parse_event_t;
    if (event == Event::object_start) keys_.emplace_back();
    if (event == Event::object_end) keys_.pop_back();
    if (event == Event::key && !keys_.back().insert(value.get<std::string>()).second)
      repeated = true;
    return true;
  }

  bool repeated = false;

 private:
  std::vector<std::set<std::string>> keys_;
};

// Reads CSV; its flaw, or nothing.
class CsvReader {
 public:
  CsvReader(std::string_view text, char delimiter) : left_(text), delimiter_(delimiter) {}

  std::string read() {
    while (!left_.empty()) {
      rows_.emplace_back();
      do {
        std::string flaw = field();
        if (!flaw.empty()) return flaw;
      } while (take(delimiter_));
      if (!take('\r') || !take('\n')) return "a line without an end";
      if (rows_.back().size() != rows_.front().size()) return "a row of another length";
    }
    return {};
  }

  std::vector<std::vector<std::string>>& rows() { return rows_; }

 private:
  bool take(char byte) {
    if (!left_.starts_with(byte)) return false;
    left_.remove_prefix(1);
    return true;
  }

  std::string field() {
    std::string& value = rows_.back().emplace_back();
    if (!take('"')) {
      const std::string ends = std::string("\r\n\"") + delimiter_;
      const std::size_t end = std::min(left_.find_first_of(ends), left_.size());
      value = left_.substr(0, end);
      left_.remove_prefix(end);
      return {};
    }
    while (true) {
      const std::size_t quote = left_.find('"');
      if (quote == std::string_view::npos) return "an open quotation mark";
      value += left_.substr(0, quote);
      left_.remove_prefix(quote + 1);
      if (!take('"')) return {};
      value += '"';
    }
  }

  std::string_view left_;
  char delimiter_;
  std::vector<std::vector<std::string>> rows_;
};

bool linksToScript(std::string_view text, std::string_view before) {
  return text.find(std::string(before) + "javascript:") != std::string_view::npos;
}

}  // namespace

std::string flawOfText(std::string_view text, std::string_view allowedControls) {
  if (content::validUtf8(text) != text) return "no UTF-8";
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value < 0x20 || value == 0x7F) && allowedControls.find(byte) == std::string_view::npos)
      return "control character " + std::to_string(value);
  }
  return {};
}

std::string flawOfJson(std::string_view text, std::string_view schema, bool oneLine) {
  Keys keys;
  const auto json = nlohmann::json::parse(
      text, [&](int depth, auto event, nlohmann::json& value) { return keys(depth, event, value); },
      false);
  if (json.is_discarded()) return "no JSON";
  if (keys.repeated) return "a key twice";
  if (oneLine && text.find('\n') != text.size() - 1) return "several lines";
  return flawByShape(json, nlohmann::json::parse(schema));
}

std::string flawOfHtml(std::string_view text) {
  Elements elements;
  for (std::size_t at = 0; (at = text.find_first_of("<>&", at)) != std::string_view::npos; ++at) {
    if (text[at] == '>') return "a bracket by itself";
    if (text[at] == '&' && !isEntity(text.substr(at))) return "no entity";
    if (text[at] == '&') continue;
    const std::size_t end = text.find('>', at);
    if (end == std::string_view::npos) return "a tag without end";
    if (std::string flaw = elements.flawOf(text.substr(at + 1, end - at - 1)); !flaw.empty())
      return flaw;
    at = end;
  }
  if (linksToScript(text, "href=\"")) return "a script";
  return elements.flawAtTheEnd();
}

std::string flawOfMarkdown(std::string_view text) {
  MarkdownLines lines;
  for (const std::string_view line : linesOf(text)) {
    if (std::string flaw = lines.flawOf(line); !flaw.empty()) return flaw;
  }
  if (linksToScript(text, "](")) return "a script";
  return lines.flawAtTheEnd();
}

std::string flawOfCsv(std::string_view text, char delimiter) {
  return CsvReader(text, delimiter).read();
}

std::vector<std::vector<std::string>> csvRows(std::string_view text, char delimiter) {
  CsvReader reader(text, delimiter);
  reader.read();
  return std::move(reader.rows());
}

}  // namespace dorvex::testing
