// The string library.
#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/detail/utf8Sanitizer.h"
#include "Tools/vnstring/vnstring.h"
#include "host.h"

namespace dorvex::consumer {
namespace {

using namespace vn::string;
using Units = std::basic_string<unsigned short>;

// The locale that every system has.
constexpr const char* kLocale = "C.UTF-8";

const std::string kEuro = "\xE2\x82\xAC";
const std::string kSmile = "\xF0\x9F\x98\x80";
const Units kSmileUnits = {0xD83D, 0xDE00};

TEST(Unicode, EncodesAndDecodes) {
  EXPECT_EQ(UTF8LeadingByteLength(0xE2), 3);
  EXPECT_TRUE(isUTF8ContinuationByte(0x82));
  EXPECT_EQ(codePointToUTF8(0x20AC), kEuro);
  EXPECT_EQ(codePointToUTF16(0x1F600), kSmileUnits);
  EXPECT_EQ(UCS2ToUTF8({0x20AC, 0xD83D}), kEuro + REPLACEMENT_CHARACTER_UTF8);
  EXPECT_EQ(UTF16ToUTF8(kSmileUnits), kSmile);
  EXPECT_EQ(UTF8ToUTF16(kSmile), kSmileUnits);

  unsigned long consumed = 0;
  EXPECT_EQ(UTF8ToCodePoint(kEuro.data(), kEuro.size(), consumed), 0x20AC);
  EXPECT_EQ(consumed, 3U);
  unsigned char bytes[] = {0xE2, 0x82, 0xAC, 0};
  unsigned codePoint = 0;
  EXPECT_EQ(UTF8ToCodePoint(bytes, &codePoint), bytes + 3);
  EXPECT_EQ(codePoint, 0x20ACU);
}

TEST(Unicode, HasTheTablesAndStepsOfTheConversions) {
  EXPECT_EQ(detail::bytesFromUTF8[0xE2], 2);
  EXPECT_EQ(detail::codepoint_from_1252_table[0], 0x20AC);
  EXPECT_TRUE(detail::isHighSurrogate(0xD83D));
  EXPECT_TRUE(detail::isLowSurrogate(0xDE00));
  EXPECT_EQ(detail::getIntFromSurrogatePair(0xD83D, 0xDE00), 0x1F600);
}

TEST(Unicode, CopiesWithoutCuttingASequence) {
  char name[4];
  EXPECT_EQ(strncpy_utf8(name, ("ab" + kEuro).c_str(), sizeof name), name);
  EXPECT_STREQ(name, "ab");
  EXPECT_EQ(strncpy_utf8_windowsfilename(name, " a:b", 4, sizeof name), 5U);
  EXPECT_STREQ(name, "ab");
}

TEST(Unicode, KnowsByteOrderMarks) {
  tagVNCharSet charSet{};
  bool bigEndian = true;
  EXPECT_EQ(identifyBOM("\xEF\xBB\xBFtext", charSet, bigEndian), 3);
  EXPECT_EQ(charSet, VN_CHARSET_UTF8);
  EXPECT_FALSE(bigEndian);
}

TEST(Locales, ConvertWideStrings) {
  EXPECT_EQ(wstringToString(L"\u20AC", kLocale), kEuro);
  EXPECT_EQ(stringToWString(kEuro, kLocale), L"\u20AC");
  EXPECT_EQ(tcharStringToString(L"\u20AC", kLocale), kEuro);
  EXPECT_EQ(tcharStringToString(kEuro, "not looked at"), kEuro);
  EXPECT_THROW(stringToWString("text", "no such locale"), vn::except::general_error);
}

TEST(Locales, ChangeForAWhile) {
  const std::string before = std::setlocale(LC_CTYPE, nullptr);
  std::unique_ptr<TemporaryCLocaleChange> change(
      TemporaryCLocaleChange::getTemporaryCLocaleChange(LC_CTYPE, kLocale));
  ASSERT_NE(change, nullptr);
  EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), kLocale);
  change.reset();
  EXPECT_EQ(std::setlocale(LC_CTYPE, nullptr), before);
}

TEST(ConvertTextEncoding, AsksTheHost) {
  Host host;
  EXPECT_EQ(convertTextEncoding(&host, "TEXT", 4, VN_CHARSET_UTF16, VN_CHARSET_UTF8), "text");
  EXPECT_EQ(host.convertedFrom, VN_CHARSET_UTF16);
  EXPECT_EQ(host.convertedTo, VN_CHARSET_UTF8);
  EXPECT_EQ(host.targetCharSet, 0);
  EXPECT_EQ(host.liveBlocks, 0);
}

TEST(Sanitisers, MakeValidText) {
  EXPECT_EQ(sanitizeUTF8("a\x80", '?'), "a?");
  EXPECT_EQ(sanitizeUTF8with1252("a\x80", '?'), "a" + kEuro);
  EXPECT_EQ(sanitizeASCIIPrintable("a\n", '?'), "a?");
}

// What the sanitisers do, done by hand.
template <typename ErrorPolicy>
std::string sanitizeByHand() {
  detail::utf8Sanitizer<ErrorPolicy> sanitizer{};
  sanitizer.replacementCodePoint = '?';
  sanitizer.parseByte('a');
  sanitizer.writeSingleError(0x80);
  sanitizer.parseByte(0xC2);
  sanitizer.writeBufferAsErrors();
  return sanitizer.output;
}

TEST(Sanitisers, CanBeDrivenByteByByte) {
  EXPECT_EQ(sanitizeByHand<detail::ReplaceError_Policy>(), "a??");
  EXPECT_EQ(sanitizeByHand<detail::Use1252Error_Policy>(), "a" + kEuro + "\xC3\x82");
  std::string output;
  detail::ReplaceError_Policy::writeError(output, 0x80, '?');
  detail::Use1252Error_Policy::writeError(output, 0x80, '?');
  EXPECT_EQ(output, "?" + kEuro);
}

TEST(Helpers, SearchAndReplace) {
  std::string text = "a-b-c";
  replaceAll(text, "-", "--");
  EXPECT_EQ(text, "a--b--c");
  EXPECT_TRUE(startsWith(text, "a-"));
  EXPECT_TRUE(startsWithCaseInsensitive(text, "A-"));
  EXPECT_TRUE(endsWith(text.c_str(), "-c"));
  EXPECT_TRUE(contains(text, "--b"));
  const char* list[] = {"x", "b"};
  EXPECT_TRUE(containsAnyOf(text, list, 2));
  EXPECT_FALSE(containsAnyOf(text, list, 1));
  EXPECT_EQ(stripDomainFromURL("https://host/path/file"), "path/file");
  EXPECT_EQ(split(text, '-'), (std::vector<std::string>{"a", "", "b", "", "c"}));
  text += "\r\n";
  stripNewLineCharsFromEnd(text);
  EXPECT_EQ(text, "a--b--c");
}

TEST(Helpers, TreatAscii) {
  char buffer[4] = {1, 1, 1, 1};
  copyStringToBuffer(buffer, sizeof buffer, "ab");
  EXPECT_EQ(std::memcmp(buffer, "ab\0\0", 4), 0);
  EXPECT_TRUE(isNumericStr(2, "12", 4));
  EXPECT_FALSE(isNumericStr(2, "1f", 4));
  EXPECT_TRUE(isHexStr(2, "1f", 4));
  EXPECT_EQ(asciiCharToLower('A'), 'a');
  EXPECT_EQ(asciiCharToUpper('a'), 'A');
  EXPECT_EQ(asciiStrToLower("Ab"), "ab");
  EXPECT_EQ(asciiStrToUpper("aB"), "AB");
  EXPECT_TRUE(asciiCaseInsensitiveCompare("aB", "Ab"));
  EXPECT_TRUE(inAsciiRange(127));
  EXPECT_FALSE(inAsciiRange(128));
}

}  // namespace
}  // namespace dorvex::consumer
