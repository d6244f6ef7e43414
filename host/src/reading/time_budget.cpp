#include "reading/time_budget.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>

#include "dorvex/host.h"

namespace dorvex {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestPoll = std::chrono::hours(24);

}  // namespace

TimeBudget::TimeBudget(milliseconds total, milliseconds slice)
    : isLimited_(total.count() > 0), left_(total), slice_(slice) {}

bool TimeBudget::isOver() const { return isLimited_ && left() <= Clock::duration::zero(); }

// For poll, rounded up so that it does not wake up too early.
int TimeBudget::timeout() const {
  Clock::duration longest = kLongestPoll;
  if (isLimited_) longest = std::min(longest, left());
  if (slice_.count() > 0) longest = std::min(longest, slice_ - (Clock::now() - start_));
  return static_cast<int>(std::chrono::ceil<milliseconds>(std::max(longest, {})).count());
}

TimeBudget::Wait TimeBudget::waitFor(int fd) const {
  pollfd source{fd, POLLIN, 0};
  for (;;) {
    const int ready = ::poll(&source, 1, timeout());
    if (ready > 0) return Wait::kReady;
    if (ready < 0 && errno != EINTR) return Wait::kFailed;
    if (isOver()) return Wait::kOver;
    const bool sliceIsOver = ready < 0 || Clock::now() - start_ >= slice_;
    if (slice_.count() > 0 && sliceIsOver) throw WaitOver();
  }
}

}  // namespace dorvex
