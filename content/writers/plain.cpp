#include "writers/plain.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iterator>
#include <variant>

#include "graph/utf8.h"
#include "writers/cell_text.h"

namespace dorvex::content {
namespace {

constexpr std::array<std::string_view, 7> kSchemes = {"http", "https", "mailto", "tel",
                                                      "sms",  "ftp",   "file"};

bool isLeftOut(char32_t code) {
  return (code < 0x20 && code != '\n' && code != '\t') || (code >= 0x7F && code < 0xA0) ||
         code == 0xFFFC || code == 0xFEFF;
}

// Most texts are made of these alone.
bool isPlainByte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return (value >= 0x20 && value < 0x7F) || value == '\n' || value == '\t';
}

bool isShown(const Run& run, ShownChanges changes) {
  switch (changes) {
    case ShownChanges::kFinal:
      return !run.deleted;
    case ShownChanges::kOriginal:
      return !run.inserted;
    case ShownChanges::kAll:
      break;
  }
  return true;
}

bool areSame(const Comment& left, const Comment& right) {
  return left.author == right.author && left.date == right.date && left.text == right.text;
}

// Its runs, one for a paragraph without marks.
std::vector<Run> runsOf(const Paragraph& paragraph) {
  if (!paragraph.runs.empty()) return paragraph.runs;
  std::vector<Run> runs(1);
  runs.front().text = paragraph.text;
  return runs;
}

Paragraph withoutText(const Paragraph& paragraph) {
  Paragraph form;
  form.role = paragraph.role;
  form.level = paragraph.level;
  form.style = paragraph.style;
  form.list = paragraph.list;
  return form;
}

// A comment stands in each run of its range, and is shown behind the last one.
void dropContinued(std::vector<Run>& runs) {
  for (std::size_t i = 0; i + 1 < runs.size(); ++i) {
    const auto goesOn = [&](const Comment& comment) {
      return std::ranges::any_of(runs[i + 1].comments,
                                 [&](const Comment& next) { return areSame(comment, next); });
    };
    std::erase_if(runs[i].comments, goesOn);
  }
}

}  // namespace

std::string cleanText(std::string_view text) {
  if (std::ranges::all_of(text, isPlainByte)) return std::string(text);
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    if (character.code == 0x2028 || character.code == 0x2029) {
      clean += '\n';
    } else if (!character.valid) {
      clean += kReplacementBytes;
    } else if (!isLeftOut(character.code)) {
      clean += text.substr(0, character.length);
    }
    text.remove_prefix(character.length);
  }
  return clean;
}

std::vector<Run> shownRuns(const Paragraph& paragraph, ShownChanges changes) {
  std::vector<Run> shown;
  if (paragraph.runs.empty()) {
    shown.emplace_back().text = cleanText(paragraph.text);
    return shown;
  }
  for (const Run& run : paragraph.runs) {
    if (!isShown(run, changes)) continue;
    shown.push_back(run);
    shown.back().text = cleanText(run.text);
  }
  dropContinued(shown);
  return shown;
}

std::string shownText(const Paragraph& paragraph, ShownChanges changes) {
  std::string text;
  for (const Run& run : shownRuns(paragraph, changes)) text += run.text;
  return text;
}

std::vector<Paragraph> shownParagraphs(const Paragraph& paragraph, ShownChanges changes) {
  if (changes == ShownChanges::kFinal || paragraph.runs.empty()) return {paragraph};
  const auto& parts = paragraph.original;
  std::vector<Paragraph> shown = {parts.empty() ? withoutText(paragraph) : parts.front()};
  std::size_t ends = 0;
  for (const Run& run : paragraph.runs) {
    const bool isEnd = run.endsParagraph && ++ends < parts.size();
    if (!isShown(run, changes)) continue;
    if (isEnd) {
      shown.push_back(parts[ends]);
    } else {
      shown.back().text += run.text;
      shown.back().runs.push_back(run);
    }
  }
  return shown;
}

Paragraph joinedOriginal(Paragraph first, Paragraph next) {
  if (first.text.empty() && first.runs.empty()) return next;
  if (first.runs.empty()) first.runs = runsOf(first);
  first.text += next.text;
  std::ranges::move(runsOf(next), std::back_inserter(first.runs));
  return first;
}

std::string shownText(const Cell& cell) {
  return cleanText(cell.text.empty() && cell.type == CellType::kRich ? richValue(cell) : cell.text);
}

bool standsRight(const Cell& cell) {
  return cell.type == CellType::kNumber || cell.type == CellType::kCurrency ||
         cell.type == CellType::kPercentage || cell.type == CellType::kDuration;
}

std::string valueText(const ChartValue& value) {
  if (const auto* date = std::get_if<std::string>(&value)) return cleanText(*date);
  const auto* number = std::get_if<double>(&value);
  if (number == nullptr) return "";
  std::array<char, 32> digits;
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr};
}

unsigned headingLevel(const Paragraph& paragraph) {
  if (paragraph.role == Role::kTitle) return 1;
  if (paragraph.role == Role::kHeading) return std::clamp(paragraph.level, 1U, 6U);
  return 0;
}

std::string safeLink(std::string_view url) {
  std::string clean = cleanText(url);
  std::erase_if(clean, [](char byte) { return byte == '\n' || byte == '\t'; });
  clean.erase(0, std::min(clean.find_first_not_of(' '), clean.size()));
  const std::size_t colon = clean.find_first_of(":/?#");
  if (colon == std::string::npos || clean[colon] != ':') return clean;
  std::string scheme = clean.substr(0, colon);
  std::ranges::transform(scheme, scheme.begin(),
                         [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return std::ranges::find(kSchemes, scheme) != kSchemes.end() ? clean : "";
}

std::string_view nameOfPages(PageClass pages) {
  switch (pages) {
    case PageClass::kFirst:
      return "first page";
    case PageClass::kEven:
      return "even pages";
    case PageClass::kDefault:
      break;
  }
  return {};
}

std::array<std::string_view, 3> shownParts(const HeaderText& text) {
  std::array<std::string_view, 3> parts{text.left, text.center, text.right};
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (!text.withPages[i].empty()) parts[i] = text.withPages[i];
  return parts;
}

std::string joinedParts(const HeaderText& text, std::string_view separator) {
  std::string joined;
  for (const std::string_view part : shownParts(text)) {
    std::string clean = cleanText(part);
    std::ranges::replace(clean, '\n', ' ');
    clean.erase(clean.find_last_not_of(' ') + 1);
    if (clean.empty()) continue;
    joined.append(joined.empty() ? "" : separator).append(clean);
  }
  return joined;
}

std::string byline(std::string_view author, std::string_view date) {
  std::string line = cleanText(author);
  const std::string day = cleanText(date.substr(0, 10));
  if (!line.empty() && !day.empty()) line += ", ";
  return line + day;
}

}  // namespace dorvex::content
