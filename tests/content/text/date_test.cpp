#include "text/date.h"

#include <gtest/gtest.h>

#include <limits>

namespace dorvex::content::date_test {
namespace {

TEST(UtcDate, CountsFromTheBeginningOf2001) {
  EXPECT_EQ(utcDate(0), "2001-01-01T00:00:00Z");
  EXPECT_EQ(utcDate(-1), "2000-12-31T23:59:59Z");
  EXPECT_EQ(utcDate(86400.0 * 59), "2001-03-01T00:00:00Z");
}

TEST(UtcDate, KnowsLeapYears) {
  EXPECT_EQ(utcDate(604022399), "2020-02-21T23:59:59Z");
  EXPECT_EQ(utcDate(604022400 + 86400.0 * 7), "2020-02-29T00:00:00Z");
}

TEST(UtcDate, DropsPartsOfSeconds) {
  EXPECT_EQ(utcDate(0.999), "2001-01-01T00:00:00Z");
  EXPECT_EQ(utcDate(-0.001), "2000-12-31T23:59:59Z");
}

TEST(UtcDate, ReachesFromYear0To9999) {
  EXPECT_EQ(utcDate(252423993599), "9999-12-31T23:59:59Z");
  EXPECT_EQ(utcDate(252423993600), "");
  EXPECT_EQ(utcDate(-63145526400), "0000-01-01T00:00:00Z");
  EXPECT_EQ(utcDate(-63145526401), "");
}

TEST(UtcDate, IsEmptyForWhatIsNoNumber) {
  EXPECT_EQ(utcDate(std::numeric_limits<double>::quiet_NaN()), "");
  EXPECT_EQ(utcDate(std::numeric_limits<double>::infinity()), "");
  EXPECT_EQ(utcDate(-std::numeric_limits<double>::infinity()), "");
}

}  // namespace
}  // namespace dorvex::content::date_test
