// Escape normalisation of dorvexutil.h: literal search and replace by fixed
// tables, in their order. There is deliberately no decoder here: what the output
// of the reader looks like follows from these tables and their order.
#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "Readers/dorvexsr/dorvexutil.h"

namespace {

struct Replacement {
  std::string_view search;
  std::string_view replacement;
};

// The search texts are printed escapes, not the bytes that they denote. Rows 1,
// 2, 9, 10 and 15 name no valid UTF-8 and stay all the same.
constexpr Replacement kReplaceTable[] = {
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
};

// No octal number has an 8 or 9; those rows match just these four characters.
constexpr std::string_view kDeleteTable[] = {
    R"(\001)", R"(\002)", R"(\003)", R"(\004)", R"(\005)",
    R"(\006)", R"(\007)", R"(\008)", R"(\009)", R"(\357\277\274)",
};

std::size_t findInDense(std::string_view value, std::string_view search, std::size_t from) {
  const char* start = value.data();
  const void* found = memmem(start + from, value.size() - from, search.data(), search.size());
  return found != nullptr ? static_cast<std::size_t>(static_cast<const char*>(found) - start)
                          : std::string_view::npos;
}

// Looks for the first character, which is fast where there are few of it; a value
// may also be nothing but backslashes, and is then searched for the whole text.
std::size_t findText(std::string_view value, std::string_view search, std::size_t from) {
  constexpr std::size_t kFewMisses = 16;
  constexpr std::size_t kBytesForEachMiss = 8;
  if (search.empty()) return from;
  std::size_t misses = 0;
  for (std::size_t found = value.find(search.front(), from); found != std::string_view::npos;
       found = value.find(search.front(), found + 1)) {
    if (value.compare(found, search.size(), search) == 0) return found;
    if (++misses > kFewMisses && misses * kBytesForEachMiss > found - from) {
      return findInDense(value, search, found + 1);
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

// Which bytes stand behind a backslash somewhere in a value: a search text whose
// first two bytes do not stand together is not in it, and a long value need not
// be gone through once for each row.
class BytesBehindBackslashes {
 public:
  explicit BytesBehindBackslashes(const std::string& value) { lookAt(value); }

  bool mayHold(std::string_view search) const {
    return present_[static_cast<unsigned char>(search[1])];
  }

  // A rewritten value may hold what the old one did not: an erasure closes up
  // what stood around it.
  void lookAt(const std::string& value) {
    present_ = {};
    for (std::size_t found = value.find('\\'); found != std::string::npos;
         found = value.find('\\', found + 1)) {
      if (found + 1 < value.size()) present_[static_cast<unsigned char>(value[found + 1])] = true;
    }
  }

 private:
  std::array<bool, 256> present_{};
};

void replaceEachRow(std::string& value, BytesBehindBackslashes& behind, std::string_view search,
                    std::string_view replacement) {
  if (!behind.mayHold(search)) return;
  const std::size_t size = value.size();
  replaceEach(value, search, replacement);
  // Every replacement is shorter than what it stands for.
  if (value.size() != size) behind.lookAt(value);
}

}  // namespace

void convertAllOctalCodesToAscii(std::string& value) {
  // Every row begins with a backslash.
  if (value.find('\\') == std::string::npos) return;
  BytesBehindBackslashes behind(value);
  for (const auto& [search, replacement] : kReplaceTable) {
    replaceEachRow(value, behind, search, replacement);
  }
  for (const std::string_view search : kDeleteTable) replaceEachRow(value, behind, search, "");
}

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
