#include "inspect/package.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "dorvex/result.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::package_test {
namespace {

using namespace dorvex::testing;

struct Visited {
  std::map<std::string, PackageMember> members;
  std::map<std::string, std::uint64_t> contents;  // sizes of those that were opened
  PackageOutcome outcome;
};

class VisitPackageTest : public ::testing::Test {
 protected:
  Visited visit(const std::filesystem::path& path) {
    Visited visited;
    visited.outcome =
        visitPackage(path, std::filesystem::path(DORVEX_CONTAINER_MODULE).parent_path(),
                     [&](const PackageMember& member, ByteStore* contents) {
                       EXPECT_FALSE(visited.members.contains(member.name)) << member.name;
                       visited.members[member.name] = member;
                       if (contents != nullptr) visited.contents[member.name] = contents->size();
                     });
    return visited;
  }
  Visited visitBytes(const std::string& bytes) {
    const auto path = folder.path() / "document";
    writeFile(path, bytes);
    return visit(path);
  }
  TemporaryDirectory folder;
};

const std::string kStream = iwa({storage(1, {"text"})});

TEST_F(VisitPackageTest, OpensStreamsAndTellsWhichTheReaderReads) {
  const Visited visited = visitBytes(zip(
      {{"Index/Document.iwa", kStream}, {"Index/ViewState.iwa", kStream}, {"preview.jpg", "jpg"}}));
  EXPECT_EQ(visited.outcome.result.status, Status::kOk);
  EXPECT_FALSE(visited.outcome.directory);
  EXPECT_TRUE(visited.members.at("Index/Document.iwa").selected);
  EXPECT_FALSE(visited.members.at("Index/ViewState.iwa").selected);
  EXPECT_FALSE(visited.members.at("preview.jpg").selected);
  EXPECT_EQ(visited.members.at("preview.jpg").size, 3U);
  EXPECT_EQ(visited.contents,
            (std::map<std::string, std::uint64_t>{{"Index/Document.iwa", kStream.size()},
                                                  {"Index/ViewState.iwa", kStream.size()}}));
}

TEST_F(VisitPackageTest, EntersNestedContainers) {
  const Visited visited =
      visitBytes(zip({{"Index.zip", zip({{"Document.iwa", kStream}, {"Other.iwa", kStream}})}}));
  EXPECT_TRUE(visited.members.at("Index.zip").selected);
  EXPECT_TRUE(visited.members.at("Index.zip/Document.iwa").selected);
  EXPECT_FALSE(visited.members.at("Index.zip/Other.iwa").selected);
}

TEST_F(VisitPackageTest, NamesANestedContainerThatIsNone) {
  const Visited visited =
      visitBytes(zip({{"Index.zip", "no zip"}, {"Index/Document.iwa", kStream}}));
  EXPECT_EQ(visited.members.at("Index.zip").fault,
            "damaged package: Index.zip is not a readable zip");
  EXPECT_EQ(visited.members.size(), 2U);
}

TEST_F(VisitPackageTest, NamesAMemberThatIsDamagedAndGoesOn) {
  std::string bytes = zip({{"Index/Document.iwa", kStream}, {"Index/Slide.iwa", kStream}});
  bytes[bytes.find(kStream) + kStream.size() - 1] ^= 1;
  const Visited visited = visitBytes(bytes);
  EXPECT_EQ(visited.members.at("Index/Document.iwa").fault,
            "the zip member Index/Document.iwa is damaged");
  EXPECT_FALSE(visited.contents.contains("Index/Document.iwa"));
  EXPECT_TRUE(visited.contents.contains("Index/Slide.iwa"));
}

TEST_F(VisitPackageTest, WalksADirectoryAsTheReaderDoes) {
  writeDirectory(folder.path() / "a.pages", {{"Index/Document.iwa", kStream},
                                             {"Index/ViewState.iwa", kStream},
                                             {"Index/Tables/Tile.iwa", kStream},
                                             {"Index/Other/Document.iwa", kStream},
                                             {"Data/Document.iwa", kStream},
                                             {"Metadata/Properties.plist", "plist"}});
  const Visited visited = visit(folder.path() / "a.pages");
  EXPECT_EQ(visited.outcome.result.status, Status::kOk);
  EXPECT_TRUE(visited.outcome.directory);
  // In a directory the reader takes every stream of the folders that it enters.
  EXPECT_TRUE(visited.members.at("Index/Document.iwa").selected);
  EXPECT_TRUE(visited.members.at("Index/ViewState.iwa").selected);
  EXPECT_TRUE(visited.members.at("Index/Tables/Tile.iwa").selected);
  EXPECT_FALSE(visited.members.at("Index/Other/Document.iwa").selected);
  EXPECT_FALSE(visited.members.at("Data/Document.iwa").selected);
  EXPECT_EQ(visited.members.at("Metadata/Properties.plist").size, 5U);
}

TEST_F(VisitPackageTest, EntersTheIndexZipOfADirectory) {
  writeDirectory(folder.path() / "a.pages", {{"Index.zip", zip({{"Index/Slide.iwa", kStream}})}});
  const Visited visited = visit(folder.path() / "a.pages");
  EXPECT_TRUE(visited.members.at("Index.zip").selected);
  EXPECT_TRUE(visited.members.at("Index.zip/Index/Slide.iwa").selected);
}

TEST_F(VisitPackageTest, FollowsNoCircleOfLinksForEver) {
  writeDirectory(folder.path() / "a.pages", {{"Index/Document.iwa", kStream}});
  std::filesystem::create_directory_symlink("..", folder.path() / "a.pages/Index/Tables");
  std::filesystem::create_directory_symlink(".", folder.path() / "a.pages/Data");
  EXPECT_TRUE(visit(folder.path() / "a.pages").members.contains("Index/Document.iwa"));
}

TEST_F(VisitPackageTest, SaysWhatAFileIsThatIsNoPackage) {
  EXPECT_EQ(visitBytes("").outcome.result.message, "not a package at all: the file is empty");
  EXPECT_EQ(visitBytes("words").outcome.result.message,
            "not a package at all: neither a zip nor a package directory");
  EXPECT_EQ(visitBytes(zip({{"index.apxl", "xml"}})).outcome.result.failure, Failure::kIwork09);
  EXPECT_EQ(visitBytes(zip({{"a.txt", "text"}})).outcome.result.failure,
            Failure::kNothingRecognised);
  EXPECT_EQ(visit(folder.path() / "missing").outcome.result.failure, Failure::kNoSuchFile);
}

}  // namespace
}  // namespace dorvex::cli::package_test
