#include "looking/object_stream.h"

#include <gtest/gtest.h>

#include "support/package_writer.h"
#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

const Archive kSound = storage(1, {"sound"});

std::optional<std::string> faultOf(const Archive& archive) {
  return findObjectFault(objectStream({kSound, archive, kSound}));
}

TEST(FindObjectFault, FindsNoneInAnEmptyStreamOrInSoundObjects) {
  EXPECT_EQ(findObjectFault(""), std::nullopt);
  EXPECT_EQ(findObjectFault(objectStream({kSound, comment(2, "also sound")})), std::nullopt);
}

TEST(FindObjectFault, TakesAnObjectWithoutMessagesAndOneOfNoBytesForSound) {
  EXPECT_EQ(faultOf({7, {}}), std::nullopt);
  EXPECT_EQ(faultOf(object(7, kStorageType, "")), std::nullopt);
}

TEST(FindObjectFault, TakesWellFormedGroupsForSound) {
  EXPECT_EQ(faultOf(object(7, kStorageType, Wire().group(9, Wire().varint(1, 2)))), std::nullopt);
}

TEST(FindObjectFault, FindsWhatIsNoRunOfFields) {
  for (const std::string& damaged :
       {std::string(1, '\0'), encodeTag(3, kLengthDelimited) + "\x7F", encodeTag(1, 6) + "x",
        encodeTag(1, kFixed32) + "abc", encodeTag(1, kEndGroup), encodeTag(1, kStartGroup),
        encodeTag(1, kVarint) + "\xFF"})
    EXPECT_EQ(faultOf(object(7, kStorageType, damaged)), "object 2 holds damaged data");
}

TEST(FindObjectFault, FindsADamagedHeader) {
  EXPECT_EQ(findObjectFault(encodeArchive(kSound) + "\x02\x12\x7F"),
            "object 2 has a damaged header");
}

TEST(FindObjectFault, FindsAnObjectThatTheEndCutsShort) {
  const std::string stream = objectStream({kSound});
  for (std::size_t size = 1; size < stream.size(); ++size)
    EXPECT_EQ(findObjectFault(stream.substr(0, size)), "object 1 is cut short") << size;
  Archive archive = kSound;
  archive.payloads[0].statedLength = 100'000;
  EXPECT_EQ(faultOf(archive), "object 2 is cut short");
}

TEST(FindObjectFault, FindsALengthThatDoesNotEndWithinTenBytes) {
  EXPECT_EQ(findObjectFault(std::string(12, '\xFF')), "object 1 is cut short");
}

}  // namespace
}  // namespace dorvex::testing
