// Reads the fields of a cell buffer, one behind the other.
#pragma once

#include <cstring>
#include <string_view>

#include "tables/cell_record.h"

namespace dorvex::content {

class CellFields {
 public:
  explicit CellFields(std::string_view rest) : rest_(rest) {}

  // Takes the next value; false where the buffer ends before it.
  template <typename Value>
  bool take(Value& value) {
    if (rest_.size() < sizeof value) return false;
    std::memcpy(&value, rest_.data(), sizeof value);
    rest_.remove_prefix(sizeof value);
    return true;
  }
  bool takeBytes(std::size_t count, std::string_view& bytes) {
    if (rest_.size() < count) return false;
    bytes = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return true;
  }
  bool takeKey(CellKey key, CellRecord& cell) {
    std::uint32_t value = 0;
    if (!take(value)) return false;
    cell.set(key, value);
    return true;
  }
  bool takeDouble(std::optional<double>& number) {
    double value = 0;
    if (!take(value)) return false;
    number = value;
    return true;
  }

 private:
  std::string_view rest_;
};

// The value of that width at an offset, which must lie within bytes.
template <typename Value>
Value valueAt(std::string_view bytes, std::size_t offset) {
  Value value = 0;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

// The type that a byte stands for; nothing for a byte that stands for none.
inline std::optional<StoredType> storedType(unsigned char byte, StoredType last) {
  constexpr std::uint32_t kKnown =
      1U << 0 | 1U << 2 | 1U << 3 | 1U << 5 | 1U << 6 | 1U << 7 | 1U << 8 | 1U << 9 | 1U << 10;
  if (byte > static_cast<unsigned char>(last) || (kKnown >> byte & 1) == 0) return std::nullopt;
  return static_cast<StoredType>(byte);
}

}  // namespace dorvex::content
