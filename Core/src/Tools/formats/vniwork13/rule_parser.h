// The rules of message_parser.h, for any place that the fields of a message may go.
//
// A Builder says what a message and a field are to it, and stores what was read:
//
//   Node, Field              a message under construction, a known field of it
//   findField(node, number)  the field, or null
//   typeOf(field), numberOf(field), isPackable(field)
//   embedded(node, field)    the message of a field, made or found again
//   addNumber(node, field, value)
//   addEnum(node, field, value)  false for a value that the enum lacks
//   addBytes(node, field, bytes)
//   unknownOf(node)          where unknown fields go, or null
#pragma once

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

#include <cstdint>
#include <string_view>

#include "Tools/formats/vniwork13/message_layout.h"
#include "Tools/formats/vniwork13/message_parser.h"

namespace vn::iwork13 {

// What stands between the cursor and the nearest limit, without touching the stream.
inline std::string_view bytesAtHand(google::protobuf::io::CodedInputStream& input) {
  const void* data = nullptr;
  int size = 0;
  input.GetDirectBufferPointerInline(&data, &size);
  return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
}

// Reads messages field by field.
template <typename Builder>
class RuleParser {
  using WireFormatLite = google::protobuf::internal::WireFormatLite;
  using CodedInputStream = google::protobuf::io::CodedInputStream;
  using UnknownFieldSet = google::protobuf::UnknownFieldSet;
  using Node = typename Builder::Node;
  using Field = typename Builder::Field;

 public:
  explicit RuleParser(CodedInputStream& input) : input_(input) {}

  // Reads fields until the message ends; false if a field cannot be read.
  bool mergeMessage(Node node) {
    while (const std::uint32_t tag = readTag()) {
      if (isEndGroup(tag)) return true;
      if (!mergeField(node, tag)) return false;
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
    if (bytesAtHand(input_).empty()) {
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

  bool readBytes(std::string_view& bytes) {
    int length = 0;
    if (!readLength(length) || length < 0) return false;
    bytes = bytesAtHand(input_).substr(0, static_cast<std::size_t>(length));
    return input_.Skip(length);
  }

  bool mergeField(Node node, std::uint32_t tag) {
    const int number = WireFormatLite::GetTagFieldNumber(tag);
    if (const Field* field = Builder::findField(node, number)) {
      const auto wireType = WireFormatLite::GetTagWireType(tag);
      const auto type = static_cast<WireFormatLite::FieldType>(Builder::typeOf(*field));
      if (wireType == WireFormatLite::WireTypeForFieldType(type)) return mergeValue(node, *field);
      if (wireType == WireFormatLite::WIRETYPE_LENGTH_DELIMITED && Builder::isPackable(*field))
        return mergePacked(node, *field);
    }
    return skipField(tag, Builder::unknownOf(node));
  }

  bool mergePacked(Node node, const Field& field) {
    int length = 0;
    if (!readLength(length)) return false;
    const CodedInputStream::Limit outer = input_.PushLimit(length);
    while (input_.BytesUntilLimit() > 0) {
      if (!mergeValue(node, field)) return false;
    }
    input_.PopLimit(outer);
    return true;
  }

  bool mergeValue(Node node, const Field& field) {
    switch (Builder::typeOf(field)) {
      case FieldType::kMessage:
        return mergeEmbedded(node, field);
      case FieldType::kString:
      case FieldType::kBytes:
        return mergeBytes(node, field);
      case FieldType::kEnum:
        return mergeEnum(node, field);
      case FieldType::kBool:
        return mergeBool(node, field);
      case FieldType::kInt32:
        return mergeNumber<std::int32_t, WireFormatLite::TYPE_INT32>(node, field);
      case FieldType::kSInt32:
        return mergeNumber<std::int32_t, WireFormatLite::TYPE_SINT32>(node, field);
      case FieldType::kSFixed32:
        return mergeNumber<std::int32_t, WireFormatLite::TYPE_SFIXED32>(node, field);
      case FieldType::kInt64:
        return mergeNumber<std::int64_t, WireFormatLite::TYPE_INT64>(node, field);
      case FieldType::kSInt64:
        return mergeNumber<std::int64_t, WireFormatLite::TYPE_SINT64>(node, field);
      case FieldType::kSFixed64:
        return mergeNumber<std::int64_t, WireFormatLite::TYPE_SFIXED64>(node, field);
      case FieldType::kUInt32:
        return mergeNumber<std::uint32_t, WireFormatLite::TYPE_UINT32>(node, field);
      case FieldType::kFixed32:
        return mergeNumber<std::uint32_t, WireFormatLite::TYPE_FIXED32>(node, field);
      case FieldType::kUInt64:
        return mergeNumber<std::uint64_t, WireFormatLite::TYPE_UINT64>(node, field);
      case FieldType::kFixed64:
        return mergeNumber<std::uint64_t, WireFormatLite::TYPE_FIXED64>(node, field);
      case FieldType::kFloat:
        return mergeNumber<float, WireFormatLite::TYPE_FLOAT>(node, field);
      case FieldType::kDouble:
        return mergeNumber<double, WireFormatLite::TYPE_DOUBLE>(node, field);
      case FieldType::kGroup:  // the schema has none
        break;
    }
    return false;
  }

  template <typename Value, WireFormatLite::FieldType Type>
  bool mergeNumber(Node node, const Field& field) {
    Value value{};
    if (!WireFormatLite::ReadPrimitive<Value, Type>(&input_, &value)) return false;
    Builder::addNumber(node, field, value);
    return true;
  }

  // The library has come to count all 64 bits.
  bool mergeBool(Node node, const Field& field) {
    std::uint32_t value = 0;
    if (!input_.ReadVarint32(&value)) return false;
    Builder::addNumber(node, field, value != 0);
    return true;
  }

  bool mergeEnum(Node node, const Field& field) {
    std::uint64_t value = 0;
    if (!input_.ReadVarint64(&value)) return false;
    if (!Builder::addEnum(node, field, static_cast<int>(value))) {
      if (UnknownFieldSet* unknown = Builder::unknownOf(node))
        unknown->AddVarint(Builder::numberOf(field), value);
    }
    return true;
  }

  bool mergeBytes(Node node, const Field& field) {
    std::string_view bytes;
    if (!readBytes(bytes)) return false;
    Builder::addBytes(node, field, bytes);
    return true;
  }

  // A failure leaves the level taken and the limit pushed: the caller of the
  // whole parse restores its own limit, and lost levels add up over the stream.
  bool mergeEmbedded(Node node, const Field& field) {
    // The message is there even if nothing of it can be read.
    Node message = Builder::embedded(node, field);
    int length = 0;
    if (!readLength(length) || !input_.IncrementRecursionDepth()) return false;
    const CodedInputStream::Limit outer = input_.PushLimit(length);
    if (!mergeMessage(message) || !endedAtLimit_) return false;
    input_.PopLimit(outer);
    input_.DecrementRecursionDepth();
    return true;
  }

  bool skipField(std::uint32_t tag, UnknownFieldSet* unknown) {
    const int number = WireFormatLite::GetTagFieldNumber(tag);
    switch (WireFormatLite::GetTagWireType(tag)) {
      case WireFormatLite::WIRETYPE_VARINT: {
        std::uint64_t value = 0;
        if (!input_.ReadVarint64(&value)) return false;
        if (unknown != nullptr) unknown->AddVarint(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_FIXED64: {
        std::uint64_t value = 0;
        if (!input_.ReadLittleEndian64(&value)) return false;
        if (unknown != nullptr) unknown->AddFixed64(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_FIXED32: {
        std::uint32_t value = 0;
        if (!input_.ReadLittleEndian32(&value)) return false;
        if (unknown != nullptr) unknown->AddFixed32(number, value);
        return true;
      }
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED: {
        std::string_view bytes;
        if (!readBytes(bytes)) return false;
        if (unknown != nullptr) unknown->AddLengthDelimited(number)->assign(bytes);
        return true;
      }
      case WireFormatLite::WIRETYPE_START_GROUP:
        return skipGroup(number, unknown != nullptr ? unknown->AddGroup(number) : nullptr);
      default:  // an end-group tag never comes here; 6 and 7 are no wire types
        return false;
    }
  }

  // A group that ends, but not with its own number, gives its level back.
  bool skipGroup(int number, UnknownFieldSet* group) {
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

}  // namespace vn::iwork13
