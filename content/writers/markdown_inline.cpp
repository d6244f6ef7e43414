#include "writers/markdown_inline.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "writers/html.h"
#include "writers/plain.h"

namespace dorvex::content {
namespace {

// Markup wherever it stands.
constexpr std::string_view kAlways = "\\`*[]<>~$";
constexpr std::string_view kInPandoc = "^@{}\"'";

bool isLetterOrDigit(char byte) { return std::isalnum(static_cast<unsigned char>(byte)) != 0; }
bool isSpace(char byte) { return byte == ' ' || byte == '\n' || byte == '\t'; }
bool isIn(char byte, std::string_view set) { return set.find(byte) != std::string_view::npos; }

class Escaper {
 public:
  Escaper(std::string_view text, MarkdownPlace place, bool pandoc)
      : text_(text), place_(place), pandoc_(pandoc) {}

  // begins: whether text stands at the beginning of a line.
  std::string escape(bool begins) {
    std::size_t lineStart = begins ? 0 : std::string_view::npos;
    for (at_ = 0; at_ < text_.size(); ++at_) {
      const bool startsLine = at_ == lineStart && text_[at_] != '\n';
      // Spaces at the beginning of a line would make it code.
      if (startsLine && isSpace(text_[at_])) {
        lineStart = at_ + 1;
        continue;
      }
      if (startsLine && place_ != MarkdownPlace::kCell) escapeLineStart();
      if (at_ == text_.size()) break;
      if (text_[at_] == '\n') {
        breakLine();
        lineStart = at_ + 1;
      } else {
        put();
      }
    }
    return std::move(out_);
  }

 private:
  void breakLine() {
    while (out_.ends_with(' ')) out_.pop_back();
    switch (place_) {
      case MarkdownPlace::kBlock:
        out_ += "\\\n";
        break;
      case MarkdownPlace::kHeading:
        out_ += ' ';
        break;
      case MarkdownPlace::kCell:
        out_ += "<br>";
        break;
    }
  }

  // What would begin a list, a heading, a quotation, a rule or a definition.
  void escapeLineStart() {
    if (place_ == MarkdownPlace::kHeading) return;  // behind its marks nothing begins
    if (beginsBlock(text_[at_])) {
      out_ += '\\';
      out_ += text_[at_++];
      return;
    }
    std::size_t end = at_;
    while (end < text_.size() && end - at_ < 10 && isLetterOrDigit(text_[end])) ++end;
    const bool enumerates = end > at_ && end < text_.size() && isIn(text_[end], ".)") &&
                            isSpaceOrEnd(end + 1) &&
                            (pandoc_ || std::isdigit(static_cast<unsigned char>(text_[at_])));
    if (!enumerates) return;
    out_ += text_.substr(at_, end - at_);
    out_ += '\\';
    out_ += text_[end];
    at_ = end + 1;
  }

  bool isSpaceOrEnd(std::size_t at) const { return at >= text_.size() || isSpace(text_[at]); }

  // Whether the rest of the line has only characters that lines and edges of tables have.
  bool isRule() const {
    const std::string_view line = text_.substr(at_, text_.find('\n', at_) - at_);
    return line.find_first_not_of("-=+|: \t") == std::string_view::npos;
  }

  bool beginsBlock(char byte) const {
    switch (byte) {
      case '-':
      case '+':
      case '=':
        return isSpaceOrEnd(at_ + 1) || isRule() || pandoc_;
      case '#':
      case '|':
      case ':':
        return true;
      case '%':
      case '(':
        return pandoc_;
      default:
        return false;
    }
  }

  void put() {
    const char byte = text_[at_];
    if (needsEscape(byte)) out_ += '\\';
    out_ += byte == '\t' ? ' ' : byte;
  }

  bool needsEscape(char byte) const {
    if (isIn(byte, kAlways) || (pandoc_ && isIn(byte, kInPandoc))) return true;
    switch (byte) {
      case '|':
        return place_ == MarkdownPlace::kCell;
      case '#':
        return place_ == MarkdownPlace::kHeading;
      case '_':
        return !(isLetterOrDigit(before()) && isLetterOrDigit(after()));
      case '&':
        return isEntity();
      case '!':
        return after() == '\0';
      case '-':
        return before() == '-' && pandoc_;
      case '.':
        return before() == '.' && pandoc_;
      case ':':
        return isEmoji();
      default:
        return false;
    }
  }

  bool isEntity() const {
    std::size_t end = at_ + 1;
    while (end < text_.size() && (isLetterOrDigit(text_[end]) || text_[end] == '#')) ++end;
    return end > at_ + 1 && (end == text_.size() || text_[end] == ';');
  }

  // ":smile:" is a picture on GitHub.
  bool isEmoji() const {
    // A time of day has colons about digits.
    bool name = false;
    std::size_t end = at_ + 1;
    for (; end < text_.size() && (isLetterOrDigit(text_[end]) || isIn(text_[end], "_+-")); ++end)
      name = name || std::isdigit(static_cast<unsigned char>(text_[end])) == 0;
    return name && end < text_.size() && text_[end] == ':';
  }

  char before() const { return at_ > 0 ? text_[at_ - 1] : '\0'; }
  char after() const { return at_ + 1 < text_.size() ? text_[at_ + 1] : '\0'; }

  std::string_view text_;
  MarkdownPlace place_;
  bool pandoc_;
  std::size_t at_ = 0;
  std::string out_;
};

struct Mark {
  bool Run::*mark;
  const char* delimiter;
  const char* tag;  // where delimiters would not be seen as such
};
constexpr std::array<Mark, 3> kMarks = {
    {{&Run::strike, "~~", "del"}, {&Run::italic, "*", "em"}, {&Run::bold, "**", "strong"}}};

bool isDelimited(const Run& run) { return run.bold || run.italic || run.strike; }

std::string between(const char* delimiter, const std::string& text) {
  return std::string(delimiter).append(text).append(delimiter);
}

std::string inTag(const std::string& tag, const std::string& content) {
  return "<" + tag + ">" + content + "</" + tag + ">";
}

std::string attributesOf(const char* name, const Change& change) {
  const auto value = [](const std::string& text) {
    std::string quoted = htmlEscaped(text);
    std::erase(quoted, '\\');
    // One that stands by itself would part cells.
    for (std::size_t at = 0; (at = quoted.find('|', at)) != std::string::npos;)
      quoted.replace(at, 1, "&#124;");
    return "\"" + quoted + "\"";
  };
  return std::string("{.") + name + " author=" + value(change.author) +
         (change.date.empty() ? "" : " date=" + value(change.date)) + "}";
}

class Inline {
 public:
  Inline(const Paragraph& paragraph, MarkdownPlace place, const WriterOptions& options)
      : runs_(shownRuns(paragraph, options.changes)), place_(place), options_(options) {
    std::erase_if(runs_, [](const Run& run) {
      return run.text.empty() && run.footnote.empty() && run.comments.empty();
    });
  }

  std::string write() {
    for (std::size_t i = 0; i < runs_.size(); ++i) put(i);
    // A line break at the end breaks nothing, and its mark would be shown.
    while (!out_.empty() && (isSpace(out_.back()) || out_.ends_with("\\\n")))
      out_.resize(out_.size() - (out_.ends_with("\\\n") ? 2 : 1));
    return std::move(out_);
  }

 private:
  // Spaces stand outside the marks.
  void put(std::size_t index) {
    const Run& run = runs_[index];
    const std::string_view text = run.text;
    const std::size_t first = text.find_first_not_of(" \n\t");
    if (first == std::string_view::npos) {
      out_ += escaped(text);
    } else {
      const std::size_t end = text.find_last_not_of(" \n\t") + 1;
      out_ += escaped(text.substr(0, first));
      out_ += marked(index, text.substr(first, end - first), first > 0, end < text.size());
      out_ += escaped(text.substr(end));
    }
    putNotes(run);
  }

  std::string escaped(std::string_view text) const {
    const bool begins = out_.empty() || out_.ends_with('\n');
    return Escaper(text, place_, options_.pandoc).escape(begins);
  }

  // Delimiters count as such only beside a space on the outside or a letter on the
  // inside.
  std::string marked(std::size_t index, std::string_view text, bool spaceBefore,
                     bool spaceBehind) const {
    const Run& run = runs_[index];
    const std::string link = safeLink(run.link);
    // A link of its own begins no line.
    std::string out = isDelimited(run) || !link.empty()
                          ? Escaper(text, place_, options_.pandoc).escape(false)
                          : escaped(text);
    const bool opens = spaceBefore || out_.empty() || isSpace(out_.back()) ||
                       (isLetterOrDigit(text.front()) && out_.back() != '*' && out_.back() != '~');
    const bool closes =
        spaceBehind || index + 1 == runs_.size() || endsBefore(runs_[index + 1], text.back());
    for (const Mark& mark : kMarks) {
      if (!(run.*mark.mark)) continue;
      out = opens && closes && link.empty() ? between(mark.delimiter, out) : inTag(mark.tag, out);
    }
    if (run.underline) out = options_.pandoc ? "[" + out + "]{.underline}" : inTag("u", out);
    if (run.baseline == Baseline::kSuperscript) out = inTag("sup", out);
    if (run.baseline == Baseline::kSubscript) out = inTag("sub", out);
    if (!link.empty()) out = "[" + out + "](" + markdownTarget(link) + ")";
    return changed(run, out);
  }

  static bool endsBefore(const Run& next, char last) {
    if (next.text.empty()) return false;
    return isSpace(next.text.front()) || (isLetterOrDigit(last) && !isDelimited(next));
  }

  std::string changed(const Run& run, const std::string& text) const {
    if (options_.changes != ShownChanges::kAll) return text;
    std::string out = text;
    if (options_.pandoc) {
      if (run.inserted) out = "[" + out + "]" + attributesOf("insertion", *run.inserted);
      if (run.deleted) out = "[" + out + "]" + attributesOf("deletion", *run.deleted);
    } else {
      if (run.inserted) out = inTag("ins", out);
      if (run.deleted) out = inTag("del", out);
    }
    return out;
  }

  void putNotes(const Run& run) {
    if (!run.footnote.empty()) out_ += "[^" + markdownLabel(run.footnote) + "]";
    if (options_.comments != CommentPlace::kInline) return;
    for (const Comment& comment : run.comments) out_ += markdownComment(comment);
  }

  std::vector<Run> runs_;
  MarkdownPlace place_;
  const WriterOptions& options_;
  std::string out_;
};

}  // namespace

std::string markdownEscaped(std::string_view text, MarkdownPlace place, bool pandoc) {
  return Escaper(cleanText(text), place, pandoc).escape(true);
}

std::string markdownInline(const Paragraph& paragraph, MarkdownPlace place,
                           const WriterOptions& options) {
  return Inline(paragraph, place, options).write();
}

std::string markdownTarget(std::string_view url) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string target;
  for (const char byte : url) {
    const auto value = static_cast<unsigned char>(byte);
    if (isIn(byte, "<>\\|`\"{}") || value <= 0x20) {
      target += {'%', kHex[value >> 4U], kHex[value & 0xFU]};
    } else {
      if (byte == '&') target += '\\';
      target += byte;
    }
  }
  const bool bracketed = target.empty() || target.find_first_of("()[]") != std::string::npos;
  return bracketed ? "<" + target + ">" : target;
}

std::string markdownLabel(std::string_view id) { return htmlId(id); }

std::string markdownComment(const Comment& comment) {
  std::string text = byline(comment.author, comment.date) + ": " + cleanText(comment.text);
  for (const Comment& reply : comment.replies)
    text += " / " + byline(reply.author, reply.date) + ": " + cleanText(reply.text);
  return markdownHidden(std::move(text));
}

std::string markdownHidden(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  std::ranges::replace(text, '|', '/');
  // Two dashes would end it.
  for (std::size_t at = 0; (at = text.find("--", at)) != std::string::npos;)
    text.insert(at + 1, " ");
  std::erase(text, '<');
  std::erase(text, '>');
  return "<!-- " + text + " -->";
}

}  // namespace dorvex::content
