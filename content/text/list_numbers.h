// The numbers of the items in the lists of a text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "graph/graph.h"

namespace dorvex::content {

// Counts for each style and level. An item begins the levels below it anew, whatever
// their style.
class ListNumbers {
 public:
  static constexpr std::size_t kLevels = 9;

  // Counts an item, at a level below kLevels. Start is the number that it has by its
  // own account, 0 for none. Gives the numbers of all levels down to its own, 0 for
  // those that have had no item.
  std::vector<std::uint32_t> count(const Object* style, std::size_t level, std::uint32_t start);

 private:
  struct Counter {
    std::uint32_t number = 0;
    std::uint64_t item = 0;  // that it counted last
  };

  std::uint32_t current(const Counter& counter, std::size_t level) const;

  std::unordered_map<const Object*, std::array<Counter, kLevels>> counters_;
  std::array<std::uint64_t, kLevels> lastAt_{};  // item, by level
  std::uint64_t items_ = 0;
};

}  // namespace dorvex::content
