#include "Tools/formats/vniwork13/iwa_utils.h"

#include <google/protobuf/empty.pb.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <numeric>
#include <string>

#include "TSDArchives.pb.h"
#include "TSPMessages.pb.h"
#include "TSTArchives.pb.h"
#include "TSWPArchives.pb.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/registry.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "support/bare_host.h"
#include "support/guarded_buffer.h"
#include "support/package_writer.h"

namespace vn::iwork13 {
namespace {

using namespace dorvex::testing;
using std::string_literals::operator""s;

constexpr std::uint32_t kBufferSize = 4096;

// Thrown by a scripted Read to leave a loop that does not end. Not derived from
// std::exception, so that nothing on the way swallows it.
struct EnoughReads {};

// Ends the process by SIGALRM unless the call returns within a second. What the
// library logs meanwhile, over and over, is dropped.
void callWithAlarm(const auto& call) {
  static_cast<void>(std::freopen("/dev/null", "w", stderr));
  alarm(1);
  call();
  alarm(0);
}

// Text that Snappy cannot make shorter.
std::string noise(std::size_t size) {
  std::string bytes;
  std::uint32_t state = 12345;
  while (bytes.size() < size) {
    state = state * 1664525 + 1013904223;
    bytes += static_cast<char>(state >> 24);
  }
  return bytes;
}

// A chunk of exactly size bytes, header included, and what it holds.
std::string chunkOfSize(std::size_t size, std::string* contents) {
  // A literal block of n bytes takes its preamble and a byte for each 60.
  std::string text = noise(size);
  while (chunk(literalBlock(text)).size() > size) text.pop_back();
  std::string member = chunk(literalBlock(text));
  // An overlong preamble makes up for sizes that literals cannot give.
  if (member.size() != size) {
    text.pop_back();
    const std::string block = literalBlock(text);
    const std::size_t preamble = encodeVarint(text.size()).size();
    const std::size_t missing = size - 4 - block.size();
    member = chunk(encodeWideVarint(text.size(), static_cast<int>(preamble + missing)) +
                   block.substr(preamble));
  }
  *contents += text;
  return member;
}

// A member in a stream of a host, and a decompresser over a guarded buffer.
class Decompression {
 public:
  explicit Decompression(std::string member, std::uint32_t bufferSize = kBufferSize)
      : buffer_(bufferSize),
        stream(host_.addDocument(std::move(member))),
        decompresser{buffer_.data(), bufferSize, {}, {}, 0, 0} {}

  void read() { decompresser.read(&stream); }

  std::string output() const {
    return {decompresser.objectStream.begin(), decompresser.objectStream.end()};
  }

 private:
  BareHost host_;
  GuardedBuffer buffer_;

 public:
  Stream& stream;
  DataDecompresser decompresser;
};

std::string failureOf(const auto& call) {
  try {
    call();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing thrown";
}

// ---------------------------------------------------------------------------

TEST(DataDecompresser, DecompressesAChunkThatEndsWithTheReadInThatRead) {
  std::string contents;
  const std::string first = chunkOfSize(kBufferSize, &contents);
  ASSERT_EQ(first.size(), kBufferSize);
  Decompression run(first + chunk(compressedBlock("next")));
  run.read();
  EXPECT_EQ(run.output(), contents);
  EXPECT_EQ(run.decompresser.bytesConsumed, kBufferSize);
  EXPECT_TRUE(run.decompresser.pendingChunk.empty());
  run.read();
  EXPECT_EQ(run.output(), contents + "next");
}

TEST(DataDecompresser, CollectsABodyThatSpansThreeReads) {
  std::string contents;
  const std::string member = chunkOfSize(3 * kBufferSize - 100, &contents);
  Decompression run(member);
  run.read();
  EXPECT_EQ(run.decompresser.pendingChunk.size(), kBufferSize - 4);
  EXPECT_EQ(run.decompresser.pendingChunkRemaining, member.size() - kBufferSize);
  EXPECT_EQ(run.decompresser.bytesConsumed, kBufferSize);
  run.read();
  EXPECT_EQ(run.output(), "");
  run.read();
  EXPECT_EQ(run.output(), contents);
  EXPECT_EQ(run.decompresser.bytesConsumed, member.size());
  EXPECT_TRUE(run.decompresser.pendingChunk.empty());
}

TEST(DataDecompresser, TakesShortReads) {
  const std::string member = chunk(compressedBlock("short reads are normal"));
  Decompression run(member);
  run.stream.maxRead = 5;  // never less than a header at a boundary here
  while (run.decompresser.bytesConsumed < member.size()) run.read();
  EXPECT_EQ(run.output(), "short reads are normal");
}

TEST(DataDecompresser, LeavesEverythingAsItIsWhenAReadGivesNothing) {
  Decompression run("");
  run.read();
  EXPECT_EQ(run.decompresser.bytesConsumed, 0U);
  EXPECT_EQ(run.output(), "");
}

TEST(DataDecompresser, AlwaysAsksForTheWholeBuffer) {
  Decompression run(chunk(compressedBlock("x")), 77);
  std::uint32_t asked = 0;
  run.stream.onRead = [&asked](Stream& stream, void* buffer, std::uint32_t count) {
    asked = count;
    return readFromMemory(stream, buffer, count);
  };
  run.read();
  EXPECT_EQ(asked, 77U);
}

TEST(DataDecompresser, TakesTheBodyForAHeaderWhenAHeaderEndsTheRead) {
  std::string contents;
  const std::string member = chunkOfSize(4092, &contents) + chunk(compressedBlock("lost"));
  Decompression run(member);
  run.read();
  EXPECT_EQ(run.decompresser.bytesConsumed, 4096U);
  EXPECT_TRUE(run.decompresser.pendingChunk.empty());
  EXPECT_EQ(run.decompresser.pendingChunkRemaining, compressedBlock("lost").size());
  EXPECT_EQ(failureOf([&] { run.read(); }), "Invalid chunk header");
  EXPECT_EQ(run.decompresser.bytesConsumed, 4096U);
}

TEST(DataDecompresser, DoesNotCountAHeaderThatTheReadCutsShort) {
  for (const std::size_t start : {4093U, 4094U, 4095U}) {
    std::string contents;
    Decompression run(chunkOfSize(start, &contents) + chunk(compressedBlock("lost")));
    run.read();
    EXPECT_EQ(run.output(), contents);
    EXPECT_EQ(run.decompresser.bytesConsumed, start);
    // The next header is taken from the wrong place. What comes of it depends on
    // the bytes there; the chunk is lost in any case.
    failureOf([&] { run.read(); });
    EXPECT_EQ(run.output(), contents);
  }
}

TEST(DataDecompresser, RefusesABadHeaderAndABadBody) {
  Decompression header("\x01\x00\x00\x00"s);
  EXPECT_EQ(failureOf([&] { header.read(); }), "Invalid chunk header");
  EXPECT_EQ(header.decompresser.bytesConsumed, 0U);
  Decompression body(damagedChunk());
  EXPECT_EQ(failureOf([&] { body.read(); }), "Invalid compressed iwa buffer");
  Decompression empty(chunk("", 0));
  EXPECT_EQ(failureOf([&] { empty.read(); }), "Invalid compressed iwa buffer");
}

TEST(DataDecompresser, KeepsTheChunksBeforeOneThatTheMemberCutsOff) {
  const std::string member = chunk(compressedBlock("kept")) + chunk("abc", 1000);
  Decompression run(member);
  run.read();
  EXPECT_EQ(run.output(), "kept");
  EXPECT_EQ(run.decompresser.bytesConsumed, member.size());
  EXPECT_EQ(run.decompresser.pendingChunkRemaining, 997U);
}

TEST(DataDecompresser, DecompressesAPendingChunkThatLacksNothingAndGoesOnWithTheRead) {
  const std::string pending = compressedBlock("complete, ");
  Decompression run(chunk(compressedBlock("and the next")));
  run.decompresser.pendingChunk.assign(pending.begin(), pending.end());
  run.read();
  EXPECT_EQ(run.output(), "complete, and the next");
  EXPECT_EQ(run.decompresser.bytesConsumed, run.stream.contents.size());
  EXPECT_TRUE(run.decompresser.pendingChunk.empty());
}

TEST(DataDecompresser, TakesNoRoomForABodyAheadOfItsBytes) {
  Decompression run(chunk("abc", 0xFFFFFF));
  run.read();
  EXPECT_EQ(run.decompresser.pendingChunkRemaining, 0xFFFFFFU - 3);
  EXPECT_LT(run.decompresser.pendingChunk.capacity(), kBufferSize);
}

TEST(DataDecompresser, AppendsNothingForABlockOfNoBytes) {
  Decompression run("");
  const unsigned char empty[] = {0};
  run.decompresser.decompressChunk(empty, 1);
  EXPECT_EQ(run.output(), "");
}

TEST(DataDecompresser, AppendsABlockToWhatIsThere) {
  Decompression run("");
  for (const std::string text : {"lamp ", "oil"}) {
    GuardedBuffer block(compressedBlock(text));
    run.decompresser.decompressChunk(block.data(), static_cast<std::uint32_t>(block.size()));
  }
  EXPECT_EQ(run.output(), "lamp oil");
}

// ---------------------------------------------------------------------------

std::vector<unsigned char> toBytes(const std::string& stream) {
  return {stream.begin(), stream.end()};
}

void populate(MessageMap& map, const std::string& stream) {
  map.populate(toBytes(stream), getPagesMessage);
}
void populate(MessageMap& map, const std::vector<Archive>& archives) {
  populate(map, objectStream(archives));
}

std::vector<unsigned long long> keysOf(const MessageMap& map) {
  std::vector<unsigned long long> keys;
  for (const auto& [key, message] : entriesOf(map)) keys.push_back(key);
  return keys;
}

using Keys = std::vector<unsigned long long>;

std::string textOf(const google::protobuf::Message* message) {
  const auto* storage = dynamic_cast<const TSWP::StorageArchive*>(message);
  if (storage == nullptr) return "no storage";
  return std::accumulate(storage->text().begin(), storage->text().end(), std::string());
}

// Reads members through a host's stream.
class MemberTest : public ::testing::Test {
 protected:
  void readMember(const std::string& member, std::uint32_t size) {
    GuardedBuffer buffer(kBufferSize);
    Stream& stream = host_.addDocument(member);
    int reads = 0;
    stream.onRead = [this, &reads](Stream& from, void* to, std::uint32_t count) {
      if (++reads > 1000) throw EnoughReads();
      ++reads_;
      return readFromMemory(from, to, count);
    };
    map_.populate(&stream, size, buffer.data(), kBufferSize, getPagesMessage);
  }
  void readMember(const std::string& member) {
    readMember(member, static_cast<std::uint32_t>(member.size()));
  }

  BareHost host_;
  // Held by a pointer, since the map's destructor may throw and a fixture's not.
  std::unique_ptr<MessageMap> owner_ = std::make_unique<MessageMap>();
  MessageMap& map_ = *owner_;
  int reads_ = 0;
};

// Holds the process to little more address space than it has.
class LittleRoom {
 public:
  LittleRoom() {
    ::getrlimit(RLIMIT_AS, &before_);
    rlimit limit = before_;
    limit.rlim_cur = std::stoull(readFile("/proc/self/statm")) * kPage + kRoom;
    ::setrlimit(RLIMIT_AS, &limit);
  }
  ~LittleRoom() { ::setrlimit(RLIMIT_AS, &before_); }
  LittleRoom(const LittleRoom&) = delete;
  LittleRoom& operator=(const LittleRoom&) = delete;

 private:
  static constexpr rlim_t kPage = 4096;
  static constexpr rlim_t kRoom = 256U << 20U;
  rlimit before_{};
};

TEST_F(MemberTest, TakesNoRoomForASizeThatIsOnlyStated) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer takes the address space for itself";
#endif
  const std::string member = iwa({storage(1, {"text"})});
  const LittleRoom room;
  EXPECT_THROW(readMember(member, 0xFFFFFFFF), EnoughReads);
}

TEST_F(MemberTest, ReadsNothingForASizeOfZero) {
  readMember(iwa({storage(1, {"unread"})}), 0);
  EXPECT_TRUE(map_.empty());
  EXPECT_EQ(reads_, 0);
}

TEST_F(MemberTest, AddsTheObjectsOfSeveralChunks) {
  readMember(iwa(objectStream({storage(1, {"one"}), storage(2, {noise(9000)})}), 50));
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
}

TEST_F(MemberTest, AddsNoObjectAtAllWhenALaterChunkIsBad) {
  const std::string good = iwa({storage(1, {"sound"})});
  EXPECT_EQ(failureOf([&] { readMember(good + damagedChunk()); }), "Invalid compressed iwa buffer");
  EXPECT_TRUE(map_.empty());
}

TEST_F(MemberTest, LosesAnIncompleteLastChunkWithoutAnError) {
  readMember(iwa({storage(1, {"whole"})}) + chunk("half", 100));
  EXPECT_EQ(keysOf(map_), (Keys{1}));
}

TEST_F(MemberTest, DecodesWhatTheLastReadBringsBeyondTheSize) {
  readMember(iwa({storage(1, {"stated"})}) + iwa({storage(2, {"beyond"})}), 1);
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
}

TEST_F(MemberTest, NeverEndsForOneToThreeBytesBehindTheLastChunk) {
  for (const std::string& tail : {"\0"s, "\0\0"s, "\0\0\0"s})
    EXPECT_THROW(readMember(iwa({storage(1, {"x"})}) + tail), EnoughReads);
}

TEST_F(MemberTest, NeverEndsWhereTheStreamIsShorterThanStated) {
  const std::string member = iwa({storage(1, {"x"})});
  EXPECT_THROW(readMember(member, static_cast<std::uint32_t>(member.size()) + 1), EnoughReads);
}

// Stand-ins are for the sweep alone.
template <typename Map>
concept HandsOutItsEntries = requires(const Map& map) {
  map.entries();
};
static_assert(!HandsOutItsEntries<MessageMap>);

// A factory that is not one of the registry's, and what it made.
std::vector<google::protobuf::Message*>& foreignInstances() {
  static std::vector<google::protobuf::Message*> instances;
  return instances;
}
google::protobuf::Message* makeForeign(int type) {
  foreignInstances().push_back(getPagesMessage(type));
  return foreignInstances().back();
}

TEST(MessageMap, AsksAForeignFactoryForEachPayloadAndStoresWhatItGives) {
  foreignInstances().clear();
  MessageMap map;
  map.populate(toBytes(objectStream({storage(1, {"one"}), object(2, kUnknownType, ""),
                                     storage(1, {"late"}), storage(3, {"See text: "})})),
               makeForeign);
  ASSERT_EQ(foreignInstances().size(), 4U);
  ASSERT_EQ(keysOf(map), (Keys{1, 3}));
  EXPECT_EQ(entriesOf(map).at(1), foreignInstances()[0]);
  EXPECT_EQ(entriesOf(map).at(3), foreignInstances()[3]);
  EXPECT_EQ(textOf(map.lookup(1)), "one");
  delete foreignInstances()[2];  // refused, and nobody else's
}

TEST(MessageMap, BuildsAnObjectOnceAndKeepsItForLaterLookups) {
  MessageMap map;
  populate(map, {storage(1, {"one"}), storage(2, {"See text: "})});
  for (const unsigned long long identifier : {1, 2}) {
    const google::protobuf::Message* message = map.lookup(identifier);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(map.lookup(identifier), message);
    EXPECT_EQ(message->GetDescriptor(), TSWP::StorageArchive::descriptor());
  }
}

TEST(MessageMap, AddsNothingForAnEmptyStream) {
  MessageMap map;
  populate(map, "");
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0U);
}

TEST(MessageMap, WalksInAscendingOrderOfTheIdentifier) {
  MessageMap map;
  populate(map, {storage(900, {"c"}), storage(1, {"a"}), storage(0xFFFFFFFFFFFFFFFF, {"d"}),
                 storage(30, {"b"})});
  EXPECT_EQ(keysOf(map), (Keys{1, 30, 900, 0xFFFFFFFFFFFFFFFF}));
}

TEST(MessageMap, StoresTheFirstOfTwoKnownMessagesOfAnArchive) {
  MessageMap map;
  populate(map, {{7,
                  {{kStorageType, Wire().bytes(3, "first").str()},
                   {kStorageType, Wire().bytes(3, "second").str()}}},
                 storage(8, {"next"})});
  EXPECT_EQ(keysOf(map), (Keys{7, 8}));
  EXPECT_EQ(textOf(map.lookup(7)), "first");
}

TEST(MessageMap, StoresAKnownMessageBehindAnUnknownOne) {
  MessageMap map;
  populate(map,
           {{7, {{kUnknownType, "whatever"}, {kStorageType, Wire().bytes(3, "known").str()}}}});
  EXPECT_EQ(textOf(map.lookup(7)), "known");
}

TEST(MessageMap, StoresAKnownMessageBehindOneThatFails) {
  MessageMap map;
  // The failure consumes its payload, so the walk stays in step.
  populate(map, {{7,
                  {{kStorageType,
                    "\x1A\x05"
                    "abc"},
                   {kStorageType, Wire().bytes(3, "good").str()}}}});
  EXPECT_EQ(textOf(map.lookup(7)), "good");
}

TEST(MessageMap, KeepsTheObjectOfTheMemberThatComesFirst) {
  MessageMap map;
  populate(map, {storage(7, {"first member"})});
  populate(map, {storage(7, {"second member"}), comment(8, "new")});
  EXPECT_EQ(textOf(map.lookup(7)), "first member");
  EXPECT_EQ(map.size(), 2U);
}

TEST(MessageMap, KeepsTheFirstObjectHoweverEitherOneIsRead) {
  // A text that ends in the sweep's pattern is parsed at once, a plain one later.
  const std::string texts[] = {"plain", "See text: "};
  for (const std::string& first : texts) {
    for (const std::string& second : texts) {
      MessageMap map;
      populate(map, {storage(7, {first + "first", first}), storage(7, {second})});
      EXPECT_EQ(textOf(map.lookup(7)), first + "first" + first);
    }
  }
}

TEST(MessageMap, FilesAnArchiveWithoutIdentifierUnderZero) {
  MessageMap map;
  populate(map, {{std::nullopt, {{kStorageType, Wire().bytes(3, "nameless").str()}}}});
  EXPECT_EQ(keysOf(map), (Keys{0}));
}

TEST(MessageMap, StoresAnEmptyInstanceForAPayloadOfNoBytes) {
  MessageMap map;
  populate(map, {object(7, kStorageType, "")});
  ASSERT_NE(map.lookup(7), nullptr);
  EXPECT_EQ(map.lookup(7)->ByteSizeLong(), 0U);
}

TEST(MessageMap, SkipsTypeZero) {
  MessageMap map;
  populate(map, {object(7, 0, "\xFF\xFF\xFF"), storage(8, {"next"})});
  EXPECT_EQ(keysOf(map), (Keys{8}));
}

TEST(MessageMap, TakesAMissingTypeAndLengthForZero) {
  MessageMap map;
  const std::string header = Wire().varint(1, 7).message(2, Wire()).str();
  populate(map, encodeVarint(header.size()) + header + encodeArchive(storage(8, {"next"})));
  EXPECT_EQ(keysOf(map), (Keys{8}));
}

TEST(MessageMap, PassesOverAnArchiveWithoutMessages) {
  MessageMap map;
  populate(map, {{7, {}}, storage(8, {"next"})});
  EXPECT_EQ(keysOf(map), (Keys{8}));
}

TEST(MessageMap, TakesADiffForAPlainMessage) {
  MessageMap map;
  const std::string payload = Wire().bytes(3, "diff").str();
  const std::string info = Wire()
                               .varint(1, kStorageType)
                               .varint(3, payload.size())
                               .varint(7, 0)
                               .message(9, Wire().bytes(1, "\3"))
                               .str();
  const std::string header = Wire().varint(1, 7).bytes(2, info).str();
  populate(map, encodeVarint(header.size()) + header + payload);
  EXPECT_EQ(textOf(map.lookup(7)), "diff");
}

TEST(MessageMap, StoresAnEmptyInstanceBehindASkipBeyondTheEnd) {
  MessageMap map;
  populate(map,
           {{7, {{kUnknownType, "", 1000000}, {kStorageType, ""}}}, storage(8, {"out of reach"})});
  EXPECT_EQ(keysOf(map), (Keys{7}));
}

TEST(MessageMap, DoesNotSkipANegativeCount) {
  MessageMap map;
  populate(
      map,
      {{7, {{kUnknownType, "", 0x80000000}, {kStorageType, Wire().bytes(3, "same place").str()}}}});
  EXPECT_EQ(textOf(map.lookup(7)), "same place");
}

TEST(MessageMap, ParsesToTheEndOfTheStreamForANegativeLength) {
  MessageMap map;
  const std::string rest = Wire().bytes(3, "two").str();
  populate(map,
           encodeArchive({7, {{kStorageType, Wire().bytes(3, "one ").str(), 0xFFFFFFFF}}}) + rest);
  EXPECT_EQ(textOf(map.lookup(7)), "one two");
}

TEST(MessageMap, ClampsALengthToTheEndOfTheStream) {
  MessageMap map;
  populate(map, {{7, {{kStorageType, Wire().bytes(3, "between fields").str(), 5000}}}});
  EXPECT_EQ(textOf(map.lookup(7)), "between fields");
}

TEST(MessageMap, DropsAPayloadThatTheEndCutsInsideAField) {
  MessageMap map;
  populate(map, encodeArchive({7,
                               {{kStorageType,
                                 "\x1A\x40"
                                 "cut",
                                 66}}}));
  EXPECT_TRUE(map.empty());
}

TEST(MessageMap, EndsWhereTheStreamEndsInsideALengthPrefix) {
  MessageMap map;
  populate(map, encodeArchive(storage(7, {"kept"})) + "\xFF\xFF");
  EXPECT_EQ(keysOf(map), (Keys{7}));
  populate(map, std::string(9, '\xFF'));  // a tenth would be too long and not move
}

TEST(MessageMap, GoesOnFromTheByteWhereAFailedParseStopped) {
  MessageMap map;
  // Field 6 as a tag of wire type 6 fails behind the tag. What follows inside the
  // payload is a whole archive, which a walk that realigned would never see.
  const std::string inner = encodeArchive(storage(70, {"inside a payload"}));
  populate(map, {object(7, kStorageType, "\x36" + inner), storage(8, {"next"})});
  EXPECT_EQ(keysOf(map), (Keys{8, 70}));
}

TEST(MessageMap, GoesOnFromTheByteWhereAFailedHeaderStopped) {
  MessageMap map;
  const std::string inner = encodeArchive(storage(70, {"inside a header"}));
  const std::string header = "\x36" + inner;
  populate(map, encodeVarint(header.size()) + header);
  EXPECT_EQ(keysOf(map), (Keys{70}));
}

TEST(MessageMap, StopsAPayloadAtAnEndGroupTagAndGoesOnBehindIt) {
  MessageMap map;
  const std::string inner = encodeArchive(storage(70, {"behind the end"}));
  populate(map, {object(7, kStorageType, Wire().bytes(3, "before").raw("\x0C" + inner))});
  EXPECT_EQ(keysOf(map), (Keys{7, 70}));
  EXPECT_EQ(textOf(map.lookup(7)), "before");
}

TEST(MessageMap, KeepsWhatCameBeforeAFailureAndEndsWithTheStream) {
  MessageMap map;
  populate(map, encodeArchive(storage(1, {"before"})) +
                    encodeArchive(
                        object(2, kStorageType, "\x1A\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01")) +
                    encodeArchive(storage(3, {"after"})));
  ASSERT_NE(map.lookup(1), nullptr);
  EXPECT_EQ(map.lookup(2), nullptr);
}

TEST(MessageMap, UsesTheLow32BitsOfALengthPrefix) {
  MessageMap map;
  const std::string archive = encodeArchive(storage(7, {"low bits"}));
  const auto headerSize = static_cast<unsigned char>(archive[0]);
  populate(map, encodeVarint(std::uint64_t{5} << 32 | headerSize) + archive.substr(1));
  EXPECT_EQ(keysOf(map), (Keys{7}));
}

TEST(MessageMap, TakesANegativeLengthPrefixForNoLimitOfTheHeader) {
  // An end-group tag ends the header, and the payload stands right behind it.
  const std::string payload = Wire().bytes(3, "no limit").str();
  const std::string info = Wire().varint(1, kStorageType).varint(3, payload.size()).str();
  const std::string header = Wire().varint(1, 7).bytes(2, info).raw("\x0C").str();
  for (const std::uint64_t prefix : {0x80000000U, 0xFFFFFFFFU}) {
    MessageMap map;
    populate(map, encodeVarint(prefix) + header + payload + encodeArchive(storage(8, {"next"})));
    EXPECT_EQ(keysOf(map), (Keys{7, 8}));
    EXPECT_EQ(textOf(map.lookup(7)), "no limit");
  }
}

TEST(MessageMap, ClampsALengthPrefixToTheEndOfTheStream) {
  MessageMap map;
  const std::string archive = encodeArchive({7, {{kStorageType, "", 20}}});
  populate(map, encodeVarint(5000) + archive.substr(1));
  // No byte is left for the payload, which parses all the same.
  ASSERT_NE(map.lookup(7), nullptr);
  EXPECT_EQ(map.lookup(7)->ByteSizeLong(), 0U);
}

TEST(MessageMap, ReadsThePayloadWhereAHeaderEndsBeforeItsLength) {
  MessageMap map;
  const std::string payload = Wire().bytes(3, "inside the length").str();
  const std::string info = Wire().varint(1, kStorageType).varint(3, payload.size()).str();
  const std::string header = Wire().varint(1, 7).bytes(2, info).raw("\0"s).str();
  populate(map, encodeVarint(header.size() + payload.size()) + header + payload);
  EXPECT_EQ(textOf(map.lookup(7)), "inside the length");
}

TEST(MessageMap, PassesOverLengthPrefixesOfZero) {
  MessageMap map;
  populate(map, "\0\0"s + encodeArchive(storage(7, {"between"})) + "\0"s);
  EXPECT_EQ(keysOf(map), (Keys{7}));
}

TEST(MessageMap, DropsAPayloadThatIsNestedDeeperThanAHundredLevels) {
  const auto keysWith = [](int levels) {
    Wire groups;
    for (int level = 0; level < levels; ++level) groups = Wire().group(100, groups);
    MessageMap map;
    populate(map, {storage(1, {"before"}), object(2, kStorageType, groups)});
    return keysOf(map);
  };
  EXPECT_EQ(keysWith(100), (Keys{1, 2}));
  EXPECT_EQ(keysWith(101), (Keys{1}));
}

TEST(MessageMap, LosesALevelForEachFailedEmbeddedMessageOfAStream) {
  // Every broken object fails inside two embedded messages and takes their levels
  // along; the sound one at the end needs two, and finds them only while the
  // broken ones have not used up the hundred.
  const auto keysWith = [](int broken) {
    std::vector<Archive> archives;
    for (int i = 0; i < broken; ++i)
      archives.push_back(object(1, kTableDataListType, "\x1A\x04\x22\x02\x08\x80"));
    archives.push_back(
        object(9, kTableDataListType, Wire().message(3, Wire().message(4, Wire().varint(1, 5)))));
    MessageMap map;
    populate(map, archives);
    return keysOf(map);
  };
  EXPECT_EQ(keysWith(49), (Keys{9}));
  EXPECT_EQ(keysWith(50), (Keys{}));
}

TEST(MessageMap, NeverEndsAtALengthPrefixOfTenContinuationBytes) {
  MessageMap map;
  const std::string stream = std::string(10, '\xFF') + encodeArchive(storage(7, {"never"}));
  EXPECT_EXIT(callWithAlarm([&] { populate(map, stream); }), ::testing::KilledBySignal(SIGALRM),
              "");
}

TEST(MessageMap, ReadsNoMoreThan64MiBOfAStreamAndThenNeverEnds) {
  const std::string filler = Wire().bytes(100, std::string(0x4000000 - 200, 'x')).str();
  std::string stream = encodeArchive(object(1, kUnknownType, filler));
  ASSERT_LT(stream.size(), 0x4000000U);
  MessageMap map;
  populate(map, stream);  // below the limit it ends
  EXPECT_TRUE(map.empty());
  stream += encodeArchive({{}, {{kUnknownType, std::string(400, 'y')}}}) +
            encodeArchive(storage(2, {"beyond"}));
  ASSERT_GT(stream.size(), 0x4000000U);
  EXPECT_EXIT(callWithAlarm([&] { populate(map, stream); }), ::testing::KilledBySignal(SIGALRM),
              "");
}

TEST(MessageMap, FindsExactlyTheKey) {
  MessageMap map;
  EXPECT_EQ(map.lookup(5ULL), nullptr);
  populate(map, {storage(4, {"a"}), storage(6, {"b"})});
  EXPECT_EQ(map.lookup(5ULL), nullptr);
  EXPECT_EQ(map.size(), 2U);  // looking up inserts nothing
  EXPECT_EQ(textOf(map.lookup(6ULL)), "b");
}

TEST(MessageMap, FindsTheObjectOfAReference) {
  MessageMap map;
  populate(map, {storage(0, {"zero"}), storage(6, {"six"})});
  TSP::Reference reference;
  EXPECT_EQ(textOf(map.lookup(reference)), "zero");  // not set: key 0
  reference.set_identifier(6);
  EXPECT_EQ(textOf(map.lookup(reference)), "six");
  EXPECT_EQ(textOf(map.lookup(&reference)), "six");
  EXPECT_EQ(map.lookup(static_cast<const TSP::Reference*>(nullptr)), nullptr);
}

TEST(MessageMap, FindsTheSameObjectEveryTime) {
  MessageMap map;
  populate(map, {storage(6, {"six"})});
  const google::protobuf::Message* const found = map.lookup(6ULL);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(map.lookup(6ULL), found);
  TSP::Reference reference;
  reference.set_identifier(6);
  EXPECT_EQ(map.lookup(reference), found);
  EXPECT_EQ(map.lookup(&reference), found);
  populate(map, {storage(6, {"refused"})});
  EXPECT_EQ(map.lookup(6ULL), found);
  EXPECT_EQ(textOf(found), "six");
}

// A message that tells when it is deleted. It has no fields of its own.
class Witness : public google::protobuf::Message {
 public:
  explicit Witness(int type) : type_(type) {}
  ~Witness() override { deleted().push_back(type_); }

  static std::vector<int>& deleted() {
    static std::vector<int> types;
    return types;
  }

  Message* New(google::protobuf::Arena*) const override { return new Witness(type_); }
  int GetCachedSize() const override { return 0; }
  google::protobuf::Metadata GetMetadata() const override {
    return google::protobuf::Empty::default_instance().GetMetadata();
  }

 private:
  int type_;
};

TEST(MessageMap, DeletesItsObjectsFromTheLowestIdentifierToTheHighest) {
  Witness::deleted().clear();
  {
    MessageMap map;
    map.populate(toBytes(objectStream({object(30, 3, ""), object(10, 1, ""), object(20, 2, "")})),
                 [](int type) -> google::protobuf::Message* { return new Witness(type); });
    EXPECT_EQ(map.size(), 3U);
    EXPECT_TRUE(Witness::deleted().empty());
  }
  EXPECT_EQ(Witness::deleted(), (std::vector<int>{1, 2, 3}));
}

// ---------------------------------------------------------------------------

class UnzipFile : public ::testing::Test {
 protected:
  void walk(const std::vector<Member>& members) { walk(zip(members)); }
  void walk(const std::string& bytes) {
    Stream& document = host_.addDocument(bytes);
    GuardedBuffer buffer(kBufferSize);
    unzipFile(&document, map_, host_.services(), buffer.data(), kBufferSize, getPagesMessage);
  }

  // Whatever happened, nothing that was opened stays open.
  void TearDown() override {
    EXPECT_EQ(host_.openStreams(), 0U);
    EXPECT_EQ(host_.openContainers(), 0);
    EXPECT_EQ(host_.loadedModules(), 0);
    EXPECT_EQ(host_.logged("Close document"), 0);
  }

  std::vector<std::string> lastCalls(std::size_t count) const {
    return {host_.log().end() - static_cast<std::ptrdiff_t>(count), host_.log().end()};
  }

  BareHost host_;
  // Held by a pointer, since the map's destructor may throw and a fixture's not.
  std::unique_ptr<MessageMap> owner_ = std::make_unique<MessageMap>();
  MessageMap& map_ = *owner_;
};

using Calls = std::vector<std::string>;

Member selected(std::uint64_t identifier, const std::string& name = "Index/Document.iwa") {
  return {name, iwa({storage(identifier, {"text of " + name})})};
}

TEST_F(UnzipFile, EndsWithoutAnErrorForAZipOfNoMembers) {
  walk(std::vector<Member>{});
  EXPECT_TRUE(map_.empty());
  EXPECT_EQ(host_.log(), (Calls{"LoadDll unzip.so", "GetDllSymbol unzipGetContainerReaderInterface",
                                "OpenContainer", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, EndsWithoutAnErrorForANegativeCount) {
  host_.entryCount = -1;
  walk({selected(1)});
  EXPECT_TRUE(map_.empty());
}

TEST_F(UnzipFile, AsksForTheCountOnce) {
  host_.onOpenFile = [this](Stream&) { host_.entryCount = 0; };
  walk({selected(1), selected(2, "Index/Slide.iwa")});
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
}

TEST_F(UnzipFile, SelectsTheMembersOfTheEightPrefixes) {
  const std::vector<std::string> names = {"Index/Document.iwa",
                                          "Index/DocumentStylesheet.iwa",
                                          "Document.iwa",
                                          "Index/Tables/Tile-1.iwa",
                                          "Tables/DataList.iwa",
                                          "Index/CalculationEngine.iwa",
                                          "CalculationEngine-1.iwa",
                                          "Index/Slide.iwa",
                                          "Index/SlideMaster.iwa",
                                          "Slide-12.iwa",
                                          "DocumentX/y.iwa"};
  std::vector<Member> members;
  for (const std::string& name : names) members.push_back(selected(members.size() + 1, name));
  walk(members);
  EXPECT_EQ(map_.size(), names.size());
}

TEST_F(UnzipFile, PassesOverAllOtherMembersWithoutExtractingThem) {
  std::vector<Member> members;
  for (const std::string name :
       {"Index/ViewState.iwa", "Metadata/Properties.iwa", "Data/x.iwa", "Pkg/Index/Document.iwa",
        "INDEX/DOCUMENT.IWA", "Index/Document.IWA", "Index/Document.txt", "Index/Tables.iwa",
        "Tables.iwa", "index/Document.iwa", "Index.ZIP", "Index.zip/x", ".iwa"})
    members.push_back(selected(members.size() + 1, name));
  walk(members);
  EXPECT_TRUE(map_.empty());
  EXPECT_EQ(host_.calls(Slot::kExtractEntry), 0);
  EXPECT_EQ(host_.calls(Slot::kOpenFile), 0);
}

TEST_F(UnzipFile, ReadsAMemberInOneScratchStreamOfItsOwn) {
  walk({selected(1)});
  EXPECT_EQ(host_.log(),
            (Calls{"LoadDll unzip.so", "GetDllSymbol unzipGetContainerReaderInterface",
                   "OpenContainer", "GetEntryInfo 0", "OpenFile scratch", "ExtractEntry 0",
                   "Open scratch", "Close scratch", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, FollowsANestedContainerByItsShortPrefixes) {
  walk({{"Index.zip", zip({selected(1, "Document.iwa"), selected(2, "Tables/Tile.iwa"),
                           selected(3, "ViewState.iwa")})}});
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
  // The nested level holds a module and a container of its own.
  EXPECT_EQ(host_.logged("LoadDll unzip.so"), 2);
  EXPECT_EQ(host_.logged("OpenContainer"), 2);
}

TEST_F(UnzipFile, FindsANestedContainerAtAnyDepthAndByTheEndOfItsName) {
  walk({{"Sub/Index.zip", zip({selected(1)})},
        {"NotIndex.zip", zip({{"Index.zip", zip({selected(2)})}})}});
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
}

TEST_F(UnzipFile, ProcessesNestedContainersAndMembersInTheOrderOfTheContainer) {
  const Member nested{"Index.zip", zip({{"Document.iwa", iwa({storage(1, {"nested"})})}})};
  const Member plain{"Document.iwa", iwa({storage(1, {"plain"})})};
  walk({nested, plain});
  EXPECT_EQ(textOf(map_.lookup(1)), "nested");
  MessageMap other;
  Stream& document = host_.addDocument(zip({plain, nested}));
  GuardedBuffer buffer(kBufferSize);
  unzipFile(&document, other, host_.services(), buffer.data(), kBufferSize, getPagesMessage);
  EXPECT_EQ(textOf(other.lookup(1)), "plain");
}

TEST_F(UnzipFile, SkipsAMemberWhoseChunkIsCorrupt) {
  const std::string sound = iwa({storage(2, {"sound chunk of a bad member"})});
  walk({selected(1),
        {"Index/Document-2.iwa", sound + damagedChunk()},
        selected(3, "Index/Document-3.iwa")});
  EXPECT_EQ(keysOf(map_), (Keys{1, 3}));
  EXPECT_EQ(host_.logged("Close scratch"), 3);
}

TEST_F(UnzipFile, ReadsNothingForAnEmptyMember) {
  walk({{"Index/Document.iwa", ""}, selected(2, "Index/Slide.iwa")});
  EXPECT_EQ(keysOf(map_), (Keys{2}));
}

TEST_F(UnzipFile, TakesTheSizeFromTheEntry) {
  host_.statedSizes[0] = 0;
  walk({selected(1)});
  EXPECT_TRUE(map_.empty());
}

TEST_F(UnzipFile, NeverEndsForASizeThatIsTooLarge) {
  host_.statedSizes[0] = 100000;
  host_.onOpenFile = [](Stream& stream) {
    stream.onRead = [reads = 0](Stream& from, void* to, std::uint32_t count) mutable {
      if (++reads > 1000) throw EnoughReads();
      return readFromMemory(from, to, count);
    };
  };
  EXPECT_THROW(walk({selected(1)}), EnoughReads);
}

void expectUnzipError(const auto& call) {
  try {
    call();
    FAIL() << "nothing thrown";
  } catch (const except::reader_init_error& error) {
    EXPECT_STREQ(error.what(), "Vennik error 12: unzip");
    EXPECT_EQ(error.code(), 12);
  }
}

TEST_F(UnzipFile, RaisesOneErrorForEveryFailureToOpenTheContainer) {
  const auto call = [this] { walk({selected(1)}); };
  host_.failAt(Slot::kLoadDll, 1);
  expectUnzipError(call);
  EXPECT_EQ(host_.logged("FreeDll"), 0);
  host_.failAt(Slot::kGetDllSymbol, 1);
  expectUnzipError(call);
  EXPECT_EQ(host_.logged("FreeDll"), 1);
  host_.failAt(Slot::kOpenContainer, 1);
  expectUnzipError(call);
  EXPECT_EQ(host_.logged("FreeDll"), 2);
  EXPECT_EQ(host_.logged("CloseContainer"), 0);
  expectUnzipError([this] { walk("not a zip at all"); });
}

// Whether there is a module to give back is told by its handle, not by the result.
TEST(UnzipFileModule, IsGivenBackWhereItHasAHandleThoughItDidNotLoad) {
  BareHost host;
  host.services()->LoadDll = [](tag_TPVAPIServices*, const char*, void** handle) {
    static int module = 0;
    *handle = &module;
    return 0;
  };
  MessageMap map;
  expectUnzipError([&] { unzipFile(nullptr, map, host.services(), nullptr, 0, getPagesMessage); });
  EXPECT_EQ(host.log(), Calls{"FreeDll"});
}

TEST(UnzipFileModule, IsNotGivenBackWhereItLoadedWithoutAHandle) {
  BareHost host;
  host.services()->LoadDll = [](tag_TPVAPIServices*, const char*, void**) { return 1; };
  Stream& document = host.addDocument(zip({selected(1)}));
  GuardedBuffer buffer(kBufferSize);
  MessageMap map;
  unzipFile(&document, map, host.services(), buffer.data(), kBufferSize, getPagesMessage);
  EXPECT_EQ(keysOf(map), (Keys{1}));
  EXPECT_EQ(host.logged("FreeDll"), 0);
}

TEST_F(UnzipFile, GivesTheModuleBackWhereASlotEndsTheDocumentByAnException) {
  host_.services()->GetDllSymbol = [](tag_TPVAPIServices*, void*, const char*) -> void* {
    throw 42;
  };
  EXPECT_THROW(walk({selected(1)}), int);
  EXPECT_EQ(host_.logged("FreeDll"), 1);
}

TEST_F(UnzipFile, GivesTheModuleBackWhereOpenContainerEndsTheDocumentByAnException) {
  host_.services()->GetDllSymbol = [](tag_TPVAPIServices*, void*, const char*) -> void* {
    const GetContainerReaderInterfaceFunction fill = [](ContainerReaderInterface* interface) {
      interface->OpenContainer = [](_VPTPIOobj*, tag_TPVAPIServices*, int) -> void* { throw 42; };
      return 1;
    };
    return reinterpret_cast<void*>(fill);
  };
  EXPECT_THROW(walk({selected(1)}), int);
  EXPECT_EQ(host_.logged("FreeDll"), 1);
}

// Slots that take something back may end a document by an exception as well. The
// first exception is the one that rises, and what else is held is given back.
TEST(UnzipFileThrowingSlots, LetAnExceptionOfCloseRise) {
  BareHost host;
  host.onOpenFile = [](Stream& stream) { stream.Close = [](_VPTPIOobj*) -> int { throw 42; }; };
  GuardedBuffer buffer(kBufferSize);
  MessageMap map;
  const auto walk = [&](const std::string& bytes) {
    unzipFile(&host.addDocument(bytes), map, host.services(), buffer.data(), kBufferSize,
              getPagesMessage);
  };
  EXPECT_THROW(walk(zip({selected(1), selected(2, "Index/Slide.iwa")})), int);
  EXPECT_EQ(keysOf(map), (Keys{1}));
  EXPECT_THROW(walk(zip({{"Index.zip", zip({selected(3, "Document.iwa")})}})), int);
  host.failAt(Slot::kExtractEntry, host.calls(Slot::kExtractEntry) + 1, 21);
  EXPECT_THROW(walk(zip({selected(4)})), except::archive_fatal_error);
  EXPECT_EQ(host.openContainers(), 0);
  EXPECT_EQ(host.loadedModules(), 0);
}

TEST(UnzipFileThrowingSlots, LetAnExceptionOfCloseContainerRise) {
  BareHost host;
  host.services()->GetDllSymbol = [](tag_TPVAPIServices*, void*, const char*) -> void* {
    const GetContainerReaderInterfaceFunction fill = [](ContainerReaderInterface* interface) {
      interface->OpenContainer = [](_VPTPIOobj* io, tag_TPVAPIServices*, int) -> void* {
        return io;
      };
      interface->GetEntryCount = [](void*) { return 0; };
      interface->CloseContainer = [](void*) -> int { throw 42; };
      return 1;
    };
    return reinterpret_cast<void*>(fill);
  };
  MessageMap map;
  EXPECT_THROW(unzipFile(&host.addDocument(""), map, host.services(), nullptr, 0, getPagesMessage),
               int);
  EXPECT_EQ(host.logged("FreeDll"), 1);
}

TEST(UnzipFileThrowingSlots, LetAnExceptionOfFreeDllRise) {
  BareHost host;
  host.services()->FreeDll = [](tag_TPVAPIServices*, void*) { throw 42; };
  MessageMap map;
  const auto walk = [&](const std::string& bytes) {
    unzipFile(&host.addDocument(bytes), map, host.services(), nullptr, 0, getPagesMessage);
  };
  EXPECT_THROW(walk(zip({})), int);
  EXPECT_THROW(walk("no zip"), except::reader_init_error);
}

// Walks a zip whose streams do not let themselves be closed, while an exception of
// the host's own passes: that one does not end the walk's scopes.
struct WalkInADestructor {
  ~WalkInADestructor() {
    BareHost host;
    host.onOpenFile = [](Stream& stream) { stream.Close = [](_VPTPIOobj*) -> int { throw 42; }; };
    GuardedBuffer buffer(kBufferSize);
    MessageMap map;
    try {
      unzipFile(&host.addDocument(zip({selected(1)})), map, host.services(), buffer.data(),
                kBufferSize, getPagesMessage);
    } catch (int number) {
      *caught = number;
    }
  }
  int* caught;
};

TEST(UnzipFileThrowingSlots, LetAnExceptionOfCloseRiseAlsoWhileTheHostUnwinds) {
  int caught = 0;
  try {
    const WalkInADestructor walk{&caught};
    throw std::string("the host's own");
  } catch (const std::string&) {
  }
  EXPECT_EQ(caught, 42);
}

TEST_F(UnzipFile, RaisesTheSameErrorWithoutServices) {
  expectUnzipError([this] { unzipFile(nullptr, map_, nullptr, nullptr, 0, getPagesMessage); });
}

TEST_F(UnzipFile, RaisesTheClassOfAFailedEntryInfoAndKeepsWhatCameBefore) {
  host_.failAt(Slot::kGetEntryInfo, 3, 33);
  const auto call = [this] {
    walk({selected(1), selected(2, "Index/Slide-1.iwa"), selected(3, "Index/Slide-2.iwa")});
  };
  EXPECT_THROW(call(), except::password_required_error);
  EXPECT_EQ(keysOf(map_), (Keys{1, 2}));
  EXPECT_EQ(lastCalls(2), (Calls{"CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, RaisesTheClassOfAFailedExtraction) {
  host_.failAt(Slot::kExtractEntry, 1, 21);
  EXPECT_THROW(walk({selected(1)}), except::archive_fatal_error);
  EXPECT_EQ(lastCalls(4), (Calls{"ExtractEntry 0", "Close scratch", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, RaisesAGeneralErrorForAStatusWithoutClass) {
  host_.failAt(Slot::kExtractEntry, 1, -7);
  EXPECT_THROW(walk({selected(1)}), except::general_error);
}

TEST_F(UnzipFile, RaisesOutOfCoreWithoutAScratchStream) {
  host_.failAt(Slot::kOpenFile, 1);
  EXPECT_THROW(walk({selected(1)}), except::out_of_core_error);
  EXPECT_EQ(lastCalls(3), (Calls{"OpenFile scratch", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, RaisesBadInputForAScratchStreamThatDoesNotOpen) {
  host_.failAt(Slot::kOpen, 1);
  EXPECT_THROW(walk({selected(1)}), except::bad_input_stream_error);
  host_.onOpenFile = [](Stream& stream) { stream.Open = nullptr; };
  EXPECT_THROW(walk({selected(1)}), except::bad_input_stream_error);
  EXPECT_EQ(lastCalls(3), (Calls{"Close scratch", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, ReadsAScratchStreamWithoutSeekAndTell) {
  host_.onOpenFile = [](Stream& stream) {
    stream.Seek = nullptr;
    stream.Tell = nullptr;
  };
  walk({selected(1)});
  EXPECT_EQ(keysOf(map_), (Keys{1}));
}

TEST(UnzipFileWithoutClose, LeavesAStreamWithoutCloseSlotAlone) {
  BareHost host;
  host.onOpenFile = [](Stream& stream) { stream.Close = nullptr; };
  Stream& document = host.addDocument(zip({selected(1)}));
  GuardedBuffer buffer(kBufferSize);
  MessageMap map;
  unzipFile(&document, map, host.services(), buffer.data(), kBufferSize, getPagesMessage);
  EXPECT_EQ(map.size(), 1U);
  EXPECT_EQ(host.openStreams(), 1U);
}

TEST_F(UnzipFile, LetsTheFailureOfANestedContainerRise) {
  expectUnzipError([this] {
    walk({selected(1), {"Index.zip", "not a zip"}, selected(2, "Index/Slide.iwa")});
  });
  EXPECT_EQ(keysOf(map_), (Keys{1}));
  EXPECT_EQ(lastCalls(4), (Calls{"FreeDll", "Close scratch", "CloseContainer", "FreeDll"}));
}

TEST_F(UnzipFile, SwallowsEveryStandardExceptionOfAMember) {
  int member = 0;
  host_.onOpenFile = [&member](Stream& stream) {
    ++member;
    stream.onRead = [member](Stream& from, void* to, std::uint32_t count) -> int {
      if (member == 1) throw std::bad_alloc();
      if (member == 2) throw except::out_of_core_error();
      return readFromMemory(from, to, count);
    };
  };
  walk({selected(1), selected(2, "Index/Slide-2.iwa"), selected(3, "Index/Slide-3.iwa")});
  EXPECT_EQ(keysOf(map_), (Keys{3}));
}

TEST_F(UnzipFile, LetsAnExceptionOfAnyOtherTypeRise) {
  host_.onOpenFile = [](Stream& stream) {
    stream.onRead = [](Stream&, void*, std::uint32_t) -> int { throw 42; };
  };
  EXPECT_THROW(walk({selected(1)}), int);
  EXPECT_EQ(lastCalls(3), (Calls{"Close scratch", "CloseContainer", "FreeDll"}));
}

}  // namespace
}  // namespace vn::iwork13
