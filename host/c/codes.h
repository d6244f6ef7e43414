// The numbers of the C interface for the enumerators of the host library. Those
// may move; the numbers never do.
#pragma once

#include <cstdint>

#include "dorvex/host.h"

namespace dorvex::c {

std::int32_t codeOf(Status status);
std::int32_t codeOf(Failure failure);
std::int32_t codeOf(Kind kind);
std::int32_t codeOf(Limit limit);

// False for a number that is none.
bool isolationOf(std::uint32_t number, Isolation& isolation);
bool sandboxOf(std::uint32_t number, Sandbox& sandbox);

}  // namespace dorvex::c
