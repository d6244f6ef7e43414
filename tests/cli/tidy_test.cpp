#include "tidy.h"

#include <gtest/gtest.h>

namespace dorvex::cli::tidy_test {
namespace {

TEST(TidyText, LeavesPlainTextAlone) {
  EXPECT_EQ(tidyText(""), "");
  EXPECT_EQ(tidyText("a b\nc\td \xC3\xA9 \xE2\x82\xAC"), "a b\nc\td \xC3\xA9 \xE2\x82\xAC");
}

TEST(TidyText, MakesLineFeedsOfPrintedLineEnds) {
  EXPECT_EQ(tidyText(R"(a\rb)"), "a\nb");
  EXPECT_EQ(tidyText("a\\r\nb"), "a\nb");
  EXPECT_EQ(tidyText(R"(a\013b\014c)"), "a\nb\nc");
  EXPECT_EQ(tidyText(R"(a\342\200\250b\342\200\251c)"), "a\nb\nc");
  EXPECT_EQ(tidyText("a\xE2\x80\xA8"
                     "b\xE2\x80\xA9"
                     "c"),
            "a\nb\nc");
}

TEST(TidyText, UndoublesBackslashesBeforeItLooksForEscapes) {
  EXPECT_EQ(tidyText(R"(a\\b)"), R"(a\b)");
  EXPECT_EQ(tidyText(R"(C:\\readme)"), R"(C:\readme)");
  EXPECT_EQ(tidyText(R"(\\\r)"), "\\\n");
  EXPECT_EQ(tidyText(R"(\)"), R"(\)");
  EXPECT_EQ(tidyText(R"(\01)"), R"(\01)");
}

TEST(TidyText, TakesPlaceholdersAway) {
  EXPECT_EQ(tidyText("a\xEF\xBF\xBC"
                     "b"),
            "ab");
}

TEST(Tidier, LeavesOutWhatHoldsNothingAndWhatCameBefore) {
  Tidier tidier;
  std::string text = "a";
  EXPECT_TRUE(tidier.take(text));
  EXPECT_FALSE(tidier.take(text));
  for (std::string empty : {"", " \n", "\xEF\xBF\xBC", "\xEF\xBF\xBC \\r"}) {
    EXPECT_FALSE(tidier.take(empty)) << empty;
  }
  std::string same = "a\xEF\xBF\xBC";
  EXPECT_FALSE(tidier.take(same));
}

}  // namespace
}  // namespace dorvex::cli::tidy_test
