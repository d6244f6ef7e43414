#include "progress.h"

#include <cmath>
#include <cstdio>
#include <numeric>

namespace dorvex::cli {
namespace {

constexpr auto kBetweenLines = std::chrono::milliseconds(200);
constexpr std::string_view kOk = "ok";
constexpr const char kBackToTheStart[] = "\r\x1B[K";

std::string clockTime(double seconds) {
  const auto whole = static_cast<unsigned long>(std::lround(seconds));
  char text[32];
  std::snprintf(text, sizeof text, "%lu:%02lu:%02lu", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}

std::uint64_t sum(const Counts& counts) {
  return std::accumulate(counts.begin(), counts.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const auto& row) { return sum + row.second; });
}

std::uint64_t failures(const Counts& counts) {
  const auto read = counts.find(kOk);
  return sum(counts) - (read != counts.end() ? read->second : 0);
}

}  // namespace

std::string progressLine(std::uint64_t done, std::uint64_t failed,
                         std::optional<std::uint64_t> total, double seconds) {
  const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
  std::string line = std::to_string(done);
  if (total) line += "/" + std::to_string(*total);
  char text[64];
  std::snprintf(text, sizeof text, " documents, %.0f/s, ", rate);
  line += text;
  line += std::to_string(failed) + " failed";
  if (total && rate > 0 && *total >= done) {
    line += ", " + clockTime(static_cast<double>(*total - done) / rate) + " left";
  }
  return line;
}

std::string summaryLine(const Counts& counts, double seconds) {
  const std::uint64_t all = sum(counts);
  const std::uint64_t failed = failures(counts);
  std::string line = "dorvex: " + std::to_string(all - failed);
  if (failed > 0) line += " of " + std::to_string(all);
  char text[64];
  std::snprintf(text, sizeof text, " documents read in %.1f s", seconds);
  line += text;
  const char* before = "; failed: ";
  for (const auto& [status, count] : counts) {
    if (status == kOk) continue;
    line += before + std::to_string(count) + " " + status;
    before = ", ";
  }
  return line;
}

Progress::Progress(bool shown, bool summary, std::optional<std::uint64_t> total)
    : shown_(shown), summary_(summary), total_(total) {}

Progress::~Progress() {
  if (shown_) std::fputs(kBackToTheStart, stderr);
  if (summary_)
    std::fputs((summaryLine(counts_, secondsUntil(Clock::now())) + "\n").c_str(), stderr);
}

void Progress::count(std::string_view status) {
  const std::lock_guard lock(mutex_);
  ++counts_.try_emplace(std::string(status)).first->second;
  const auto now = Clock::now();
  if (shown_ && now - printed_ >= kBetweenLines) print(now);
}

void Progress::print(Clock::time_point now) {
  printed_ = now;
  std::string line = kBackToTheStart;
  line += progressLine(sum(counts_), failures(counts_), total_, secondsUntil(now));
  std::fputs(line.c_str(), stderr);
}

double Progress::secondsUntil(Clock::time_point now) const {
  return std::chrono::duration<double>(now - start_).count();
}

}  // namespace dorvex::cli
