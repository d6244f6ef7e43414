#include "graph/wire.h"

#include <cstring>

namespace dorvex::content {
namespace {

constexpr int kLongestVarint = 10;
// The length of a group is found by reading it, so nested groups would cost the square
// of their depth. Documents hold none.
constexpr int kDeepestWireGroup = 16;

}  // namespace

bool WireReader::varint(std::uint64_t& value) {
  // Tags, and most of what stands behind them, are of one byte.
  if (!rest_.empty() && static_cast<unsigned char>(rest_.front()) < 0x80) {
    value = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return true;
  }
  value = 0;
  const std::size_t most = rest_.size() < kLongestVarint ? rest_.size() : kLongestVarint;
  for (std::size_t i = 0; i < most; ++i) {
    const auto byte = static_cast<unsigned char>(rest_[i]);
    value |= static_cast<std::uint64_t>(byte & 0x7F) << (7 * i);
    if (byte < 0x80) {
      rest_.remove_prefix(i + 1);
      return true;
    }
  }
  return false;
}

template <typename Value>
bool WireReader::fixed(std::uint64_t& value) {
  Value bits = 0;
  if (rest_.size() < sizeof bits) return false;
  std::memcpy(&bits, rest_.data(), sizeof bits);
  value = bits;
  rest_.remove_prefix(sizeof bits);
  return true;
}

bool WireReader::next(WireField& field) {
  const std::string_view start = rest_;
  std::uint64_t tag = 0;
  if (rest_.empty()) return false;
  if (varint(tag) && tag >> 3 != 0 && tag >> 3 <= 0x1FFFFFFF) {
    field.number = static_cast<std::uint32_t>(tag >> 3);
    field.type = static_cast<WireType>(tag & 7);
    if (field.type == WireType::kVarint ? varint(field.scalar) : value(field)) return true;
  }
  rest_ = start;
  return false;
}

bool WireReader::value(WireField& field) {
  switch (field.type) {
    case WireType::kVarint:
      return varint(field.scalar);
    case WireType::kFixed64:
      return fixed<std::uint64_t>(field.scalar);
    case WireType::kFixed32:
      return fixed<std::uint32_t>(field.scalar);
    case WireType::kBytes: {
      std::uint64_t length = 0;
      if (!varint(length) || length > rest_.size()) return false;
      field.bytes = rest_.substr(0, length);
      rest_.remove_prefix(length);
      return true;
    }
    case WireType::kStartGroup:
      return group(field);
    case WireType::kEndGroup:
      return false;
  }
  return false;
}

bool WireReader::group(WireField& field) {
  const std::string_view body = rest_;
  int depth = 1;
  while (depth > 0) {
    const std::size_t read = body.size() - rest_.size();
    std::uint64_t tag = 0;
    if (!varint(tag)) return false;
    WireField inner;
    inner.type = static_cast<WireType>(tag & 7);
    if (inner.type == WireType::kStartGroup) {
      if (++depth > kDeepestWireGroup) return false;
    } else if (inner.type == WireType::kEndGroup) {
      --depth;
      field.bytes = body.substr(0, read);
    } else if (!value(inner)) {
      return false;
    }
  }
  return true;
}

}  // namespace dorvex::content
