// Makes operator new fail at a chosen place within the module.
#pragma once

#include <functional>

namespace dorvex::testing {

// While it lives, the index-th allocation (from 0) that the module makes on this
// thread throws std::bad_alloc, after calling onFailure. What the host's own
// slots allocate is not counted. One object at a time.
class FailingNew {
 public:
  FailingNew(long index, std::function<void()> onFailure);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();
};

}  // namespace dorvex::testing
