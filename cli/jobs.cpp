#include "jobs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
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
  action.sa_flags = SA_RESETHAND | SA_RESTART;
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &action, nullptr);
}

class Run {
 public:
  Run(const NextItem& next, const std::function<void(const Job&)>& work)
      : next_(next), work_(work) {}

  void start(unsigned count) {
    running_ = count;
    for (unsigned i = 0; i < count; ++i) threads_.emplace_back([this] { serve(); });
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

bool runJobs(unsigned count, const NextItem& next, const std::function<void(const Job&)>& work,
             const std::function<void()>& giveUp) {
  listenForInterrupts();
  Run run(next, work);
  run.start(std::max(count, 1U));
  if (!run.wait()) giveUp();
  run.join();
  return !interrupted;
}

}  // namespace dorvex::cli
