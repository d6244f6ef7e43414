// UTF-8, which strings of messages should be and need not be.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorvex::content {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::string_view kReplacementBytes = "\xEF\xBF\xBD";

struct Character {
  char32_t code = 0;
  std::size_t length = 1;  // in bytes
  bool valid = true;       // else the code is U+FFFD
};

// The character that text, which is not empty, begins with. Of what is none, as many
// bytes as could have been the beginning of one are one character.
Character firstCharacter(std::string_view text);

void appendCharacter(std::string& text, char32_t code);

// The text with U+FFFD for what is no character.
std::string validUtf8(std::string_view text);

}  // namespace dorvex::content
