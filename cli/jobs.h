// Work on many items at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "path_list.h"

namespace dorvex::cli {

struct Job {
  std::uint64_t number;  // from 0, in the order of the items
  ListedPath item;
};

// The next item, or nothing at the end. Called by one thread at a time.
using NextItem = std::function<std::optional<ListedPath>()>;

// What the process may have of each; the largest number for no limit.
struct Resources {
  std::uint64_t descriptors;
  std::uint64_t processes;  // of the user
  std::uint64_t addressSpace;
  std::uint64_t memory;  // of the machine
};
Resources resourcesOfThisProcess();

struct Affordable {
  unsigned count;
  const char* scarce;  // why they are fewer than wanted; empty for as many
};
// How many jobs the resources allow: at least one.
Affordable affordableJobs(unsigned wanted, const Resources& resources);

// Carries work out on every item, on count threads, or on fewer where the
// machine does not allow so many, and says so on standard error. Returns when all of it is
// done. What work or next throws ends the run: no further item is taken, and it
// is thrown again here once the threads are done.
//
// After SIGINT or SIGTERM no further item is taken, and what is under way has
// two seconds to end; then giveUp is called, which must end the process. Gives
// whether the run came to its own end.
bool runJobs(unsigned count, const NextItem& next, const std::function<void(const Job&)>& work,
             const std::function<void()>& giveUp);

}  // namespace dorvex::cli
