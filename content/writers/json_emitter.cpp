#include "writers/json_emitter.h"

#include <array>
#include <charconv>
#include <cmath>

#include "graph/utf8.h"

namespace dorvex::content {
namespace {

constexpr std::string_view kSmallHexDigits = "0123456789abcdef";

// What stands behind the backslash for a byte that may not stand alone; 0 for one
// that may, 'u' where the code must be spelled out.
constexpr char escapeOf(unsigned char byte) {
  switch (byte) {
    case '"':
    case '\\':
      return static_cast<char>(byte);
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return byte < 0x20 || byte == 0x7F ? 'u' : '\0';
  }
}

constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (unsigned byte = 0; byte < 0x80; ++byte)
    plain[byte] = escapeOf(static_cast<unsigned char>(byte)) == '\0';
  return plain;
}();

std::size_t plainPrefix(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && kPlain[static_cast<unsigned char>(text[length])]) ++length;
  return length;
}

}  // namespace

void JsonEmitter::separate() {
  if (comma_) output_.put(',');
  if (lineBreak_) output_.put('\n');
  lineBreak_ = false;
  comma_ = true;
}

void JsonEmitter::begin(char bracket) {
  separate();
  output_.put(bracket);
  comma_ = false;
}

void JsonEmitter::end(char bracket) {
  output_.put(bracket);
  comma_ = true;
}

void JsonEmitter::literal(std::string_view text) {
  separate();
  output_.put(text);
}

void JsonEmitter::key(std::string_view key) {
  separate();
  output_.put('"');
  output_.put(key);
  output_.put("\":");
  comma_ = false;
}

void JsonEmitter::string(std::string_view value) {
  separate();
  quoted(value);
}

void JsonEmitter::quoted(std::string_view text) {
  output_.put('"');
  while (!text.empty()) {
    const std::size_t plain = plainPrefix(text);
    output_.put(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) break;
    const Character character = firstCharacter(text);
    if (!character.valid) {
      output_.put(kReplacementBytes);
    } else if (character.length > 1) {
      output_.put(text.substr(0, character.length));
    } else {
      const auto byte = static_cast<unsigned char>(text.front());
      const char escape = escapeOf(byte);
      output_.put('\\');
      output_.put(escape);
      if (escape == 'u') {
        output_.put("00");
        output_.put(kSmallHexDigits[byte >> 4U]);
        output_.put(kSmallHexDigits[byte & 0xFU]);
      }
    }
    text.remove_prefix(character.length);
  }
  output_.put('"');
}

void JsonEmitter::number(double value) {
  if (!std::isfinite(value)) return null();
  std::array<char, 32> digits;
  const auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  literal({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void JsonEmitter::count(std::uint64_t value) {
  std::array<char, 20> digits;
  const auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  literal({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

}  // namespace dorvex::content
