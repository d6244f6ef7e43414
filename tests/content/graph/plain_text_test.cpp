#include "graph/plain_text.h"

#include <gtest/gtest.h>

namespace dorvex::content::plain_text_test {
namespace {

TEST(PlainText, KeepsTextAndTabs) {
  EXPECT_EQ(plainText(""), "");
  EXPECT_EQ(plainText("Tea\tfor two"), "Tea\tfor two");
  EXPECT_EQ(plainText("Darjeeling – ½ kg 🫖"), "Darjeeling – ½ kg 🫖");
}

TEST(PlainText, TurnsEveryKindOfLineBreakIntoALineFeed) {
  EXPECT_EQ(plainText("a\r\nb\rc\vd\ne"), "a\nb\nc\nd\ne");
  EXPECT_EQ(plainText("a\u2028b\u2029c\u0085d"), "a\nb\nc\nd");
}

TEST(PlainText, DropsControlAndAttachmentCharacters) {
  EXPECT_EQ(plainText("a\x0E\x04\x05\f\x7F"
                      "b\uFFFC\u0090"
                      "c"),
            "abc");
  EXPECT_EQ(plainText(std::string_view("a\0b", 3)), "ab");
}

TEST(PlainText, ReplacesWhatIsNoUtf8) {
  EXPECT_EQ(plainText("a\xFF"
                      "b\xE2\x82"),
            "a\uFFFDb\uFFFD");
}

TEST(Composed, JoinsCombiningMarksWithTheirLetters) {
  EXPECT_EQ(composed("Teestu\u0308bchen.png"), "Teest\u00FCbchen.png");
  EXPECT_EQ(composed("Teest\u00FCbchen.png"), "Teest\u00FCbchen.png");
  EXPECT_EQ(composed("\u1112\u1161\u11AB"), "\uD55C");
  EXPECT_EQ(composed("tea\xFF.png"), "tea\uFFFD.png");
}

}  // namespace
}  // namespace dorvex::content::plain_text_test
