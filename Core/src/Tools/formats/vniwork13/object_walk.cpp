#include "Tools/formats/vniwork13/object_walk.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string_view>
#include <utility>

#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/message_layout.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/pending_message.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;

// Only so much of an object stream is readable; the walk of a longer one never
// ends. Set by hand, since the library's own default differs between releases.
constexpr int kTotalBytesLimit = 0x4000000;

class ObjectWalk {
 public:
  ObjectWalk(const std::vector<unsigned char>& objectStream, MessageFactory factory,
             PayloadReading reading, MessageMap::Map& map)
      : input_(objectStream.data(), static_cast<int>(objectStream.size())),
        factory_(factory),
        reading_(reading),
        map_(map) {
    input_.SetTotalBytesLimit(kTotalBytesLimit);
    input_.SetRecursionLimit(kRecursionLimit);
  }

  void run() {
    while (input_.BytesUntilLimit() > 0) {
      std::uint64_t length = 0;
      // An unreadable prefix counts as 0. Where the cursor did not move either,
      // the walk arrives here again for ever: nothing realigns a stream.
      input_.ReadVarint64(&length);
      const CodedInputStream::Limit outer = input_.PushLimit(static_cast<int>(length));
      const bool parsed = parseMessage(archive_, input_);
      input_.PopLimit(outer);
      if (!parsed) continue;
      for (const TSP::MessageInfo& info : archive_.message_infos()) addPayload(info);
    }
  }

 private:
  void addPayload(const TSP::MessageInfo& info) {
    Message* message = factory_(static_cast<int>(info.type()));
    // From 0x80000000 on a length is negative: no skip, and no limit of its own.
    const int length = static_cast<int>(info.length());
    if (message == nullptr) {
      input_.Skip(length);  // past the end: to the end
      return;
    }
    const CodedInputStream::Limit outer = input_.PushLimit(length);
    // An instance that fails to parse, or whose identifier is taken, stays
    // allocated: no owner is kept for it.
    if (!addPending(message) && parseMessage(*message, input_))
      map_.emplace(archive_.identifier(), message);
    input_.PopLimit(outer);
  }

  // Files a payload that need not be parsed; false leaves everything as it was.
  bool addPending(Message* message) {
    if (reading_ != PayloadReading::kScan || input_.RecursionBudget() != kRecursionLimit)
      return false;
    const MessageLayout* layout = findLayout(*message);
    if (layout == nullptr) return false;
    const void* data = nullptr;
    int size = 0;
    input_.GetDirectBufferPointerInline(&data, &size);
    const std::string_view payload(static_cast<const char*>(data), static_cast<std::size_t>(size));
    values_.clear();
    if (!scanPayload(*layout, payload, values_)) return false;
    const auto position = map_.lower_bound(archive_.identifier());
    if (position == map_.end() || position->first != archive_.identifier()) {
      auto pending =
          std::make_unique<PendingMessage>(std::unique_ptr<Message>(message), payload, values_);
      map_.emplace_hint(position, archive_.identifier(), pending.get());
      static_cast<void>(pending.release());
    }
    return input_.Skip(size);
  }

  CodedInputStream input_;
  MessageFactory factory_;
  PayloadReading reading_;
  MessageMap::Map& map_;
  TSP::ArchiveInfo archive_;  // one for all archives of the stream
  std::vector<SweptValue> values_;
};

}  // namespace

void walkObjectStream(const std::vector<unsigned char>& objectStream, MessageFactory factory,
                      PayloadReading reading, MessageMap::Map& map) {
  ObjectWalk(objectStream, factory, reading, map).run();
}

Message* buildPending(Message*& entry) {
  if (auto* pending = dynamic_cast<PendingMessage*>(entry)) {
    entry = pending->build();
    delete pending;
  }
  return entry;
}

}  // namespace vn::iwork13
