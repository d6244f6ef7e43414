// The numbers of the items in the lists of a text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace dorvex::content {

// Counts for each level, whatever the styles of the lists: items that are formatted
// differently are numbered on. An item begins the levels below it anew.
class ListNumbers {
 public:
  static constexpr std::size_t kLevels = 9;

  // Counts an item, at a level below kLevels. Start is the number that it has by its
  // own account, 0 for none. Gives the numbers of all levels down to its own, 0 for
  // those that have had no item.
  std::vector<std::uint32_t> count(std::size_t level, std::uint32_t start);

  // Passes an item that has a mark and no number.
  void pass(std::size_t level);

 private:
  std::array<std::uint32_t, kLevels> numbers_{};  // of the last items, by level
};

}  // namespace dorvex::content
