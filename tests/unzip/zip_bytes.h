// Zips written byte by byte, so that every field can be wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorvex::testing {

// A stored member. Fields that are given replace the true ones, in the local
// and the central header alike.
struct RawMember {
  std::string name;
  std::string contents;
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  std::optional<std::uint32_t> crc = {};
  std::optional<std::uint32_t> size = {};  // uncompressed
  std::optional<std::uint32_t> compressedSize = {};
  std::string extra = {};
};

// CRC-32 as zips use it.
std::uint32_t crcOf(const std::string& bytes);

// The members in local order, listed in the central directory in the given
// order of indexes (by default the same).
std::string rawZip(const std::vector<RawMember>& members, std::vector<std::size_t> order = {});

// A ZIP64 extra field that states an uncompressed size.
std::string zip64Size(std::uint64_t size);

}  // namespace dorvex::testing
