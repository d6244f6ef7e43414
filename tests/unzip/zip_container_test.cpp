// What the container module makes of zips, sound and hostile ones.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "loaded_module.h"
#include "support/package_writer.h"
#include "support/self_containing_zip.h"
#include "support/zip_bytes.h"

namespace dorvex::zip_container_test {
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
  bool openLimited(const std::string& bytes) {
    close();
    io.bytes = bytes;
    container_ = module_.openLimited(&io, &limits);
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
  UnzipLimits limits;

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

TEST_F(ZipContainerTest, ExtractsDeflatedMembersOfManyBlocks) {
  std::string large;
  for (int i = 0; i < 100000; ++i) large += std::to_string(i * 7919 % 10007);
  ASSERT_TRUE(open(zip({{"a", large, true}, {"b", large + "x", true}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, large);
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, large + "x");
}

// The end record, what may stand before it, the directory; libzip, too, would read them.
TEST_F(ZipContainerTest, ReadsThePlainDirectoryOnce) {
  const std::string bytes = zip({{"a", std::string(100000, 'x')}, {"b", "2"}});
  io.reads = 0;
  ASSERT_TRUE(open(bytes));
  EXPECT_LE(io.reads, 3);
}

TEST_F(ZipContainerTest, TakesDeflatedDataThatLackOnlyTheMarkOfTheirEnd) {
  // One block with codes that the format fixes: "a", and the end cut off.
  const std::string cut = "\x4B\x04";
  const auto member = [&](std::uint32_t crc) {
    return rawZip({{.name = "a", .contents = cut, .method = 8, .crc = crc, .size = 1}});
  };
  ASSERT_TRUE(open(member(crcOf("a"))));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "a");
  ASSERT_TRUE(open(member(crcOf("b"))));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, ExtractsAZipThatIsItsOwnMember) {
  const std::string bytes = selfContainingZip();
  ASSERT_TRUE(openLimited(bytes));
  EXPECT_EQ(names(), std::vector<std::string>{"Index.zip"});
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, bytes);
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

TEST_F(ZipContainerTest, ShowsANameThatTheRecordCannotHoldCutAndMarked) {
  ASSERT_TRUE(open(rawZip({{std::string(1048, 'n'), "1"}, {"b", "2"}})));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.name, std::string(1044, 'n') + "...");
  EXPECT_EQ(info(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, RefusesSuchANameWhereItsEndCounts) {
  for (const char* end : {".iwa", "Index.zip"}) {
    ASSERT_TRUE(open(rawZip({{std::string(1048, 'n') + end, "1"}, {"b", "2"}})));
    EXPECT_EQ(info(0), VN_CONTAINER_DAMAGED);
    EXPECT_STREQ(entry.name, "");
    EXPECT_EQ(entry.size, 0u);
    EXPECT_EQ(info(1), VN_CONTAINER_OK);
  }
}

TEST_F(ZipContainerTest, TakesNamesThatAreMarkedAsUtf8AndAreNot) {
  constexpr std::uint16_t kUtf8 = 1U << 11;
  for (const std::string& name : {"Data/\xFF\xFE.jpg"s, "Data/\x01.jpg"s, "Data/\xC3.jpg"s}) {
    ASSERT_TRUE(open(rawZip({{.name = name, .contents = "picture", .flags = kUtf8},
                             {.name = "Index/Document.iwa", .contents = "text", .flags = kUtf8}})));
    EXPECT_EQ(info(0), VN_CONTAINER_OK);
    EXPECT_EQ(entry.name, name);
    EXPECT_EQ(extract(0), VN_CONTAINER_OK);
    EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  }
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
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .size = 8000}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, ReportsDataThatGoesOnBeyondTheFile) {
  ASSERT_TRUE(open(
      rawZip({{.name = "a", .contents = "contents", .size = 90000, .compressedSize = 90000}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
}

TEST_F(ZipContainerTest, StatesTheLargestSizeForAMemberBeyondTheRecordAndDoesNotExtractIt) {
  const std::uint64_t size = std::uint64_t{5} << 30;
  ASSERT_TRUE(open(
      rawZip({{.name = "movie", .contents = "x", .size = 0xFFFFFFFF, .extra = zip64Field({size})},
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

// --- Shapes of zips ---

TEST_F(ZipContainerTest, OpensAZipWithBytesBehindItsEnd) {
  for (const std::size_t trailing : {1u, 22u, 1000u, 65535u}) {
    ASSERT_TRUE(open(zip({{"a", "contents"}}) + std::string(trailing, 'x'))) << trailing;
    EXPECT_EQ(extract(0), VN_CONTAINER_OK);
    EXPECT_EQ(out.bytes, "contents");
  }
  EXPECT_FALSE(open(zip({{"a", "contents"}}) + std::string(65536, 'x')));
}

TEST_F(ZipContainerTest, OpensAZipBehindAPrefixThatItsOffsetsCount) {
  const std::string prefix = "#!/bin/sh\nexit\n";
  ASSERT_TRUE(open(prefix + rawZip({{"a", "contents"}, {"b", "2"}}, {}, prefix.size())));
  EXPECT_EQ(names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "contents");
}

TEST_F(ZipContainerTest, DoesNotOpenAZipBehindAPrefixThatItsOffsetsDoNotCount) {
  EXPECT_FALSE(open("prefix" + rawZip({{"a", "contents"}})));
}

TEST_F(ZipContainerTest, OpensAZip64) {
  const std::string contents = "contents";
  ASSERT_TRUE(open(rawZip64({{.name = "a",
                              .contents = contents,
                              .size = 0xFFFFFFFF,
                              .compressedSize = 0xFFFFFFFF,
                              .extra = zip64Field({contents.size(), contents.size()})},
                             {"b", "2"}})));
  EXPECT_EQ(names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(info(0), VN_CONTAINER_OK);
  EXPECT_EQ(entry.size, contents.size());
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, contents);
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, ListsMembersOfTheSameNameEach) {
  ASSERT_TRUE(open(rawZip({{"a", "first"}, {"a", "second"}})));
  EXPECT_EQ(names(), (std::vector<std::string>{"a", "a"}));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "first");
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "second");
}

TEST_F(ZipContainerTest, GivesAbsoluteNamesAndThoseThatLeadUpAsTheyStand) {
  const std::vector<std::string> given = {
      "/etc/passwd", "../Index/Document.iwa", "a/../../b", "C:\\Index\\a.iwa", "./a", ""};
  std::vector<RawMember> members;
  for (const std::string& name : given) members.push_back({name, "x"});
  ASSERT_TRUE(open(rawZip(members)));
  EXPECT_EQ(names(), given);
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
}

RawMember described(const std::string& behind) {
  return {.name = "a",
          .contents = "contents",
          .flags = 8,
          .behind = behind,
          .inLocal = [](auto& local) {
            local.crc = 0;
            local.size = 0;
            local.compressedSize = 0;
          }};
}

TEST_F(ZipContainerTest, TakesDataDescriptorsInAllTheirForms) {
  for (const bool isSigned : {false, true}) {
    for (const int width : {4, 8}) {
      ASSERT_TRUE(open(rawZip({described(descriptor("contents", isSigned, width)), {"b", "2"}})));
      EXPECT_EQ(extract(0), VN_CONTAINER_OK) << isSigned << width;
      EXPECT_EQ(out.bytes, "contents");
    }
  }
}

TEST_F(ZipContainerTest, RefusesADataDescriptorThatSaysSomethingElseOrIsNotThere) {
  std::string wrong = descriptor("contents");
  wrong[5] ^= 1;
  for (const std::string& behind :
       {wrong, descriptor("other contents"), std::string(), descriptor("contents").substr(0, 15)}) {
    ASSERT_TRUE(open(rawZip({described(behind), {"b", "2"}})));
    EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
    EXPECT_EQ(out.bytes, "");
    EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  }
}

// --- Members that share bytes, headers that differ ---

TEST_F(ZipContainerTest, RefusesMembersThatShareALocalHeader) {
  ASSERT_TRUE(open(rawZip({{"a", "contents"}, {"b", "2"}}, {0, 0, 1})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(extract(1), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(extract(2), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "2");
}

// The inner member's header and data are the data of the outer one.
TEST_F(ZipContainerTest, RefusesAMemberWithinAnotherAndTheOneAroundIt) {
  const std::string inner = rawZip({{"inner", "contents"}}).substr(0, 30 + 5 + 8);
  ASSERT_TRUE(open(rawZip({{"outer", inner + "more"},
                           {.name = "inner", .contents = "contents", .offset = 30 + 5},
                           {"next", "2"}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(extract(1), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(extract(2), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, RefusesAMemberThatReachesIntoTheNextByTheExtraFieldOfItsLocalHeader) {
  ASSERT_TRUE(open(rawZip({{.name = "a",
                            .contents = "contents",
                            .inLocal = [](auto& local) { local.extra = std::string(4, '\0'); },
                            .offset = {}},
                           {.name = "b", .contents = "2"}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);  // the extra field is really there
  std::string stretched = rawZip({{"a", "contents"}, {"b", "2"}});
  stretched[28] = 4;  // and here it is not
  ASSERT_TRUE(open(stretched));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, RefusesAMemberThatReachesIntoTheCentralDirectory) {
  ASSERT_TRUE(
      open(rawZip({{.name = "a", .contents = "contents", .size = 20, .compressedSize = 20}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(out.bytes, "");
}

TEST_F(ZipContainerTest, RefusesAMemberWhoseOffsetLeadsElsewhere) {
  for (const std::uint32_t offset : {1u, 39u, 1000u, 0xFFFFFFFEu}) {
    ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .offset = offset}})));
    EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED) << offset;
  }
}

TEST_F(ZipContainerTest, RefusesALocalHeaderThatSaysSomethingElse) {
  const std::function<void(RawMember&)> changes[] = {
      [](auto& local) { local.name = "b"; },
      [](auto& local) { local.name = "ab"; },
      [](auto& local) { local.method = 8; },
      [](auto& local) { local.flags = 1; },
      [](auto& local) { local.crc = 1; },
      [](auto& local) { local.size = 7; },
      [](auto& local) { local.compressedSize = 7; },
      [](auto& local) { local.size = 0; },
  };
  for (const auto& change : changes) {
    ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .inLocal = change}})));
    EXPECT_EQ(info(0), VN_CONTAINER_OK);
    EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED) << &change - changes;
    EXPECT_EQ(out.bytes, "");
  }
}

TEST_F(ZipContainerTest, TakesALongExtraFieldOfALocalHeader) {
  std::string field = "xx" + std::string("\xE8\x03", 2) + std::string(1000, 'e');
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "contents", .inLocal = [&](auto& local) {
                              local.extra = field;
                            }}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(out.bytes, "contents");
}

// --- Limits ---

TEST_F(ZipContainerTest, DoesNotOpenAZipOfTooManyMembers) {
  const std::string bytes = zip({{"a", "1"}, {"b", "2"}, {"c", "3"}});
  limits.members = 3;
  EXPECT_TRUE(openLimited(bytes));
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_NONE);
  limits.members = 2;
  EXPECT_FALSE(openLimited(bytes));
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_MEMBERS);
  limits.members = 0;
  EXPECT_TRUE(openLimited(bytes));
}

TEST_F(ZipContainerTest, DoesNotExtractAMemberBeyondItsLimitAndWritesNothingOfIt) {
  limits.memberBytes = 7;
  ASSERT_TRUE(openLimited(zip({{"a", "contents"}, {"b", "content"}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_GENERAL_FAILURE);
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_MEMBER_BYTES);
  EXPECT_EQ(out.bytes, "");
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
}

TEST_F(ZipContainerTest, DoesNotExtractAMemberThatExpandsBeyondItsLimit) {
  const std::string bytes = zip({{"a", std::string(100000, 'x'), true}, {"b", "stored"}});
  limits.expansion = 100;
  ASSERT_TRUE(openLimited(bytes));
  EXPECT_EQ(extract(0), VN_CONTAINER_GENERAL_FAILURE);
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_EXPANSION);
  EXPECT_EQ(out.bytes, "");
  EXPECT_EQ(extract(1), VN_CONTAINER_OK);
  limits.expansion = 0;
  ASSERT_TRUE(openLimited(bytes));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
}

// A limit of 3 to 1, and members of 10 bytes that take 3 and 4.
TEST_F(ZipContainerTest, RoundsTheExpansionUp) {
  limits.expansion = 3;
  for (const std::uint32_t taken : {3u, 4u}) {
    ASSERT_TRUE(openLimited(rawZip({{.name = "a",
                                     .contents = std::string(taken, 'x'),
                                     .method = 8,
                                     .size = 10,
                                     .compressedSize = taken}})));
    EXPECT_EQ(extract(0), taken == 3 ? VN_CONTAINER_GENERAL_FAILURE : VN_CONTAINER_DAMAGED);
  }
}

TEST_F(ZipContainerTest, StopsAMemberThatExpandsFurtherThanItStates) {
  limits.memberBytes = 1000;
  std::string bytes = zip({{"a", std::string(100000, 'x'), true}});
  // Both headers state 1000 bytes.
  for (const std::size_t at : {std::size_t{22}, bytes.find("PK\x01\x02") + 24}) {
    bytes[at] = '\xE8';
    bytes[at + 1] = '\x03';
    bytes[at + 2] = '\0';
  }
  ASSERT_TRUE(openLimited(bytes));
  EXPECT_EQ(extract(0), VN_CONTAINER_DAMAGED);
  EXPECT_LE(out.bytes.size(), 1000u);
}

TEST_F(ZipContainerTest, CountsWhatAllContainersOfARecordWrite) {
  limits.totalBytes = 10;
  ASSERT_TRUE(openLimited(zip({{"a", "four"}, {"b", "seven.."}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(limits.writtenBytes, 4u);
  EXPECT_EQ(extract(1), VN_CONTAINER_GENERAL_FAILURE);
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_TOTAL_BYTES);
  ASSERT_TRUE(openLimited(zip({{"c", "six..."}, {"d", "x"}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_OK);
  EXPECT_EQ(extract(1), VN_CONTAINER_GENERAL_FAILURE);
}

TEST_F(ZipContainerTest, KeepsToTheDefaultsThroughThePlainEntryPoint) {
  const std::uint64_t beyond = UnzipLimits{}.memberBytes + 1;
  ASSERT_TRUE(open(rawZip({{.name = "a",
                            .contents = std::string(1 << 20, 'x'),
                            .method = 8,
                            .size = static_cast<std::uint32_t>(beyond)}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_GENERAL_FAILURE);
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "x", .method = 8, .size = 1101}})));
  EXPECT_EQ(extract(0), VN_CONTAINER_GENERAL_FAILURE);
  ASSERT_TRUE(open(rawZip({{.name = "a", .contents = "x", .method = 8, .size = 1100}})));
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
}  // namespace dorvex::zip_container_test
