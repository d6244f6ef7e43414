#include "jobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

namespace dorvex::cli {
namespace {

NextItem items(int count) {
  return [count, next = 0]() mutable {
    return next < count ? std::optional(std::to_string(next++)) : std::nullopt;
  };
}

void neverGiveUp() { FAIL() << "gave up"; }

TEST(RunJobs, DoesEveryItemOnceUnderItsNumber) {
  std::mutex mutex;
  std::set<std::string> done;
  const bool ended = runJobs(
      4, items(1000),
      [&](const Job& job) {
        const std::lock_guard lock(mutex);
        EXPECT_EQ(std::to_string(job.number), job.item);
        EXPECT_TRUE(done.insert(job.item).second);
      },
      neverGiveUp);
  EXPECT_TRUE(ended);
  EXPECT_EQ(done.size(), 1000u);
}

TEST(RunJobs, PassesOnWhatWorkThrowsAndTakesNoFurtherItem) {
  std::atomic<int> done = 0;
  const auto work = [&](const Job& job) {
    if (job.number == 10) throw std::runtime_error("ten");
    ++done;
  };
  EXPECT_THROW(runJobs(2, items(1'000'000), work, neverGiveUp), std::runtime_error);
  EXPECT_LT(done, 1'000'000);
}

TEST(RunJobs, EndsAfterASignalWithWhatIsUnderWay) {
  std::atomic<int> done = 0;
  const auto work = [&](const Job& job) {
    if (job.number == 5) std::raise(SIGINT);
    ++done;
  };
  EXPECT_FALSE(runJobs(2, items(1'000'000), work, neverGiveUp));
  EXPECT_GE(done, 6);
  EXPECT_LT(done, 1'000'000);
}

TEST(RunJobsDeathTest, GivesUpWorkThatDoesNotEnd) {
  EXPECT_EXIT(runJobs(
                  1, items(1),
                  [](const Job&) {
                    std::raise(SIGTERM);
                    std::this_thread::sleep_for(std::chrono::hours(1));
                  },
                  [] { std::_Exit(42); }),
              ::testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace dorvex::cli
