// The time that a document may take, and waiting within it.
#pragma once

#include <chrono>

namespace dorvex {

// Time in which the caller does not ask for anything does not count, so the
// clock runs only while a Running lives.
class TimeBudget {
 public:
  using Clock = std::chrono::steady_clock;

  // total: zero for no limit. slice: what one Running may last before a wait is
  // broken off; zero for as long as it takes.
  explicit TimeBudget(std::chrono::milliseconds total, std::chrono::milliseconds slice = {});

  class Running {
   public:
    explicit Running(TimeBudget& budget) : budget_(budget) { budget.start_ = Clock::now(); }
    ~Running() { budget_.left_ -= Clock::now() - budget_.start_; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

   private:
    TimeBudget& budget_;
  };

  // The functions below are for while a Running lives.

  bool isOver() const;

  enum class Wait { kReady, kOver, kFailed };
  // Waits until fd can be read from, has ended or is broken; signals that come in
  // meanwhile take no time away. kFailed leaves errno. Throws WaitOver when the
  // slice is over or, where there is one, at a signal.
  Wait waitFor(int fd) const;

 private:
  Clock::duration left() const { return left_ - (Clock::now() - start_); }
  int timeout() const;

  bool isLimited_;
  Clock::duration left_;
  Clock::duration slice_;
  Clock::time_point start_{};
};

}  // namespace dorvex
