#include "styles/numerals.h"

#include <gtest/gtest.h>

namespace dorvex::content::numerals_test {
namespace {

TEST(Numeral, WritesDigits) {
  EXPECT_EQ(numeral(Numerals::kDecimal, 1), "1");
  EXPECT_EQ(numeral(Numerals::kDecimal, 4294967295U), "4294967295");
  EXPECT_EQ(numeral(Numerals::kArabic, 123), "١٢٣");
}

TEST(Numeral, WritesRomanNumbers) {
  EXPECT_EQ(numeral(Numerals::kLowerRoman, 1), "i");
  EXPECT_EQ(numeral(Numerals::kLowerRoman, 14), "xiv");
  EXPECT_EQ(numeral(Numerals::kUpperRoman, 1999), "MCMXCIX");
  EXPECT_EQ(numeral(Numerals::kUpperRoman, 3999), "MMMCMXCIX");
}

TEST(Numeral, WritesLettersAndThenPairs) {
  EXPECT_EQ(numeral(Numerals::kLowerLetters, 1), "a");
  EXPECT_EQ(numeral(Numerals::kLowerLetters, 26), "z");
  EXPECT_EQ(numeral(Numerals::kLowerLetters, 27), "aa");
  EXPECT_EQ(numeral(Numerals::kUpperLetters, 28), "AB");
  EXPECT_EQ(numeral(Numerals::kUpperLetters, 26 * 27 + 1), "AAA");
  EXPECT_EQ(numeral(Numerals::kHiragana, 1), "あ");
  EXPECT_EQ(numeral(Numerals::kKatakana, 2), "イ");
  EXPECT_EQ(numeral(Numerals::kHiraganaIroha, 2), "ろ");
  EXPECT_EQ(numeral(Numerals::kKatakanaIroha, 1), "イ");
  EXPECT_EQ(numeral(Numerals::kKorean, 2), "나");
  EXPECT_EQ(numeral(Numerals::kArabicLetters, 3), "ت");
  EXPECT_EQ(numeral(Numerals::kArabicAbjad, 3), "ج");
  EXPECT_EQ(numeral(Numerals::kHebrewLetters, 11), "כ");
}

TEST(Numeral, CountsWithIdeographs) {
  EXPECT_EQ(numeral(Numerals::kJapanese, 10), "十");
  EXPECT_EQ(numeral(Numerals::kJapanese, 21), "二十一");
  EXPECT_EQ(numeral(Numerals::kJapanese, 101), "百一");
  EXPECT_EQ(numeral(Numerals::kSimplifiedChinese, 12), "十二");
  EXPECT_EQ(numeral(Numerals::kSimplifiedChinese, 101), "一百零一");
  EXPECT_EQ(numeral(Numerals::kTraditionalChinese, 110), "一百一十");
  EXPECT_EQ(numeral(Numerals::kTraditionalChinese, 1005), "一千零五");
  EXPECT_EQ(numeral(Numerals::kFormalSimplifiedChinese, 12), "壹拾贰");
  EXPECT_EQ(numeral(Numerals::kFormalTraditionalChinese, 30), "參拾");
  EXPECT_EQ(numeral(Numerals::kFormalJapanese, 13), "壱拾参");
}

TEST(Numeral, CountsWithHebrewLetters) {
  EXPECT_EQ(numeral(Numerals::kHebrewNumbers, 15), "טו");
  EXPECT_EQ(numeral(Numerals::kHebrewNumbers, 116), "קטז");
  EXPECT_EQ(numeral(Numerals::kHebrewNumbers, 999), "תתקצט");
}

TEST(Numeral, CirclesUpToFifty) {
  EXPECT_EQ(numeral(Numerals::kCircled, 1), "①");
  EXPECT_EQ(numeral(Numerals::kCircled, 20), "⑳");
  EXPECT_EQ(numeral(Numerals::kCircled, 21), "㉑");
  EXPECT_EQ(numeral(Numerals::kCircled, 36), "㊱");
  EXPECT_EQ(numeral(Numerals::kCircled, 50), "㊿");
}

TEST(Numeral, RepeatsTheSymbolsOfFootnotes) {
  EXPECT_EQ(numeral(Numerals::kSymbols, 1), "*");
  EXPECT_EQ(numeral(Numerals::kSymbols, 6), "¶");
  EXPECT_EQ(numeral(Numerals::kSymbols, 8), "††");
}

TEST(Numeral, FallsBackToDigits) {
  EXPECT_EQ(numeral(Numerals::kUpperRoman, 4000), "4000");
  EXPECT_EQ(numeral(Numerals::kJapanese, 10000), "10000");
  EXPECT_EQ(numeral(Numerals::kHebrewNumbers, 1000), "1000");
  EXPECT_EQ(numeral(Numerals::kCircled, 51), "51");
  EXPECT_EQ(numeral(Numerals::kSymbols, 61), "61");
  EXPECT_EQ(numeral(Numerals::kLowerLetters, 0), "0");
}

}  // namespace
}  // namespace dorvex::content::numerals_test
