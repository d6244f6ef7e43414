#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <thread>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex {
namespace {

using namespace testing;
using nlohmann::json;

std::vector<json> recordsIn(const std::string& output) {
  std::vector<json> records;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) records.push_back(json::parse(line));
  return records;
}

// Every line that a test sees is held against the schema.
int validRecords(const std::string& output) {
  const TemporaryDirectory folder;
  writeFile(folder.path() / "records", output);
  const Finished run =
      runProgram("/usr/bin/python3", {DORVEX_VALIDATE_RECORDS, DORVEX_RECORD_SCHEMA},
                 {.input = folder.path() / "records"});
  EXPECT_EQ(run.status, 0) << run.errors;
  return run.status == 0 ? std::stoi(run.output) : -1;
}

std::map<std::string, json> byPath(const std::string& output) {
  std::map<std::string, json> records;
  const auto all = recordsIn(output);
  EXPECT_EQ(validRecords(output), static_cast<int>(all.size()));
  for (const json& record : all) {
    const std::string path = record["path"];
    EXPECT_FALSE(records.contains(path)) << path;
    records[path] = record;
  }
  return records;
}

class Batch : public ::testing::Test {
 protected:
  std::string document(const std::string& name, const std::string& bytes) {
    writeFile(folder.path() / name, bytes);
    return folder.path() / name;
  }
  std::string good(const std::string& name, const std::string& text) {
    return document(name, zip({{"Index/Document.iwa", iwa({storage(1, {text})})}}));
  }
  std::vector<std::string> manyGood(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
      paths.push_back(good(std::to_string(1000 + i) + ".pages", "text " + std::to_string(i)));
    }
    return paths;
  }
  TemporaryDirectory folder;
};

TEST_F(Batch, GivesARecordForEveryDocument) {
  const std::string a = good("a.pages", "one");
  const std::string bad = document("b.pages", "no package");
  const std::string none = folder.path() / "none.key";
  const Finished run = runTool({"batch", a, bad, none});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "");
  auto records = byPath(run.output);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[a]["status"], "ok");
  EXPECT_EQ(records[a]["texts"], json::array({"one"}));
  EXPECT_EQ(records[bad]["status"], "unsupported");
  EXPECT_EQ(records[none]["status"], "io");
}

TEST_F(Batch, GoesThroughFolders) {
  manyGood(20);
  const Finished run = runTool({"batch", folder.path()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(byPath(run.output).size(), 20u);
}

TEST_F(Batch, TakesAListOfPaths) {
  const std::string a = good("a\nb.pages", "one");
  const std::string list = document("list", a + std::string(1, '\0'));
  const Finished run = runTool({"batch", "--files-from", list, "-0"});
  EXPECT_EQ(byPath(run.output)[a]["status"], "ok");
  EXPECT_EQ(recordsIn(runTool({"batch", "--files-from", "-", "-0"}, {.input = list}).output).size(),
            1u);
  EXPECT_EQ(runTool({"batch", "--files-from", "/no/such/list"}).status, 3);
  EXPECT_EQ(runTool({"batch", "--files-from", list, a}).status, 2);
}

// The program that writes the list waits for the record of one document before
// it names the next.
TEST_F(Batch, ReadsTheListAsItArrivesAndFlushesEveryRecord) {
  const std::string a = good("a.pages", "one");
  const std::string script =
      "mkfifo in out; " DORVEX_PROGRAM
      " batch --files-from - < in > out & exec 3> in 4< out; for i in 1 2 3; "
      "do echo " +
      a +
      " >&3; read -r line <&4; echo \"$line\"; done; "
      "exec 3>&-; wait";
  const Finished run =
      runProgram("/bin/sh", {"-c", "cd " + folder.path().string() + "; " + script});
  EXPECT_EQ(recordsIn(run.output).size(), 3u) << run.errors;
}

TEST_F(Batch, KeepsTheOrderOnRequest) {
  const auto paths = manyGood(50);
  std::vector<std::string> arguments = {"batch", "--ordered", "--jobs", "4"};
  arguments.insert(arguments.end(), paths.begin(), paths.end());
  std::vector<std::string> given;
  for (const json& record : recordsIn(runTool(arguments).output)) given.push_back(record["path"]);
  EXPECT_EQ(given, paths);
}

TEST_F(Batch, DealsDocumentsOutToShards) {
  manyGood(40);
  std::set<std::string> seen;
  for (const char* shard : {"0/3", "1/3", "2/3"}) {
    for (const auto& [path, record] :
         byPath(runTool({"batch", "--shard", shard, folder.path()}).output)) {
      EXPECT_TRUE(seen.insert(path).second) << path;
    }
  }
  EXPECT_EQ(seen.size(), 40u);
}

TEST_F(Batch, GoesOnWhereAnEarlierRunEnded) {
  manyGood(10);
  const std::string out = folder.path() / "out.jsonl";
  ASSERT_EQ(runTool({"batch", "-o", out, folder.path()}).status, 0);
  const std::string whole = readFile(out);
  const auto third = whole.find('\n', whole.find('\n', whole.find('\n') + 1) + 1) + 1;
  writeFile(out, whole.substr(0, third + 40));
  EXPECT_EQ(runTool({"batch", "--resume", out, "-o", out, folder.path()}).status, 0);
  EXPECT_EQ(byPath(readFile(out)).size(), 10u);
  const Finished other = runTool({"batch", "--resume", out, folder.path()});
  EXPECT_EQ(other.status, 0);
  EXPECT_EQ(other.output, "");
}

TEST_F(Batch, LeavesAnOutputAloneThatExists) {
  const std::string a = good("a.pages", "one");
  const std::string out = document("out.jsonl", "before\n");
  EXPECT_EQ(runTool({"batch", "-o", out, a}).status, 3);
  EXPECT_EQ(readFile(out), "before\n");
  EXPECT_EQ(runTool({"batch", "-o", out, "--on-exists", "replace", a}).status, 0);
  EXPECT_EQ(recordsIn(readFile(out)).size(), 1u);
}

TEST_F(Batch, SaysWhatEndedADocument) {
  std::vector<std::string> arguments = {"--module", FAKE_READER_MODULE, "--timeout", "0.3",
                                        "batch"};
  const std::map<std::string, std::string> expected = {
      {"crash\n", "crash"},   {"hang\n", "timeout"},     {"spin\n", "timeout"},
      {"overrun\n", "crash"}, {"return 6\n", "corrupt"}, {"text one\n", "ok"}};
  std::map<std::string, std::string> statusOf;
  for (const auto& [script, status] : expected) {
    const std::string path = document(std::to_string(statusOf.size()), script);
    statusOf[path] = status;
    arguments.push_back(path);
  }
  auto records = byPath(runTool(arguments).output);
  for (const auto& [path, status] : statusOf) {
    EXPECT_EQ(records[path]["status"], status) << records[path];
  }
}

TEST_F(Batch, EndsADocumentAtTheLimitOfMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer ends a process by itself where memory is out";
#endif
  const Finished run = runTool(
      {"--module", FAKE_READER_MODULE, "--max-memory", "64MB", "batch", document("a", "starve\n")});
  const json record = json::parse(run.output);
  EXPECT_EQ(record["status"], "limit");
  EXPECT_EQ(record["limit"], "memory");
}

TEST_F(Batch, MarksTextsAndPathsThatAreNotUtf8) {
  const std::string path = document("\xFF", "text \xFF\n");
  const Finished run = runTool({"--module", FAKE_READER_MODULE, "batch", path});
  EXPECT_EQ(validRecords(run.output), 1);
  const json record = json::parse(run.output);
  EXPECT_EQ(record["path_is_utf8"], false);
  EXPECT_EQ(record["texts_not_utf8"], json::array({0}));
  EXPECT_EQ(record["texts"], json::array({"\xEF\xBF\xBD"}));
}

TEST_F(Batch, EndsWithWholeLinesWhenItIsInterrupted) {
  manyGood(200);
  const std::string out = folder.path() / "out.jsonl";
  const std::string hang = document("zzz.pages", "hang\n");
  const pid_t tool = ::fork();
  if (tool == 0) {
    const std::string all = folder.path();
    ::execl(DORVEX_PROGRAM, DORVEX_PROGRAM, "--module", FAKE_READER_MODULE, "batch", "-o",
            out.c_str(), "-j", "2", all.c_str(), hang.c_str(), nullptr);
    ::_exit(127);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  ::kill(tool, SIGINT);
  int status = 0;
  ::waitpid(tool, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 130);
  const std::string written = readFile(out);
  ASSERT_FALSE(written.empty());
  EXPECT_EQ(written.back(), '\n');
  EXPECT_GE(recordsIn(written).size(), 1u);
}

TEST(RecordSchema, RefusesWhatIsNoRecord) {
  for (const char* line : {"{}", "[]", R"({"version": 1, "id": "a"})"}) {
    const TemporaryDirectory folder;
    writeFile(folder.path() / "records", line);
    EXPECT_EQ(runProgram("/usr/bin/python3", {DORVEX_VALIDATE_RECORDS, DORVEX_RECORD_SCHEMA},
                         {.input = folder.path() / "records"})
                  .status,
              1)
        << line;
  }
}

TEST_F(Batch, GivesValidRecordsForRealDocuments) {
  const std::filesystem::path documents = std::filesystem::path(DORVEX_CORPUS) / "documents";
  if (!std::filesystem::exists(documents)) GTEST_SKIP() << "no real documents at " << documents;
  const Finished run = runTool({"batch", "--all-files", documents});
  EXPECT_EQ(byPath(run.output).size(), 42u);
}

TEST_F(Batch, ShowsNoProgressWhereThereIsNoTerminal) {
  manyGood(5);
  EXPECT_EQ(runTool({"batch", folder.path()}).errors, "");
}

TEST_F(Batch, ReportsAModuleThatCannotBeLoadedOnceAndAtOnce) {
  manyGood(5);
  const Finished run = runTool({"--module", "/no/such.so", "batch", folder.path()});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
}

}  // namespace
}  // namespace dorvex
