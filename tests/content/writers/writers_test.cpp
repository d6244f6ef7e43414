// What holds of every writer, whatever it is given.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "content/writers/hostile_model.h"
#include "graph/utf8.h"
#include "writers/options.h"

namespace dorvex::content {
namespace {

constexpr std::uint32_t kDocuments = 400;

std::string written(const WriterOptions& options, std::uint32_t seed) {
  std::string text;
  const auto take = [&text](std::string_view bytes) { text += bytes; };
  const auto writer = makeWriter(options, {take, [](std::string_view) {}, take});
  try {
    testing::giveOddDocument(seed, *writer);
  } catch (const NoSuchTable&) {
  }
  return text;
}

std::vector<WriterOptions> allOptions() {
  std::vector<WriterOptions> all;
  for (const Format format :
       {Format::kJson, Format::kMarkdown, Format::kHtml, Format::kText, Format::kCsv}) {
    WriterOptions options;
    options.format = format;
    options.csv.eachTable = true;
    all.push_back(options);
    options.comments = CommentPlace::kInline;
    options.changes = ShownChanges::kAll;
    options.pandoc = true;
    options.frontMatter = true;
    options.mediaFolder = "a b";
    options.csv.values = CellValues::kFormula;
    options.csv.fillMerged = true;
    all.push_back(options);
    options.comments = CommentPlace::kEnd;
    options.changes = ShownChanges::kOriginal;
    options.pandoc = false;
    options.htmlTables = true;
    options.dropSkipped = true;
    options.csv.values = CellValues::kRaw;
    all.push_back(options);
  }
  return all;
}

// The elements that are open, by a reading as strict as that of XML.
class Balance {
 public:
  void read(const std::string& html) {
    std::size_t at = 0;
    while ((at = html.find('<', at)) != std::string::npos) {
      const std::size_t end = html.find('>', at);
      ASSERT_NE(end, std::string::npos);
      tag(html.substr(at + 1, end - at - 1));
      at = end;
    }
    EXPECT_TRUE(open_.empty()) << open_.back();
  }

 private:
  void tag(const std::string& tag) {
    const std::string name = tag.substr(0, tag.find(' '));
    if (name == "br" || name == "img" || name == "meta" || name == "!DOCTYPE") return;
    if (!name.starts_with('/')) {
      open_.push_back(name);
      return;
    }
    ASSERT_FALSE(open_.empty()) << tag;
    EXPECT_EQ("/" + open_.back(), name);
    open_.pop_back();
  }

  std::vector<std::string> open_;
};

std::size_t unescapedPipes(const std::string& line) {
  std::size_t pipes = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;
    } else if (line[at] == '|') {
      ++pipes;
    }
  }
  return pipes;
}

TEST(Writers, AlwaysGiveValidUtf8WithoutControlCharacters) {
  for (const WriterOptions& options : allOptions()) {
    for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
      const std::string text = written(options, seed);
      ASSERT_EQ(validUtf8(text), text);
      for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        ASSERT_TRUE(value >= 0x20 || byte == '\n' || byte == '\t' ||
                    (byte == '\f' && options.format == Format::kText) ||
                    (byte == '\r' && options.format == Format::kCsv))
            << seed;
      }
    }
  }
}

TEST(Writers, GiveTheSameBytesAgain) {
  for (const WriterOptions& options : allOptions())
    EXPECT_EQ(written(options, 7), written(options, 7));
}

TEST(Writers, AlwaysGiveJsonThatParses) {
  for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
    WriterOptions options;
    options.format = Format::kJson;
    const auto json = nlohmann::json::parse(written(options, seed));
    options.oneLine = true;
    const std::string line = written(options, seed);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_EQ(nlohmann::json::parse(line), json);
  }
}

TEST(Writers, AlwaysBalanceTheElementsOfHtml) {
  for (WriterOptions options : allOptions()) {
    if (options.format != Format::kHtml) continue;
    for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
      Balance().read(written(options, seed));
      if (::testing::Test::HasFailure()) FAIL() << seed;
    }
  }
}

TEST(Writers, LinkToNoScripts) {
  for (const WriterOptions& options : allOptions()) {
    if (options.format != Format::kHtml && options.format != Format::kMarkdown) continue;
    for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
      const std::string text = written(options, seed);
      EXPECT_EQ(text.find("href=\"javascript:"), std::string::npos);
      EXPECT_EQ(text.find("](javascript:"), std::string::npos);
      // In Markdown the bracket is escaped, or stands in a block of code.
      const bool isMarkdown = options.format == Format::kMarkdown;
      EXPECT_TRUE(isMarkdown || text.find("<script") == std::string::npos);
    }
  }
}

TEST(Writers, GiveEveryRowOfAPipeTableAsManyCells) {
  WriterOptions options;
  options.format = Format::kMarkdown;
  for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
    const std::string text = written(options, seed);
    std::size_t inTable = 0;
    std::size_t from = 0;
    for (std::size_t end = 0; (end = text.find('\n', from)) != std::string::npos; from = end + 1) {
      std::string line = text.substr(from, end - from);
      line.erase(0, std::min(line.find_first_not_of(' '), line.size()));
      if (!line.starts_with('|')) {
        inTable = 0;
        continue;
      }
      const std::size_t pipes = unescapedPipes(line);
      if (inTable == 0) inTable = pipes;
      EXPECT_EQ(pipes, inTable) << seed << ": " << line;
    }
  }
}

// Fields with quotes doubled, lines with CR LF.
TEST(Writers, GiveEveryRowOfCsvAsManyFields) {
  WriterOptions options;
  options.format = Format::kCsv;
  options.csv.eachTable = true;
  for (std::uint32_t seed = 0; seed < kDocuments; ++seed) {
    std::string text;
    std::vector<std::string> files;
    const auto writer = makeWriter(
        options, {[](std::string_view) {}, [&](std::string_view) { files.emplace_back(); },
                  [&](std::string_view bytes) { files.back() += bytes; }});
    try {
      testing::giveOddDocument(seed, *writer);
    } catch (const NoSuchTable&) {
    }
    for (const std::string& file : files) {
      bool quoted = false;
      std::size_t fields = 1;
      std::optional<std::size_t> expected;
      for (std::size_t at = 0; at < file.size(); ++at) {
        if (file[at] == '"') quoted = !quoted;
        if (quoted) continue;
        if (file[at] == ',') ++fields;
        if (file[at] == '\n') {
          if (!expected) expected = fields;
          EXPECT_EQ(fields, *expected) << seed;
          fields = 1;
        }
      }
      EXPECT_FALSE(quoted) << seed;
    }
  }
}

}  // namespace
}  // namespace dorvex::content
