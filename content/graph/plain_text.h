// Strings of messages as text for people.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::content {

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
