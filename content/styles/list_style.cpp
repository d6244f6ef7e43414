#include "styles/list_style.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "TSWPArchives.h"
#include "graph/plain_text.h"
#include "styles/ancestry.h"

namespace dorvex::content {
namespace {

using ListStyleArchive = TSWP::ListStyleArchive;
using LabelType = TSWP::ListStyleArchive_LabelType;
using NumberType = TSWP::ListStyleArchive_NumberType;

constexpr std::size_t kLevels = 9;

struct NumberForm {
  Numerals numerals;
  const char* before;
  const char* behind;
};

// Numerals in the order of the number types, which have three forms of most: "1.",
// "(1)" and "1)".
constexpr Numerals kThreeFormed[] = {
    Numerals::kDecimal,
    Numerals::kUpperRoman,
    Numerals::kLowerRoman,
    Numerals::kUpperLetters,
    Numerals::kLowerLetters,
    Numerals::kJapanese,
    Numerals::kHiragana,
    Numerals::kKatakana,
    Numerals::kHiraganaIroha,
    Numerals::kKatakanaIroha,
    Numerals::kSimplifiedChinese,
    Numerals::kTraditionalChinese,
    Numerals::kFormalJapanese,
    Numerals::kFormalSimplifiedChinese,
    Numerals::kFormalTraditionalChinese,
    Numerals::kKorean,
    Numerals::kArabic,
    Numerals::kArabicLetters,
    Numerals::kArabicAbjad,
    Numerals::kHebrewLetters,
    Numerals::kHebrewNumbers,
};

NumberForm threeFormed(std::size_t index) {
  constexpr std::pair<const char*, const char*> kForms[] = {{"", "."}, {"(", ")"}, {"", ")"}};
  const auto& [before, behind] = kForms[index % std::size(kForms)];
  const std::size_t numerals = index / std::size(kForms);
  return numerals < std::size(kThreeFormed) ? NumberForm{kThreeFormed[numerals], before, behind}
                                            : NumberForm{Numerals::kDecimal, "", "."};
}

NumberForm formOf(NumberType type) {
  // Two that have one form only stand between those that have three.
  const auto number = static_cast<std::size_t>(type);
  constexpr auto kCircled = static_cast<std::size_t>(NumberType::kCircledNumberKind);
  constexpr auto kBare = static_cast<std::size_t>(NumberType::kHebrewBiblicalStandardKind);
  if (number == kCircled) return {Numerals::kCircled, "", ""};
  if (number == kBare) return {Numerals::kHebrewNumbers, "", ""};
  return threeFormed(number - (number > kCircled ? 1 : 0) - (number > kBare ? 1 : 0));
}

// A list's values are those of the first ancestor that has any: a style made by
// formatting has none of its own.
template <typename V, Encoding E>
std::vector<V> valuesOf(const std::vector<Message<ListStyleArchive>>& styles,
                        RepeatedField<ListStyleArchive, V, E> field) {
  std::vector<V> values;
  for (const auto& style : styles) {
    for (const V& value : style.all(field)) {
      if (values.size() == kLevels) break;
      values.push_back(value);
    }
    if (!values.empty()) break;
  }
  return values;
}

template <typename V>
V at(const std::vector<V>& values, std::size_t level) {
  return level < values.size() ? values[level] : V{};
}

// A sign is a bullet; letters or digits that somebody typed are a text.
bool isWord(std::string_view label) {
  return std::ranges::any_of(label, [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  });
}

// An item whose sign is empty is one all the same: it stands as far in as the others.
void setLabel(ListLevel& level, std::string label) {
  level.marked = true;
  level.kind = isWord(label) ? ListKind::kText : ListKind::kBullet;
  level.bullet = std::move(label);
}

void setNumber(ListLevel& level, NumberType type, bool tiered) {
  const NumberForm form = formOf(type);
  level.marked = true;
  level.kind = ListKind::kNumber;
  level.numerals = form.numerals;
  level.before = form.before;
  level.behind = form.behind;
  level.tiered = tiered;
}

}  // namespace

ListStyle readListStyle(Reading& reading, const Object* object) {
  const auto styles = ancestry<ListStyleArchive>(reading, object);
  const auto types = valuesOf(styles, ListStyleArchive::label_types);
  const auto strings = valuesOf(styles, ListStyleArchive::strings);
  const auto numbers = valuesOf(styles, ListStyleArchive::number_types);
  const auto tiered = valuesOf(styles, ListStyleArchive::tiered_numbers);
  ListStyle levels(types.size());
  for (std::size_t i = 0; i < levels.size(); ++i) {
    switch (types[i]) {
      case LabelType::kImage:
        levels[i].marked = true;
        levels[i].kind = ListKind::kImage;
        break;
      case LabelType::kString:
        setLabel(levels[i], plainText(at(strings, i)));
        break;
      case LabelType::kNumber:
        setNumber(levels[i], at(numbers, i), at(tiered, i));
        break;
      default:
        break;
    }
  }
  return levels;
}

ListMark listMark(const ListStyle& style, const std::vector<std::uint32_t>& numbers) {
  const std::size_t index = numbers.size() - 1;
  const ListLevel& level = style[index];
  ListMark mark{static_cast<unsigned>(index), level.kind, level.bullet};
  if (level.kind != ListKind::kNumber) return mark;
  std::string number;
  for (std::size_t i = level.tiered ? 0 : index; i <= index; ++i) {
    if (!number.empty()) number += '.';
    // Levels above that have had no item count as if they had their first.
    number += numeral(style[i].numerals, std::max(numbers[i], 1U));
  }
  mark.label = level.before + number + level.behind;
  return mark;
}

}  // namespace dorvex::content
