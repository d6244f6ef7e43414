// Numbers as the marks of lists and footnotes write them.
#pragma once

#include <cstdint>
#include <string>

namespace dorvex::content {

enum class Numerals {
  kDecimal,
  kUpperRoman,
  kLowerRoman,
  kUpperLetters,
  kLowerLetters,
  kJapanese,
  kSimplifiedChinese,
  kTraditionalChinese,
  kFormalJapanese,
  kFormalSimplifiedChinese,
  kFormalTraditionalChinese,
  kHiragana,
  kKatakana,
  kHiraganaIroha,
  kKatakanaIroha,
  kKorean,
  kCircled,
  kArabic,
  kArabicLetters,
  kArabicAbjad,
  kHebrewLetters,
  kHebrewNumbers,
  kSymbols,  // of footnotes: *, †, ‡
};

// The number, which counts from 1. What the numerals cannot write, they write in digits.
std::string numeral(Numerals numerals, std::uint32_t number);

}  // namespace dorvex::content
