// What the container module makes of zips, sound and hostile ones.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "loaded_module.h"
#include "support/package_writer.h"
#include "zip_bytes.h"

namespace dorvex {
namespace {

using namespace testing;
using namespace std::string_literals;

class ZipContainerTest : public ::testing::Test {
 protected:
  ~ZipContainerTest() override { close(); }

  bool open(const std::string& bytes) {
    close();
    io.bytes = bytes;
    container_ = module_.interface.OpenContainer(&io, nullptr, 0);
    return container_ != nullptr;
  }
  void close() {
    if (container_ != nullptr) module_.interface.CloseContainer(container_);
    container_ = nullptr;
  }
  int count() { return module_.interface.GetEntryCount(container_); }
  int info(int index) {
    std::memset(&entry, 0xA5, sizeof entry);
    return module_.interface.GetEntryInfo(container_, index, &entry);
  }
  int extract(int index) {
    out.bytes.clear();
    return module_.interface.ExtractEntry(container_, index, &out);
  }
  std::vector<std::string> names() {
    std::vector<std::string> names;
    for (int index = 0; index < count(); ++index) {
      EXPECT_EQ(info(index), VN_CONTAINER_OK);
      names.emplace_back(entry.name);
    }
    return names;
  }

  MemoryObject io;
  MemoryObject out;
  ContainerEntryInfo entry;

 private:
  LoadedModule module_;
  void* container_ = nullptr;
};

TEST_F(ZipContainerTest, ListsAndExtractsStoredAndDeflatedMembers) {
  const std::string large(300000, 'x');
  ASSERT_TRUE(open(zip({{"a", "stored"}, {"Index/b.iwa", large, true}, {"c", ""}})));
  EXPECT_EQ(names(), (std::vector<std::string>{"a", "Index/b.iwa", "c"}));
  EXPECT_EQ(info(1), VN_CONTAINER_OK);
  EXPECT_EQ(entry.size, 300000u);
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, large);
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "stored");
  EXPECT_EQ(extract(2), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "");
}

TEST_F(ZipContainerTest, GoesByTheCentralDirectorysOrder) {
  ASSERT_TRUE(open(rawZip({{"a", "1"}, {"b", "2"}, {"c", "3"}}, {2, 0, 1})));
  EXPECT_EQ(names(), (std::vector<std::string>{"c", "a", "b"}));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "3");
}

TEST_F(ZipContainerTest, AnswersTheSameEachTimeAlsoAfterAnExtraction) {
  ASSERT_TRUE(open(zip({{"a", "1"}, {"b", "22"}})));
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(info(1), VN_CONTAINER_OK);
    EXPECT_STREQ(entry.name, "b");
    EXPECT_EQ(entry.size, 2u);
    EXPECT_EQ(extract(1), VN_CONTAINER_OK);
    EXPECT_EQ(out.bytes, "22");
  }
}

TEST_F(ZipContainerTest, OpensAZipWithoutMembers) {
  ASSERT_TRUE(open(rawZip({})));
  EXPECT_EQ(count(), 0);
}

TEST_F(ZipContainerTest, DoesNotOpenWhatIsNoZip) {
  EXPECT_FALSE(open(""));
  EXPECT_FALSE(open("no zip at all"));
  const std::string whole = zip({{"a", "contents"}});
  EXPECT_FALSE(open(whole.substr(0, whole.size() - 10)));
}

TEST_F(ZipContainerTest, OpensAZipWithAComment) {
  std::string commented = zip({{"a", "contents"}});
  commented[commented.size() - 2] = 5;
  ASSERT_TRUE(open(commented + "hello"));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "contents");
}

TEST_F(ZipContainerTest, ReadsThroughShortReadsOfAnyLength) {
  const std::string bytes = zip({{"a", std::string(5000, 'x'), true}, {"b", "stored"}});
  for (const std::size_t longest : {1u, 2u, 7u, 100u, 4096u}) {
    io.longestRead = longest;
    ASSERT_TRUE(open(bytes)) << longest;
    EXPECT_EQ(extract(0), VN_CONTAINER_OK);
    EXPECT_EQ(out.bytes, std::string(5000, 'x'));
    EXPECT_EQ(extract(1), VN_CONTAINER_OK);
    EXPECT_EQ(out.bytes, "stored");
  }
}

TEST_F(ZipContainerTest, DoesNotReadTheMembersThatAreNotExtracted) {
  ASSERT_TRUE(open(zip({{"large", std::string(10 << 20, 'x')}, {"b", "2"}})));
  const int before = io.reads;
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  EXPECT_LT(io.reads - before, 10);
}

TEST_F(ZipContainerTest, ListsADirectoryAsAMemberOfNoBytes) {
  ASSERT_TRUE(open(rawZip({{"Index/", ""}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_STREQ(entry.name, "Index/");
  EXPECT_EQ(entry.size, 0u);
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "");
}

TEST_F(ZipContainerTest, GivesANameAsItsBytesStand) {
  const std::string name = "Data/caf\xE9\xFF.jpg";
  ASSERT_TRUE(open(rawZip({{name, "1"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.name, name);
}

TEST_F(ZipContainerTest, TakesANameThatJustFitsTheRecord) {
  const std::string name(1047, 'n');
  ASSERT_TRUE(open(rawZip({{name, "1"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.name, name);
}

TEST_F(ZipContainerTest, RefusesANameThatTheRecordCannotHold) {
  ASSERT_TRUE(open(rawZip({{std::string(1048, 'n'), "1"}, {"b", "2"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_DAMAGED);
  EXPECT_STREQ(entry.name, "");
  EXPECT_EQ(entry.size, 0u);
  EXPECT_EQ(info(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, ShowsANulInANameAsABlankSoThatItCutsNothing) {
  ASSERT_TRUE(open(rawZip({{"Index/Document.iwa\0.jpg"s, "1"}, {"\0"s, "2"}})));
  EXPECT_EQ(names(), (std::vector<std::string>{"Index/Document.iwa .jpg", " "}));
}

TEST_F(ZipContainerTest, TakesOtherControlCharactersInAName) {
  const std::string name = "a\x01\x1F\x7F z";
  ASSERT_TRUE(open(rawZip({{name, "1"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.name, name);
}

TEST_F(ZipContainerTest, RefusesAnIndexThatIsNotThere) {
  ASSERT_TRUE(open(zip({{"a", "1"}})));
  for (const int index : {-1, 1, 1000, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(info(index), VN_CONTAINER_INVALID_ARGUMENT);
    EXPECT_EQ(extract(index), VN_CONTAINER_INVALID_ARGUMENT);
  }
}

TEST_F(ZipContainerTest, ReportsAnEncryptedMember) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = std::string(20, 'x'), .flags = 1}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(extract(0), VN_CONTAINER_ENCRYPTED);
}

TEST_F(ZipContainerTest, ReportsACompressionThatIsNotSupported) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "x", .method = 98}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(extract(0), VN_CONTAINER_COMPRESSION_NOT_SUPPORTED);
}

TEST_F(ZipContainerTest, ReportsAWrongChecksum) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .crc = 1}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, ReportsDataThatCannotBeExpanded) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "\x07 no deflate", .method = 8}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, NeverWritesMoreThanTheStatedSizeAndReportsTheExcess) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .size = 3}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_LE(out.bytes.size(), entry.size);
}

TEST_F(ZipContainerTest, ReportsAMemberThatIsShorterThanStated) {
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .size = 9}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .size = 0xFFFFFFFE}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, ReportsDataThatGoesOnBeyondTheFile) {
  if (!open(rawZip(
          {{.name = "a", .contents = "contents", .size = 90000, .compressedSize = 90000}}))) {
    return;  // refused as a whole, which is as well
  }
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, StatesTheLargestSizeForAMemberBeyondTheRecordAndDoesNotExtractIt) {
  const std::uint64_t size = std::uint64_t{5} << 30;
  ASSERT_TRUE(
      open(rawZip({{.name = "movie", .contents = "x", .size = 0xFFFFFFFF, .extra = zip64Size(size)},
                   {.name = "b", .contents = "2"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.size, 0xFFFFFFFFu);
  EXPECT_EQ(extract(0), VN_CONTAINER_GENERAL_FAILURE);
  EXPECT_EQ(out.bytes, "");
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, ReportsAStreamThatTakesLessThanItIsGiven) {
  ASSERT_TRUE(open(zip({{"a", "contents"}})));
  out.capacity = 5;
  EXPECT_EQ(extract(0), VN_CONTAINER_WRITE_FAILURE);
  out.Write = nullptr;
  EXPECT_EQ(extract(0), VN_CONTAINER_WRITE_FAILURE);
}

TEST_F(ZipContainerTest, WritesOnWhereAStreamTakesLittleAtATime) {
  ASSERT_TRUE(open(zip({{"a", "contents"}})));
  out.longestWrite = 3;
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "contents");
}

TEST_F(ZipContainerTest, ReportsADocumentThatCanNoLongerBeRead) {
  ASSERT_TRUE(open(zip({{"a", std::string(100000, 'x')}})));
  io.Read = [](_VPTPIOobj*, void*, std::uint32_t) { return 0; };
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

// Whatever one byte becomes: either the status is not 0, or what was written is
// as long as the record says.
TEST_F(ZipContainerTest, HoldsItsPromiseForEveryDamagedByte) {
  const std::string whole = rawZip({{"Index/a.iwa", "first contents"}, {"b", "second"}}) + ""s;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(bytes[at] ^ flip);
      if (!open(bytes)) continue;
      for (int index = 0; index < std::min(count(), 10); ++index) {
        if (info(index) != VN_CONTAINER_OK) continue;
        const std::uint32_t size = entry.size;
        if (extract(index) == VN_CONTAINER_OK) {
          ASSERT_EQ(out.bytes.size(), size) << at;
        }
      }
    }
  }
}

}  // namespace
}  // namespace dorvex
