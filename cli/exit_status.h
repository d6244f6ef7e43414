// What the tool's exit status says.
#pragma once

#include <stdexcept>

namespace dorvex::cli {

enum ExitStatus : int {
  kAllRead = 0,
  kNotAllRead = 1,
  kBadUsage = 2,
  kEnvironment = 3,  // nothing can be read or written at all: no module, no room, no sandbox
  kInterrupted = 130,
};

// Something that is no document's fault and that the next document would meet
// again. what() is for people.
struct EnvironmentError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The arguments ask for what cannot be meant; what() is for people.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace dorvex::cli
