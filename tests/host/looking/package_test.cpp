#include "looking/package.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::package_test {
namespace {

PackageLook lookAt(const std::vector<std::string>& names) {
  PackageLook look;
  lookAtNames(names, look);
  return look;
}

PackageLook lookAtBytes(const std::string& bytes) {
  PackageLook look;
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  lookAtStart(*makeMemoryStore({data, bytes.size()}), look);
  return look;
}

TEST(LookAtNames, KnowsThePackagesOfTheGenerationBefore) {
  EXPECT_TRUE(lookAt({"QuickLook/Thumbnail.jpg", "index.xml"}).iwork09);
  EXPECT_TRUE(lookAt({"index.apxl"}).iwork09);
  EXPECT_TRUE(lookAt({"index.xml.gz"}).iwork09);
  EXPECT_FALSE(lookAt({"Index/Document.iwa", "reindex.xml", "Index.xml"}).iwork09);
}

TEST(LookAtNames, KnowsThePasswordMembers) {
  EXPECT_TRUE(lookAt({"Index.zip", ".iwpv2"}).passwordProtected);
  EXPECT_TRUE(lookAt({".iwph"}).passwordProtected);
  EXPECT_FALSE(lookAt({"iwph", "Index/Document.iwa"}).passwordProtected);
}

TEST(LookAtNames, KnowsWhatHoldsStreams) {
  EXPECT_TRUE(lookAt({"Index/Document.iwa"}).hasStreams);
  EXPECT_TRUE(lookAt({"Index.zip"}).hasStreams);
  EXPECT_FALSE(lookAt({"word/document.xml"}).hasStreams);
}

TEST(LookAtStart, TellsZipsChunksAndEmptyFilesApart) {
  EXPECT_TRUE(lookAtBytes("").empty);
  EXPECT_TRUE(lookAtBytes("PK\x03\x04....").beginsLikeAZip);
  EXPECT_TRUE(lookAtBytes("PK\x05\x06....").beginsLikeAZip);
  EXPECT_FALSE(lookAtBytes("PKxx").beginsLikeAZip);
  EXPECT_FALSE(lookAtBytes("PK").beginsLikeAZip);
  EXPECT_TRUE(lookAtBytes(std::string("\0\x05\0\0x", 5)).beginsLikeAChunk);
  EXPECT_FALSE(lookAtBytes("%PDF-1.4").beginsLikeAChunk);
}

TEST(ListDirectory, NamesTheEntriesAndThoseOfIndex) {
  const testing::TemporaryDirectory folder;
  testing::writeDirectory(folder.path(), {{"Index/Document.iwa", ""}, {".iwph", ""}});
  const UniqueFd directory(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
  auto names = listDirectory(directory.get());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".iwph", "Index", "Index/Document.iwa"}));
}

TEST(ListDirectory, IsEmptyForWhatCannotBeRead) { EXPECT_TRUE(listDirectory(-1).empty()); }

}  // namespace
}  // namespace dorvex::package_test
