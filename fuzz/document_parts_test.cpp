#include "document_parts.h"

#include <gtest/gtest.h>

#include "support/package_writer.h"

namespace dorvex::fuzz {
namespace {

using testing::Wire;

TEST(DecodeFields, GivesBackEveryWireTypeAsItStood) {
  Wire group;
  group.varint(9, 1);
  const std::string message = Wire()
                                  .varint(1, 300)
                                  .fixed32(2, 7)
                                  .fixed64(3, 1ULL << 63)
                                  .bytes(4, "abc")
                                  .group(5, group)
                                  .str();
  const auto fields = decodeFields(message);
  ASSERT_TRUE(fields.has_value());
  EXPECT_EQ(fields->size(), 7U);  // the group's two tags are fields by themselves
  EXPECT_EQ(encodeFields(*fields), message);
}

TEST(DecodeFields, RefusesWhatIsNoRunOfFields) {
  EXPECT_FALSE(decodeFields(std::string(1, '\0')));  // field 0
  EXPECT_FALSE(
      decodeFields("\x0A\x05"
                   "abc"));                             // cut short
  EXPECT_FALSE(decodeFields("\x0E"));                   // no wire type
  EXPECT_FALSE(decodeFields(std::string(11, '\xFF')));  // no varint
}

TEST(StreamParts, GiveBackAStreamAsItStood) {
  const std::string stream = testing::objectStream(
      {testing::storage(1, {"one", "two"}), {2, {{2001, "\x0A\x01x"}, {1, "unknown"}}}});
  const StreamParts parts = StreamParts::decode(stream + "\xFF");
  ASSERT_EQ(parts.archives.size(), 2U);
  EXPECT_EQ(parts.archives[1].payloads.size(), 2U);
  EXPECT_EQ(parts.tail, "\xFF");
  EXPECT_EQ(parts.encode(), stream + "\xFF");
}

TEST(StreamParts, StateTheLengthsOfChangedPayloads) {
  StreamParts parts = StreamParts::decode(testing::objectStream({testing::storage(1, {"one"})}));
  parts.archives[0].payloads[0] += testing::storage(2, {"longer"}).payloads[0].bytes;
  const StreamParts again = StreamParts::decode(parts.encode());
  ASSERT_EQ(again.archives.size(), 1U);
  EXPECT_EQ(again.archives[0].payloads, parts.archives[0].payloads);
  EXPECT_EQ(again.tail, "");
}

TEST(MemberParts, GiveBackAMemberAsItStoodAndWhatItHolds) {
  const std::string stream(100000, 'x');
  const std::string member = testing::iwa(stream) + "ab";
  const MemberParts parts = MemberParts::decode(member);
  EXPECT_EQ(parts.chunks.size(), 2U);
  EXPECT_EQ(parts.tail, "ab");
  EXPECT_EQ(parts.encode(), member);
  EXPECT_EQ(parts.unpack(), stream);
}

TEST(MemberParts, HoldNothingWhereAChunkIsDamaged) {
  EXPECT_FALSE(MemberParts::decode(testing::damagedChunk()).unpack());
}

}  // namespace
}  // namespace dorvex::fuzz
