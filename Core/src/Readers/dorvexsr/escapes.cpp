// Escape normalisation of dorvexutil.h: literal search and replace by fixed
// tables, in their order. There is deliberately no decoder here: what the output
// of the reader looks like follows from these tables and their order.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "Readers/dorvexsr/dorvexutil.h"

namespace {

struct Row {
  std::string_view search;
  std::string_view replacement;
};

// The search texts are printed escapes, not the bytes that they denote. Rows 1,
// 2, 9, 10 and 15 name no valid UTF-8 and stay all the same. No octal number has
// an 8 or 9; those rows match just these four characters.
constexpr Row kRows[] = {
    {R"(\342\200\176)", "'"},    // 0xE2 0x80 0x7E
    {R"(\342\200\177)", "'"},    // 0xE2 0x80 0x7F
    {R"(\342\200\230)", "'"},    // U+2018
    {R"(\342\200\231)", "'"},    // U+2019
    {R"(\342\200\232)", ","},    // U+201A
    {R"(\342\200\233)", "'"},    // U+201B
    {R"(\342\200\234)", "\""},   // U+201C
    {R"(\342\200\235)", "\""},   // U+201D
    {R"(\342\200\041)", "-"},    // 0xE2 0x80 0x21
    {R"(\342\200\174)", "-"},    // 0xE2 0x80 0x7C
    {R"(\342\200\220)", "-"},    // U+2010
    {R"(\342\200\223)", "-"},    // U+2013
    {R"(\342\200\224)", "--"},   // U+2014
    {R"(\342\200\225)", "--"},   // U+2015
    {R"(\342\200\042)", "--"},   // 0xE2 0x80 0x22
    {R"(\342\200\246)", "..."},  // U+2026
    {R"(\")", "\""},
    {R"(\001)", ""},
    {R"(\002)", ""},
    {R"(\003)", ""},
    {R"(\004)", ""},
    {R"(\005)", ""},
    {R"(\006)", ""},
    {R"(\007)", ""},
    {R"(\008)", ""},
    {R"(\009)", ""},
    {R"(\357\277\274)", ""},  // U+FFFC
};
constexpr std::size_t kEscapedQuote = 16;
constexpr std::size_t kFirstErasure = 17;
constexpr std::size_t kNoRow = std::size(kRows);
static_assert(kRows[kEscapedQuote].search == R"(\")");

// Whether a text begins within another, or both are the same.
constexpr bool overlap(std::string_view first, std::string_view second) {
  for (std::size_t at = 1; at < first.size(); ++at) {
    if (second.starts_with(first.substr(at, second.size()))) return true;
  }
  return false;
}
constexpr bool searchTextsOverlap() {
  return std::any_of(std::begin(kRows), std::end(kRows), [](const Row& first) {
    return std::any_of(std::begin(kRows), std::end(kRows),
                       [&](const Row& second) { return overlap(first.search, second.search); });
  });
}
static_assert(!searchTextsOverlap());

constexpr std::size_t longestSearch() {
  return std::max_element(
             std::begin(kRows), std::end(kRows),
             [](const Row& a, const Row& b) { return a.search.size() < b.search.size(); })
      ->search.size();
}

// The bytes that stand behind the backslash with which each row begins.
constexpr std::array<bool, 256> secondBytes() {
  std::array<bool, 256> present{};
  for (const Row& row : kRows) present.at(static_cast<unsigned char>(row.search[1])) = true;
  return present;
}
constexpr auto kSecondBytes = secondBytes();

bool isSecondByte(char byte) { return kSecondBytes[static_cast<unsigned char>(byte)]; }

// The row whose search text a text begins with.
std::size_t rowAt(std::string_view text) {
  if (text.size() < 2 || text.front() != '\\' || !isSecondByte(text[1])) return kNoRow;
  const auto* const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) {
    return each.search[1] == text[1] && text.starts_with(each.search);
  });
  return static_cast<std::size_t>(row - std::begin(kRows));
}

// A run of the first character is gone through without a call for each of it: a value
// may be nothing but backslashes.
std::size_t findText(std::string_view value, std::string_view search, std::size_t from) {
  if (search.empty()) return from;
  const char first = search.front();
  for (std::size_t found = value.find(first, from); found != std::string_view::npos;
       found = value.find(first, found)) {
    for (; found < value.size() && value[found] == first; ++found) {
      if (value.substr(found).starts_with(search)) return found;
    }
  }
  return std::string_view::npos;
}

// Rewrites a string from front to back in its own buffer. What it writes is
// never longer than what it has passed.
class InPlaceRewriter {
 public:
  explicit InPlaceRewriter(std::string& value) : value_(value) {}

  // Keeps everything up to a position of the old text.
  void keepUpTo(std::size_t position) {
    // The two places may overlap, or be the same.
    std::string::traits_type::move(value_.data() + write_, value_.data() + read_, position - read_);
    write_ += position - read_;
    read_ = position;
  }

  // Drops the next count bytes of the old text.
  void skip(std::size_t count) { read_ += count; }

  void put(std::string_view text) {
    text.copy(value_.data() + write_, text.size());
    write_ += text.size();
  }

  // Keeps the rest and cuts the string off behind it.
  void finish() {
    if (read_ == write_) return;
    keepUpTo(value_.size());
    value_.resize(write_);
  }

 private:
  std::string& value_;
  std::size_t read_ = 0;
  std::size_t write_ = 0;
};

// Non-overlapping, from left to right, what was put in place not being searched
// again. An erasure is the replacement by nothing: a search text that it closes
// up from pieces begins before the place of the erasure and is not found.
void replaceEach(std::string& value, std::string_view search, std::string_view replacement) {
  InPlaceRewriter rewriter(value);
  for (std::size_t found = findText(value, search, 0); found != std::string::npos;
       found = findText(value, search, found + search.size())) {
    rewriter.keepUpTo(found);
    rewriter.skip(search.size());
    rewriter.put(replacement);
  }
  rewriter.finish();
}

// All rows in one pass, with the outcome of one row after the other: each sees what
// those before it have left.
//
// No search text begins within another, so where the value is as it was, the rows do
// not touch each other and can be looked for together. What is put in place holds
// no backslash, so no search text goes across it; only a double quote that comes
// behind a backslash is an escaped one, whose row is still to come. An erasure leaves
// a seam, and a search text may have closed up across it. That is found by the rows
// behind the erasing one and not by the others, which had their turn before. So near a
// seam each byte is looked at as the end of a search text.
class RowsInOnePass {
 public:
  explicit RowsInOnePass(std::string& value) : value_(value) {}

  void run() {
    for (;;) {
      if (!isNearSeam_) keepUpToNextRow();
      if (read_ == value_.size()) break;
      const std::size_t row = rowAt(std::string_view(value_).substr(read_));
      if (row == kNoRow) {
        isNearSeam_ ? keepByteNearSeam() : keepByte();
      } else if (row < kFirstErasure) {
        replace(row);
      } else {
        skip(row);
        addSeam(row);
      }
    }
    value_.resize(write_);
  }

 private:
  void keepUpToNextRow() {
    const std::size_t end = nextRow();
    // The two places may overlap, or be the same.
    if (read_ != write_)
      std::string::traits_type::move(value_.data() + write_, value_.data() + read_, end - read_);
    write_ += end - read_;
    read_ = end;
  }

  // Where a row may begin, by two bytes.
  std::size_t nextRow() const {
    for (std::size_t at = value_.find('\\', read_); at != std::string::npos;
         at = value_.find('\\', at)) {
      for (; at + 1 < value_.size() && value_[at] == '\\'; ++at) {
        if (isSecondByte(value_[at + 1])) return at;
      }
      if (at + 1 == value_.size()) break;
    }
    return value_.size();
  }

  void keepByte() { value_[write_++] = value_[read_++]; }

  void skip(std::size_t row) {
    read_ += kRows[row].search.size();
    matchEnd_ = read_;
  }

  void replace(std::size_t row) {
    const std::string_view replacement = kRows[row].replacement;
    const bool isBehindBackslash = read_ > matchEnd_ && value_[write_ - 1] == '\\';
    if (isBehindBackslash && replacement == "\"" && row < kEscapedQuote) --write_;
    replacement.copy(value_.data() + write_, replacement.size());
    write_ += replacement.size();
    skip(row);
    forgetSeams();
  }

  void keepByteNearSeam() {
    keepByte();
    seamBefore(write_) = 0;
    const std::size_t row = erasureThatEndsHere();
    if (row != kNoRow) {
      write_ -= kRows[row].search.size();
      matchEnd_ = read_;
      addSeam(row);
    } else if (write_ - lastSeam_ >= kReach) {
      forgetSeams();
    }
  }

  std::size_t erasureThatEndsHere() const {
    const std::string_view kept(value_.data(), write_);
    for (std::size_t row = kFirstErasure; row < kNoRow; ++row) {
      const std::string_view search = kRows[row].search;
      if (search.back() == kept.back() && kept.ends_with(search) && isBehindSeams(row)) return row;
    }
    return kNoRow;
  }

  // Whether the row is behind those that made the seams in its search text, which ends
  // here.
  bool isBehindSeams(std::size_t row) const {
    for (std::size_t at = write_ - kRows[row].search.size() + 1; at < write_; ++at) {
      if (seams_[at % kReach] > row) return false;
    }
    return true;
  }

  // Several erasures may meet in one seam.
  void addSeam(std::size_t row) {
    lastSeam_ = write_;
    isNearSeam_ = true;
    seamBefore(write_) = std::max(seamBefore(write_), static_cast<std::uint8_t>(row + 1));
  }

  void forgetSeams() {
    if (isNearSeam_) seams_.fill(0);
    isNearSeam_ = false;
  }

  std::uint8_t& seamBefore(std::size_t position) { return seams_[position % kReach]; }

  static constexpr std::size_t kReach = 16;
  static_assert(longestSearch() < kReach);

  std::string& value_;
  std::size_t read_ = 0;
  std::size_t write_ = 0;
  std::size_t matchEnd_ = 0;  // where the last search text ended in the old value
  // Seams before the last bytes that were written, by their positions: the last row
  // that made it, counted from 1, or 0.
  std::array<std::uint8_t, kReach> seams_{};
  std::size_t lastSeam_ = 0;
  bool isNearSeam_ = false;
};

// Printing escapes more bytes, but normalising gives line feeds, tabs and quotes back.
// Where there is no backslash each escape stands for itself: what becomes of a byte does
// not depend on its neighbours.
constexpr bool isChanged(unsigned char byte) {
  // Without a branch, so that the compiler can look at many bytes at a time.
  const auto isControl = static_cast<int>(byte < 0x20) & static_cast<int>(byte != '\n') &
                         static_cast<int>(byte != '\t');
  return (isControl | static_cast<int>(byte == 0x7F) | static_cast<int>(byte == '\\')) != 0;
}

}  // namespace

bool comesOutAsItIs(std::string_view value) {
  constexpr std::size_t kBlock = 4096;
  for (std::size_t from = 0; from < value.size(); from += kBlock) {
    unsigned char changed = 0;
    for (const char byte : value.substr(from, kBlock))
      changed |= static_cast<unsigned char>(isChanged(static_cast<unsigned char>(byte)));
    if (changed != 0) return false;
  }
  return true;
}

void convertAllOctalCodesToAscii(std::string& value) { RowsInOnePass(value).run(); }

void replaceAllLFsAndTabs(std::string& value) {
  replaceInplace(value, "\\n", "\n");
  replaceInplace(value, "\\t", "\t");
}

void replaceInplace(std::string& value, const std::string& search, const std::string& replacement) {
  if (replacement.size() > search.size())
    throw std::runtime_error("Replacement string should be smaller then substring it replaces");
  replaceEach(value, search, replacement);
}

void removeFirstCharOfPattern(std::string& value, const std::string& pattern) {
  InPlaceRewriter rewriter(value);
  // The search goes on one byte behind the erased one in the new text, which is
  // two bytes on in the old.
  for (std::size_t found = findText(value, pattern, 0); found != std::string::npos;
       found = findText(value, pattern, found + 2)) {
    rewriter.keepUpTo(found);
    rewriter.skip(1);
  }
  rewriter.finish();
}
