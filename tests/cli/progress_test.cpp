#include "progress.h"

#include <gtest/gtest.h>

namespace dorvex::cli::progress_test {
namespace {

TEST(ProgressLine, TellsDocumentsRateAndFailures) {
  EXPECT_EQ(progressLine(0, 0, std::nullopt, 0), "0 documents, 0/s, 0 failed");
  EXPECT_EQ(progressLine(100, 3, std::nullopt, 2), "100 documents, 50/s, 3 failed");
}

TEST(ProgressLine, TellsTheTimeLeftWhereTheTotalIsKnown) {
  EXPECT_EQ(progressLine(100, 0, 1000, 10), "100/1000 documents, 10/s, 0 failed, 0:01:30 left");
  EXPECT_EQ(progressLine(1, 0, 7201, 1), "1/7201 documents, 1/s, 0 failed, 2:00:00 left");
}

TEST(SummaryLine, TellsWhatWasReadAndWhatFailedByStatus) {
  EXPECT_EQ(summaryLine({{"ok", 3}}, 0.25), "dorvex: 3 documents read in 0.2 s");
  EXPECT_EQ(summaryLine({{"corrupt", 2}, {"io", 1}, {"ok", 4}}, 61.06),
            "dorvex: 4 of 7 documents read in 61.1 s; failed: 2 corrupt, 1 io");
  EXPECT_EQ(summaryLine({{"io", 1}}, 0), "dorvex: 0 of 1 documents read in 0.0 s; failed: 1 io");
}

}  // namespace
}  // namespace dorvex::cli::progress_test
