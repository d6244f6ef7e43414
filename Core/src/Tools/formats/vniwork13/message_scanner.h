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

#include <cstdint>
#include <string_view>
#include <vector>

#include "Tools/formats/vniwork13/message_layout.h"

namespace vn::iwork13 {

// A value of a swept field, as it stands in the payload.
struct SweptValue {
  std::uint32_t offset;
  std::uint32_t length;
  SweptName name;
};

// Walks over a payload of a class of that layout. True if it is certain that
//  - parsing reads the payload to its exact end, and
//  - the sweep takes from the printed message just the values that are appended,
//    in their order, those named text before those named string.
// False where it cannot be certain; what has been appended is then of no use.
bool scanPayload(MessageLayout layout, std::string_view payload, std::vector<SweptValue>& values);

}  // namespace vn::iwork13
