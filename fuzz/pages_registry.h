// The registry of the reader, in targets that link all of it. The linker leads
// every call of vn::iwork13::getPagesMessage through a function that remembers
// the instance (see instances.h): the reader's own walk cannot be given another.
#pragma once

#include <google/protobuf/message.h>

namespace dorvex::fuzz {

// The registry itself, for whoever deletes what it gives.
google::protobuf::Message* makePagesMessage(int type);

}  // namespace dorvex::fuzz
