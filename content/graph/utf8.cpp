#include "graph/utf8.h"

#include <cstdint>

namespace dorvex::content {
namespace {

// What a first byte says of its sequence. The second byte has bounds of its own, which
// rule out overlong forms, surrogates and what lies beyond U+10FFFF.
struct Lead {
  std::size_t length;  // 0 for a byte that begins nothing
  unsigned char lowest, highest;
};

constexpr Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {1, 0, 0};
  if (byte < 0xC2) return {0, 0, 0};
  if (byte < 0xE0) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte < 0xF0) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte < 0xF4) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

unsigned char byteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

}  // namespace

Character firstCharacter(std::string_view text) {
  const unsigned char first = byteAt(text, 0);
  const Lead lead = leadOf(first);
  if (lead.length == 1) return {first, 1, true};
  if (lead.length == 0) return {kReplacement, 1, false};
  char32_t code = first & (0x7FU >> lead.length);
  for (std::size_t at = 1; at < lead.length; ++at) {
    const unsigned char lowest = at == 1 ? lead.lowest : 0x80;
    const unsigned char highest = at == 1 ? lead.highest : 0xBF;
    if (at >= text.size() || byteAt(text, at) < lowest || byteAt(text, at) > highest)
      return {kReplacement, at, false};
    code = code << 6 | (byteAt(text, at) & 0x3FU);
  }
  return {code, lead.length, true};
}

void appendCharacter(std::string& text, char32_t code) {
  const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
  const auto trail = [&](unsigned shift) { append(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    append(code);
  } else if (code < 0x800) {
    append(0xC0 | code >> 6);
    trail(0);
  } else if (code < 0x10000) {
    append(0xE0 | code >> 12);
    trail(6);
    trail(0);
  } else {
    append(0xF0 | code >> 18);
    trail(12);
    trail(6);
    trail(0);
  }
}

std::string validUtf8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    valid.append(character.valid ? text.substr(0, character.length) : kReplacementBytes);
    text.remove_prefix(character.length);
  }
  return valid;
}

}  // namespace dorvex::content
