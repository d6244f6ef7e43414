#include "Tools/formats/vniwork13/message_layout.h"

namespace vn::iwork13 {
namespace {

// A value of an enum, and where its name begins.
struct EnumValue {
  int number;
  std::uint32_t name;
};

// The values of an enum in ascending number.
using EnumLayout = std::span<const EnumValue>;

}  // namespace

// kFields with kFieldNames beside it, kLayouts, kEnumValues, kEnums, and kNames,
// where every name ends in NUL.
#include "message_layouts.inc"

std::string_view nameOf(const FieldLayout& field) { return kNames + kFieldNames[&field - kFields]; }

std::string_view nameOfEnumValue(const FieldLayout& field, int number) {
  const EnumLayout values = kEnums[field.typeIndex];
  const auto found = std::ranges::lower_bound(values, number, {}, &EnumValue::number);
  if (found == values.end() || found->number != number) return {};
  return kNames + found->name;
}

}  // namespace vn::iwork13
