#include "looking/object_stream.h"

#include <cstdint>
#include <vector>

namespace dorvex {
namespace {

enum WireType : unsigned {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

// Fields of an archive header and of its entries.
constexpr std::uint64_t kIdentifier = 1;
constexpr std::uint64_t kMessageInfos = 2;
constexpr std::uint64_t kMessageType = 1;
constexpr std::uint64_t kMessageLength = 3;

constexpr std::uint64_t kRootIdentifier = 1;

constexpr int kGroupLevels = 100;

// One field: its number and what it holds.
struct Field {
  std::uint64_t number = 0;
  std::uint64_t value = 0;  // of a varint
  std::string_view bytes;   // of a length-delimited field
};

// Takes bytes from the front of a view; false where they are not there.
class Bytes {
 public:
  explicit Bytes(std::string_view left) : left_(left) {}

  bool empty() const { return left_.empty(); }

  bool take(std::uint64_t count, std::string_view& taken) {
    if (count > left_.size()) return false;
    taken = left_.substr(0, count);
    left_.remove_prefix(count);
    return true;
  }

  bool takeVarint(std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 70 && !left_.empty(); shift += 7) {
      const auto byte = static_cast<unsigned char>(left_.front());
      left_.remove_prefix(1);
      if (shift < 64) value |= std::uint64_t{byte & 0x7FU} << shift;
      if (byte < 0x80) return true;
    }
    return false;
  }

  bool takeField(Field& field) {
    std::uint64_t tag = 0;
    if (!takeVarint(tag)) return false;
    field = {tag >> 3, 0, {}};
    return tag >> 3 != 0 && takeValue(static_cast<unsigned>(tag & 7), field, kGroupLevels);
  }

 private:
  bool takeValue(unsigned wireType, Field& field, int levels) {
    std::uint64_t length = 0;
    switch (wireType) {
      case kVarint:
        return takeVarint(field.value);
      case kFixed64:
        return take(8, field.bytes);
      case kFixed32:
        return take(4, field.bytes);
      case kLengthDelimited:
        return takeVarint(length) && take(length, field.bytes);
      case kStartGroup:
        return levels > 0 && takeGroup(field.number, levels - 1);
      default:
        return false;
    }
  }

  bool takeGroup(std::uint64_t number, int levels) {
    std::uint64_t tag = 0;
    while (takeVarint(tag)) {
      if ((tag & 7) == kEndGroup) return tag >> 3 == number;
      Field field{tag >> 3, 0, {}};
      if (!takeValue(static_cast<unsigned>(tag & 7), field, levels)) return false;
    }
    return false;
  }

  std::string_view left_;
};

bool isRunOfFields(std::string_view message) {
  Bytes bytes(message);
  Field field;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
  }
  return true;
}

// The length that an entry of a header states; 0 where it states none.
bool readStatedLength(std::string_view entry, std::uint64_t& length) {
  Bytes bytes(entry);
  Field field;
  length = 0;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
    if (field.number == kMessageLength) length = field.value;
  }
  return true;
}

bool readStatedLengths(std::string_view header, std::vector<std::uint64_t>& lengths) {
  Bytes bytes(header);
  Field field;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
    if (field.number != kMessageInfos) continue;
    if (!readStatedLength(field.bytes, lengths.emplace_back())) return false;
  }
  return true;
}

// The type of the first message that a header lists, if the header is the
// document's.
std::optional<std::uint64_t> rootTypeIn(std::string_view header) {
  std::uint64_t identifier = 0;
  std::optional<std::uint64_t> type;
  Bytes bytes(header);
  Field field;
  while (!bytes.empty() && bytes.takeField(field)) {
    if (field.number == kIdentifier) identifier = field.value;
    if (field.number != kMessageInfos || type) continue;
    Bytes entry(field.bytes);
    Field inner;
    while (!entry.empty() && entry.takeField(inner)) {
      if (inner.number == kMessageType) type = inner.value;
    }
  }
  return identifier == kRootIdentifier ? type : std::nullopt;
}

std::string atArchive(std::uint64_t number, const char* fault) {
  return "object " + std::to_string(number) + " " + fault;
}

}  // namespace

std::optional<std::string> findObjectFault(std::string_view objectStream) {
  Bytes stream(objectStream);
  for (std::uint64_t number = 1; !stream.empty(); ++number) {
    std::uint64_t length = 0;
    std::string_view header;
    if (!stream.takeVarint(length) || !stream.take(length, header))
      return atArchive(number, "is cut short");
    std::vector<std::uint64_t> lengths;
    if (!readStatedLengths(header, lengths)) return atArchive(number, "has a damaged header");
    for (const std::uint64_t stated : lengths) {
      std::string_view message;
      if (!stream.take(stated, message)) return atArchive(number, "is cut short");
      if (!isRunOfFields(message)) return atArchive(number, "holds damaged data");
    }
  }
  return std::nullopt;
}

std::optional<std::uint64_t> findRootType(std::string_view objectStream) {
  Bytes stream(objectStream);
  while (!stream.empty()) {
    std::uint64_t length = 0;
    std::string_view header;
    if (!stream.takeVarint(length) || !stream.take(length, header)) return std::nullopt;
    if (const auto type = rootTypeIn(header)) return type;
    std::vector<std::uint64_t> lengths;
    if (!readStatedLengths(header, lengths)) return std::nullopt;
    for (const std::uint64_t stated : lengths) {
      std::string_view message;
      if (!stream.take(stated, message)) return std::nullopt;
    }
  }
  return std::nullopt;
}

}  // namespace dorvex
