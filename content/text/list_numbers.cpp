#include "text/list_numbers.h"

#include <algorithm>
#include <span>

namespace dorvex::content {

std::vector<std::uint32_t> ListNumbers::count(std::size_t level, std::uint32_t start) {
  pass(level);
  numbers_[level] = start > 0 ? start : numbers_[level] + 1;
  const auto above = std::span(numbers_).first(level + 1);
  return {above.begin(), above.end()};
}

void ListNumbers::pass(std::size_t level) {
  std::ranges::fill(std::span(numbers_).subspan(level + 1), 0);
}

}  // namespace dorvex::content
