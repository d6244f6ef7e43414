// What a reader can do from inside a worker. The reader is a module that tries.

#include <gtest/gtest.h>
#include <seccomp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "dorvex/sandbox.h"
#include "fake_document.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::confinement_test {
namespace {

using testing::fakeReader;
using testing::Reading;
using testing::readTexts;
using testing::script;
using testing::TemporaryDirectory;
using testing::writeFile;
using Texts = std::vector<std::string>;

constexpr const char kDenied[] = "Operation not permitted";  // by the list of system calls
constexpr const char kOutside[] = "Permission denied";       // by Landlock

class Confinement : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = missingConfinement(); !missing.empty()) {
      GTEST_SKIP() << missing.front();
    }
  }

  static Texts read(const Input& input, Sandbox sandbox) {
    HostOptions options = fakeReader(Isolation::kWorkers);
    options.sandbox = sandbox;
    const Reading reading = readTexts(Host(options), input);
    EXPECT_NE(reading.result.status, Status::kFailed) << describe(reading.result);
    return reading.texts;
  }

  static Input package(const TemporaryDirectory& folder, const std::string& commands) {
    std::filesystem::create_directories(folder.path() / "Index");
    writeFile(folder.path() / "Index" / "Document.iwa", commands);
    return Input::path(folder.path());
  }

  const TemporaryDirectory folder;
  const std::string everything =
      "attempt open /etc/passwd\nattempt create " + (folder.path() / "new").string() +
      "\nattempt state /etc/passwd\nattempt connect\nattempt fork\nattempt kill\n"
      "attempt privileges\nattempt core\n";
};

std::string denied(const std::string& what) { return what + ": " + kDenied; }

TEST_F(Confinement, LeavesAReaderOfAFileNothingButItsDescriptors) {
  EXPECT_EQ(read(script(everything), Sandbox::kRequired),
            (Texts{denied("open"), denied("create"), denied("state"), denied("connect"),
                   denied("fork"), denied("kill"), denied("privileges"), "core: File too large"}));
  EXPECT_EQ(read(script("attempt exec\n"), Sandbox::kRequired), Texts{denied("exec")});
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "new"));
}

TEST_F(Confinement, IsWhatKeepsTheReaderFromAllThat) {
  EXPECT_EQ(read(script(everything), Sandbox::kOff),
            (Texts{"open: done", "create: done", "state: done", "connect: done", "fork: done",
                   "kill: done", "privileges: done", "core: done"}));
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "new"));
}

TEST_F(Confinement, LetsAReaderOfADirectoryReadThatDirectoryOnly) {
  const TemporaryDirectory document;
  const std::string inside = (document.path() / "Index" / "Document.iwa").string();
  const std::string beside = (folder.path() / "beside").string();
  writeFile(beside, "x");
  const Texts texts =
      read(package(document, "attempt open " + inside + "\nattempt open " + beside +
                                 "\nattempt create " + inside + "\nattempt create " +
                                 (document.path() / "new").string() +
                                 "\nattempt connect\nattempt fork\nattempt kill\nattempt exec\n"),
           Sandbox::kRequired);
  EXPECT_EQ(texts, (Texts{"open: done", std::string("open: ") + kOutside,
                          std::string("create: ") + kOutside, std::string("create: ") + kOutside,
                          denied("connect"), denied("fork"), denied("kill"), denied("exec")}));
}

TEST_F(Confinement, StaysFromOneDocumentToTheNext) {
  HostOptions options = fakeReader(Isolation::kWorkers);
  options.sandbox = Sandbox::kRequired;
  const Host host(options);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(readTexts(host, script("attempt open /etc/passwd\n")).texts, Texts{denied("open")});
  }
}

// What a function gives where a system call fails though the kernel has it.
std::vector<std::string> toldWithout(int call,
                                     const std::function<std::vector<std::string>()>& function) {
  int ends[2];
  EXPECT_EQ(::pipe(ends), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 0);
    if (seccomp_load(filter) != 0) ::_exit(1);
    std::string told;
    for (const std::string& phrase : function()) told += phrase + "\n";
    ::_exit(::write(ends[1], told.data(), told.size()) < 0 ? 1 : 0);
  }
  ::close(ends[1]);
  std::string told(4096, '\0');
  const ssize_t got = ::read(ends[0], told.data(), told.size());
  told.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  std::vector<std::string> phrases;
  std::istringstream lines(told);
  for (std::string line; std::getline(lines, line);) phrases.push_back(line);
  return phrases;
}

TEST_F(Confinement, IsToldToBeMissingWhereItsSystemCallsFail) {
  const auto lacks = [](int call, const std::string& word) {
    const auto missing = toldWithout(call, missingConfinement);
    return missing.size() == 1 && missing.front().find(word) != std::string::npos;
  };
  EXPECT_TRUE(lacks(SCMP_SYS(seccomp), "seccomp"));
  EXPECT_TRUE(lacks(SCMP_SYS(landlock_restrict_self), "Landlock"));
  EXPECT_TRUE(lacks(SCMP_SYS(prlimit64), "prlimit"));
}

TEST_F(Confinement, IsToldWithTheResultWhereAPartOfItIsMissing) {
  const TemporaryDirectory document;
  const Input directory = package(document, "text inside\n");
  for (const bool oneDocument : {false, true}) {
    const auto lackOf = [&](int call, const Input& input) {
      return toldWithout(call, [&] {
        HostOptions options = fakeReader(Isolation::kWorkers);
        options.oneDocument = oneDocument;
        return readTexts(Host(options), input).result.missingConfinement;
      });
    };
    const std::vector<std::string> noFilter{"the kernel does not filter system calls (seccomp)"};
    const std::vector<std::string> noLandlock{
        "the kernel does not confine a process to a directory (Landlock)"};
    EXPECT_EQ(lackOf(SCMP_SYS(seccomp), script("text whole\n")), noFilter);
    EXPECT_EQ(lackOf(SCMP_SYS(seccomp), script("crash\n")), noFilter);
    EXPECT_EQ(lackOf(SCMP_SYS(landlock_restrict_self), directory), noLandlock);
    EXPECT_EQ(lackOf(SCMP_SYS(landlock_restrict_self), script("text whole\n")), Texts{});
  }
}

}  // namespace
}  // namespace dorvex::confinement_test
