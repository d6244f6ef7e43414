// Reading of protobuf's wire format from bytes in memory, by the rules that
// message_parser.h states for varints and lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vn::iwork13 {

enum class WireType : unsigned {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

inline WireType wireTypeOf(std::uint32_t tag) { return static_cast<WireType>(tag & 7U); }
inline std::uint32_t numberOf(std::uint32_t tag) { return tag >> 3U; }

inline constexpr int kLongestVarint = 10;

// Whether more bytes of a varint follow.
inline bool continues(char byte) { return static_cast<signed char>(byte) < 0; }

inline std::uint64_t wordAt(const char* position) {
  std::uint64_t word = 0;
  std::memcpy(&word, position, sizeof word);
  return word;
}

// Whether a run of varints ends with its last one, none longer than ten bytes.
inline bool isVarintRun(std::string_view run) {
  if (run.empty()) return true;
  if (continues(run.back())) return false;
  // Where one ends in every four bytes, none is too long.
  const char* const end = run.data() + run.size();
  const char* position = run.data();
  for (; end - position >= 8; position += 8) {
    const std::uint64_t ends = ~wordAt(position) & 0x8080808080808080U;
    if (ends >> 32U == 0 || static_cast<std::uint32_t>(ends) == 0) break;
  }
  if (end - position < 8) return true;
  int length = 0;
  for (const char byte : run) {
    length = continues(byte) ? length + 1 : 0;
    if (length == kLongestVarint) return false;
  }
  return true;
}

class WireCursor {
 public:
  explicit WireCursor(std::string_view bytes) : bytes_(bytes) {}

  bool atEnd() const { return position_ == bytes_.size(); }
  std::size_t position() const { return position_; }
  void stepBack(std::size_t count) { position_ -= count; }

  // These return false where there is no such thing; the position is then of no
  // use.

  bool readVarint(std::uint64_t& value) {
    constexpr unsigned kMostBits = 7 * kLongestVarint;
    value = 0;
    for (unsigned shift = 0; shift < kMostBits && position_ < bytes_.size(); shift += 7) {
      const auto byte = static_cast<unsigned char>(bytes_[position_++]);
      value |= std::uint64_t{byte & 0x7FU} << shift;
      if (byte < 0x80) return true;
    }
    return false;
  }

  // A tag of 0 is none.
  bool readTag(std::uint32_t& tag) {
    std::uint64_t value = 0;
    if (!readVarint(value)) return false;
    tag = static_cast<std::uint32_t>(value);
    return tag != 0;
  }

  bool readBytes(std::string_view& value) {
    std::uint64_t varint = 0;
    if (!readVarint(varint)) return false;
    // A length of more is negative, and longer than any payload in any case.
    const auto length = static_cast<std::uint32_t>(varint);
    if (length > bytes_.size() - position_) return false;
    value = bytes_.substr(position_, length);
    position_ += length;
    return true;
  }

  bool skip(std::size_t count) {
    if (count > bytes_.size() - position_) return false;
    position_ += count;
    return true;
  }

  // The value of a field that is no group.
  bool skipValue(WireType type) {
    std::uint64_t varint = 0;
    std::string_view bytes;
    switch (type) {
      case WireType::kVarint:
        return readVarint(varint);
      case WireType::kFixed64:
        return skip(8);
      case WireType::kFixed32:
        return skip(4);
      case WireType::kLengthDelimited:
        return readBytes(bytes);
      default:
        return false;
    }
  }

  // The same for what is known to be there.

  std::uint64_t varint() {
    std::uint64_t value = 0;
    readVarint(value);
    return value;
  }

  std::string_view bytes() {
    std::string_view value;
    readBytes(value);
    return value;
  }

  // A little-endian number.
  std::uint64_t fixed(std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
      value |= std::uint64_t{static_cast<unsigned char>(bytes_[position_ + i])} << (8 * i);
    position_ += size;
    return value;
  }

 private:
  std::string_view bytes_;
  std::size_t position_ = 0;
};

}  // namespace vn::iwork13
