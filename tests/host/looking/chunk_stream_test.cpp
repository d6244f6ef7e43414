#include "looking/chunk_stream.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "looking/object_stream.h"
#include "support/package_writer.h"

namespace dorvex::chunk_stream_test {
namespace {

using testing::chunk;
using testing::damagedChunk;
using testing::literalBlock;

std::unique_ptr<ByteStore> storeOf(const std::string& bytes) {
  auto store = makeScratchStore(bytes.size() + 1);
  store->append(bytes.data(), bytes.size());
  return store;
}

// A chunk of exactly size bytes, header included.
std::string chunkOfSize(std::size_t size) {
  const std::string body(size - 4, 'x');
  return chunk(body);
}

// Where each chunk of a sound stream starts.
std::vector<std::size_t> chunkStarts(const std::string& stream) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at + 4 <= stream.size();) {
    starts.push_back(at);
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(stream[at + i]); };
    at += 4u + byte(1) + (byte(2) << 8u) + (byte(3) << 16u);
  }
  return starts;
}

// The ends of the reads that take the whole stream, count bytes asked for each.
std::vector<std::size_t> readEnds(const std::string& stream, std::size_t count) {
  const auto store = storeOf(stream);
  ChunkAlignedReader reader(*store);
  std::vector<std::size_t> ends;
  std::string all;
  std::string block(count, '\0');
  while (const auto got = reader.readAt(all.size(), block.data(), count)) {
    all.append(block, 0, static_cast<std::size_t>(got));
    ends.push_back(all.size());
  }
  EXPECT_EQ(all, stream);
  return ends;
}

using Ends = std::vector<std::size_t>;

TEST(ChunkAlignedReader, LeavesAReadAloneThatEndsInABody) {
  EXPECT_EQ(readEnds(chunkOfSize(10000), 4096), (Ends{4096, 8192, 10000}));
}

TEST(ChunkAlignedReader, LeavesAReadAloneThatEndsWithAChunk) {
  EXPECT_EQ(readEnds(chunkOfSize(4096) + chunkOfSize(50), 4096), (Ends{4096, 4146}));
}

TEST(ChunkAlignedReader, ShortensAReadThatWouldEndInAHeaderOrBehindIt) {
  for (const std::size_t first : {4095u, 4094u, 4093u, 4092u}) {
    EXPECT_EQ(readEnds(chunkOfSize(first) + chunkOfSize(50), 4096), (Ends{first, first + 50}))
        << first;
  }
  EXPECT_EQ(readEnds(chunkOfSize(4091) + chunkOfSize(50), 4096), (Ends{4096, 4141}));
}

TEST(ChunkAlignedReader, NeverEndsAReadWithinFourBytesOfAChunksStart) {
  std::string stream;
  for (std::size_t i = 0; i < 400; ++i) stream += chunkOfSize(5 + (i * i * 31) % 300);
  const auto starts = chunkStarts(stream);
  for (std::size_t count = 5; count < 700; ++count) {
    for (const std::size_t end : readEnds(stream, count)) {
      for (const std::size_t start : starts) {
        ASSERT_FALSE(end > start && end <= start + 4 && end != stream.size())
            << "count " << count << " end " << end << " start " << start;
      }
    }
  }
}

TEST(ChunkAlignedReader, GivesATailThatIsNoChunkAsItStands) {
  EXPECT_EQ(readEnds(chunkOfSize(100) + std::string(3, '\0'), 4096), (Ends{100, 103}));
}

TEST(ChunkAlignedReader, GivesReadsOfAHeadersSizeAsTheyStand) {
  EXPECT_EQ(readEnds(chunkOfSize(6), 4), (Ends{4, 6}));
}

TEST(ChunkAlignedReader, StopsShorteningBehindABadHeader) {
  EXPECT_EQ(readEnds(chunkOfSize(4000) + "\x01" + std::string(5000, '\0'), 4096),
            (Ends{4096, 8192, 9001}));
}

TEST(ChunkAlignedReader, FindsItsPlaceAgainAfterGoingBack) {
  const std::string stream = chunkOfSize(4094) + chunkOfSize(4094) + chunkOfSize(50);
  const auto store = storeOf(stream);
  ChunkAlignedReader reader(*store);
  std::string block(4096, '\0');
  EXPECT_EQ(reader.readAt(0, block.data(), 4096), 4094);
  EXPECT_EQ(reader.readAt(4094, block.data(), 4096), 4094);
  EXPECT_EQ(reader.readAt(0, block.data(), 4096), 4094);
  EXPECT_EQ(reader.readAt(8188, block.data(), 4096), 50);
}

TEST(FindChunkFault, FindsNoneInAnEmptyStreamOrInSoundChunks) {
  EXPECT_EQ(findChunkFault(*storeOf("")), std::nullopt);
  EXPECT_EQ(findChunkFault(*storeOf(chunk(literalBlock("one")) + chunk(literalBlock("")))),
            std::nullopt);
}

TEST(FindChunkFault, GivesTheObjectsDecompressed) {
  ObjectStream objects;
  EXPECT_EQ(
      findChunkFault(*storeOf(chunk(literalBlock("one")) + chunk(literalBlock("two"))), &objects),
      std::nullopt);
  EXPECT_EQ(objects.bytes, "onetwo");
  EXPECT_EQ(objects.size, 6u);
}

TEST(FindChunkFault, CountsObjectsBeyond64MiBWithoutKeepingThem) {
  const std::string block = chunk(testing::compressedBlock(std::string(1 << 20, '\0')));
  std::string stream;
  for (int i = 0; i < 64; ++i) stream += block;
  ObjectStream whole;
  EXPECT_EQ(findChunkFault(*storeOf(stream), &whole), std::nullopt);
  EXPECT_EQ(whole.bytes.size(), 64u << 20);
  ObjectStream large;
  EXPECT_EQ(findChunkFault(*storeOf(stream + chunk(literalBlock("x"))), &large), std::nullopt);
  EXPECT_EQ(large.size, (64u << 20) + 1);
  EXPECT_EQ(large.bytes.size(), 0u);
}

// How a block is told from a sound one is not to depend on whether it is decompressed.
TEST(LookThroughChunks, TellsOfADamagedBlockWhatACheckWithoutDecompressingTells) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += std::to_string(i * i % 97) + " lamps ";
  const std::string block = testing::compressedBlock(text);
  std::size_t damaged = 0;
  for (std::size_t at = 0; at < block.size(); ++at) {
    for (const char flip : {'\x01', '\x04', '\x10', '\x80', '\xFF'}) {
      std::string body = block;
      body[at] = static_cast<char>(body[at] ^ flip);
      const auto store = storeOf(chunk(body));
      ObjectLook look(ObjectLook::Root::kIgnored);
      const auto fault = lookThroughChunks(*store, look).fault;
      ASSERT_EQ(fault, findChunkFault(*store)) << at;
      damaged += fault ? 1 : 0;
    }
  }
  EXPECT_GT(damaged, 100u);
}

TEST(LookThroughChunks, TakesABlockThatExpandsAsFarAsOneCan) {
  const auto store = storeOf(chunk(testing::compressedBlock(std::string(1 << 20, '\0'))));
  ObjectLook look(ObjectLook::Root::kIgnored);
  const ChunkLook found = lookThroughChunks(*store, look);
  EXPECT_EQ(found.fault, std::nullopt);
  EXPECT_EQ(found.objectBytes, 1u << 20);
}

TEST(LookThroughChunks, CountsWhatIsBeyond64MiBAndStillFindsDamageThere) {
  const std::string block = chunk(testing::compressedBlock(std::string(1 << 20, '\0')));
  std::string stream;
  for (int i = 0; i < 65; ++i) stream += block;
  ObjectLook look(ObjectLook::Root::kIgnored);
  EXPECT_EQ(lookThroughChunks(*storeOf(stream), look).objectBytes, 65u << 20);
  ObjectLook again(ObjectLook::Root::kIgnored);
  EXPECT_EQ(lookThroughChunks(*storeOf(stream + damagedChunk()), again).fault,
            "chunk 66 holds damaged data");
}

struct FaultCase {
  std::string name;
  std::string stream;
  std::string fault;
  friend void PrintTo(const FaultCase& row, std::ostream* out) { *out << row.name; }
};

class FindChunkFaultIn : public ::testing::TestWithParam<FaultCase> {};

TEST_P(FindChunkFaultIn, NamesTheChunkAndTheFault) {
  const auto& param = GetParam();
  EXPECT_EQ(findChunkFault(*storeOf(param.stream)), param.fault);
}

TEST_P(FindChunkFaultIn, SaysTheSameOfAStreamInAFile) {
  const auto& param = GetParam();
  const auto store = makeScratchStore(0);
  ASSERT_TRUE(store->append(param.stream.data(), param.stream.size()));
  EXPECT_EQ(findChunkFault(*store), param.fault);
}

const std::string kGood = chunk(literalBlock("good"));
const std::string kBlock = literalBlock("good");

INSTANTIATE_TEST_SUITE_P(
    Streams, FindChunkFaultIn,
    ::testing::Values(
        FaultCase{"BadHeader", "\x01\x05" + kGood, "chunk 1 has no valid header"},
        FaultCase{"SecondHeader", kGood + "\x02" + kGood, "chunk 2 has no valid header"},
        FaultCase{"DamagedBlock", kGood + damagedChunk(), "chunk 2 holds damaged data"},
        FaultCase{"EmptyBody", kGood + std::string(4, '\0'), "chunk 2 holds damaged data"},
        FaultCase{"CutShort", kGood + chunk(kBlock, 100), "chunk 2 is cut short"},
        FaultCase{"HeaderOnly", kGood + std::string("\0\x05\0\0", 4), "chunk 2 is cut short"},
        FaultCase{"OneStrayByte", kGood + std::string(1, '\0'),
                  "it has stray bytes behind its last chunk"},
        FaultCase{"ThreeStrayBytes", kGood + std::string(3, '\0'),
                  "it has stray bytes behind its last chunk"}),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace dorvex::chunk_stream_test
