// What a document says: the walks of all three applications over an object graph, and
// what they promise to whoever takes its parts.
//
// Input: one byte, which files stand beside the objects; the object stream.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "content/support/files.h"
#include "dorvex/content.h"
#include "fuzz_input.h"
#include "graph/utf8.h"
#include "input_form.h"
#include "support/package_writer.h"

namespace dorvex::fuzz {
namespace {

namespace content = dorvex::content;
using testing::Member;

// Rows and columns that are looked at: a table may state any number of them.
constexpr std::uint32_t kMostRows = 40;
// What an object stream of the largest input says, many times over: what is shown, is
// shown in one place.
constexpr std::size_t kMostShown = std::size_t{64} << 20;

bool isUtf8(const std::string& text) { return content::validUtf8(text) == text; }

bool isShownCharacter(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return (value >= 0x20 && value != 0x7F) || byte == '\n' || byte == '\t';
}

// Takes all parts, and holds the walks to their promises.
class Promises final : public content::Sink {
 public:
  void document(content::Application application, const content::Metadata& metadata) override {
    require(stage_ == Stage::kNothing, "a document comes once, and first");
    stage_ = Stage::kParts;
    application_ = application;
    checkTexts(metadata.applicationBuilds);
    checkTexts(metadata.authors);
    for (const std::string* text : {&metadata.language, &metadata.locale, &metadata.templateName,
                                    &metadata.created, &metadata.documentId})
      checkText(*text);
  }

  void slide(const content::Slide& slide) override {
    require(slide.number == ++parts_, "slides are counted from 1");
    require(slide.depth >= 1, "the outermost slides are 1 deep");
    if (slide.title) checkText(*slide.title);
    checkText(slide.layout);
    checkBlocks(slide.blocks);
    checkBlocks(slide.notes);
    checkComments(slide.comments);
  }

  void sheet(const content::Sheet& sheet) override {
    checkText(sheet.name);
    checkBlocks(sheet.blocks);
  }

  void body(const content::Block& block) override {
    enter(Stage::kParts);
    ++parts_;
    checkBlock(block);
  }

  void beginSection(const content::Section& section) override {
    enter(Stage::kParts);
    require(section.from == parts_, "a section begins before its first block");
  }

  void section(const content::Section& section) override {
    enter(Stage::kSections);
    require(section.from <= parts_, "a section begins in the body");
    for (const auto* lines : {&section.headers, &section.footers}) {
      for (const auto& [pages, line] : *lines)
        for (const std::string* text : {&line.left, &line.center, &line.right}) checkText(*text);
    }
    for (const auto& [pages, blocks] : section.drawables) checkBlocks(blocks);
  }

  void floating(const content::FloatingPage& page) override {
    enter(Stage::kFloating);
    require(page.page >= 1, "pages are counted from 1");
    checkBlocks(page.blocks);
  }

  void footnote(const content::Footnote& footnote) override {
    enter(Stage::kFootnotes);
    checkText(footnote.id);
    checkText(footnote.mark);
    checkBlocks(footnote.blocks);
  }

  void end(const content::Summary& summary) override {
    enter(Stage::kEnd);
    require(std::ranges::all_of(media_,
                                [&](std::size_t index) { return index < summary.media.size(); }),
            "media are among those of the end");
    for (const auto& file : summary.media) checkText(file->name);
    checkTexts(summary.leftOut.problems);
  }

  bool ended() const { return stage_ == Stage::kEnd; }

 private:
  enum class Stage { kNothing, kParts, kSections, kFloating, kFootnotes, kEnd };

  void enter(Stage stage) {
    require(stage_ != Stage::kNothing && stage_ != Stage::kEnd && stage_ <= stage,
            "parts come in their order");
    stage_ = stage;
  }

  void count(std::size_t bytes) {
    shown_ += bytes;
    require(shown_ <= kMostShown, "what is shown is bounded");
  }

  void checkText(const std::string& text) {
    require(isUtf8(text), "texts are UTF-8");
    count(text.size());
  }

  void checkTexts(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) checkText(text);
  }

  void checkShown(const std::string& text) {
    checkText(text);
    require(std::ranges::all_of(text, isShownCharacter), "texts have no control characters");
    require(text.find("\xEF\xBF\xBC") == std::string::npos, "nor attachment characters");
  }

  void checkComments(const std::vector<content::Comment>& comments) {
    for (const content::Comment& comment : comments) {
      checkText(comment.author);
      checkText(comment.date);
      checkShown(comment.text);
      checkComments(comment.replies);
    }
  }

  void checkBlocks(const std::vector<content::Block>& blocks) {
    for (const content::Block& block : blocks) checkBlock(block);
  }

  void checkBlock(const content::Block& block) {
    count(sizeof block);
    for (const std::string* text : {&block.alt, &block.title, &block.caption, &block.link})
      checkText(*text);
    checkComments(block.comments);
    std::visit([this](const auto& what) { check(what); }, block.what);
  }

  void check(const content::Paragraph& paragraph) {
    checkShown(paragraph.text);
    if (paragraph.list) checkText(paragraph.list->label);
    if (paragraph.runs.empty()) return;
    std::string joined;
    for (const content::Run& run : paragraph.runs) {
      checkShown(run.text);
      checkComments(run.comments);
      if (!run.deleted) joined += run.text;
    }
    require(joined == paragraph.text, "the runs joined are the text");
  }

  void check(const content::Table& table) {
    require(table.cells != nullptr, "a table can be read");
    checkText(table.name);
    require(std::ranges::is_sorted(table.hiddenRows) && std::ranges::is_sorted(table.hiddenColumns),
            "hidden lines ascend");
    require(std::ranges::is_sorted(
                table.merges, {},
                [](const content::Merge& merge) { return std::pair(merge.row, merge.column); }),
            "merges come in their order");
    std::vector<content::Cell> cells;
    for (std::uint32_t row = 0; row < std::min(table.rows, kMostRows); ++row) {
      table.cells->read(row, {}, cells);
      require(cells.size() == table.columns, "a row has as many cells as the table has columns");
      for (const content::Cell& cell : cells) checkCell(cell);
    }
    table.cells->read(table.rows, {}, cells);
    require(cells.empty(), "behind the last row there is none");
  }

  void checkCell(const content::Cell& cell) {
    count(1);
    for (const std::string* text : {&cell.value, &cell.text, &cell.formula, &cell.decimal})
      checkText(*text);
    for (const content::Paragraph& paragraph : cell.paragraphs) check(paragraph);
    checkComments(cell.comments);
  }

  void check(const content::Chart& chart) {
    checkText(chart.title);
    checkTexts(chart.categories);
    checkTexts(chart.axisTitles);
    for (const content::ChartSeries& series : chart.series) {
      checkText(series.name);
      count(series.values.size());
    }
  }

  void check(const content::Media& media) {
    require(media.index.has_value() == (media.file != nullptr), "a file has a number");
    if (media.index) media_.push_back(*media.index);
    checkText(media.name);
  }

  void check(const content::Gallery& gallery) {
    for (const content::GalleryImage& image : gallery.images) check(image.media);
  }

  void check(const content::Equation& equation) { checkText(equation.source); }
  void check(const content::Box& box) { checkBlocks(box.blocks); }
  void check(const content::Break&) {}

  Stage stage_ = Stage::kNothing;
  content::Application application_ = content::Application::kPages;
  unsigned parts_ = 0;
  std::vector<std::size_t> media_;
  std::size_t shown_ = 0;
};

std::vector<Member> packageOf(std::uint8_t files, std::string_view stream) {
  std::vector<Member> members = {
      {"Index/Document.iwa", testing::chunk(testing::literalBlock(stream))}};
  if ((files & 1U) != 0) members.push_back({"Data/tea.png", "picture"});
  if ((files & 2U) != 0) members.push_back({"Metadata/Properties.plist", std::string(stream)});
  if ((files & 4U) != 0) members.push_back({"Index/Broken.iwa", std::string(stream)});
  return members;
}

}  // namespace

const InputForm kInputForm{1, Level::kObjectStream};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::uint8_t files = input.byte();
  dorvex::testing::MemoryPackage package(packageOf(files, input.rest()));
  Promises promises;
  const auto outcome = dorvex::content::read(package, promises);
  require(promises.ended() == (outcome == dorvex::content::Outcome::kRead),
          "a document is given whole or not at all");
  return 0;
}
