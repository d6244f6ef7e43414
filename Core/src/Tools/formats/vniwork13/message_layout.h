// The layout of every message of the schema, as far as the reader needs it to scan
// payloads, to parse them by the rules and to print them. Generated from the
// compiled descriptors at build time: at run time the reader needs no descriptors,
// which protobuf would have to build first, and a new message needs no change of
// code.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

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

// The types of fields, by the numbers of protobuf's own descriptors.
enum class FieldType : std::uint8_t {
  kDouble = 1,
  kFloat = 2,
  kInt64 = 3,
  kUInt64 = 4,
  kInt32 = 5,
  kFixed64 = 6,
  kFixed32 = 7,
  kBool = 8,
  kString = 9,
  kGroup = 10,  // the schema has none
  kMessage = 11,
  kBytes = 12,
  kUInt32 = 13,
  kEnum = 14,
  kSFixed32 = 15,
  kSFixed64 = 16,
  kSInt32 = 17,
  kSInt64 = 18,
};

struct FieldLayout {
  std::uint32_t number;
  std::uint16_t typeIndex;  // of an embedded message or an enum: which
  FieldKind kind;
  SweptName swept;  // of a string or bytes field
  bool repeated;
  bool leadsToSwept;  // an embedded message that can hold a swept field
  FieldType type;
};

// Known fields in ascending number, known extensions included.
using MessageLayout = std::span<const FieldLayout>;

// All layouts.
extern const MessageLayout kLayouts[];

// The layout of an embedded message, by FieldLayout::typeIndex.
inline MessageLayout layoutAt(std::uint16_t index) { return kLayouts[index]; }

// The field of that number, or null. Fields are mostly numbered from 1 without
// gaps, up to some number.
inline const FieldLayout* findField(MessageLayout layout, std::uint32_t number) {
  if (number - 1 < layout.size() && layout[number - 1].number == number) return &layout[number - 1];
  const auto found = std::ranges::lower_bound(layout, number, {}, &FieldLayout::number);
  return found != layout.end() && found->number == number ? &*found : nullptr;
}

// The name of a field of a layout as it is printed: that of an extension in brackets.
std::string_view nameOf(const FieldLayout& field);

// The name of a value of an enum field; empty for a number that the enum lacks.
std::string_view nameOfEnumValue(const FieldLayout& field, int number);

}  // namespace vn::iwork13
