#include "progress.h"

#include <cmath>
#include <cstdio>

namespace dorvex::cli {
namespace {

constexpr auto kBetweenLines = std::chrono::milliseconds(200);
constexpr const char kBackToTheStart[] = "\r\x1B[K";

std::string clockTime(double seconds) {
  const auto whole = static_cast<unsigned long>(std::lround(seconds));
  char text[32];
  std::snprintf(text, sizeof text, "%lu:%02lu:%02lu", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
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

Progress::Progress(bool shown, std::optional<std::uint64_t> total) : shown_(shown), total_(total) {}

Progress::~Progress() {
  if (shown_) std::fputs(kBackToTheStart, stderr);
}

void Progress::count(bool ok) {
  const std::lock_guard lock(mutex_);
  ++done_;
  failed_ += ok ? 0 : 1;
  const auto now = Clock::now();
  if (shown_ && now - printed_ >= kBetweenLines) print(now);
}

void Progress::print(Clock::time_point now) {
  printed_ = now;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::string line = kBackToTheStart;
  line += progressLine(done_, failed_, total_, seconds);
  std::fputs(line.c_str(), stderr);
}

}  // namespace dorvex::cli
