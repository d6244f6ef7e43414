#include "Tools/formats/vniwork13/field_tree.h"

#include <bit>
#include <type_traits>
#include <utility>

#include "Tools/formats/vniwork13/rule_parser.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::UnknownFieldSet;

// What building by layouts has in common.
struct LayoutBuilder {
  using Field = FieldLayout;

  static FieldType typeOf(const FieldLayout& field) { return field.type; }
  static int numberOf(const FieldLayout& field) { return static_cast<int>(field.number); }
  static bool isPackable(const FieldLayout& field) {
    return field.kind == FieldKind::kPackedVarint || field.kind == FieldKind::kPackedFixed32 ||
           field.kind == FieldKind::kPackedFixed64;
  }
};

// Keeps nothing.
struct NoBuilder : LayoutBuilder {
  using Node = MessageLayout;

  static const FieldLayout* findField(MessageLayout layout, int number) {
    return iwork13::findField(layout, static_cast<std::uint32_t>(number));
  }
  static MessageLayout embedded(MessageLayout, const FieldLayout& field) {
    return layoutAt(field.typeIndex);
  }
  template <typename Number>
  static void addNumber(MessageLayout, const FieldLayout&, Number) {}
  static bool addEnum(MessageLayout, const FieldLayout&, int) { return true; }
  static void addBytes(MessageLayout, const FieldLayout&, std::string_view) {}
  static UnknownFieldSet* unknownOf(MessageLayout) { return nullptr; }
};

template <typename Number>
std::uint64_t bitsOf(Number value) {
  if constexpr (std::is_same_v<Number, float>)
    return std::bit_cast<std::uint32_t>(value);
  else if constexpr (std::is_same_v<Number, double>)
    return std::bit_cast<std::uint64_t>(value);
  else
    return static_cast<std::uint64_t>(value);
}

}  // namespace

struct TreeBuilder : LayoutBuilder {
  using Node = FieldTree&;

  static const FieldLayout* findField(const FieldTree& tree, int number) {
    return iwork13::findField(tree.layout_, static_cast<std::uint32_t>(number));
  }

  static FieldTree& embedded(FieldTree& tree, const FieldLayout& field) {
    auto& values = valuesOf(tree, field);
    if (field.repeated || values.empty())
      values.emplace_back(std::make_unique<FieldTree>(layoutAt(field.typeIndex)));
    return *std::get<std::unique_ptr<FieldTree>>(values.back());
  }

  template <typename Number>
  static void addNumber(FieldTree& tree, const FieldLayout& field, Number value) {
    add(tree, field, bitsOf(value));
  }

  static bool addEnum(FieldTree& tree, const FieldLayout& field, int value) {
    if (nameOfEnumValue(field, value).empty()) return false;
    addNumber(tree, field, std::int64_t{value});
    return true;
  }

  static void addBytes(FieldTree& tree, const FieldLayout& field, std::string_view bytes) {
    add(tree, field, bytes);
  }

  static UnknownFieldSet* unknownOf(FieldTree& tree) { return &tree.unknown_; }

 private:
  static std::vector<FieldTree::Value>& valuesOf(FieldTree& tree, const FieldLayout& field) {
    auto& known = tree.fields_[field.number];
    known.layout = &field;
    return known.values;
  }

  static void add(FieldTree& tree, const FieldLayout& field, FieldTree::Value value) {
    auto& values = valuesOf(tree, field);
    if (!field.repeated) values.clear();
    values.push_back(std::move(value));
  }
};

bool FieldTree::parse(google::protobuf::io::CodedInputStream& input) {
  return RuleParser<TreeBuilder>(input).mergeMessage(*this);
}

std::uint64_t FieldTree::number(std::uint32_t field) const {
  const auto found = fields_.find(field);
  return found != fields_.end() ? std::get<std::uint64_t>(found->second.values.back()) : 0;
}

bool skipMessage(MessageLayout layout, google::protobuf::io::CodedInputStream& input) {
  return RuleParser<NoBuilder>(input).mergeMessage(layout);
}

}  // namespace vn::iwork13
