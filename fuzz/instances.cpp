#include "instances.h"

#include <unordered_set>
#include <vector>

#include "Tools/formats/vniwork13/object_walk.h"

namespace dorvex::fuzz {
namespace {

using google::protobuf::Message;

std::vector<Message*>& instances() {
  static auto* const all = new std::vector<Message*>;
  return *all;
}

}  // namespace

Message* remember(Message* instance) {
  if (instance != nullptr) instances().push_back(instance);
  return instance;
}

void deleteStrayInstances(vn::iwork13::MessageMap::Map& map) {
  std::unordered_set<Message*> owned;
  for (auto& [identifier, message] : map) owned.insert(vn::iwork13::buildPending(message));
  for (Message* instance : instances())
    if (!owned.contains(instance)) delete instance;
  instances().clear();
}

}  // namespace dorvex::fuzz
