#include "token_printer.h"

#include <gtest/gtest.h>

namespace dorvex::cli::token_printer_test {
namespace {

TEST(TokenPrinter, PrintsEveryKindOnALineOfItsOwn) {
  EXPECT_EQ(print(DocHeaderToken{{0, 10}}), "DOC_HEADER 0 10\n");
  EXPECT_EQ(
      print(PageSetupToken{2, {12240, 15840, 1440, 1440, 1440, 1440, 4294967295, 4294967295}}),
      "PAGE_SETUP 2 12240 15840 1440 1440 1440 1440 4294967295 4294967295\n");
  EXPECT_EQ(print(TextToken{"Hello"}), "TEXT \"Hello\"\n");
  EXPECT_EQ(print(BreakToken{}), "BREAK\n");
}

TEST(TokenPrinter, EscapesWhatWouldBreakTheLineAndLeavesTheRest) {
  EXPECT_EQ(print(TextToken{"a\nb\rc\td\"e\\f"}), "TEXT \"a\\nb\\rc\\td\\\"e\\\\f\"\n");
  EXPECT_EQ(print(TextToken{std::string_view("\0\x1B\x7F", 3)}), "TEXT \"\\x00\\x1B\\x7F\"\n");
  EXPECT_EQ(print(TextToken{"caf\xC3\xA9 \xFF"}), "TEXT \"caf\xC3\xA9 \xFF\"\n");
}

}  // namespace
}  // namespace dorvex::cli::token_printer_test
