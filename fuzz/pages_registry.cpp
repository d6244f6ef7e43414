#include "pages_registry.h"

#include "instances.h"

// The names that the linker's option --wrap asks for.
extern "C" {
google::protobuf::Message* __real__ZN2vn7iwork1315getPagesMessageEi(int type);
google::protobuf::Message* __wrap__ZN2vn7iwork1315getPagesMessageEi(int type);
}

google::protobuf::Message* __wrap__ZN2vn7iwork1315getPagesMessageEi(int type) {
  return dorvex::fuzz::remember(__real__ZN2vn7iwork1315getPagesMessageEi(type));
}

namespace dorvex::fuzz {

google::protobuf::Message* makePagesMessage(int type) {
  return __real__ZN2vn7iwork1315getPagesMessageEi(type);
}

}  // namespace dorvex::fuzz
