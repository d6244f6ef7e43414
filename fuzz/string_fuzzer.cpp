// The string library: conversions, sanitisers, and the helpers with a plain
// counterpart.
//
// Input: one byte that splits the rest into a short and a long text; four bytes,
// a code point; the two texts.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/vnstring.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {
namespace {

using namespace vn::string;
using Units = std::basic_string<unsigned short>;

// The length of the sequence at the front by the table of well-formed sequences
// of the Unicode Standard; 0 where there is none.
std::size_t sequenceLength(std::string_view text) {
  struct Row {
    unsigned char firstLead, lastLead, firstTrail, lastTrail;
    std::size_t length;
  };
  static constexpr Row rows[] = {
      {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  const auto at = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  for (const Row& row : rows) {
    if (at(0) < row.firstLead || at(0) > row.lastLead) continue;
    if (text.size() < row.length) return 0;
    if (row.length > 1 && (at(1) < row.firstTrail || at(1) > row.lastTrail)) return 0;
    for (std::size_t i = 2; i < row.length; ++i)
      if (at(i) < 0x80 || at(i) > 0xBF) return 0;
    return row.length;
  }
  return 0;
}

bool isValidUTF8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

Units unitsOf(std::string_view bytes) {
  Units units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    units += static_cast<unsigned short>(static_cast<unsigned char>(bytes[i]) |
                                         static_cast<unsigned char>(bytes[i + 1]) << 8);
  return units;
}

void checkSanitisers(const std::string& text, int replacement) {
  const bool valid = isValidUTF8(text);
  for (const auto sanitise : {sanitizeUTF8, sanitizeUTF8with1252}) {
    const std::string clean = sanitise(text, replacement);
    require(isValidUTF8(clean), "a sanitiser gives valid UTF-8");
    require(!valid || clean == text, "a sanitiser leaves valid UTF-8 alone");
    require(sanitise(clean, replacement) == clean, "a sanitiser has nothing left to do");
  }
  const std::string ascii = sanitizeASCIIPrintable(text, replacement);
  require(ascii.size() == text.size(), "every byte stays or is replaced by one");
  require(std::ranges::all_of(ascii, [](char c) { return c == 0 || (c >= 0x20 && c <= 0x7E); }),
          "nothing but printable ASCII and NUL is left");
}

// The conversion does not return from 0xFF at the start of a sequence, by rule:
// nothing is converted from there on.
std::string upToFF(const std::string& text) {
  std::size_t position = 0;
  while (position < text.size() && text[position] != '\xFF') {
    unsigned long used = 0;
    UTF8ToCodePoint(text.data() + position, text.size() - position, used);
    require(used > 0 && used <= text.size() - position, "a sequence is neither empty nor too long");
    position += used;
  }
  return text.substr(0, position);
}

void checkUnicode(const std::string& text, int codePoint) {
  const Units units = unitsOf(text);
  require(isValidUTF8(UTF16ToUTF8(units)), "UTF-16 becomes valid UTF-8");
  require(isValidUTF8(UCS2ToUTF8(units)), "UCS-2 becomes valid UTF-8");
  const std::string convertible = upToFF(text);
  const Units converted = UTF8ToUTF16(convertible);
  if (isValidUTF8(text)) {
    require(UTF16ToUTF8(converted) == text, "valid UTF-8 survives UTF-16");
  }
  require(isValidUTF8(codePointToUTF8(codePoint)), "a code point becomes valid UTF-8");
  require(codePointToUTF8(codePoint) == UTF16ToUTF8(codePointToUTF16(codePoint)),
          "a code point is the same in UTF-8 and UTF-16");

  // The form without a length reads as much as the first byte announces.
  std::string padded = text + std::string(8, '\0');
  unsigned int number = 0;
  auto* const start = reinterpret_cast<unsigned char*>(padded.data());
  const auto used = UTF8ToCodePoint(start, &number) - start;
  require(used >= 1 && used <= 6, "a sequence has one to six bytes");
}

void checkCopies(const std::string& text, std::size_t size) {
  // Exactly as large as is said, so that the sanitizer sees a byte too many.
  const std::unique_ptr<char[]> room(new char[size]);
  const std::string terminated = text.c_str();
  strncpy_utf8(room.get(), text.c_str(), size);
  const std::string_view copy(room.get(), strnlen(room.get(), size));
  require(terminated.starts_with(copy), "a copy is a beginning of the text");
  require(copy.size() == size || !isValidUTF8(terminated) || isValidUTF8(copy),
          "a copy cuts no sequence");

  require(strncpy_utf8_windowsfilename(room.get(), terminated.c_str(), terminated.size(), size) ==
              size + 1,
          "the copy of a file name says its room and one");
  const std::string_view name(room.get(), strnlen(room.get(), size));
  require(name.find_first_of("\"#*/:<>?\\|") == std::string_view::npos,
          "a file name has none of the characters that are left out");
  copyStringToBuffer(room.get(), static_cast<int>(size), text);
  require(std::string_view(room.get(), std::min(size, text.size())) == text.substr(0, size),
          "a buffer takes the text up to its end");
}

std::string replacedPlainly(const std::string& text, const std::string& what,
                            const std::string& with) {
  std::string result;
  std::size_t position = 0;
  for (std::size_t found = text.find(what); found != std::string::npos;
       found = text.find(what, position)) {
    result.append(text, position, found - position).append(with);
    position = found + what.size();
  }
  return result.append(text, position);
}

void checkHelpers(const std::string& text, const std::string& other) {
  if (!other.empty()) {
    std::string replaced = text;
    replaceAll(replaced, other, "<>");
    require(replaced == replacedPlainly(text, other, "<>"), "a replacement replaces all");
    std::string joined;
    for (const std::string& part : split(text, other[0])) joined += part + other[0];
    require(joined == text + other[0], "parts with their delimiters are the text");
  }
  require(contains(text, other) == (text.find(other) != std::string::npos), "contains finds");
  require(startsWith(text, other) == (other.size() <= text.size() &&
                                      std::strncmp(text.c_str(), other.c_str(), other.size()) == 0),
          "a text starts with a prefix as C compares");
  require(endsWith(text.c_str(), other.c_str()) ==
              std::string_view(text.c_str()).ends_with(other.c_str()),
          "a text ends with a suffix");
  require(asciiStrToLower(asciiStrToUpper(text)) == asciiStrToLower(text), "case is one of two");
  require(asciiCaseInsensitiveCompare(text, asciiStrToUpper(text)), "case does not count");
  std::string stripped = text;
  stripNewLineCharsFromEnd(stripped);
  require(text.starts_with(stripped) && !stripped.ends_with('\n') && !stripped.ends_with('\r'),
          "line ends go from the end only");
  require(text.ends_with(stripDomainFromURL(text)), "a path is the end of its URL");

  const auto length = static_cast<unsigned>(text.size());
  if (isNumericStr(length, text.c_str(), 64)) {
    require(isHexStr(length, text.c_str(), 64), "decimal digits are hexadecimal ones");
  }
  tagVNCharSet charSet{};
  bool bigEndian = false;
  const int mark = identifyBOM(text.c_str(), charSet, bigEndian);
  require(mark >= 0 && mark <= 3 && static_cast<std::size_t>(mark) <= text.size(),
          "a mark lies within the text");
}

void checkLocales(const std::string& text) {
  for (const char* locale : {"C", "C.UTF-8"}) {
    const std::wstring wide = stringToWString(text, locale);
    const std::string narrow = wstringToString(wide, locale);
    if (isValidUTF8(text) && std::strcmp(locale, "C.UTF-8") == 0)
      require(narrow == text, "valid UTF-8 survives wide characters");
  }
}

// A host that hands text back twice.
struct EchoServices : tag_TPVAPIServices {
  EchoServices() : tag_TPVAPIServices{} {
    allocator.Alloc = [](VNAllocator*, std::size_t size) { return std::malloc(size); };
    allocator.Free = [](VNAllocator*, void* pointer) { std::free(pointer); };
    ConvertText = [](tag_TPVAPIServices*, tagVNCharSet, VNTextDescriptor* in, VNTextDescriptor* out,
                     int) {
      out->length = 2 * in->length;
      if (out->data == nullptr || in->length == 0) return;
      const auto size = static_cast<std::size_t>(in->length);
      std::memcpy(out->data, in->data, size);
      std::memcpy(out->data + size, in->data, size);
    };
  }
};

void checkConversionByHost(const std::string& text) {
  EchoServices services;
  require(convertTextEncoding(&services, text.data(), text.size(), VN_CHARSET_UTF16,
                              VN_CHARSET_UTF8) == text + text,
          "the host's answer comes back");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::size_t split = input.byte();
  const unsigned low = input.word();
  const int codePoint = static_cast<int>(low | static_cast<unsigned>(input.word()) << 16);
  const std::string other(input.take(split % 16));
  const std::string text(input.rest());
  checkSanitisers(text, codePoint);
  checkUnicode(text, codePoint);
  checkCopies(text, split);
  checkHelpers(text, other);
  checkLocales(text);
  checkConversionByHost(text);
  return 0;
}
