#include "tables/quoted_text.h"

#include <algorithm>

namespace dorvex::content {

void takeQuoted(std::string_view& pattern, std::string& text) {
  pattern.remove_prefix(1);
  if (pattern.starts_with('\'')) {
    text += '\'';
    pattern.remove_prefix(1);
    return;
  }
  while (!pattern.empty()) {
    const auto end = std::min(pattern.find('\''), pattern.size());
    text += pattern.substr(0, end);
    pattern.remove_prefix(std::min(end + 1, pattern.size()));
    if (!pattern.starts_with('\'')) return;
    text += '\'';
    pattern.remove_prefix(1);
  }
}

}  // namespace dorvex::content
