#include "option_checks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

namespace dorvex::cli {
namespace {

constexpr double kShortestTimeout = 0.001;
constexpr std::string_view kUnits = "kmgtpe";

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string inLowerCase(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return lower;
}

// The power of two of a unit: b, k, kb, kib and so on.
std::optional<unsigned> shiftOf(const std::string& unit) {
  if (unit.empty() || unit == "b") return 0;
  const auto place = kUnits.find(unit.front());
  const std::string rest = unit.substr(1);
  if (place == std::string_view::npos || (!rest.empty() && rest != "b" && rest != "ib")) {
    return std::nullopt;
  }
  return 10 * static_cast<unsigned>(place + 1);
}

std::optional<std::uint64_t> bytesOf(const std::string& size) {
  const auto digits = std::min(size.find_first_not_of("0123456789"), size.size());
  const auto unit = std::min(size.find_first_not_of(' ', digits), size.size());
  const auto number = parsed<std::uint64_t>(std::string_view(size).substr(0, digits));
  const auto shift = shiftOf(inLowerCase(std::string_view(size).substr(unit)));
  if (!number || !shift) return std::nullopt;
  if (*number > std::numeric_limits<std::uint64_t>::max() >> *shift) return std::nullopt;
  return *number << *shift;
}

std::string butNot(const std::string& value) { return ", not '" + value + "'"; }

}  // namespace

std::string secondsFault(const std::string& value) {
  const auto seconds = parsed<double>(value);
  if (seconds && (*seconds == 0 || (*seconds >= kShortestTimeout && *seconds <= kLongestTimeout))) {
    return "";
  }
  return "must be a number of seconds from 0.001 to 1000000, or 0 for no limit" + butNot(value);
}

std::string sizeFault(std::string& value) {
  const auto bytes = bytesOf(value);
  if (!bytes) return "must be a size such as 512MB, or 0 for no limit" + butNot(value);
  value = std::to_string(*bytes);
  return "";
}

std::string sizeText(std::uint64_t bytes) {
  constexpr std::string_view units = "KMGTPE";
  std::size_t unit = 0;
  for (; unit < units.size() && bytes > 0 && bytes % 1024 == 0; ++unit) bytes /= 1024;
  return std::to_string(bytes) + (unit > 0 ? std::string(1, units[unit - 1]) + "B" : "");
}

std::string numberFault(const std::string& value, std::uint64_t least, std::uint64_t most) {
  const auto number = parsed<std::uint64_t>(value);
  if (number && *number >= least && *number <= most) return "";
  return "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
         butNot(value);
}

std::string numberOrAllFault(std::string& value, std::uint64_t least, std::uint64_t most,
                             std::uint64_t all) {
  if (value == "all") value = std::to_string(all);
  const std::string fault = numberFault(value, least, most);
  return fault.empty() ? "" : "must be all, or" + fault.substr(std::string_view("must be").size());
}

std::string wordFault(const std::string& value, const std::vector<std::string>& words) {
  if (std::find(words.begin(), words.end(), value) != words.end()) return "";
  return "must be " + inWords(words) + butNot(value);
}

std::string wordsFault(const std::string& value, const std::vector<std::string>& words) {
  for (const std::string& part : splitAtCommas(value)) {
    std::string fault = wordFault(part, words);
    if (!fault.empty()) return fault;
  }
  return "";
}

std::vector<std::string> splitAtCommas(const std::string& value) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (auto comma = value.find(','); comma != std::string::npos; comma = value.find(',', start)) {
    parts.push_back(value.substr(start, comma - start));
    start = comma + 1;
  }
  parts.push_back(value.substr(start));
  return parts;
}

std::string inWords(const std::vector<std::string>& words) {
  std::string text = words.front();
  for (std::size_t i = 1; i < words.size(); ++i) {
    text += (i + 1 == words.size() ? " or " : ", ") + words[i];
  }
  return text;
}

}  // namespace dorvex::cli
