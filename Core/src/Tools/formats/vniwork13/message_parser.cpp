#include "Tools/formats/vniwork13/message_parser.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Tools/formats/vniwork13/descriptors.h"
#include "Tools/formats/vniwork13/rule_parser.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::UnknownFieldSet;

// Fills messages of protobuf's through descriptors and reflection.
struct MessageBuilder {
  using Node = Message&;
  using Field = FieldDescriptor;

  static const FieldDescriptor* findField(const Message& message, int number) {
    const auto* descriptor = message.GetDescriptor();
    if (const FieldDescriptor* field = descriptor->FindFieldByNumber(number)) return field;
    if (!descriptor->IsExtensionNumber(number)) return nullptr;
    return message.GetReflection()->FindKnownExtensionByNumber(number);
  }

  static FieldType typeOf(const FieldDescriptor& field) {
    return static_cast<FieldType>(field.type());
  }
  static int numberOf(const FieldDescriptor& field) { return field.number(); }
  static bool isPackable(const FieldDescriptor& field) { return field.is_packable(); }

  static Message& embedded(Message& message, const FieldDescriptor& field) {
    const Reflection& reflection = *message.GetReflection();
    return field.is_repeated() ? *reflection.AddMessage(&message, &field)
                               : *reflection.MutableMessage(&message, &field);
  }

  static void addNumber(Message& message, const FieldDescriptor& field, std::int32_t value) {
    store(message, field, value, &Reflection::SetInt32, &Reflection::AddInt32);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, std::int64_t value) {
    store(message, field, value, &Reflection::SetInt64, &Reflection::AddInt64);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, std::uint32_t value) {
    store(message, field, value, &Reflection::SetUInt32, &Reflection::AddUInt32);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, std::uint64_t value) {
    store(message, field, value, &Reflection::SetUInt64, &Reflection::AddUInt64);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, float value) {
    store(message, field, value, &Reflection::SetFloat, &Reflection::AddFloat);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, double value) {
    store(message, field, value, &Reflection::SetDouble, &Reflection::AddDouble);
  }
  static void addNumber(Message& message, const FieldDescriptor& field, bool value) {
    store(message, field, value, &Reflection::SetBool, &Reflection::AddBool);
  }

  static bool addEnum(Message& message, const FieldDescriptor& field, int value) {
    if (field.enum_type()->FindValueByNumber(value) == nullptr) return false;
    store(message, field, value, &Reflection::SetEnumValue, &Reflection::AddEnumValue);
    return true;
  }

  static void addBytes(Message& message, const FieldDescriptor& field, std::string_view bytes) {
    store(message, field, std::string(bytes), &Reflection::SetString, &Reflection::AddString);
  }

  static UnknownFieldSet* unknownOf(Message& message) {
    return message.GetReflection()->MutableUnknownFields(&message);
  }

 private:
  template <typename Value>
  using Store = void (Reflection::*)(Message*, const FieldDescriptor*, Value) const;

  template <typename Value>
  static void store(Message& message, const FieldDescriptor& field, Value value, Store<Value> set,
                    Store<Value> add) {
    (message.GetReflection()->*(field.is_repeated() ? add : set))(&message, &field,
                                                                  std::move(value));
  }
};

}  // namespace

bool parseMessage(Message& message, google::protobuf::io::CodedInputStream& input) {
  requireDescriptors();
  message.Clear();
  return RuleParser<MessageBuilder>(input).mergeMessage(message);
}

}  // namespace vn::iwork13
