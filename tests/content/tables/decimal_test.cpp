#include "tables/decimal.h"

#include <gtest/gtest.h>

#include "cells.h"

namespace dorvex::content::decimal_test {
namespace {

using testing::decimal128;

TEST(Decimal, IsTheNearestDoubleOfWhatIsStored) {
  struct Row {
    std::uint64_t coefficient;
    int exponent;
    double number;
  };
  constexpr Row kRows[] = {
      {23'000'000'000'000'000, -17, 0.23},             // custom-format-stress
      {123'470'000'000'000, -12, 123.47},              // test-new-formulas
      {12, 0, 12},                                     // test-8
      {9'007'199'254'740'993, 0, 9007199254740992.0},  // no document: halves go to even
      {1, 297, 1e297},  // no document here; others have such exponents
      {17'976'931'348'623'157, 292, 1.7976931348623157e308},  // no document
  };
  for (const Row& row : kRows)
    EXPECT_EQ(Decimal::fromBits(decimal128(row.coefficient, row.exponent))->toDouble(), row.number);
}

TEST(Decimal, HasTheSignOfItsHighestBit) {
  const auto number = Decimal::fromBits(decimal128(25, -1, true));
  EXPECT_EQ(number->toDouble(), -2.5);
  EXPECT_EQ(number->text(), "-2.5");
  EXPECT_EQ(Decimal::fromBits(decimal128(0, 5, true))->text(), "0");
}

TEST(Decimal, CountsTheLowestBitOfTheFifteenthByteToItsCoefficient) {
  std::string bits(16, '\0');
  bits[14] = 0x41;  // an exponent of 0 and the coefficient's bit 112
  bits[15] = 0x30;
  EXPECT_EQ(Decimal::fromBits(bits)->text(), "5192296858534827628530496329220096");
}

TEST(Decimal, IsNothingForInfinitiesAndForShortBuffers) {
  EXPECT_FALSE(Decimal::fromBits(std::string(15, '\xFF') + '\x78'));
  EXPECT_FALSE(Decimal::fromBits(std::string(15, '\0')));
}

TEST(Decimal, RoundsHalvesAwayFromZero) {
  struct Row {
    double number;
    int places;
    const char* text;
  };
  constexpr Row kRows[] = {{2.5, 0, "3"},      {-2.5, 0, "-3"},      {0.5, 0, "1"},
                           {0.4, 0, "0"},      {-0.04, 1, "0"},      {9.996, 2, "10"},
                           {1.005, 2, "1.01"}, {1234.5, -2, "1200"}, {0.05, -3, "0"},
                           {99.5, 0, "100"}};
  for (const Row& row : kRows) {
    Decimal decimal(row.number);
    decimal.roundToPlaces(row.places);
    EXPECT_EQ(decimal.text(), row.text) << row.number;
  }
}

TEST(Decimal, WritesLongNumbersWithAnExponent) {
  EXPECT_EQ(Decimal(1e20).text(), "100000000000000000000");
  EXPECT_EQ(Decimal(1.5e300).text(), "1.5E300");
  EXPECT_EQ(Decimal(0.00001).text(), "0.00001");
}

TEST(Decimal, SaysWhereADoubleMayLoseDigits) {
  EXPECT_FALSE(Decimal(0.1).exceedsDouble());
  EXPECT_TRUE(Decimal(1e20).exceedsDouble());
  EXPECT_TRUE(Decimal::fromBits(decimal128(1'234'567'890'123'456'789, -5))->exceedsDouble());
}

}  // namespace
}  // namespace dorvex::content::decimal_test
