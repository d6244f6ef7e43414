#include <dlfcn.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>

#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/vnstring.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"

namespace {

int localeCalls = 0;

}  // namespace

// Found before the C library's, so that calls can be counted.
extern "C" char* setlocale(int category, const char* locale) noexcept {
  using SetLocale = char* (*)(int, const char*);
  static const auto next = reinterpret_cast<SetLocale>(dlsym(RTLD_NEXT, "setlocale"));
  ++localeCalls;
  return next(category, locale);
}

namespace dorvex::testing::vnstring_locale_test {
namespace {

using namespace vn::string;
using namespace std::string_literals;

const char* const kUTF8 = "en_US.UTF-8";
const char* const kLatin1 = "en_US.ISO-8859-1";
const char* const kAbsent = "xx_XX.ABSENT";

std::string currentLocale(int category = LC_CTYPE) { return std::setlocale(category, nullptr); }

// The build makes the two locales: these tests depend on nothing that the system
// has installed.
class Locale : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("LOCPATH", DORVEX_TEST_LOCALES, 1), 0);
    for (const char* locale : {kUTF8, kLatin1}) {
      ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale << " in " DORVEX_TEST_LOCALES;
    }
    ASSERT_EQ(std::setlocale(LC_ALL, kAbsent), nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  }
  void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

using WstringToString = Locale;
using StringToWString = Locale;
using TcharStringToString = Locale;
using LocaleChange = Locale;
using StartsWithCaseInsensitiveInALocale = Locale;

TEST_F(WstringToString, EncodesInTheLocale) {
  EXPECT_EQ(wstringToString(L"A\x00E9\x20AC\x1F600", kUTF8),
            "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(wstringToString(L"A\x00E9", kLatin1), "A\xE9");
}

TEST_F(WstringToString, UsesTheCurrentLocaleForAnEmptyName) {
  ASSERT_NE(std::setlocale(LC_CTYPE, kLatin1), nullptr);
  EXPECT_EQ(wstringToString(L"\x00E9", ""), "\xE9");
  EXPECT_EQ(currentLocale(), kLatin1);
}

TEST_F(WstringToString, WritesTheUTF8ReplacementInAnyEncoding) {
  EXPECT_EQ(wstringToString(L"a\x20ACz", kLatin1), "a\xEF\xBF\xBDz");
  EXPECT_EQ(wstringToString(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'z'}, kUTF8),
            "a\xEF\xBF\xBDz");
}

TEST_F(WstringToString, KeepsNulUnits) {
  EXPECT_EQ(wstringToString(L"a\0b"s, kUTF8), "a\0b"s);
  EXPECT_EQ(wstringToString(L"\0"s, kLatin1), "\0"s);
}

TEST_F(WstringToString, DoesNotTouchTheLocaleForAnEmptyText) {
  EXPECT_EQ(wstringToString(L"", kAbsent), "");
}

TEST_F(WstringToString, ThrowsGeneralErrorForALocaleThatIsAbsent) {
  EXPECT_THROW(wstringToString(L"a", kAbsent), vn::except::general_error);
  EXPECT_EQ(currentLocale(), "C");
}

TEST_F(WstringToString, PutsTheLocaleBack) {
  wstringToString(L"a", kUTF8);
  EXPECT_EQ(currentLocale(), "C");
  EXPECT_EQ(currentLocale(LC_NUMERIC), "C");
}

template <typename Convert>
void expectLocalePutBackOnFailure(Convert convert) {
  EXPECT_GE(failEachAllocation(convert, [] { EXPECT_EQ(currentLocale(), "C"); }), 2);
}

TEST_F(WstringToString, PutsTheLocaleBackWhenMemoryRunsOut) {
  const std::wstring text(100, L'\x20AC');
  expectLocalePutBackOnFailure([&] { wstringToString(text, kUTF8); });
}

TEST_F(StringToWString, DecodesInTheLocale) {
  EXPECT_EQ(stringToWString("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", kUTF8),
            L"A\x00E9\x20AC\x1F600");
  EXPECT_EQ(stringToWString("A\xE9\xC3\xA9", kLatin1), L"A\x00E9\x00C3\x00A9");
}

TEST_F(StringToWString, DecodesEveryByteOfLatin1) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(stringToWString(std::string(1, static_cast<char>(byte)), kLatin1),
              std::wstring(1, static_cast<wchar_t>(byte)));
  }
}

TEST_F(StringToWString, UsesTheCurrentLocaleForAnEmptyName) {
  ASSERT_NE(std::setlocale(LC_CTYPE, kUTF8), nullptr);
  EXPECT_EQ(stringToWString("\xC3\xA9", ""), L"\x00E9");
  EXPECT_EQ(currentLocale(), kUTF8);
}

TEST_F(StringToWString, GivesTheReplacementForEachBadByte) {
  EXPECT_EQ(stringToWString("a\xFFz", kUTF8), L"a\xFFFDz");
  EXPECT_EQ(stringToWString("\x80\xC0\x80", kUTF8), L"\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(stringToWString("\xC3\x41", kUTF8), L"\xFFFD\x0041");
}

TEST_F(StringToWString, EndsASequenceThatIsCutOffAtTheTerminator) {
  EXPECT_EQ(stringToWString("a\xE2\x82", kUTF8), L"a\xFFFD\xFFFD");
  EXPECT_EQ(stringToWString("\xF0\x9F\x98", kUTF8), L"\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(stringToWString("\xC3", kUTF8), L"\xFFFD");
}

TEST_F(StringToWString, StepsOverNulBytes) {
  EXPECT_EQ(stringToWString("a\0b"s, kUTF8), L"a\0b"s);
  EXPECT_EQ(stringToWString("\0\0"s, kLatin1), L"\0\0"s);
  EXPECT_EQ(stringToWString("\xE2\x82\0z"s, kUTF8), L"\xFFFD\xFFFD\0z"s);
}

TEST_F(StringToWString, DoesNotTouchTheLocaleForAnEmptyText) {
  EXPECT_EQ(stringToWString("", kAbsent), L"");
}

TEST_F(StringToWString, ThrowsGeneralErrorForALocaleThatIsAbsent) {
  EXPECT_THROW(stringToWString("a", kAbsent), vn::except::general_error);
  EXPECT_EQ(currentLocale(), "C");
}

TEST_F(StringToWString, PutsTheLocaleBack) {
  stringToWString("a", kUTF8);
  EXPECT_EQ(currentLocale(), "C");
}

TEST_F(StringToWString, PutsTheLocaleBackWhenMemoryRunsOut) {
  const std::string text(100, 'a');
  expectLocalePutBackOnFailure([&] { stringToWString(text, kUTF8); });
}

TEST_F(LocaleChange, OfAConversionIsOneOfTheEncodingAlone) {
  // A locale that has nothing but characters.
  const TemporaryDirectory folder;
  const char* const name = "xx_CHARACTERS";
  std::filesystem::create_directory(folder.path() / name);
  std::filesystem::copy_file(DORVEX_TEST_LOCALES "/en_US.UTF-8/LC_CTYPE",
                             folder.path() / name / "LC_CTYPE");
  ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_EQ(std::setlocale(LC_ALL, name), nullptr);
  EXPECT_EQ(wstringToString(L"\x20AC", name), "\xE2\x82\xAC");
  EXPECT_EQ(stringToWString("\xE2\x82\xAC", name), L"\x20AC");
}

TEST_F(TcharStringToString, CopiesBytesWithoutALookAtTheLocale) {
  EXPECT_EQ(tcharStringToString("a\0\xFF"s, kAbsent), "a\0\xFF"s);
}

TEST_F(TcharStringToString, ConvertsWideStrings) {
  EXPECT_EQ(tcharStringToString(L"\x00E9"s, kLatin1), "\xE9");
  EXPECT_EQ(tcharStringToString(L"\x00E9"s, kUTF8), "\xC3\xA9");
  EXPECT_THROW(tcharStringToString(L"\x00E9"s, kAbsent), vn::except::general_error);
}

std::unique_ptr<TemporaryCLocaleChange> change(int category, const std::string& locale) {
  return std::unique_ptr<TemporaryCLocaleChange>(
      TemporaryCLocaleChange::getTemporaryCLocaleChange(category, locale));
}

TEST_F(LocaleChange, LastsUntilTheObjectIsDeleted) {
  {
    const auto utf8 = change(LC_CTYPE, kUTF8);
    ASSERT_NE(utf8, nullptr);
    EXPECT_EQ(currentLocale(), kUTF8);
    {
      const auto latin1 = change(LC_CTYPE, kLatin1);
      ASSERT_NE(latin1, nullptr);
      EXPECT_EQ(currentLocale(), kLatin1);
    }
    EXPECT_EQ(currentLocale(), kUTF8);
  }
  EXPECT_EQ(currentLocale(), "C");
}

TEST_F(LocaleChange, ConcernsItsCategoryOnly) {
  const auto numeric = change(LC_NUMERIC, kUTF8);
  ASSERT_NE(numeric, nullptr);
  EXPECT_EQ(currentLocale(LC_NUMERIC), kUTF8);
  EXPECT_EQ(currentLocale(LC_CTYPE), "C");
}

TEST_F(LocaleChange, PutsNothingBackWhenTheLocaleHadThatName) {
  auto same = change(LC_CTYPE, "C");
  ASSERT_NE(same, nullptr);
  ASSERT_NE(std::setlocale(LC_CTYPE, kUTF8), nullptr);
  same.reset();
  EXPECT_EQ(currentLocale(), kUTF8);
}

TEST_F(LocaleChange, TakesTwoNamesOfOneLocaleForDifferent) {
  auto posix = change(LC_CTYPE, "POSIX");
  ASSERT_NE(posix, nullptr);
  ASSERT_NE(std::setlocale(LC_CTYPE, kUTF8), nullptr);
  posix.reset();
  EXPECT_EQ(currentLocale(), "C") << "put back, so the change was made";
}

TEST_F(LocaleChange, IsNullAndChangesNothingForALocaleThatIsAbsent) {
  ASSERT_NE(std::setlocale(LC_CTYPE, kLatin1), nullptr);
  EXPECT_EQ(change(LC_CTYPE, kAbsent), nullptr);
  EXPECT_EQ(currentLocale(), kLatin1);
}

TEST_F(LocaleChange, AsksForTheNameAndForTheChangeAndLeavesItAtThatWhenRefused) {
  const int before = localeCalls;
  EXPECT_EQ(change(LC_CTYPE, kAbsent), nullptr);
  EXPECT_EQ(localeCalls - before, 2);
}

TEST_F(LocaleChange, IsNullForACategoryThatIsAbsent) { EXPECT_EQ(change(9999, "C"), nullptr); }

TEST_F(LocaleChange, HoldsTheCategoryBeforeTheName) {
  static_assert(!std::is_polymorphic_v<TemporaryCLocaleChange>);
  static_assert(sizeof(TemporaryCLocaleChange) == 8 + sizeof(std::string));
  const auto utf8 = change(LC_CTYPE, kUTF8);
  int category = -1;
  std::memcpy(&category, static_cast<const void*>(utf8.get()), sizeof category);
  EXPECT_EQ(category, LC_CTYPE);
}

#ifndef __SANITIZE_ADDRESS__
// The address sanitizer has a strncasecmp of its own, which knows no locale.
TEST_F(StartsWithCaseInsensitiveInALocale, ComparesAsTheLocaleDoes) {
  EXPECT_FALSE(startsWithCaseInsensitive("\xC9tat", "\xE9"));
  const auto latin1 = change(LC_CTYPE, kLatin1);
  EXPECT_TRUE(startsWithCaseInsensitive("\xC9tat", "\xE9"));
}
#endif

}  // namespace
}  // namespace dorvex::testing::vnstring_locale_test
