#include "printable.h"

#include <gtest/gtest.h>

namespace dorvex::cli::printable_test {
namespace {

TEST(Printable, ReplacesControlBytesOnly) {
  EXPECT_EQ(printable("a\nb\x1b[1m\x7f é"), "a?b?[1m? é");
}

TEST(Printable, TellsATerminalNothingThroughC1) {
  EXPECT_EQ(printable("a\xC2\x9B"
                      "2Jb\xC2\x80\xC2\x9F\xC2\xA0"),
            "a?2Jb??\xC2\xA0");
}

TEST(Printable, ReplacesBytesThatAreNotUtf8) {
  EXPECT_EQ(printable("a\x9B"
                      "2J\xFF\xC3"),
            "a?2J??");
  EXPECT_EQ(printable("\xC3\x1B[2J"), "??[2J");
  EXPECT_EQ(printable("\xC0\x9B"), "??");
}

TEST(Printable, LeavesTextOfAllLengthsAlone) {
  const std::string text = "a \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80";
  EXPECT_EQ(printable(text), text);
}

TEST(PrintableJson, EscapesC1AndLeavesTheRest) {
  EXPECT_EQ(printableJson("[\"a\xC2\x9B\xC2\x80\xC2\xA0\xC3\x9B\"]"),
            "[\"a\\u009b\\u0080\xC2\xA0\xC3\x9B\"]");
  EXPECT_EQ(printableJson(""), "");
}

}  // namespace
}  // namespace dorvex::cli::printable_test
