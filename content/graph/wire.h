// Protobuf's wire format, read in place: fields one behind the other, each a tag and a
// value. Nothing is copied and nothing allocated; what is malformed ends the reading.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dorvex::content {

enum class WireType : std::uint8_t {
  kVarint = 0,
  kFixed64 = 1,
  kBytes = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

struct WireField {
  std::uint32_t number = 0;
  WireType type = WireType::kVarint;
  std::uint64_t scalar = 0;  // of all types but kBytes
  std::string_view bytes;    // of kBytes; what stands in a kStartGroup
};

class WireReader {
 public:
  explicit WireReader(std::string_view bytes) : rest_(bytes) {}

  // Reads the next field; false at the end and before what is no field.
  bool next(WireField& field);

  // Whether all bytes have been read.
  bool atEnd() const { return rest_.empty(); }
  std::string_view rest() const { return rest_; }

  // Reads a varint of at most ten bytes; false before what is none.
  bool varint(std::uint64_t& value);

 private:
  bool value(WireField& field);
  template <typename Value>
  bool fixed(std::uint64_t& value);
  bool group(WireField& field);

  std::string_view rest_;
};

}  // namespace dorvex::content
