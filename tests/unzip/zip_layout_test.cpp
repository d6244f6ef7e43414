// What is read of a zip's headers; what becomes of it is tested through the
// module.
#include "zip_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "loaded_module.h"
#include "support/zip_bytes.h"

namespace dorvex::unzip {
namespace {

using namespace dorvex::testing;
using Outcome = ZipLayout::Outcome;

Outcome outcomeOf(const std::string& bytes, std::uint64_t mostMembers = 0) {
  MemoryObject io(bytes);
  return ZipLayout(*IoReader::over(&io)).read(mostMembers);
}

std::vector<bool> overlapsOf(const std::vector<RawMember>& members) {
  MemoryObject io(rawZip(members));
  ZipLayout layout(*IoReader::over(&io));
  EXPECT_EQ(layout.read(0), Outcome::kRead);
  std::vector<bool> overlaps;
  for (const ZipEntry& entry : layout.entries()) overlaps.push_back(entry.overlaps);
  return overlaps;
}

TEST(ZipLayout, ReadsEveryFieldOfAMember) {
  MemoryObject io(
      rawZip({{"a", "contents"},
              {.name = "b.iwa", .contents = "xyz", .flags = 8, .method = 8, .size = 99}},
             {1, 0}));
  ZipLayout layout(*IoReader::over(&io));
  ASSERT_EQ(layout.read(0), Outcome::kRead);
  ASSERT_EQ(layout.entries().size(), 2u);
  const ZipEntry& b = layout.entries()[0];
  EXPECT_EQ(b.offset, 30u + 1 + 8);
  EXPECT_EQ(b.compressedSize, 3u);
  EXPECT_EQ(b.size, 99u);
  EXPECT_EQ(b.crc, crcOf("xyz"));
  EXPECT_EQ(b.method, 8);
  EXPECT_EQ(b.flags, 8);
  EXPECT_EQ(b.nameLength, 5);
  EXPECT_EQ(b.room, b.offset + 30 + 5 + 3);
  EXPECT_EQ(layout.entries()[1].room, b.offset);
  EXPECT_FALSE(b.overlaps);
}

TEST(ZipLayout, IsNoZipWithoutAnEndRecordOrADirectoryWhereItSays) {
  const std::string whole = rawZip({{"a", "contents"}, {"b", "2"}});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    if (size == 0) continue;
    EXPECT_EQ(outcomeOf(whole.substr(0, size)), Outcome::kNoZip) << size;
  }
  EXPECT_EQ(outcomeOf("x" + whole), Outcome::kNoZip);
  EXPECT_EQ(outcomeOf(whole), Outcome::kRead);
}

TEST(ZipLayout, IsNoZipWhereTheDirectoryHoldsMoreOrLessThanItsCount) {
  for (const char count : {'\0', '\1', '\3'}) {
    std::string bytes = rawZip({{"a", "contents"}, {"b", "2"}});
    bytes[bytes.size() - 12] = count;
    EXPECT_EQ(outcomeOf(bytes), Outcome::kNoZip) << int{count};
  }
}

TEST(ZipLayout, CountsBeforeItReads) {
  const std::string bytes = rawZip({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(outcomeOf(bytes, 2), Outcome::kRead);
  EXPECT_EQ(outcomeOf(bytes, 1), Outcome::kTooManyMembers);
  std::string claims = bytes;
  claims[claims.size() - 12] = '\xFF';
  EXPECT_EQ(outcomeOf(claims, 100), Outcome::kTooManyMembers);
}

TEST(ZipLayout, AllocatesForNoMoreMembersThanTheDirectoryHasRoomFor) {
  std::string bytes = rawZip64({{"a", "1"}});
  const std::size_t count = bytes.find("PK\x06\x06") + 32;
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(count), 8, '\x7F');
  EXPECT_EQ(outcomeOf(bytes), Outcome::kNoZip);
}

TEST(ZipLayout, FindsNoOverlapWhereMembersTouchOrLeaveGaps) {
  EXPECT_EQ(overlapsOf({{"a", "1"}, {.name = "b", .contents = "2", .behind = "gap"}, {"c", ""}}),
            (std::vector<bool>{false, false, false}));
}

TEST(ZipLayout, FindsEveryMemberThatLiesInALongOneAndTheLongOne) {
  const auto member = [](const char* name, std::uint32_t offset) {
    return RawMember{.name = name, .contents = "x", .offset = offset};
  };
  EXPECT_EQ(overlapsOf({{"long", std::string(500, 'x')},
                        member("b", 10),
                        member("c", 100),
                        member("d", 200),
                        {"after", "1"}}),
            (std::vector<bool>{true, true, true, true, false}));
}

TEST(ZipLayout, FindsOverlapsInAChain) {
  const auto member = [](const char* name, std::uint32_t offset) {
    return RawMember{.name = name, .contents = std::string(20, 'x'), .offset = offset};
  };
  EXPECT_EQ(overlapsOf({member("a", 0), member("b", 50), member("c", 100), member("d", 153)}),
            (std::vector<bool>{true, true, true, false}));
}

TEST(ZipLayout, ReadsALongListInFewReadsAndEachLocalHeaderInOne) {
  std::vector<RawMember> members;
  for (int i = 0; i < 3000; ++i) members.push_back({"Index/Tables/Tile-" + std::to_string(i), "x"});
  MemoryObject io(rawZip(members));
  ZipLayout layout(*IoReader::over(&io));
  ASSERT_EQ(layout.read(0), Outcome::kRead);
  EXPECT_LT(io.reads, 10);
  io.reads = 0;
  for (const ZipEntry& entry : layout.entries()) EXPECT_TRUE(layout.findData(entry));
  EXPECT_LE(io.reads, 3000);
}

}  // namespace
}  // namespace dorvex::unzip
