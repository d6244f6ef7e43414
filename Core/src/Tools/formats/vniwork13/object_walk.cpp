#include "Tools/formats/vniwork13/object_walk.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>

#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "Tools/formats/vniwork13/archive_header.h"
#include "Tools/formats/vniwork13/field_tree.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/pending_message.h"
#include "Tools/formats/vniwork13/registered_class.h"
#include "Tools/formats/vniwork13/rule_parser.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;

// Only so much of an object stream is readable; the walk of a longer one never
// ends. Set by hand, since the library's own default differs between releases.
constexpr int kTotalBytesLimit = 0x4000000;

class ObjectWalk {
 public:
  ObjectWalk(std::vector<unsigned char> objectStream, MessageFactory factory,
             PayloadReading reading, MessageMap::Map& map)
      : pending_(PendingMessages::make(std::move(objectStream))),
        input_(pending_->objectStream().data(), static_cast<int>(pending_->objectStream().size())),
        factory_(factory),
        registry_(factory),
        buildsAll_(reading == PayloadReading::kBuild || !registry_.isKnown()),
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
      const bool isRead = readArchiveHeader(archive_, input_, scanner_);
      input_.PopLimit(outer);
      if (!isRead) continue;
      for (const ArchiveHeader::Payload& payload : archive_.payloads) {
        if (buildsAll_)
          addBuilt(payload);
        else
          addPending(payload);
      }
    }
  }

 private:
  void addBuilt(const ArchiveHeader::Payload& payload) {
    Message* message = factory_(payload.type);
    if (message == nullptr) {
      input_.Skip(payload.length);  // past the end: to the end
      return;
    }
    const CodedInputStream::Limit outer = input_.PushLimit(payload.length);
    // An instance that fails to parse, or whose identifier is taken, stays
    // allocated: no owner is kept for it.
    if (parseMessage(*message, input_)) map_.emplace(archive_.identifier, message);
    input_.PopLimit(outer);
  }

  void addPending(const ArchiveHeader::Payload& payload) {
    const RegisteredClass* messageClass = registry_.find(payload.type);
    if (messageClass == nullptr) {
      input_.Skip(payload.length);  // past the end: to the end
      return;
    }
    const CodedInputStream::Limit outer = input_.PushLimit(payload.length);
    if (!addScanned(*messageClass)) addReadByRules(*messageClass);
    input_.PopLimit(outer);
  }

  // False leaves everything as it was.
  bool addScanned(const RegisteredClass& messageClass) {
    if (input_.RecursionBudget() != kRecursionLimit) return false;
    const std::string_view payload = bytesAtHand(input_);
    const std::size_t firstValue = pending_->values().size();
    const bool isCertain = scanner_.scan(messageClass.layout(), payload, pending_->values());
    if (isCertain)
      file(messageClass, payload, firstValue, true);
    else
      pending_->values().resize(firstValue);
    return isCertain && input_.Skip(static_cast<int>(payload.size()));
  }

  void addReadByRules(const RegisteredClass& messageClass) {
    const std::string_view payload = bytesAtHand(input_);
    const int start = input_.CurrentPosition();
    if (!skipMessage(messageClass.layout(), input_)) return;
    const auto size = static_cast<std::size_t>(input_.CurrentPosition() - start);
    file(messageClass, payload.substr(0, size), pending_->values().size(), false);
  }

  // Identifiers mostly ascend in a stream, so that the place of the next one is
  // behind the last.
  void file(const RegisteredClass& messageClass, std::string_view payload, std::size_t firstValue,
            bool isScanned) {
    PendingMessage* const message = pending_->add(messageClass, payload, firstValue, isScanned);
    try {
      const auto entry = map_.try_emplace(behindLast_, archive_.identifier, message);
      if (entry->second != message) pending_->withdraw(message);
      // Cheaper than the next of the last entry of all.
      behindLast_ = entry == std::prev(map_.end()) ? map_.end() : std::next(entry);
    } catch (...) {
      pending_->withdraw(message);
      throw;
    }
  }

  PendingMessages::Holder pending_;
  CodedInputStream input_;
  MessageScanner scanner_;
  MessageFactory factory_;
  RegistryView registry_;
  bool buildsAll_;
  MessageMap::Map& map_;
  MessageMap::Map::iterator behindLast_ = map_.end();
  ArchiveHeader archive_;  // one for all archives of the stream
};

}  // namespace

void walkObjectStream(std::vector<unsigned char> objectStream, MessageFactory factory,
                      PayloadReading reading, MessageMap::Map& map) {
  ObjectWalk(std::move(objectStream), factory, reading, map).run();
}

Message* buildPending(Message*& entry) {
  if (const PendingMessage* pending = asPending(entry)) {
    entry = pending->build();
    delete pending;
  }
  return entry;
}

const MessageMap::Map& entriesOf(const MessageMap& map) { return map.map_; }

}  // namespace vn::iwork13
