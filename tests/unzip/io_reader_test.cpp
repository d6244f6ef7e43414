#include "io_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "loaded_module.h"

namespace dorvex::unzip::io_reader_test {
namespace {

using testing::MemoryObject;

std::string readAll(IoReader& reader, std::uint64_t offset, std::size_t count) {
  std::string bytes(count, '?');
  return reader.readAll(offset, bytes.data(), count) ? bytes : "failed";
}

TEST(IoReader, ReadsAnywhereThroughShortReadsOfAnyLength) {
  MemoryObject io("0123456789");
  auto reader = IoReader::over(&io);
  ASSERT_TRUE(reader.has_value());
  EXPECT_EQ(reader->size(), 10u);
  for (const std::size_t longest : {1u, 3u, 100u}) {
    io.longestRead = longest;
    EXPECT_EQ(readAll(*reader, 4, 5), "45678");
    EXPECT_EQ(readAll(*reader, 0, 10), "0123456789");
  }
}

TEST(IoReader, ReadsNothingBehindTheEnd) {
  MemoryObject io("0123456789");
  auto reader = IoReader::over(&io);
  char byte = 0;
  EXPECT_EQ(reader->readSome(10, &byte, 1), 0);
  EXPECT_EQ(reader->readSome(UINT64_MAX, &byte, 1), 0);
  EXPECT_EQ(readAll(*reader, 8, 3), "failed");
}

TEST(IoReader, FailsWhereTheObjectDoesNotSeekOrReadAsItShould) {
  MemoryObject io("0123456789");
  auto reader = IoReader::over(&io);
  char bytes[4];
  io.Read = [](_VPTPIOobj*, void*, std::uint32_t) { return -1; };
  EXPECT_EQ(reader->readSome(0, bytes, 4), -1);
  io.Read = [](_VPTPIOobj*, void*, std::uint32_t count) { return static_cast<int>(count) + 1; };
  EXPECT_EQ(reader->readSome(0, bytes, 4), -1);
  io.Seek = [](_VPTPIOobj*, std::int64_t, int) { return 0; };
  EXPECT_EQ(reader->readSome(2, bytes, 4), -1);
}

TEST(IoReader, IsNotThereWithoutTheSlotsThatItNeedsOrWithoutBytes) {
  EXPECT_FALSE(IoReader::over(nullptr).has_value());
  MemoryObject noRead("x"), noSeek("x"), noTell("x"), empty("");
  noRead.Read = nullptr;
  noSeek.Seek = nullptr;
  noTell.Tell = nullptr;
  EXPECT_FALSE(IoReader::over(&noRead).has_value());
  EXPECT_FALSE(IoReader::over(&noSeek).has_value());
  EXPECT_FALSE(IoReader::over(&noTell).has_value());
  EXPECT_FALSE(IoReader::over(&empty).has_value());
}

TEST(IoReader, TakesShortReadsThatLieCloseTogetherFromOne) {
  std::string bytes;
  for (int i = 0; i < 10000; ++i) bytes += static_cast<char>(i % 251);
  MemoryObject io(bytes);
  auto reader = IoReader::over(&io);
  for (std::size_t offset = 0; offset + 30 <= bytes.size(); offset += 30)
    ASSERT_EQ(readAll(*reader, offset, 30), bytes.substr(offset, 30));
  EXPECT_LE(io.reads, 5);
  EXPECT_EQ(readAll(*reader, 10, 5000), bytes.substr(10, 5000));
  EXPECT_EQ(readAll(*reader, 9990, 10), bytes.substr(9990));
  EXPECT_EQ(readAll(*reader, 0, 10), bytes.substr(0, 10));
}

}  // namespace
}  // namespace dorvex::unzip::io_reader_test
