#include "styles/numerals.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "graph/utf8.h"

namespace dorvex::content {
namespace {

constexpr std::u32string_view kLatin = U"abcdefghijklmnopqrstuvwxyz";
constexpr std::u32string_view kHiragana =
    U"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよらりるれろわをん";
constexpr std::u32string_view kIroha =
    U"いろはにほへとちりぬるをわかよたれそつねならむうゐのおくやまけふこえてあさきゆめみしゑひもせ"
    U"す";
constexpr std::u32string_view kKorean = U"가나다라마바사아자차카타파하";
constexpr std::u32string_view kArabicLetters = U"أبتثجحخدذرزسشصضطظعغفقكلمنهوي";
constexpr std::u32string_view kArabicAbjad = U"أبجدهوزحطيكلمنسعفصقرشتثخذضظغ";
constexpr std::u32string_view kHebrew = U"אבגדהוזחטיכלמנסעפצקרשת";
constexpr std::u32string_view kFootnoteSymbols = U"*†‡§‖¶";

constexpr std::uint32_t kDigitsOfArabic = 0x0660;
constexpr char32_t kKatakanaBehindHiragana = 0x30A1 - 0x3041;

std::string utf8(std::u32string_view characters) {
  std::string text;
  for (const char32_t character : characters) appendCharacter(text, character);
  return text;
}

std::string decimal(std::uint32_t number, char32_t zero = U'0') {
  std::u32string digits;
  do {
    digits.push_back(zero + number % 10);
    number /= 10;
  } while (number != 0);
  std::ranges::reverse(digits);
  return utf8(digits);
}

// a, b, ... z, aa, ab, ...
std::u32string letters(std::u32string_view alphabet, std::uint32_t number) {
  const auto size = static_cast<std::uint32_t>(alphabet.size());
  std::u32string word;
  for (; number != 0; number = (number - 1) / size) word += alphabet[(number - 1) % size];
  std::ranges::reverse(word);
  return word;
}

// Letters from the one of the first alphabet's place on, as far as it differs.
std::u32string moved(std::u32string word, char32_t distance) {
  for (char32_t& letter : word) letter += distance;
  return word;
}

// *, †, ... ¶, **, ††, ...
std::string symbols(std::uint32_t number) {
  constexpr std::uint32_t kMostRepeated = 10;
  const auto count = static_cast<std::uint32_t>(kFootnoteSymbols.size());
  const std::uint32_t repeated = (number - 1) / count + 1;
  if (repeated > kMostRepeated) return decimal(number);
  return utf8(std::u32string(repeated, kFootnoteSymbols[(number - 1) % count]));
}

// Values, the largest first, that are written one behind the other until the number
// is used up.
struct Addend {
  std::uint32_t value;
  std::u32string_view text;
};

constexpr Addend kRoman[] = {
    {1000, U"m"}, {900, U"cm"}, {500, U"d"}, {400, U"cd"}, {100, U"c"}, {90, U"xc"}, {50, U"l"},
    {40, U"xl"},  {10, U"x"},   {9, U"ix"},  {5, U"v"},    {4, U"iv"},  {1, U"i"},
};
constexpr std::uint32_t kMostRoman = 3999;

// 15 and 16 are not written as they would be, since that would spell a name of God.
constexpr Addend kHebrewNumbers[] = {
    {400, U"ת"}, {300, U"ש"}, {200, U"ר"}, {100, U"ק"}, {90, U"צ"}, {80, U"פ"},
    {70, U"ע"},  {60, U"ס"},  {50, U"נ"},  {40, U"מ"},  {30, U"ל"}, {20, U"כ"},
    {16, U"טז"}, {15, U"טו"}, {10, U"י"},  {9, U"ט"},   {8, U"ח"},  {7, U"ז"},
    {6, U"ו"},   {5, U"ה"},   {4, U"ד"},   {3, U"ג"},   {2, U"ב"},  {1, U"א"},
};
constexpr std::uint32_t kMostHebrew = 999;

std::u32string sum(std::span<const Addend> addends, std::uint32_t number) {
  std::u32string text;
  for (const Addend& addend : addends) {
    for (; number >= addend.value; number -= addend.value) text += addend.text;
  }
  return text;
}

// Characters that multiply and add: 二百三十 is 2 x 100 + 3 x 10.
struct Ideographs {
  std::u32string_view digits;  // from zero
  std::u32string_view units;   // one, ten, hundred, thousand; a space for none
  bool leadingOne;             // also writes the 1 of 100 and 1000
  bool zeroBetween;            // writes a zero where places within are empty
};

constexpr Ideographs kJapanese{U"〇一二三四五六七八九", U" 十百千", false, false};
constexpr Ideographs kChinese{U"零一二三四五六七八九", U" 十百千", true, true};
constexpr Ideographs kFormalJapanese{U"零壱弐参四伍六七八九", U" 拾百千", true, false};
constexpr Ideographs kFormalSimplified{U"零壹贰叁肆伍陆柒捌玖", U" 拾佰仟", true, true};
constexpr Ideographs kFormalTraditional{U"零壹貳參肆伍陸柒捌玖", U" 拾佰仟", true, true};
constexpr std::uint32_t kMostIdeographic = 9999;

std::u32string ideographic(const Ideographs& script, std::uint32_t number) {
  std::u32string text;
  std::uint32_t value = 1000;
  bool skipped = false;
  for (std::size_t place = 4; place-- > 0; value /= 10) {
    const std::uint32_t digit = number / value % 10;
    if (digit == 0) {
      skipped = !text.empty();
      continue;
    }
    if (skipped && script.zeroBetween) text += script.digits[0];
    skipped = false;
    // Ten is written without its one; formally, no one is left out.
    const bool formal = script.digits[1] != U'一';
    const bool one =
        place == 0 || digit != 1 || formal || (script.leadingOne && (place > 1 || !text.empty()));
    if (one) text += script.digits[digit];
    if (place > 0) text += script.units[place];
  }
  return text;
}

std::string ideographs(const Ideographs& script, std::uint32_t number) {
  return number > kMostIdeographic ? decimal(number) : utf8(ideographic(script, number));
}

std::string roman(std::uint32_t number) {
  return number > kMostRoman ? decimal(number) : utf8(sum(kRoman, number));
}

std::string upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

// ①, whose characters stand in three rows.
std::string circled(std::uint32_t number) {
  if (number <= 20) return utf8(std::u32string(1, 0x2460 + number - 1));
  if (number <= 35) return utf8(std::u32string(1, 0x3251 + number - 21));
  if (number <= 50) return utf8(std::u32string(1, 0x32B1 + number - 36));
  return decimal(number);
}

}  // namespace

std::string numeral(Numerals numerals, std::uint32_t number) {
  if (number == 0) return decimal(0);
  switch (numerals) {
    case Numerals::kDecimal:
      return decimal(number);
    case Numerals::kUpperRoman:
      return upper(roman(number));
    case Numerals::kLowerRoman:
      return roman(number);
    case Numerals::kUpperLetters:
      return upper(utf8(letters(kLatin, number)));
    case Numerals::kLowerLetters:
      return utf8(letters(kLatin, number));
    case Numerals::kJapanese:
      return ideographs(kJapanese, number);
    case Numerals::kSimplifiedChinese:
    case Numerals::kTraditionalChinese:
      return ideographs(kChinese, number);
    case Numerals::kFormalJapanese:
      return ideographs(kFormalJapanese, number);
    case Numerals::kFormalSimplifiedChinese:
      return ideographs(kFormalSimplified, number);
    case Numerals::kFormalTraditionalChinese:
      return ideographs(kFormalTraditional, number);
    case Numerals::kHiragana:
      return utf8(letters(kHiragana, number));
    case Numerals::kKatakana:
      return utf8(moved(letters(kHiragana, number), kKatakanaBehindHiragana));
    case Numerals::kHiraganaIroha:
      return utf8(letters(kIroha, number));
    case Numerals::kKatakanaIroha:
      return utf8(moved(letters(kIroha, number), kKatakanaBehindHiragana));
    case Numerals::kKorean:
      return utf8(letters(kKorean, number));
    case Numerals::kCircled:
      return circled(number);
    case Numerals::kArabic:
      return decimal(number, kDigitsOfArabic);
    case Numerals::kArabicLetters:
      return utf8(letters(kArabicLetters, number));
    case Numerals::kArabicAbjad:
      return utf8(letters(kArabicAbjad, number));
    case Numerals::kHebrewLetters:
      return utf8(letters(kHebrew, number));
    case Numerals::kHebrewNumbers:
      return number > kMostHebrew ? decimal(number) : utf8(sum(kHebrewNumbers, number));
    case Numerals::kSymbols:
      return symbols(number);
  }
  return decimal(number);
}

}  // namespace dorvex::content
