// Keeps account of the message instances that a walk asks for. By rule the walk
// keeps no owner for an instance that fails to parse or whose identifier is
// taken; a fuzzer would run out of memory over it.
#pragma once

#include <google/protobuf/message.h>

#include "Tools/formats/vniwork13/iwa_utils.h"

namespace dorvex::fuzz {

// Remembers an instance, which may be null, and gives it back.
google::protobuf::Message* remember(google::protobuf::Message* instance);

// A registry, whose instances are remembered.
template <vn::iwork13::MessageFactory Factory>
google::protobuf::Message* makeRemembered(int type) {
  return remember(Factory(type));
}

// Builds every message of the map, so that the map holds each instance that it
// owns, and deletes all other instances that are remembered.
void deleteStrayInstances(vn::iwork13::MessageMap::Map& map);

}  // namespace dorvex::fuzz
