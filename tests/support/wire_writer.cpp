#include "support/wire_writer.h"

namespace dorvex::testing {

std::string encodeVarint(std::uint64_t value) {
  std::string encoded;
  for (; value >= 0x80; value >>= 7) encoded += static_cast<char>((value & 0x7F) | 0x80);
  encoded += static_cast<char>(value);
  return encoded;
}

std::string encodeWideVarint(std::uint64_t value, int width) {
  std::string encoded = encodeVarint(value);
  while (encoded.size() < static_cast<std::size_t>(width)) {
    encoded.back() = static_cast<char>(encoded.back() | 0x80);
    encoded += '\0';
  }
  return encoded;
}

std::string encodeTag(unsigned field, unsigned wireType) {
  return encodeVarint(std::uint64_t{field} << 3 | wireType);
}

std::string encodeLittleEndian(std::uint64_t value, int count) {
  std::string encoded;
  for (int i = 0; i < count; ++i) encoded += static_cast<char>(value >> (8 * i) & 0xFF);
  return encoded;
}

Wire& Wire::varint(unsigned field, std::uint64_t value) {
  return raw(encodeTag(field, kVarint)).raw(encodeVarint(value));
}

Wire& Wire::fixed32(unsigned field, std::uint32_t value) {
  return raw(encodeTag(field, kFixed32)).raw(encodeLittleEndian(value, 4));
}

Wire& Wire::fixed64(unsigned field, std::uint64_t value) {
  return raw(encodeTag(field, kFixed64)).raw(encodeLittleEndian(value, 8));
}

Wire& Wire::bytes(unsigned field, std::string_view value) {
  return raw(encodeTag(field, kLengthDelimited)).raw(encodeVarint(value.size())).raw(value);
}

Wire& Wire::group(unsigned field, const Wire& value) {
  return raw(encodeTag(field, kStartGroup)).raw(value.str()).raw(encodeTag(field, kEndGroup));
}

Wire& Wire::raw(std::string_view value) {
  bytes_ += value;
  return *this;
}

}  // namespace dorvex::testing
