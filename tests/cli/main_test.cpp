#include <gtest/gtest.h>

#include <csignal>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::main_test {
namespace {

using namespace testing;

class MainTest : public ::testing::Test {
 protected:
  std::string document(const std::string& bytes) {
    writeFile(folder.path() / "a", bytes);
    return folder.path() / "a";
  }
  TemporaryDirectory folder;
};

TEST_F(MainTest, TellsItsVersion) {
  const Finished run = runTool({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output.rfind("dorvex " DORVEX_VERSION "\nreader module /", 0), 0u) << run.output;
  EXPECT_EQ(run.output.find("missing"), std::string::npos) << run.output;
}

TEST_F(MainTest, SaysWithItsVersionThatAModuleIsMissing) {
  const Finished run = runTool({"--module", "/no/such/module.so", "--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("/no/such/module.so (missing)"), std::string::npos) << run.output;
}

TEST_F(MainTest, HelpsWithExamples) {
  const Finished run = runTool({"--help"});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("Examples:"), std::string::npos);
  EXPECT_NE(run.output.find("dorvex text Letter.pages"), std::string::npos);
  EXPECT_EQ(runTool({"text", "--help"}).status, 0);
}

TEST_F(MainTest, AnswersBadUsageWithStatusTwo) {
  const std::vector<std::vector<std::string>> bad = {{},
                                                     {"text"},
                                                     {"tokens"},
                                                     {"no-such-command"},
                                                     {"tokens", "a", "b"},
                                                     {"batch"},
                                                     {"batch", "--jobs", "0", "a"},
                                                     {"batch", "-0", "a"}};
  for (const auto& arguments : bad) {
    const Finished run = runTool(arguments);
    EXPECT_EQ(run.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(run.output, "");
    EXPECT_NE(run.errors, "");
  }
}

TEST_F(MainTest, TakesAnotherModule) {
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "text", document("text one\n")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "one\n");
}

TEST_F(MainTest, TakesCommonOptionsBehindTheCommandToo) {
  EXPECT_EQ(runTool({"text", document("text one\n"), "--module", FAKE_READER_MODULE}).output,
            "one\n");
}

TEST_F(MainTest, SurvivesACrashUnlessItReadsInItsOwnProcess) {
  const std::string path = document("crash\n");
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: " + path + ": the reader crashed: Segmentation fault\n");
  EXPECT_EQ(runTool({"--module", FAKE_READER_MODULE, "--in-process", "text", path}).status,
            -SIGSEGV);
}

TEST_F(MainTest, TellsHowAWorkerDiedWhereItIsStartedWithoutASignalForThat) {
  const std::string path = document("crash\n");
  const Finished run = runProgram("/usr/bin/env", {"--ignore-signal=CHLD", DORVEX_PROGRAM,
                                                   "--module", FAKE_READER_MODULE, "text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: " + path + ": the reader crashed: Segmentation fault\n");
}

// What the reader parsed stays allocated by rule; a leak check would count it.
TEST_F(MainTest, ReadsInItsOwnProcessOnRequest) {
  const std::string path = document(zip({{"Index/Document.iwa", iwa({storage(1, {"one"})})}}));
  const Finished run = runProgram("/usr/bin/env", {"ASAN_OPTIONS=detect_leaks=0", DORVEX_PROGRAM,
                                                   "--in-process", "text", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "one\n");
}

TEST_F(MainTest, EndsADocumentAfterTheTimeout) {
  const std::string path = document("hang\n");
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "--timeout", "0.2", "text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: " + path +
                            ": stopped: the reader took too long (--timeout gives it more time)\n");
}

}  // namespace
}  // namespace dorvex::main_test
