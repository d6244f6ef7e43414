#include "styles/list_style.h"

#include <gtest/gtest.h>

#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::list_style_test {
namespace {

using NumberType = TSWP::ListStyleArchive_NumberType;
using Style = TSWP::ListStyleArchive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kListStyle = 2023;
constexpr unsigned kNone = 0;
constexpr unsigned kImage = 1;
constexpr unsigned kString = 2;
constexpr unsigned kNumber = 3;

ListStyle read(const Wire& style) {
  Objects objects({object(10, kListStyle, style)});
  return readListStyle(objects.reading(), &objects.object(10));
}

Wire label(unsigned type, const char* text = "") {
  return Wire().varint(Style::label_types.number, type).bytes(Style::strings.number, text);
}

// The label of the third item of a list with one level.
std::string numbered(NumberType type) {
  const Wire style = Wire()
                         .varint(Style::label_types.number, kNumber)
                         .varint(Style::number_types.number, static_cast<unsigned>(type));
  return listMark(read(style), {3}).label;
}

TEST(ReadListStyle, HasLevelsWithoutMark) {
  const ListStyle style = read(label(kNone));
  ASSERT_EQ(style.size(), 1U);
  EXPECT_FALSE(style[0].marked);
}

TEST(ReadListStyle, TakesAnItemWithAnEmptySignForOne) {
  const ListStyle style = read(label(kString, ""));
  EXPECT_TRUE(style[0].marked);
  EXPECT_EQ(listMark(style, {1}).label, "");
}

TEST(ReadListStyle, TellsBulletsFromTextsAndImages) {
  const ListStyle bullet = read(label(kString, "•"));
  EXPECT_EQ(bullet[0].kind, ListKind::kBullet);
  EXPECT_EQ(listMark(bullet, {5}).label, "•");
  EXPECT_EQ(read(label(kString, "Note:"))[0].kind, ListKind::kText);
  const ListStyle image = read(label(kImage));
  EXPECT_EQ(image[0].kind, ListKind::kImage);
  EXPECT_EQ(listMark(image, {1}).label, "");
}

TEST(ReadListStyle, WritesNumbersInTheirThreeForms) {
  EXPECT_EQ(numbered(NumberType::kNumericDecimal), "3.");
  EXPECT_EQ(numbered(NumberType::kNumericDoubleParen), "(3)");
  EXPECT_EQ(numbered(NumberType::kNumericRightParen), "3)");
  EXPECT_EQ(numbered(NumberType::kRomanUpperDecimal), "III.");
  EXPECT_EQ(numbered(NumberType::kRomanLowerDoubleParen), "(iii)");
  EXPECT_EQ(numbered(NumberType::kAlphaUpperRightParen), "C)");
  EXPECT_EQ(numbered(NumberType::kAlphaLowerDecimal), "c.");
}

TEST(ReadListStyle, WritesTheNumbersOfOtherScripts) {
  EXPECT_EQ(numbered(NumberType::kIdeographicJapaneseDecimalKind), "三.");
  EXPECT_EQ(numbered(NumberType::kHiraganaDoubleParenKind), "(う)");
  EXPECT_EQ(numbered(NumberType::kKatakanaIrohaRightParenKind), "ハ)");
  EXPECT_EQ(numbered(NumberType::kIdeographicFormalTraditionalChineseDecimalKind), "參.");
  EXPECT_EQ(numbered(NumberType::kKoreanAlphabetRightParenKind), "다)");
  EXPECT_EQ(numbered(NumberType::kCircledNumberKind), "③");
  EXPECT_EQ(numbered(NumberType::kArabianNumericDecimalKind), "٣.");
  EXPECT_EQ(numbered(NumberType::kArabianAbjadRightParenKind), "ج)");
  EXPECT_EQ(numbered(NumberType::kHebrewAlphaDecimalKind), "ג.");
  EXPECT_EQ(numbered(NumberType::kHebrewBiblicalStandardKind), "ג");
  EXPECT_EQ(numbered(NumberType::kHebrewBiblicalRightParenKind), "ג)");
}

TEST(ReadListStyle, WritesUnknownNumbersInDigits) {
  EXPECT_EQ(numbered(static_cast<NumberType>(1000)), "3.");
  EXPECT_EQ(numbered(static_cast<NumberType>(-1)), "3.");
}

TEST(ReadListStyle, JoinsTheNumbersOfTiers) {
  Wire style;
  for (int level = 0; level < 2; ++level)
    style.varint(Style::label_types.number, kNumber).varint(Style::tiered_numbers.number, 1);
  EXPECT_EQ(listMark(read(style), {2, 3}).label, "2.3.");
  EXPECT_EQ(listMark(read(style), {0, 3}).label, "1.3.");
  EXPECT_EQ(listMark(read(style), {2}).label, "2.");
  EXPECT_EQ(listMark(read(style), {2, 3}).level, 1U);
}

TEST(ReadListStyle, TakesWhatItLacksFromItsParents) {
  Objects objects(
      {object(10, kListStyle,
              Wire().message(Style::super.number,
                             Wire().message(TSS::StyleArchive::parent.number, reference(11)))),
       object(11, kListStyle, label(kString, "-"))});
  const ListStyle style = readListStyle(objects.reading(), &objects.object(10));
  ASSERT_EQ(style.size(), 1U);
  EXPECT_EQ(style[0].bullet, "-");
}

TEST(ReadListStyle, HasNoMoreThanNineLevels) {
  Wire style;
  for (int level = 0; level < 100; ++level) style.varint(Style::label_types.number, kNumber);
  EXPECT_EQ(read(style).size(), 9U);
}

TEST(ReadListStyle, IsEmptyWithoutStyle) {
  Objects objects({});
  EXPECT_TRUE(readListStyle(objects.reading(), nullptr).empty());
}

}  // namespace
}  // namespace dorvex::content::list_style_test
