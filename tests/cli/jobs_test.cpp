#include "jobs.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

namespace dorvex::cli::jobs_test {
namespace {

NextItem items(int count) {
  return [count, next = 0]() mutable {
    return next < count ? std::optional(ListedPath{std::to_string(next++)}) : std::nullopt;
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
        EXPECT_EQ(std::to_string(job.number), job.item.path);
        EXPECT_TRUE(done.insert(job.item.path).second);
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

constexpr std::uint64_t kPlenty = ~std::uint64_t{0};

TEST(AffordableJobs, AreAsManyAsWantedWhereThereIsPlenty) {
  EXPECT_EQ(affordableJobs(1000, {kPlenty, kPlenty, kPlenty, kPlenty}).count, 1000u);
  EXPECT_STREQ(affordableJobs(1000, {kPlenty, kPlenty, kPlenty, kPlenty}).scarce, "");
}

TEST(AffordableJobs, AreCutToTheScarcestResource) {
  const Affordable few = affordableJobs(1000, {1024, kPlenty, kPlenty, kPlenty});
  EXPECT_EQ(few.count, 124u);
  EXPECT_STREQ(few.scarce, "open files (ulimit -n)");
  EXPECT_EQ(affordableJobs(1000, {1024, 20, kPlenty, kPlenty}).count, 10u);
  EXPECT_EQ(affordableJobs(1000, {1024, 20, 66 << 20, kPlenty}).count, 5u);
  EXPECT_EQ(affordableJobs(1000, {1024, 20, 66 << 20, 64 << 20}).count, 2u);
}

TEST(AffordableJobs, AreOneAtLeast) { EXPECT_EQ(affordableJobs(1000, {0, 0, 0, 0}).count, 1u); }

// A limit of address space for a thread's stack cannot be lifted again, hence
// the process of its own.
TEST(RunJobsDeathTest, WorksWithoutThreadsWhereNoneCanBeMade) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer needs address space for itself";
#endif
  const auto workWithoutAddressSpace = [] {
    const rlimit none{1 << 20, 1 << 20};
    ::setrlimit(RLIMIT_AS, &none);
    int done = 0;
    const auto work = [&](const Job&) { ++done; };
    const bool ended = runJobs(4, items(10), work, neverGiveUp);
    std::_Exit(ended && done == 10 ? 42 : 1);
  };
  EXPECT_EXIT(workWithoutAddressSpace(), ::testing::ExitedWithCode(42), "1 job in place of 4");
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
}  // namespace dorvex::cli::jobs_test
