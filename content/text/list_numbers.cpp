#include "text/list_numbers.h"

#include <algorithm>
#include <span>

namespace dorvex::content {

// A counter counts on unless an item above its level came after the last that it counted.
std::uint32_t ListNumbers::current(const Counter& counter, std::size_t level) const {
  const bool over = std::ranges::any_of(std::span(lastAt_).first(level),
                                        [&](std::uint64_t item) { return item > counter.item; });
  return over ? 0 : counter.number;
}

std::vector<std::uint32_t> ListNumbers::count(const Object* style, std::size_t level,
                                              std::uint32_t start) {
  auto& counters = counters_[style];
  std::vector<std::uint32_t> numbers;
  for (std::size_t i = 0; i <= level; ++i) numbers.push_back(current(counters[i], i));
  numbers[level] = start > 0 ? start : numbers[level] + 1;
  lastAt_[level] = ++items_;
  counters[level] = {numbers[level], items_};
  return numbers;
}

}  // namespace dorvex::content
