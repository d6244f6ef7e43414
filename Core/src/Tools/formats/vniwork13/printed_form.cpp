#include "Tools/formats/vniwork13/printed_form.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

#include <array>
#include <bit>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <variant>
#include <vector>

#include "Tools/formats/vniwork13/descriptors.h"
#include "Tools/formats/vniwork13/field_tree.h"
#include "Tools/formats/vniwork13/rule_parser.h"
#include "Tools/formats/vniwork13/wire_cursor.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::UnknownField;
using google::protobuf::UnknownFieldSet;

// ---------------------------------------------------------------------------
// Values

// How one byte is printed: itself, a backslash and a letter, or octal digits.
enum : char { kPlain = 0, kOctal = 1 };

using EscapeTable = std::array<char, 256>;

constexpr EscapeTable makeEscapeTable(bool highBytesInOctal) {
  EscapeTable table{};
  for (unsigned byte = 0; byte < 0x20; ++byte) table[byte] = kOctal;
  table[0x7F] = kOctal;
  for (unsigned byte = 0x80; byte < 0x100; ++byte) table[byte] = highBytesInOctal ? kOctal : kPlain;
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  table['"'] = '"';
  table['\''] = '\'';
  table['\\'] = '\\';
  return table;
}

constexpr EscapeTable kEscapes = makeEscapeTable(false);
constexpr EscapeTable kEscapesOfUnknown = makeEscapeTable(true);

void appendOctal(unsigned char byte, std::string& printed) {
  printed += static_cast<char>('0' + (byte >> 6));
  printed += static_cast<char>('0' + (byte >> 3 & 7));
  printed += static_cast<char>('0' + (byte & 7));
}

void appendEscaped(std::string_view value, const EscapeTable& escapes, std::string& printed) {
  std::size_t plainFrom = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const auto byte = static_cast<unsigned char>(value[i]);
    const char escape = escapes[byte];
    if (escape == kPlain) continue;
    printed.append(value, plainFrom, i - plainFrom);
    plainFrom = i + 1;
    printed += '\\';
    if (escape == kOctal)
      appendOctal(byte, printed);
    else
      printed += escape;
  }
  printed.append(value, plainFrom);
}

// A number as text, with no allocation.
class Digits {
 public:
  template <typename... Format>
  explicit Digits(auto number, Format... format) {
    end_ = std::to_chars(text_.data(), text_.data() + text_.size(), number, format...).ptr;
  }

  std::string_view view() const {
    return {text_.data(), static_cast<std::size_t>(end_ - text_.data())};
  }

 private:
  std::array<char, 32> text_{};
  char* end_ = text_.data();
};

// The same with leading zeros, as fixed numbers of unknown fields are printed.
std::string hexadecimal(std::uint64_t number, std::size_t digits) {
  const Digits significant(number, 16);
  std::string text = "0x";
  text.append(digits - significant.view().size(), '0');
  return text.append(significant.view());
}

template <typename Real>
bool givesBack(std::string_view digits, Real value) {
  Real read{};
  return std::from_chars(digits.data(), digits.data() + digits.size(), read).ec == std::errc() &&
         read == value;
}

template <typename Real>
void appendReal(Real value, int fewDigits, int manyDigits, bool manyInAnyCase,
                std::string& printed) {
  if (std::isnan(value)) {
    printed += "nan";
    return;
  }
  const Digits few(value, std::chars_format::general, fewDigits);
  if (std::isinf(value) || (!manyInAnyCase && givesBack(few.view(), value)))
    printed += few.view();
  else
    printed += Digits(value, std::chars_format::general, manyDigits).view();
}

// To the 2.5 line, a range error of the digits that it read back was a failure,
// and every float below the normal ones gives one.
void appendFloat(float value, std::string& printed) {
  appendReal(value, 6, 8, std::fpclassify(value) == FP_SUBNORMAL, printed);
}

void appendDouble(double value, std::string& printed) { appendReal(value, 15, 17, false, printed); }

// A number of a known field, in 64 bits.
void appendNumber(FieldType type, std::uint64_t bits, std::string& printed) {
  switch (type) {
    case FieldType::kFloat:
      appendFloat(std::bit_cast<float>(static_cast<std::uint32_t>(bits)), printed);
      break;
    case FieldType::kDouble:
      appendDouble(std::bit_cast<double>(bits), printed);
      break;
    case FieldType::kBool:
      printed += bits != 0 ? "true" : "false";
      break;
    case FieldType::kUInt32:
    case FieldType::kUInt64:
    case FieldType::kFixed32:
    case FieldType::kFixed64:
      printed += Digits(bits).view();
      break;
    default:
      printed += Digits(static_cast<std::int64_t>(bits)).view();
  }
}

// ---------------------------------------------------------------------------
// Unknown values

// Whether bytes are the fields of a message to their exact end. Levels of groups
// are limited as in any stream; what a field holds is not looked at.
bool isMessage(std::string_view bytes) {
  std::vector<std::uint32_t> groups;
  WireCursor cursor(bytes);
  while (!cursor.atEnd()) {
    std::uint32_t tag = 0;
    if (!cursor.readTag(tag)) return false;
    switch (wireTypeOf(tag)) {
      case WireType::kStartGroup:
        if (groups.size() == kRecursionLimit) return false;
        groups.push_back(numberOf(tag));
        break;
      case WireType::kEndGroup:
        if (groups.empty() || groups.back() != numberOf(tag)) return false;
        groups.pop_back();
        break;
      default:
        if (!cursor.skipValue(wireTypeOf(tag))) return false;
    }
  }
  return groups.empty();
}

// ---------------------------------------------------------------------------
// Lines

class FormWriter {
 public:
  std::string take() { return std::move(printed_); }

  void print(const FieldTree& message) {
    for (const auto& [number, field] : message.fields()) {
      const std::string_view name = nameOf(*field.layout);
      for (const FieldTree::Value& value : field.values) printValue(name, *field.layout, value);
    }
    print(message.unknownFields());
  }

  void print(const Message& message) {
    const Reflection& reflection = *message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection.ListFields(message, &fields);
    for (const FieldDescriptor* field : fields) {
      const std::string name = printedNameOf(*field);
      const int count = field->is_repeated() ? reflection.FieldSize(message, field) : 1;
      for (int i = 0; i < count; ++i) printValue(name, message, *field, i);
    }
    print(reflection.GetUnknownFields(message));
  }

 private:
  void beginLine(std::string_view name) {
    printed_.append(2 * level_, ' ');
    printed_ += name;
  }

  void open(std::string_view name) {
    // A message within a message takes two blanks more in each of its lines, so
    // that few bytes can print as very many. Positions in a printed message are
    // signed 32-bit numbers: there is no form beyond them.
    if (printed_.size() > INT_MAX) throw std::bad_alloc();
    beginLine(name);
    printed_ += " {\n";
    ++level_;
  }

  void close() {
    --level_;
    beginLine("}\n");
  }

  void line(std::string_view name, std::string_view value) {
    beginLine(name);
    ((printed_ += ": ") += value) += '\n';
  }

  void quotedLine(std::string_view name, std::string_view value, const EscapeTable& escapes) {
    beginLine(name);
    printed_ += ": \"";
    printed_.reserve(printed_.size() + value.size() + 2);
    appendEscaped(value, escapes, printed_);
    printed_ += "\"\n";
  }

  void numberLine(std::string_view name, FieldType type, std::uint64_t bits) {
    beginLine(name);
    printed_ += ": ";
    appendNumber(type, bits, printed_);
    printed_ += '\n';
  }

  template <typename EmbeddedMessage>
  void embedded(std::string_view name, const EmbeddedMessage& message) {
    open(name);
    print(message);
    close();
  }

  void printValue(std::string_view name, const FieldLayout& field, const FieldTree::Value& value) {
    if (const auto* message = std::get_if<std::unique_ptr<FieldTree>>(&value)) {
      embedded(name, **message);
    } else if (const auto* bytes = std::get_if<std::string_view>(&value)) {
      quotedLine(name, *bytes, kEscapes);
    } else if (field.type == FieldType::kEnum) {
      line(name, nameOfEnumValue(field, static_cast<int>(std::get<std::uint64_t>(value))));
    } else {
      numberLine(name, field.type, std::get<std::uint64_t>(value));
    }
  }

  static std::string printedNameOf(const FieldDescriptor& field) {
    if (field.is_extension()) return "[" + field.full_name() + "]";
    return field.type() == FieldDescriptor::TYPE_GROUP ? field.message_type()->name()
                                                       : field.name();
  }

  void printValue(std::string_view name, const Message& message, const FieldDescriptor& field,
                  int index) {
    const Reflection& reflection = *message.GetReflection();
    const auto get = [&](auto single, auto repeated) {
      return field.is_repeated() ? (reflection.*repeated)(message, &field, index)
                                 : (reflection.*single)(message, &field);
    };
    const auto type = static_cast<FieldType>(field.type());
    switch (field.cpp_type()) {
      case FieldDescriptor::CPPTYPE_MESSAGE:
        embedded(name, field.is_repeated() ? reflection.GetRepeatedMessage(message, &field, index)
                                           : reflection.GetMessage(message, &field));
        break;
      case FieldDescriptor::CPPTYPE_STRING:
        quotedLine(name, get(&Reflection::GetString, &Reflection::GetRepeatedString), kEscapes);
        break;
      case FieldDescriptor::CPPTYPE_ENUM:
        printEnum(name, field, get(&Reflection::GetEnumValue, &Reflection::GetRepeatedEnumValue));
        break;
      case FieldDescriptor::CPPTYPE_INT32:
        numberLine(name, type, bits(get(&Reflection::GetInt32, &Reflection::GetRepeatedInt32)));
        break;
      case FieldDescriptor::CPPTYPE_INT64:
        numberLine(name, type, bits(get(&Reflection::GetInt64, &Reflection::GetRepeatedInt64)));
        break;
      case FieldDescriptor::CPPTYPE_UINT32:
        numberLine(name, type, bits(get(&Reflection::GetUInt32, &Reflection::GetRepeatedUInt32)));
        break;
      case FieldDescriptor::CPPTYPE_UINT64:
        numberLine(name, type, bits(get(&Reflection::GetUInt64, &Reflection::GetRepeatedUInt64)));
        break;
      case FieldDescriptor::CPPTYPE_BOOL:
        numberLine(name, type, bits(get(&Reflection::GetBool, &Reflection::GetRepeatedBool)));
        break;
      case FieldDescriptor::CPPTYPE_FLOAT:
        numberLine(name, type,
                   std::bit_cast<std::uint32_t>(
                       get(&Reflection::GetFloat, &Reflection::GetRepeatedFloat)));
        break;
      case FieldDescriptor::CPPTYPE_DOUBLE:
        numberLine(name, type,
                   std::bit_cast<std::uint64_t>(
                       get(&Reflection::GetDouble, &Reflection::GetRepeatedDouble)));
        break;
    }
  }

  template <typename Number>
  static std::uint64_t bits(Number value) {
    return static_cast<std::uint64_t>(value);
  }

  void printEnum(std::string_view name, const FieldDescriptor& field, int value) {
    const auto* known = field.enum_type()->FindValueByNumber(value);
    line(name, known != nullptr ? std::string_view(known->name()) : Digits(value).view());
  }

  void print(const UnknownFieldSet& unknown) {
    for (int i = 0; i < unknown.field_count(); ++i) {
      const UnknownField& field = unknown.field(i);
      const Digits name(static_cast<std::uint32_t>(field.number()));
      switch (field.type()) {
        case UnknownField::TYPE_VARINT:
          line(name.view(), Digits(field.varint()).view());
          break;
        case UnknownField::TYPE_FIXED32:
          line(name.view(), hexadecimal(field.fixed32(), 8));
          break;
        case UnknownField::TYPE_FIXED64:
          line(name.view(), hexadecimal(field.fixed64(), 16));
          break;
        case UnknownField::TYPE_LENGTH_DELIMITED:
          printUnknownBytes(name.view(), field.length_delimited());
          break;
        case UnknownField::TYPE_GROUP:
          embedded(name.view(), field.group());
          break;
      }
    }
  }

  // Messages may nest in each other as deep as there are bytes, so that only the
  // heap can hold the levels.
  void printUnknownBytes(std::string_view name, std::string_view value) {
    if (value.empty() || !isMessage(value)) {
      quotedLine(name, value, kEscapesOfUnknown);
      return;
    }
    constexpr std::size_t kGroup = 0;  // no message ends there
    open(name);
    WireCursor cursor(value);
    std::vector<std::size_t> ends = {value.size()};
    while (!ends.empty()) {
      if (cursor.position() == ends.back() && ends.back() != kGroup) {
        ends.pop_back();
        close();
        continue;
      }
      printUnknownField(cursor, ends, kGroup);
    }
  }

  // The next field of bytes that are known to be those of a message. A message or
  // a group is entered.
  void printUnknownField(WireCursor& cursor, std::vector<std::size_t>& ends, std::size_t group) {
    std::uint32_t tag = 0;
    cursor.readTag(tag);
    const Digits name(numberOf(tag));
    switch (wireTypeOf(tag)) {
      case WireType::kVarint:
        line(name.view(), Digits(cursor.varint()).view());
        break;
      case WireType::kFixed32:
        line(name.view(), hexadecimal(cursor.fixed(4), 8));
        break;
      case WireType::kFixed64:
        line(name.view(), hexadecimal(cursor.fixed(8), 16));
        break;
      case WireType::kLengthDelimited: {
        const std::string_view value = cursor.bytes();
        if (value.empty() || !isMessage(value)) {
          quotedLine(name.view(), value, kEscapesOfUnknown);
          break;
        }
        open(name.view());
        ends.push_back(cursor.position());
        cursor.stepBack(value.size());
        break;
      }
      case WireType::kStartGroup:
        open(name.view());
        ends.push_back(group);
        break;
      case WireType::kEndGroup:
        ends.pop_back();
        close();
        break;
    }
  }

  std::string printed_;
  std::size_t level_ = 0;
};

template <typename AnyMessage>
std::string print(const AnyMessage& message) {
  FormWriter writer;
  writer.print(message);
  return writer.take();
}

}  // namespace

void appendEscaped(std::string_view value, std::string& printed) {
  appendEscaped(value, kEscapes, printed);
}

std::string printMessage(const FieldTree& message) { return print(message); }

std::string printMessage(const Message& message) {
  requireDescriptors();
  return print(message);
}

}  // namespace vn::iwork13
