#include "record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>
#include <optional>

#include "base64.h"
#include "document_id.h"
#include "printable.h"

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
std::optional<std::string> replaced(const std::string& text) {
  try {
    static_cast<void>(ordered_json(text).dump());
    return std::nullopt;
  } catch (const ordered_json::type_error&) {
    const auto replacing = ordered_json::error_handler_t::replace;
    return ordered_json::parse(ordered_json(text).dump(-1, ' ', false, replacing))
        .get<std::string>();
  }
}

void addPath(ordered_json& line, const std::string& path) {
  const auto shown = replaced(path);
  line["path"] = shown.value_or(path);
  line["path_is_utf8"] = !shown;
  if (shown) line["path_base64"] = base64(path);
}

void addTexts(ordered_json& line, const std::vector<std::string>& texts) {
  auto& shown = line["texts"] = ordered_json::array();
  auto marked = ordered_json::array();
  for (const std::string& text : texts) {
    if (auto repaired = replaced(text)) {
      marked.push_back(shown.size());
      shown.push_back(std::move(*repaired));
    } else {
      shown.push_back(text);
    }
  }
  line["texts_not_utf8"] = std::move(marked);
}

void addSkipped(ordered_json& line, const std::vector<SkippedMember>& skipped) {
  auto& list = line["skipped"] = ordered_json::array();
  for (const auto& [name, reason] : skipped) {
    list.push_back(
        {{"name", replaced(name).value_or(name)}, {"reason", replaced(reason).value_or(reason)}});
  }
}

std::uint64_t bytesOf(const std::vector<std::string>& texts) {
  return std::accumulate(texts.begin(), texts.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const auto& text) { return sum + text.size(); });
}

double toMicroseconds(double milliseconds) { return std::round(milliseconds * 1000) / 1000; }

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

std::string toLine(const Record& record) {
  const Result& result = record.result;
  ordered_json line;
  line["version"] = kRecordVersion;
  line["id"] = documentId(record.path);
  addPath(line, record.path);
  line["status"] = statusOf(result);
  line["complete"] = result.status == Status::kOk;
  line["message"] = replaced(result.message).value_or(result.message);
  line["limit"] = nullptr;
  if (result.limit != Limit::kNone) line["limit"] = nameIn(kLimits, result.limit);
  line["signal"] = nullptr;
  if (result.signal != 0) line["signal"] = result.signal;
  line["result"] = nullptr;
  if (result.moduleResult) line["result"] = *result.moduleResult;
  line["kind"] = nameIn(kKinds, result.kind);
  addTexts(line, record.texts);
  if (record.content) line["content"] = replaced(*record.content).value_or(*record.content);
  line["bytes_in"] = record.bytesIn;
  line["bytes_out"] = record.content ? record.content->size() : bytesOf(record.texts);
  line["milliseconds"] = toMicroseconds(record.milliseconds);
  addSkipped(line, result.skipped);
  return printableJson(line.dump()) + "\n";
}

}  // namespace dorvex::cli
