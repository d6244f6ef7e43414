// The walk of an object stream: archive by archive against the walk that builds
// every message, and against the one that scans and builds what is looked up.
//
// Input: one byte, whose registry; the object stream.
#include <string>
#include <vector>

#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/registry.h"
#include "fuzz_input.h"
#include "input_form.h"
#include "instances.h"
#include "looking/object_stream.h"
#include "reference_walk.h"

namespace dorvex::fuzz {
namespace {

using google::protobuf::Message;
using vn::iwork13::MessageFactory;
using vn::iwork13::MessageMap;
using vn::iwork13::PayloadReading;

struct Registry {
  MessageFactory make;
  MessageFactory makeRemembered;
};

constexpr Registry kRegistries[] = {
    {vn::iwork13::getPagesMessage, makeRemembered<vn::iwork13::getPagesMessage>},
    {vn::iwork13::getKeynoteMessage, makeRemembered<vn::iwork13::getKeynoteMessage>},
    {vn::iwork13::getNumbersMessage, makeRemembered<vn::iwork13::getNumbersMessage>},
};

void requireSame(const Message& left, const Message& right) {
  require(left.GetDescriptor() == right.GetDescriptor(), "an object is of the same class");
  require(left.SerializePartialAsString() == right.SerializePartialAsString(),
          "an object has the same content");
}

template <typename OtherMap>
void requireSameObjects(const ReferenceWalk::Objects& expected, const OtherMap& objects) {
  require(expected.size() == objects.size(), "the same objects are found");
  auto other = objects.begin();
  for (const auto& [identifier, message] : expected) {
    require(identifier == other->first, "objects have the same identifiers");
    requireSame(*message, *other->second);
    ++other;
  }
}

void checkReading(const std::vector<unsigned char>& stream, MessageFactory factory,
                  PayloadReading reading, const ReferenceWalk::Objects& expected) {
  MessageMap::Map map;
  walkObjectStream(stream, factory, reading, map);
  deleteStrayInstances(map);
  requireSameObjects(expected, map);
  for (const auto& [identifier, message] : map) delete message;
}

void checkStream(const std::vector<unsigned char>& stream, const Registry& registry) {
  ReferenceWalk rules(stream, registry.make, vn::iwork13::parseMessage);
  ReferenceWalk::Step step{};
  do {
    step = rules.step();
  } while (step == ReferenceWalk::Step::kArchive);
  if (step == ReferenceWalk::Step::kEndless) return;  // the reader would not come back
  checkReading(stream, registry.makeRemembered, PayloadReading::kBuild, rules.objects());
  checkReading(stream, registry.make, PayloadReading::kScan, rules.objects());
}

}  // namespace

const InputForm kInputForm{1, Level::kObjectStream};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const Registry& registry = kRegistries[input.byte() % std::size(kRegistries)];
  const std::string_view stream = input.rest();
  const auto fault = dorvex::findObjectFault(stream);
  require(!fault || !fault->empty(), "a fault has words");
  checkStream({stream.begin(), stream.end()}, registry);
  return 0;
}
