#include "option_checks.h"

#include <gtest/gtest.h>

namespace dorvex::cli::option_checks_test {
namespace {

std::string bytesOf(std::string size) { return sizeFault(size).empty() ? size : ""; }

TEST(SecondsFault, TakesZeroAndWhatIsAtLeastAMillisecond) {
  for (const char* good : {"0", "0.001", "0.2", "60", "1000000", "1e-3"}) {
    EXPECT_EQ(secondsFault(good), "") << good;
  }
  for (const char* bad : {"0.0004", "nan", "inf", "-nan", "-1", "soon", "", "1s", "1000001"}) {
    EXPECT_NE(secondsFault(bad), "") << bad;
  }
}

TEST(SizeFault, TakesDigitsAndAUnitOf1024) {
  EXPECT_EQ(bytesOf("0"), "0");
  EXPECT_EQ(bytesOf("512"), "512");
  for (const char* same : {"512mb", "512MB", "512M", "512 MiB"}) {
    EXPECT_EQ(bytesOf(same), "536870912") << same;
  }
  EXPECT_EQ(bytesOf("15e"), "17293822569102704640");
}

TEST(SizeFault, RefusesWhatIsNoSizeOrTooLarge) {
  for (const char* bad : {"-5", "-5MB", "", "MB", "1.5GB", "5 apples", "1bb", "16e",
                          "99999999999999999999", "1 MB "}) {
    EXPECT_EQ(bytesOf(bad), "") << bad;
  }
}

TEST(SizeText, IsTakenForTheSameSize) {
  EXPECT_EQ(sizeText(std::uint64_t{4} << 30), "4GB");
  for (const std::uint64_t size : {0ULL, 1ULL, 1000ULL, 1025ULL << 10, 1ULL << 63}) {
    EXPECT_EQ(bytesOf(sizeText(size)), std::to_string(size));
  }
}

TEST(NumberFault, TakesWholeNumbersWithinBounds) {
  EXPECT_EQ(numberFault("1", 1, 10), "");
  EXPECT_EQ(numberFault("10", 1, 10), "");
  for (const char* bad : {"0", "11", "-1", "1.5", "", "all"}) {
    EXPECT_EQ(numberFault(bad, 1, 10),
              "must be a whole number from 1 to 10, not '" + std::string(bad) + "'");
  }
}

TEST(NumberOrAllFault, PutsANumberInPlaceOfAll) {
  std::string value = "all";
  EXPECT_EQ(numberOrAllFault(value, 1, 10, 4), "");
  EXPECT_EQ(value, "4");
  value = "none";
  EXPECT_EQ(numberOrAllFault(value, 1, 10, 4),
            "must be all, or a whole number from 1 to 10, not 'none'");
}

TEST(WordFault, NamesTheWordsAsASentenceDoes) {
  EXPECT_EQ(wordFault("b", {"a", "b"}), "");
  EXPECT_EQ(wordFault("x", {"a", "b", "c"}), "must be a, b or c, not 'x'");
  EXPECT_EQ(wordsFault("a,b", {"a", "b"}), "");
  EXPECT_EQ(wordsFault("a,", {"a", "b"}), "must be a or b, not ''");
}

}  // namespace
}  // namespace dorvex::cli::option_checks_test
