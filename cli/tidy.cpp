#include "tidy.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace dorvex::cli {
namespace {

struct Replacement {
  std::string_view search;
  std::string_view replacement;
};

// In this order at each place of a text.
constexpr std::array<Replacement, 10> kReplacements = {{
    {R"(\\)", R"(\)"},
    {"\\r\n", "\n"},
    {R"(\r)", "\n"},
    {R"(\013)", "\n"},
    {R"(\014)", "\n"},
    {R"(\342\200\250)", "\n"},
    {R"(\342\200\251)", "\n"},
    {"\xE2\x80\xA8", "\n"},
    {"\xE2\x80\xA9", "\n"},
    {"\xEF\xBF\xBC", ""},
}};

// The bytes that begin a search text above.
constexpr std::string_view kBeginnings = "\\\xE2\xEF";

constexpr std::string_view kWhiteSpace = " \t\n\r\v\f";

const Replacement* replacementAt(std::string_view text) {
  const auto* found =
      std::find_if(kReplacements.begin(), kReplacements.end(),
                   [&](const Replacement& row) { return text.starts_with(row.search); });
  return found != kReplacements.end() ? found : nullptr;
}

}  // namespace

std::string tidyText(const std::string& text) {
  std::string tidied;
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto plain = std::min(rest.find_first_of(kBeginnings), rest.size());
    tidied += rest.substr(0, plain);
    rest.remove_prefix(plain);
    if (rest.empty()) break;
    const Replacement* row = replacementAt(rest);
    tidied += row != nullptr ? row->replacement : rest.substr(0, 1);
    rest.remove_prefix(row != nullptr ? row->search.size() : 1);
  }
  return tidied;
}

bool Tidier::take(std::string& text) {
  text = tidyText(text);
  if (text.find_first_not_of(kWhiteSpace) == std::string::npos) return false;
  return seen_.insert(text).second;
}

}  // namespace dorvex::cli
