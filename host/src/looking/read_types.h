// Which messages the reader makes anything of.
#pragma once

#include <cstdint>

namespace dorvex {

// Whether the reader has a class for the type id of a message. It takes every document
// for one of Pages. type: as an archive's header has it, of which 32 bits count.
bool isReadType(std::uint64_t type);

}  // namespace dorvex
