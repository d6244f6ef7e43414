#include "jobs.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <iostream>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace dorvex::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 2s;
constexpr auto kLookForSignals = 100ms;

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void noteInterrupt(int) { interrupted = true; }

// A second signal ends the process at once.
void listenForInterrupts() {
  interrupted = false;
  struct sigaction action {};
  action.sa_handler = noteInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &action, nullptr);
}

// What a job takes: a thread and a worker, the descriptors of both ends, and the
// thread's stack.
constexpr std::uint64_t kOwnDescriptors = 32;
constexpr std::uint64_t kDescriptorsForEachJob = 8;
constexpr std::uint64_t kProcessesForEachJob = 2;
constexpr std::uint64_t kOwnAddressSpace = std::uint64_t{16} << 20;
constexpr std::uint64_t kAddressSpaceForEachJob = std::uint64_t{10} << 20;
constexpr std::uint64_t kMemoryForEachJob = std::uint64_t{32} << 20;

unsigned jobsWithin(std::uint64_t limit, std::uint64_t own, std::uint64_t forEachJob) {
  const std::uint64_t jobs = (limit - std::min(limit, own)) / forEachJob;
  return static_cast<unsigned>(
      std::clamp<std::uint64_t>(jobs, 1, std::numeric_limits<unsigned>::max()));
}

std::uint64_t softLimit(__rlimit_resource_t resource) {
  rlimit limit{};
  return ::getrlimit(resource, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
}

void tellOfFewer(std::size_t jobs, unsigned wanted, const char* scarce) {
  std::cerr << "dorvex: warning: " << jobs << (jobs == 1 ? " job" : " jobs") << " in place of "
            << wanted << ": not enough " << scarce << std::endl;
}

class JobThreads {
 public:
  JobThreads(const NextItem& next, const std::function<void(const Job&)>& work)
      : next_(next), work_(work) {}

  // Gives how many threads there are. Where not even one can be made, all the
  // work is done before this returns.
  std::size_t start(unsigned count) {
    try {
      threads_.reserve(count);
      while (threads_.size() < count) {
        enter();
        threads_.emplace_back([this] { serve(); });
      }
    } catch (const std::exception&) {  // a thread that cannot be made is one job less
      leave();
    }
    if (!threads_.empty()) return threads_.size();
    enter();
    serve();
    return 1;
  }

  // True when all threads are done, false when grace was over before.
  bool wait() {
    std::unique_lock lock(mutex_);
    std::optional<std::chrono::steady_clock::time_point> end;
    while (!done_.wait_for(lock, kLookForSignals, [this] { return running_ == 0; })) {
      const auto now = std::chrono::steady_clock::now();
      if (interrupted && !end) end = now + kGrace;
      if (end && now > *end) return false;
    }
    return true;
  }

  void join() {
    for (std::thread& thread : threads_) thread.join();
    if (error_) std::rethrow_exception(error_);
  }

 private:
  void serve() {
    try {
      while (const auto job = take()) work_(*job);
    } catch (...) {
      const std::lock_guard lock(mutex_);
      if (!error_) error_ = std::current_exception();
    }
    leave();
  }

  void enter() {
    const std::lock_guard lock(mutex_);
    ++running_;
  }

  void leave() {
    const std::lock_guard lock(mutex_);
    --running_;
    done_.notify_one();
  }

  std::optional<Job> take() {
    const std::lock_guard lock(taking_);
    if (interrupted || failed()) return std::nullopt;
    auto item = next_();
    return item ? std::optional(Job{number_++, std::move(*item)}) : std::nullopt;
  }

  bool failed() {
    const std::lock_guard lock(mutex_);
    return error_ != nullptr;
  }

  const NextItem& next_;
  const std::function<void(const Job&)>& work_;
  std::vector<std::thread> threads_;
  std::mutex taking_;
  std::uint64_t number_ = 0;
  std::mutex mutex_;
  std::condition_variable done_;
  unsigned running_ = 0;
  std::exception_ptr error_;
};

}  // namespace

Affordable affordableJobs(unsigned wanted, const Resources& resources) {
  const std::array<Affordable, 4> bounds = {{
      {jobsWithin(resources.descriptors, kOwnDescriptors, kDescriptorsForEachJob),
       "open files (ulimit -n)"},
      {jobsWithin(resources.processes, 0, kProcessesForEachJob), "processes (ulimit -u)"},
      {jobsWithin(resources.addressSpace, kOwnAddressSpace, kAddressSpaceForEachJob),
       "address space (ulimit -v)"},
      {jobsWithin(resources.memory, 0, kMemoryForEachJob), "memory"},
  }};
  const Affordable least = *std::ranges::min_element(bounds, {}, &Affordable::count);
  if (wanted <= least.count) return {std::max(wanted, 1U), ""};
  return least;
}

Resources resourcesOfThisProcess() {
  const auto pages = ::sysconf(_SC_PHYS_PAGES);
  const auto size = ::sysconf(_SC_PAGESIZE);
  return {.descriptors = softLimit(RLIMIT_NOFILE),
          // The super-user is not held to it.
          .processes = ::geteuid() == 0 ? RLIM_INFINITY : softLimit(RLIMIT_NPROC),
          .addressSpace = softLimit(RLIMIT_AS),
          .memory = pages > 0 && size > 0
                        ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size)
                        : RLIM_INFINITY};
}

bool runJobs(unsigned count, const NextItem& next, const std::function<void(const Job&)>& work,
             const std::function<void()>& giveUp) {
  listenForInterrupts();
  const Affordable affordable = affordableJobs(count, resourcesOfThisProcess());
  if (affordable.count < count) tellOfFewer(affordable.count, count, affordable.scarce);
  JobThreads run(next, work);
  const std::size_t threads = run.start(affordable.count);
  if (threads < affordable.count) tellOfFewer(threads, affordable.count, "threads");
  if (!run.wait()) giveUp();
  run.join();
  return !interrupted;
}

}  // namespace dorvex::cli
