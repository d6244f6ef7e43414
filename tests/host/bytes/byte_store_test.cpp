#include "bytes/byte_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::byte_store_test {
namespace {

using testing::TemporaryDirectory;
using testing::writeFile;

std::span<const unsigned char> bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string readAt(ByteStore& store, std::uint64_t offset, std::size_t count) {
  std::string bytes(count, '?');
  const auto got = store.readAt(offset, bytes.data(), count);
  return got < 0 ? "failed" : bytes.substr(0, static_cast<std::size_t>(got));
}

int openFiles() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    count += entry.path().empty() ? 0 : 1;
  }
  return count;
}

TEST(MemoryStore, GivesTheBytesWithoutCopyingThem) {
  const std::string bytes = "0123456789";
  const auto store = makeMemoryStore(bytesOf(bytes));
  EXPECT_EQ(store->size(), 10u);
  EXPECT_EQ(readAt(*store, 3, 4), "3456");
  EXPECT_EQ(readAt(*store, 8, 4), "89");
  EXPECT_EQ(readAt(*store, 10, 4), "");
  EXPECT_EQ(readAt(*store, ~std::uint64_t{0}, 4), "");
  EXPECT_EQ(static_cast<const void*>(store->inMemory().data()), bytes.data());
}

TEST(MemoryStore, CannotBeWritten) {
  EXPECT_FALSE(makeMemoryStore({})->append("x", 1));
  EXPECT_EQ(errno, EBADF);
}

TEST(FileStore, ReadsAtAnyPlaceAndEndsWhereTheFileEndedWhenItWasOpened) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "file";
  writeFile(path, "0123456789");
  const auto store = makeFileStore(UniqueFd(::open(path.c_str(), O_RDONLY)));
  writeFile(path, "0123456789 and more");
  EXPECT_EQ(store->size(), 10u);
  EXPECT_EQ(readAt(*store, 8, 100), "89");
  EXPECT_EQ(readAt(*store, 12, 100), "");
  EXPECT_TRUE(store->inMemory().empty());
}

TEST(FileStore, ReportsAFailedRead) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "file";
  writeFile(path, "0123456789");
  const auto store = makeFileStore(UniqueFd(::open(path.c_str(), O_WRONLY)));
  EXPECT_EQ(readAt(*store, 0, 4), "failed");
  EXPECT_EQ(errno, EBADF);
}

TEST(FileStore, IsNullForABadDescriptor) { EXPECT_EQ(makeFileStore(UniqueFd()), nullptr); }

TEST(ScratchStore, StaysInMemoryUpToItsLimitExactly) {
  const auto store = makeScratchStore(10);
  const int before = openFiles();
  EXPECT_TRUE(store->append("01234", 5));
  EXPECT_TRUE(store->append("56789", 5));
  EXPECT_EQ(store->inMemory().size(), 10u);
  EXPECT_EQ(openFiles(), before);
}

TEST(ScratchStore, MovesEverythingToAFileWithoutANameBeyondItsLimit) {
  const TemporaryDirectory folder;
  ::setenv("TMPDIR", folder.path().c_str(), 1);
  const auto store = makeScratchStore(10);
  const int before = openFiles();
  EXPECT_TRUE(store->append("0123456789", 10));
  EXPECT_TRUE(store->append("abc", 3));
  EXPECT_TRUE(store->append("def", 3));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(openFiles(), before + 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_TRUE(store->inMemory().empty());
  EXPECT_EQ(store->size(), 16u);
  EXPECT_EQ(readAt(*store, 8, 100), "89abcdef");
}

TEST(ScratchStore, ReportsThatNoFileCanBeHad) {
  ::setenv("TMPDIR", "/no/such/folder", 1);
  const auto store = makeScratchStore(2);
  EXPECT_FALSE(store->append("abc", 3));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(store->size(), 0u);
}

}  // namespace
}  // namespace dorvex::byte_store_test
