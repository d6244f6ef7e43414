#include "record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "base64.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::cli::record_test {
namespace {

using nlohmann::json;

JsonStrings strings(const std::vector<std::string>& texts) {
  JsonStrings written;
  for (const std::string& text : texts) {
    written.add(text);
    written.end();
  }
  return written;
}

json written(const Record& record) {
  const std::string line = toLine(record).joined();
  EXPECT_EQ(line.back(), '\n');
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  return json::parse(line);
}

TEST(Record, HoldsWhatBecameOfADocument) {
  Record record{"a.pages", strings({"one", "two\nlines"}), {}, 100, 1.23456};
  record.result.moduleResult = 0;
  record.result.kind = Kind::kPages;
  EXPECT_EQ(written(record), json::parse(R"({
    "version": 1, "id": "05d251118896b00fc2d4de7a2475a328", "path": "a.pages",
    "path_is_utf8": true, "status": "ok", "complete": true, "message": "", "limit": null,
    "signal": null, "result": 0, "kind": "pages", "texts": ["one", "two\nlines"],
    "texts_not_utf8": [], "bytes_in": 100, "bytes_out": 12, "milliseconds": 1.235,
    "skipped": []})"));
}

TEST(Record, SaysWhatWentWrong) {
  Record record{"a", {}, {}, 0, 0};
  record.result.status = Status::kFailed;
  record.result.failure = Failure::kTimedOut;
  record.result.limit = Limit::kProcessorTime;
  record.result.signal = 24;
  record.result.message = "stopped";
  record.result.skipped = {{"Index/a.iwa", "why"}};
  const json line = written(record);
  EXPECT_EQ(line["status"], "timeout");
  EXPECT_EQ(line["complete"], false);
  EXPECT_EQ(line["limit"], "processor_time");
  EXPECT_EQ(line["signal"], 24);
  EXPECT_EQ(line["result"], nullptr);
  EXPECT_EQ(line["message"], "stopped");
  EXPECT_EQ(line["skipped"], json::parse(R"([{"name": "Index/a.iwa", "reason": "why"}])"));
}

TEST(Record, ReplacesWhatIsNotUtf8AndSaysWhere) {
  Record record{"a\xFF", strings({"good", "b\xC3", "\xED\xA0\x80"}), {}, 0, 0};
  record.result.skipped = {{"n\xFF", "r"}};
  const json line = written(record);
  EXPECT_EQ(line["path"], "a\xEF\xBF\xBD");
  EXPECT_EQ(line["path_is_utf8"], false);
  EXPECT_EQ(line["path_base64"], "Yf8=");
  EXPECT_EQ(line["texts"][0], "good");
  EXPECT_EQ(line["texts"][1], "b\xEF\xBF\xBD");
  EXPECT_EQ(line["texts_not_utf8"], json::parse("[1, 2]"));
  EXPECT_EQ(line["skipped"][0]["name"], "n\xEF\xBF\xBD");
}

TEST(Record, HoldsWhatWasRenderedAsOneString) {
  Record record{"a", {}, {}, 0, 0};
  record.content = strings({"{\"a\": 1}\n"});
  EXPECT_EQ(written(record)["content"], "{\"a\": 1}\n");
  EXPECT_EQ(written(record)["texts"], json::array());
  EXPECT_EQ(written(record)["bytes_out"], 9);
}

TEST(Record, HasItsFieldsInTheirOrder) {
  const auto line = nlohmann::ordered_json::parse(
      toLine({"a", strings({"text"}), {}, 0, 0, strings({"content"})}).joined());
  std::vector<std::string> names;
  for (const auto& [name, value] : line.items()) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"version", "id", "path", "path_is_utf8", "status",
                                             "complete", "message", "limit", "signal", "result",
                                             "kind", "texts", "texts_not_utf8", "content",
                                             "bytes_in", "bytes_out", "milliseconds", "skipped"}));
}

TEST(Record, CountsTheBytesOfTextsBeforeTheirRepair) {
  const Record record{"a", strings({"b\xC3", "cc"}), {}, 0, 0};
  EXPECT_EQ(written(record)["bytes_out"], 4);
}

struct StatusCase {
  Failure failure;
  const char* status;
};

TEST(StatusOf, HasAWordForEveryFailure) {
  const std::vector<StatusCase> cases = {{Failure::kNone, "ok"},
                                         {Failure::kNoSuchFile, "io"},
                                         {Failure::kPermissionDenied, "io"},
                                         {Failure::kCannotRead, "io"},
                                         {Failure::kNotAPackage, "unsupported"},
                                         {Failure::kIwork09, "unsupported"},
                                         {Failure::kNothingRecognised, "unsupported"},
                                         {Failure::kUnsupportedCompression, "unsupported"},
                                         {Failure::kPasswordProtected, "encrypted"},
                                         {Failure::kDamaged, "corrupt"},
                                         {Failure::kOther, "corrupt"},
                                         {Failure::kEndlessRead, "limit"},
                                         {Failure::kLimitPassed, "limit"},
                                         {Failure::kOutOfMemory, "limit"},
                                         {Failure::kTimedOut, "timeout"},
                                         {Failure::kCrashed, "crash"},
                                         {Failure::kModuleUnusable, "crash"},
                                         {Failure::kChanged, "changed"},
                                         {Failure::kOutOfResources, "retry"}};
  for (const StatusCase& row : cases) {
    Result result;
    result.failure = row.failure;
    EXPECT_EQ(statusOf(result), row.status);
  }
}

TEST(Record, HasAWordForEveryLimit) {
  Record record{"a", {}, {}, 0, 0};
  record.result.limit = Limit::kInput;
  EXPECT_EQ(written(record)["limit"], "input");
}

TEST(Base64, PadsToGroupsOfFour) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("\xFB\xFF"), "+/8=");
}

TEST(FailedStatuses, AreEveryWordButOk) {
  const auto words = failedStatuses();
  EXPECT_EQ(std::set<std::string>(words.begin(), words.end()).size(), words.size());
  for (const char* word : {"unsupported", "encrypted", "corrupt", "limit", "timeout", "crash", "io",
                           "changed", "retry"}) {
    EXPECT_NE(std::find(words.begin(), words.end(), word), words.end()) << word;
  }
  EXPECT_EQ(std::find(words.begin(), words.end(), "ok"), words.end());
}

}  // namespace
}  // namespace dorvex::cli::record_test
