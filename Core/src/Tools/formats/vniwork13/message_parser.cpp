#include "Tools/formats/vniwork13/message_parser.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

#include <cstdint>
#include <string>

namespace vn::iwork13 {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::UnknownFieldSet;
using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

// Bytes between the cursor and the nearest limit, without touching the stream.
int bytesAtHand(CodedInputStream& input) {
  const void* data = nullptr;
  int size = 0;
  input.GetDirectBufferPointerInline(&data, &size);
  return size;
}

// Reads messages field by field through descriptors and reflection.
class RuleParser {
 public:
  explicit RuleParser(CodedInputStream& input) : input_(input) {}

  // Reads fields until the message ends; false if a field cannot be read.
  bool mergeMessage(Message& message) {
    while (const std::uint32_t tag = readTag()) {
      if (isEndGroup(tag)) return true;
      if (!mergeField(message, tag)) return false;
    }
    return true;
  }

 private:
  static bool isEndGroup(std::uint32_t tag) {
    return WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_END_GROUP;
  }

  // 0 at the end of the limit, for a zero tag and for an unreadable one.
  std::uint32_t readTag() {
    lastTag_ = 0;
    endedAtLimit_ = false;
    if (bytesAtHand(input_) == 0) {
      // Not so where the stream's total limit lies before the message's own.
      endedAtLimit_ = input_.BytesUntilLimit() == 0;
      return 0;
    }
    std::uint64_t tag = 0;
    if (input_.ReadVarint64(&tag)) lastTag_ = static_cast<std::uint32_t>(tag);
    return lastTag_;
  }

  bool readLength(int& length) {
    std::uint32_t value = 0;
    if (!input_.ReadVarint32(&value)) return false;
    length = static_cast<int>(value);
    return true;
  }

  bool mergeField(Message& message, std::uint32_t tag) {
    const FieldDescriptor* field = findField(message, WireFormatLite::GetTagFieldNumber(tag));
    if (field != nullptr) {
      const auto wireType = WireFormatLite::GetTagWireType(tag);
      const auto fieldType = static_cast<WireFormatLite::FieldType>(field->type());
      if (wireType == WireFormatLite::WireTypeForFieldType(fieldType))
        return mergeValue(message, *field);
      if (wireType == WireFormatLite::WIRETYPE_LENGTH_DELIMITED && field->is_packable())
        return mergePacked(message, *field);
    }
    return skipField(tag, *message.GetReflection()->MutableUnknownFields(&message));
  }

  static const FieldDescriptor* findField(const Message& message, int number) {
    const auto* descriptor = message.GetDescriptor();
    if (const FieldDescriptor* field = descriptor->FindFieldByNumber(number)) return field;
    if (!descriptor->IsExtensionNumber(number)) return nullptr;
    return message.GetReflection()->FindKnownExtensionByNumber(number);
  }

  bool mergePacked(Message& message, const FieldDescriptor& field) {
    int length = 0;
    if (!readLength(length)) return false;
    const CodedInputStream::Limit outer = input_.PushLimit(length);
    while (input_.BytesUntilLimit() > 0) {
      if (!mergeValue(message, field)) return false;
    }
    input_.PopLimit(outer);
    return true;
  }

  bool mergeValue(Message& message, const FieldDescriptor& field) {
    switch (field.type()) {
      case FieldDescriptor::TYPE_MESSAGE:
        return mergeEmbedded(mutableMessage(message, field));
      case FieldDescriptor::TYPE_STRING:
      case FieldDescriptor::TYPE_BYTES:
        return mergeString(message, field);
      case FieldDescriptor::TYPE_ENUM:
        return mergeEnum(message, field);
      case FieldDescriptor::TYPE_INT32:
        return mergeScalar<std::int32_t, WireFormatLite::TYPE_INT32>(
            message, field, &Reflection::SetInt32, &Reflection::AddInt32);
      case FieldDescriptor::TYPE_SINT32:
        return mergeScalar<std::int32_t, WireFormatLite::TYPE_SINT32>(
            message, field, &Reflection::SetInt32, &Reflection::AddInt32);
      case FieldDescriptor::TYPE_SFIXED32:
        return mergeScalar<std::int32_t, WireFormatLite::TYPE_SFIXED32>(
            message, field, &Reflection::SetInt32, &Reflection::AddInt32);
      case FieldDescriptor::TYPE_INT64:
        return mergeScalar<std::int64_t, WireFormatLite::TYPE_INT64>(
            message, field, &Reflection::SetInt64, &Reflection::AddInt64);
      case FieldDescriptor::TYPE_SINT64:
        return mergeScalar<std::int64_t, WireFormatLite::TYPE_SINT64>(
            message, field, &Reflection::SetInt64, &Reflection::AddInt64);
      case FieldDescriptor::TYPE_SFIXED64:
        return mergeScalar<std::int64_t, WireFormatLite::TYPE_SFIXED64>(
            message, field, &Reflection::SetInt64, &Reflection::AddInt64);
      case FieldDescriptor::TYPE_UINT32:
        return mergeScalar<std::uint32_t, WireFormatLite::TYPE_UINT32>(
            message, field, &Reflection::SetUInt32, &Reflection::AddUInt32);
      case FieldDescriptor::TYPE_FIXED32:
        return mergeScalar<std::uint32_t, WireFormatLite::TYPE_FIXED32>(
            message, field, &Reflection::SetUInt32, &Reflection::AddUInt32);
      case FieldDescriptor::TYPE_UINT64:
        return mergeScalar<std::uint64_t, WireFormatLite::TYPE_UINT64>(
            message, field, &Reflection::SetUInt64, &Reflection::AddUInt64);
      case FieldDescriptor::TYPE_FIXED64:
        return mergeScalar<std::uint64_t, WireFormatLite::TYPE_FIXED64>(
            message, field, &Reflection::SetUInt64, &Reflection::AddUInt64);
      case FieldDescriptor::TYPE_FLOAT:
        return mergeScalar<float, WireFormatLite::TYPE_FLOAT>(message, field, &Reflection::SetFloat,
                                                              &Reflection::AddFloat);
      case FieldDescriptor::TYPE_DOUBLE:
        return mergeScalar<double, WireFormatLite::TYPE_DOUBLE>(
            message, field, &Reflection::SetDouble, &Reflection::AddDouble);
      case FieldDescriptor::TYPE_BOOL:
        return mergeScalar<bool, WireFormatLite::TYPE_BOOL>(message, field, &Reflection::SetBool,
                                                            &Reflection::AddBool);
      case FieldDescriptor::TYPE_GROUP:  // the schema has none
        break;
    }
    return false;
  }

  template <typename Value, WireFormatLite::FieldType Type>
  bool mergeScalar(Message& message, const FieldDescriptor& field,
                   void (Reflection::*set)(Message*, const FieldDescriptor*, Value) const,
                   void (Reflection::*add)(Message*, const FieldDescriptor*, Value) const) {
    Value value{};
    if (!WireFormatLite::ReadPrimitive<Value, Type>(&input_, &value)) return false;
    const auto store = field.is_repeated() ? add : set;
    (message.GetReflection()->*store)(&message, &field, value);
    return true;
  }

  bool mergeEnum(Message& message, const FieldDescriptor& field) {
    std::uint64_t value = 0;
    if (!input_.ReadVarint64(&value)) return false;
    const Reflection& reflection = *message.GetReflection();
    const int number = static_cast<int>(value);
    if (field.enum_type()->FindValueByNumber(number) == nullptr)
      reflection.MutableUnknownFields(&message)->AddVarint(field.number(), value);
    else if (field.is_repeated())
      reflection.AddEnumValue(&message, &field, number);
    else
      reflection.SetEnumValue(&message, &field, number);
    return true;
  }

  bool mergeString(Message& message, const FieldDescriptor& field) {
    int length = 0;
    std::string value;
    if (!readLength(length) || !input_.ReadString(&value, length)) return false;
    const Reflection& reflection = *message.GetReflection();
    if (field.is_repeated())
      reflection.AddString(&message, &field, std::move(value));
    else
      reflection.SetString(&message, &field, std::move(value));
    return true;
  }

  static Message& mutableMessage(Message& message, const FieldDescriptor& field) {
    const Reflection& reflection = *message.GetReflection();
    return field.is_repeated() ? *reflection.AddMessage(&message, &field)
                               : *reflection.MutableMessage(&message, &field);
  }

  // A failure leaves the level taken and the limit pushed: the caller of the
  // whole parse restores its own limit, and lost levels add up over the stream.
  bool mergeEmbedded(Message& message) {
    int length = 0;
    if (!readLength(length) || !input_.IncrementRecursionDepth()) return false;
    const CodedInputStream::Limit outer = input_.PushLimit(length);
    if (!mergeMessage(message) || !endedAtLimit_) return false;
    input_.PopLimit(outer);
    input_.DecrementRecursionDepth();
    return true;
  }

  bool skipField(std::uint32_t tag, UnknownFieldSet& unknown) {
    const int number = WireFormatLite::GetTagFieldNumber(tag);
    switch (WireFormatLite::GetTagWireType(tag)) {
      case WireFormatLite::WIRETYPE_VARINT: {
        std::uint64_t value = 0;
        if (!input_.ReadVarint64(&value)) return false;
        unknown.AddVarint(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_FIXED64: {
        std::uint64_t value = 0;
        if (!input_.ReadLittleEndian64(&value)) return false;
        unknown.AddFixed64(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_FIXED32: {
        std::uint32_t value = 0;
        if (!input_.ReadLittleEndian32(&value)) return false;
        unknown.AddFixed32(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED: {
        int length = 0;
        return readLength(length) && input_.ReadString(unknown.AddLengthDelimited(number), length);
      }
      case WireFormatLite::WIRETYPE_START_GROUP:
        return skipGroup(number, *unknown.AddGroup(number));
      default:  // an end-group tag never comes here; 6 and 7 are no wire types
        return false;
    }
  }

  // A group that ends, but not with its own number, gives its level back.
  bool skipGroup(int number, UnknownFieldSet& group) {
    if (!input_.IncrementRecursionDepth()) return false;
    while (const std::uint32_t tag = readTag()) {
      if (isEndGroup(tag)) break;
      if (!skipField(tag, group)) return false;
    }
    input_.DecrementRecursionDepth();
    return lastTag_ == WireFormatLite::MakeTag(number, WireFormatLite::WIRETYPE_END_GROUP);
  }

  CodedInputStream& input_;
  std::uint32_t lastTag_ = 0;
  bool endedAtLimit_ = false;  // the last tag was read exactly at the limit
};

// A payload that the generated parser reads to its exact end has the same
// content by the rules; nothing is known about any other payload.
bool parseGenerated(Message& message, CodedInputStream& input) {
  const void* data = nullptr;
  int size = 0;
  input.GetDirectBufferPointerInline(&data, &size);
  return message.ParsePartialFromArray(data, size) && input.Skip(size);
}

}  // namespace

bool parseMessageByRules(Message& message, CodedInputStream& input) {
  message.Clear();
  return RuleParser(input).mergeMessage(message);
}

bool parseMessage(Message& message, CodedInputStream& input) {
  // The generated parser starts with all levels, whatever the stream has lost.
  const bool allLevelsLeft = input.RecursionBudget() == kRecursionLimit;
  if (allLevelsLeft && parseGenerated(message, input)) return true;
  return parseMessageByRules(message, input);
}

}  // namespace vn::iwork13
