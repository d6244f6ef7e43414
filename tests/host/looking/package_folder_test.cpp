#include "looking/package_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "bytes/unique_fd.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::package_folder_test {
namespace {

namespace fs = std::filesystem;

class LookAtFolder : public ::testing::Test {
 protected:
  FolderLook look() const {
    const UniqueFd directory(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
    return lookAtFolder(directory.get());
  }
  void write(const std::string& name, const std::string& contents) const {
    testing::writeDirectory(folder.path(), {{name, contents}});
  }

  testing::TemporaryDirectory folder;
};

TEST_F(LookAtFolder, CountsTheBytesOfAllFiles) {
  write("Index/Document.iwa", "123");
  write("Data/a/b.jpg", "45");
  EXPECT_EQ(look().bytes, 5u);
  EXPECT_TRUE(look().package.directory);
  EXPECT_TRUE(look().package.hasStreams);
  EXPECT_FALSE(look().failure);
}

TEST_F(LookAtFolder, NoticesAChangeOfWhatTheReaderMayRead) {
  write("Index/Document.iwa", "123");
  const std::uint64_t before = look().streams;
  EXPECT_EQ(look().streams, before);
  write("Data/picture", "x");
  EXPECT_EQ(look().streams, before);
  write("Index/Tables/Tile.iwa", "x");
  const std::uint64_t more = look().streams;
  EXPECT_NE(more, before);
  write("Index/Document.iwa", "1234");
  EXPECT_NE(look().streams, more);
}

TEST_F(LookAtFolder, EndsInAPackageThatIsDeepOrLeadsInCircles) {
  std::string deep;
  for (int i = 0; i < 500; ++i) deep += "a/";
  write(deep + "f", "12");
  write("Index/f", "3");
  fs::create_directory_symlink(folder.path() / "Index", folder.path() / "Index" / "Tables");
  EXPECT_EQ(look().bytes, 1u);
}

TEST_F(LookAtFolder, NamesAFolderThatItMayNotList) {
  write("Index/Document.iwa", "123");
  fs::permissions(folder.path(), fs::perms::all);
  fs::permissions(folder.path() / "Index", fs::perms::none);
  // The super-user may.
  const auto lookAsNobody = [this] {
    if (::geteuid() == 0 && ::setuid(65534) != 0) std::_Exit(2);
    const auto failure = look().failure;
    std::_Exit(failure == SystemFailure{"Index", EACCES} ? 42 : 1);
  };
  EXPECT_EXIT(lookAsNobody(), ::testing::ExitedWithCode(42), "");
  fs::permissions(folder.path() / "Index", fs::perms::owner_all);
}

TEST(LookAtFolderThatIsNone, NamesTheError) {
  EXPECT_EQ(lookAtFolder(-1).failure, (SystemFailure{"", EBADF}));
}

}  // namespace
}  // namespace dorvex::package_folder_test
