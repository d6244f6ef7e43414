#include "reading/time_budget.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "bytes/unique_fd.h"
#include "dorvex/host.h"

namespace dorvex::time_budget_test {
namespace {

using namespace std::chrono_literals;
using Clock = TimeBudget::Clock;
using Wait = TimeBudget::Wait;

class TimeBudgetTest : public ::testing::Test {
 protected:
  TimeBudgetTest() {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    out = UniqueFd(ends[0]);
    in = UniqueFd(ends[1]);
  }

  Wait waitFor(TimeBudget& budget) const {
    const TimeBudget::Running running(budget);
    return budget.waitFor(out.get());
  }

  UniqueFd out;
  UniqueFd in;
};

// SIGALRM every 20 milliseconds.
class Alarms {
 public:
  Alarms() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGALRM, &action, nullptr);
    set(20'000);
  }
  ~Alarms() { set(0); }

 private:
  static void set(suseconds_t microseconds) {
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
  }
};

TEST_F(TimeBudgetTest, EndsAWaitWhenThereIsSomethingToRead) {
  TimeBudget budget(10s);
  EXPECT_EQ(::write(in.get(), "x", 1), 1);
  EXPECT_EQ(waitFor(budget), Wait::kReady);
}

TEST_F(TimeBudgetTest, EndsAWaitWhenTheOtherEndIsGone) {
  TimeBudget budget(10s);
  in.reset();
  EXPECT_EQ(waitFor(budget), Wait::kReady);
}

TEST_F(TimeBudgetTest, EndsWhenItIsUsedUpWhateverSignalsComeIn) {
  const Alarms alarms;
  TimeBudget budget(300ms);
  const auto start = Clock::now();
  EXPECT_EQ(waitFor(budget), Wait::kOver);
  EXPECT_GE(Clock::now() - start, 300ms);
  EXPECT_LT(Clock::now() - start, 5s);
}

TEST_F(TimeBudgetTest, CountsOnlyWhileItRuns) {
  TimeBudget budget(100ms);
  std::this_thread::sleep_for(150ms);
  {
    const TimeBudget::Running running(budget);
    EXPECT_FALSE(budget.isOver());
    std::this_thread::sleep_for(60ms);
  }
  std::this_thread::sleep_for(150ms);
  const TimeBudget::Running running(budget);
  EXPECT_FALSE(budget.isOver());
  std::this_thread::sleep_for(60ms);
  EXPECT_TRUE(budget.isOver());
}

TEST_F(TimeBudgetTest, BreaksAWaitOffWhenItsSliceIsOver) {
  TimeBudget budget(500ms, 20ms);
  int slices = 0;
  for (bool over = false; !over; ++slices) {
    try {
      over = waitFor(budget) == Wait::kOver;
    } catch (const WaitOver&) {
    }
  }
  EXPECT_GE(slices, 5);
}

TEST_F(TimeBudgetTest, BreaksAWaitOffAtASignalWhereThereAreSlices) {
  const Alarms alarms;
  TimeBudget budget(60s, 30s);
  EXPECT_THROW(waitFor(budget), WaitOver);
}

TEST_F(TimeBudgetTest, ReportsADescriptorThatCannotBeWaitedForAsReadySoThatReadingTellsWhy) {
  TimeBudget budget(10s);
  const int closed = in.get();
  in.reset();
  const TimeBudget::Running running(budget);
  EXPECT_EQ(budget.waitFor(closed), Wait::kReady);
}

}  // namespace
}  // namespace dorvex::time_budget_test
