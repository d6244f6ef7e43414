// Messages of a map that have not been built.
//
// The text sweep needs the values of a few fields, and nobody may ever ask for the
// rest. So the map holds stand-ins, which know where their payloads lie in the
// object stream, and a message is built when it is looked up. A stand-in is a
// message only to be kept among messages: it has no descriptor, and no public
// function hands it out.
#pragma once

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/registered_class.h"

namespace vn::iwork13 {

class PendingMessages;

class PendingMessage final : public google::protobuf::Message {
 public:
  PendingMessage(const PendingMessage&) = delete;
  PendingMessage& operator=(const PendingMessage&) = delete;

  // Gives its place back, which lies among those of its object stream.
  static void operator delete(PendingMessage* message, std::destroying_delete_t);

  // What the message will be.
  google::protobuf::Message* build() const;

  // What the sweep takes from it, where the scanner was certain of it.
  bool isScanned() const { return isScanned_; }
  std::span<const SweptValue> values() const;
  std::string_view bytesOf(const SweptValue& value) const;

  // The printed form, for any other message.
  std::string print() const;

  // A stand-in has none of this, and nobody to ask for it.
  google::protobuf::Message* New(google::protobuf::Arena* arena) const override;
  int GetCachedSize() const override;
  google::protobuf::Metadata GetMetadata() const override;

 private:
  friend class PendingMessages;

  PendingMessage(PendingMessages& owner, const RegisteredClass& messageClass)
      : owner_(owner), messageClass_(messageClass) {}

  std::string_view payload() const;

  PendingMessages& owner_;
  const RegisteredClass& messageClass_;
  std::uint32_t payloadStart_ = 0;  // in the object stream
  std::uint32_t payloadSize_ = 0;
  std::uint32_t firstValue_ = 0;  // among those of the object stream
  std::uint32_t valueCount_ : 31 = 0;
  std::uint32_t isScanned_ : 1 = 0;
};

// All stand-ins for the messages of one object stream, and the stream. Lives as
// long as the last of them, or as somebody holds it.
class PendingMessages {
 public:
  // Holds the stand-ins of a stream while they are made.
  struct Release {
    void operator()(PendingMessages* messages) const { messages->release(); }
  };
  using Holder = std::unique_ptr<PendingMessages, Release>;
  static Holder make(std::vector<unsigned char> objectStream);

  const std::vector<unsigned char>& objectStream() const { return objectStream_; }

  // Where the scanner puts the values of the next stand-in.
  std::vector<SweptValue>& values() { return values_; }

  // Makes a stand-in for a payload of the stream, with the values from firstValue on
  // where it has been scanned. The map owns it; withdraw the last one to take it back.
  PendingMessage* add(const RegisteredClass& messageClass, std::string_view payload,
                      std::size_t firstValue, bool isScanned);
  void withdraw(PendingMessage* last);

 private:
  friend class PendingMessage;

  explicit PendingMessages(std::vector<unsigned char> objectStream)
      : objectStream_(std::move(objectStream)) {}
  ~PendingMessages() = default;

  void* place();
  void release() {
    if (--holders_ == 0) delete this;
  }

  // Room for stand-ins, which begin and end in it by themselves.
  struct alignas(PendingMessage) Place {
    std::byte bytes[sizeof(PendingMessage)];
  };

  std::vector<unsigned char> objectStream_;
  std::vector<SweptValue> values_;
  std::vector<std::unique_ptr<Place[]>> blocks_;
  std::size_t blockSize_ = 0;  // of the last block
  std::size_t used_ = 0;       // places of the last block
  std::size_t holders_ = 1;
};

// The message as a stand-in, or null if it is not one. Nothing derives from the class, so
// that its type tells, without the search of a dynamic_cast.
inline const PendingMessage* asPending(const google::protobuf::Message* message) {
  return typeid(*message) == typeid(PendingMessage) ? static_cast<const PendingMessage*>(message)
                                                    : nullptr;
}

}  // namespace vn::iwork13
