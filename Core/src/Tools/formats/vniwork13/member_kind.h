// Which members of a zip are read, by their names.
#pragma once

namespace vn::iwork13 {

enum class MemberKind { kIgnored, kNestedContainer, kObjectStream };

// What the walk of a container does with a member. The name is its whole path
// inside that container, NUL-terminated.
MemberKind classifyMember(const char* name);

}  // namespace vn::iwork13
