#include "Tools/formats/vniwork13/message_scanner.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "Tools/formats/vniwork13/rule_parser.h"

namespace vn::iwork13 {
namespace {

enum WireType : unsigned { kVarint = 0, kFixed64 = 1, kLengthDelimited = 2, kFixed32 = 5 };

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

// Whether a run of varints ends with its last one, none longer than ten bytes.
bool isVarintRun(std::string_view run) {
  std::size_t length = 0;
  for (const char byte : run) {
    ++length;
    if (static_cast<signed char>(byte) < 0) {
      if (length == 10) return false;
    } else {
      length = 0;
    }
  }
  return length == 0;
}

// Every function that returns bool returns false where nothing is certain any
// more: the payload is malformed, or of a form that is not worth following.
class Scanner {
 public:
  Scanner(std::string_view payload, std::vector<SweptValue>& values)
      : payload_(payload), values_(values) {}

  bool scanMessage(MessageLayout layout, std::size_t end, int levels) {
    std::uint32_t lastSwept = 0;
    while (cursor_ < end) {
      std::uint32_t tag = 0;
      if (!readVarint32(end, tag) || tag >> 3 == 0) return false;
      const FieldLayout* field = findField(layout, tag >> 3);
      if (field != nullptr && !isInPrintedOrder(*field, lastSwept)) return false;
      if (!scanField(field, tag & 7, end, levels)) return false;
    }
    return true;
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

  bool scanField(const FieldLayout* field, unsigned wireType, std::size_t end, int levels) {
    switch (wireType) {
      case kVarint:
        return skipVarint(end);
      case kFixed64:
        return skip(8, end);
      case kFixed32:
        return skip(4, end);
      case kLengthDelimited:
        return scanLengthDelimited(field, end, levels);
      default:
        return false;
    }
  }

  bool scanLengthDelimited(const FieldLayout* field, std::size_t end, int levels) {
    std::uint32_t length = 0;
    if (!readVarint32(end, length) || length > end - cursor_) return false;
    const std::size_t start = cursor_;
    const std::string_view value = payload_.substr(start, length);
    if (field != nullptr && field->kind == FieldKind::kMessage) {
      if (levels == 0) return false;
      return scanMessage(layoutAt(field->typeIndex), start + length, levels - 1);
    }
    cursor_ += length;
    switch (field != nullptr ? field->kind : FieldKind::kScalar) {
      case FieldKind::kString:
        if (field->swept != SweptName::kNone)
          values_.push_back({static_cast<std::uint32_t>(start), length, field->swept});
        return !endsInPattern(value);
      case FieldKind::kPackedVarint:
        return isVarintRun(value);
      case FieldKind::kPackedFixed32:
        return length % 4 == 0;
      case FieldKind::kPackedFixed64:
        return length % 8 == 0;
      default:
        return !holdsPattern(value);
    }
  }

  bool skip(std::size_t count, std::size_t end) {
    if (count > end - cursor_) return false;
    cursor_ += count;
    return true;
  }

  bool skipVarint(std::size_t end) {
    const std::size_t limit = std::min(end, cursor_ + 10);
    while (cursor_ < limit) {
      if (static_cast<signed char>(payload_[cursor_++]) >= 0) return true;
    }
    return false;
  }

  // A tag or a length of at most four bytes; longer ones are not worth following.
  bool readVarint32(std::size_t end, std::uint32_t& value) {
    const std::size_t limit = std::min(end, cursor_ + 4);
    value = 0;
    for (unsigned shift = 0; cursor_ < limit; shift += 7) {
      const auto byte = static_cast<unsigned char>(payload_[cursor_++]);
      value |= (byte & 0x7FU) << shift;
      if (byte < 0x80) return true;
    }
    return false;
  }

  std::string_view payload_;
  std::vector<SweptValue>& values_;
  std::size_t cursor_ = 0;
};

}  // namespace

bool scanPayload(MessageLayout layout, std::string_view payload, std::vector<SweptValue>& values) {
  const std::size_t before = values.size();
  if (!Scanner(payload, values).scanMessage(layout, payload.size(), kRecursionLimit)) return false;
  // Most messages have values of one name only, and a table has very many.
  const auto found = std::span(values).subspan(before);
  if (!std::ranges::is_sorted(found, {}, &SweptValue::name)) {
    std::ranges::stable_sort(found, {}, &SweptValue::name);
  }
  return true;
}

}  // namespace vn::iwork13
