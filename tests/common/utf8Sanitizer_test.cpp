#include "Tools/vnstring/detail/utf8Sanitizer.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "Tools/vnstring/vnstring.h"
#include "support/failing_allocation.h"

namespace dorvex::testing::utf8Sanitizer_test {
namespace {

using namespace vn::string;
using namespace std::string_literals;

const std::string R = "\xEF\xBF\xBD";
constexpr int kReplacement = 0xFFFD;

std::string sanitized(const std::string& text) { return sanitizeUTF8(text, kReplacement); }
std::string sanitized1252(const std::string& text) {
  return sanitizeUTF8with1252(text, kReplacement);
}

// The length of the well-formed sequence at the start of a text, 0 if there is
// none: the table of the Unicode standard.
std::size_t wellFormedLength(std::string_view text) {
  struct Row {
    int leadFirst, leadLast, secondFirst, secondLast;
    std::size_t length;
  };
  static constexpr Row rows[] = {
      {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  const auto at = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  for (const Row& row : rows) {
    if (at(0) < row.leadFirst || at(0) > row.leadLast) continue;
    if (text.size() < row.length) return 0;
    if (row.length > 1 && (at(1) < row.secondFirst || at(1) > row.secondLast)) return 0;
    for (std::size_t i = 2; i < row.length; ++i) {
      if (at(i) < 0x80 || at(i) > 0xBF) return 0;
    }
    return row.length;
  }
  return 0;
}

bool isWellFormed(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = wellFormedLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

TEST(SanitizeUTF8, GivesAnEmptyTextForAnEmptyText) { EXPECT_EQ(sanitized(""), ""); }

TEST(SanitizeUTF8, KeepsValidText) {
  EXPECT_EQ(sanitized("A\xC3\xA9"), "A\xC3\xA9");
  EXPECT_EQ(sanitized("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
  EXPECT_EQ(sanitized("\xEF\xBF\xBD"), "\xEF\xBF\xBD");
  EXPECT_EQ(sanitized("a\0b"s), "a\0b"s);
}

TEST(SanitizeUTF8, KeepsEveryCodePoint) {
  for (int codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) continue;
    const std::string text = codePointToUTF8(codePoint);
    ASSERT_TRUE(isWellFormed(text)) << codePoint;
    ASSERT_EQ(sanitized(text), text) << codePoint;
  }
}

struct ErrorRow {
  std::string text;
  std::string expected;
};

TEST(SanitizeUTF8, WritesOneErrorForEachByteThatIsNotPartOfASequence) {
  const std::vector<ErrorRow> rows{
      {"\xC0\x80", R + R},                               // no lead byte, then a stray one
      {"\xE2\x82", R + R},                               // one per buffered byte
      {"\xE2\x28\xA1", R + "(" + R},                     // ends the open sequence
      {"\xED\xA0\x80", R + R + R},                       // a surrogate
      {"\xF4\x90\x80\x80", R + R + R + R},               // above U+10FFFF
      {"\xF0\x9F\x98", R + R + R},                       // cut off
      {"\xF0\x9F\x98\xC3\xA9", R + R + R + "\xC3\xA9"},  // cut off by a lead byte
      {"\xC3\xC3\xA9", R + "\xC3\xA9"},
      {"\xE0\x9F\xBF", R + R + R},          // overlong
      {"\xF0\x8F\xBF\xBF", R + R + R + R},  // overlong
      {"\xC1\xBF", R + R},                  // overlong
      {"\xC3\xA9\xA9", "\xC3\xA9" + R},     // one byte too many
      {"\xE2\x82\xF5\x82", R + R + R + R},  // F5 is not looked at again
      {"\x80", R},
      {"\xBF", R},
      {"\xF5", R},
      {"\xF8\x88\x80\x80\x80", R + R + R + R + R},
      {"\xFE", R},
      {"\xFF", R},
  };
  for (const ErrorRow& row : rows) EXPECT_EQ(sanitized(row.text), row.expected);
}

TEST(SanitizeUTF8, AppliesTheBoundsOnlyToTheByteAfterTheLead) {
  for (const std::string text : {"\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80",
                                 "\xF4\x8F\xBF\xBF", "\xF4\x80\xBF\xBF", "\xED\x80\xA0"}) {
    EXPECT_EQ(sanitized(text), text);
  }
}

TEST(SanitizeUTF8, ForgetsABoundThatWasNotMet) {
  EXPECT_EQ(sanitized("\xE0\xE1\x80\x80"), R + "\xE1\x80\x80");
  EXPECT_EQ(sanitized("\xED\xEE\xBF\xBF"), R + "\xEE\xBF\xBF");
  EXPECT_EQ(sanitized("\xF4\x90\xC3\xA9"), R + R + "\xC3\xA9");
}

// Every lead, every kind of second byte and both ends of the others.
TEST(SanitizeUTF8, AcceptsExactlyTheWellFormedSequences) {
  const std::vector<int> ends{0x41, 0x7F, 0x80, 0xBF, 0xC0, 0xC2, 0xFF};
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      for (const int third : ends) {
        for (const int fourth : ends) {
          const std::string text{static_cast<char>(first), static_cast<char>(second),
                                 static_cast<char>(third), static_cast<char>(fourth)};
          const std::string result = sanitized(text);
          ASSERT_EQ(result == text, isWellFormed(text)) << first << ' ' << second;
          ASSERT_TRUE(isWellFormed(result)) << first << ' ' << second;
        }
      }
    }
  }
}

TEST(SanitizeUTF8, GivesValidTextForAnyBytes) {
  std::mt19937 random(20130);
  std::uniform_int_distribution<int> byte(0, 255);
  for (int round = 0; round < 2000; ++round) {
    std::string text(64, '\0');
    for (char& c : text) c = static_cast<char>(byte(random));
    ASSERT_TRUE(isWellFormed(sanitized(text)));
    ASSERT_TRUE(isWellFormed(sanitized1252(text)));
    ASSERT_EQ(sanitized(sanitized(text)), sanitized(text));
  }
}

TEST(SanitizeUTF8, WritesTheReplacementOfItsCaller) {
  EXPECT_EQ(sanitizeUTF8("a\x80z", '?'), "a?z");
  EXPECT_EQ(sanitizeUTF8("\xE2\x82", 0x1F600), "\xF0\x9F\x98\x80\xF0\x9F\x98\x80");
  EXPECT_EQ(sanitizeUTF8("\xE2\x82", 0), "\0\0"s);
}

TEST(SanitizeUTF8, WritesTheReplacementCharacterForARefusedReplacement) {
  for (const int replacement : {-1, 0xD800, 0xDFFF, 0x110000}) {
    EXPECT_EQ(sanitizeUTF8("\x80", replacement), R) << replacement;
  }
}

TEST(SanitizeUTF8With1252, DecodesBytesInErrorAsWindows1252) {
  EXPECT_EQ(sanitized1252("\xE9"), "\xC3\xA9") << "opened a sequence that the end cut off";
  EXPECT_EQ(sanitized1252("\x80"), "\xE2\x82\xAC");
  EXPECT_EQ(sanitized1252("\xC3\x41"), "\xC3\x83"s + "A");
  EXPECT_EQ(sanitized1252("\xA0\xFF"), "\xC2\xA0\xC3\xBF");
  EXPECT_EQ(sanitized1252("caf\xE9 \x93quoted\x94"), "caf\xC3\xA9 \xE2\x80\x9Cquoted\xE2\x80\x9D");
}

TEST(SanitizeUTF8With1252, KeepsValidText) {
  EXPECT_EQ(sanitized1252("A\xC3\xA9\xF0\x9F\x98\x80"), "A\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(sanitized1252("\xC2\x80"), "\xC2\x80") << "U+0080 is valid";
}

TEST(SanitizeUTF8With1252, WritesTheReplacementForBytesWithoutAMeaning) {
  for (const std::string text : {"\x81", "\x8D", "\x8F", "\x90", "\x9D"}) {
    EXPECT_EQ(sanitized1252(text), R);
    EXPECT_EQ(sanitizeUTF8with1252(text, 0x3F), "?");
    EXPECT_EQ(sanitizeUTF8with1252(text, -1), R);
  }
}

TEST(SanitizeUTF8With1252, WritesTheReplacementForNoOtherByte) {
  for (int byte = 0x80; byte < 0x100; ++byte) {
    const bool undefined =
        byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
    const std::string text(1, static_cast<char>(byte));
    EXPECT_EQ(sanitizeUTF8with1252(text, '?') == "?", undefined) << byte;
  }
}

TEST(Sanitisers, LetAFailedAllocationOut) {
  const std::string text = std::string(50, 'a') + std::string(50, '\x80');
  EXPECT_GE(failEachAllocation([&] { sanitizeUTF8(text, kReplacement); }), 2);
  EXPECT_GE(failEachAllocation([&] { sanitizeUTF8with1252(text, kReplacement); }), 2);
  EXPECT_GE(failEachAllocation([&] { sanitizeASCIIPrintable(text, '?'); }), 1);
}

class Iconv {
 public:
  Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;
  ~Iconv() {
    if (isOpen()) iconv_close(handle_);
  }

  bool isOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // One byte as a UTF-32 unit, or -1 if it has no meaning.
  int decode(int byte) {
    char in = static_cast<char>(byte);
    char32_t out = 0;
    char* inPosition = &in;
    char* outPosition = reinterpret_cast<char*>(&out);
    std::size_t inLeft = 1;
    std::size_t outLeft = sizeof out;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    const std::size_t failed = iconv(handle_, &inPosition, &inLeft, &outPosition, &outLeft);
    return failed == static_cast<std::size_t>(-1) ? -1 : static_cast<int>(out);
  }

 private:
  iconv_t handle_;
};

TEST(CodepointFrom1252Table, AgreesWithIconv) {
  Iconv windows1252("UTF-32LE", "WINDOWS-1252");
  ASSERT_TRUE(windows1252.isOpen());
  static_assert(sizeof detail::codepoint_from_1252_table == 32 * sizeof(int));
  int undefined = 0;
  for (int byte = 0x80; byte <= 0x9F; ++byte) {
    const int expected = windows1252.decode(byte);
    if (expected < 0) ++undefined;
    EXPECT_EQ(detail::codepoint_from_1252_table[byte - 0x80], expected < 0 ? 0xFFFD : expected)
        << byte;
  }
  EXPECT_EQ(undefined, 5);
}

TEST(SanitizeUTF8With1252, AgreesWithIconvForEverySingleByte) {
  Iconv windows1252("UTF-32LE", "WINDOWS-1252");
  ASSERT_TRUE(windows1252.isOpen());
  for (int byte = 0; byte < 256; ++byte) {
    const int codePoint = windows1252.decode(byte);
    const std::string expected = codePoint < 0 ? R : codePointToUTF8(codePoint);
    EXPECT_EQ(sanitized1252(std::string(1, static_cast<char>(byte))), expected) << byte;
  }
}

template <typename Sanitizer>
class SanitizerFields : public ::testing::Test {};

using Sanitizers = ::testing::Types<detail::utf8Sanitizer<detail::ReplaceError_Policy>,
                                    detail::utf8Sanitizer<detail::Use1252Error_Policy>>;
TYPED_TEST_SUITE(SanitizerFields, Sanitizers);

TYPED_TEST(SanitizerFields, StandInTheirOrder) {
  static_assert(offsetof(TypeParam, replacementCodePoint) == 0);
  static_assert(offsetof(TypeParam, output) == 8);
  static_assert(offsetof(TypeParam, buffer) == 8 + sizeof(std::string));
  static_assert(offsetof(TypeParam, expectedLength) == 8 + 2 * sizeof(std::string));
  static_assert(offsetof(TypeParam, lowerBound) == 12 + 2 * sizeof(std::string));
  static_assert(offsetof(TypeParam, upperBound) == 13 + 2 * sizeof(std::string));
}

TYPED_TEST(SanitizerFields, FollowASequence) {
  TypeParam sanitizer{};
  sanitizer.replacementCodePoint = '?';
  sanitizer.parseByte(0xF4);
  EXPECT_EQ(sanitizer.buffer, "\xF4");
  EXPECT_EQ(sanitizer.expectedLength, 4);
  EXPECT_EQ(sanitizer.lowerBound, 0);
  EXPECT_EQ(sanitizer.upperBound, 0x90);
  sanitizer.parseByte(0x8F);
  EXPECT_EQ(sanitizer.upperBound, 0) << "met, so gone";
  sanitizer.parseByte(0xBF);
  EXPECT_EQ(sanitizer.output, "");
  sanitizer.parseByte(0xBF);
  EXPECT_EQ(sanitizer.output, "\xF4\x8F\xBF\xBF");
  EXPECT_EQ(sanitizer.buffer, "");
  sanitizer.writeBufferAsErrors();
  EXPECT_EQ(sanitizer.output, "\xF4\x8F\xBF\xBF") << "an empty buffer writes nothing";
}

TYPED_TEST(SanitizerFields, AreSetByEveryLead) {
  struct Row {
    int first, last;
    std::int32_t expectedLength;
    int lowerBound, upperBound;
  };
  const Row rows[] = {
      {0xC2, 0xDF, 2, 0, 0},    {0xE0, 0xE0, 3, 0xA0, 0}, {0xE1, 0xEC, 3, 0, 0},
      {0xED, 0xED, 3, 0, 0xA0}, {0xEE, 0xEF, 3, 0, 0},    {0xF0, 0xF0, 4, 0x90, 0},
      {0xF1, 0xF3, 4, 0, 0},    {0xF4, 0xF4, 4, 0, 0x90},
  };
  for (const Row& row : rows) {
    for (int lead = row.first; lead <= row.last; ++lead) {
      TypeParam sanitizer{};
      sanitizer.lowerBound = 0xEE;
      sanitizer.upperBound = 0xEE;
      sanitizer.parseByte(static_cast<unsigned char>(lead));
      EXPECT_EQ(sanitizer.expectedLength, row.expectedLength) << lead;
      EXPECT_EQ(sanitizer.lowerBound, row.lowerBound) << lead;
      EXPECT_EQ(sanitizer.upperBound, row.upperBound) << lead;
    }
  }
}

TEST(WriteSingleError, FollowsThePolicy) {
  detail::utf8Sanitizer<detail::ReplaceError_Policy> replacing{};
  replacing.replacementCodePoint = '?';
  replacing.writeSingleError(0xE9);
  EXPECT_EQ(replacing.output, "?");

  detail::utf8Sanitizer<detail::Use1252Error_Policy> decoding{};
  decoding.replacementCodePoint = '?';
  decoding.writeSingleError(0xE9);
  decoding.writeSingleError(0x81);
  decoding.writeSingleError('A');
  EXPECT_EQ(decoding.output, "\xC3\xA9?A");
}

TEST(SanitizeASCIIPrintable, ReplacesControlsAndEverythingAbove7E) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool kept = byte == 0 || (byte >= 0x20 && byte <= 0x7E);
    EXPECT_EQ(sanitizeASCIIPrintable(text, '#'), kept ? text : "#") << byte;
  }
}

TEST(SanitizeASCIIPrintable, WritesNulBytesForTheReplacementZero) {
  EXPECT_EQ(sanitizeASCIIPrintable("\t", 0x3F), "?");
  EXPECT_EQ(sanitizeASCIIPrintable("\t", 0), "\0"s);
  EXPECT_EQ(sanitizeASCIIPrintable("a\tb\xC3\xA9", 0), "a\0b\0\0"s) << "the length stays";
}

TEST(SanitizeASCIIPrintable, TakesAnUnusableReplacementForAQuestionMark) {
  for (const int replacement : {200, 31, 127, 1, -1, 256 + 'x', 0x7FFFFFFF}) {
    EXPECT_EQ(sanitizeASCIIPrintable("\t\x7F", replacement), "??") << replacement;
  }
  EXPECT_EQ(sanitizeASCIIPrintable("\t", 32), " ");
  EXPECT_EQ(sanitizeASCIIPrintable("\t", 126), "~");
}

TEST(SanitizeASCIIPrintable, GivesAnEmptyTextForAnEmptyText) {
  EXPECT_EQ(sanitizeASCIIPrintable("", '?'), "");
}

}  // namespace
}  // namespace dorvex::testing::utf8Sanitizer_test
