#include "resume.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "document_id.h"
#include "exit_status.h"
#include "record.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::resume_test {
namespace {

using testing::readFile;
using testing::writeFile;

std::string record(const std::string& path, Failure failure = Failure::kNone) {
  Record record;
  record.path = path;
  record.texts.add(R"({"version":1,"id":"no","status":"ok"})");
  record.texts.end();
  record.result.failure = failure;
  record.result.status = failure == Failure::kNone ? Status::kOk : Status::kFailed;
  return toLine(record).joined();
}

Ids idsOf(const std::vector<std::string>& paths) {
  Ids ids;
  for (const std::string& path : paths) ids.insert(documentId(path));
  return ids;
}

class Resume : public ::testing::Test {
 protected:
  std::string with(const std::string& contents) {
    writeFile(file, contents);
    return file;
  }
  Ids done(const std::string& contents, const Statuses& again = {}) {
    return doneIn(with(contents), again);
  }
  std::string continued(const std::string& contents) {
    const ResumedFile resumed = resumeInto(with(contents), {});
    EXPECT_EQ(::write(resumed.fd, "new\n", 4), 4);
    ::close(resumed.fd);
    return readFile(file);
  }
  testing::TemporaryDirectory folder;
  const std::string file = folder.path() / "out";
};

TEST_F(Resume, FindsTheDocumentsThatHaveARecord) {
  EXPECT_EQ(done(record("a") + record("b", Failure::kDamaged)), idsOf({"a", "b"}));
  EXPECT_EQ(done(""), Ids{});
  EXPECT_EQ(doneIn(folder.path() / "none", {}), Ids{});
}

// It would be cut off, and its document lost.
TEST_F(Resume, DoesNotCountALastLineWithoutItsEnd) {
  std::string cut = record("b");
  cut.pop_back();
  EXPECT_EQ(done(record("a") + cut), idsOf({"a"}));
  EXPECT_EQ(done(cut), Ids{});
  EXPECT_EQ(continued(record("a") + cut), record("a") + "new\n");
}

TEST_F(Resume, LeavesOutDocumentsThatAreToBeReadAgainByTheirLastRecord) {
  const std::string records = record("a", Failure::kTimedOut) + record("b", Failure::kTimedOut) +
                              record("b") + record("c") + record("c", Failure::kDamaged);
  EXPECT_EQ(done(records), idsOf({"a", "b", "c"}));
  EXPECT_EQ(done(records, {"timeout"}), idsOf({"b", "c"}));
  EXPECT_EQ(done(records, {"timeout", "corrupt"}), idsOf({"b"}));
}

TEST_F(Resume, PassesOverDamagedLinesAmongRecords) {
  EXPECT_EQ(done(record("a") + "\nnonsense\n{}\n" + record("b").substr(9) + record("c")),
            idsOf({"a", "c"}));
}

TEST_F(Resume, CutsAnUnfinishedLineOff) {
  const std::string whole = record("a");
  EXPECT_EQ(continued(whole + "{\"vers"), whole + "new\n");
  EXPECT_EQ(continued(whole), whole + "new\n");
  EXPECT_EQ(continued("{\"vers"), "new\n");
  EXPECT_EQ(continued(""), "new\n");
  EXPECT_EQ(continued(whole + "{\"version\":" + std::string(200'000, 'x')), whole + "new\n");
}

TEST_F(Resume, RefusesWhatIsNoFileOfRecordsAndLeavesItAlone) {
  std::string other = record("a");
  other.replace(other.find("1"), 1, "2");
  for (const std::string& foreign :
       {std::string("name,size\na,1\n"), std::string("no line end"),
        std::string("\x1F\x8B\x08\0zip", 7), std::string("{}\n"), std::string("\n"), other}) {
    EXPECT_THROW(done(foreign), EnvironmentError) << foreign;
    EXPECT_THROW(resumeInto(with(foreign), {}), EnvironmentError) << foreign;
    EXPECT_EQ(readFile(file), foreign);
  }
}

TEST_F(Resume, RefusesWhatIsNoRegularFile) {
  const std::string pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {folder.path().string(), pipe, std::string("/dev/null")}) {
    EXPECT_THROW(resumeInto(path, {}), EnvironmentError) << path;
  }
  EXPECT_THROW(doneIn(folder.path(), {}), EnvironmentError);
}

TEST_F(Resume, TakesTheFileForOneRunAlone) {
  const std::string contents = record("a") + "{\"ver";
  const ResumedFile first = resumeInto(with(record("a")), {});
  writeFile(file, contents);
  EXPECT_THROW(resumeInto(file, {}), EnvironmentError);
  EXPECT_EQ(readFile(file), contents);
  ::close(first.fd);
  ::close(resumeInto(file, {}).fd);
}

TEST_F(Resume, SaysWhyAFileCannotBeOpened) {
  EXPECT_THROW(resumeInto("/no/such/folder/out", {}), EnvironmentError);
}

}  // namespace
}  // namespace dorvex::cli::resume_test
