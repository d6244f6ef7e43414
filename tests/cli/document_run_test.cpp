#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::document_run_test {
namespace {

using namespace testing;
namespace fs = std::filesystem;

class DocumentRun : public ::testing::Test {
 protected:
  std::string document(const std::string& name, const std::string& bytes) {
    fs::create_directories((folder.path() / name).parent_path());
    writeFile(folder.path() / name, bytes);
    return folder.path() / name;
  }
  std::string good(const std::string& name, const std::string& text) {
    return document(name, zip({{"Index/Document.iwa", iwa({storage(1, {text})})}}));
  }
  static long filesIn(const std::string& target) {
    return std::distance(fs::directory_iterator(target), {});
  }
  TemporaryDirectory folder;
  const std::string target = (folder.path() / "texts").string() + "/";
};

TEST_F(DocumentRun, ShowsAtATerminalWhichTextIsWhose) {
  const std::string a = good("a\xC2\x9B.pages", "one");
  const std::string bad = document("bad.pages", "no package");
  const std::string b = good("b.pages", "two");
  const std::string shownA = (folder.path() / "a?.pages").string();
  const Finished run = runToolAtTerminal({"text", "-j1", a, bad, b});
  EXPECT_EQ(run.output, "==> " + shownA + " <==\none\ndorvex: " + bad +
                            ": not a package at all: neither a zip nor a package directory\n" +
                            "\n==> " + b + " <==\ntwo\n");
  EXPECT_EQ(runToolAtTerminal({"text", folder.path()}).output.substr(0, 4), "==> ");
}

TEST_F(DocumentRun, ShowsNoHeadingsForOneDocumentNorInAPipe) {
  const std::string a = good("a.pages", "one");
  EXPECT_EQ(runToolAtTerminal({"text", a}).output, "one\n");
  EXPECT_EQ(runTool({"text", a, a}).output, "one\none\n");
}

TEST_F(DocumentRun, ReadsStandardInputOnceOnly) {
  EXPECT_EQ(runTool({"text", "-", "-"}).status, 2);
  EXPECT_EQ(runTool({"batch", "-", "-"}).status, 2);
}

TEST_F(DocumentRun, TakesADashForStandardOutput) {
  const std::string path = good("a.pages", "one");
  EXPECT_EQ(runTool({"text", "-o", "-", path}).output, "one\n");
  EXPECT_NE(runTool({"tokens", "-o", "-", path}).output, "");
}

TEST_F(DocumentRun, WritesIntoAFileWholeOrNotAtAll) {
  const std::string path = good("a.pages", "one");
  const std::string target = folder.path() / "out";
  EXPECT_EQ(runTool({"text", "-o", target, path}).status, 0);
  EXPECT_EQ(readFile(target), "one\n");
  EXPECT_EQ(runTool({"text", "-o", "/no/such/folder/texts", path}).status, 3);
}

TEST_F(DocumentRun, LeavesAFileAloneThatExistsUnlessToldOtherwise) {
  const std::string path = good("a.pages", "one");
  const std::string target = document("out", "before");
  EXPECT_EQ(runTool({"text", "-o", target, path}).status, 3);
  EXPECT_EQ(runTool({"text", "-o", target, "--on-exists", "skip", path}).status, 0);
  EXPECT_EQ(readFile(target), "before");
  EXPECT_EQ(runTool({"text", "-o", target, "--on-exists", "replace", path}).status, 0);
  EXPECT_EQ(readFile(target), "one\n");
}

TEST_F(DocumentRun, WritesAFileForEachDocumentIntoADirectory) {
  const Finished run = runTool({"text", "-o", target, good("a.pages", "one"), good("b.key", "two"),
                                document("bad.pages", "no package")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(readFile(target + "a.pages.txt"), "one\n");
  EXPECT_EQ(readFile(target + "b.key.txt"), "two\n");
  EXPECT_EQ(filesIn(target), 2);
}

TEST_F(DocumentRun, SaysWhichFilesOfADirectoryExistAlready) {
  const std::string path = good("a.pages", "one");
  ASSERT_EQ(runTool({"text", "-o", target, path}).status, 0);
  const Finished again = runTool({"text", "-o", target, path, good("b.pages", "two")});
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.errors, "dorvex: " + path + ": " + target + "a.pages.txt exists already\n");
  EXPECT_EQ(readFile(target + "b.pages.txt"), "two\n");
}

// It would be renamed over.
TEST_F(DocumentRun, WritesIntoWhatIsNoRegularFile) {
  const std::string path = good("a.pages", "one");
  const std::string pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const char* onExists : {"replace", "fail"}) {
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(runTool({"text", "-o", pipe, "--on-exists", onExists, path}).status, 0);
    char text[16];
    EXPECT_EQ(::read(reader, text, sizeof text), 4);
    ::close(reader);
    EXPECT_TRUE(fs::is_fifo(pipe));
  }
  EXPECT_EQ(runTool({"text", "-o", "/dev/null", "--on-exists", "replace", path}).status, 0);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(DocumentRun, RefusesTwoDocumentsOfOneNameBeforeAnythingIsWritten) {
  const std::string first = good("x/a.pages", "one");
  const std::string second = good("y/a.pages", "two");
  for (const char* onExists : {"fail", "replace", "skip"}) {
    const Finished run = runTool({"text", "-o", target, "--on-exists", onExists, first, second});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.errors.find(first + " and " + second), std::string::npos) << run.errors;
    EXPECT_FALSE(fs::exists(target));
  }
}

TEST_F(DocumentRun, TellsDocumentsOfOneNameApartOnRequest) {
  good("x/a.pages", "one");
  good("y/a.pages", "two");
  for (const char* naming : {"path", "hash"}) {
    const std::string into = (folder.path() / naming).string() + "/";
    EXPECT_EQ(runTool({"text", "-o", into, "--name", naming, folder.path()}).status, 0);
    EXPECT_EQ(filesIn(into), 2) << naming;
  }
}

TEST_F(DocumentRun, WritesFilesForNamesOfAnyLength) {
  const std::string longest = good(std::string(249, 'n') + ".pages", "one");
  const std::string longer = good(std::string(248, 'n') + ".pages", "two");
  EXPECT_EQ(runTool({"text", "-o", target, longest, longer}).status, 0);
  EXPECT_EQ(filesIn(target), 2);
}

int statusAfterInterrupt(const std::string& path, const std::string& target) {
  const pid_t tool = ::fork();
  if (tool == 0) {
    ::execl(DORVEX_PROGRAM, DORVEX_PROGRAM, "--module", FAKE_READER_MODULE, "text", "-o",
            target.c_str(), path.c_str(), nullptr);
    ::_exit(127);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  ::kill(tool, SIGINT);
  int status = 0;
  ::waitpid(tool, &status, 0);
  return WEXITSTATUS(status);
}

// The file system cannot make files without a name the second time.
TEST_F(DocumentRun, LeavesNoFilesBehindWhenItIsInterrupted) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer wants to be loaded first";
#endif
  const std::string path = document("a", "text one\nbuffer\nhang\n");
  fs::create_directory(target);
  for (const char* preloaded : {"", DORVEX_POOR_FILE_SYSTEM}) {
    ::setenv("LD_PRELOAD", preloaded, 1);
    EXPECT_EQ(statusAfterInterrupt(path, target), 130);
    ::unsetenv("LD_PRELOAD");
    EXPECT_EQ(filesIn(target), 0) << preloaded;
  }
}

TEST_F(DocumentRun, SparesWhatIsThereOnFileSystemsThatDoNotKnowHow) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer wants to be loaded first";
#endif
  const std::string path = good("a.pages", "one");
  ::setenv("LD_PRELOAD", DORVEX_POOR_FILE_SYSTEM, 1);
  ::setenv("DORVEX_TEST_NO_NOREPLACE", "1", 1);
  EXPECT_EQ(runTool({"text", "-o", target, path}).status, 0);
  EXPECT_EQ(runTool({"text", "-o", target, path}).status, 1);
  EXPECT_EQ(runTool({"text", "-o", target, "--on-exists", "replace", path}).status, 0);
  ::unsetenv("DORVEX_TEST_NO_NOREPLACE");
  EXPECT_EQ(runTool({"text", "-o", target, path}).status, 1);
  ::unsetenv("LD_PRELOAD");
  EXPECT_EQ(readFile(target + "a.pages.txt"), "one\n");
  EXPECT_EQ(filesIn(target), 1);
}

}  // namespace
}  // namespace dorvex::document_run_test
