#include "document_parts.h"

#include <snappy.h>

#include <algorithm>
#include <utility>

namespace dorvex::fuzz {
namespace {

using testing::WireType;

constexpr std::size_t kMostUnpacked = std::size_t{1} << 20;
constexpr std::size_t kChunkHeaderSize = 4;

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  return value;
}

bool decodeNumber(Bytes& from, unsigned wireType, Field& field) {
  if (wireType == WireType::kVarint) {
    const auto value = from.takeVarint();
    field.value = value.value_or(0);
    return value.has_value();
  }
  const auto taken = from.take(wireType == WireType::kFixed64 ? 8 : 4);
  field.value = littleEndian(taken.value_or(std::string_view()));
  return taken.has_value();
}

bool decodeValue(Bytes& from, Field& field) {
  switch (field.wireType) {
    case WireType::kVarint:
    case WireType::kFixed64:
    case WireType::kFixed32:
      return decodeNumber(from, field.wireType, field);
    case WireType::kLengthDelimited: {
      const auto length = from.takeVarint();
      const auto taken = length ? from.take(*length) : std::nullopt;
      field.bytes = taken.value_or(std::string_view());
      return taken.has_value();
    }
    case WireType::kStartGroup:
    case WireType::kEndGroup:
      return true;
    default:
      return false;
  }
}

std::uint64_t statedLength(const Field& info) {
  std::uint64_t length = 0;
  for (const Field& field : decodeFields(info.bytes).value_or(Fields()))
    if (field.number == ArchiveParts::kInfoLength) length = field.value;
  return length;
}

std::optional<ArchiveParts> decodeArchive(Bytes& from) {
  const auto length = from.takeVarint();
  const auto header = length ? from.take(*length) : std::nullopt;
  auto fields = header ? decodeFields(*header) : std::nullopt;
  if (!fields) return std::nullopt;
  ArchiveParts archive{std::move(*fields), {}};
  for (const Field& field : archive.header) {
    if (field.number != ArchiveParts::kMessageInfos) continue;
    const auto payload = from.take(statedLength(field));
    if (!payload) return std::nullopt;
    archive.payloads.emplace_back(*payload);
  }
  return archive;
}

std::optional<Chunk> decodeChunk(Bytes& from) {
  const auto header = from.take(kChunkHeaderSize);
  if (!header || header->front() != '\0') return std::nullopt;
  const auto body = from.take(littleEndian(header->substr(1)));
  if (!body) return std::nullopt;
  return Chunk{std::string(*header), std::string(*body)};
}

// Decodes items as long as there are any; returns what is left.
template <typename Item>
std::string decodeAll(std::string_view bytes, std::optional<Item> (*decode)(Bytes&),
                      std::vector<Item>& items) {
  Bytes left(bytes);
  while (!left.empty()) {
    Bytes next = left;
    auto item = decode(next);
    if (!item) break;
    items.push_back(std::move(*item));
    left = next;
  }
  return std::string(left.left());
}

}  // namespace

std::optional<std::string_view> Bytes::take(std::uint64_t count) {
  if (count > left_.size()) return std::nullopt;
  const std::string_view taken = left_.substr(0, count);
  left_.remove_prefix(count);
  return taken;
}

std::optional<std::uint64_t> Bytes::takeVarint() {
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < 64 && !left_.empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(left_.front());
    left_.remove_prefix(1);
    value |= std::uint64_t{byte & 0x7FU} << shift;
    if (byte < 0x80) return value;
  }
  return std::nullopt;
}

std::string Field::encode() const {
  std::string tag = testing::encodeVarint(number << 3 | wireType);
  switch (wireType) {
    case WireType::kVarint:
      return tag + testing::encodeWideVarint(value, width);
    case WireType::kFixed64:
      return tag + testing::encodeLittleEndian(value, 8);
    case WireType::kFixed32:
      return tag + testing::encodeLittleEndian(value, 4);
    case WireType::kLengthDelimited:
      return tag + testing::encodeWideVarint(statedLength.value_or(bytes.size()), width) + bytes;
    default:
      return tag;
  }
}

std::string encodeFields(const Fields& fields) {
  std::string message;
  for (const Field& field : fields) message += field.encode();
  return message;
}

std::optional<Fields> decodeFields(std::string_view message) {
  Bytes bytes(message);
  Fields fields;
  while (!bytes.empty()) {
    const auto tag = bytes.takeVarint();
    if (!tag || *tag >> 3 == 0) return std::nullopt;
    Field field{.number = *tag >> 3, .wireType = static_cast<unsigned>(*tag & 7)};
    if (!decodeValue(bytes, field)) return std::nullopt;
    fields.push_back(std::move(field));
  }
  return fields;
}

void setInfo(Field& info, std::uint64_t number, std::uint64_t value) {
  auto fields = decodeFields(info.bytes);
  if (!fields) return;
  const auto found = std::ranges::find(*fields, number, &Field::number);
  if (found != fields->end())
    found->value = value;
  else
    fields->push_back({.number = number, .value = value});
  info.bytes = encodeFields(*fields);
}

std::string ArchiveParts::encode() const {
  Fields fields = header;
  auto payload = payloads.begin();
  for (Field& field : fields)
    if (field.number == kMessageInfos && payload != payloads.end())
      setInfo(field, kInfoLength, (payload++)->size());
  const std::string encoded = encodeFields(fields);
  std::string archive = testing::encodeVarint(statedHeaderLength.value_or(encoded.size()));
  archive += encoded;
  for (const std::string& bytes : payloads) archive += bytes;
  return archive;
}

std::string StreamParts::encode() const {
  std::string stream;
  for (const ArchiveParts& archive : archives) stream += archive.encode();
  return stream + tail;
}

StreamParts StreamParts::decode(std::string_view stream) {
  StreamParts parts;
  parts.tail = decodeAll(stream, decodeArchive, parts.archives);
  return parts;
}

std::string MemberParts::encode() const {
  std::string member;
  for (const Chunk& chunk : chunks) member += chunk.header + chunk.body;
  return member + tail;
}

MemberParts MemberParts::decode(std::string_view member) {
  MemberParts parts;
  parts.tail = decodeAll(member, decodeChunk, parts.chunks);
  return parts;
}

std::optional<std::string> MemberParts::unpack() const {
  std::string stream;
  for (const Chunk& chunk : chunks) {
    std::size_t size = 0;
    std::string unpacked;
    if (!snappy::GetUncompressedLength(chunk.body.data(), chunk.body.size(), &size) ||
        stream.size() + size > kMostUnpacked ||
        !snappy::Uncompress(chunk.body.data(), chunk.body.size(), &unpacked))
      return std::nullopt;
    stream += unpacked;
  }
  return stream;
}

}  // namespace dorvex::fuzz
