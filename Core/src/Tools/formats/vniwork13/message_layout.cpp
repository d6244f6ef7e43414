#include "Tools/formats/vniwork13/message_layout.h"

#include <google/protobuf/message.h>

#include <algorithm>
#include <string_view>
#include <typeinfo>

namespace vn::iwork13 {
namespace {

// A message class by the name of its type information.
struct MessageClass {
  std::string_view typeName;
  MessageLayout layout;
};

#include "message_layouts.inc"  // kFields, and kClasses in ascending type name

}  // namespace

MessageLayout layoutAt(std::uint16_t index) { return kClasses[index].layout; }

const MessageLayout* findLayout(const google::protobuf::Message& message) {
  const std::string_view typeName = typeid(message).name();
  const auto* found = std::ranges::lower_bound(kClasses, typeName, {}, &MessageClass::typeName);
  return found != std::end(kClasses) && found->typeName == typeName ? &found->layout : nullptr;
}

}  // namespace vn::iwork13
