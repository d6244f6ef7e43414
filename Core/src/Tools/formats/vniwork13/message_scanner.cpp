#include "Tools/formats/vniwork13/message_scanner.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <span>

#include "Tools/formats/vniwork13/wire_cursor.h"

namespace vn::iwork13 {
namespace {

// Endings of a value whose closing quote completes the sweep's pattern.
constexpr std::string_view kPatternEndings[] = {" text: ", " string: "};

bool endsInPattern(std::string_view value) {
  // Nearly every value is decided by its last byte.
  if (value.empty() || value.back() != ' ') return false;
  return std::ranges::any_of(kPatternEndings,
                             [value](auto ending) { return value.ends_with(ending); });
}

// The value of an unknown field may be printed as a nested message.
bool holdsPattern(std::string_view value) {
  return std::ranges::any_of(kPatternEndings, [value](auto ending) {
    return value.find(ending) != std::string_view::npos;
  });
}

// Null where no varint ends before the end.
const char* skipVarint(const char* position, const char* end) {
  // Where eight bytes are left, the first that ends a varint shows in one look.
  if (end - position >= 8 && std::endian::native == std::endian::little) {
    const std::uint64_t ends = ~wordAt(position) & 0x8080808080808080U;
    if (ends != 0) return position + std::countr_zero(ends) / 8 + 1;
  }
  const char* const limit = position + std::min<std::ptrdiff_t>(end - position, kLongestVarint);
  while (position != limit) {
    if (!continues(*position++)) return position;
  }
  return nullptr;
}

// A tag or a length of at most four bytes; longer ones are not worth following.
const char* readVarint32(const char* position, const char* end, std::uint32_t& value) {
  constexpr std::ptrdiff_t kWorthFollowing = 4;
  const char* const limit = position + std::min(end - position, kWorthFollowing);
  value = 0;
  for (unsigned shift = 0; position != limit; shift += 7) {
    const auto byte = static_cast<unsigned char>(*position++);
    value |= (byte & 0x7FU) << shift;
    if (byte < 0x80) return position;
  }
  return nullptr;
}

// One pass through a payload. Positions are pointers; null stands for where nothing is
// certain any more: the payload is malformed, or of a form that is not worth following.
//
// Most of what the reader does with a document happens here, field by field. So embedded
// messages are gone into without a call, and what the next field needs is local to run.
class Pass {
 public:
  Pass(ScannerMemory& memory, std::string_view payload, std::vector<SweptValue>& values)
      : memory_(memory), payload_(payload), values_(values) {}

  // Whether all of the payload is certain.
  bool run(MessageLayout layout) {
    const char* position = payload_.data();
    const char* end = position + payload_.size();
    std::uint32_t lastSwept = 0;
    while (position != nullptr) {
      while (position == end) {
        if (level_ == 0) return true;
        const OpenMessage& outer = memory_.around[--level_];
        end = outer.end;
        layout = outer.layout;
        lastSwept = outer.lastSwept;
      }
      std::uint32_t tag = 0;
      position = read(position, end, tag);
      if (position == nullptr || numberOf(tag) == 0) return false;
      if (wireTypeOf(tag) != WireType::kLengthDelimited) {
        position = passNumber(wireTypeOf(tag), position, end);
        continue;
      }
      std::uint32_t length = 0;
      position = read(position, end, length);
      if (position == nullptr || length > static_cast<std::size_t>(end - position)) return false;
      const FieldLayout* const field = findField(layout, numberOf(tag));
      if (field != nullptr && !isInPrintedOrder(*field, lastSwept)) return false;
      const Way way = wayFrom(field, {position, length});
      if (way == Way::kInto) {
        memory_.around[level_++] = {end, layout, lastSwept};
        end = position + length;
        layout = layoutAt(field->typeIndex);
        lastSwept = 0;
        continue;
      }
      position = way == Way::kPast ? position + length : nullptr;
    }
    return false;
  }

  // Where the pass has failed: it did not come to the end of what it has remembered.
  void forget() {
    if (hasRemembered_) memory_.known = {};
  }

 private:
  enum class Way { kNone, kPast, kInto };

  // Of a value of known length.
  Way wayFrom(const FieldLayout* field, std::string_view value) {
    if (field == nullptr || field->kind != FieldKind::kMessage)
      return isCertain(field, value) ? Way::kPast : Way::kNone;
    if (!field->leadsToSwept && isKnown(field->typeIndex, value)) return Way::kPast;
    return level_ == kRecursionLimit ? Way::kNone : Way::kInto;
  }

  static const char* read(const char* position, const char* end, std::uint32_t& value) {
    if (end - position < 2) return readVarint32(position, end, value);
    const std::uint32_t first = static_cast<unsigned char>(*position);
    const std::uint32_t second = static_cast<unsigned char>(position[1]);
    if (first < 0x80) {
      value = first;
      return position + 1;
    }
    if (second >= 0x80) return readVarint32(position, end, value);
    value = (first & 0x7FU) | second << 7;
    return position + 2;
  }

  // It shows nothing of the sweep's, whatever its field.
  static const char* passNumber(WireType type, const char* position, const char* end) {
    switch (type) {
      case WireType::kVarint:
        return position != end && !continues(*position) ? position + 1 : skipVarint(position, end);
      case WireType::kFixed32:
        return end - position >= 4 ? position + 4 : nullptr;
      case WireType::kFixed64:
        return end - position >= 8 ? position + 8 : nullptr;
      default:
        return nullptr;
    }
  }

  // The printed form has ascending numbers, and a singular field once: values
  // that arrive otherwise are not taken as they stand.
  static bool isInPrintedOrder(const FieldLayout& field, std::uint32_t& last) {
    if (field.swept == SweptName::kNone && !field.leadsToSwept) return true;
    if (field.number < last || (field.number == last && !field.repeated)) return false;
    last = field.number;
    return true;
  }

  // Takes a value of a swept field.
  bool isCertain(const FieldLayout* field, std::string_view value) {
    switch (field != nullptr ? field->kind : FieldKind::kScalar) {
      case FieldKind::kString:
        if (field->swept != SweptName::kNone)
          values_.push_back({static_cast<std::uint32_t>(value.data() - payload_.data()),
                             static_cast<std::uint32_t>(value.size()), field->swept});
        return !endsInPattern(value);
      case FieldKind::kPackedVarint:
        return isVarintRun(value);
      case FieldKind::kPackedFixed32:
        return value.size() % 4 == 0;
      case FieldKind::kPackedFixed64:
        return value.size() % 8 == 0;
      default:
        return !holdsPattern(value);
    }
  }

  // Whether the same message has been found certain. If not, it will be, or the whole
  // pass fails.
  bool isKnown(std::uint16_t typeIndex, std::string_view bytes) {
    constexpr std::size_t kWorthKnowing = 16;
    if (bytes.size() < kWorthKnowing) return false;
    const std::uint64_t hash = hashOf(typeIndex, bytes);
    KnownMessage& known = memory_.known[hash >> 56U];
    if (known.hash == hash && known.typeIndex == typeIndex && known.level >= level_ &&
        known.bytes == bytes)
      return true;
    known = {hash, bytes, typeIndex, static_cast<std::uint16_t>(level_)};
    hasRemembered_ = true;
    return false;
  }

  // Of how it begins and ends.
  static std::uint64_t hashOf(std::uint16_t typeIndex, std::string_view bytes) {
    const std::uint64_t first = wordAt(bytes.data()) ^ typeIndex;
    const std::uint64_t last = wordAt(bytes.end() - sizeof(std::uint64_t)) ^ bytes.size();
    return first * 0x9E3779B97F4A7C15U + last * 0xC2B2AE3D27D4EB4FU;
  }

  ScannerMemory& memory_;
  std::string_view payload_;
  std::vector<SweptValue>& values_;
  std::uint32_t level_ = 0;
  bool hasRemembered_ = false;
};

}  // namespace

bool MessageScanner::scan(MessageLayout layout, std::string_view payload,
                          std::vector<SweptValue>& values) {
  const std::size_t before = values.size();
  Pass pass(memory_, payload, values);
  if (!pass.run(layout)) {
    pass.forget();
    return false;
  }
  // Most messages have values of one name only, and a table has very many.
  const auto found = std::span(values).subspan(before);
  if (!std::ranges::is_sorted(found, {}, &SweptValue::name)) {
    std::ranges::stable_sort(found, {}, &SweptValue::name);
  }
  return true;
}

}  // namespace vn::iwork13
