#include <gtest/gtest.h>
#include <seccomp.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "dorvex/sandbox.h"
#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"
#include "support/unconfined.h"

namespace dorvex::text_command_test {
namespace {

using namespace testing;
using namespace std::string_literals;

class TextCommand : public ::testing::Test {
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

TEST_F(TextCommand, PrintsOneTextToALine) {
  const Finished run = runTool({"text", good("a.pages", {"first", "caf\xC3\xA9"})});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "first\ncaf\xC3\xA9\n");
  EXPECT_EQ(run.errors, "");
}

TEST_F(TextCommand, PrintsUtf8WhateverTheLocale) {
  const std::string text = "caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC";
  const std::string path = good("\xC3\xBC.pages", {text});
  ::setenv("LOCPATH", DORVEX_TEST_LOCALES, 1);
  for (const char* locale : {"C", "en_US.ISO-8859-1", "en_US.UTF-8", "no_SUCH.locale"}) {
    ::setenv("LC_ALL", locale, 1);
    EXPECT_EQ(runTool({"text", path}).output, text + "\n") << locale;
    EXPECT_EQ(runTool({"text", path + "x"}).errors,
              "dorvex: " + path + "x: No such file or directory\n")
        << locale;
    const auto record = nlohmann::json::parse(runTool({"batch", path}).output);
    EXPECT_EQ(record["path"], path) << locale;
    EXPECT_EQ(record["texts"], nlohmann::json{text}) << locale;
  }
  ::unsetenv("LC_ALL");
  ::unsetenv("LOCPATH");
}

TEST_F(TextCommand, EndsTextsWithNulOnRequest) {
  const std::string path = good("a.pages", {"first", "second"});
  EXPECT_EQ(runTool({"text", "-0", path}).output, "first\0second\0"s);
  EXPECT_EQ(runTool({"text", "--null", path}).output, "first\0second\0"s);
}

TEST_F(TextCommand, JoinsThePiecesOfALongText) {
  const std::string text = std::string(4095, 'x') + "\xC3\xA9" + std::string(9000, 'y');
  EXPECT_EQ(runTool({"text", good("a.pages", {text})}).output, text + "\n");
}

TEST_F(TextCommand, PrintsNothingForADocumentWithoutText) {
  const Finished run = runTool({"text", good("a.pages", {""})});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "");
}

TEST_F(TextCommand, PrintsEveryGoodDocumentAndALineForEachBadOne) {
  const std::string bad = document("bad.pages", "no package");
  const Finished run = runTool(
      {"text", good("a.pages", {"one"}), bad, folder.path() / "none.key", good("b.key", {"two"})});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\ntwo\n");
  EXPECT_EQ(run.errors, "dorvex: " + bad +
                            ": not a package at all: neither a zip nor a package directory\n" +
                            "dorvex: " + (folder.path() / "none.key").string() +
                            ": No such file or directory\n");
}

TEST_F(TextCommand, SaysThatATextIsPartialAndCountsItAsNotRead) {
  const std::string path =
      document("a.pages", zip({{"Index/Document.iwa", iwa({storage(1, {"one"})})},
                               {"Index/Slide.iwa", damagedChunk()}}));
  const Finished run = runTool({"text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\n");
  EXPECT_EQ(run.errors, "dorvex: " + path +
                            ": partial text: damaged member Index/Slide.iwa: chunk 1 holds "
                            "damaged data (another copy of it may be whole)\n");
}

TEST_F(TextCommand, KeepsAMessageOnItsLineWhateverADocumentIsCalled) {
  const Finished run = runTool({"text", document("a\n\x1B[2J\x7F.pages", "no package")});
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
  EXPECT_NE(run.errors.find("a??[2J?.pages: not a package"), std::string::npos) << run.errors;
}

TEST_F(TextCommand, ReadsStandardInput) {
  const std::string path = good("a.pages", {"one"});
  EXPECT_EQ(runTool({"text", "-"}, {.input = path}).output, "one\n");
  const Finished run = runTool({"text", "-"}, {.input = "/dev/null"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: standard input: not a package at all: the file is empty\n");
}

TEST_F(TextCommand, ReadsStandardInputFromAPipe) {
  const std::string command =
      "cat " + good("a.pages", {"one"}) + " | " + DORVEX_PROGRAM + " text -";
  EXPECT_EQ(runProgram("/bin/sh", {"-c", command}).output, "one\n");
}

TEST_F(TextCommand, SaysThatStandardInputIsClosed) {
  const Finished run = runProgram("/bin/sh", {"-c", std::string(DORVEX_PROGRAM) + " text - <&-"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: standard input: Bad file descriptor\n");
}

TEST_F(TextCommand, ReadsAPackageDirectory) {
  writeDirectory(folder.path() / "Index/a.pages",
                 {{"Index/Document.iwa", iwa({storage(1, {"one"})})}});
  EXPECT_EQ(runTool({"text", folder.path() / "Index/a.pages"}).output, "one\n");
}

TEST_F(TextCommand, PrintsTokensReadably) {
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

TEST_F(TextCommand, PrintsTokensAsBytes) {
  const Finished run = runTool({"tokens", "--raw", good("a.pages", {"Hello"})});
  EXPECT_EQ(run.output.size(), 51u + 19u);
  EXPECT_EQ(run.output.substr(51), "\0\x0E\0\0\0\x05\0\0\0Hello\x0E\x05\0\0\0"s);
}

TEST_F(TextCommand, PrintsTheTextsBeforeACrashAndSaysThatTheyArePartial) {
  const std::string path = document("a", "text one\nbuffer\ncrash\n");
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "text", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "one\n");
  EXPECT_EQ(run.errors,
            "dorvex: " + path + ": partial text: the reader crashed: Segmentation fault\n");
}

TEST_F(TextCommand, PutsAnySeparatorBehindTexts) {
  const std::string path = good("a.pages", {"first", "second"});
  EXPECT_EQ(runTool({"text", "--separator", "--", path}).output, "first--second--");
  EXPECT_EQ(runTool({"text", "--separator", "", path}).output, "firstsecond");
  EXPECT_EQ(runTool({"text", "-0", "--separator", "--", path}).status, 2);
}

TEST_F(TextCommand, KeepsTheOrderHoweverManyDocumentsAreReadAtATime) {
  std::vector<std::string> arguments = {"text", "--jobs", "5"};
  std::string expected;
  for (int i = 0; i < 60; ++i) {
    const std::string text(i % 7 == 0 ? 200'000 : 3, static_cast<char>('a' + i % 26));
    arguments.push_back(good(std::to_string(i) + ".key", {text}));
    expected += text + "\n";
  }
  EXPECT_EQ(runTool(arguments).output, expected);
}

TEST_F(TextCommand, GivesRecordsInsteadOfTexts) {
  const std::string path = good("a.pages", {"one"});
  const Finished run = runTool({"text", "--format", "json", path});
  EXPECT_EQ(run.status, 0);
  const auto record = nlohmann::json::parse(run.output);
  EXPECT_EQ(record["path"], path);
  EXPECT_EQ(record["texts"], nlohmann::json::array({"one"}));
}

TEST_F(TextCommand, GivesTokensInsteadOfTexts) {
  const std::string path = good("a.pages", {"one"});
  EXPECT_EQ(runTool({"text", "--format", "tokens", path}).output, runTool({"tokens", path}).output);
  EXPECT_EQ(runTool({"text", "--format", "pdf", path}).status, 2);
}

TEST_F(TextCommand, TidiesTextsOnRequest) {
  const std::string path = good("a.pages", {"a\rb", "\xEF\xBF\xBC", "c", "c"});
  EXPECT_EQ(runTool({"text", path}).output, "a\\rb\n\xEF\xBF\xBC\nc\nc\n");
  EXPECT_EQ(runTool({"text", "--tidy", path}).output, "a\nb\nc\n");
}

TEST_F(TextCommand, SaysWhatTheModuleReturnedOnRequest) {
  const std::string bad = document("bad.pages", "no package");
  EXPECT_EQ(runTool({"text", bad}).errors.find("returned"), std::string::npos);
  for (const char* option : {"-v", "--verbose"}) {
    EXPECT_NE(runTool({"text", option, bad}).errors.find("(the module returned 6)"),
              std::string::npos);
  }
}

TEST_F(TextCommand, SaysWhatAPersonCanDo) {
  const std::string path = document("a", "hang\n");
  EXPECT_EQ(
      runTool({"--module", FAKE_READER_MODULE, "--timeout", "0.2", "text", path}).errors,
      "dorvex: " + path + ": stopped: the reader took too long (--timeout gives it more time)\n");
}

TEST_F(TextCommand, PutsTheNameBeforeEachTextOnRequest) {
  const std::string a = good("a.pages", {"one", "two"});
  const std::string b = good("b.pages", {"three"});
  const std::string shown = a + ":one\n" + a + ":two\n" + b + ":three\n";
  EXPECT_EQ(runTool({"text", "--with-filename", a, b}).output, shown);
  EXPECT_EQ(runTool({"text", "-H", a, b}).output, shown);
  EXPECT_EQ(runToolAtTerminal({"text", "-H", a, b}).output, shown);
  EXPECT_EQ(runTool({"text", "-H", "-0", b}).output, b + ":three\0"s);
  EXPECT_EQ(runTool({"text", "-H", "-"}, {.input = b}).output, "standard input:three\n");
  EXPECT_EQ(runTool({"text", "-H", "--format", "json", b}).status, 2);
}

TEST_F(TextCommand, PutsTheNameBeforeEachLineOfATextUnlessSomethingElseEndsIt) {
  const std::string a = good("a.pages", {"one\ntwo\n"});
  EXPECT_EQ(runTool({"text", "-H", a}).output, a + ":one\n" + a + ":two\n" + a + ":\n");
  EXPECT_EQ(runTool({"text", "-H", "-0", a}).output, a + ":one\ntwo\n\0"s);
}

TEST_F(TextCommand, ReadsAFolderAsBatchDoes) {
  good("b.pages", {"two"});
  good("a.key", {"one"});
  good("c.txt", {"three"});
  EXPECT_EQ(runTool({"text", folder.path()}).output, "one\ntwo\n");
  EXPECT_EQ(runTool({"text", "--all-files", folder.path()}).output, "one\ntwo\nthree\n");
}

TEST_F(TextCommand, AnswersAModuleThatIsNotThereWithStatusThree) {
  const Finished run =
      runTool({"--module", "/no/such/module.so", "text", good("a.pages", {"one"}), "b.pages"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
  EXPECT_NE(run.errors.find("cannot load the module"), std::string::npos);
}

// What a kernel without Landlock lacks.
class TextCommandWithoutLandlock : public TextCommand {
 protected:
  void SetUp() override {
    if (unconfined()) GTEST_SKIP() << "there is no sandbox of which a part could be missing";
    if (const auto missing = missingConfinement(); !missing.empty())
      GTEST_SKIP() << missing.front();
  }
  std::string package(const std::string& name, const std::string& member) {
    std::filesystem::create_directories(folder.path() / name / "Index");
    document(name + "/Index/Document.iwa", member);
    return folder.path() / name;
  }
  const Streams lacking{.failingCall = SCMP_SYS(landlock_restrict_self)};
  const std::string warning =
      "dorvex: warning: documents are read with less of a sandbox: "
      "the kernel does not confine a process to a directory (Landlock)\n";
};

TEST_F(TextCommandWithoutLandlock, SaysOnceWhatTheSandboxLacks) {
  const std::string one = package("a.pages", iwa({storage(1, {"first"})}));
  const std::string other = package("b.pages", iwa({storage(1, {"second"})}));
  const Finished run = runTool({"text", one}, lacking);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "first\n");
  EXPECT_EQ(run.errors, warning);
  EXPECT_EQ(runTool({"text", one, other}, lacking).errors, warning);
  EXPECT_EQ(runTool({"convert", one}, lacking).errors.find(warning), 0u);
  EXPECT_EQ(runTool({"text", "--no-sandbox", one}, lacking).errors, "");
}

TEST_F(TextCommandWithoutLandlock, ReadsNothingWhereTheWholeSandboxIsRequired) {
  for (const std::string& document :
       {good("a.pages", {"first"}), package("b.pages", iwa({storage(1, {"second"})}))}) {
    const Finished run = runTool({"text", "--require-sandbox", document}, lacking);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.output, "");
  }
}

TEST_F(TextCommandWithoutLandlock, SaysNothingOfADocumentThatNeedsNone) {
  EXPECT_EQ(runTool({"text", good("a.pages", {"first"})}, lacking).errors, "");
}

TEST_F(TextCommandWithoutLandlock, SaysSoBesideWhatBecameOfTheDocument) {
  const std::string broken = package("broken.pages", "no chunk");
  const Finished whole = runTool({"text", broken});
  const Finished run = runTool({"text", broken}, lacking);
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(whole.errors, "");
  EXPECT_EQ(run.errors, warning + whole.errors);
}

}  // namespace
}  // namespace dorvex::text_command_test
