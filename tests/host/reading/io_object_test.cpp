#include "reading/io_object.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::io_object_test {
namespace {

using testing::chunk;
using testing::damagedChunk;
using testing::literalBlock;

std::unique_ptr<ByteStore> storeOf(const std::string& bytes) {
  auto store = makeScratchStore(1 << 20);
  store->append(bytes.data(), bytes.size());
  return store;
}

class IoObjectTest : public ::testing::Test {
 protected:
  IoObject& make(const std::string& bytes, IoObject::Settings settings) {
    object_ = std::make_unique<IoObject>(storeOf(bytes), std::move(settings), seen);
    return *object_;
  }
  static std::string read(IoObject& io, std::uint32_t count) {
    std::string bytes(count, '?');
    return bytes.substr(0, static_cast<std::size_t>(io.Read(&io, bytes.data(), count)));
  }

  Observations seen;
  Quota quota{5, {.members = 0, .depth = 0, .memberBytes = 0, .totalBytes = 0, .expansion = 0}};

 private:
  std::unique_ptr<IoObject> object_;
};

IoObject::Settings chunks(std::string name) {
  return {.content = IoObject::Content::kChunks, .name = std::move(name), .path = ""};
}

TEST_F(IoObjectTest, FillsEverySlotButCloseAndShowsNoPathUnlessItHasOne) {
  IoObject& io = make("", {});
  EXPECT_NE(io.Open, nullptr);
  EXPECT_NE(io.Read, nullptr);
  EXPECT_NE(io.Write, nullptr);
  EXPECT_NE(io.Seek, nullptr);
  EXPECT_NE(io.Tell, nullptr);
  EXPECT_EQ(io.Close, nullptr);
  EXPECT_EQ(io.pathName, nullptr);
  EXPECT_STREQ(make("", {.name = "", .path = "/a/b"}).pathName, "/a/b");
}

TEST_F(IoObjectTest, IsReadyFromTheStartAndReadsToTheEnd) {
  IoObject& io = make("0123456789", {});
  EXPECT_EQ(read(io, 4), "0123");
  EXPECT_EQ(io.Tell(&io), 4);
  EXPECT_EQ(read(io, 100), "456789");
  EXPECT_EQ(read(io, 100), "");
  EXPECT_EQ(read(io, 0), "");
}

TEST_F(IoObjectTest, SeeksFromTheStartAndFromTheEnd) {
  IoObject& io = make("0123456789", {});
  EXPECT_EQ(io.Seek(&io, 0, VN_SEEK_END), 1);
  EXPECT_EQ(io.Tell(&io), 10);
  EXPECT_EQ(io.Seek(&io, -3, VN_SEEK_END), 1);
  EXPECT_EQ(read(io, 100), "789");
  EXPECT_EQ(io.Seek(&io, 2, VN_SEEK_START), 1);
  EXPECT_EQ(read(io, 2), "23");
}

TEST_F(IoObjectTest, StaysWhereItIsOnASeekThatMakesNoSense) {
  IoObject& io = make("0123456789", {});
  io.Seek(&io, 5, VN_SEEK_START);
  EXPECT_EQ(io.Seek(&io, -1, VN_SEEK_START), 0);
  EXPECT_EQ(io.Seek(&io, -11, VN_SEEK_END), 0);
  EXPECT_EQ(io.Seek(&io, INT64_MAX, VN_SEEK_END), 0);
  EXPECT_EQ(io.Seek(&io, 0, 1), 0);
  EXPECT_EQ(io.Tell(&io), 5);
}

TEST_F(IoObjectTest, ReadsWhatWasWrittenFromTheBeginningAfterOpen) {
  IoObject& io = make("", {});
  EXPECT_EQ(io.Write(&io, "abc", 3), 3);
  EXPECT_EQ(io.Write(&io, "def", 3), 3);
  EXPECT_EQ(io.Open(&io), 1);
  EXPECT_EQ(read(io, 100), "abcdef");
}

TEST_F(IoObjectTest, ReadsMemberStreamsInStepWithTheirChunks) {
  const std::string first = chunk(literalBlock(std::string(4019, 'x')));
  ASSERT_EQ(first.size(), 4092u);
  IoObject& io = make(first + chunk(literalBlock("y")), chunks("a.iwa"));
  EXPECT_EQ(read(io, 4096).size(), 4092u);
}

TEST_F(IoObjectTest, ReadsAsAskedForWhenAligningIsOff) {
  const std::string first = chunk(literalBlock(std::string(4019, 'x')));
  auto settings = chunks("a.iwa");
  settings.alignReads = false;
  IoObject& io = make(first + chunk(literalBlock("y")), settings);
  EXPECT_EQ(read(io, 4096).size(), 4096u);
}

TEST_F(IoObjectTest, NotesAnUnsoundMemberStreamOnce) {
  IoObject& io = make(damagedChunk(), chunks("Index/a.iwa"));
  EXPECT_EQ(io.Open(&io), 1);
  EXPECT_EQ(io.Open(&io), 1);
  read(io, 10);
  EXPECT_EQ(seen.unsound,
            (std::vector<SkippedMember>{{"Index/a.iwa", "chunk 1 holds damaged data"}}));
}

TEST_F(IoObjectTest, NotesAnUnsoundMemberStreamThatIsReadWithoutOpen) {
  IoObject& io = make(damagedChunk(), chunks("a.iwa"));
  read(io, 10);
  EXPECT_EQ(seen.unsound.size(), 1u);
}

TEST_F(IoObjectTest, TakesAStreamOfUnknownContentForChunksUnlessItBeginsLikeAZip) {
  const IoObject::Settings unknown{.content = IoObject::Content::kUnknown, .name = "", .path = ""};
  make("PK\x03\x04 and so on", unknown).Open(&make("PK\x03\x04", unknown));
  EXPECT_TRUE(seen.unsound.empty());
  IoObject& io = make("something else", unknown);
  io.Open(&io);
  EXPECT_EQ(seen.unsound.size(), 1u);
}

TEST_F(IoObjectTest, LearnsFromAMembersNameWhatItHolds) {
  IoObject& zip = make("", {.content = IoObject::Content::kUnknown, .name = "", .path = ""});
  zip.receiveMember("Index.zip");
  zip.Write(&zip, "no zip", 6);
  zip.Open(&zip);
  EXPECT_TRUE(seen.unsound.empty());
  IoObject& stream = make("", {.content = IoObject::Content::kUnknown, .name = "", .path = ""});
  stream.receiveMember("Index/Document.iwa");
  stream.Write(&stream, "PK is no chunk", 14);
  stream.Open(&stream);
  EXPECT_EQ(seen.unsound.front().name, "Index/Document.iwa");
}

TEST_F(IoObjectTest, EndsAReaderThatAsksTwiceBehindTheEndOfAMemberStream) {
  IoObject& io = make(chunk(literalBlock("x")), chunks("a.iwa"));
  EXPECT_FALSE(read(io, 4096).empty());
  EXPECT_EQ(read(io, 4096), "");
  EXPECT_EQ(seen.endlessRead, std::nullopt);
  EXPECT_THROW(read(io, 4096), EndlessRead);
  EXPECT_EQ(seen.endlessRead, "a.iwa");
}

TEST_F(IoObjectTest, LetsAReaderAskAtTheEndAgainAfterGoingBack) {
  IoObject& io = make(chunk(literalBlock("x")), chunks("a.iwa"));
  for (int round = 0; round < 3; ++round) {
    io.Seek(&io, 0, VN_SEEK_START);
    EXPECT_FALSE(read(io, 4096).empty());
    EXPECT_EQ(read(io, 4096), "");
  }
}

TEST_F(IoObjectTest, LetsAContainerModuleAskBehindTheEndOfAZip) {
  IoObject& io = make("PK", {});
  read(io, 10);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(read(io, 10), "");
}

TEST_F(IoObjectTest, NotesAReadThatTheSystemRefuses) {
  const testing::TemporaryDirectory folder;
  testing::writeFile(folder.path() / "a", "0123456789");
  IoObject io(makeFileStore(UniqueFd(::open((folder.path() / "a").c_str(), O_WRONLY))),
              {.name = "a", .path = ""}, seen);
  EXPECT_EQ(read(io, 4), "");
  EXPECT_EQ(seen.readFailure, (SystemFailure{"a", EBADF}));
}

TEST_F(IoObjectTest, NotesAWriteThatTheStoreRefuses) {
  IoObject io(makeMemoryStore({}), {.name = "a", .path = ""}, seen);
  EXPECT_EQ(io.Write(&io, "x", 1), 0);
  EXPECT_EQ(seen.scratchFailure, (SystemFailure{"a", EBADF}));
}

std::string chunksOfZeros(std::size_t blocks) {
  const std::string block = chunk(testing::compressedBlock(std::string(1 << 20, '\0')));
  std::string stream;
  for (std::size_t i = 0; i < blocks; ++i) stream += block;
  return stream;
}

TEST_F(IoObjectTest, EndsADocumentBeforeTheReaderWalksAStreamOfMoreThan64MiB) {
  IoObject& io = make(chunksOfZeros(65), chunks("large.iwa"));
  EXPECT_THROW(io.Open(&io), EndlessRead);
  EXPECT_EQ(seen.endlessRead, "large.iwa");
  EXPECT_EQ(seen.unsound,
            (std::vector<SkippedMember>{{"large.iwa", "it holds more than 64 MiB of objects"}}));
}

TEST_F(IoObjectTest, LetsTheReaderHaveAStreamOf64MiBOrOneThatItDrops) {
  IoObject& whole = make(chunksOfZeros(64), chunks("a.iwa"));
  EXPECT_EQ(whole.Open(&whole), 1);
  IoObject& damaged = make(chunksOfZeros(65) + damagedChunk(), chunks("b.iwa"));
  EXPECT_EQ(damaged.Open(&damaged), 1);
  EXPECT_EQ(seen.endlessRead, std::nullopt);
}

TEST_F(IoObjectTest, TakesNothingBeyondItsQuotaAndNotesTheLimit) {
  IoObject& io = make("", {.name = "a", .path = "", .quota = &quota});
  EXPECT_EQ(io.Write(&io, "1234", 4), 4);
  EXPECT_EQ(io.Write(&io, "56", 2), 0);
  EXPECT_EQ(seen.limitPassed, (PassedLimit{Limit::kScratch, 5, "a"}));
  EXPECT_EQ(seen.scratchFailure, std::nullopt);
  EXPECT_EQ(io.size(), 4u);
}

TEST_F(IoObjectTest, GivesItsQuotaBackWhenItIsClosed) {
  for (int round = 0; round < 3; ++round) {
    IoObject io(storeOf(""), {.name = "a", .path = "", .quota = &quota}, seen);
    EXPECT_EQ(io.Write(&io, "1234", 4), 4);
  }
}

}  // namespace
}  // namespace dorvex::io_object_test
