// What holds of every writer, whatever it is given.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "content/support/odd_document.h"
#include "content/support/valid_output.h"
#include "support/package_writer.h"
#include "writers/options.h"

namespace dorvex::content::writers_test {
namespace {

using testing::RandomChoices;

constexpr std::uint32_t kDocuments = 120;

struct Rendering {
  std::string text;
  std::vector<std::string> files;
};

Rendering written(const WriterOptions& options, std::uint32_t seed) {
  Rendering rendering;
  const auto writer =
      makeWriter(options, {[&](std::string_view bytes) { rendering.text += bytes; },
                           [&](std::string_view) { rendering.files.emplace_back(); },
                           [&](std::string_view bytes) { rendering.files.back() += bytes; }});
  RandomChoices choices(seed);
  try {
    testing::giveOddDocument(choices, *writer);
  } catch (const NoSuchTable&) {
  }
  return rendering;
}

std::vector<WriterOptions> optionsOf(Format format) {
  WriterOptions options;
  options.format = format;
  options.csv.eachTable = true;
  std::vector<WriterOptions> all = {options};
  options.comments = CommentPlace::kInline;
  options.changes = ShownChanges::kAll;
  options.pandoc = options.frontMatter = options.oneLine = true;
  options.mediaFolder = "a b";
  options.csv.values = CellValues::kFormula;
  options.csv.fillMerged = true;
  all.push_back(options);
  options.comments = CommentPlace::kEnd;
  options.changes = ShownChanges::kOriginal;
  options.pandoc = false;
  options.htmlTables = options.dropSkipped = true;
  options.csv.values = CellValues::kRaw;
  all.push_back(options);
  return all;
}

// Calls check(rendering, options) for many documents under all options of a format.
template <typename Check>
void forEachRendering(Format format, Check check) {
  for (const WriterOptions& options : optionsOf(format)) {
    for (std::uint32_t seed = 0; seed < kDocuments; ++seed)
      ASSERT_EQ(check(written(options, seed), options), "") << seed;
  }
}

TEST(Writers, GiveTheSameBytesAgain) {
  for (const Format format :
       {Format::kJson, Format::kMarkdown, Format::kHtml, Format::kText, Format::kCsv}) {
    for (const WriterOptions& options : optionsOf(format))
      EXPECT_EQ(written(options, 7).text, written(options, 7).text);
  }
}

TEST(Writers, AlwaysGiveJsonOfTheStatedShape) {
  const std::string schema = testing::readFile(DORVEX_CONTENT_SCHEMA);
  forEachRendering(Format::kJson, [&](const Rendering& rendering, const WriterOptions& options) {
    const std::string flaw = testing::flawOfText(rendering.text, "\n");
    return flaw.empty() ? testing::flawOfJson(rendering.text, schema, options.oneLine) : flaw;
  });
}

TEST(Writers, AlwaysGiveHtmlThatIsBalancedAndLinksToNoScripts) {
  forEachRendering(Format::kHtml, [](const Rendering& rendering, const WriterOptions&) {
    const std::string flaw = testing::flawOfText(rendering.text, "\n\t");
    return flaw.empty() ? testing::flawOfHtml(rendering.text) : flaw;
  });
}

TEST(Writers, AlwaysGiveMarkdownWhoseTablesHaveAsManyCellsInEveryRow) {
  forEachRendering(Format::kMarkdown, [](const Rendering& rendering, const WriterOptions&) {
    const std::string flaw = testing::flawOfText(rendering.text, "\n\t");
    return flaw.empty() ? testing::flawOfMarkdown(rendering.text) : flaw;
  });
}

TEST(Writers, AlwaysGiveTextWithoutControlCharacters) {
  forEachRendering(Format::kText, [](const Rendering& rendering, const WriterOptions&) {
    return testing::flawOfText(rendering.text, "\n\t\f");
  });
}

TEST(Writers, AlwaysGiveCsvThatReadsBack) {
  forEachRendering(Format::kCsv, [](const Rendering& rendering, const WriterOptions& options) {
    for (const std::string& file : rendering.files) {
      std::string flaw = testing::flawOfText(file, "\r\n\t");
      if (flaw.empty()) flaw = testing::flawOfCsv(file, options.csv.delimiter);
      if (!flaw.empty()) return flaw;
    }
    return std::string();
  });
}

}  // namespace
}  // namespace dorvex::content::writers_test
