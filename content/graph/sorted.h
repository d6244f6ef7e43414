// Sorting what a document lists in any order, and more than once.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

namespace dorvex::content {

// Sorts by a key; of those with the same key the first one stays. (By the plain
// algorithm: clang 14 cannot compile those of the ranges that give a subrange.)
template <typename T, typename Key = std::identity>
void sortAndKeepFirst(std::vector<T>& values, Key key = {}) {
  // What is in order already, as most lists are, needs no memory to be sorted in.
  if (!std::ranges::is_sorted(values, {}, key)) std::ranges::stable_sort(values, {}, key);
  const auto same = [&](const T& left, const T& right) {
    return std::invoke(key, left) == std::invoke(key, right);
  };
  values.erase(std::unique(values.begin(), values.end(), same), values.end());
}

}  // namespace dorvex::content
