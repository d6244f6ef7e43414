// A message as the schema's layouts see it: what the rules of message_parser.h read,
// held without an instance of its class and without descriptors.
#pragma once

#include <google/protobuf/unknown_field_set.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "Tools/formats/vniwork13/message_layout.h"

namespace google::protobuf::io {
class CodedInputStream;
}

namespace vn::iwork13 {

class FieldTree {
 public:
  // A number in 64 bits (signed ones extended, float and double as they are
  // stored), the bytes of a string, which lie in the payload, or a message.
  using Value = std::variant<std::uint64_t, std::string_view, std::unique_ptr<FieldTree>>;

  struct KnownField {
    const FieldLayout* layout;
    std::vector<Value> values;  // one of a field that is not repeated
  };

  // By number. Extensions are among them.
  using KnownFields = std::map<std::uint32_t, KnownField>;

  explicit FieldTree(MessageLayout layout) : layout_(layout) {}

  // Parses the fields of a message behind those that are there, as parseMessage
  // does. The bytes of the stream must outlive the tree.
  bool parse(google::protobuf::io::CodedInputStream& input);

  MessageLayout layout() const { return layout_; }
  const KnownFields& fields() const { return fields_; }
  const google::protobuf::UnknownFieldSet& unknownFields() const { return unknown_; }

  // The last number of a field, 0 if it is not set.
  std::uint64_t number(std::uint32_t field) const;

 private:
  friend struct TreeBuilder;

  MessageLayout layout_;
  KnownFields fields_;
  google::protobuf::UnknownFieldSet unknown_;
};

// Moves the stream's cursor as parsing a message of that layout would and gives
// the same result, but keeps nothing.
bool skipMessage(MessageLayout layout, google::protobuf::io::CodedInputStream& input);

}  // namespace vn::iwork13
