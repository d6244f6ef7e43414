#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::batch_command_test {
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

// The record of each is there, but those of one end with a line that was cut.
TEST_F(Batch, ReadsADocumentAgainWhoseRecordHasNoLineEnd) {
  manyGood(3);
  const std::string out = folder.path() / "out.jsonl";
  ASSERT_EQ(runTool({"batch", "-o", out, folder.path()}).status, 0);
  std::string whole = readFile(out);
  whole.pop_back();
  writeFile(out, whole);
  EXPECT_EQ(runTool({"batch", "--resume", out, "-o", out, folder.path()}).status, 0);
  EXPECT_EQ(byPath(readFile(out)).size(), 3u);
}

TEST_F(Batch, ReadsFailedDocumentsAgainOnRequest) {
  const std::string a = document("a.pages", "hang\n");
  const std::string b = document("b.pages", "no package");
  const std::string out = folder.path() / "out.jsonl";
  const std::vector<std::string> fake = {"--module", FAKE_READER_MODULE, "--timeout", "0.2"};
  auto arguments = fake;
  for (const auto& argument : {std::string("batch"), std::string("-o"), out, a, b}) {
    arguments.push_back(argument);
  }
  ASSERT_EQ(runTool(arguments).status, 1);
  good("a.pages", "one");
  good("b.pages", "two");
  const Finished run = runTool({"batch", "--resume", out, "--retry", "timeout,io", a, b});
  EXPECT_EQ(byPath(run.output).size(), 1u);
  EXPECT_EQ(byPath(run.output)[a]["status"], "ok");
  EXPECT_EQ(runTool({"batch", "--resume", out, "--retry", "timeout,ok", a}).status, 2);
  EXPECT_EQ(runTool({"batch", "--retry", "timeout", a}).status, 2);
}

TEST_F(Batch, WritesOneFileFromOneRunAtATime) {
  const std::string a = good("a.pages", "one");
  const std::string hang = document("hang.pages", "hang\n");
  const std::string out = folder.path() / "out.jsonl";
  const pid_t tool = ::fork();
  if (tool == 0) {
    ::execl(DORVEX_PROGRAM, DORVEX_PROGRAM, "--module", FAKE_READER_MODULE, "batch", "-o",
            out.c_str(), hang.c_str(), nullptr);
    ::_exit(127);
  }
  while (!std::filesystem::exists(out)) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const Finished resumed = runTool({"batch", "--resume", out, "-o", out, a});
  EXPECT_EQ(resumed.status, 3);
  EXPECT_NE(resumed.errors.find("another run"), std::string::npos) << resumed.errors;
  EXPECT_EQ(runTool({"batch", "-o", out, "--on-exists", "replace", a}).status, 3);
  ::kill(tool, SIGKILL);
  ::waitpid(tool, nullptr, 0);
  EXPECT_EQ(runTool({"batch", "--resume", out, "-o", out, a}).status, 0);
}

TEST_F(Batch, LeavesAForeignFileAlone) {
  const std::string a = good("a.pages", "one");
  const std::string out = document("out.csv", "a,b\nc");
  EXPECT_EQ(runTool({"batch", "--resume", out, "-o", out, a}).status, 3);
  EXPECT_EQ(runTool({"batch", "--resume", out, a}).status, 3);
  EXPECT_EQ(readFile(out), "a,b\nc");
  EXPECT_EQ(runTool({"batch", "--resume", folder.path(), a}).status, 3);
}

TEST_F(Batch, GivesARecordForAFolderThatCannotBeGoneThrough) {
  manyGood(2);
  const std::string make = "cd " + folder.path().string() +
                           "; n=$(printf %0200d 0); for i in $(seq 30); do mkdir $n; cd $n; done";
  ASSERT_EQ(runProgram("/bin/bash", {"-c", make}).status, 0);
  const Finished run = runTool({"batch", folder.path()});
  EXPECT_EQ(run.status, 1);
  const auto records = byPath(run.output);
  EXPECT_EQ(records.size(), 3u);
  EXPECT_EQ(std::count_if(records.begin(), records.end(),
                          [](const auto& row) { return row.second.at("status") == "io"; }),
            1);
}

TEST_F(Batch, TakesADashInAListForAFileOfThatName) {
  const std::string package = readFile(good("a.pages", "one"));
  const std::string script = "cd " + folder.path().string() + "; cp a.pages ./-; " +
                             "printf '%s\\n' a.pages - a.pages | " DORVEX_PROGRAM
                             " batch --files-from -";
  const Finished run = runProgram("/bin/sh", {"-c", script});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(recordsIn(run.output).size(), 3u);
  EXPECT_EQ(runTool({"batch", "--files-from", "-", "-"}).status, 2);
}

TEST_F(Batch, EndsWithThreeWhereTheListFails) {
  const std::string a = good("a.pages", "one");
  EXPECT_EQ(runTool({"batch", "--files-from", folder.path()}).status, 3);
  const std::string list = document("list", a + std::string(1, '\0') + a + std::string(1, '\0'));
  const Finished run = runTool({"batch", "--files-from", list});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.errors.find("-0"), std::string::npos);
  const std::string crlf = document("crlf", a + "\r\n");
  EXPECT_EQ(runTool({"batch", "--files-from", crlf}).status, 0);
}

TEST_F(Batch, EndsWithASummaryAtATerminal) {
  const std::string a = good("a.pages", "one");
  const std::string bad = document("b.pages", "no package");
  const std::string out = folder.path() / "out.jsonl";
  const Finished run = runToolAtTerminal({"batch", "-o", out, a, bad});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("dorvex: 1 of 2 documents read in "), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("; failed: 1 unsupported\n"), std::string::npos) << run.output;
  EXPECT_EQ(runToolAtTerminal({"batch", "-q", "--resume", out, a}).output, "");
}

TEST_F(Batch, WritesRecordsToStandardOutputAndIntoPipes) {
  const std::string a = good("a.pages", "one");
  EXPECT_EQ(recordsIn(runTool({"batch", "-o", "-", a}).output).size(), 1u);
  EXPECT_EQ(runTool({"batch", "-o", "/dev/null", a}).status, 0);
}

TEST_F(Batch, DoesNothingWhereTheOutputIsToBeSkipped) {
  const std::string out = document("out.jsonl", "before\n");
  EXPECT_EQ(runTool({"batch", "-o", out, "--on-exists", "skip", good("a.pages", "x")}).status, 0);
  EXPECT_EQ(readFile(out), "before\n");
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

// Random words, which neither compression makes much smaller.
std::string words(std::size_t length) {
  std::mt19937 random(20'131'023);
  std::string text;
  while (text.size() < length) text += std::to_string(random()) + " ";
  return text;
}

// Whatever allocation it is that fails, in the host or in the reader, which takes some
// for a member that is damaged.
TEST_F(Batch, CallsTooLittleMemoryALimitAndNotDamage) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer ends a process by itself where memory is out";
#endif
  const std::string path = document(
      "large.pages", zip({{"Index/Document.iwa", iwa({storage(1, {words(45'000'000)})})}}));
  for (const char* size : {"30MB", "50MB", "70MB", "90MB", "110MB"}) {
    const json record = json::parse(runTool({"batch", "--max-memory", size, path}).output);
    EXPECT_EQ(record["status"], "limit") << size << record["message"];
    EXPECT_EQ(record["limit"], "memory") << size;
    EXPECT_EQ(record["complete"], false) << size;
  }
  const json record = json::parse(runTool({"batch", "--max-memory", "400MB", path}).output);
  EXPECT_EQ(record["status"], "ok") << record["message"];
}

Finished runToolForbidden(const std::string& name, std::vector<std::string> arguments) {
  ::setenv("LD_PRELOAD", DORVEX_POOR_FILE_SYSTEM, 1);
  ::setenv("DORVEX_TEST_FORBIDDEN", name.c_str(), 1);
  Finished run = runTool(arguments);
  ::unsetenv("LD_PRELOAD");
  ::unsetenv("DORVEX_TEST_FORBIDDEN");
  return run;
}

TEST_F(Batch, CallsAFolderThatTheSystemKeepsToItselfNoUnsupportedDocument) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer must come before what is preloaded";
#endif
  const auto package = folder.path() / "a.pages";
  writeDirectory(package, {{"Index/Document.iwa", iwa({storage(1, {"text"})})}});
  const std::map<std::string, std::string> messages = {
      {"a.pages", "Operation not permitted"},
      {"Index", "cannot list Index: Operation not permitted"},
      {"Document.iwa", "cannot open Index/Document.iwa: Operation not permitted"}};
  for (const auto& [name, message] : messages) {
    const Finished run = runToolForbidden(name, {"batch", package});
    EXPECT_EQ(run.status, 1) << name;
    auto records = byPath(run.output);
    EXPECT_EQ(records[package]["status"], "io") << name;
    EXPECT_EQ(records[package]["message"], message) << name;
  }
}

TEST_F(Batch, HasARecordForAFolderThatTheSystemKeepsToItself) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer must come before what is preloaded";
#endif
  std::filesystem::create_directory(folder.path() / "locked");
  good("a.pages", "text");
  const Finished run = runToolForbidden("locked", {"batch", folder.path()});
  EXPECT_EQ(run.status, 1);
  auto records = byPath(run.output);
  EXPECT_EQ(records[folder.path() / "locked"]["status"], "io");
  EXPECT_EQ(records[folder.path() / "a.pages"]["status"], "ok");
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

// The soft limit is the supervisor's alone: a worker has its own.
Finished runToolWithin(int mebibytes, const std::string& arguments) {
  return runProgram("/bin/sh", {"-c", "ulimit -S -v " + std::to_string(mebibytes * 1024) +
                                          "; exec " DORVEX_PROGRAM " " + arguments});
}

// A script for as many texts of 50,000 bytes, each in a buffer of its own.
std::string manyTexts(int count) {
  const std::string line = "buffer\ntext " + std::string(50'000, 'x') + "\n";
  std::string script;
  for (int i = 0; i < count; ++i) script += line;
  return script;
}

TEST_F(Batch, GoesOnBehindARecordForWhichThereIsNoMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer cannot be limited in its address space";
#endif
  const std::string large = document("large", manyTexts(4'000));
  const std::string a = document("a", "text short\n");
  const std::string b = document("b", "text short\n");
  for (const char* option : {"", " --ordered"}) {
    const Finished run = runToolWithin(
        150, "batch -j 1 --module " FAKE_READER_MODULE " " + large + " " + a + " " + b + option);
    EXPECT_EQ(run.status, 1) << run.errors;
    auto records = byPath(run.output);
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[large]["status"], "retry");
    EXPECT_EQ(records[large]["texts"], json::array());
    EXPECT_EQ(records[a]["status"], "ok");
    EXPECT_EQ(records[b]["status"], "ok");
  }
}

// Three copies of the record would not fit.
TEST_F(Batch, HasARecordInMemoryOnce) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer cannot be limited in its address space";
#endif
  const std::string path = document("large", manyTexts(1'600));
  const std::string records = folder.path() / "records";
  const Finished run =
      runToolWithin(150, "batch -j 1 --module " FAKE_READER_MODULE " " + path + " -o " + records);
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(recordsIn(readFile(records)).at(0)["bytes_out"], 80'000'000);
}

}  // namespace
}  // namespace dorvex::batch_command_test
