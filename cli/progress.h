// A line about the state of a run, for people at a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace dorvex::cli {

class Progress {
 public:
  // shown: whether anything is printed at all. total: documents, where known.
  Progress(bool shown, std::optional<std::uint64_t> total);
  // Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A document is done. Safe for several threads.
  void count(bool ok);

 private:
  using Clock = std::chrono::steady_clock;
  void print(Clock::time_point now);

  const bool shown_;
  const std::optional<std::uint64_t> total_;
  const Clock::time_point start_ = Clock::now();
  std::mutex mutex_;
  Clock::time_point printed_ = start_;
  std::uint64_t done_ = 0;
  std::uint64_t failed_ = 0;
};

// The line: documents, rate, failures and, where the total is known, the time
// left.
std::string progressLine(std::uint64_t done, std::uint64_t failed,
                         std::optional<std::uint64_t> total, double seconds);

}  // namespace dorvex::cli
