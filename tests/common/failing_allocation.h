// Makes operator new fail at a chosen place.
#pragma once

namespace dorvex::testing {

// While it lives, the allocation with this index, counted from 0 on the thread
// that made the object, throws std::bad_alloc. One object at a time.
class FailingAllocation {
 public:
  explicit FailingAllocation(int index);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

}  // namespace dorvex::testing
