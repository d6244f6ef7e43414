#include "reading/open_input.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex {
namespace {

using testing::TemporaryDirectory;
using testing::writeFile;

constexpr std::size_t kScratch = 1024;

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
  OpenInput input = OpenInput::open(Input::path(folder.path() / "a"), kScratch, failure);
  ASSERT_TRUE(input);
  EXPECT_FALSE(input.directory());
  EXPECT_EQ(contents(input), "contents");
}

TEST(OpenInput, OpensADirectory) {
  const TemporaryDirectory folder;
  Result failure;
  OpenInput input = OpenInput::open(Input::path(folder.path()), kScratch, failure);
  ASSERT_TRUE(input);
  EXPECT_TRUE(input.directory());
  EXPECT_EQ(input.takeStore(), nullptr);
}

TEST(OpenInput, ReadsAPipeToItsEnd) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const std::string sent(100000, 'x');
  std::thread writer([&] { writeFile(path, sent); });
  Result failure;
  OpenInput input = OpenInput::open(Input::path(path), kScratch, failure);
  writer.join();
  ASSERT_TRUE(input);
  EXPECT_EQ(contents(input), sent);
}

TEST(OpenInput, TellsWhyAFileCannotBeOpened) {
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::path("/no/such/file"), kScratch, failure));
  EXPECT_EQ(failure.status, Status::kFailed);
  EXPECT_EQ(failure.failure, Failure::kNoSuchFile);
  EXPECT_EQ(failure.moduleResult, std::nullopt);
}

TEST(OpenInput, UsesMemoryInPlace) {
  const std::string bytes = "contents";
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  Result failure;
  OpenInput input = OpenInput::open(Input::memory({data, bytes.size()}), kScratch, failure);
  EXPECT_EQ(input.takeStore()->inMemory().data(), data);
}

TEST(OpenInput, ReadsAStreamToItsEnd) {
  std::istringstream stream(std::string(200000, 's'));
  Result failure;
  OpenInput input = OpenInput::open(Input::stream(stream), kScratch, failure);
  EXPECT_EQ(contents(input), std::string(200000, 's'));
}

TEST(OpenInput, ReportsAStreamThatBreaks) {
  struct Broken : std::streambuf {
    int underflow() override { throw std::runtime_error("broken"); }
  } buffer;
  std::istream stream(&buffer);
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::stream(stream), kScratch, failure));
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
  OpenInput input = OpenInput::open(Input::callback(read), kScratch, failure);
  EXPECT_EQ(contents(input), "ababab");
}

TEST(OpenInput, LetsWhatACallbackThrowsPass) {
  const auto read = [](void*, std::size_t) -> std::size_t { throw std::logic_error("mine"); };
  Result failure;
  EXPECT_THROW(OpenInput::open(Input::callback(read), kScratch, failure), std::logic_error);
}

TEST(OpenInput, ReportsThatScratchSpaceCannotBeHad) {
  std::istringstream stream(std::string(2 * kScratch, 's'));
  ::setenv("TMPDIR", "/no/such/folder", 1);
  Result failure;
  EXPECT_FALSE(OpenInput::open(Input::stream(stream), kScratch, failure));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(failure.status, Status::kFailed);
}

}  // namespace
}  // namespace dorvex
