/// @file
/// The classes of the error family, one for each number.
///
/// Each carries its own number and the bare text "Vennik error N". None adds a
/// field or an operation: a class is there to be caught by type.
#pragma once

#include <string>

#include "Tools/vennik/vnexcept/vennik_error.h"
#include "Tools/vennik/vnexcept/vnerrorcode.h"

namespace vn::except {

#define VN_DECLARE_PLAIN_ERROR(number, name) \
  class VN_API name : public vennik_error {  \
   public:                                   \
    name();                                  \
  };
#define VN_DECLARED_BELOW(number, name)
VN_ERROR_CODES(VN_DECLARE_PLAIN_ERROR, VN_DECLARED_BELOW)
#undef VN_DECLARE_PLAIN_ERROR
#undef VN_DECLARED_BELOW

/// Number 1.
class VN_API dll_not_found_error : public vennik_error {
 public:
  /// The text is always "Vennik error 1: dll not found".
  dll_not_found_error();
};

/// Number 12.
class VN_API reader_init_error : public vennik_error {
 public:
  /// The bare text "Vennik error 12".
  reader_init_error();
  /// The text "Vennik error 12: " and the detail.
  /// @param detail Any text; may be empty.
  explicit reader_init_error(const std::string& detail);
};

}  // namespace vn::except
