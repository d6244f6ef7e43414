#include "Tools/vnstring/detail/utf8Sanitizer.h"

#include <algorithm>

#include "Tools/vnstring/vnstring.h"

namespace vn::string {
namespace detail {

// clang-format off
const int codepoint_from_1252_table[32] = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD,
    0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178,
};
// clang-format on

void ReplaceError_Policy::writeError(std::string& output, unsigned char /*byte*/,
                                     int replacementCodePoint) {
  output += codePointToUTF8(replacementCodePoint);
}

void Use1252Error_Policy::writeError(std::string& output, unsigned char byte,
                                     int replacementCodePoint) {
  // The indexes of 0x81, 0x8D, 0x8F, 0x90 and 0x9D in the table.
  constexpr unsigned int kUndefined = 0x2001A002;
  int codePoint = byte;
  if (byte >= 0x80 && byte <= 0x9F) {
    const int index = byte - 0x80;
    const bool undefined = (kUndefined >> index & 1U) != 0;
    codePoint = undefined ? replacementCodePoint : codepoint_from_1252_table[index];
  }
  output += codePointToUTF8(codePoint);
}

// Not members: they are no part of what the class exports.
namespace {

template <typename ErrorPolicy>
bool isAcceptedContinuation(utf8Sanitizer<ErrorPolicy>& sanitizer, unsigned char byte) {
  auto& lowerBound = sanitizer.lowerBound;
  auto& upperBound = sanitizer.upperBound;
  if (!isUTF8ContinuationByte(byte) || sanitizer.buffer.empty()) return false;
  // A bound that has been met is gone: it concerns the first byte only.
  if (lowerBound != 0 && byte < lowerBound) return false;
  lowerBound = 0;
  if (upperBound != 0 && byte >= upperBound) return false;
  upperBound = 0;
  return true;
}

template <typename ErrorPolicy>
void openSequence(utf8Sanitizer<ErrorPolicy>& sanitizer, unsigned char lead) {
  struct LeadRow {
    std::uint8_t last;  // of the leads that this row is for
    std::uint8_t lowerBound;
    std::uint8_t upperBound;
    std::int32_t expectedLength;
  };
  // The bounds keep out overlong forms (E0, F0), surrogates (ED) and what lies
  // above U+10FFFF (F4).
  static constexpr LeadRow rows[] = {
      {0xDF, 0, 0, 2}, {0xE0, 0xA0, 0, 3}, {0xEC, 0, 0, 3}, {0xED, 0, 0xA0, 3},
      {0xEF, 0, 0, 3}, {0xF0, 0x90, 0, 4}, {0xF3, 0, 0, 4}, {0xF4, 0, 0x90, 4},
  };
  const LeadRow* row = std::find_if(std::begin(rows), std::end(rows),
                                    [lead](const LeadRow& r) { return lead <= r.last; });
  sanitizer.expectedLength = row->expectedLength;
  sanitizer.lowerBound = row->lowerBound;
  sanitizer.upperBound = row->upperBound;
  sanitizer.buffer += static_cast<char>(lead);
}

}  // namespace

template <typename ErrorPolicy>
void utf8Sanitizer<ErrorPolicy>::parseByte(unsigned char byte) {
  if (byte < 0x80) {
    writeBufferAsErrors();
    output += static_cast<char>(byte);
  } else if (byte >= 0xC2 && byte <= 0xF4) {
    writeBufferAsErrors();
    openSequence(*this, byte);
  } else if (isAcceptedContinuation(*this, byte)) {
    buffer += static_cast<char>(byte);
    if (static_cast<std::int32_t>(buffer.size()) == expectedLength) {
      output += buffer;
      buffer.clear();
    }
  } else {
    // The byte is not looked at again as the start of anything.
    writeBufferAsErrors();
    writeSingleError(byte);
  }
}

template <typename ErrorPolicy>
void utf8Sanitizer<ErrorPolicy>::writeBufferAsErrors() {
  for (const char byte : buffer) writeSingleError(static_cast<unsigned char>(byte));
  buffer.clear();
}

template <typename ErrorPolicy>
void utf8Sanitizer<ErrorPolicy>::writeSingleError(unsigned char byte) {
  ErrorPolicy::writeError(output, byte, replacementCodePoint);
}

template struct utf8Sanitizer<ReplaceError_Policy>;
template struct utf8Sanitizer<Use1252Error_Policy>;

}  // namespace detail

namespace {

template <typename ErrorPolicy>
std::string sanitize(const std::string& text, int replacement) {
  detail::utf8Sanitizer<ErrorPolicy> sanitizer{};
  sanitizer.replacementCodePoint = replacement;
  for (const char byte : text) sanitizer.parseByte(static_cast<unsigned char>(byte));
  sanitizer.writeBufferAsErrors();
  return sanitizer.output;
}

constexpr bool isPrintableASCII(int value) { return value >= 0x20 && value <= 0x7E; }

}  // namespace

std::string sanitizeUTF8(const std::string& text, int replacement) {
  return sanitize<detail::ReplaceError_Policy>(text, replacement);
}

std::string sanitizeUTF8with1252(const std::string& text, int replacement) {
  return sanitize<detail::Use1252Error_Policy>(text, replacement);
}

std::string sanitizeASCIIPrintable(const std::string& text, int replacement) {
  const bool usable = replacement == 0 || isPrintableASCII(replacement);
  const char substitute = usable ? static_cast<char>(replacement) : '?';
  std::string result = text;
  std::replace_if(
      result.begin(), result.end(), [](char c) { return c != '\0' && !isPrintableASCII(c); },
      substitute);
  return result;
}

}  // namespace vn::string
