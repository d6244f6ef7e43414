// The conversions between encodings. They look alike and are not: each has its
// own rule for bad input.
#include <unistd.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "Tools/vnstring/vnstring.h"

namespace vn::string {
namespace {

using UTF16String = std::basic_string<unsigned short>;

constexpr int kReplacement = 0xFFFD;
constexpr int kLastCodePoint = 0x10FFFF;

constexpr bool isSurrogate(int codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

// What follows a leading byte: six bits, below 0x80.
constexpr char trailingByte(int bits) { return static_cast<char>(0x80 + (bits & 0x3F)); }

// The bits of a leading byte below its first zero bit.
constexpr unsigned int payload(unsigned char byte, int leadingOnes) {
  return byte & (0x7FU >> leadingOnes);
}

[[noreturn]] void neverReturn() {
  for (;;) pause();
}

// The number of leading one bits of a byte, counted on the byte with its sign
// extended. Only a zero bit ends the count, and 0xFF has none. It stays so:
// keeping that byte away is for the callers, which would take any answer that a
// stop gave for text.
int countOnesWithoutStop(unsigned char byte) {
  if (byte == 0xFF) neverReturn();
  return std::countl_one(byte);
}

}  // namespace

namespace detail {

// clang-format off
const unsigned char bytesFromUTF8[256] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x00
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x20
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x40
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x60
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x80
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0xA0
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 0xC0
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // 0xE0
    3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5,
};
// clang-format on

bool isHighSurrogate(unsigned short unit) { return (unit & 0xFC00) == 0xD800; }

bool isLowSurrogate(unsigned short unit) { return (unit & 0xFC00) == 0xDC00; }

int getIntFromSurrogatePair(unsigned short high, unsigned short low) {
  const auto upper = static_cast<std::uint16_t>(high - 0xD800);
  const auto lower = static_cast<std::uint16_t>(low - 0xDC00);
  return (upper << 10) + lower + 0x10000;
}

}  // namespace detail

int UTF8LeadingByteLength(unsigned char byte) {
  const int ones = std::countl_one(byte);
  if (ones == 0) return 1;
  return ones == 1 || ones > 4 ? 0 : ones;
}

bool isUTF8ContinuationByte(unsigned char byte) { return (byte & 0xC0) == 0x80; }

std::string codePointToUTF8(int codePoint) {
  const auto lead = [codePoint](int mark, int shift) {
    return static_cast<char>(mark + (codePoint >> shift));
  };
  const auto trail = [codePoint](int shift) { return trailingByte(codePoint >> shift); };

  if (codePoint < 0 || isSurrogate(codePoint) || codePoint > kLastCodePoint) {
    return REPLACEMENT_CHARACTER_UTF8;
  }
  if (codePoint < 0x80) return {lead(0, 0)};
  if (codePoint < 0x800) return {lead(0xC0, 6), trail(0)};
  if (codePoint < 0x10000) return {lead(0xE0, 12), trail(6), trail(0)};
  return {lead(0xF0, 18), trail(12), trail(6), trail(0)};
}

UTF16String codePointToUTF16(int codePoint) {
  if (codePoint < 0 || isSurrogate(codePoint) || codePoint > kLastCodePoint) {
    return {static_cast<unsigned short>(kReplacement)};
  }
  if (codePoint < 0x10000) return {static_cast<unsigned short>(codePoint)};
  return {static_cast<unsigned short>(((codePoint - 0x10000) >> 10) + 0xD800),
          static_cast<unsigned short>((codePoint & 0x3FF) | 0xDC00)};
}

std::string UCS2ToUTF8(const UTF16String& text) {
  std::string result;
  for (const unsigned short unit : text) result += codePointToUTF8(unit);
  return result;
}

std::string UTF16ToUTF8(const UTF16String& text) {
  std::string result;
  unsigned short pending = 0;  // a high surrogate that waits for its partner
  for (const unsigned short unit : text) {
    if (pending != 0 && detail::isLowSurrogate(unit)) {
      result += codePointToUTF8(detail::getIntFromSurrogatePair(pending, unit));
      pending = 0;
      continue;
    }
    if (pending != 0) result += REPLACEMENT_CHARACTER_UTF8;
    pending = detail::isHighSurrogate(unit) ? unit : 0;
    // A low surrogate by itself becomes the replacement here.
    if (pending == 0) result += codePointToUTF8(unit);
  }
  if (pending != 0) result += REPLACEMENT_CHARACTER_UTF8;
  return result;
}

UTF16String UTF8ToUTF16(const std::string& text) {
  UTF16String result;
  for (std::size_t index = 0; index < text.size();) {
    unsigned long consumed = 0;
    result += codePointToUTF16(UTF8ToCodePoint(&text[index], text.size() - index, consumed));
    index += consumed;
  }
  return result;
}

int UTF8ToCodePoint(const char* text, unsigned long length, unsigned long& consumed) {
  consumed = 0;
  if (length == 0) return kReplacement;
  const auto first = static_cast<unsigned char>(text[0]);
  const int ones = countOnesWithoutStop(first);
  const unsigned long needed = ones == 0 ? 1 : static_cast<unsigned long>(ones);
  consumed = 1;
  if (needed > 4 || needed > length) return kReplacement;

  // Neither are the following bytes tested nor are overlong forms refused: text
  // that other programs wrote so is still read.
  auto value = static_cast<int>(payload(first, ones));
  for (unsigned long index = 1; index < needed; ++index)
    value = (value << 6) | (text[index] & 0x3F);
  consumed = needed;
  return value > kLastCodePoint || isSurrogate(value) ? kReplacement : value;
}

unsigned char* UTF8ToCodePoint(unsigned char* text, unsigned int* codePoint) {
  *codePoint = 0;
  const int ones = std::countl_one(*text);
  if (ones > 6) {
    *codePoint = *text;
    return text + 1;
  }
  *codePoint = payload(*text, ones);
  const int trailing = ones == 0 ? 0 : ones - 1;
  for (int index = 1; index <= trailing; ++index) {
    *codePoint = (*codePoint << 6) | (text[index] & 0x3FU);
  }
  return text + 1 + trailing;
}

char* strncpy_utf8(char* dest, const char* src, unsigned long size) {
  unsigned long index = 0;
  for (; index < size && src[index] != '\0'; ++index) {
    if (detail::bytesFromUTF8[static_cast<unsigned char>(src[index])] >= size - index) break;
    dest[index] = src[index];
  }
  std::memset(dest + index, 0, size - index);
  return dest;
}

unsigned long strncpy_utf8_windowsfilename(char* dest, const char* src, unsigned long srcSize,
                                           unsigned long destSize) {
  const auto isForbidden = [](unsigned char byte) {
    // '#' is one of them on purpose, though Windows would take it.
    return byte < 0x20 || std::strchr("\"#*/:<>?\\|", byte) != nullptr;
  };
  unsigned long count = 0;
  for (unsigned long index = std::strspn(src, " "); index < srcSize && count < destSize; ++index) {
    const auto byte = static_cast<unsigned char>(src[index]);
    const unsigned long trailing = detail::bytesFromUTF8[byte];
    if (byte == 0 || trailing >= destSize - count || trailing >= srcSize - index) break;
    if (!isForbidden(byte)) dest[count++] = src[index];
  }
  std::memset(dest + count, 0, destSize - count);
  return destSize + 1;
}

std::string convertTextEncoding(tag_TPVAPIServices* services, const char* text,
                                unsigned long length, tagVNCharSet from, tagVNCharSet to) {
  constexpr int kSubstitute = '?';
  const std::int32_t previousCharSet = services->targetCharSet;
  services->targetCharSet = to;

  VNTextDescriptor input{reinterpret_cast<unsigned char*>(const_cast<char*>(text)),
                         static_cast<std::int32_t>(length)};
  VNTextDescriptor output{nullptr, 0};
  services->ConvertText(services, from, &input, &output, kSubstitute);  // reports the size

  std::string result;
  VNAllocator* const allocator = &services->allocator;
  const auto size = static_cast<std::size_t>(std::int64_t{output.length} + 2);
  output.data = static_cast<unsigned char*>(allocator->Alloc(allocator, size));
  if (output.data != nullptr) {
    const auto release = [allocator](unsigned char* data) { allocator->Free(allocator, data); };
    const std::unique_ptr<unsigned char, decltype(release)> buffer(output.data, release);
    services->ConvertText(services, from, &input, &output, kSubstitute);
    if (output.length > 0) {
      result.assign(reinterpret_cast<char*>(buffer.get()), static_cast<std::size_t>(output.length));
    }
  }
  // Not put back when the lines above throw: a host that looks at its table then
  // finds the set of the conversion that failed.
  services->targetCharSet = previousCharSet;
  return result;
}

int identifyBOM(const char* text, tagVNCharSet& charSet, bool& bigEndian) {
  struct Mark {
    std::string_view bytes;
    tagVNCharSet charSet;
    bool bigEndian;
  };
  static constexpr std::array<Mark, 3> marks{{{"\xEF\xBB\xBF", VN_CHARSET_UTF8, false},
                                              {"\xFE\xFF", VN_CHARSET_UTF16, true},
                                              {"\xFF\xFE", VN_CHARSET_UTF16, false}}};
  charSet = tagVNCharSet{};
  bigEndian = false;
  const std::string start(text);  // which refuses null
  for (const Mark& mark : marks) {
    if (!start.starts_with(mark.bytes)) continue;
    charSet = mark.charSet;
    bigEndian = mark.bigEndian;
    return static_cast<int>(mark.bytes.size());
  }
  return 0;
}

}  // namespace vn::string
