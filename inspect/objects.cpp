#include "inspect/objects.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <list>
#include <memory>

#include "Readers/dorvexsr/dorvexutil.h"
#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registry.h"

namespace dorvex::cli {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;

// Takes bytes from the front of a stream.
class Stream {
 public:
  explicit Stream(std::string_view left) : left_(left) {}

  bool empty() const { return left_.empty(); }

  std::optional<std::string_view> take(std::uint64_t count) {
    if (count > left_.size()) return std::nullopt;
    const std::string_view taken = left_.substr(0, count);
    left_.remove_prefix(count);
    return taken;
  }

  // What stands behind a varint that states its length.
  std::optional<std::string_view> takePrefixed() {
    CodedInputStream input(reinterpret_cast<const std::uint8_t*>(left_.data()),
                           static_cast<int>(std::min<std::size_t>(left_.size(), kLongestVarint)));
    std::uint64_t length = 0;
    if (!input.ReadVarint64(&length)) return std::nullopt;
    left_.remove_prefix(static_cast<std::size_t>(input.CurrentPosition()));
    return take(length);
  }

 private:
  static constexpr std::size_t kLongestVarint = 10;
  std::string_view left_;
};

// How the reader gets on with a message. A zero byte or the end of a group ends it
// well before its last byte, and then the reader goes on in its middle.
enum class Parsed { kNot, kInPart, kWhole };

Parsed parse(Message& message, std::string_view payload) {
  const int size = static_cast<int>(payload.size());
  CodedInputStream input(reinterpret_cast<const std::uint8_t*>(payload.data()), size);
  if (!vn::iwork13::parseMessage(message, input)) return Parsed::kNot;
  return input.CurrentPosition() == size ? Parsed::kWhole : Parsed::kInPart;
}

// An empty text gives no token.
std::size_t countTextsOf(const Message& message) {
  const std::string printed = vn::iwork13::printMessage(message);
  std::list<std::string> values;
  extractFields(values, printed, "text");
  extractFields(values, printed, "string");
  return static_cast<std::size_t>(std::count_if(values.begin(), values.end(),
                                                [](const auto& value) { return !value.empty(); }));
}

std::string atObject(std::size_t number, const char* fault) {
  return "object " + std::to_string(number) + " " + fault;
}

}  // namespace

// The reader knows every document by the Pages registry.
std::size_t ObjectLister::countTexts(ListedMessage& message, std::string_view payload,
                                     std::uint64_t identifier) {
  const std::unique_ptr<Message> instance(vn::iwork13::getPagesMessage(message.type));
  if (instance == nullptr) return 0;
  const Parsed parsed = parse(*instance, payload);
  message.damaged = parsed != Parsed::kWhole;
  if (parsed == Parsed::kNot || !taken_.insert(identifier).second) return 0;
  return countTextsOf(*instance);
}

std::optional<std::string> ObjectLister::list(std::string_view stream, std::size_t member,
                                              bool selected) {
  Stream rest(stream);
  TSP::ArchiveInfo archive;
  for (std::size_t number = 1; !rest.empty(); ++number) {
    const auto header = rest.takePrefixed();
    if (!header) return atObject(number, "is cut short");
    if (parse(archive, *header) != Parsed::kWhole) return atObject(number, "has a damaged header");
    ListedObject& object = objects_.emplace_back();
    object.identifier = archive.identifier();
    object.member = member;
    for (const TSP::MessageInfo& info : archive.message_infos()) {
      const auto payload = rest.take(info.length());
      if (!payload) return atObject(number, "is cut short");
      ListedMessage& message = object.messages.emplace_back();
      message.type = static_cast<int>(info.type());
      message.size = payload->size();
      if (selected) message.texts = countTexts(message, *payload, object.identifier);
      if (object.identifier == wanted_) message.payload = *payload;
    }
  }
  return std::nullopt;
}

}  // namespace dorvex::cli
