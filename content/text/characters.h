// The characters of stored texts: UTF-8 that may be damaged, with characters that stand
// for something else than themselves.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::content {

constexpr char32_t kLineFeed = 0x000A;
constexpr char32_t kReplacement = 0xFFFD;

// Takes the first character off a text that is not empty. A sequence of bytes that is
// none gives U+FFFD.
char32_t takeCharacter(std::string_view& text);

void appendCharacter(std::string& text, char32_t character);

// How many UTF-16 units a character takes, in which positions in a text are counted.
constexpr unsigned unitsOf(char32_t character) { return character < 0x10000 ? 1 : 2; }

// What a character that a person may have typed shows as: itself, a line feed for all
// separators of lines, or nothing (0) for control characters and what stands for an
// attachment.
char32_t shownCharacter(char32_t character);

// A text as it is shown.
std::string shownText(std::string_view text);

}  // namespace dorvex::content
