// A run of the tests with workers outside of their sandbox.
#pragma once

#include <cstdlib>

namespace dorvex::testing {

// scripts/memcheck asks for it: valgrind needs more system calls than a confined
// process has.
inline bool unconfined() { return std::getenv("DORVEX_TEST_UNCONFINED") != nullptr; }

}  // namespace dorvex::testing
