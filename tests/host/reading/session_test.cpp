// What holds whether a document is read in this process or in a worker.

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "fake_document.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::session_test {
namespace {

using testing::fakeReader;
using testing::Reading;
using testing::readTexts;
using testing::script;
using Texts = std::vector<std::string>;

class Session : public ::testing::TestWithParam<Isolation> {
 protected:
  static Reading read(const std::string& commands) {
    return readTexts(Host(fakeReader(GetParam())), script(commands));
  }
  // For scripts that open files by themselves.
  static Reading readUnconfined(const std::string& commands) {
    HostOptions options = fakeReader(GetParam());
    options.sandbox = Sandbox::kOff;
    return readTexts(Host(options), script(commands));
  }
};

TEST_P(Session, GivesTheTextsOfEveryBuffer) {
  const Reading reading = read("text one\ntext two\nbuffer\ntext three\n");
  EXPECT_EQ(reading.texts, (Texts{"one", "two", "three"}));
  EXPECT_EQ(reading.result.status, Status::kOk);
  EXPECT_EQ(reading.result.moduleResult, 0);
  EXPECT_EQ(reading.result.tokenBytes, 51u + 3 * 14 + 11);
}

TEST_P(Session, GivesNoTextForADocumentWithoutAny) {
  const Reading reading = read("");
  EXPECT_EQ(reading.texts, Texts{});
  EXPECT_EQ(reading.result.status, Status::kOk);
}

TEST_P(Session, GivesTheModulesReturnValueAndNoText) {
  for (const int value : {2, 4, 6}) {
    const Reading reading = read("text lost\nreturn " + std::to_string(value) + "\n");
    EXPECT_EQ(reading.texts, Texts{});
    EXPECT_EQ(reading.result.status, Status::kFailed);
    EXPECT_EQ(reading.result.moduleResult, value);
    EXPECT_NE(reading.result.message, "");
  }
}

TEST_P(Session, CallsTextsBeforeALateFailurePartial) {
  const Reading reading = read("text one\nbuffer\nreturn 6\n");
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.message.rfind("partial text: ", 0), 0u);
}

TEST_P(Session, CallsTextsBeforeABrokenTokenPartial) {
  const Reading reading = read("text one\nbuffer\nraw\nno token\n");
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.failure, Failure::kModuleUnusable);
}

TEST_P(Session, DoesNotTakeATextWithoutItsBreakForWhole) {
  const Reading reading =
      read("text one\nbuffer\nraw\n" + std::string("\0\x0A\0\0\0\x01\0\0\0x", 10));
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
}

TEST_P(Session, EndsAModuleThatWritesBeyondItsBufferOrNeverEnds) {
  EXPECT_EQ(read("overrun\n").result.failure, Failure::kModuleUnusable);
  EXPECT_EQ(read("never-done\n").result.failure, Failure::kModuleUnusable);
}

TEST_P(Session, ReportsAContextThatCannotBeHad) {
  ::setenv("FAKE_READER_NO_CONTEXT", "1", 1);
  const Reading reading = read("text one\n");
  ::unsetenv("FAKE_READER_NO_CONTEXT");
  EXPECT_EQ(reading.texts, Texts{});
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kOutOfMemory);
}

TEST_P(Session, NamesAMemberThatCannotBeOpened) {
  const Reading reading = readUnconfined("open /no/such/a.iwa\n");
  EXPECT_EQ(reading.result.moduleResult, 2);
  EXPECT_EQ(reading.result.message, "cannot open /no/such/a.iwa: No such file or directory");
}

TEST_P(Session, EndsAReaderThatReadsBehindTheEndOfAMemberForEver) {
  const testing::TemporaryDirectory folder;
  testing::writeFile(folder.path() / "a.iwa", std::string(3, '\0'));
  const Reading reading = readUnconfined("read-on " + (folder.path() / "a.iwa").string() + "\n");
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kEndlessRead);
  EXPECT_EQ(reading.result.moduleResult, 6);
}

TEST_P(Session, CallsTextsPartialWhenAMemberThatWasReadIsUnsound) {
  const testing::TemporaryDirectory folder;
  const std::string member = (folder.path() / "a.iwa").string();
  testing::writeFile(member, testing::damagedChunk());
  const Reading reading = readUnconfined("open " + member + "\ntext one\n");
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.skipped.front().name, member);
}

class ChangingPackage {
 public:
  // Grows while it is read, until it has so many bytes.
  explicit ChangingPackage(const std::string& size, const std::string& name = "Index/other.iwa") {
    const std::string other = (folder_.path() / name).string();
    testing::writeDirectory(
        folder_.path(),
        {{name, ""}, {"Index/Document.iwa", "grow " + size + " " + other + "\ntext one\n"}});
  }
  Reading read(Isolation isolation) const {
    HostOptions options = fakeReader(isolation);
    options.sandbox = Sandbox::kOff;
    return readTexts(Host(options), Input::path(folder_.path()));
  }

 private:
  testing::TemporaryDirectory folder_;
};

TEST_P(Session, ReadsAPackageAgainThatChangesMeanwhile) {
  const Reading reading = ChangingPackage("1").read(GetParam());
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_NE(reading.result.failure, Failure::kChanged) << describe(reading.result);
}

TEST_P(Session, DoesNotTakeAPackageForWholeThatKeepsChanging) {
  const Reading reading = ChangingPackage("100").read(GetParam());
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.failure, Failure::kChanged);
  EXPECT_EQ(reading.result.message, "partial text: it was written to while it was read");
}

TEST_P(Session, DoesNotMindAChangeOfWhatItNeverReads) {
  const Reading reading = ChangingPackage("100", "Data/picture").read(GetParam());
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_NE(reading.result.failure, Failure::kChanged) << describe(reading.result);
}

TEST_P(Session, TellsOfAFileThatKeepsChanging) {
  const testing::TemporaryDirectory folder;
  const std::string path = folder.path() / "a.pages";
  testing::writeFile(path, "grow 1000 " + path + "\ntext one\n");
  HostOptions options = fakeReader(GetParam());
  options.sandbox = Sandbox::kOff;
  EXPECT_EQ(readTexts(Host(options), Input::path(path)).result.failure, Failure::kChanged);
}

TEST_P(Session, ReportsAModuleThatCannotBeLoaded) {
  HostOptions options = fakeReader(GetParam());
  options.module = "/no/such/module.so";
  const Reading reading = readTexts(Host(options), script("text one\n"));
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kModuleMissing);
  EXPECT_EQ(reading.result.moduleResult, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Isolations, Session,
                         ::testing::Values(Isolation::kInProcess, Isolation::kWorkers),
                         [](const auto& info) {
                           return info.param == Isolation::kInProcess ? "InProcess" : "Workers";
                         });

}  // namespace
}  // namespace dorvex::session_test
