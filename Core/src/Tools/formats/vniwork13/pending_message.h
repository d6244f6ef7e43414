// A message of the map that has not been built yet.
//
// The text sweep needs the values of a few fields, which the scanner knows, and
// nobody may ever ask for the rest. So the map keeps the payload, and builds the
// message when it is looked up.
#pragma once

#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/formats/vniwork13/message_scanner.h"

namespace vn::iwork13 {

// Stands in the map for the instance that it owns. It is a message only to be
// kept among messages; it never leaves the map.
class PendingMessage final : public google::protobuf::Message {
 public:
  // instance is empty; payload has been scanned with certainty, with these values.
  PendingMessage(std::unique_ptr<google::protobuf::Message> instance, std::string_view payload,
                 std::vector<SweptValue> values);

  // Parses the payload into the instance and gives it away.
  google::protobuf::Message* build();

  const std::vector<SweptValue>& values() const { return values_; }
  std::string_view bytesOf(const SweptValue& value) const {
    return std::string_view(payload_).substr(value.offset, value.length);
  }

  google::protobuf::Message* New(google::protobuf::Arena* arena) const override;
  int GetCachedSize() const override;
  google::protobuf::Metadata GetMetadata() const override;

 private:
  std::unique_ptr<google::protobuf::Message> instance_;
  std::string payload_;
  std::vector<SweptValue> values_;
};

}  // namespace vn::iwork13
