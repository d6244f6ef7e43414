#include "Tools/vnstring/vnstring.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/failing_allocation.h"
#include "support/long_string.h"

namespace dorvex::testing::vnstring_test {
namespace {

using namespace vn::string;
using namespace std::string_literals;

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  replaceAll(text, what, with);
  return text;
}

TEST(ReplaceAll, NeverSearchesReplacedText) { EXPECT_EQ(replaced("aaa", "a", "aa"), "aaaaaa"); }

TEST(ReplaceAll, CanLeaveNothing) { EXPECT_EQ(replaced("abab", "ab", ""), ""); }

TEST(ReplaceAll, ChangesNothingForAnEmptySearch) { EXPECT_EQ(replaced("abc", "", "x"), "abc"); }

TEST(ReplaceAll, ReplacesMatchesThatDoNotOverlapFromTheLeft) {
  EXPECT_EQ(replaced("aaaaa", "aa", "b"), "bba");
  EXPECT_EQ(replaced("xaxbx", "x", "--"), "--a--b--");
  EXPECT_EQ(replaced("", "a", "b"), "");
  EXPECT_EQ(replaced("abc", "d", "e"), "abc");
}

TEST(ReplaceAll, TakesNulBytesAsAnyOther) {
  EXPECT_EQ(replaced("a\0b\0"s, "\0"s, "0"), "a0b0");
  EXPECT_EQ(replaced("a0", "0", "\0\0"s), "a\0\0"s);
}

TEST(ReplaceAll, CanTakeTheTextItselfAsSearchAndReplacement) {
  std::string text = "ab";
  replaceAll(text, text, text);
  EXPECT_EQ(text, "ab");
}

TEST(StartsWith, ComparesThePrefix) {
  EXPECT_TRUE(startsWith("Index/x", "Index/"));
  EXPECT_TRUE(startsWith("abc", "abc"));
  EXPECT_FALSE(startsWith("abc", "abd"));
  EXPECT_FALSE(startsWith("abc", "ABC"));
}

TEST(StartsWith, IsFalseForALongerPrefixAndTrueForAnEmptyOne) {
  EXPECT_FALSE(startsWith("ab", "abc"));
  EXPECT_TRUE(startsWith("ab", ""));
  EXPECT_TRUE(startsWith("", ""));
  EXPECT_FALSE(startsWith("", "a"));
}

TEST(StartsWith, EndsTheComparisonAsAMatchAtANulByteInBoth) {
  EXPECT_TRUE(startsWith("ab\0xyz"s, "ab\0uv"s));
  EXPECT_FALSE(startsWith("ab\0xyz"s, "abc"));
  EXPECT_FALSE(startsWith("ab\0x"s, "ab\0xyz"s)) << "the lengths are compared first";
}

TEST(StartsWithCaseInsensitive, TakesLettersOfEitherCaseAlike) {
  EXPECT_TRUE(startsWithCaseInsensitive("INDEX/x", "index/"));
  EXPECT_TRUE(startsWithCaseInsensitive("index/x", "InDeX/"));
  EXPECT_TRUE(startsWithCaseInsensitive("Index", "inDEX"));
  EXPECT_FALSE(startsWithCaseInsensitive("index", "indez"));
}

TEST(StartsWithCaseInsensitive, IsFalseForALongerPrefixAndTrueForAnEmptyOne) {
  EXPECT_FALSE(startsWithCaseInsensitive("ab", "ABC"));
  EXPECT_TRUE(startsWithCaseInsensitive("ab", ""));
}

TEST(StartsWithCaseInsensitive, EndsTheComparisonAsAMatchAtANulByteInBoth) {
  EXPECT_TRUE(startsWithCaseInsensitive("ab\0xyz"s, "AB\0uv"s));
}

TEST(EndsWith, ComparesTheSuffix) {
  EXPECT_TRUE(endsWith("Index/Document.iwa", ".iwa"));
  EXPECT_TRUE(endsWith(".iwa", ".iwa"));
  EXPECT_FALSE(endsWith("Document.IWA", ".iwa"));
  EXPECT_FALSE(endsWith("Document.iwa2", ".iwa"));
}

TEST(EndsWith, IsFalseForALongerSuffixAndTrueForAnEmptyOne) {
  EXPECT_FALSE(endsWith("x", "xy"));
  EXPECT_FALSE(endsWith("", "x"));
  EXPECT_TRUE(endsWith("x", ""));
  EXPECT_TRUE(endsWith("", ""));
}

TEST(EndsWith, TakesTheDifferenceOfTheLengthsAsANumberOf32Bits) {
  const LongString longest(0x7FFFFFFF);
  EXPECT_TRUE(endsWith(longest.c_str(), "")) << "the last offset that is not negative";
  const LongString tooLong(0x80000000);
  EXPECT_FALSE(endsWith(tooLong.c_str(), ""));
}

TEST(Contains, FindsAnywhere) {
  EXPECT_TRUE(contains("abc", "a"));
  EXPECT_TRUE(contains("abc", "bc"));
  EXPECT_FALSE(contains("abc", "ac"));
  EXPECT_FALSE(contains("", "a"));
  EXPECT_TRUE(contains("a\0b"s, "\0b"s));
}

TEST(Contains, IsTrueForAnEmptySearch) {
  EXPECT_TRUE(contains("abc", ""));
  EXPECT_TRUE(contains("", ""));
}

TEST(ContainsAnyOf, IsFalseForACountBelowOne) {
  const char* list[] = {"a"};
  EXPECT_FALSE(containsAnyOf("abc", list, 0));
  EXPECT_FALSE(containsAnyOf("abc", list, -1));
  EXPECT_FALSE(containsAnyOf("abc", nullptr, 0));
}

TEST(ContainsAnyOf, LooksForEachEntryUntilTheFirstHit) {
  const char* list[] = {"x", "y", "bc", nullptr};
  EXPECT_TRUE(containsAnyOf("abc", list, 4)) << "the null entry is never reached";
  EXPECT_TRUE(containsAnyOf("abc", list, 3));
  EXPECT_FALSE(containsAnyOf("abc", list, 2));
}

TEST(ContainsAnyOf, IsTrueForAnEmptyEntry) {
  const char* list[] = {"x", ""};
  EXPECT_TRUE(containsAnyOf("abc", list, 2));
}

TEST(ContainsAnyOf, LetsLogicErrorOutForANullEntry) {
  const char* list[] = {"x", nullptr};
  EXPECT_THROW(containsAnyOf("abc", list, 2), std::logic_error);
}

TEST(StripDomainFromURL, LeavesThePathWithoutItsLeadingSlash) {
  EXPECT_EQ(stripDomainFromURL("http://host/a/b"), "a/b");
  EXPECT_EQ(stripDomainFromURL("https://host/a/b"), "a/b");
  EXPECT_EQ(stripDomainFromURL("http:///a"), "a");
  EXPECT_EQ(stripDomainFromURL("http://host//a"), "/a");
}

TEST(StripDomainFromURL, LeavesNothingOfABareHost) {
  EXPECT_EQ(stripDomainFromURL("http://host/"), "");
  EXPECT_EQ(stripDomainFromURL("http://host"), "");
  EXPECT_EQ(stripDomainFromURL("https://host/"), "");
  EXPECT_EQ(stripDomainFromURL("https://host"), "");
  EXPECT_EQ(stripDomainFromURL("http://"), "");
  EXPECT_EQ(stripDomainFromURL("https://"), "");
}

TEST(StripDomainFromURL, ReturnsAnythingElseUnchanged) {
  for (const char* url : {"HTTP://host/a", "Https://host/a", "ftp://host/a", "http:/", "http",
                          "https:/", "", "host/a", " http://host/a"}) {
    EXPECT_EQ(stripDomainFromURL(url), url);
  }
}

using Parts = std::vector<std::string>;

TEST(Split, KeepsEmptyParts) { EXPECT_EQ(split(",a,,b,", ','), (Parts{"", "a", "", "b", ""})); }

TEST(Split, GivesOneEmptyStringForAnEmptyText) { EXPECT_EQ(split("", ','), Parts{""}); }

TEST(Split, GivesTheTextWhenThereIsNoDelimiter) { EXPECT_EQ(split("abc", ','), Parts{"abc"}); }

TEST(Split, CutsAtNulBytesToo) { EXPECT_EQ(split("a\0b"s, '\0'), (Parts{"a", "b"})); }

TEST(Split, LetsAFailedAllocationOut) {
  const std::string text = std::string(50, 'a') + ',' + std::string(50, 'b');
  EXPECT_GE(failEachAllocation([&] { split(text, ','); }), 3);
}

std::string stripped(std::string text) {
  stripNewLineCharsFromEnd(text);
  return text;
}

TEST(StripNewLineCharsFromEnd, CutsAllLineEnds) {
  EXPECT_EQ(stripped("a\n\r\n"), "a");
  EXPECT_EQ(stripped("\r\n\r\n"), "");
  EXPECT_EQ(stripped(""), "");
}

TEST(StripNewLineCharsFromEnd, KeepsWhatStandsBeforeThem) {
  EXPECT_EQ(stripped("a \n"), "a ");
  EXPECT_EQ(stripped("a "), "a ");
  EXPECT_EQ(stripped("\na\nb"), "\na\nb");
  EXPECT_EQ(stripped("a\n\0"s), "a\n\0"s);
}

TEST(CopyStringToBuffer, LeavesAFullBufferWithoutTerminator) {
  char buffer[6] = {'#', '#', '#', '#', '#', '#'};
  copyStringToBuffer(buffer, 4, "abcdef");
  EXPECT_EQ(std::string(buffer, 6), "abcd##");
  copyStringToBuffer(buffer, 4, "wxyz");
  EXPECT_EQ(std::string(buffer, 6), "wxyz##");
  copyStringToBuffer(buffer, 1, "ab");
  EXPECT_EQ(std::string(buffer, 6), "axyz##");
}

TEST(CopyStringToBuffer, FillsTheRestWithNulBytes) {
  char buffer[6] = {'#', '#', '#', '#', '#', '#'};
  copyStringToBuffer(buffer, 4, "ab");
  EXPECT_EQ(std::string(buffer, 6), "ab\0\0##"s);
  copyStringToBuffer(buffer, 4, "");
  EXPECT_EQ(std::string(buffer, 6), "\0\0\0\0##"s);
}

TEST(CopyStringToBuffer, TouchesNothingForASizeBelowOne) {
  char buffer[1] = {'#'};
  copyStringToBuffer(buffer, 0, "ab");
  copyStringToBuffer(buffer, -1, "ab");
  EXPECT_EQ(buffer[0], '#');
}

TEST(IsNumericStr, AsksWhetherTheFirstBytesAreAllDigits) {
  EXPECT_TRUE(isNumericStr(3, "123", 3));
  EXPECT_TRUE(isNumericStr(1, "1", 1));
  EXPECT_FALSE(isNumericStr(3, "12a", 3));
  EXPECT_FALSE(isNumericStr(4, "1234", 3)) << "the count is beyond the limit";
  EXPECT_TRUE(isNumericStr(2, "12a", 3)) << "what follows does not matter";
  EXPECT_TRUE(isNumericStr(2, "1234", 9));
  EXPECT_TRUE(isNumericStr(10, "0123456789", 10));
}

TEST(IsNumericStr, EndsAtTheTerminatorOfAShorterText) { EXPECT_FALSE(isNumericStr(3, "12", 3)); }

TEST(IsNumericStr, KnowsNoOtherDigits) {
  for (const char* text : {"/", ":", "a", "A", " ", "-", "\xB2"}) {
    EXPECT_FALSE(isNumericStr(1, text, 1)) << text;
  }
}

TEST(IsNumericStr, IsTrueForNoBytesAtAll) {
  EXPECT_TRUE(isNumericStr(0, "x", 0));
  EXPECT_TRUE(isNumericStr(0, "", 5));
  EXPECT_TRUE(isNumericStr(0, "1", -1));
}

TEST(IsNumericStr, WalksNothingForALimitBelowOne) {
  EXPECT_FALSE(isNumericStr(1, "1", 0));
  EXPECT_FALSE(isNumericStr(1, "1", -1));
}

TEST(IsNumericStr, IsFalseForANullText) {
  EXPECT_FALSE(isNumericStr(0, nullptr, 0));
  EXPECT_FALSE(isNumericStr(1, nullptr, 1));
}

TEST(IsHexStr, KnowsTheDigitsOfEitherCase) {
  EXPECT_TRUE(isHexStr(2, "aF", 2));
  EXPECT_TRUE(isHexStr(22, "0123456789abcdefABCDEF", 22));
  for (const char* text : {"g", "G", "/", ":", "@", "`"})
    EXPECT_FALSE(isHexStr(1, text, 1)) << text;
}

TEST(IsHexStr, TakesCountLimitAndNullAsIsNumericStrDoes) {
  EXPECT_FALSE(isHexStr(4, "abcd", 3));
  EXPECT_FALSE(isHexStr(3, "ab", 3));
  EXPECT_TRUE(isHexStr(0, "g", 0));
  EXPECT_FALSE(isHexStr(1, "a", 0));
  EXPECT_FALSE(isHexStr(0, nullptr, 0));
}

TEST(AsciiCharToLower, ChangesOnlyAToZ) {
  for (int value = 0; value < 256; ++value) {
    const bool upper = value >= 'A' && value <= 'Z';
    EXPECT_EQ(asciiCharToLower(static_cast<char>(value)),
              static_cast<char>(upper ? value + 32 : value));
  }
  EXPECT_EQ(asciiCharToLower('\xC4'), '\xC4');
}

TEST(AsciiCharToUpper, ChangesOnlyAToZ) {
  for (int value = 0; value < 256; ++value) {
    const bool lower = value >= 'a' && value <= 'z';
    EXPECT_EQ(asciiCharToUpper(static_cast<char>(value)),
              static_cast<char>(lower ? value - 32 : value));
  }
}

TEST(AsciiStrToLower, ChangesEachByteAndKeepsTheLength) {
  EXPECT_EQ(asciiStrToLower("AbC\0Z\xC4["s), "abc\0z\xC4["s);
  EXPECT_EQ(asciiStrToLower(""), "");
}

TEST(AsciiStrToUpper, ChangesEachByteAndKeepsTheLength) {
  EXPECT_EQ(asciiStrToUpper("aBc\0z\xE4{"s), "ABC\0Z\xE4{"s);
  EXPECT_EQ(asciiStrToUpper(""), "");
}

TEST(AsciiCaseInsensitiveCompare, AnswersEqualOrNot) {
  EXPECT_TRUE(asciiCaseInsensitiveCompare("Abc", "aBC"));
  EXPECT_FALSE(asciiCaseInsensitiveCompare("ab", "abc"));
  EXPECT_FALSE(asciiCaseInsensitiveCompare("abc", "ab"));
  EXPECT_TRUE(asciiCaseInsensitiveCompare("", ""));
}

TEST(AsciiCaseInsensitiveCompare, ComparesBehindNulBytes) {
  EXPECT_TRUE(asciiCaseInsensitiveCompare("a\0b"s, "A\0B"s));
  EXPECT_FALSE(asciiCaseInsensitiveCompare("a\0b"s, "a\0c"s));
}

TEST(InAsciiRange, IsTrueFromZeroTo127) {
  EXPECT_TRUE(inAsciiRange(0));
  EXPECT_TRUE(inAsciiRange(127));
  EXPECT_FALSE(inAsciiRange(128));
  EXPECT_FALSE(inAsciiRange(-1));
  EXPECT_FALSE(inAsciiRange(-128));
  EXPECT_FALSE(inAsciiRange(0x7FFFFFFF));
}

// Other programs link these by their mangled names: arguments are part of them.
template <typename Signature, Signature*>
constexpr bool hasSignature = true;

using UTF16String = std::basic_string<unsigned short>;
using Text = const std::string&;
static_assert(hasSignature<void(std::string&, Text, Text), replaceAll>);
static_assert(hasSignature<bool(Text, Text), startsWith>);
static_assert(hasSignature<bool(Text, Text), startsWithCaseInsensitive>);
static_assert(hasSignature<bool(const char*, const char*), endsWith>);
static_assert(hasSignature<bool(Text, Text), contains>);
static_assert(hasSignature<bool(Text, const char**, int), containsAnyOf>);
static_assert(hasSignature<std::string(Text), stripDomainFromURL>);
static_assert(hasSignature<void(char*, int, Text), copyStringToBuffer>);
static_assert(hasSignature<bool(unsigned, const char*, int), isNumericStr>);
static_assert(hasSignature<bool(unsigned, const char*, int), isHexStr>);
static_assert(hasSignature<char(char), asciiCharToLower>);
static_assert(hasSignature<char(char), asciiCharToUpper>);
static_assert(hasSignature<std::string(Text), asciiStrToLower>);
static_assert(hasSignature<std::string(Text), asciiStrToUpper>);
static_assert(hasSignature<bool(Text, Text), asciiCaseInsensitiveCompare>);
static_assert(hasSignature<Parts(Text, char), split>);
static_assert(hasSignature<void(std::string&), stripNewLineCharsFromEnd>);
static_assert(hasSignature<bool(int), inAsciiRange>);
static_assert(hasSignature<TemporaryCLocaleChange*(int, std::string),
                           TemporaryCLocaleChange::getTemporaryCLocaleChange>);
static_assert(hasSignature<int(unsigned char), UTF8LeadingByteLength>);
static_assert(hasSignature<bool(unsigned char), isUTF8ContinuationByte>);
static_assert(hasSignature<std::string(int), codePointToUTF8>);
static_assert(hasSignature<UTF16String(int), codePointToUTF16>);
static_assert(hasSignature<std::string(const UTF16String&), UCS2ToUTF8>);
static_assert(hasSignature<std::string(const UTF16String&), UTF16ToUTF8>);
static_assert(hasSignature<UTF16String(Text), UTF8ToUTF16>);
static_assert(hasSignature<int(const char*, unsigned long, unsigned long&), UTF8ToCodePoint>);
static_assert(hasSignature<unsigned char*(unsigned char*, unsigned int*), UTF8ToCodePoint>);
static_assert(hasSignature<char*(char*, const char*, unsigned long), strncpy_utf8>);
static_assert(hasSignature<unsigned long(char*, const char*, unsigned long, unsigned long),
                           strncpy_utf8_windowsfilename>);
static_assert(hasSignature<std::string(Text, std::string), tcharStringToString>);
static_assert(hasSignature<std::string(const std::wstring&, std::string), tcharStringToString>);
static_assert(hasSignature<std::string(const std::wstring&, std::string), wstringToString>);
static_assert(hasSignature<std::wstring(Text, std::string), stringToWString>);
static_assert(hasSignature<std::string(tag_TPVAPIServices*, const char*, unsigned long,
                                       tagVNCharSet, tagVNCharSet),
                           convertTextEncoding>);
static_assert(hasSignature<int(const char*, tagVNCharSet&, bool&), identifyBOM>);
static_assert(hasSignature<bool(unsigned short), detail::isHighSurrogate>);
static_assert(hasSignature<bool(unsigned short), detail::isLowSurrogate>);
static_assert(hasSignature<int(unsigned short, unsigned short), detail::getIntFromSurrogatePair>);
static_assert(hasSignature<std::string(Text, int), sanitizeUTF8>);
static_assert(hasSignature<std::string(Text, int), sanitizeUTF8with1252>);
static_assert(hasSignature<std::string(Text, int), sanitizeASCIIPrintable>);

}  // namespace
}  // namespace dorvex::testing::vnstring_test
