/// @file
/// The state machine behind sanitizeUTF8 and sanitizeUTF8with1252.
#pragma once

#include <cstdint>
#include <string>

#include "Tools/vnexport.h"

namespace vn::string::detail {

/// The code points of the bytes 0x80 to 0x9F in windows-1252. The slots of the
/// five bytes without a meaning hold 0xFFFD and are never read.
VN_API extern const int codepoint_from_1252_table[32];

/// An error is written as the replacement, whatever the byte.
struct ReplaceError_Policy {
  /// Appends one error.
  /// @param[in,out] output Where to append.
  /// @param byte The byte in error.
  /// @param replacementCodePoint See utf8Sanitizer.
  VN_API static void writeError(std::string& output, unsigned char byte, int replacementCodePoint);
};

/// An error is decoded as windows-1252, and written as the replacement where
/// that has no meaning for the byte.
struct Use1252Error_Policy {
  /// Appends one error.
  /// @param[in,out] output Where to append.
  /// @param byte The byte in error, 0x80 or above.
  /// @param replacementCodePoint See utf8Sanitizer.
  VN_API static void writeError(std::string& output, unsigned char byte, int replacementCodePoint);
};

/// Turns bytes into valid UTF-8, one at a time and without looking back. Begin
/// with the replacement and all else zero or empty, call parseByte for each
/// byte and writeBufferAsErrors once at the end; output is then the result.
/// Belongs to one call; any operation may throw std::bad_alloc.
template <typename ErrorPolicy>
struct VN_API utf8Sanitizer {
  /// The code point that stands for an error.
  std::int32_t replacementCodePoint;
  /// The finished text.
  std::string output;
  /// The bytes of the sequence that is being read; empty when none is open.
  std::string buffer;
  /// The full length of the open sequence in bytes: 2, 3 or 4.
  std::int32_t expectedLength;
  /// If not 0, the lowest value for the first continuation byte.
  std::uint8_t lowerBound;
  /// If not 0, the first value that is too high for the first continuation byte.
  std::uint8_t upperBound;

  /// Takes the next byte of the text.
  /// @param byte Any byte.
  void parseByte(unsigned char byte);

  /// Writes each byte of the open sequence as one error and closes it.
  void writeBufferAsErrors();

  /// Writes one error.
  /// @param byte The byte in error.
  void writeSingleError(unsigned char byte);
};

extern template struct VN_API utf8Sanitizer<ReplaceError_Policy>;
extern template struct VN_API utf8Sanitizer<Use1252Error_Policy>;

}  // namespace vn::string::detail
