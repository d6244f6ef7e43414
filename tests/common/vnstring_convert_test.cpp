#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

#include "Tools/vnstring/vnstring.h"
#include "support/failing_allocation.h"
#include "support/guarded_buffer.h"

namespace dorvex::testing::vnstring_convert_test {
namespace {

using namespace vn::string;
using namespace std::string_literals;

using UTF16String = std::basic_string<unsigned short>;

const std::string R = "\xEF\xBF\xBD";

TEST(ReplacementCharacter, IsUFFFDInUTF8) { EXPECT_EQ(REPLACEMENT_CHARACTER_UTF8, R); }

TEST(BytesFromUTF8, CountsTheTrailingBytesOfEveryLead) {
  static_assert(sizeof detail::bytesFromUTF8 == 256);
  struct Row {
    int first, last, entry;
  };
  const Row rows[] = {{0x00, 0xBF, 0}, {0xC0, 0xDF, 1}, {0xE0, 0xEF, 2},
                      {0xF0, 0xF7, 3}, {0xF8, 0xFB, 4}, {0xFC, 0xFF, 5}};
  int checked = 0;
  for (const Row& row : rows) {
    for (int byte = row.first; byte <= row.last; ++byte, ++checked) {
      EXPECT_EQ(detail::bytesFromUTF8[byte], row.entry) << byte;
    }
  }
  EXPECT_EQ(checked, 256);
}

TEST(UTF8LeadingByteLength, CountsTheLeadingOnes) {
  struct Row {
    int first, last, length;
  };
  const Row rows[] = {{0x00, 0x7F, 1}, {0x80, 0xBF, 0}, {0xC0, 0xDF, 2},
                      {0xE0, 0xEF, 3}, {0xF0, 0xF7, 4}, {0xF8, 0xFF, 0}};
  for (const Row& row : rows) {
    for (int byte = row.first; byte <= row.last; ++byte) {
      EXPECT_EQ(UTF8LeadingByteLength(static_cast<unsigned char>(byte)), row.length) << byte;
    }
  }
}

TEST(IsUTF8ContinuationByte, IsTrueFrom80ToBF) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(isUTF8ContinuationByte(static_cast<unsigned char>(byte)),
              byte >= 0x80 && byte <= 0xBF)
        << byte;
  }
}

TEST(CodePointToUTF8, EncodesEachLengthAtItsEdges) {
  struct Row {
    int codePoint;
    std::string bytes;
  };
  const Row rows[] = {
      {0, "\0"s},
      {0x41, "A"},
      {0x7F, "\x7F"},
      {0x80, "\xC2\x80"},
      {0x7FF, "\xDF\xBF"},
      {0x800, "\xE0\xA0\x80"},
      {0xD7FF, "\xED\x9F\xBF"},
      {0xE000, "\xEE\x80\x80"},
      {0xFFFD, R},
      {0xFFFF, "\xEF\xBF\xBF"},
      {0x10000, "\xF0\x90\x80\x80"},
      {0x1F600, "\xF0\x9F\x98\x80"},
      {0x10FFFF, "\xF4\x8F\xBF\xBF"},
  };
  for (const Row& row : rows) EXPECT_EQ(codePointToUTF8(row.codePoint), row.bytes) << row.codePoint;
}

TEST(CodePointToUTF8, GivesTheReplacementForWhatIsNoCodePoint) {
  for (const int codePoint :
       {-1, -0x7FFFFFFF - 1, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0x110000, 0x7FFFFFFF}) {
    EXPECT_EQ(codePointToUTF8(codePoint), R) << codePoint;
  }
}

TEST(CodePointToUTF16, EncodesEachLengthAtItsEdges) {
  struct Row {
    int codePoint;
    UTF16String units;
  };
  const Row rows[] = {
      {0, {0x0000}},
      {0x41, {0x0041}},
      {0xD7FF, {0xD7FF}},
      {0xE000, {0xE000}},
      {0xFFFF, {0xFFFF}},
      {0x10000, {0xD800, 0xDC00}},
      {0x1F600, {0xD83D, 0xDE00}},
      {0x10FFFF, {0xDBFF, 0xDFFF}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(codePointToUTF16(row.codePoint), row.units) << row.codePoint;
  }
}

TEST(CodePointToUTF16, GivesTheReplacementForWhatIsNoCodePoint) {
  for (const int codePoint : {-1, 0xD800, 0xDFFF, 0x110000, 0x7FFFFFFF}) {
    EXPECT_EQ(codePointToUTF16(codePoint), UTF16String{0xFFFD}) << codePoint;
  }
}

TEST(Surrogates, AreToldApartByTheirUpperBits) {
  for (unsigned int value = 0; value <= 0xFFFF; ++value) {
    const auto unit = static_cast<unsigned short>(value);
    ASSERT_EQ(detail::isHighSurrogate(unit), value >= 0xD800 && value <= 0xDBFF) << value;
    ASSERT_EQ(detail::isLowSurrogate(unit), value >= 0xDC00 && value <= 0xDFFF) << value;
  }
}

TEST(GetIntFromSurrogatePair, JoinsThePair) {
  EXPECT_EQ(detail::getIntFromSurrogatePair(0xD800, 0xDC00), 0x10000);
  EXPECT_EQ(detail::getIntFromSurrogatePair(0xD83D, 0xDE00), 0x1F600);
  EXPECT_EQ(detail::getIntFromSurrogatePair(0xDBFF, 0xDFFF), 0x10FFFF);
}

TEST(GetIntFromSurrogatePair, CalculatesWith16BitsWhateverTheUnits) {
  EXPECT_EQ(detail::getIntFromSurrogatePair(0, 0), (0x2800 << 10) + 0x2400 + 0x10000);
  EXPECT_EQ(detail::getIntFromSurrogatePair(0xFFFF, 0xFFFF), (0x27FF << 10) + 0x23FF + 0x10000);
}

TEST(UCS2ToUTF8, ConvertsEachUnitByItself) {
  EXPECT_EQ(UCS2ToUTF8({0x0041, 0x00E9, 0x20AC}), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(UCS2ToUTF8({0xD83D, 0xDE00}), R + R) << "there is no pairing";
  EXPECT_EQ(UCS2ToUTF8({0x0000}), "\0"s);
  EXPECT_EQ(UCS2ToUTF8({}), "");
}

TEST(UTF16ToUTF8, JoinsSurrogatePairs) {
  EXPECT_EQ(UTF16ToUTF8({0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(UTF16ToUTF8({0x0041, 0xD83D, 0xDE00, 0x0042}), "A\xF0\x9F\x98\x80"s + "B");
  EXPECT_EQ(UTF16ToUTF8({0x0000, 0x20AC}), "\0\xE2\x82\xAC"s);
  EXPECT_EQ(UTF16ToUTF8({}), "");
}

TEST(UTF16ToUTF8, GivesTheReplacementForEachSurrogateWithoutPartner) {
  EXPECT_EQ(UTF16ToUTF8({0xDE00}), R);
  EXPECT_EQ(UTF16ToUTF8({0xD83D}), R);
  EXPECT_EQ(UTF16ToUTF8({0xD83D, 0x0041}), R + "A");
  EXPECT_EQ(UTF16ToUTF8({0xD83D, 0xD83D, 0xDE00}), R + "\xF0\x9F\x98\x80");
  EXPECT_EQ(UTF16ToUTF8({0xD83D, 0xDE00, 0xDE00}), "\xF0\x9F\x98\x80" + R);
  EXPECT_EQ(UTF16ToUTF8({0xD83D, 0xD83D}), R + R);
  EXPECT_EQ(UTF16ToUTF8({0xDE00, 0xD83D}), R + R);
}

TEST(UTF16ToUTF8, GivesBackEveryCodePoint) {
  for (int codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    ASSERT_EQ(UTF16ToUTF8(codePointToUTF16(codePoint)), codePointToUTF8(codePoint)) << codePoint;
  }
}

TEST(Conversions, LetAFailedAllocationOut) {
  const UTF16String units(100, 0x20AC);
  const std::string bytes(100, 'a');
  EXPECT_GE(failEachAllocation([&] { UCS2ToUTF8(units); }), 2);
  EXPECT_GE(failEachAllocation([&] { UTF16ToUTF8(units); }), 2);
  EXPECT_GE(failEachAllocation([&] { UTF8ToUTF16(bytes); }), 2);
}

// One row for each kind of first byte; UTF8ToUTF16 must take it alike.
struct SequenceRow {
  std::string text;
  int codePoint;
  unsigned long consumed;
};

const std::vector<SequenceRow>& sequenceRows() {
  static const std::vector<SequenceRow> rows{
      {"A", 'A', 1},
      {"\x7FZ", 0x7F, 1},
      {"\0"s, 0, 1},
      {"\x80", 0x00, 1},  // a stray byte gives its low six bits
      {"\xBF\x80", 0x3F, 1},
      {"\xC3\xA9", 0xE9, 2},
      {"\xC0\x80", 0x00, 2},  // overlong forms are taken
      {"\xC3\x41", 0xC1, 2},  // following bytes are not tested
      {"\xC3\xFF", 0xFF, 2},
      {"\xC3\x00"s, 0xC0, 2},
      {"\xE2\x82\xAC!", 0x20AC, 3},
      {"\xED\xA0\x80", 0xFFFD, 3},  // a surrogate
      {"\xED\xBF\xBF", 0xFFFD, 3},
      {"\xEE\x80\x80", 0xE000, 3},
      {"\xF0\x9F\x98\x80", 0x1F600, 4},
      {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
      {"\xF4\x90\x80\x80", 0xFFFD, 4},  // above the last code point
      {"\xF7\xBF\xBF\xBF", 0xFFFD, 4},
      {"\xC3", 0xFFFD, 1},  // cut off
      {"\xE2\x82", 0xFFFD, 1},
      {"\xF0\x9F\x98", 0xFFFD, 1},
      {"\xF8\x88\x80\x80\x80", 0xFFFD, 1},  // five and six bytes
      {"\xFB\xBF\xBF\xBF\xBF", 0xFFFD, 1},
      {"\xFC\x84\x80\x80\x80\x80", 0xFFFD, 1},
      {"\xFD\xBF\xBF\xBF\xBF\xBF", 0xFFFD, 1},
      {"\xFE\x80\x80\x80\x80\x80\x80", 0xFFFD, 1},
  };
  return rows;
}

TEST(UTF8ToCodePointWithLength, DecodesEachKindOfFirstByte) {
  for (const SequenceRow& row : sequenceRows()) {
    const GuardedBuffer text(row.text);
    unsigned long consumed = 99;
    EXPECT_EQ(UTF8ToCodePoint(text.chars(), text.size(), consumed), row.codePoint)
        << ::testing::PrintToString(row.text);
    EXPECT_EQ(consumed, row.consumed) << ::testing::PrintToString(row.text);
  }
}

TEST(UTF8ToCodePointWithLength, LooksAtNoMoreThanTheLength) {
  unsigned long consumed = 0;
  EXPECT_EQ(UTF8ToCodePoint("\xF0\x9F\x98\x80", 4, consumed), 0x1F600);
  EXPECT_EQ(consumed, 4U);
  EXPECT_EQ(UTF8ToCodePoint("\xF0\x9F\x98\x80", 3, consumed), 0xFFFD);
  EXPECT_EQ(consumed, 1U);
}

TEST(UTF8ToCodePointWithLength, ConsumesNothingOfAnEmptyText) {
  unsigned long consumed = 99;
  EXPECT_EQ(UTF8ToCodePoint("A", 0, consumed), 0xFFFD);
  EXPECT_EQ(consumed, 0U);
}

TEST(UTF8ToUTF16, TakesEachSequenceAsUTF8ToCodePointDoes) {
  for (const SequenceRow& row : sequenceRows()) {
    const UTF16String units = UTF8ToUTF16(row.text);
    const UTF16String first = codePointToUTF16(row.codePoint);
    EXPECT_EQ(units.substr(0, first.size()), first) << ::testing::PrintToString(row.text);
    EXPECT_EQ(units.substr(first.size()), UTF8ToUTF16(row.text.substr(row.consumed)))
        << ::testing::PrintToString(row.text);
  }
}

TEST(UTF8ToUTF16, ConvertsWholeTexts) {
  struct Row {
    std::string text;
    UTF16String units;
  };
  const Row rows[] = {
      {"", {}},
      {"A\xC3\xA9", {0x0041, 0x00E9}},
      {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
      {"\xC0\x80", {0x0000}},
      {"\x80", {0x0000}},
      {"\xC3\x41", {0x00C1}},
      {"\xED\xA0\x80", {0xFFFD}},
      {"\xE2\x82", {0xFFFD, 0x0002}},
      {"a\0b"s, {0x0061, 0x0000, 0x0062}},
      {"\xF8\x88\x80\x80\x80", {0xFFFD, 0x0008, 0x0000, 0x0000, 0x0000}},
      {"\xF4\x90\x80\x80", {0xFFFD}},
      {"\xC3\xFF", {0x00FF}},
  };
  for (const Row& row : rows) EXPECT_EQ(UTF8ToUTF16(row.text), row.units);
}

TEST(UTF8ToUTF16, GivesBackEveryCodePoint) {
  for (int codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    ASSERT_EQ(UTF8ToUTF16(codePointToUTF8(codePoint)), codePointToUTF16(codePoint)) << codePoint;
  }
}

// Whether a call, in a process of its own, does not end in that time.
template <typename Call>
bool isStillRunningAfter(std::chrono::milliseconds time, Call call) {
  const pid_t child = fork();
  if (child == 0) {
    call();
    _exit(0);
  }
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < deadline) {
    if (waitpid(child, nullptr, WNOHANG) != 0) return false;
    usleep(10000);
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  return true;
}

void decode(const char* text) {
  unsigned long consumed = 0;
  UTF8ToCodePoint(text, std::strlen(text), consumed);
}

TEST(UTF8ToCodePointWithLength, DoesNotReturnFromFF) {
  using namespace std::chrono_literals;
  EXPECT_TRUE(isStillRunningAfter(300ms, [] { decode("\xFF"); }));
  EXPECT_FALSE(isStillRunningAfter(30s, [] { decode("\xFE"); })) << "the check itself can tell";
}

TEST(UTF8ToUTF16, DoesNotReturnFromFF) {
  using namespace std::chrono_literals;
  EXPECT_TRUE(isStillRunningAfter(300ms, [] { UTF8ToUTF16("a\xFF"); }));
}

struct UnlimitedRow {
  std::string text;
  unsigned int codePoint;
  std::ptrdiff_t advance;
};

TEST(UTF8ToCodePointWithPointer, DecodesEachKindOfFirstByte) {
  const UnlimitedRow rows[] = {
      {"A", 'A', 1},
      {"\0"s, 0, 1},
      {"\x80", 0x00, 1},
      {"\xBF", 0x3F, 1},
      {"\xC3\xA9", 0xE9, 2},
      {"\xC0\x80", 0x00, 2},
      {"\xC3\x41", 0xC1, 2},
      {"\xC3\x00"s, 0xC0, 2},  // reads past a NUL byte
      {"\xE2\x82\xAC", 0x20AC, 3},
      {"\xE2\x00\x00"s, 0x2000, 3},
      {"\xED\xA0\x80", 0xD800, 3},  // the value is never tested
      {"\xF0\x9F\x98\x80", 0x1F600, 4},
      {"\xF4\x90\x80\x80", 0x110000, 4},
      {"\xF7\xBF\xBF\xBF", 0x1FFFFF, 4},
      {"\xF8\x88\x80\x80\x80", 0x200000, 5},
      {"\xFB\xBF\xBF\xBF\xBF", 0x3FFFFFF, 5},
      {"\xFC\x84\x80\x80\x80\x80", 0x4000000, 6},
      {"\xFD\xBF\xBF\xBF\xBF\xBF", 0x7FFFFFFF, 6},
      {"\xFE", 0xFE, 1},
      {"\xFF", 0xFF, 1},
  };
  for (const UnlimitedRow& row : rows) {
    GuardedBuffer text(row.text);
    unsigned int codePoint = 99;
    const unsigned char* const end = UTF8ToCodePoint(text.data(), &codePoint);
    EXPECT_EQ(codePoint, row.codePoint) << ::testing::PrintToString(row.text);
    EXPECT_EQ(end - text.data(), row.advance) << ::testing::PrintToString(row.text);
  }
}

TEST(UTF8ToCodePointWithPointer, SetsTheResultToZeroBeforeItReads) {
  unsigned int both = 0x41414141;
  auto* const text = reinterpret_cast<unsigned char*>(&both);
  EXPECT_EQ(UTF8ToCodePoint(text, &both), text + 1);
  EXPECT_EQ(both, 0U) << "the text was in the same place";
}

// What dest holds after the call, with '#' where nothing was written.
std::string copied(const std::string& src, unsigned long size) {
  const GuardedBuffer source(src);
  std::string dest(16, '#');
  EXPECT_EQ(strncpy_utf8(dest.data(), source.chars(), size), dest.data());
  EXPECT_EQ(dest.substr(size), std::string(dest.size() - size, '#')) << "wrote past size";
  return dest.substr(0, size);
}

TEST(StrncpyUtf8, NeverCutsASequence) {
  EXPECT_EQ(copied("a\xC3\xA9"s, 2), "a\0"s);
  EXPECT_EQ(copied("a\xC3\xA9"s, 3), "a\xC3\xA9") << "no terminator";
  EXPECT_EQ(copied("\xE2\x82\xAC"s, 2), "\0\0"s);
  EXPECT_EQ(copied("\xF0\x9F\x98\x80"s, 3), "\0\0\0"s);
  EXPECT_EQ(copied("\xF0\x9F\x98\x80"s, 4), "\xF0\x9F\x98\x80");
  EXPECT_EQ(copied("\xF8\x88\x80\x80\x80"s, 4), "\0\0\0\0"s);
  EXPECT_EQ(copied("\xFC\x84\x80\x80\x80\x80"s, 6), "\xFC\x84\x80\x80\x80\x80");
  EXPECT_EQ(copied("\xFF"s, 5), "\0\0\0\0\0"s);
}

TEST(StrncpyUtf8, EndsAtANulByteAndFillsTheRest) {
  EXPECT_EQ(copied("ab\0cd"s, 5), "ab\0\0\0"s);
  EXPECT_EQ(copied("\0"s, 3), "\0\0\0"s);
  EXPECT_EQ(copied("ab\0"s, 2), "ab");
  EXPECT_EQ(copied("", 0), "");
}

TEST(StrncpyUtf8, CopiesStrayContinuationBytes) {
  EXPECT_EQ(copied("\x80\xBF\0"s, 4), "\x80\xBF\0\0"s);
}

TEST(StrncpyUtf8, TestsOnlyTheLengthThatTheLeadAnnounces) {
  EXPECT_EQ(copied("\xC3z\0"s, 4), "\xC3z\0\0"s);
}

std::string fileName(const std::string& src, unsigned long srcSize, unsigned long destSize) {
  const GuardedBuffer source(src);
  std::string dest(16, '#');
  EXPECT_EQ(strncpy_utf8_windowsfilename(dest.data(), source.chars(), srcSize, destSize),
            destSize + 1);
  EXPECT_EQ(dest.substr(destSize), std::string(dest.size() - destSize, '#')) << "wrote past size";
  return dest.substr(0, destSize);
}

TEST(StrncpyUtf8Windowsfilename, LeavesOutLeadingBlanksAndForbiddenBytes) {
  EXPECT_EQ(fileName("  a:b?c\0"s, 8, 5), "abc\0\0"s);
  EXPECT_EQ(fileName("\"#*/:<>?\\|x\0"s, 12, 3), "x\0\0"s);
}

TEST(StrncpyUtf8Windowsfilename, KeepsEveryOtherByte) {
  for (int byte = 1; byte < 256; ++byte) {
    const std::string text{'x', static_cast<char>(byte), 0, 0, 0, 0, 0, 0};
    const bool forbidden = byte < 0x20 || std::strchr("\"#*/:<>?\\|", byte) != nullptr;
    std::string expected = forbidden ? "x" : text.substr(0, 2);
    expected.resize(8);
    EXPECT_EQ(fileName(text, 8, 8), expected) << byte;
  }
}

TEST(StrncpyUtf8Windowsfilename, KeepsBlanksAndDotsAtTheEnd) {
  EXPECT_EQ(fileName("a b. .\0"s, 7, 7), "a b. .\0"s);
  EXPECT_EQ(fileName("CON\0"s, 4, 4), "CON\0"s);
}

TEST(StrncpyUtf8Windowsfilename, LeavesNoTerminatorInAFullBuffer) {
  EXPECT_EQ(fileName("abcdef\0"s, 7, 3), "abc");
  EXPECT_EQ(fileName("a:b:c:d\0"s, 8, 3), "abc") << "what is left out takes no room";
}

TEST(StrncpyUtf8Windowsfilename, GoesOnOnlyToTheEndOfItsSource) {
  EXPECT_EQ(fileName("abcdef", 3, 6), "abc\0\0\0"s);
  EXPECT_EQ(fileName("abc", 3, 6), "abc\0\0\0"s);
  EXPECT_EQ(fileName("ab\0cd"s, 5, 6), "ab\0\0\0\0"s);
}

TEST(StrncpyUtf8Windowsfilename, CutsNoSequenceAtEitherEnd) {
  EXPECT_EQ(fileName("a\xC3\xA9z\0"s, 5, 2), "a\0"s);
  EXPECT_EQ(fileName("a\xC3\xA9z\0"s, 5, 3), "a\xC3\xA9");
  EXPECT_EQ(fileName("a\xC3\xA9", 2, 6), "a\0\0\0\0\0"s);
  EXPECT_EQ(fileName("a\xC3\xA9", 3, 6), "a\xC3\xA9\0\0\0"s);
}

TEST(StrncpyUtf8Windowsfilename, SkipsBlanksBeyondTheSizeOfItsSource) {
  EXPECT_EQ(fileName("   ab", 2, 4), "\0\0\0\0"s) << "nothing is copied from there";
  EXPECT_EQ(fileName("   ab", 3, 4), "\0\0\0\0"s);
  EXPECT_EQ(fileName("   ab", 4, 4), "a\0\0\0"s);
  EXPECT_EQ(fileName("  \0"s, 3, 2), "\0\0"s) << "the terminator ends the blanks";
}

TEST(StrncpyUtf8Windowsfilename, SkipsOnlyBlanks) {
  EXPECT_EQ(fileName("\t a\0"s, 4, 4), " a\0\0"s);
}

TEST(StrncpyUtf8Windowsfilename, ReturnsOneForNoRoom) { EXPECT_EQ(fileName("abc", 3, 0), ""); }

// A host table that writes down what it is asked.
class RecordingHost {
 public:
  struct Conversion {
    tag_TPVAPIServices* services;
    tagVNCharSet from;
    std::int32_t to;
    const unsigned char* input;
    std::int32_t inputLength;
    const unsigned char* output;
    std::int32_t outputLength;
    int substitute;
  };

  RecordingHost() {
    record_.services.ConvertText = convertText;
    record_.services.allocator.Alloc = alloc;
    record_.services.allocator.Free = release;
    record_.services.targetCharSet = 17;
    record_.self = this;
  }

  tag_TPVAPIServices* services() { return &record_.services; }

  // What the host makes of any text.
  std::int32_t reportedLength = 3;
  std::string converted = "xyz";
  std::int32_t finalLength = 3;
  bool hasMemory = true;
  int failingAllocation = -1;  // of the library, from the second conversion on

  std::vector<Conversion> conversions;
  std::vector<std::size_t> allocated;
  std::vector<VNAllocator*> allocators;
  std::vector<void*> freed;
  std::vector<char> buffer = std::vector<char>(256);

 private:
  struct Record {
    tag_TPVAPIServices services{};
    RecordingHost* self = nullptr;
  };

  static RecordingHost& of(tag_TPVAPIServices* services) {
    return *reinterpret_cast<Record*>(services)->self;
  }
  static RecordingHost& of(VNAllocator* allocator) {
    auto* const bytes = reinterpret_cast<char*>(allocator);
    return of(
        reinterpret_cast<tag_TPVAPIServices*>(bytes - offsetof(tag_TPVAPIServices, allocator)));
  }

  static void convertText(tag_TPVAPIServices* services, tagVNCharSet from, VNTextDescriptor* input,
                          VNTextDescriptor* output, int substitute) {
    RecordingHost& host = of(services);
    host.conversions.push_back({services, from, services->targetCharSet, input->data, input->length,
                                output->data, output->length, substitute});
    if (output->data == nullptr) {
      output->length = host.reportedLength;
      return;
    }
    std::memcpy(output->data, host.converted.data(), host.converted.size());
    output->length = host.finalLength;
    if (host.failingAllocation >= 0) host.failing_.emplace(host.failingAllocation);
  }

  static void* alloc(VNAllocator* allocator, std::size_t size) {
    RecordingHost& host = of(allocator);
    host.allocators.push_back(allocator);
    host.allocated.push_back(size);
    return host.hasMemory ? host.buffer.data() : nullptr;
  }

  static void release(VNAllocator* allocator, void* pointer) {
    RecordingHost& host = of(allocator);
    host.failing_.reset();
    host.allocators.push_back(allocator);
    host.freed.push_back(pointer);
  }

  Record record_;
  std::optional<FailingAllocation> failing_;
};

constexpr auto kFrom = static_cast<tagVNCharSet>(51);
constexpr auto kTo = static_cast<tagVNCharSet>(53);

std::string convert(RecordingHost& host, const char* text = "abcd", unsigned long length = 4) {
  return convertTextEncoding(host.services(), text, length, kFrom, kTo);
}

TEST(ConvertTextEncoding, AsksTheHostForTheSizeAndThenForTheText) {
  RecordingHost host;
  const char* const text = "abcd";
  EXPECT_EQ(convert(host, text), "xyz");

  ASSERT_EQ(host.conversions.size(), 2U);
  for (const RecordingHost::Conversion& conversion : host.conversions) {
    EXPECT_EQ(conversion.services, host.services());
    EXPECT_EQ(conversion.from, kFrom);
    EXPECT_EQ(conversion.to, kTo);
    EXPECT_EQ(static_cast<const void*>(conversion.input), text);
    EXPECT_EQ(conversion.inputLength, 4);
    EXPECT_EQ(conversion.substitute, 0x3F);
  }
  EXPECT_EQ(host.conversions[0].output, nullptr);
  EXPECT_EQ(host.conversions[0].outputLength, 0);
  EXPECT_EQ(static_cast<const void*>(host.conversions[1].output), host.buffer.data());
  EXPECT_EQ(host.conversions[1].outputLength, 3) << "as the first call left it";
}

TEST(ConvertTextEncoding, TakesTwoBytesMoreThanReportedFromTheHostsAllocator) {
  RecordingHost host;
  convert(host);
  EXPECT_EQ(host.allocated, std::vector<std::size_t>{5});
  EXPECT_EQ(host.freed, std::vector<void*>{host.buffer.data()});
  for (VNAllocator* allocator : host.allocators) {
    EXPECT_EQ(allocator, &host.services()->allocator);
  }
}

TEST(ConvertTextEncoding, PutsTheTargetCharSetBack) {
  RecordingHost host;
  convert(host);
  EXPECT_EQ(host.services()->targetCharSet, 17);
}

TEST(ConvertTextEncoding, GivesAsManyBytesAsTheSecondCallLeft) {
  RecordingHost host;
  host.reportedLength = 100;
  host.converted = "a\0b~~~"s;
  host.finalLength = 3;
  EXPECT_EQ(convert(host), "a\0b"s);
  EXPECT_EQ(host.allocated, std::vector<std::size_t>{102});
}

TEST(ConvertTextEncoding, GivesAnEmptyTextWhenTheHostHasNoMemory) {
  RecordingHost host;
  host.hasMemory = false;
  EXPECT_EQ(convert(host), "");
  EXPECT_EQ(host.conversions.size(), 1U);
  EXPECT_TRUE(host.freed.empty());
  EXPECT_EQ(host.services()->targetCharSet, 17);
}

TEST(ConvertTextEncoding, AllocatesAndReleasesForASizeOfZeroToo) {
  RecordingHost host;
  host.reportedLength = 0;
  host.finalLength = 0;
  EXPECT_EQ(convert(host), "");
  EXPECT_EQ(host.allocated, std::vector<std::size_t>{2});
  EXPECT_EQ(host.conversions.size(), 2U);
  EXPECT_EQ(host.freed.size(), 1U);
  EXPECT_EQ(host.services()->targetCharSet, 17);
}

TEST(ConvertTextEncoding, TakesANegativeLengthForNothing) {
  RecordingHost host;
  host.finalLength = -1;
  EXPECT_EQ(convert(host), "");
  EXPECT_EQ(host.freed.size(), 1U);
}

TEST(ConvertTextEncoding, AllocatesTheLargestReportedSizeWithoutOverflow) {
  RecordingHost host;
  host.hasMemory = false;
  host.reportedLength = 0x7FFFFFFF;
  convert(host);
  EXPECT_EQ(host.allocated, std::vector<std::size_t>{0x80000001});
}

TEST(ConvertTextEncoding, PassesTheLow32BitsOfTheLength) {
  RecordingHost host;
  convert(host, "abc", 0x100000003);
  EXPECT_EQ(host.conversions[0].inputLength, 3);
}

TEST(ConvertTextEncoding, LeavesTheTargetCharSetBehindWhenItThrows) {
  RecordingHost host;
  host.converted = std::string(200, 'x');
  host.reportedLength = 200;
  host.finalLength = 200;
  host.failingAllocation = 0;
  EXPECT_THROW(convert(host), std::bad_alloc);
  EXPECT_EQ(host.services()->targetCharSet, kTo);
  EXPECT_EQ(host.freed.size(), 1U) << "the host's memory is not lost";
}

struct Bom {
  int length;
  int charSet;
  bool bigEndian;
  bool operator==(const Bom&) const = default;
};

Bom bomOf(const char* text) {
  auto charSet = static_cast<tagVNCharSet>(99);
  bool bigEndian = true;
  const int length = identifyBOM(text, charSet, bigEndian);
  return {length, charSet, bigEndian};
}

TEST(IdentifyBOM, KnowsTheMarksOfUTF8AndUTF16) {
  EXPECT_EQ(bomOf("\xEF\xBB\xBFtext"), (Bom{3, 53, false}));
  EXPECT_EQ(bomOf("\xEF\xBB\xBF"), (Bom{3, 53, false}));
  EXPECT_EQ(bomOf("\xFE\xFF"), (Bom{2, 51, true}));
  EXPECT_EQ(bomOf("\xFE\xFFxx"), (Bom{2, 51, true}));
  EXPECT_EQ(bomOf("\xFF\xFE"), (Bom{2, 51, false}));
}

TEST(IdentifyBOM, TakesALittleEndianMarkOfUTF32ForUTF16) {
  EXPECT_EQ(bomOf("\xFF\xFE\0\0"), (Bom{2, 51, false}));
}

TEST(IdentifyBOM, GivesNothingForAnythingElse) {
  for (const char* text : {"", "\xEF", "\xEF\xBB", "\xEF\xBBx", "\xFE", "\xFF", "\xFEx", "a",
                           "\0\0\xFE\xFF", " \xEF\xBB\xBF"}) {
    EXPECT_EQ(bomOf(text), (Bom{0, 0, false}));
  }
}

TEST(IdentifyBOM, LetsTheLibrarysLogicErrorOutForNullWithItsOutputsSet) {
  auto charSet = static_cast<tagVNCharSet>(99);
  bool bigEndian = true;
  const char* const null = nullptr;
  std::string expected;
  try {
    static_cast<void>(std::string(null));
  } catch (const std::logic_error& error) {
    expected = error.what();
  }
  try {
    identifyBOM(null, charSet, bigEndian);
    ADD_FAILURE() << "null is refused";
  } catch (const std::logic_error& error) {
    EXPECT_EQ(error.what(), expected);
  }
  EXPECT_EQ(charSet, 0);
  EXPECT_FALSE(bigEndian);
}

}  // namespace
}  // namespace dorvex::testing::vnstring_convert_test
