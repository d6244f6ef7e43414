// Writes protobuf's wire format field by field, without any schema: tests
// describe messages with it, sound and damaged ones alike.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dorvex::testing {

// Wire types, as they stand in the low three bits of a tag.
enum WireType : unsigned {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

// A base-128 varint.
std::string encodeVarint(std::uint64_t value);

// A varint that takes exactly width bytes, padded with continuation bytes.
std::string encodeWideVarint(std::uint64_t value, int width);

// A field's tag.
std::string encodeTag(unsigned field, unsigned wireType);

// count bytes of value, the lowest first.
std::string encodeLittleEndian(std::uint64_t value, int count);

// One message under construction. Fields stand in the order of the calls.
class Wire {
 public:
  Wire& varint(unsigned field, std::uint64_t value);
  Wire& fixed32(unsigned field, std::uint32_t value);
  Wire& fixed64(unsigned field, std::uint64_t value);
  // A string, a bytes value or a packed field.
  Wire& bytes(unsigned field, std::string_view value);
  // An embedded message.
  Wire& message(unsigned field, const Wire& value) { return bytes(field, value.str()); }
  // A group, which the reader knows only as an unknown field.
  Wire& group(unsigned field, const Wire& value);
  // Bytes that need be no field at all.
  Wire& raw(std::string_view value);

  const std::string& str() const { return bytes_; }

 private:
  std::string bytes_;
};

}  // namespace dorvex::testing
