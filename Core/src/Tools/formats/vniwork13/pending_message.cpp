#include "Tools/formats/vniwork13/pending_message.h"

#include <google/protobuf/io/coded_stream.h>

#include <algorithm>
#include <utility>

#include "Tools/formats/vniwork13/field_tree.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/rule_parser.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;

// A payload as a stream of its own.
struct Input {
  explicit Input(std::string_view payload)
      : stream(reinterpret_cast<const unsigned char*>(payload.data()),
               static_cast<int>(payload.size())) {
    stream.SetRecursionLimit(kRecursionLimit);
  }

  CodedInputStream stream;
};

}  // namespace

// ---------------------------------------------------------------------------
// PendingMessage

void PendingMessage::operator delete(PendingMessage* message, std::destroying_delete_t) {
  PendingMessages& owner = message->owner_;
  message->~PendingMessage();
  owner.release();
}

std::string_view PendingMessage::payload() const {
  const auto* stream = reinterpret_cast<const char*>(owner_.objectStream_.data());
  return {stream + payloadStart_, payloadSize_};
}

std::span<const SweptValue> PendingMessage::values() const {
  return std::span(owner_.values_).subspan(firstValue_, valueCount_);
}

std::string_view PendingMessage::bytesOf(const SweptValue& value) const {
  return payload().substr(value.offset, value.length);
}

// The payload has been read before and ended well: it does so again.
Message* PendingMessage::build() const {
  std::unique_ptr<Message> message(messageClass_.create());
  Input input(payload());
  parseMessage(*message, input.stream);
  return message.release();
}

std::string PendingMessage::print() const {
  FieldTree message(messageClass_.layout());
  Input input(payload());
  message.parse(input.stream);
  return printMessage(message);
}

Message* PendingMessage::New(google::protobuf::Arena*) const { return nullptr; }
int PendingMessage::GetCachedSize() const { return 0; }
google::protobuf::Metadata PendingMessage::GetMetadata() const { return {}; }

// ---------------------------------------------------------------------------
// PendingMessages

PendingMessages::Holder PendingMessages::make(std::vector<unsigned char> objectStream) {
  return Holder(new PendingMessages(std::move(objectStream)));
}

void* PendingMessages::place() {
  constexpr std::size_t kFirstBlock = 8;
  constexpr std::size_t kLargestBlock = 1024;
  if (used_ == blockSize_) {
    const std::size_t size = std::clamp(2 * blockSize_, kFirstBlock, kLargestBlock);
    blocks_.push_back(std::make_unique_for_overwrite<Place[]>(size));
    blockSize_ = size;
    used_ = 0;
  }
  return &blocks_.back()[used_++];
}

PendingMessage* PendingMessages::add(const RegisteredClass& messageClass, std::string_view payload,
                                     std::size_t firstValue, bool isScanned) {
  auto* message = new (place()) PendingMessage(*this, messageClass);
  ++holders_;
  const auto* stream = reinterpret_cast<const char*>(objectStream_.data());
  message->payloadStart_ = static_cast<std::uint32_t>(payload.data() - stream);
  message->payloadSize_ = static_cast<std::uint32_t>(payload.size());
  message->firstValue_ = static_cast<std::uint32_t>(firstValue);
  message->valueCount_ = static_cast<std::uint32_t>(values_.size() - firstValue) & 0x7FFFFFFFU;
  message->isScanned_ = isScanned;
  return message;
}

void PendingMessages::withdraw(PendingMessage* last) {
  values_.resize(last->firstValue_);
  --used_;
  delete last;
}

}  // namespace vn::iwork13
