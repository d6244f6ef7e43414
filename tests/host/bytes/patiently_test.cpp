#include "bytes/patiently.h"

#include <gtest/gtest.h>

namespace dorvex::patiently_test {
namespace {

using namespace std::chrono_literals;

// Fails so many times with an error.
auto failing(int times, int error, int& calls) {
  return [times, error, &calls] {
    errno = error;
    return ++calls > times;
  };
}

TEST(Patiently, WaitsAShortageOut) {
  for (const int error : {EMFILE, ENFILE, EAGAIN, ENOMEM}) {
    int calls = 0;
    EXPECT_TRUE(patiently(failing(3, error, calls)));
    EXPECT_EQ(calls, 4);
  }
}

TEST(Patiently, DoesNotRepeatWhatFailsForAnotherReason) {
  int calls = 0;
  EXPECT_FALSE(patiently(failing(3, EACCES, calls)));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(errno, EACCES);
}

TEST(Patiently, GivesUpAndLeavesTheError) {
  int calls = 0;
  EXPECT_FALSE(patiently(failing(1'000'000, EMFILE, calls), 50ms));
  EXPECT_EQ(errno, EMFILE);
  EXPECT_GT(calls, 1);
}

}  // namespace
}  // namespace dorvex::patiently_test
