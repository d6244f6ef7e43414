// How the reader gives back what the host lent it, at the end of a scope.
#pragma once

#include <exception>

namespace vn::iwork13 {

// Calls a slot that takes something back, from a destructor that lets exceptions
// through. Hosts may end a document by an exception out of these slots too; the
// pump turns it into a result. Behind one that ends the document already it is
// dropped, since two at a time would end the process.
template <typename Call>
void giveBack(Call call) {
  if (std::uncaught_exceptions() == 0) {
    call();
    return;
  }
  try {
    call();
  } catch (...) {
  }
}

}  // namespace vn::iwork13
