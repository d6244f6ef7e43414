#include "output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::output_file_test {
namespace {

using testing::readFile;
using testing::writeFile;

class OutputFileTest : public ::testing::Test {
 protected:
  long files() { return std::distance(std::filesystem::directory_iterator(folder.path()), {}); }
  testing::TemporaryDirectory folder;
  std::filesystem::path path = folder.path() / "a.txt";
};

TEST_F(OutputFileTest, TakesItsNameWhenItIsKept) {
  OutputFile file(path);
  file.output().write("text");
  EXPECT_FALSE(std::filesystem::exists(path));
  file.keep(false);
  EXPECT_EQ(readFile(path), "text");
}

TEST_F(OutputFileTest, VanishesOtherwise) {
  {
    OutputFile file(path);
    file.output().write("text");
  }
  EXPECT_EQ(files(), 0);
}

TEST_F(OutputFileTest, ReplacesAnotherOnlyWhereItMay) {
  writeFile(path, "before");
  {
    OutputFile file(path);
    file.output().write("after");
    try {
      file.keep(false);
      FAIL() << "replaced";
    } catch (const OutputError& error) {
      EXPECT_EQ(error.error, EEXIST);
    }
  }
  EXPECT_EQ(readFile(path), "before");
  EXPECT_EQ(files(), 1);
  OutputFile file(path);
  file.output().write("after");
  file.keep(true);
  EXPECT_EQ(readFile(path), "after");
}

TEST_F(OutputFileTest, HasTheModeThatTheMaskGives) {
  const mode_t before = ::umask(027);
  OutputFile file(path);
  file.keep(false);
  ::umask(before);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_NE(status.st_mode & 0777, 0600u);
}

TEST_F(OutputFileTest, HasTheModeOfWhatItReplaces) {
  writeFile(path, "before");
  ASSERT_EQ(::chmod(path.c_str(), 0604), 0);
  {
    OutputFile file(path);
    file.keep(true);
  }
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0604u);
}

TEST_F(OutputFileTest, ReplacesWhatALinkLeadsTo) {
  writeFile(path, "before");
  const auto link = folder.path() / "link";
  std::filesystem::create_symlink("a.txt", link);
  {
    OutputFile file(link);
    file.output().write("after");
    file.keep(true);
  }
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(readFile(path), "after");
}

TEST_F(OutputFileTest, HasNoNameUntilItIsKept) {
  OutputFile file(path);
  file.output().write("text");
  EXPECT_EQ(files(), 0);
}

TEST_F(OutputFileTest, TakesNoDeviceForAFileThatIsInTheWay) {
  EXPECT_FALSE(OutputFile::isTaken("/dev/null"));
  EXPECT_FALSE(OutputFile::isTaken(path));
  std::filesystem::create_symlink("/no/such/file", path);
  EXPECT_TRUE(OutputFile::isTaken(path));
}

TEST_F(OutputFileTest, SaysWhyItCannotBeMade) {
  EXPECT_THROW(OutputFile("/no/such/folder/a"), OutputError);
}

}  // namespace
}  // namespace dorvex::cli::output_file_test
