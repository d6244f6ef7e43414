#include "record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "base64.h"
#include "document_id.h"
#include "printable.h"
#include "utf8.h"

namespace dorvex::cli {
namespace {

using nlohmann::ordered_json;

struct StatusRow {
  Failure failure;
  std::string_view status;
};

constexpr std::array<StatusRow, 21> kStatuses = {{
    {Failure::kNone, "ok"},
    {Failure::kNoSuchFile, "io"},
    {Failure::kPermissionDenied, "io"},
    {Failure::kCannotRead, "io"},
    {Failure::kNotAPackage, "unsupported"},
    {Failure::kIwork09, "unsupported"},
    {Failure::kPasswordProtected, "encrypted"},
    {Failure::kDamaged, "corrupt"},
    {Failure::kUnsupportedCompression, "unsupported"},
    {Failure::kNothingRecognised, "unsupported"},
    {Failure::kOutOfMemory, "limit"},
    {Failure::kEndlessRead, "limit"},
    {Failure::kTimedOut, "timeout"},
    {Failure::kLimitPassed, "limit"},
    {Failure::kCrashed, "crash"},
    {Failure::kNotConfined, "io"},
    {Failure::kModuleMissing, "io"},
    {Failure::kModuleUnusable, "crash"},
    {Failure::kChanged, "changed"},
    {Failure::kOutOfResources, "retry"},
    {Failure::kOther, "corrupt"},
}};

constexpr std::array<std::string_view, 4> kKinds = {"unknown", "pages", "keynote", "numbers"};

constexpr std::array<std::string_view, 12> kLimits = {
    "none",    "wall_time", "processor_time", "memory",      "scratch",   "output",
    "members", "depth",     "member_bytes",   "total_bytes", "expansion", "input"};

template <typename Enum>
std::string_view nameIn(const auto& names, Enum value) {
  return names.at(static_cast<std::size_t>(value));
}

// The text with U+FFFD in place of what is not UTF-8; nothing for one that is
// UTF-8 throughout.
std::optional<std::string> replaced(std::string_view text) {
  std::string shown;
  bool isReplaced = false;
  while (!text.empty()) {
    const auto [form, length] = firstCharacterOf(text);
    const bool isCharacter = form == FirstCharacter::Form::kWhole;
    shown += isCharacter ? text.substr(0, length) : kReplacement;
    isReplaced = isReplaced || !isCharacter;
    text.remove_prefix(length);
  }
  return isReplaced ? std::optional(std::move(shown)) : std::nullopt;
}

void addPath(ordered_json& line, const std::string& path) {
  const auto shown = replaced(path);
  line["path"] = shown.value_or(path);
  line["path_is_utf8"] = !shown;
  if (shown) line["path_base64"] = base64(path);
}

void addSkipped(ordered_json& line, const std::vector<SkippedMember>& skipped) {
  auto& list = line["skipped"] = ordered_json::array();
  for (const auto& [name, reason] : skipped) {
    list.push_back(
        {{"name", replaced(name).value_or(name)}, {"reason", replaced(reason).value_or(reason)}});
  }
}

double toMicroseconds(double milliseconds) { return std::round(milliseconds * 1000) / 1000; }

// The fields of an object that has more behind them, and those that end one: what is
// large comes between, and is in memory once.
std::string opened(const ordered_json& fields) {
  std::string text = printableJson(fields.dump());
  text.back() = ',';
  return text;
}
std::string closing(const ordered_json& fields) {
  return printableJson(fields.dump()).substr(1) + "\n";
}

}  // namespace

std::string_view statusOf(const Result& result) {
  for (const StatusRow& row : kStatuses) {
    if (row.failure == result.failure) return row.status;
  }
  return "corrupt";
}

std::vector<std::string> failedStatuses() {
  std::vector<std::string> words;
  for (const StatusRow& row : kStatuses) {
    const bool known = std::find(words.begin(), words.end(), row.status) != words.end();
    if (row.failure != Failure::kNone && !known) words.emplace_back(row.status);
  }
  return words;
}

Blocks toLine(Record record) {
  const Result& result = record.result;
  ordered_json before;
  before["version"] = kRecordVersion;
  before["id"] = documentId(record.path);
  addPath(before, record.path);
  before["status"] = statusOf(result);
  before["complete"] = result.status == Status::kOk;
  before["message"] = replaced(result.message).value_or(result.message);
  before["limit"] = nullptr;
  if (result.limit != Limit::kNone) before["limit"] = nameIn(kLimits, result.limit);
  before["signal"] = nullptr;
  if (result.signal != 0) before["signal"] = result.signal;
  before["result"] = nullptr;
  if (result.moduleResult) before["result"] = *result.moduleResult;
  before["kind"] = nameIn(kKinds, result.kind);
  ordered_json behind;
  behind["bytes_in"] = record.bytesIn;
  behind["bytes_out"] = record.content ? record.content->bytesIn() : record.texts.bytesIn();
  behind["milliseconds"] = toMicroseconds(record.milliseconds);
  addSkipped(behind, result.skipped);

  Blocks line;
  line.append(opened(before));
  line.append("\"texts\":[");
  line.append(record.texts.take());
  line.append("],\"texts_not_utf8\":" + ordered_json(record.texts.replaced()).dump() + ",");
  if (record.content) {
    line.append("\"content\":");
    line.append(record.content->take());
    line.append(",");
  }
  line.append(closing(behind));
  return line;
}

}  // namespace dorvex::cli
