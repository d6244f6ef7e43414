#include "zip_bytes.h"

#include <numeric>

#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

std::string u16(std::uint64_t value) { return encodeLittleEndian(value, 2); }
std::string u32(std::uint64_t value) { return encodeLittleEndian(value, 4); }

// What the local and the central header have in common.
std::string commonFields(const RawMember& member) {
  const auto length = static_cast<std::uint32_t>(member.contents.size());
  return u16(20) + u16(member.flags) + u16(member.method) + u16(0) + u16(0x21) +
         u32(member.crc.value_or(crcOf(member.contents))) +
         u32(member.compressedSize.value_or(length)) + u32(member.size.value_or(length)) +
         u16(member.name.size()) + u16(member.extra.size());
}

std::string localEntry(const RawMember& member) {
  return "PK\x03\x04" + commonFields(member) + member.name + member.extra + member.contents;
}

std::string centralEntry(const RawMember& member, std::size_t offset) {
  return "PK\x01\x02" + u16(20) + commonFields(member) + u16(0) + u16(0) + u16(0) + u32(0) +
         u32(offset) + member.name + member.extra;
}

}  // namespace

std::uint32_t crcOf(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0u);
  }
  return ~crc;
}

std::string rawZip(const std::vector<RawMember>& members, std::vector<std::size_t> order) {
  if (order.empty()) {
    order.resize(members.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
  }
  std::string bytes;
  std::vector<std::size_t> offsets;
  for (const RawMember& member : members) {
    offsets.push_back(bytes.size());
    bytes += localEntry(member);
  }
  const std::size_t start = bytes.size();
  for (const std::size_t index : order) bytes += centralEntry(members[index], offsets[index]);
  const std::size_t length = bytes.size() - start;
  return bytes + "PK\x05\x06" + u16(0) + u16(0) + u16(order.size()) + u16(order.size()) +
         u32(length) + u32(start) + u16(0);
}

std::string zip64Size(std::uint64_t size) { return u16(1) + u16(8) + encodeLittleEndian(size, 8); }

}  // namespace dorvex::testing
