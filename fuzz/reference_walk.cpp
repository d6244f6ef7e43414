#include "reference_walk.h"

#include "Tools/formats/vniwork13/message_parser.h"

namespace dorvex::fuzz {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;
using vn::iwork13::MessageFactory;

ReferenceWalk::ReferenceWalk(const std::vector<unsigned char>& objectStream, MessageFactory factory,
                             Parse parse)
    : input_(objectStream.data(), static_cast<int>(objectStream.size())),
      factory_(factory),
      parse_(parse) {
  input_.SetRecursionLimit(vn::iwork13::kRecursionLimit);
}

ReferenceWalk::Step ReferenceWalk::step() {
  if (input_.BytesUntilLimit() <= 0) return Step::kEnd;
  const int start = position();
  std::uint64_t length = 0;
  input_.ReadVarint64(&length);
  if (position() == start) return Step::kEndless;
  const CodedInputStream::Limit outer = input_.PushLimit(static_cast<int>(length));
  const bool parsed = parse_(archive_, input_);
  input_.PopLimit(outer);
  if (parsed)
    for (const TSP::MessageInfo& info : archive_.message_infos()) addPayload(info);
  return Step::kArchive;
}

void ReferenceWalk::addPayload(const TSP::MessageInfo& info) {
  std::unique_ptr<Message> message(factory_(static_cast<int>(info.type())));
  const int length = static_cast<int>(info.length());
  if (message == nullptr) {
    input_.Skip(length);
    return;
  }
  const CodedInputStream::Limit outer = input_.PushLimit(length);
  if (parse_(*message, input_)) objects_.emplace(archive_.identifier(), std::move(message));
  input_.PopLimit(outer);
}

bool walkEnds(const std::vector<unsigned char>& objectStream, MessageFactory factory) {
  ReferenceWalk walk(objectStream, factory, vn::iwork13::parseMessage);
  ReferenceWalk::Step step{};
  do {
    step = walk.step();
  } while (step == ReferenceWalk::Step::kArchive);
  return step == ReferenceWalk::Step::kEnd;
}

}  // namespace dorvex::fuzz
