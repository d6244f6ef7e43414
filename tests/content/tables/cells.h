// Cell buffers for tests, field by field.
#pragma once

#include <bit>
#include <cstdint>
#include <string>

#include "support/wire_writer.h"

namespace dorvex::testing {

inline std::string little32(std::uint64_t value) { return encodeLittleEndian(value, 4); }
inline std::string little64(double value) {
  return encodeLittleEndian(std::bit_cast<std::uint64_t>(value), 8);
}

// A decimal128 of a coefficient that fits in 64 bits.
inline std::string decimal128(std::uint64_t coefficient, int exponent, bool negative = false) {
  const auto biased = static_cast<std::uint64_t>(exponent + 6176);
  return encodeLittleEndian(coefficient, 8) +
         encodeLittleEndian(biased << 49 | (negative ? std::uint64_t{1} << 63 : 0), 8);
}

// A cell of version 5: its type, its mask, and the fields of the mask's bits.
inline std::string currentCell(int type, std::uint32_t mask, const std::string& fields) {
  return std::string{5, static_cast<char>(type)} + std::string(6, '\0') + little32(mask) + fields;
}

// A cell of version 4, whose second mask has no bits.
inline std::string olderCell(int type, std::uint32_t mask, const std::string& fields) {
  return std::string{4, static_cast<char>(type), 0, 0} + little32(mask) + little32(0) + fields;
}

}  // namespace dorvex::testing
