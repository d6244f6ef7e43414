// Strings of messages as text for people.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::content {

// The string in valid UTF-8, without control and attachment characters. Line breaks of
// every kind become U+000A; tabs stay.
std::string plainText(std::string_view bytes);

// The same in Unicode's normalization form C. Names of files are stored in any form.
std::string composed(std::string_view bytes);

}  // namespace dorvex::content
