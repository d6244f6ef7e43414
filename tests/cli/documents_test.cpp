#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex {
namespace {

using namespace testing;
using namespace std::string_literals;

class DocumentsTest : public ::testing::Test {
 protected:
  std::string document(const std::string& name, const std::string& bytes) {
    writeFile(folder.path() / name, bytes);
    return folder.path() / name;
  }
  std::string good(const std::string& name, const std::vector<std::string>& texts) {
    std::vector<Archive> archives;
    for (const std::string& text : texts) archives.push_back(storage(archives.size() + 1, {text}));
    return document(name, zip({{"Index/Document.iwa", iwa(archives)}}));
  }
  TemporaryDirectory folder;
};

TEST_F(DocumentsTest, PrintsOneTextToALine) {
  const Finished run = runTool({"text", good("a.pages", {"first", "caf\xC3\xA9"})});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "first\ncaf\xC3\xA9\n");
  EXPECT_EQ(run.errors, "");
}

TEST_F(DocumentsTest, EndsTextsWithNulOnRequest) {
  const std::string path = good("a.pages", {"first", "second"});
  EXPECT_EQ(runTool({"text", "-0", path}).output, "first\0second\0"s);
  EXPECT_EQ(runTool({"text", "--null", path}).output, "first\0second\0"s);
}

TEST_F(DocumentsTest, JoinsThePiecesOfALongText) {
  const std::string text = std::string(4095, 'x') + "\xC3\xA9" + std::string(9000, 'y');
  EXPECT_EQ(runTool({"text", good("a.pages", {text})}).output, text + "\n");
}

TEST_F(DocumentsTest, PrintsNothingForADocumentWithoutText) {
  const Finished run = runTool({"text", good("a.pages", {""})});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "");
}

TEST_F(DocumentsTest, PrintsEveryGoodDocumentAndALineForEachBadOne) {
  const std::string bad = document("bad.pages", "no package");
  const Finished run = runTool(
      {"text", good("a.pages", {"one"}), bad, folder.path() / "none.key", good("b.key", {"two"})});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\ntwo\n");
  EXPECT_EQ(run.errors, "dorvex: " + bad +
                            ": not a package at all: neither a zip nor a package directory (the "
                            "module returned 6)\n" +
                            "dorvex: " + (folder.path() / "none.key").string() +
                            ": No such file or directory\n");
}

TEST_F(DocumentsTest, SaysThatATextIsPartialAndCountsItAsNotRead) {
  const std::string path =
      document("a.pages", zip({{"Index/Document.iwa", iwa({storage(1, {"one"})})},
                               {"Index/Slide.iwa", damagedChunk()}}));
  const Finished run = runTool({"text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\n");
  EXPECT_EQ(run.errors, "dorvex: " + path +
                            ": partial text: damaged member Index/Slide.iwa: chunk 1 holds "
                            "damaged data (the module returned 0)\n");
}

TEST_F(DocumentsTest, KeepsAMessageOnItsLineWhateverADocumentIsCalled) {
  const Finished run = runTool({"text", document("a\n\x1B[2J\x7F.pages", "no package")});
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
  EXPECT_NE(run.errors.find("a??[2J?.pages: not a package"), std::string::npos) << run.errors;
}

TEST_F(DocumentsTest, ReadsStandardInput) {
  const std::string path = good("a.pages", {"one"});
  EXPECT_EQ(runTool({"text", "-"}, {.input = path}).output, "one\n");
  const Finished run = runTool({"text", "-"}, {.input = "/dev/null"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors,
            "dorvex: standard input: not a package at all: the file is empty (the module returned "
            "6)\n");
}

TEST_F(DocumentsTest, ReadsStandardInputFromAPipe) {
  const std::string command =
      "cat " + good("a.pages", {"one"}) + " | " + DORVEX_PROGRAM + " text -";
  EXPECT_EQ(runProgram("/bin/sh", {"-c", command}).output, "one\n");
}

TEST_F(DocumentsTest, SaysThatStandardInputIsClosed) {
  const Finished run = runProgram("/bin/sh", {"-c", std::string(DORVEX_PROGRAM) + " text - <&-"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: standard input: Bad file descriptor\n");
}

TEST_F(DocumentsTest, ReadsAPackageDirectory) {
  writeDirectory(folder.path() / "Index/a.pages",
                 {{"Index/Document.iwa", iwa({storage(1, {"one"})})}});
  EXPECT_EQ(runTool({"text", folder.path() / "Index/a.pages"}).output, "one\n");
}

TEST_F(DocumentsTest, PrintsTokensReadably) {
  const Finished run = runTool({"tokens", good("a.pages", {"a \"b\"", "c"})});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "DOC_HEADER 0 10\n"
            "PAGE_SETUP 2 12240 15840 1440 1440 1440 1440 4294967295 4294967295\n"
            "TEXT \"a \\\"b\\\"\"\n"
            "BREAK\n"
            "TEXT \"c\"\n"
            "BREAK\n");
}

TEST_F(DocumentsTest, PrintsTokensAsBytes) {
  const Finished run = runTool({"tokens", "--raw", good("a.pages", {"Hello"})});
  EXPECT_EQ(run.output.size(), 51u + 19u);
  EXPECT_EQ(run.output.substr(51), "\0\x0E\0\0\0\x05\0\0\0Hello\x0E\x05\0\0\0"s);
}

TEST_F(DocumentsTest, PrintsTheTextsBeforeACrashAndSaysThatTheyArePartial) {
  const std::string path = document("a", "text one\nbuffer\ncrash\n");
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\n");
  EXPECT_EQ(run.errors,
            "dorvex: " + path + ": partial text: the reader crashed: Segmentation fault\n");
}

}  // namespace
}  // namespace dorvex
