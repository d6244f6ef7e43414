// What is read of a zip's headers; what becomes of it is tested through the
// module.
#include "zip_layout.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <algorithm>
#include <memory>
#include <string>

#include "io_source.h"
#include "loaded_module.h"
#include "support/zip_bytes.h"

namespace dorvex::unzip::zip_layout_test {
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

// --- Plain zips ---

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};

// What libzip reads of the member, against what the layout has.
void expectTheSame(zip_t* archive, zip_uint64_t index, const ZipEntry& entry) {
  zip_stat_t stat;
  ASSERT_EQ(zip_stat_index(archive, index, 0, &stat), 0);
  EXPECT_EQ(stat.size, entry.size);
  EXPECT_EQ(stat.comp_size, entry.compressedSize);
  EXPECT_EQ(stat.crc, entry.crc);
  EXPECT_EQ(stat.comp_method, entry.method);
  EXPECT_EQ(stat.encryption_method, ZIP_EM_NONE);
}

// Whether a zip is plain; libzip must then read the same out of it.
bool isPlain(const std::string& bytes) {
  MemoryObject io(bytes);
  ZipLayout layout(*IoReader::over(&io));
  if (layout.read(0) != Outcome::kRead || !layout.isPlain()) return false;
  std::vector<std::uint64_t> marked;
  for (const ZipEntry& entry : layout.entries()) {
    if ((entry.flags & 1U << 11) != 0) marked.push_back(entry.flagsOffset);
  }
  zip_source_t* source = makeIoSource(&io, marked);
  const std::unique_ptr<zip_t, Discard> archive(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!archive) zip_source_free(source);
  EXPECT_NE(archive, nullptr);
  if (!archive) return true;
  const auto& entries = layout.entries();
  EXPECT_EQ(zip_get_num_entries(archive.get(), 0), static_cast<zip_int64_t>(entries.size()));
  for (zip_uint64_t i = 0; i < entries.size(); ++i) {
    expectTheSame(archive.get(), i, entries[i]);
    std::string name(layout.nameOf(entries[i]));
    std::ranges::replace(name, '\0', ' ');
    EXPECT_EQ(zip_get_name(archive.get(), i, ZIP_FL_ENC_RAW), name);
  }
  return true;
}

const std::string kFewBytes = "UT\x05" + std::string(1, '\0') + "12345";  // an extra field

TEST(ZipLayout, KnowsPlainZips) {
  EXPECT_TRUE(isPlain(rawZip({})));
  EXPECT_TRUE(isPlain(rawZip({{"a", "contents"}, {.name = "", .contents = "x", .method = 8}})));
  EXPECT_TRUE(isPlain(rawZip({{.name = "a", .contents = "contents", .extra = kFewBytes}})));
  EXPECT_TRUE(isPlain(rawZip({{.name = "\xFF", .contents = "x", .flags = 1U << 11}})));
  EXPECT_TRUE(isPlain("#!/bin/sh\n" + rawZip({{"a", "contents"}}, {}, 10)));
  EXPECT_TRUE(isPlain(rawZip({{"a", "contents"}}) + std::string(65535, 'x')));
}

TEST(ZipLayout, LeavesToLibzipWhatMayBeTakenInTwoWays) {
  const auto withExtra = [](const std::string& extra) {
    return rawZip({{.name = "a", .contents = "contents", .extra = extra}});
  };
  EXPECT_FALSE(isPlain(rawZip64({{"a", "contents"}})));
  EXPECT_FALSE(isPlain(withExtra(zip64Field({}))));
  EXPECT_FALSE(isPlain(withExtra(std::string("up\x05\0\1\0\0\0\0", 9))));
  EXPECT_FALSE(isPlain(withExtra(kFewBytes.substr(0, 8))));
  EXPECT_FALSE(isPlain(withExtra(kFewBytes + "x")));
  EXPECT_FALSE(isPlain(rawZip({{.name = "a", .contents = "contents", .flags = 1}})));
  EXPECT_FALSE(isPlain(rawZip({{.name = "a", .contents = "contents", .method = 99}})));
  EXPECT_FALSE(isPlain(rawZip({{.name = "a", .contents = "", .size = 0xFFFFFFFF}})));
  const std::string whole = rawZip({{"a", "contents"}});
  EXPECT_FALSE(isPlain(whole + rawZip({{"b", "2"}}, {}, whole.size())));
  // libzip sees an end record that begins further back than any comment is long.
  EXPECT_FALSE(isPlain("PK\5\6" + std::string(16, '\0') +
                       rawZip({{.name = "a", .contents = std::string(65450, 'x')}}, {}, 20)));
}

TEST(ZipLayout, AgreesWithLibzipOnPlainZipsWhateverOneByteBecomes) {
  const std::string whole =
      rawZip({{"Index/a.iwa", "contents"},
              {.name = "b", .contents = "2", .flags = 1U << 11, .extra = kFewBytes}});
  std::size_t plain = 0;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int flip : {0x01, 0x02, 0x08, 0x80, 0xFF}) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(bytes[at] ^ flip);
      plain += static_cast<std::size_t>(isPlain(bytes));
      ASSERT_FALSE(HasFailure()) << at;
    }
  }
  EXPECT_GT(plain, whole.size());
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
}  // namespace dorvex::unzip::zip_layout_test
