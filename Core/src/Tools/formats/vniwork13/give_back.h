// How the reader gives back what the host lent it, at the end of a scope.
#pragma once

#include <exception>

namespace vn::iwork13 {

// Something of the host's that a scope holds, from construction to destruction.
class Loan {
 public:
  // Calls a slot that takes something back, from a destructor that lets exceptions
  // through. Hosts may end a document by an exception out of these slots too; the
  // pump turns it into a result. Behind one that ends the scope already it is
  // dropped, since two at a time would end the process. Exceptions from before the
  // scope do not count: a host may pump from a destructor while one passes.
  template <typename Call>
  void giveBack(Call call) const {
    if (std::uncaught_exceptions() == exceptionsBefore_) {
      call();
      return;
    }
    try {
      call();
    } catch (...) {
    }
  }

 private:
  int exceptionsBefore_ = std::uncaught_exceptions();
};

}  // namespace vn::iwork13
