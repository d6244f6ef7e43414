#include "path_list.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli {
namespace {

namespace fs = std::filesystem;
using testing::writeFile;
using Paths = std::vector<std::string>;

Paths all(PathList& list) {
  Paths paths;
  while (auto path = list.next()) paths.push_back(std::move(*path));
  return paths;
}

class ListPaths : public ::testing::Test {
 protected:
  std::string make(const std::string& name) {
    fs::create_directories((folder.path() / name).parent_path());
    writeFile(folder.path() / name, "x");
    return folder.path() / name;
  }
  Paths list(Paths paths, bool allFiles = false) {
    return all(*listPaths(std::move(paths), allFiles));
  }
  testing::TemporaryDirectory folder;
};

TEST_F(ListPaths, GivesNamedPathsWhateverTheyAre) {
  EXPECT_EQ(list({"b", "a", "/no/such/c.pages", "-"}), (Paths{"b", "a", "/no/such/c.pages", "-"}));
}

TEST_F(ListPaths, GoesThroughFoldersInTheOrderOfTheirNames) {
  const std::string c = make("c.pages");
  const std::string b = make("b/inner/x.KEY");
  const std::string a = make("a.numbers");
  make("b/readme.txt");
  EXPECT_EQ(list({folder.path()}), (Paths{a, b, c}));
}

TEST_F(ListPaths, TakesEveryFileOfAFolderOnRequest) {
  const std::string a = make("a.txt");
  EXPECT_EQ(list({folder.path()}), Paths{});
  EXPECT_EQ(list({folder.path()}, true), Paths{a});
  EXPECT_EQ(list({a}), Paths{a});
}

TEST_F(ListPaths, TakesAPackageFolderForADocument) {
  make("a.pages/Index/Document.iwa");
  make("b/Index.zip");
  make("c/Index/Document.iwa");
  make("d/Index/other.key");
  const fs::path root = folder.path();
  EXPECT_EQ(list({root}, false), (Paths{root / "a.pages", root / "d/Index/other.key"}));
  EXPECT_EQ(list({root}, true),
            (Paths{root / "a.pages", root / "b", root / "c", root / "d/Index/other.key"}));
  EXPECT_EQ(list({root / "b"}), Paths{root / "b"});
}

TEST_F(ListPaths, FollowsNoLinksToFolders) {
  make("real/a.pages");
  fs::create_directory_symlink(folder.path(), folder.path() / "real" / "loop");
  EXPECT_EQ(list({folder.path()}).size(), 1u);
}

TEST_F(ListPaths, TakesNoPipesNorDevicesOutOfFolders) {
  const std::string pipe = folder.path() / "pipe.pages";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", folder.path() / "zero.key");
  fs::create_symlink(pipe, folder.path() / "link.key");
  const std::string good = make("z.pages");
  for (const bool allFiles : {false, true}) {
    EXPECT_EQ(list({folder.path()}, allFiles), Paths{good});
  }
  EXPECT_EQ(list({pipe}), Paths{pipe});
}

TEST_F(ListPaths, TakesLinksToDocumentsAndThoseThatLeadNowhere) {
  make("real/Index/Document.iwa");
  const fs::path root = folder.path() / "links";
  fs::create_directories(root);
  fs::create_directory_symlink(folder.path() / "real", root / "a.pages");
  fs::create_symlink("/no/such/file", root / "b.pages");
  fs::create_directory_symlink("/", root / "c");
  EXPECT_EQ(list({root}), (Paths{root / "a.pages", root / "b.pages"}));
  EXPECT_EQ(list({root}, true), (Paths{root / "a.pages", root / "b.pages"}));
}

TEST(ReadPaths, GivesEachLineButNoEmptyOnes) {
  std::istringstream lines("a\n\nb c\nlast");
  EXPECT_EQ(all(*readPaths(lines, '\n')), (Paths{"a", "b c", "last"}));
}

TEST(ReadPaths, TakesLineFeedsForPartsOfPathsThatEndWithNul) {
  std::istringstream paths(std::string("a\nb\0c\0", 6));
  EXPECT_EQ(all(*readPaths(paths, '\0')), (Paths{"a\nb", "c"}));
}

}  // namespace
}  // namespace dorvex::cli
