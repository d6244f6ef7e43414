// Registers the schema with protobuf when a descriptor is first asked for.
//
// Generated code registers its file as soon as it is loaded, and protobuf then goes
// through the whole of it: three quarters of what loading the module takes, and mostly
// in vain, since the reader goes by layouts of its own. So the generated files are
// compiled with the two names below in place of protobuf's.
//
// Once it is asked for, all of the schema is registered, as before: what is found in
// the pool does not depend on what was asked for first.
#pragma once

#include <google/protobuf/generated_message_reflection.h>

namespace vn::iwork13 {

// Does what loading did. Whoever asks the pool by name calls it first; descriptors of
// instances come without.
void registerSchema();

}  // namespace vn::iwork13

namespace google::protobuf::internal {

// In place of AddDescriptorsRunner: does nothing.
struct LateDescriptorsRunner {
  constexpr explicit LateDescriptorsRunner(const DescriptorTable* /*table*/) {}
};

// In place of AssignDescriptors, through which every descriptor is asked for. By
// reference: one of the arguments is what the call fills and gives back.
template <typename... Arguments>
auto AssignLateDescriptors(const Arguments&... arguments) {
  vn::iwork13::registerSchema();
  return AssignDescriptors(arguments...);
}

}  // namespace google::protobuf::internal
