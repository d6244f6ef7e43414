// What the tool's arguments ask for.
#pragma once

#include <functional>

namespace dorvex::cli {

// Does it and gives the exit status.
using Action = std::function<int()>;

// Reads the arguments. Help and version, and what is wrong with the arguments,
// are printed at once; then there is nothing left to do but end.
Action readCommandLine(int count, char** values);

}  // namespace dorvex::cli
