#include "Tools/formats/vniwork13/pending_message.h"

#include <utility>

namespace vn::iwork13 {

using google::protobuf::Message;

PendingMessage::PendingMessage(std::unique_ptr<Message> instance, std::string_view payload,
                               std::vector<SweptValue> values)
    : instance_(std::move(instance)), payload_(payload), values_(std::move(values)) {}

Message* PendingMessage::build() {
  instance_->ParsePartialFromString(payload_);  // the scanner was certain
  return instance_.release();
}

Message* PendingMessage::New(google::protobuf::Arena* arena) const { return instance_->New(arena); }

int PendingMessage::GetCachedSize() const { return instance_->GetCachedSize(); }

google::protobuf::Metadata PendingMessage::GetMetadata() const {
  return {instance_->GetDescriptor(), instance_->GetReflection()};
}

}  // namespace vn::iwork13
