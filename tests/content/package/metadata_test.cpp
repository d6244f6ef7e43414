#include "package/metadata.h"

#include <gtest/gtest.h>

#include <limits>

#include "content/support/objects.h"

namespace dorvex::content::metadata_test {
namespace {

using testing::bitsOfFloat;
using testing::object;
using testing::reference;
using testing::Wire;

Metadata read(const std::vector<testing::Archive>& objects, Application application,
              std::vector<testing::Member> members = {}) {
  members.push_back({"Index/Document.iwa", testing::iwa(objects)});
  testing::MemoryPackage package(members);
  LeftOut leftOut;
  const Graph graph(package, leftOut);
  return readMetadata(package, graph, application);
}

// What the document of each application shares with the others.
Wire shared() {
  return Wire()
      .message(1, Wire().bytes(4, "en_GB"))
      .bytes(3, "en")
      .bytes(9, "Application/Tea/Wide");
}

Wire size(float width, float height) {
  return Wire().fixed32(1, bitsOfFloat(width)).fixed32(2, bitsOfFloat(height));
}

TEST(Metadata, OfAKeynoteDocument) {
  const Metadata metadata =
      read({object(1, 1, Wire().message(2, reference(10)).message(3, shared())),
            object(10, 2, Wire().message(4, size(1920, 1080)))},
           Application::kKeynote);
  EXPECT_EQ(metadata.language, "en");
  EXPECT_EQ(metadata.locale, "en_GB");
  EXPECT_EQ(metadata.templateName, "Application/Tea/Wide");
  EXPECT_EQ(metadata.pageSize, std::pair(1920.0, 1080.0));
}

TEST(Metadata, OfAPagesDocument) {
  const Wire document = Wire()
                            .message(15, shared())
                            .message(7, reference(10))
                            .fixed32(30, bitsOfFloat(595.0F))
                            .fixed32(31, bitsOfFloat(842.0F));
  const Wire settings =
      Wire().bytes(21, "de").bytes(25, "Blank").bytes(26, "2013-10-22T12:00:00+0100");
  const Metadata metadata =
      read({object(1, 10000, document), object(10, 10012, settings)}, Application::kPages);
  EXPECT_EQ(metadata.language, "en");
  EXPECT_EQ(metadata.templateName, "Application/Tea/Wide");
  EXPECT_EQ(metadata.created, "2013-10-22T12:00:00+0100");
  EXPECT_EQ(metadata.pageSize, std::pair(595.0, 842.0));
}

TEST(Metadata, OfAPagesDocumentComeFromItsSettingsWhereItIsOld) {
  const Wire settings = Wire().bytes(21, "de").bytes(25, "Blank");
  // Documents of 2013 have numbers in fields that are messages later.
  const Wire document = Wire().varint(15, 1).message(7, reference(10));
  const Metadata metadata =
      read({object(1, 10000, document), object(10, 10012, settings)}, Application::kPages);
  EXPECT_EQ(metadata.language, "de");
  EXPECT_EQ(metadata.templateName, "Blank");
  EXPECT_EQ(metadata.pageSize, std::nullopt);
}

TEST(Metadata, OfANumbersDocument) {
  const Metadata metadata =
      read({object(1, 1, Wire().message(8, shared()).message(12, size(612, 792)))},
           Application::kNumbers);
  EXPECT_EQ(metadata.locale, "en_GB");
  EXPECT_EQ(metadata.pageSize, std::pair(612.0, 792.0));
}

TEST(Metadata, HaveNoSizeThatIsNone) {
  for (const float width : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity()}) {
    EXPECT_FALSE(
        read({object(1, 1, Wire().message(12, size(width, 792)))}, Application::kNumbers).pageSize);
  }
}

TEST(Metadata, NameTheDocumentAndTheBuildsThatWroteIt) {
  const Metadata metadata =
      read({object(1, 1, Wire())}, Application::kNumbers,
           {{"Metadata/DocumentIdentifier", "0815"},
            {"Metadata/BuildVersionHistory.plist",
             "<plist><array><string>Template: Tea</string><string>M1</string></array></plist>"}});
  EXPECT_EQ(metadata.documentId, "0815");
  EXPECT_EQ(metadata.applicationBuilds, (std::vector<std::string>{"Template: Tea", "M1"}));
}

TEST(Metadata, ComeFromThePropertiesWhereTheDocumentLacksThem) {
  const std::vector<testing::Member> properties = {
      {"Metadata/Properties.plist",
       "<plist><dict><key>documentUUID</key><string>0815</string>"
       "<key>locale</key><string>cs_CZ</string></dict></plist>"}};
  const Metadata old = read({object(1, 1, Wire())}, Application::kNumbers, properties);
  EXPECT_EQ(old.documentId, "0815");
  EXPECT_EQ(old.locale, "cs_CZ");
  EXPECT_EQ(
      read({object(1, 1, Wire().message(8, shared()))}, Application::kNumbers, properties).locale,
      "en_GB");
}

TEST(Metadata, OfAnEmptyDocumentAreEmpty) {
  const Metadata metadata = read({}, Application::kPages);
  EXPECT_EQ(metadata.language, "");
  EXPECT_TRUE(metadata.applicationBuilds.empty());
  EXPECT_TRUE(metadata.authors.empty());
}

}  // namespace
}  // namespace dorvex::content::metadata_test
