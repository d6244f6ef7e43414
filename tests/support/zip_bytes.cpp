#include "support/zip_bytes.h"

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
  RawMember local = member;
  if (member.inLocal) member.inLocal(local);
  return "PK\x03\x04" + commonFields(local) + local.name + local.extra + member.contents +
         member.behind;
}

std::string centralEntry(const RawMember& member, std::size_t offset) {
  return "PK\x01\x02" + u16(20) + commonFields(member) + u16(0) + u16(0) + u16(0) + u32(0) +
         u32(member.offset.value_or(static_cast<std::uint32_t>(offset))) + member.name +
         member.extra;
}

struct Parts {
  std::string members;
  std::string directory;
};

Parts write(const std::vector<RawMember>& members, const std::vector<std::size_t>& order,
            std::size_t base) {
  Parts parts;
  std::vector<std::size_t> offsets;
  for (const RawMember& member : members) {
    offsets.push_back(base + parts.members.size());
    parts.members += localEntry(member);
  }
  for (const std::size_t index : order)
    parts.directory += centralEntry(members[index], offsets[index]);
  return parts;
}

std::vector<std::size_t> localOrder(std::size_t count) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
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

std::string descriptor(const std::string& contents, bool isSigned, int sizeWidth) {
  const std::string size = encodeLittleEndian(contents.size(), sizeWidth);
  return (isSigned ? "PK\x07\x08" : "") + u32(crcOf(contents)) + size + size;
}

std::string rawZip(const std::vector<RawMember>& members, std::vector<std::size_t> order,
                   std::size_t base) {
  if (order.empty()) order = localOrder(members.size());
  const auto [locals, directory] = write(members, order, base);
  return locals + directory + "PK\x05\x06" + u16(0) + u16(0) + u16(order.size()) +
         u16(order.size()) + u32(directory.size()) + u32(base + locals.size()) + u16(0);
}

std::string rawZip64(const std::vector<RawMember>& members) {
  const auto u64 = [](std::uint64_t value) { return encodeLittleEndian(value, 8); };
  const auto [locals, directory] = write(members, localOrder(members.size()), 0);
  return locals + directory + "PK\x06\x06" + u64(44) + u16(45) + u16(45) + u32(0) + u32(0) +
         u64(members.size()) + u64(members.size()) + u64(directory.size()) + u64(locals.size()) +
         "PK\x06\x07" + u32(0) + u64(locals.size() + directory.size()) + u32(1) + "PK\x05\x06" +
         u16(0) + u16(0) + u16(0xFFFF) + u16(0xFFFF) + u32(0xFFFFFFFF) + u32(0xFFFFFFFF) + u16(0);
}

std::string zip64Field(const std::vector<std::uint64_t>& values) {
  std::string field = u16(1) + u16(8 * values.size());
  for (const std::uint64_t value : values) field += encodeLittleEndian(value, 8);
  return field;
}

}  // namespace dorvex::testing
