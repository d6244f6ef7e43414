// The layout of every message of the schema, as far as the message scanner needs
// it. Generated from the compiled descriptors at build time, so that scanning
// needs no descriptors at run time and a new message needs no change of code.
#pragma once

#include <cstdint>
#include <span>

namespace google::protobuf {
class Message;
}

namespace vn::iwork13 {

// How a field's length-delimited form is read.
enum class FieldKind : std::uint8_t {
  kScalar,         // not at all: a singular number in this form is an unknown field
  kString,         // a string or bytes value
  kMessage,        // an embedded message
  kPackedVarint,   // a run of varints
  kPackedFixed32,  // a run of four-byte values
  kPackedFixed64,  // a run of eight-byte values
};

// The two names that the text sweep looks for.
enum class SweptName : std::uint8_t { kNone, kText, kString };

struct FieldLayout {
  std::uint32_t number;
  std::uint16_t message;  // of an embedded message: its index
  FieldKind kind;
  SweptName swept;  // of a string or bytes field
  bool repeated;
  bool leadsToSwept;  // an embedded message that can hold a swept field
};

// Known fields in ascending number, known extensions included.
using MessageLayout = std::span<const FieldLayout>;

// The layout with an index from FieldLayout::message.
MessageLayout layoutAt(std::uint16_t index);

// The layout of a message's class, or null for a class that the schema lacks.
const MessageLayout* findLayout(const google::protobuf::Message& message);

}  // namespace vn::iwork13
