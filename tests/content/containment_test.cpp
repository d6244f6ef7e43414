// The reader gives every text of a document; the content view places those that a
// person sees. Each text that it does not place must be of a kind that is not shown.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "content/support/files.h"
#include "content/support/left_out_texts.h"
#include "dorvex/content.h"
#include "graph/graph.h"
#include "module/reader_module.h"
#include "support/corpus.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::containment_test {
namespace {

namespace fs = std::filesystem;
using namespace content;

// Collects, squeezed, the texts of each thing that holds one.
class PlacedTexts : public Sink {
 public:
  void document(Application, const Metadata&) override {}
  void slide(const Slide& slide) override {
    add(slide.blocks);
    add(slide.notes);
    add(slide.comments);
  }
  void sheet(const Sheet& sheet) override { add(sheet.blocks); }
  void body(const Block& block) override { addInto(block, body_); }
  void section(const Section& section) override {
    for (const auto* lines : {&section.headers, &section.footers})
      for (const auto& [page, line] : *lines)
        for (const std::string* text : {&line.left, &line.center, &line.right}) add(*text);
    for (const auto& [page, blocks] : section.drawables) add(blocks);
  }
  void floating(const FloatingPage& page) override { add(page.blocks); }
  void footnote(const Footnote& footnote) override { add(footnote.blocks); }
  void end(const Summary&) override { texts_.insert(body_); }

  bool contains(const std::string& text) const { return texts_.contains(text); }

 private:
  void add(std::string_view text) { texts_.insert(squeezed(text)); }

  void add(const std::vector<Comment>& comments) {
    for (const Comment& comment : comments) {
      add(comment.text);
      add(comment.replies);
    }
  }

  void add(const std::vector<Block>& blocks) {
    std::string text;
    for (const Block& block : blocks) addInto(block, text);
    texts_.insert(text);
  }

  // Adds a paragraph to the text that it is part of, and all else for itself.
  void addInto(const Block& block, std::string& text) {
    add(block.title);
    add(block.caption);
    add(block.comments);
    if (const auto* paragraph = std::get_if<Paragraph>(&block.what)) {
      addParagraph(*paragraph, text);
    } else if (const auto* box = std::get_if<Box>(&block.what)) {
      add(box->blocks);
    } else if (const auto* table = std::get_if<Table>(&block.what)) {
      addTable(*table);
    } else if (const auto* gallery = std::get_if<Gallery>(&block.what)) {
      for (const GalleryImage& image : gallery->images) add(image.caption);
    }
  }

  void addParagraph(const Paragraph& paragraph, std::string& text) {
    if (paragraph.runs.empty()) text += squeezed(paragraph.text);
    std::string runs;  // with what was deleted
    for (const Run& run : paragraph.runs) {
      runs += run.text;
      add(run.comments);
    }
    text += squeezed(runs);
  }

  void addTable(const Table& table) {
    add(table.caption);
    std::vector<Cell> cells;
    for (std::uint32_t row = 0; row < table.rows; ++row) {
      table.cells->read(row, {.text = true, .formula = false, .rich = true}, cells);
      for (const Cell& cell : cells) {
        add(cell.value);
        add(cell.text);
        add(cell.paragraphs.empty() ? std::vector<Block>() : blocksOf(cell.paragraphs));
        add(cell.comments);
      }
    }
    for (const auto* lines : {&table.shownRows, &table.shownColumns})
      for (const ShownLine& line : *lines) add(line.group);
  }

  static std::vector<Block> blocksOf(const std::vector<Paragraph>& paragraphs) {
    std::vector<Block> blocks;
    for (const Paragraph& paragraph : paragraphs) blocks.emplace_back().what = paragraph;
    return blocks;
  }

  std::set<std::string> texts_;
  std::string body_;
};

std::vector<std::string> textsOfReader(const fs::path& path) {
  BareHost host;
  Stream& document = fs::is_directory(path)
                         ? host.addDirectoryDocument(path / "Index" / "Document.iwa")
                         : host.addDocument(readFile(path), path.string());
  const Pumped pumped = pump(theReader().interface(), host, &document);
  return pumped.result() == 0 ? textsOf(pumped.stream()) : std::vector<std::string>();
}

// What became of the texts of a document.
struct Account {
  std::size_t texts = 0;
  std::size_t placed = 0;
  std::map<std::string, std::size_t> kinds;  // of those that are left out
  std::vector<std::string> lost;
};

Account account(const fs::path& path) {
  Account account;
  MemoryPackage package = packageAt(path);
  PlacedTexts placed;
  if (read(package, placed) == Outcome::kNothingToRead) return account;
  LeftOut leftOut;
  const Graph graph(package, leftOut);
  const LeftOutTexts left(graph);
  for (const std::string& text : textsOfReader(path)) {
    const std::string wanted = squeezed(text);
    if (wanted.empty()) continue;
    ++account.texts;
    if (placed.contains(wanted)) {
      ++account.placed;
    } else if (const auto kind = left.kindOf(wanted)) {
      ++account.kinds[*kind];
    } else {
      account.lost.push_back(text);
    }
  }
  return account;
}

void print(const std::string& name, const Account& account) {
  std::cout << name << ": " << account.placed << " of " << account.texts << " texts placed";
  for (const auto& [kind, count] : account.kinds) std::cout << ", " << count << ' ' << kind;
  std::cout << '\n';
}

void expectAllAccountedFor(const fs::path& path) {
  const Account result = account(path);
  if (result.texts == 0) GTEST_SKIP() << path.filename() << " is no document but for the reader";
  print(path.filename().string(), result);
  for (const std::string& text : result.lost) ADD_FAILURE() << path.filename() << ": " << text;
}

// Documents that are sound: not those whose package cannot be opened.
std::vector<fs::path> documentsIn(const fs::path& folder) {
  std::vector<fs::path> paths;
  if (!fs::is_directory(folder)) return paths;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string suffix = entry.path().extension();
    if (suffix == ".key" || suffix == ".pages" || suffix == ".numbers")
      paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  return paths;
}

class Samples : public ::testing::TestWithParam<fs::path> {};

TEST_P(Samples, PlaceEachTextOrSayOfWhichKindItIs) { expectAllAccountedFor(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Containment, Samples, ::testing::ValuesIn(documentsIn(DORVEX_SAMPLES)),
                         [](const auto& info) {
                           return testNameOf(info.param.filename().string());
                         });

TEST(Containment, HoldsForAllRealDocuments) {
  if (!hasCorpus()) GTEST_SKIP() << corpusIsAbsent();
  std::vector<fs::path> paths = documentsIn(corpusFolder() / "documents");
  std::ranges::copy(documentsIn(corpusFolder().parent_path() / "content" / "documents"),
                    std::back_inserter(paths));
  Account all;
  for (const fs::path& path : paths) {
    SCOPED_TRACE(path.filename().string());
    Account one;
    try {
      one = account(path);
    } catch (const std::runtime_error&) {
      continue;  // no package at all, as some are on purpose
    }
    print(path.filename().string(), one);
    all.texts += one.texts;
    all.placed += one.placed;
    for (const auto& [kind, count] : one.kinds) all.kinds[kind] += count;
    for (const std::string& text : one.lost) ADD_FAILURE() << text;
  }
  print("All real documents", all);
  EXPECT_GT(all.texts, 1000U);
}

}  // namespace
}  // namespace dorvex::testing::containment_test
