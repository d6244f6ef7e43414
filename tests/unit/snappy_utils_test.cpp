#include "Tools/formats/vniwork13/snappy_utils.h"

#include <gtest/gtest.h>

#include <string>

#include "support/guarded_buffer.h"
#include "support/package_writer.h"

namespace vn::iwork13 {
namespace {

using namespace dorvex::testing;
using std::string_literals::operator""s;

std::string messageOf(const auto& call) {
  try {
    call();
  } catch (const iwa_uncompression_error& error) {
    return error.what();
  }
  return "nothing thrown";
}

std::uint32_t lengthOf(const std::string& header) {
  GuardedBuffer buffer(header);
  return getChunkLength(buffer.data());
}

std::string uncompressChunk(std::string_view body) {
  const GuardedBuffer buffer(body);
  const auto block = snappyUncompressChunk(buffer.chars(), static_cast<std::uint32_t>(body.size()));
  return {block.begin(), block.end()};
}

std::string uncompressBuffer(std::string_view member) {
  const GuardedBuffer buffer(member);
  const auto stream =
      uncompressIwaBuffer(buffer.chars(), static_cast<std::uint32_t>(member.size()));
  return {stream.begin(), stream.end()};
}

std::string goodChunk(std::string_view text) { return chunk(compressedBlock(text)); }

TEST(GetChunkLength, ReadsThreeBytesWithTheLowestFirst) {
  EXPECT_EQ(lengthOf("\x00\x05\x00\x00"s), 5U);
  EXPECT_EQ(lengthOf("\x00\x00\x00\x01"s), 65536U);
  EXPECT_EQ(lengthOf("\x00\xFF\xFF\xFF"s), 16777215U);
}

TEST(GetChunkLength, RefusesAFirstByteThatIsNotZero) {
  EXPECT_EQ(messageOf([] { lengthOf("\x01\x05\x00\x00"s); }), "Invalid chunk header");
}

TEST(GetChunkLength, PutsNoConstraintOnTheHighBytes) {
  EXPECT_EQ(lengthOf("\x00\x00\x00\xFF"s), 0xFF0000U);
}

TEST(SnappyUncompressChunk, DecompressesABlock) {
  EXPECT_EQ(uncompressChunk(compressedBlock("a lighthouse, a lighthouse")),
            "a lighthouse, a lighthouse");
  EXPECT_EQ(uncompressChunk(literalBlock("a lighthouse")), "a lighthouse");
}

TEST(SnappyUncompressChunk, GivesAnEmptyVectorForAPreambleOfZero) {
  EXPECT_EQ(uncompressChunk("\0"s), "");
}

TEST(SnappyUncompressChunk, RefusesWhatSnappyRefuses) {
  const std::string sound = compressedBlock("tea and toast");
  for (const std::string& body : {""s, "\x05\x01\x07"s, sound.substr(0, sound.size() - 1),
                                  sound + "x", "\xFF\xFF\xFF\xFF\xFF\xFF"s})
    EXPECT_EQ(messageOf([&] { uncompressChunk(body); }), "Invalid compressed iwa buffer");
}

TEST(AppendUncompressedChunk, LeavesTheStreamAsItWasWhereABlockIsCut) {
  const std::string sound = compressedBlock(std::string(50000, 'x') + "tea and toast");
  const GuardedBuffer cut(sound.substr(0, sound.size() - 1));
  std::vector<char> stream = {'a', 'b'};
  EXPECT_THROW(
      appendUncompressedChunk(cut.chars(), static_cast<std::uint32_t>(sound.size() - 1), stream),
      iwa_uncompression_error);
  EXPECT_EQ(stream, (std::vector<char>{'a', 'b'}));
}

TEST(SnappyUncompressChunk, TakesABlockThatExpandsAsFarAsOneCan) {
  for (const std::size_t size : {1000u, 60000u, 300000u}) {
    const std::string contents(size, 'x');
    EXPECT_EQ(uncompressChunk(compressedBlock(contents)), contents);
  }
}

TEST(SnappyUncompressChunk, AllocatesNothingForAHugePreambleThatDoesNotHold) {
  EXPECT_EQ(messageOf([] { uncompressChunk("\xFF\xFF\xFF\xFF\x0F\x00x"s); }),
            "Invalid compressed iwa buffer");
}

TEST(IwaUncompressionError, IsARuntimeErrorOutsideTheErrorFamily) {
  static_assert(std::is_base_of_v<std::runtime_error, iwa_uncompression_error>);
  EXPECT_STREQ(iwa_uncompression_error("Invalid chunk size").what(), "Invalid chunk size");
}

TEST(UncompressIwaBuffer, GivesNothingForLessThanFiveBytesWithoutReadingThem) {
  for (std::uint32_t size = 0; size < 5; ++size)
    EXPECT_TRUE(uncompressIwaBuffer(nullptr, size).empty());
}

TEST(UncompressIwaBuffer, ConcatenatesTheChunks) {
  EXPECT_EQ(uncompressBuffer(goodChunk("one ") + goodChunk("two ") + goodChunk("three")),
            "one two three");
}

TEST(UncompressIwaBuffer, IgnoresATailOfUpToFourBytes) {
  for (const std::string& tail : {"\1"s, "\1\1"s, "\1\1\1"s, "\0\0\0\0"s, "\1\1\1\1"s})
    EXPECT_EQ(uncompressBuffer(goodChunk("tea") + tail), "tea");
}

TEST(UncompressIwaBuffer, SwallowsTheFailureOfAnEmptyBodyInATailOfFiveBytes) {
  EXPECT_EQ(uncompressBuffer(goodChunk("tea") + "\0\0\0\0\0"s), "tea");
}

TEST(UncompressIwaBuffer, GivesNothingForABadFirstHeader) {
  EXPECT_EQ(uncompressBuffer("\x01\x03\x00\x00xyz"s), "");
}

TEST(UncompressIwaBuffer, ReturnsTheChunksBeforeABadOne) {
  const std::string good = goodChunk("good");
  EXPECT_EQ(uncompressBuffer(good + damagedChunk() + good), "good");
  EXPECT_EQ(uncompressBuffer(good + "\x07" + good), "good");
  EXPECT_EQ(uncompressBuffer(good + chunk("", 0) + good), "good");
}

TEST(UncompressIwaBuffer, ReturnsTheChunksBeforeOneThatRunsPastTheEnd) {
  const std::string body = compressedBlock("never seen");
  EXPECT_EQ(uncompressBuffer(goodChunk("seen") +
                             chunk(body, static_cast<std::uint32_t>(body.size()) + 1)),
            "seen");
}

TEST(UncompressIwaBuffer, TakesAChunkThatEndsExactlyAtTheEnd) {
  EXPECT_EQ(uncompressBuffer(goodChunk("x")), "x");
}

}  // namespace
}  // namespace vn::iwork13
