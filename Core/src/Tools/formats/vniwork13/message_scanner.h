// Finds out, without building a message, what the text sweep would take from it.
//
// Nearly all of a document is messages that hold no text. Building one and
// printing it costs many times what walking over its bytes does, and the bytes
// decide: a printed message gives a value only
//
//  - where a string or bytes field named text or string is set in it, or
//  - where a quoted value of any name, unknown fields included, ends in a blank
//    and "text: " or "string: ", so that its closing quote completes the sweep's
//    pattern.
//
// The scanner is certain or it says so. Where it is not, the message has to be
// parsed and printed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Tools/formats/vniwork13/message_layout.h"
#include "Tools/formats/vniwork13/message_parser.h"

namespace vn::iwork13 {

// A value of a swept field, as it stands in the payload.
struct SweptValue {
  std::uint32_t offset;
  std::uint32_t length;
  SweptName name;
};

// A message that a scanner is in, or one around it.
struct OpenMessage {
  const char* end;
  MessageLayout layout;
  std::uint32_t lastSwept;
};

// An embedded message without a swept field that a scanner has been through, and how
// deep it was.
struct KnownMessage {
  std::uint64_t hash;
  std::string_view bytes;
  std::uint16_t typeIndex;
  std::uint16_t level;
};

struct ScannerMemory {
  std::array<OpenMessage, kRecursionLimit> around;
  // Documents say the same again and again: a fill, a stroke, the insets of a cell. What
  // has been found certain is so wherever it stands again, no deeper than before.
  std::array<KnownMessage, 256> known;
};

// Scans the messages of one object stream, which stays where it is as long as the
// scanner is used.
class MessageScanner {
 public:
  // Walks over a payload of a class of that layout. True if it is certain that
  //  - parsing reads the payload to its exact end, and
  //  - the sweep takes from the printed message just the values that are appended,
  //    in their order, those named text before those named string.
  // False where it cannot be certain; what has been appended is then of no use.
  bool scan(MessageLayout layout, std::string_view payload, std::vector<SweptValue>& values);

 private:
  ScannerMemory memory_{};
};

}  // namespace vn::iwork13
