// Text in single quotes, as patterns of dates and of custom formats have it.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::content {

// Takes the quoted text off a pattern that begins with a single quote, and appends it.
// Two single quotes are one, within a quoted text and without. Quotes that nothing
// closes end with the pattern.
void takeQuoted(std::string_view& pattern, std::string& text);

}  // namespace dorvex::content
