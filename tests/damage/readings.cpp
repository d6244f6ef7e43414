#include "damage/readings.h"

#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX
#include <sys/wait.h>
#include <time.h>  // NOLINT(modernize-deprecated-headers): the clock of a process is POSIX
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "support/corpus.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kUsualVariants = 20;
// Read by one process: the reader gives no memory back.
constexpr std::uint64_t kBatch = 50;

std::uint64_t setting(const char* name, std::uint64_t otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

struct Report {
  std::uint64_t variant;
  int outcome;
};

// A process that reads some variants one after the other and reports each. It
// writes no more than a pipe takes, so it never waits for its parent.
class Reading {
 public:
  Reading(const Variants& variants, const Read& read, std::chrono::seconds patience,
          std::uint64_t first, std::uint64_t end)
      : patience_(patience) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    child_ = ::fork();
    if (child_ == 0) {
      ::close(ends[0]);
      for (std::uint64_t variant = first; variant < end; ++variant) {
        const Report report{variant, read(variants.make(variant))};
        if (::write(ends[1], &report, sizeof report) != sizeof report) ::_exit(1);
      }
      ::_exit(0);
    }
    ::close(ends[1]);
    pipe_ = ends[0];
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
    ::close(pipe_);
  }

  // The outcome of the next variant.
  int next() {
    pollfd source{pipe_, POLLIN, 0};
    const auto start = processorTime();
    constexpr int kStep = 100;  // milliseconds
    while (::poll(&source, 1, kStep) == 0) {
      if (processorTime() - start > patience_) return kEndless;
    }
    Report report{};
    return ::read(pipe_, &report, sizeof report) == sizeof report ? report.outcome : kCrashed;
  }

 private:
  // Not the time that passes: the machine may have other work.
  std::chrono::nanoseconds processorTime() const {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(child_, &clock) == 0) ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }

  std::chrono::seconds patience_;
  pid_t child_ = -1;
  int pipe_ = -1;
};

}  // namespace

std::uint64_t firstVariant() { return setting("DORVEX_DAMAGE_FIRST", 0); }

std::uint64_t endOfVariants() {
  return firstVariant() + setting("DORVEX_DAMAGE_VARIANTS", kUsualVariants);
}

std::vector<fs::path> samples() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(DORVEX_SAMPLES)) {
    const std::string extension = entry.path().extension();
    if (extension == ".pages" || extension == ".key" || extension == ".numbers")
      paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  return paths;
}

std::vector<fs::path> documents() {
  std::vector<fs::path> paths = samples();
  for (const std::string& name : corpusDocuments()) paths.push_back(corpusPath(name));
  return paths;
}

void readVariants(const Variants& variants, const Read& read, std::chrono::seconds patience,
                  const std::function<void(std::uint64_t variant, int outcome)>& tell) {
  const std::uint64_t end = endOfVariants();
  for (std::uint64_t next = firstVariant(); next < end;) {
    const std::uint64_t batchEnd = std::min(next + kBatch, end);
    Reading reading(variants, read, patience, next, batchEnd);
    for (int outcome = 0; next < batchEnd && outcome >= 0; ++next) {
      outcome = reading.next();
      tell(next, outcome);
    }
  }
}

void OutcomeCounts::print(const fs::path& document) const {
  std::printf("%s:", document.filename().c_str());
  for (const auto& [outcome, count] : counts_) {
    if (outcome == kEndless)
      std::printf(" endless %d", count);
    else
      std::printf(" %d: %d", outcome, count);
  }
  std::printf("\n");
}

}  // namespace dorvex::testing
