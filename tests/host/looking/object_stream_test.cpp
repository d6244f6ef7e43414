#include "looking/object_stream.h"

#include <gtest/gtest.h>

#include "support/package_writer.h"
#include "support/wire_writer.h"

namespace dorvex::testing::object_stream_test {
namespace {

const Archive kSound = storage(1, {"sound"});

// What comes out whole and in pieces of any size is one and the same.
std::optional<std::string> faultOfStream(const std::string& stream) {
  const auto whole = findObjectFault(stream);
  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    ObjectLook look(ObjectLook::Root::kIgnored);
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      look.take(stream.copy(look.room(piece), piece, at));
    }
    EXPECT_EQ(look.fault(), whole) << piece;
  }
  return whole;
}

std::optional<std::string> faultOf(const Archive& archive) {
  return faultOfStream(objectStream({kSound, archive, kSound}));
}

TEST(FindObjectFault, FindsNoneInAnEmptyStreamOrInSoundObjects) {
  EXPECT_EQ(faultOfStream(""), std::nullopt);
  EXPECT_EQ(faultOfStream(objectStream({kSound, comment(2, "also sound")})), std::nullopt);
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
  EXPECT_EQ(faultOfStream(encodeArchive(kSound) + "\x02\x12\x7F"), "object 2 has a damaged header");
}

TEST(FindObjectFault, FindsAnObjectThatTheEndCutsShort) {
  const std::string stream = objectStream({kSound});
  for (std::size_t size = 1; size < stream.size(); ++size)
    EXPECT_EQ(faultOfStream(stream.substr(0, size)), "object 1 is cut short") << size;
  Archive archive = kSound;
  archive.payloads[0].statedLength = 100'000;
  EXPECT_EQ(faultOf(archive), "object 2 is cut short");
}

TEST(FindObjectFault, FindsALengthThatDoesNotEndWithinTenBytes) {
  EXPECT_EQ(faultOfStream(std::string(12, '\xFF')), "object 1 is cut short");
}

TEST(FindObjectFault, TellsOfTheFirstOfSeveralFaults) {
  const Archive damaged = object(7, kStorageType, std::string(1, '\0'));
  EXPECT_EQ(faultOfStream(objectStream({damaged, kSound, damaged}) + "\x02\x12\x7F"),
            "object 1 holds damaged data");
  EXPECT_EQ(faultOf({7, {{kStorageType, std::string(1, '\0')}, {kStorageType, "", 1'000}}}),
            "object 2 holds damaged data");
}

TEST(FindObjectFault, CountsArchivesWithoutAHeader) {
  const std::string empty(100'000, '\0');
  EXPECT_EQ(findObjectFault(empty), std::nullopt);
  EXPECT_EQ(findObjectFault(empty + "\x05"), "object 100001 is cut short");
}

TEST(FindObjectFault, BelievesNoLengthBeyondWhatAStreamMayHold) {
  Archive archive = kSound;
  archive.payloads[0].statedLength = ~std::uint64_t{0};
  EXPECT_EQ(faultOf(archive), "object 2 is cut short");
  EXPECT_EQ(faultOfStream("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F header"), "object 1 is cut short");
}

TEST(ObjectLook, FindsTheTypeOfTheDocumentBehindDamage) {
  const Archive damaged = object(7, kStorageType, std::string(1, '\0'));
  const std::string stream = objectStream({damaged, kSound, object(1, 10000, std::string())});
  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    ObjectLook look(ObjectLook::Root::kWanted);
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      look.take(stream.copy(look.room(piece), piece, at));
    }
    EXPECT_EQ(look.fault(), "object 1 holds damaged data");
    EXPECT_EQ(look.rootType(), 2001u);
  }
}

TEST(ObjectLook, HoldsNoMoreThanAMessageAndAPiece) {
  ObjectLook look(ObjectLook::Root::kIgnored);
  const std::string stream = objectStream({kSound});
  const char* const first = look.room(stream.size());
  for (int i = 0; i < 100'000; ++i) {
    char* const room = look.room(stream.size());
    ASSERT_EQ(room, first);
    look.take(stream.copy(room, stream.size()));
  }
  EXPECT_EQ(look.fault(), std::nullopt);
}

TEST(FindObjectFault, GivesTheIdentifiersOfObjectsThatTheReaderFiles) {
  Archive several = object(5, kUnknownType, "");
  several.payloads.push_back(kSound.payloads.front());
  std::vector<std::uint64_t> filed;
  EXPECT_EQ(findObjectFault(objectStream({kSound,
                                          object(3, kUnknownType, ""),
                                          several,
                                          {std::nullopt, kSound.payloads},
                                          {9, {}}}),
                            &filed),
            std::nullopt);
  EXPECT_EQ(filed, (std::vector<std::uint64_t>{1, 5, 0}));
}

TEST(FindObjectFault, GivesIdentifiersUpToTheFirstFault) {
  std::vector<std::uint64_t> filed;
  EXPECT_NE(findObjectFault(encodeArchive(kSound) + "\x02\x12\x7F", &filed), std::nullopt);
  EXPECT_EQ(filed, std::vector<std::uint64_t>{1});
}

}  // namespace
}  // namespace dorvex::testing::object_stream_test
