// Compiled at the end of the unit that has read the headers of all classes.
#include "new_message.h"

#include "Tools/formats/vniwork13/registry.h"

namespace vn::iwork13 {

template <int registry, int type, typename MessageClass>
google::protobuf::Message* newMessage() {
  return new MessageClass;
}

#define REGISTRY_ROW(type, messageClass) \
  template google::protobuf::Message* newMessage<REGISTRY, type, messageClass>();

#define REGISTRY CommonRegistry
#include "Tools/formats/vniwork13/registry_rows/common.inc"
#undef REGISTRY

#define REGISTRY KeynoteRegistry
#include "Tools/formats/vniwork13/registry_rows/keynote.inc"
#undef REGISTRY

#define REGISTRY NumbersRegistry
#include "Tools/formats/vniwork13/registry_rows/numbers.inc"
#undef REGISTRY

#define REGISTRY PagesRegistry
#include "Tools/formats/vniwork13/registry_rows/pages.inc"
#undef REGISTRY

#undef REGISTRY_ROW

}  // namespace vn::iwork13
