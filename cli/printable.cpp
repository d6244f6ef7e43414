#include "printable.h"

#include <cstddef>

#include "utf8.h"

namespace dorvex::cli {
namespace {

// C0, DEL and C1.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  return first < 0x20 || first == 0x7F || isC1Control(character);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto [form, length] = firstCharacterOf(text);
    const bool isCharacter = form == FirstCharacter::Form::kWhole;
    const bool plain = isCharacter && !isControl(text.substr(0, length));
    shown += plain ? text.substr(0, length) : "?";
    text.remove_prefix(isCharacter ? length : 1);
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
