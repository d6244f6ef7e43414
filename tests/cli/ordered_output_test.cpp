#include "ordered_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::ordered_output_test {
namespace {

class OrderedOutputTest : public ::testing::Test {
 protected:
  OrderedOutputTest()
      : fd(::open((folder.path() / "out").c_str(), O_WRONLY | O_CREAT, 0600)), output(fd) {}
  ~OrderedOutputTest() override { ::close(fd); }
  std::string written() { return testing::readFile(folder.path() / "out"); }

  testing::TemporaryDirectory folder;
  int fd;
  Output output;
};

TEST_F(OrderedOutputTest, KeepsPartsBackUntilTheirTurn) {
  OrderedOutput ordered(output, {.parts = 10});
  ordered.write(1, "b");
  ordered.end(1);
  EXPECT_EQ(written(), "");
  ordered.write(0, "a");
  ordered.end(0);
  EXPECT_EQ(written(), "ab");
}

TEST_F(OrderedOutputTest, LetsAPartGoOnWhoseTurnHasCome) {
  OrderedOutput ordered(output, {.parts = 10});
  ordered.write(1, "b1");
  ordered.end(0);
  ordered.write(1, "b2");
  ordered.end(1);
  ordered.write(2, "c");
  ordered.end(2);
  EXPECT_EQ(written(), "b1b2c");
}

TEST_F(OrderedOutputTest, OrdersWhatThreadsWrite) {
  OrderedOutput ordered(output, {.parts = 3});
  std::atomic<std::uint64_t> next = 0;
  const auto serve = [&] {
    for (std::uint64_t number = next++; number < 500; number = next++) {
      ordered.begin(number);
      if (number % 3 == 0) std::this_thread::yield();
      ordered.write(number, std::to_string(number));
      ordered.write(number, "\n");
      ordered.end(number);
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(serve);
  for (auto& thread : threads) thread.join();
  std::string expected;
  for (int i = 0; i < 500; ++i) expected += std::to_string(i) + "\n";
  EXPECT_EQ(written(), expected);
}

// Tells whether the work is over after a while, and lets it come to its end.
template <typename Work, typename Release>
bool waitsUntilReleased(Work work, Release release) {
  auto done = std::async(std::launch::async, work);
  const bool waited = done.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
  release();
  done.get();
  return waited;
}

TEST_F(OrderedOutputTest, HoldsNoMoreBytesBackThanItIsAllowed) {
  OrderedOutput ordered(output, {.parts = 10, .bytes = 10});
  ordered.write(2, std::string(6, 'c'));
  ordered.end(2);
  const bool waited = waitsUntilReleased(
      [&] {
        ordered.write(1, std::string(6, 'b'));
        ordered.end(1);
      },
      [&] { ordered.end(0); });
  EXPECT_TRUE(waited);
  EXPECT_EQ(written(), "bbbbbbcccccc");
}

TEST_F(OrderedOutputTest, LetsAPartThatIsLargerThanAllThatMayWaitOutInItsTurn) {
  OrderedOutput ordered(output, {.parts = 10, .bytes = 10});
  Blocks large;
  large.append(std::string(100, 'b'));
  const bool waited = waitsUntilReleased(
      [&] {
        ordered.write(1, std::move(large));
        ordered.end(1);
      },
      [&] {
        ordered.write(0, "a");
        ordered.end(0);
      });
  EXPECT_TRUE(waited);
  EXPECT_EQ(written(), "a" + std::string(100, 'b'));
}

TEST_F(OrderedOutputTest, GivesTheRoomOfWhatHasGoneOutToOthers) {
  OrderedOutput ordered(output, {.parts = 10, .bytes = 10});
  std::string expected;
  for (std::uint64_t number = 0; number < 100; number += 2) {
    ordered.write(number + 1, std::string(10, 'x'));
    ordered.end(number + 1);
    ordered.end(number);
    expected += std::string(10, 'x');
  }
  EXPECT_EQ(written(), expected);
}

TEST_F(OrderedOutputTest, LetsNobodyWaitForATurnThatWillNotCome) {
  OrderedOutput ordered(output, {.parts = 0, .bytes = 0});
  EXPECT_THROW(ordered.during([] { throw std::runtime_error("failed"); }), std::runtime_error);
  ordered.begin(7);
  ordered.write(7, "text");
  ordered.end(7);
  EXPECT_EQ(written(), "");
}

TEST(OrderedOutput, LetsNobodyWaitBehindABrokenOutput) {
  const int fd = ::open("/dev/full", O_WRONLY);
  Output output(fd);
  OrderedOutput ordered(output, {.parts = 0});
  ordered.write(0, "a");
  EXPECT_THROW(ordered.end(0), OutputError);
  ordered.begin(7);
  ::close(fd);
}

}  // namespace
}  // namespace dorvex::cli::ordered_output_test
