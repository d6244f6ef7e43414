#include "path_list.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>

#include "exit_status.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::path_list_test {
namespace {

namespace fs = std::filesystem;
using testing::writeFile;
using Paths = std::vector<std::string>;

Paths all(PathList& list) {
  Paths paths;
  while (auto listed = list.next()) {
    EXPECT_FALSE(listed->fault) << listed->path;
    paths.push_back(std::move(listed->path));
  }
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

TEST_F(ListPaths, KnowsStandardInputFromAFileOfThatName) {
  EXPECT_TRUE(listPaths({"-"}, false)->next()->isStandardInput);
  EXPECT_FALSE(listPaths({"./-"}, false)->next()->isStandardInput);
  make("-");
  EXPECT_FALSE(listPaths({folder.path()}, true)->next()->isStandardInput);
}

// Names of 200 bytes, until the path is longer than any call takes.
std::string makeTooDeep(const std::string& root) {
  const std::string name(200, 'd');
  std::string path = root;
  int folder = ::open(root.c_str(), O_RDONLY | O_DIRECTORY);
  while (path.size() < PATH_MAX) {
    EXPECT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int inner = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
    ::close(folder);
    folder = inner;
    path += "/" + name;
  }
  ::close(folder);
  return path;
}

TEST_F(ListPaths, GivesAFolderThatIsTooDeepWithItsFaultAndGoesOn) {
  const std::string last = make("z.pages");
  const std::string deep = makeTooDeep(folder.path());
  const auto list = listPaths({folder.path()}, false);
  const auto first = list->next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->path, deep);
  EXPECT_EQ(first->fault, std::errc::filename_too_long);
  EXPECT_EQ(all(*list), Paths{last});
}

TEST_F(ListPaths, GivesAFolderThatCannotBeEnteredWithItsFault) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is forbidden to root";
  make("a/b/c.pages");
  const fs::path outer = folder.path() / "a";
  for (const auto mode : {fs::perms::none, fs::perms::owner_read, fs::perms::owner_exec}) {
    fs::permissions(outer, mode);
    const auto list = listPaths({folder.path()}, false);
    const auto first = list->next();
    fs::permissions(outer, fs::perms::owner_all);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->fault, std::errc::permission_denied) << first->path;
  }
}

class ReadPathsTest : public ::testing::Test {
 protected:
  Paths read(const std::string& contents, char end = '\n') {
    writeFile(file, contents);
    return all(*readPaths(file, end));
  }
  testing::TemporaryDirectory folder;
  std::string file = folder.path() / "list";
};

TEST_F(ReadPathsTest, GivesEachLineButNoEmptyOnes) {
  EXPECT_EQ(read("a\n\nb c\nlast"), (Paths{"a", "b c", "last"}));
  EXPECT_EQ(read(""), Paths{});
  EXPECT_EQ(read("\n"), Paths{});
}

TEST_F(ReadPathsTest, TakesLineEndsOfOtherSystems) {
  EXPECT_EQ(read("a\r\nb\r\n\r\nc\rd\n"), (Paths{"a", "b", "c\rd"}));
}

TEST_F(ReadPathsTest, TakesLineFeedsForPartsOfPathsThatEndWithNul) {
  EXPECT_EQ(read(std::string("a\nb\0c\r\0", 7), '\0'), (Paths{"a\nb", "c\r"}));
}

TEST_F(ReadPathsTest, GivesPathsLongerThanItsBlocksWhole) {
  const std::string path(200'000, 'x');
  EXPECT_EQ(read(path + "\n" + path), (Paths{path, path}));
}

TEST_F(ReadPathsTest, TakesADashForAFileOfThatName) {
  writeFile(file, "-\n");
  EXPECT_FALSE(readPaths(file, '\n')->next()->isStandardInput);
}

TEST_F(ReadPathsTest, NamesTheOptionForAListThatHoldsNul) {
  for (const std::string& contents :
       {std::string("a\0b\0", 4), std::string("a\0b\n", 4), "x" + std::string(300'000, '\0')}) {
    try {
      read(contents);
      FAIL() << "taken";
    } catch (const EnvironmentError& error) {
      EXPECT_NE(std::string(error.what()).find("-0"), std::string::npos);
    }
  }
}

TEST_F(ReadPathsTest, TakesAFailureForNoEnd) {
  EXPECT_THROW(readPaths("/no/such/list", '\n'), EnvironmentError);
  EXPECT_THROW(all(*readPaths(folder.path(), '\n')), EnvironmentError);
}

TEST(MayBeSeveral, IsFalseForOneFileAndOnePackageAlone) {
  const testing::TemporaryDirectory folder;
  fs::create_directories(folder.path() / "a.pages/Index");
  EXPECT_FALSE(mayBeSeveral({{folder.path() / "a.pages"}, "", false, false}));
  EXPECT_FALSE(mayBeSeveral({{"tea.key"}, "", false, false}));
  EXPECT_FALSE(mayBeSeveral({{"-"}, "", false, false}));
  EXPECT_TRUE(mayBeSeveral({{folder.path()}, "", false, false}));
  EXPECT_TRUE(mayBeSeveral({{"tea.key", "tea.key"}, "", false, false}));
  EXPECT_TRUE(mayBeSeveral({{}, "list", false, false}));
}

}  // namespace
}  // namespace dorvex::cli::path_list_test
