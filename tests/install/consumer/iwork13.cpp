// The format library: registries, chunks, object streams, zips and tiles.
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "TSPMessages.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/registry.h"
#include "documents.h"
#include "host.h"

namespace dorvex::consumer {
namespace {

using namespace vn::iwork13;
using google::protobuf::Message;

constexpr int kStorageType = 2001;  // in the common registry

// The name of the class that a registry builds, empty for none. The instance is
// the caller's, and is deleted through its virtual destructor, in the module.
std::string built(MessageFactory factory, int type) {
  const std::unique_ptr<Message> message(factory(type));
  return message == nullptr ? "" : message->GetTypeName();
}

TEST(Registries, BuildInstancesForTheCaller) {
  EXPECT_EQ(built(getCommonRegistryMessage, kStorageType), "TSWP.StorageArchive");
  EXPECT_EQ(built(getKeynoteRegistryMessage, 2), "KN.ShowArchive");
  EXPECT_EQ(built(getNumbersRegistryMessage, 2), "TN.SheetArchive");
  EXPECT_EQ(built(getPagesRegistryMessage, 10000), "TP.DocumentArchive");
  for (MessageFactory own :
       {getKeynoteRegistryMessage, getNumbersRegistryMessage, getPagesRegistryMessage}) {
    EXPECT_EQ(built(own, kStorageType), "");
  }
}

TEST(Registries, FallBackOnTheCommonOne) {
  for (MessageFactory layered : {getKeynoteMessage, getNumbersMessage, getPagesMessage}) {
    EXPECT_EQ(built(layered, kStorageType), "TSWP.StorageArchive");
    EXPECT_EQ(built(layered, -1), "");
  }
  EXPECT_EQ(built(getKeynoteMessage, 2), "KN.ShowArchive");
  EXPECT_EQ(built(getNumbersMessage, 2), "TN.SheetArchive");
  EXPECT_EQ(built(getPagesMessage, 10000), "TP.DocumentArchive");
}

TEST(Registries, SayWhatTheyHave) {
  EXPECT_TRUE(commonRegistryHasMessageType(kStorageType));
  EXPECT_TRUE(keynoteRegistryHasMessageType(2));
  EXPECT_FALSE(keynoteRegistryHasMessageType(kStorageType));
  EXPECT_TRUE(numbersRegistryHasMessageType(2));
  EXPECT_FALSE(numbersRegistryHasMessageType(kStorageType));
  EXPECT_TRUE(pagesRegistryHasMessageType(10000));
  EXPECT_FALSE(pagesRegistryHasMessageType(kStorageType));
  EXPECT_EQ(getAllRegistryTypes(),
            (std::vector<IWorkRegistryType>{CommonRegistry, KeynoteRegistry, NumbersRegistry,
                                            PagesRegistry}));
  EXPECT_TRUE(registryHasMessageType(CommonRegistry, kStorageType));
  EXPECT_FALSE(registryHasMessageType(PagesRegistry, kStorageType));
}

// The member's object stream.
std::vector<unsigned char> objectStream() {
  const std::string member = readFile(documents.member);
  const std::vector<char> stream =
      uncompressIwaBuffer(member.data(), static_cast<std::uint32_t>(member.size()));
  return {stream.begin(), stream.end()};
}

const Message* objectOf(const MessageMap& map, unsigned long long identifier) {
  TSP::Reference reference;
  reference.set_identifier(identifier);
  const Message* object = map.lookup(identifier);
  EXPECT_EQ(map.lookup(reference), object);
  EXPECT_EQ(map.lookup(&reference), object);
  return object;
}

void expectAllObjects(const MessageMap& map) {
  EXPECT_EQ(map.size(), 3U);
  EXPECT_FALSE(map.empty());
  ASSERT_NE(objectOf(map, kStorage), nullptr);
  EXPECT_EQ(objectOf(map, kStorage)->GetTypeName(), "TSWP.StorageArchive");
  EXPECT_EQ(objectOf(map, kUnused), nullptr);
  EXPECT_EQ(map.lookup(static_cast<const TSP::Reference*>(nullptr)), nullptr);
}

TEST(DataDecompresser, DecompressesOneChunk) {
  const std::string member = readFile(documents.member);
  DataDecompresser decompresser{};
  decompresser.decompressChunk(reinterpret_cast<const unsigned char*>(member.data()) + 4,
                               static_cast<std::uint32_t>(member.size() - 4));
  EXPECT_EQ(decompresser.objectStream, objectStream());
  EXPECT_FALSE(decompresser.objectStream.empty());
}

TEST(DataDecompresser, TakesAMemberInSmallReads) {
  Stream member(readFile(documents.member));
  unsigned char buffer[7];
  DataDecompresser decompresser{};
  decompresser.readBuffer = buffer;
  decompresser.readBufferSize = sizeof buffer;
  while (decompresser.bytesConsumed < member.contents.size()) decompresser.read(&member);
  EXPECT_EQ(decompresser.objectStream, objectStream());
}

TEST(DataDecompresser, ThrowsWhatIsCaughtHereByType) {
  DataDecompresser decompresser{};
  const unsigned char noBlock[] = {5, 1, 7};
  try {
    decompresser.decompressChunk(noBlock, sizeof noBlock);
    ADD_FAILURE() << "a damaged chunk was taken";
  } catch (const iwa_uncompression_error& error) {
    EXPECT_STREQ(error.what(), "Invalid compressed iwa buffer");
  }
}

TEST(MessageMap, TakesAnObjectStream) {
  MessageMap map;
  map.populate(objectStream(), getCommonRegistryMessage);
  expectAllObjects(map);
}

TEST(MessageMap, TakesAMember) {
  Stream member(readFile(documents.member));
  unsigned char buffer[4096];
  MessageMap map;
  map.populate(&member, static_cast<std::uint32_t>(member.contents.size()), buffer, sizeof buffer,
               getPagesMessage);
  expectAllObjects(map);
}

TEST(MessageMap, TakesAZip) {
  Host host;
  Stream document(readFile(documents.package));
  unsigned char buffer[4096];
  MessageMap map;
  unzipFile(&document, map, &host, buffer, sizeof buffer, getPagesMessage);
  expectAllObjects(map);
}

TEST(GetTileStrings, GivesTheCellsOfATile) {
  MessageMap map;
  map.populate(objectStream(), getCommonRegistryMessage);
  // This program has no classes of these two messages. It needs none: they were
  // made by the module, and are only handed back to it.
  const auto* tile = reinterpret_cast<const TST::Tile*>(map.lookup(kTile));
  const auto* texts = reinterpret_cast<const TST::TableDataList*>(map.lookup(kTexts));
  ASSERT_NE(tile, nullptr);
  ASSERT_NE(texts, nullptr);
  using Rows = std::list<std::list<std::string>>;
  EXPECT_EQ(getTileStrings(tile, texts), (Rows{{"a cell", "2.5"}}));
  EXPECT_EQ(getTileStrings(tile, nullptr), (Rows{{"", "2.5"}}));
}

}  // namespace
}  // namespace dorvex::consumer
