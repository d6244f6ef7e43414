#include "text/characters.h"

#include <array>
#include <cstddef>

namespace dorvex::content {
namespace {

// What the first byte of a sequence tells of it. The second byte's range excludes forms
// that are longer than need be, surrogates, and what is beyond U+10FFFF.
struct Lead {
  unsigned char first, last;  // bytes that begin such a sequence
  unsigned char length;
  unsigned char low, high;  // of the second byte
};

constexpr std::array kLeads{
    Lead{0xC2, 0xDF, 2, 0x80, 0xBF}, Lead{0xE0, 0xE0, 3, 0xA0, 0xBF},
    Lead{0xE1, 0xEC, 3, 0x80, 0xBF}, Lead{0xED, 0xED, 3, 0x80, 0x9F},
    Lead{0xEE, 0xEF, 3, 0x80, 0xBF}, Lead{0xF0, 0xF0, 4, 0x90, 0xBF},
    Lead{0xF1, 0xF3, 4, 0x80, 0xBF}, Lead{0xF4, 0xF4, 4, 0x80, 0x8F},
};

constexpr unsigned char byteAt(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

const Lead* leadOf(unsigned char byte) {
  for (const Lead& lead : kLeads)
    if (byte >= lead.first && byte <= lead.last) return &lead;
  return nullptr;
}

constexpr bool isPlain(char c) { return c >= ' ' && c <= '~'; }

}  // namespace

char32_t takeCharacter(std::string_view& text) {
  const unsigned char first = byteAt(text, 0);
  if (first < 0x80) {
    text.remove_prefix(1);
    return first;
  }
  const Lead* lead = leadOf(first);
  if (lead == nullptr) {
    text.remove_prefix(1);
    return kReplacement;
  }
  char32_t character = first & (0x7FU >> lead->length);
  unsigned char low = lead->low;
  unsigned char high = lead->high;
  for (std::size_t i = 1; i < lead->length; ++i) {
    if (i >= text.size() || byteAt(text, i) < low || byteAt(text, i) > high) {
      text.remove_prefix(i);
      return kReplacement;
    }
    character = character << 6 | (byteAt(text, i) & 0x3FU);
    low = 0x80;
    high = 0xBF;
  }
  text.remove_prefix(lead->length);
  return character;
}

void appendCharacter(std::string& text, char32_t character) {
  const auto trail = [&](unsigned shift) {
    text += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    trail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    trail(6);
    trail(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    trail(12);
    trail(6);
    trail(0);
  }
}

char32_t shownCharacter(char32_t character) {
  switch (character) {
    case '\t':
      return character;
    case '\n':
    case '\v':
    case '\r':
    case 0x2028:  // line separator
    case 0x2029:  // paragraph separator
      return kLineFeed;
    case 0xFFFC:  // what is attached here
      return 0;
    default:
      return character < ' ' || (character >= 0x7F && character < 0xA0) ? 0 : character;
  }
}

std::string shownText(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    if (isPlain(text.front())) {
      shown += text.front();
      text.remove_prefix(1);
    } else if (const char32_t character = shownCharacter(takeCharacter(text)); character != 0) {
      appendCharacter(shown, character);
    }
  }
  return shown;
}

}  // namespace dorvex::content
