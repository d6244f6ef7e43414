// What became of one document, as a line of JSON. docs/batch-record.schema.json
// states its form.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "blocks.h"
#include "dorvex/result.h"
#include "json_strings.h"

namespace dorvex::cli {

constexpr int kRecordVersion = 1;

struct Record {
  std::string path;   // as it was given
  JsonStrings texts;  // of a large document the most of it, hence written as they come
  Result result;
  std::uint64_t bytesIn = 0;
  double milliseconds = 0;
  std::optional<JsonStrings> content = {};  // one string: what was rendered instead of texts
};

// The word that a record has for a result: ok, unsupported, encrypted, corrupt,
// limit, timeout, crash, changed, retry or io.
std::string_view statusOf(const Result& result);

// All those words but ok.
std::vector<std::string> failedStatuses();

// The record as one line, with its line feed. Bytes that are not UTF-8 are
// replaced by U+FFFD in it, and it says where.
Blocks toLine(Record record);

}  // namespace dorvex::cli
