#include "samples/sample_writer.h"

#include <google/protobuf/message.h>
#include <google/protobuf/util/json_util.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Tools/formats/vniwork13/registry.h"

namespace dorvex::samples {
namespace {

using google::protobuf::Message;
using nlohmann::json;
using testing::Archive;
using testing::Member;

using MessageFunction = Message* (*)(int);

MessageFunction messagesOf(const std::string& application) {
  if (application == "pages") return vn::iwork13::getPagesMessage;
  if (application == "keynote") return vn::iwork13::getKeynoteMessage;
  if (application == "numbers") return vn::iwork13::getNumbersMessage;
  throw std::runtime_error("unknown application " + application);
}

Archive makeObject(const json& description, MessageFunction messages) {
  const int type = description.at("type");
  const std::unique_ptr<Message> message(messages(type));
  if (message == nullptr) throw std::runtime_error("no message of type " + std::to_string(type));
  const auto status =
      google::protobuf::util::JsonStringToMessage(description.at("message").dump(), message.get());
  if (!status.ok()) throw std::runtime_error(status.ToString() + "\n" + description.dump(1));
  return testing::object(description.at("identifier"), type, message->SerializeAsString());
}

Member makeMember(const json& description, MessageFunction messages) {
  Member member{description.at("name"), "", description.value("deflated", false)};
  if (description.contains("text")) {
    member.contents = description.at("text");
    return member;
  }
  std::vector<Archive> archives;
  for (const json& object : description.at("objects"))
    archives.push_back(makeObject(object, messages));
  member.contents = testing::iwa(archives);
  return member;
}

}  // namespace

Sample makeSample(std::string_view description) {
  const json root = json::parse(description);
  const MessageFunction messages = messagesOf(root.at("application"));
  Sample sample{root.at("file"), {}};
  for (const json& member : root.at("members"))
    sample.members.push_back(makeMember(member, messages));
  return sample;
}

}  // namespace dorvex::samples
