// Makes operator new fail at a chosen place.
#pragma once

#include <functional>
#include <new>

namespace dorvex::testing {

// While it lives, the allocation with this index, counted from 0 on the thread
// that made the object, throws std::bad_alloc, after calling onFailure. What a
// test's own host allocates in its slots is not counted. One object at a time.
class FailingAllocation {
 public:
  explicit FailingAllocation(
      long index, std::function<void()> onFailure = [] {});
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

// Runs a call again and again, with its first allocation failing, then its
// second, and so on until it comes through. Gives the number of times that
// std::bad_alloc came out; after is run each time.
template <typename Call, typename After>
int failEachAllocation(Call call, After after) {
  constexpr int kMost = 1000;
  for (int index = 0; index < kMost; ++index) {
    bool cameThrough = false;
    try {
      const FailingAllocation failing(index);
      call();
      cameThrough = true;
    } catch (const std::bad_alloc&) {
    }
    after();
    if (cameThrough) return index;
  }
  return kMost;
}

template <typename Call>
int failEachAllocation(Call call) {
  return failEachAllocation(call, [] {});
}

}  // namespace dorvex::testing
