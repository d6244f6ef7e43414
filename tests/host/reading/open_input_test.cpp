#include "reading/open_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::open_input_test {
namespace {

using namespace std::chrono_literals;
using testing::TemporaryDirectory;
using testing::writeFile;

constexpr std::size_t kScratch = 1024;
constexpr CopyLimits kLimits{kScratch, 0};

std::string contents(OpenInput& input) {
  const auto store = input.takeStore();
  std::string bytes(store->size(), '\0');
  store->readAt(0, bytes.data(), bytes.size());
  return bytes;
}

TEST(OpenInput, OpensAFileInPlace) {
  const TemporaryDirectory folder;
  writeFile(folder.path() / "a", "contents");
  Result failure;
  OpenInput input = OpenInput::open(Input::path(folder.path() / "a"), kLimits, failure);
  ASSERT_TRUE(input);
  EXPECT_FALSE(input.directory());
  EXPECT_EQ(contents(input), "contents");
}

TEST(OpenInput, OpensADirectory) {
  const TemporaryDirectory folder;
  Result failure;
  OpenInput input = OpenInput::open(Input::path(folder.path()), kLimits, failure);
  ASSERT_TRUE(input);
  EXPECT_TRUE(input.directory());
  EXPECT_EQ(input.takeStore(), nullptr);
}

struct Pipe {
  Pipe() { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }
  TemporaryDirectory folder;
  std::string path = folder.path() / "pipe";
};

bool readToEnd(OpenInput& input, Result& failure, std::chrono::milliseconds time = 10s) {
  TimeBudget budget(time);
  const TimeBudget::Running running(budget);
  return input.readToEnd(budget, failure);
}

TEST(OpenInput, ReadsAPipeToItsEnd) {
  const Pipe pipe;
  const std::string sent(100000, 'x');
  Result failure;
  OpenInput input = OpenInput::open(Input::path(pipe.path), kLimits, failure);
  ASSERT_TRUE(input.isUnread());
  std::thread writer([&] { writeFile(pipe.path, sent); });
  EXPECT_TRUE(readToEnd(input, failure));
  writer.join();
  EXPECT_FALSE(input.isUnread());
  EXPECT_EQ(contents(input), sent);
}

TEST(OpenInput, GivesUpAPipeThatNobodyWritesTo) {
  const Pipe pipe;
  Result failure;
  OpenInput input = OpenInput::open(Input::path(pipe.path), kLimits, failure);
  EXPECT_FALSE(readToEnd(input, failure, 100ms));
  EXPECT_EQ(failure.failure, Failure::kTimedOut);
  EXPECT_EQ(failure.limit, Limit::kWallTime);
}

TEST(OpenInput, GivesUpAPipeThatStaysOpen) {
  const Pipe pipe;
  Result failure;
  OpenInput input = OpenInput::open(Input::path(pipe.path), kLimits, failure);
  const UniqueFd writer(::open(pipe.path.c_str(), O_WRONLY));
  EXPECT_EQ(::write(writer.get(), "PK", 2), 2);
  EXPECT_FALSE(readToEnd(input, failure, 100ms));
  EXPECT_EQ(failure.failure, Failure::kTimedOut);
}

TEST(OpenInput, ReadsADeviceWithoutEndUpToItsLimit) {
  Result failure;
  OpenInput input = OpenInput::open(Input::path("/dev/zero"), {kScratch, 1 << 20}, failure);
  EXPECT_FALSE(readToEnd(input, failure));
  EXPECT_EQ(failure.failure, Failure::kLimitPassed);
  EXPECT_EQ(failure.limit, Limit::kInput);
  EXPECT_EQ(failure.message, "stopped: it gives more than 1048576 bytes");
}

TEST(OpenInput, HoldsStreamsAndCallbacksToTheLimit) {
  for (const std::size_t length : {1000u, 1001u}) {
    std::istringstream stream(std::string(length, 's'));
    Result failure;
    EXPECT_EQ(static_cast<bool>(OpenInput::open(Input::stream(stream), {kScratch, 1000}, failure)),
              length == 1000);
    EXPECT_EQ(failure.limit, length == 1000 ? Limit::kNone : Limit::kInput);
  }
}

TEST(OpenInput, ReadsADescriptorFromWhereItStands) {
  const TemporaryDirectory folder;
  writeFile(folder.path() / "a", "contents");
  const UniqueFd file(::open((folder.path() / "a").c_str(), O_RDONLY));
  Result failure;
  OpenInput whole = OpenInput::open(Input::descriptor(file.get()), kLimits, failure);
  EXPECT_FALSE(whole.isUnread());
  EXPECT_EQ(contents(whole), "contents");
  ::lseek(file.get(), 3, SEEK_SET);
  OpenInput rest = OpenInput::open(Input::descriptor(file.get()), kLimits, failure);
  EXPECT_TRUE(readToEnd(rest, failure));
  EXPECT_EQ(contents(rest), "tents");
}

TEST(OpenInput, CopiesADescriptorThatCouldBeWrittenTo) {
  const TemporaryDirectory folder;
  writeFile(folder.path() / "a", "contents");
  const UniqueFd file(::open((folder.path() / "a").c_str(), O_RDWR));
  Result failure;
  OpenInput input = OpenInput::open(Input::descriptor(file.get()), kLimits, failure);
  EXPECT_TRUE(input.isUnread());
  EXPECT_TRUE(readToEnd(input, failure));
  EXPECT_EQ(contents(input), "contents");
}

TEST(OpenInput, ReadsADirectoryThroughADescriptor) {
  const TemporaryDirectory folder;
  const UniqueFd directory(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
  Result failure;
  EXPECT_TRUE(OpenInput::open(Input::descriptor(directory.get()), kLimits, failure).directory());
}

TEST(OpenInput, ReportsADescriptorThatCannotBeRead) {
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::descriptor(-1), kLimits, failure));
  EXPECT_EQ(failure.failure, Failure::kCannotRead);
  const UniqueFd writeOnly(::open("/dev/null", O_WRONLY));
  OpenInput input = OpenInput::open(Input::descriptor(writeOnly.get()), kLimits, failure);
  EXPECT_FALSE(readToEnd(input, failure));
  EXPECT_EQ(failure.failure, Failure::kCannotRead);
}

// Others give back what there is too little of.
TEST(OpenInput, WaitsForADescriptorToBecomeFree) {
  const TemporaryDirectory folder;
  writeFile(folder.path() / "a", "contents");
  std::vector<UniqueFd> all;
  while (all.empty() || all.back()) all.emplace_back(::open("/dev/null", O_RDONLY));
  std::thread other([&] {
    std::this_thread::sleep_for(100ms);
    all.clear();
  });
  Result failure;
  EXPECT_TRUE(OpenInput::open(Input::path(folder.path() / "a"), kLimits, failure))
      << failure.message;
  other.join();
}

TEST(OpenInput, TellsWhyAFileCannotBeOpened) {
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::path("/no/such/file"), kLimits, failure));
  EXPECT_EQ(failure.status, Status::kFailed);
  EXPECT_EQ(failure.failure, Failure::kNoSuchFile);
  EXPECT_EQ(failure.moduleResult, std::nullopt);
}

TEST(OpenInput, UsesMemoryInPlace) {
  const std::string bytes = "contents";
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  Result failure;
  OpenInput input = OpenInput::open(Input::memory({data, bytes.size()}), kLimits, failure);
  EXPECT_EQ(input.takeStore()->inMemory().data(), data);
}

TEST(OpenInput, ReadsAStreamToItsEnd) {
  std::istringstream stream(std::string(200000, 's'));
  Result failure;
  OpenInput input = OpenInput::open(Input::stream(stream), kLimits, failure);
  EXPECT_EQ(contents(input), std::string(200000, 's'));
}

TEST(OpenInput, ReportsAStreamThatBreaks) {
  struct Broken : std::streambuf {
    int underflow() override { throw std::runtime_error("broken"); }
  } buffer;
  std::istream stream(&buffer);
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::stream(stream), kLimits, failure));
  EXPECT_EQ(failure.failure, Failure::kCannotRead);
}

TEST(OpenInput, ReadsACallbackUntilItGivesNothing) {
  int left = 3;
  const auto read = [&](void* buffer, std::size_t count) -> std::size_t {
    EXPECT_GE(count, 2u);
    if (left-- == 0) return 0;
    std::memcpy(buffer, "ab", 2);
    return 2;
  };
  Result failure;
  OpenInput input = OpenInput::open(Input::callback(read), kLimits, failure);
  EXPECT_EQ(contents(input), "ababab");
}

TEST(OpenInput, LetsWhatACallbackThrowsPass) {
  const auto read = [](void*, std::size_t) -> std::size_t { throw std::logic_error("mine"); };
  Result failure;
  EXPECT_THROW(OpenInput::open(Input::callback(read), kLimits, failure), std::logic_error);
}

TEST(OpenInput, ReportsThatScratchSpaceCannotBeHad) {
  std::istringstream stream(std::string(2 * kScratch, 's'));
  ::setenv("TMPDIR", "/no/such/folder", 1);
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::stream(stream), kLimits, failure));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(failure.status, Status::kFailed);
}

}  // namespace
}  // namespace dorvex::open_input_test
