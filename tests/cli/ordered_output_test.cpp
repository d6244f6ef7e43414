#include "ordered_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli {
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
  OrderedOutput ordered(output, 10);
  ordered.write(1, "b");
  ordered.end(1);
  EXPECT_EQ(written(), "");
  ordered.write(0, "a");
  ordered.end(0);
  EXPECT_EQ(written(), "ab");
}

TEST_F(OrderedOutputTest, LetsAPartGoOnWhoseTurnHasCome) {
  OrderedOutput ordered(output, 10);
  ordered.write(1, "b1");
  ordered.end(0);
  ordered.write(1, "b2");
  ordered.end(1);
  ordered.write(2, "c");
  ordered.end(2);
  EXPECT_EQ(written(), "b1b2c");
}

TEST_F(OrderedOutputTest, OrdersWhatThreadsWrite) {
  OrderedOutput ordered(output, 3);
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

TEST(OrderedOutput, LetsNobodyWaitBehindABrokenOutput) {
  const int fd = ::open("/dev/full", O_WRONLY);
  Output output(fd);
  OrderedOutput ordered(output, 0);
  ordered.write(0, "a");
  EXPECT_THROW(ordered.end(0), OutputError);
  ordered.begin(7);
  ::close(fd);
}

}  // namespace
}  // namespace dorvex::cli
