#include "Tools/formats/vniwork13/message_scanner.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

#include "Tools/formats/vniwork13/message_parser.h"
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

constexpr int kLongestVarint = 10;

// Whether a run of varints ends with its last one, none longer than ten bytes.
bool isVarintRun(std::string_view run) {
  int length = 0;
  for (const char byte : run) {
    ++length;
    if (static_cast<signed char>(byte) < 0) {
      if (length == kLongestVarint) return false;
    } else {
      length = 0;
    }
  }
  return length == 0;
}

// Goes through the fields of messages. Positions are pointers; null stands for
// where nothing is certain any more: the payload is malformed, or of a form that
// is not worth following.
class Scanner {
 public:
  Scanner(std::string_view payload, std::vector<SweptValue>& values)
      : start_(payload.data()), values_(values) {}

  // The end of the message, where all of it is certain.
  const char* scanMessage(MessageLayout layout, const char* position, const char* end, int levels) {
    std::uint32_t lastSwept = 0;
    while (position != end) {
      std::uint32_t tag = 0;
      position = readVarint32(position, end, tag);
      if (position == nullptr || numberOf(tag) == 0) return nullptr;
      const FieldLayout* field = findField(layout, numberOf(tag));
      if (field != nullptr && !isInPrintedOrder(*field, lastSwept)) return nullptr;
      switch (wireTypeOf(tag)) {
        case WireType::kVarint:
          position = skipVarint(position, end);
          break;
        case WireType::kFixed64:
          position = skip(8, position, end);
          break;
        case WireType::kFixed32:
          position = skip(4, position, end);
          break;
        case WireType::kLengthDelimited:
          position = scanLengthDelimited(field, position, end, levels);
          break;
        default:
          return nullptr;
      }
      if (position == nullptr) return nullptr;
    }
    return position;
  }

 private:
  // The printed form has ascending numbers, and a singular field once: values
  // that arrive otherwise are not taken as they stand.
  static bool isInPrintedOrder(const FieldLayout& field, std::uint32_t& last) {
    if (field.swept == SweptName::kNone && !field.leadsToSwept) return true;
    if (field.number < last || (field.number == last && !field.repeated)) return false;
    last = field.number;
    return true;
  }

  const char* scanLengthDelimited(const FieldLayout* field, const char* position, const char* end,
                                  int levels) {
    std::uint32_t length = 0;
    position = readVarint32(position, end, length);
    if (position == nullptr || length > static_cast<std::size_t>(end - position)) return nullptr;
    const char* const valueEnd = position + length;
    if (field != nullptr && field->kind == FieldKind::kMessage) {
      if (levels == 0) return nullptr;
      return scanMessage(layoutAt(field->typeIndex), position, valueEnd, levels - 1);
    }
    return isCertain(field, {position, length}) ? valueEnd : nullptr;
  }

  // Takes a value of a swept field.
  bool isCertain(const FieldLayout* field, std::string_view value) {
    switch (field != nullptr ? field->kind : FieldKind::kScalar) {
      case FieldKind::kString:
        if (field->swept != SweptName::kNone)
          values_.push_back({static_cast<std::uint32_t>(value.data() - start_),
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

  static const char* skip(std::ptrdiff_t count, const char* position, const char* end) {
    return count <= end - position ? position + count : nullptr;
  }

  static bool continues(char byte) { return static_cast<signed char>(byte) < 0; }

  static const char* skipVarint(const char* position, const char* end) {
    // Where eight bytes are left, the first that ends a varint shows in one look.
    constexpr std::ptrdiff_t kWord = 8;
    if (end - position >= kWord && std::endian::native == std::endian::little) {
      std::uint64_t word = 0;
      std::memcpy(&word, position, sizeof word);
      const std::uint64_t ends = ~word & 0x8080808080808080U;
      if (ends != 0) return position + std::countr_zero(ends) / 8 + 1;
    }
    const char* const limit = position + std::min<std::ptrdiff_t>(end - position, kLongestVarint);
    while (position != limit) {
      if (!continues(*position++)) return position;
    }
    return nullptr;
  }

  // A tag or a length of at most four bytes; longer ones are not worth following.
  static const char* readVarint32(const char* position, const char* end, std::uint32_t& value) {
    constexpr std::ptrdiff_t kWorthFollowing = 4;
    if (position != end && !continues(*position)) {
      value = static_cast<unsigned char>(*position);
      return position + 1;
    }
    const char* const limit = position + std::min(end - position, kWorthFollowing);
    value = 0;
    for (unsigned shift = 0; position != limit; shift += 7) {
      const auto byte = static_cast<unsigned char>(*position++);
      value |= (byte & 0x7FU) << shift;
      if (byte < 0x80) return position;
    }
    return nullptr;
  }

  const char* start_;
  std::vector<SweptValue>& values_;
};

}  // namespace

bool scanPayload(MessageLayout layout, std::string_view payload, std::vector<SweptValue>& values) {
  const std::size_t before = values.size();
  const char* const end = payload.data() + payload.size();
  if (Scanner(payload, values).scanMessage(layout, payload.data(), end, kRecursionLimit) != end)
    return false;
  // Most messages have values of one name only, and a table has very many.
  const auto found = std::span(values).subspan(before);
  if (!std::ranges::is_sorted(found, {}, &SweptValue::name)) {
    std::ranges::stable_sort(found, {}, &SweptValue::name);
  }
  return true;
}

}  // namespace vn::iwork13
