// Blocks, and what they are made of, as JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"
#include "writers/json_emitter.h"

namespace dorvex::content {

// Keys with their values. What is empty is left out, but for alwaysText.
class JsonFields {
 public:
  explicit JsonFields(JsonEmitter& json) : json_(json) {}

  JsonEmitter& json() const { return json_; }

  void alwaysText(std::string_view key, std::string_view value) {
    json_.key(key);
    json_.string(value);
  }
  void text(std::string_view key, std::string_view value) {
    if (!value.empty()) alwaysText(key, value);
  }
  void texts(std::string_view key, const std::vector<std::string>& values) {
    if (!values.empty()) alwaysTexts(key, values);
  }
  void alwaysTexts(std::string_view key, const std::vector<std::string>& values) {
    json_.key(key);
    json_.beginArray();
    for (const std::string& value : values) json_.string(value);
    json_.endArray();
  }
  void count(std::string_view key, std::uint64_t value) {
    json_.key(key);
    json_.count(value);
  }
  void counts(std::string_view key, const std::vector<std::uint32_t>& values) {
    if (values.empty()) return;
    json_.key(key);
    json_.beginArray();
    for (const std::uint32_t value : values) json_.count(value);
    json_.endArray();
  }
  void flag(std::string_view key, bool value) {
    json_.key(key);
    json_.boolean(value);
  }
  void mark(std::string_view key, bool value) {
    if (value) flag(key, true);
  }

 private:
  JsonEmitter& json_;
};

class JsonBlocks {
 public:
  explicit JsonBlocks(JsonEmitter& json) : json_(json), fields_(json) {}

  void block(const Block& block);
  void list(std::string_view key, const std::vector<Block>& blocks);
  // Left out where there are none.
  void comments(std::string_view key, const std::vector<Comment>& comments);

 private:
  void put(const Paragraph& paragraph);
  void put(const Table& table, const Block& block);
  void put(const Chart& chart);
  void put(const Media& media);
  void put(const Gallery& gallery);
  void put(const Equation& equation);
  void put(const Box& box);

  void mediaFields(const Media& media);
  void paragraphFields(const Paragraph& paragraph);
  void formFields(const Paragraph& paragraph);
  void runs(const std::vector<Run>& runs);
  void change(std::string_view key, const std::optional<Change>& change);
  void comment(const Comment& comment);
  void cells(const Table& table);
  void cell(const Cell& cell);
  void cellValue(const Cell& cell);
  void cellFormat(const Cell& cell);
  void cellParagraphs(const Cell& cell);
  void shownLines(std::string_view key, const std::vector<ShownLine>& lines);
  void drawableFields(const Block& block);

  JsonEmitter& json_;
  JsonFields fields_;
};

}  // namespace dorvex::content
