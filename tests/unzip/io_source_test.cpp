#include "io_source.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "loaded_module.h"

namespace dorvex::unzip::io_source_test {
namespace {

using testing::MemoryObject;

struct FreeSource {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using Source = std::unique_ptr<zip_source_t, FreeSource>;

std::string read(zip_source_t* source, std::size_t count) {
  std::string bytes(count, '?');
  const zip_int64_t got = zip_source_read(source, bytes.data(), count);
  return got < 0 ? "failed" : bytes.substr(0, static_cast<std::size_t>(got));
}

TEST(IoSource, ReadsAndSeeksThroughTheSlots) {
  MemoryObject io("0123456789");
  const Source source(makeIoSource(&io));
  ASSERT_NE(source, nullptr);
  ASSERT_EQ(zip_source_open(source.get()), 0);
  EXPECT_EQ(read(source.get(), 4), "0123");
  EXPECT_EQ(zip_source_tell(source.get()), 4);
  EXPECT_EQ(zip_source_seek(source.get(), -3, SEEK_END), 0);
  EXPECT_EQ(read(source.get(), 100), "789");
  EXPECT_EQ(read(source.get(), 100), "");
  EXPECT_NE(zip_source_seek(source.get(), -1, SEEK_SET), 0);
  EXPECT_NE(zip_source_seek(source.get(), 1, SEEK_END), 0);
}

TEST(IoSource, KeepsItsOwnPlaceWhenTheHostMovesTheObject) {
  MemoryObject io("0123456789");
  const Source source(makeIoSource(&io));
  ASSERT_EQ(zip_source_open(source.get()), 0);
  EXPECT_EQ(read(source.get(), 3), "012");
  io.position = 9;
  EXPECT_EQ(read(source.get(), 3), "345");
}

TEST(IoSource, KnowsItsSize) {
  MemoryObject io("0123456789");
  const Source source(makeIoSource(&io));
  zip_stat_t stat;
  ASSERT_EQ(zip_source_stat(source.get(), &stat), 0);
  EXPECT_EQ(stat.size, 10u);
}

TEST(IoSource, IsNullWithoutTheSlotsThatItNeeds) {
  EXPECT_EQ(makeIoSource(nullptr), nullptr);
  MemoryObject noRead("x"), noSeek("x"), noTell("x");
  noRead.Read = nullptr;
  noSeek.Seek = nullptr;
  noTell.Tell = nullptr;
  EXPECT_EQ(makeIoSource(&noRead), nullptr);
  EXPECT_EQ(makeIoSource(&noSeek), nullptr);
  EXPECT_EQ(makeIoSource(&noTell), nullptr);
}

TEST(IoSource, IsNullForAnEmptyStream) {
  MemoryObject io("");
  EXPECT_EQ(makeIoSource(&io), nullptr);
}

TEST(IoSource, FailsWhereTheObjectDoesNotSeekOrReadAsItShould) {
  MemoryObject stuck("0123456789");
  const Source source(makeIoSource(&stuck));
  ASSERT_EQ(zip_source_open(source.get()), 0);
  stuck.Seek = [](_VPTPIOobj*, std::int64_t, int) { return 0; };
  EXPECT_EQ(read(source.get(), 4), "failed");
  MemoryObject broken("0123456789");
  const Source other(makeIoSource(&broken));
  ASSERT_EQ(zip_source_open(other.get()), 0);
  broken.Read = [](_VPTPIOobj*, void*, std::uint32_t) { return -1; };
  EXPECT_EQ(read(other.get(), 4), "failed");
  broken.Read = [](_VPTPIOobj*, void*, std::uint32_t count) { return static_cast<int>(count) + 1; };
  EXPECT_EQ(read(other.get(), 4), "failed");
}

TEST(IoSource, LetsNothingThatASlotThrowsThroughTheLibrary) {
  MemoryObject io("0123456789");
  const Source source(makeIoSource(&io));
  ASSERT_EQ(zip_source_open(source.get()), 0);
  io.Read = [](_VPTPIOobj*, void*, std::uint32_t) -> int { throw std::runtime_error("mine"); };
  EXPECT_EQ(read(source.get(), 4), "failed");
}

TEST(IoSource, CannotBeWritten) {
  MemoryObject io("0123456789");
  const Source source(makeIoSource(&io));
  EXPECT_NE(zip_source_begin_write(source.get()), 0);
}

}  // namespace
}  // namespace dorvex::unzip::io_source_test
