// Zips written byte by byte, so that every field can be wrong.
#pragma once

#include <cstdint>
#include <functional>
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
  // Bytes behind the contents: a data descriptor, or a gap.
  std::string behind = {};
  // Changes what the local header alone says; contents and behind stay.
  std::function<void(RawMember& local)> inLocal = {};
  std::optional<std::uint32_t> offset = {};  // stated, of the local header
};

// What follows the contents of a member whose local header does not know them:
// checksum and both sizes, of four bytes each or of eight.
std::string descriptor(const std::string& contents, bool isSigned = true, int sizeWidth = 4);

// CRC-32 as zips use it.
std::uint32_t crcOf(const std::string& bytes);

// The members in local order, listed in the central directory in the given
// order of indexes (by default the same). All offsets are stated as if base
// bytes stood before them.
std::string rawZip(const std::vector<RawMember>& members, std::vector<std::size_t> order = {},
                   std::size_t base = 0);

// The same with ZIP64 records at the end, and nothing in the plain one.
std::string rawZip64(const std::vector<RawMember>& members);

// A ZIP64 extra field that states these values.
std::string zip64Field(const std::vector<std::uint64_t>& values);

}  // namespace dorvex::testing
