// The routines of escapes.cpp.
#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/printed_form.h"

namespace {

std::string octalToAscii(std::string value) {
  convertAllOctalCodesToAscii(value);
  return value;
}

std::string lineFeedsAndTabs(std::string value) {
  replaceAllLFsAndTabs(value);
  return value;
}

std::string inplace(std::string value, const std::string& search, const std::string& replacement) {
  replaceInplace(value, search, replacement);
  return value;
}

std::string withoutFirst(std::string value, const std::string& pattern) {
  removeFirstCharOfPattern(value, pattern);
  return value;
}

// What the sweep makes of a text that stands in a message.
std::string swept(const std::string& text) {
  std::string printed = "text: \"";
  vn::iwork13::appendEscaped(text, printed);
  return getFieldContents(printed + "\"\n", 7);
}

struct Row {
  const char* search;
  const char* replacement;
};

constexpr Row kReplaceRows[] = {
    {R"(\342\200\176)", "'"},   {R"(\342\200\177)", "'"},  {R"(\342\200\230)", "'"},
    {R"(\342\200\231)", "'"},   {R"(\342\200\232)", ","},  {R"(\342\200\233)", "'"},
    {R"(\342\200\234)", "\""},  {R"(\342\200\235)", "\""}, {R"(\342\200\041)", "-"},
    {R"(\342\200\174)", "-"},   {R"(\342\200\220)", "-"},  {R"(\342\200\223)", "-"},
    {R"(\342\200\224)", "--"},  {R"(\342\200\225)", "--"}, {R"(\342\200\042)", "--"},
    {R"(\342\200\246)", "..."}, {R"(\")", "\""},
};

constexpr const char* kDeleteRows[] = {R"(\001)", R"(\002)",        R"(\003)", R"(\004)",
                                       R"(\005)", R"(\006)",        R"(\007)", R"(\008)",
                                       R"(\009)", R"(\357\277\274)"};

// All that is claimed of one byte must hold between any two, or three.
TEST(ComesOutAsItIs, HoldsOfNoValueThatIsChanged) {
  const std::string others = "nt\"'\n\t01234567\xE2\x80\x99";
  int held = 0;
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      for (const char third : others) {
        const std::string value = {static_cast<char>(first), static_cast<char>(second), third};
        if (!comesOutAsItIs(value)) continue;
        ++held;
        ASSERT_EQ(swept(value), value) << first << ' ' << second << ' ' << third;
      }
    }
  }
  EXPECT_GT(held, 1'000'000 / 2);
}

TEST(ComesOutAsItIs, HoldsOfOrdinaryTextOfAnyLength) {
  EXPECT_TRUE(comesOutAsItIs(""));
  EXPECT_TRUE(comesOutAsItIs("Warm \"the\" pot's\tlid,\nthen \xE2\x80\x98pour\xE2\x80\x99"));
  EXPECT_TRUE(comesOutAsItIs(std::string(10'000, 'x')));
}

TEST(ComesOutAsItIs, SeesOneByteThatIsChangedWhereverItStands) {
  for (const char changed : {'\\', '\r', '\0', '\1', '\x1F', '\x7F'}) {
    for (const std::size_t at : {0, 1, 4095, 4096, 4097, 9'998, 9'999}) {
      std::string value(10'000, 'x');
      value[at] = changed;
      EXPECT_FALSE(comesOutAsItIs(value)) << at;
      EXPECT_NE(swept(value), value) << at;
    }
  }
}

TEST(ConvertAllOctalCodesToAscii, ReplacesEachOfTheSeventeenRows) {
  for (const auto& [search, replacement] : kReplaceRows) {
    const std::string printed = search;
    const std::string plain = replacement;
    EXPECT_EQ(octalToAscii(printed), plain);
    EXPECT_EQ(octalToAscii("a" + printed + printed + "b" + printed),
              "a" + plain + plain + "b" + plain);
  }
}

TEST(ConvertAllOctalCodesToAscii, DeletesEachOfTheTenRows) {
  for (const std::string printed : kDeleteRows)
    EXPECT_EQ(octalToAscii("a" + printed + printed + "b" + printed), "ab");
}

TEST(ConvertAllOctalCodesToAscii, LeavesWhatNoRowNames) {
  for (const std::string value : {"", "plain", "\\", "\\000", "\\010", "\\013", "\\037", "\\177",
                                  "\\342\\200\\240", "\\r", "\\n", "\\'", "\\00", "\xE2\x80\x99"})
    EXPECT_EQ(octalToAscii(value), value);
}

TEST(ConvertAllOctalCodesToAscii, DoesNotSearchAReplacementAgainByTheSameRow) {
  // Row 17 leaves a backslash in front of its quote, which is a match again.
  EXPECT_EQ(octalToAscii(R"(\\")"), R"(\")");
}

TEST(ConvertAllOctalCodesToAscii, ShowsLaterRowsWhatEarlierOnesPut) {
  // Row 7 puts a quote behind a backslash, which row 17 then takes away.
  EXPECT_EQ(octalToAscii(R"(\\342\200\234)"), "\"");
}

TEST(ConvertAllOctalCodesToAscii, FindsNothingThatADeletionHasClosedUpBeforeItsPlace) {
  EXPECT_EQ(octalToAscii(R"(\0\00101)"), R"(\001)");
}

TEST(ConvertAllOctalCodesToAscii, FindsInALaterRowWhatAnEarlierOneHasClosedUp) {
  EXPECT_EQ(octalToAscii(R"(\0\00102)"), "");
  EXPECT_EQ(octalToAscii(R"(\0\00201)"), R"(\001)");  // row "\001" has gone by
}

TEST(ConvertAllOctalCodesToAscii, FindsASecondOccurrenceRightBehindTheFirst) {
  EXPECT_EQ(octalToAscii(R"(\001\001\001x)"), "x");
}

TEST(ReplaceAllLFsAndTabs, ReplacesBothEscapes) {
  EXPECT_EQ(lineFeedsAndTabs(R"(a\nb\tc\n)"), "a\nb\tc\n");
  EXPECT_EQ(lineFeedsAndTabs(""), "");
  EXPECT_EQ(lineFeedsAndTabs(R"(\r\v\)"), R"(\r\v\)");
}

TEST(ReplaceAllLFsAndTabs, TakesTheSecondOfTwoBackslashesForTheBeginningOfAnEscape) {
  EXPECT_EQ(lineFeedsAndTabs(R"(C:\\temp)"), "C:\\\temp");
  EXPECT_EQ(lineFeedsAndTabs(R"(C:\\new)"), "C:\\\new");
}

TEST(ReplaceInplace, ReplacesEveryOccurrenceFromLeftToRight) {
  EXPECT_EQ(inplace("aXXbXXXc", "XX", "y"), "aybyXc");
  EXPECT_EQ(inplace("abab", "ab", "ba"), "baba");
  EXPECT_EQ(inplace("abab", "ab", ""), "");
  EXPECT_EQ(inplace("a", "abc", "x"), "a");
  EXPECT_EQ(inplace("", "a", ""), "");
}

TEST(ReplaceInplace, DoesNotLookAtWhatAReplacementWrote) {
  EXPECT_EQ(inplace("aaab", "aab", "ab"), "aab");
  EXPECT_EQ(inplace("aab", "ab", "b"), "ab");
}

TEST(ReplaceInplace, RefusesAReplacementThatIsLonger) {
  std::string value = "unchanged";
  try {
    replaceInplace(value, "x", "yy");
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Replacement string should be smaller then substring it replaces");
  }
  EXPECT_EQ(value, "unchanged");
  EXPECT_EQ(inplace("x", "x", "y"), "y");  // an equal length is allowed
}

TEST(RemoveFirstCharOfPattern, TurnsAnEscapedQuoteIntoAQuote) {
  EXPECT_EQ(withoutFirst(R"(it\'s \'ok\')", R"(\')"), "it's 'ok'");
  EXPECT_EQ(withoutFirst("", R"(\')"), "");
  EXPECT_EQ(withoutFirst("none", R"(\')"), "none");
}

TEST(RemoveFirstCharOfPattern, GoesOnBehindTheByteThatMovedUp) {
  EXPECT_EQ(withoutFirst("aaaa", "aa"), "aa");
  EXPECT_EQ(withoutFirst(R"(\\'')", R"(\')"), R"(\'')");
}

// ---------------------------------------------------------------------------
// The three together, as the sweep applies them.

TEST(Normalisation, LeavesAnEmptyTextEmpty) { EXPECT_EQ(swept(""), ""); }

TEST(Normalisation, GivesQuotesBackAsTheyWere) {
  EXPECT_EQ(swept("say \"hi\""), "say \"hi\"");
  EXPECT_EQ(swept("it's"), "it's");
  EXPECT_EQ(swept("\"\"''"), "\"\"''");
}

TEST(Normalisation, GivesLineFeedsAndTabsBack) { EXPECT_EQ(swept("a\nb\tc"), "a\nb\tc"); }

TEST(Normalisation, LeavesACarriageReturnAsTwoCharacters) { EXPECT_EQ(swept("a\rb"), "a\\rb"); }

TEST(Normalisation, LeavesOtherControlBytesAsFourCharacters) {
  EXPECT_EQ(swept("\x0B"), "\\013");
  EXPECT_EQ(swept(std::string(1, '\0')), "\\000");
  EXPECT_EQ(swept("\x08\x0C\x0E\x1F\x7F"), "\\010\\014\\016\\037\\177");
}

TEST(Normalisation, DeletesTheBytesOneToSeven) {
  EXPECT_EQ(swept("a\x01\x02\x03\x04\x05\x06\x07"
                  "b"),
            "ab");
  EXPECT_EQ(swept("\x01\x07"), "");
}

TEST(Normalisation, LeavesAllHighBytesAsTheyAre) {
  const std::string text =
      "\xE2\x80\x98\xE2\x80\x9C\xE2\x80\x93\xE2\x80\xA6\xEF\xBF\xBC\xF0\x9F\x8D\xB5\xFF\x80";
  EXPECT_EQ(swept(text), text);
}

TEST(Normalisation, DoublesABackslash) {
  EXPECT_EQ(swept("\\"), "\\\\");
  EXPECT_EQ(swept("C:\\Program"), "C:\\\\Program");
}

TEST(Normalisation, TakesABackslashBeforeNOrTForAnEscape) {
  EXPECT_EQ(swept("C:\\temp"), "C:\\\temp");
  EXPECT_EQ(swept("C:\\new"), "C:\\\new");
}

TEST(Normalisation, TakesABackslashBeforeThreeDigitsForADeletedByte) {
  EXPECT_EQ(swept("\\001x"), "\\x");
  EXPECT_EQ(swept("\\008"), "\\");
  EXPECT_EQ(swept("\\009"), "\\");
}

TEST(Normalisation, TurnsWhatADeletionLeavesIntoALineFeed) { EXPECT_EQ(swept("\\001n"), "\n"); }

TEST(Normalisation, GivesABackslashBeforeADoubleQuoteBackExactly) {
  EXPECT_EQ(swept("\\\""), "\\\"");
}

TEST(Normalisation, DoublesABackslashBeforeAnApostrophe) { EXPECT_EQ(swept("\\'"), "\\\\'"); }

// --- The same, letter by letter ---

// The steps as they are stated, on a value that is rewritten at each match. What
// the module does must come to the same, in time linear in the length.
void replaceByLetter(std::string& value, const std::string& search,
                     const std::string& replacement) {
  std::size_t position = 0;
  while ((position = value.find(search, position)) != std::string::npos) {
    value.replace(position, search.size(), replacement);
    position += replacement.size();
  }
}

std::string octalToAsciiByLetter(std::string value) {
  for (const Row& row : kReplaceRows) replaceByLetter(value, row.search, row.replacement);
  for (const char* search : kDeleteRows) replaceByLetter(value, search, "");
  return value;
}

std::string lineFeedsAndTabsByLetter(std::string value) {
  replaceByLetter(value, "\\n", "\n");
  replaceByLetter(value, "\\t", "\t");
  return value;
}

std::string withoutFirstByLetter(std::string value, const std::string& pattern) {
  std::size_t position = 0;
  while ((position = value.find(pattern, position)) != std::string::npos) {
    value.erase(position, 1);
    ++position;
  }
  return value;
}

// Pieces of the search texts, so that rows meet, overlap and close up.
class HostileValues {
 public:
  std::string next() {
    std::string value;
    for (std::size_t count = random_() % 24; count > 0; --count) value += piece();
    return value;
  }

 private:
  std::string piece() {
    static const std::vector<std::string> pieces = {
        "\\",  "\\\\", "\"",  "'",     "n",     "t",        "0",       "00",  "1",   "8",
        "\\0", "\\00", "\\3", "\\342", "\\200", "\\357\\2", "77\\274", "277", "274", "57",
        "2",   "9",    "a",   "\\n",   "\\t",   "\\\"",     "\\'",     "\n",  "."};
    const std::size_t rows = std::size(kReplaceRows) + std::size(kDeleteRows);
    const std::size_t choice = random_() % (pieces.size() + rows);
    if (choice < pieces.size()) return pieces[choice];
    const std::size_t row = choice - pieces.size();
    const std::string search = row < std::size(kReplaceRows)
                                   ? kReplaceRows[row].search
                                   : kDeleteRows[row - std::size(kReplaceRows)];
    return random_() % 3 == 0 ? search.substr(0, random_() % search.size()) : search;
  }

  std::mt19937 random_{20261121};
};

TEST(Normalisation, ComesToTheSameAsLetterByLetter) {
  HostileValues values;
  for (int i = 0; i < 200'000; ++i) {
    const std::string value = values.next();
    ASSERT_EQ(octalToAscii(value), octalToAsciiByLetter(value)) << value;
    ASSERT_EQ(lineFeedsAndTabs(value), lineFeedsAndTabsByLetter(value)) << value;
    for (const char* pattern : {"\\'", "\\\"", "\\\\", "aa"}) {
      ASSERT_EQ(withoutFirst(value, pattern), withoutFirstByLetter(value, pattern)) << value;
    }
  }
}

}  // namespace
