#include <gtest/gtest.h>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::command_line_test {
namespace {

using namespace testing;

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() {
    writeFile(path, zip({{"Index/Document.iwa", iwa({storage(1, {"one"}), storage(2, {"two"})})}}));
  }
  Finished run(std::vector<std::string> arguments) {
    arguments.push_back(path);
    return runTool(arguments);
  }
  TemporaryDirectory folder;
  const std::string path = folder.path() / "a.pages";
};

TEST_F(CommandLineTest, AnswersBadUsageWithStatusTwoAndAMessage) {
  const std::vector<std::vector<std::string>> bad = {{"--timeout", "0.0004", "text"},
                                                     {"--timeout", "nan", "text"},
                                                     {"--timeout", "soon", "text"},
                                                     {"--timeout", "-1", "text"},
                                                     {"--max-memory", "-5", "text"},
                                                     {"--max-memory", "99999999999GB", "text"},
                                                     {"--recycle", "0", "text"},
                                                     {"--module=", "text"},
                                                     {"text", "--output="},
                                                     {"text", "--jobs", "1025"},
                                                     {"text", "--no-such-option"},
                                                     {"inspect", "--object", "-5"},
                                                     {"batch", "--shard", "2/2"},
                                                     {"batch", "--in-process"},
                                                     {"--require-sandbox", "text", "--no-sandbox"}};
  for (const auto& arguments : bad) {
    const Finished done = run(arguments);
    EXPECT_EQ(done.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(done.output, "");
    EXPECT_NE(done.errors, "");
  }
}

TEST_F(CommandLineTest, SaysInWordsWhatAnOptionTakes) {
  EXPECT_EQ(run({"text", "--format", "pdf"}).errors.substr(0, 55),
            "--format: must be text, json or tokens, not 'pdf'\nRun w");
  EXPECT_EQ(run({"text", "--on-exists", "ask"}).errors.substr(0, 56),
            "--on-exists: must be skip, replace or fail, not 'ask'\nRu");
}

TEST_F(CommandLineTest, TellsATerminalNothingThroughAMessage) {
  EXPECT_EQ(run({"text", "--\x1B[2J\xC2\x9B"}).errors.find('\x1B'), std::string::npos);
}

TEST_F(CommandLineTest, TakesAllForTheNumberOfJobs) {
  for (const char* command : {"text", "batch"}) {
    EXPECT_EQ(run({command, "--jobs", "all"}).status, 0) << command;
    EXPECT_EQ(run({command, "-jall"}).status, 0) << command;
  }
}

TEST_F(CommandLineTest, LetsNoEmptyValueSwallowTheNextArgument) {
  EXPECT_EQ(run({"text", "--separator="}).output, "onetwo");
  EXPECT_EQ(run({"text", "--separator", ""}).output, "onetwo");
}

TEST_F(CommandLineTest, TakesAValueThatLooksLikeAnOptionAsItIs) {
  EXPECT_EQ(run({"text", "--separator", "--tidy="}).output, "one--tidy=two--tidy=");
  EXPECT_EQ(run({"text", "--separator", "--"}).output, "one--two--");
  EXPECT_EQ(runTool({"text", "--", "--separator="}).errors,
            "dorvex: --separator=: No such file or directory\n");
}

TEST_F(CommandLineTest, ShowsWithACommandEveryOptionThatItTakes) {
  for (const char* command : {"text", "tokens", "batch", "inspect"}) {
    const std::string help = runTool({command, "--help"}).output;
    for (const char* option : {"--timeout", "--max-memory", "--module", "--no-sandbox"}) {
      EXPECT_NE(help.find(option), std::string::npos) << command << option;
    }
  }
  EXPECT_EQ(runTool({"batch", "--help"}).output.find("--in-process"), std::string::npos);
  EXPECT_EQ(runTool({"inspect", "--help"}).output.find("--recycle"), std::string::npos);
}

TEST_F(CommandLineTest, TakesCommonOptionsBeforeTheCommandAndBehindIt) {
  EXPECT_EQ(run({"--timeout", "9", "text"}).output, "one\ntwo\n");
  EXPECT_EQ(run({"text", "--timeout", "9"}).output, "one\ntwo\n");
}

TEST_F(CommandLineTest, NamesEveryExitStatus) {
  const std::string help = runTool({"--help"}).output;
  EXPECT_NE(help.find("130 interrupted"), std::string::npos);
}

}  // namespace
}  // namespace dorvex::command_line_test
