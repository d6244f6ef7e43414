// Foreign names in lines for people.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::cli {

// The text with ? for each control character, C1 included, and for each byte
// that is not UTF-8, which a terminal may take for one: it stays on its line and
// tells a terminal nothing, whatever a member or a file is called.
std::string printable(std::string_view text);

// JSON with C1 control characters as \u escapes: the same JSON, for terminals too.
std::string printableJson(std::string json);

}  // namespace dorvex::cli
