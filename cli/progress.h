// A line about the state of a run, for people at a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace dorvex::cli {

// Documents by the words for what became of them.
using Counts = std::map<std::string, std::uint64_t, std::less<>>;

class Progress {
 public:
  // shown: whether a line is kept up to date. summary: whether one stays behind at
  // the end. total: documents, where known.
  Progress(bool shown, bool summary, std::optional<std::uint64_t> total);
  // Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A document is done, with that word for it. Safe for several threads.
  void count(std::string_view status);

 private:
  using Clock = std::chrono::steady_clock;
  void print(Clock::time_point now);
  double secondsUntil(Clock::time_point now) const;

  const bool shown_;
  const bool summary_;
  const std::optional<std::uint64_t> total_;
  const Clock::time_point start_ = Clock::now();
  std::mutex mutex_;
  Clock::time_point printed_ = start_;
  Counts counts_;
};

// The line: documents, rate, failures and, where the total is known, the time
// left.
std::string progressLine(std::uint64_t done, std::uint64_t failed,
                         std::optional<std::uint64_t> total, double seconds);

// The line at the end, without its line feed.
std::string summaryLine(const Counts& counts, double seconds);

}  // namespace dorvex::cli
