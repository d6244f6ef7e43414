#include "inspect/objects.h"

#include <gtest/gtest.h>

#include "support/package_writer.h"

namespace dorvex::cli::objects_test {
namespace {

using namespace dorvex::testing;

std::vector<ListedObject> listAll(const std::vector<Archive>& archives) {
  ObjectLister lister(std::nullopt);
  EXPECT_EQ(lister.list(objectStream(archives), 0, true), std::nullopt);
  return lister.take();
}

TEST(ObjectLister, ListsEveryMessageOfEveryObjectWithItsTypeAndSize) {
  const auto objects = listAll({{7, {{kStorageType, "\x1a\x01x"}, {99999, "abc"}}}, {9, {}}});
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(objects[0].identifier, 7U);
  ASSERT_EQ(objects[0].messages.size(), 2U);
  EXPECT_EQ(objects[0].messages[0].type, kStorageType);
  EXPECT_EQ(objects[0].messages[0].size, 3U);
  EXPECT_EQ(objects[0].messages[1].type, 99999);
  EXPECT_EQ(objects[0].messages[1].size, 3U);
  EXPECT_EQ(objects[1].identifier, 9U);
  EXPECT_TRUE(objects[1].messages.empty());
}

TEST(ObjectLister, CountsTheTextsThatTheReaderTakes) {
  const auto objects = listAll({storage(1, {"one", "two", ""}), comment(2, "three")});
  EXPECT_EQ(objects.at(0).messages.at(0).texts, 2U);
  EXPECT_EQ(objects.at(1).messages.at(0).texts, 1U);
}

TEST(ObjectLister, CountsNoTextForASecondObjectOfAnIdentifier) {
  const auto objects = listAll({storage(1, {"kept"}), storage(1, {"dropped"})});
  EXPECT_EQ(objects.at(0).messages.at(0).texts, 1U);
  EXPECT_EQ(objects.at(1).messages.at(0).texts, 0U);
}

TEST(ObjectLister, CountsNoTextForAStreamThatIsNotSelectedAndKeepsItsIdentifiersFree) {
  ObjectLister lister(std::nullopt);
  EXPECT_EQ(lister.list(objectStream({storage(1, {"passed over"})}), 0, false), std::nullopt);
  EXPECT_EQ(lister.list(objectStream({storage(1, {"read"})}), 1, true), std::nullopt);
  const auto objects = lister.take();
  EXPECT_EQ(objects.at(0).messages.at(0).texts, 0U);
  EXPECT_EQ(objects.at(1).messages.at(0).texts, 1U);
  EXPECT_EQ(objects.at(1).member, 1U);
}

TEST(ObjectLister, MarksAMessageThatTheReaderCannotParse) {
  const auto objects = listAll({object(1, kStorageType, "\x1a\x7fshort")});
  EXPECT_TRUE(objects.at(0).messages.at(0).damaged);
  EXPECT_EQ(objects.at(0).messages.at(0).texts, 0U);
}

TEST(ObjectLister, MarksAMessageThatTheReaderLeavesInItsMiddle) {
  const std::string text = storage(1, {"one"}).payloads.at(0).bytes;
  for (const std::string& end : {std::string(1, '\0'), std::string("\x0c")}) {
    const auto objects = listAll({object(1, kStorageType, text + end + text)});
    EXPECT_TRUE(objects.at(0).messages.at(0).damaged);
    EXPECT_EQ(objects.at(0).messages.at(0).texts, 1U);
  }
}

TEST(ObjectLister, SaysWhereItEndsEarlyAndKeepsWhatItHas) {
  const std::string whole = objectStream({storage(1, {"one"}), storage(2, {"two"})});
  for (std::size_t cut = 1; cut < objectStream({storage(2, {"two"})}).size(); ++cut) {
    ObjectLister lister(std::nullopt);
    EXPECT_EQ(lister.list(whole.substr(0, whole.size() - cut), 0, true), "object 2 is cut short");
    EXPECT_EQ(lister.take().at(0).messages.at(0).texts, 1U);
  }
}

TEST(ObjectLister, EndsAtAHeaderThatIsNone) {
  ObjectLister lister(std::nullopt);
  EXPECT_EQ(lister.list("\x02\x0a\x7f", 0, true), "object 1 has a damaged header");
  EXPECT_EQ(lister.list(std::string("\x02\x00\x00", 3), 0, true), "object 1 has a damaged header");
  EXPECT_EQ(lister.list(std::string(20, '\xff'), 0, true), "object 1 is cut short");
}

TEST(ObjectLister, KeepsThePayloadsOfTheObjectThatIsAskedFor) {
  ObjectLister lister(2);
  EXPECT_EQ(lister.list(objectStream({object(1, 99999, "no"), object(2, 99999, "yes")}), 0, true),
            std::nullopt);
  const auto objects = lister.take();
  EXPECT_EQ(objects.at(0).messages.at(0).payload, "");
  EXPECT_EQ(objects.at(1).messages.at(0).payload, "yes");
}

}  // namespace
}  // namespace dorvex::cli::objects_test
