#include "resume.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "exit_status.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli {
namespace {

using testing::readFile;
using testing::writeFile;
using Ids = std::unordered_set<std::string>;

class Resume : public ::testing::Test {
 protected:
  std::string with(const std::string& contents) {
    writeFile(folder.path() / "out", contents);
    return folder.path() / "out";
  }
  std::string continued(const std::string& contents) {
    const std::string file = with(contents);
    const int fd = openForMore(file);
    EXPECT_EQ(::write(fd, "new\n", 4), 4);
    ::close(fd);
    return readFile(file);
  }
  testing::TemporaryDirectory folder;
};

TEST_F(Resume, FindsTheIdsOfWholeRecords) {
  EXPECT_EQ(
      idsIn(with("{\"id\":\"a\",\"texts\":[{\"id\":\"x\"}]}\n{\"v\":{\"id\":\"y\"},\"id\":\"b\"}\n"
                 "{\"id\":\"c\",\"te")),
      (Ids{"a", "b"}));
}

TEST_F(Resume, PassesOverLinesThatAreNoRecords) {
  EXPECT_EQ(idsIn(with("\nnonsense\n[]\n{\"id\":7}\n{}\n{\"id\":\"a\"}\n")), Ids{"a"});
  EXPECT_EQ(idsIn(folder.path() / "none"), Ids{});
}

TEST_F(Resume, CutsAnUnfinishedLineOff) {
  EXPECT_EQ(continued("one\ntw"), "one\nnew\n");
  EXPECT_EQ(continued("one\n"), "one\nnew\n");
  EXPECT_EQ(continued("on"), "new\n");
  EXPECT_EQ(continued("one\n" + std::string(200'000, 'x')), "one\nnew\n");
  EXPECT_EQ(continued(std::string(200'000, 'x')), "new\n");
}

TEST_F(Resume, SaysWhyAFileCannotBeOpened) {
  EXPECT_THROW(openForMore("/no/such/folder/out"), EnvironmentError);
}

}  // namespace
}  // namespace dorvex::cli
