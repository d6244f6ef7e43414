// Characters of UTF-8, one at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorvex::cli {

// What stands in place of bytes that are not UTF-8: U+FFFD.
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// What a text begins with.
struct FirstCharacter {
  enum class Form {
    kWhole,    // a character
    kCut,      // the beginning of one, where the text ends
    kInvalid,  // bytes that begin none, for which one replacement stands
  };
  Form form;
  std::size_t length;
};

// The text must not be empty.
FirstCharacter firstCharacterOf(std::string_view text);

// U+0080 to U+009F, which terminals take for control characters.
bool isC1Control(std::string_view character);

}  // namespace dorvex::cli
