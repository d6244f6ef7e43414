#include "printable.h"

#include <cstddef>

namespace dorvex::cli {
namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The bytes of the character at the beginning of a text that is not empty; 0 for
// what is not UTF-8.
std::size_t lengthOfFirst(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(static_cast<unsigned char>(text[i]))) return 0;
  }
  return length;
}

// C0, DEL, and C1, which is U+0080 to U+009F.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = lengthOfFirst(text);
    const bool plain = length > 0 && !isControl(text.substr(0, length));
    shown += plain ? text.substr(0, length) : "?";
    text.remove_prefix(length > 0 ? length : 1);
  }
  return shown;
}

std::string printableJson(std::string json) {
  constexpr std::string_view digits = "0123456789abcdef";
  constexpr char lead = '\xC2';
  std::string escaped;
  std::size_t start = 0;
  for (auto at = json.find(lead); at < json.size(); at = json.find(lead, at + 1)) {
    if (at + 1 == json.size()) break;
    const auto control = static_cast<unsigned char>(json[at + 1]);
    if (control > 0x9F) continue;
    escaped.append(json, start, at - start).append("\\u00");
    escaped += digits[control >> 4];
    escaped += digits[control & 0xF];
    start = at + 2;
  }
  return start == 0 ? json : escaped.append(json, start);
}

}  // namespace dorvex::cli
