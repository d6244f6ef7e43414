// Strings of messages as text for people.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::content {

// Stands in a text where a drawable, a footnote or a field does.
inline constexpr char32_t kAttachment = 0xFFFC;
inline constexpr char32_t kLineSeparator = 0x2028;
inline constexpr char32_t kParagraphSeparator = 0x2029;

// What a character of a string shows as: itself, U+000A for a line break of any
// kind, 0 for what is not shown.
char32_t plainCharacter(char32_t code);

// The string in valid UTF-8, without control and attachment characters. Line breaks of
// every kind become U+000A; tabs stay.
std::string plainText(std::string_view bytes);
void appendPlainText(std::string_view bytes, std::string& text);

// The same in Unicode's normalization form C. Names of files are stored in any form.
std::string composed(std::string_view bytes);

}  // namespace dorvex::content
