#include <gtest/gtest.h>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::output_test {
namespace {

using namespace testing;

class OutputTest : public ::testing::Test {
 protected:
  OutputTest() : path(folder.path() / "a.pages") {
    writeFile(path, zip({{"Index/Document.iwa", iwa({storage(1, {std::string(300000, 'x')})})}}));
  }
  TemporaryDirectory folder;
  std::string path;
};

TEST_F(OutputTest, ReportsThatStandardOutputCannotBeWritten) {
  const Finished run = runTool({"text", path, path}, {.output = "/dev/full"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.errors, "dorvex: cannot write the output: No space left on device\n");
}

TEST_F(OutputTest, StopsWithoutAWordWhenNobodyReadsAnyMore) {
  const Finished run = runTool({"text", path, path}, {.closedPipe = true});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.errors, "");
}

}  // namespace
}  // namespace dorvex::output_test
