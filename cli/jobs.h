// Work on many items at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace dorvex::cli {

struct Job {
  std::uint64_t number;  // from 0, in the order of the items
  std::string item;
};

// The next item, or nothing at the end. Called by one thread at a time.
using NextItem = std::function<std::optional<std::string>()>;

// Carries work out on every item, on count threads. Returns when all of it is
// done. What work or next throws ends the run: no further item is taken, and it
// is thrown again here once the threads are done.
//
// After SIGINT or SIGTERM no further item is taken, and what is under way has
// two seconds to end; then giveUp is called, which must end the process. Gives
// whether the run came to its own end.
bool runJobs(unsigned count, const NextItem& next, const std::function<void(const Job&)>& work,
             const std::function<void()>& giveUp);

}  // namespace dorvex::cli
