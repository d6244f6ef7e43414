/// @file
/// The base of the error family that readers and host share.
#pragma once

#include <exception>
#include <string>

#include "Tools/vnexport.h"

/// The error family.
namespace vn::except {

/// A failure with the number under which host and readers know it.
///
/// Copyable; every object owns its text. All virtual operations are inline, so
/// that a program which loads the module at run time, without linking it, can
/// still catch the family by type.
class VN_API vennik_error : public std::exception {
 public:
  /// The text is "Vennik error " and the code in decimal.
  /// @param code The error number.
  /// @throws std::bad_alloc when there is no memory for the text.
  explicit vennik_error(int code);

  /// The same, then ": " and the detail.
  /// @param code The error number.
  /// @param detail Any text; may be empty.
  /// @throws std::bad_alloc when there is no memory for the text.
  vennik_error(int code, std::string detail);

  /// Copies number and text.
  VN_API vennik_error(const vennik_error&) = default;
  /// Copies number and text.
  /// @return This object.
  VN_API vennik_error& operator=(const vennik_error&) = default;
  /// Releases the text.
  VN_API ~vennik_error() override = default;

  /// What has failed.
  /// @return The text, NUL-terminated; valid as long as the object lives.
  VN_API const char* what() const noexcept override { return message_.c_str(); }

  /// The error number.
  /// @return The number.
  int code() const noexcept { return code_; }

 private:
  std::string message_;
  int code_;
};

}  // namespace vn::except
