#include "content/support/odd_document.h"

#include <array>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "graph/utf8.h"

namespace dorvex::testing {
namespace {

using namespace content;

// Of boxes in boxes, and of replies to replies.
constexpr int kDeepest = 5;

constexpr auto kPieces = std::to_array<std::string_view>({
    "a",
    "b c",
    "\n",
    "\t",
    "  ",
    "|",
    "\\",
    "`",
    "```",
    "*",
    "**",
    "_",
    "~~",
    "[",
    "]",
    "](x)",
    "![",
    "<",
    ">",
    "<!--",
    "-->",
    "--",
    "<script>",
    "</td>",
    "&",
    "&amp;",
    "&#x0;",
    "\"",
    "'",
    "#",
    "1.",
    "- ",
    "+",
    "=",
    ":::",
    "$$",
    "$",
    "^",
    "{.x}",
    ":smile:",
    "\x01",
    "\x7F",
    "\xFF",
    "\xC0\x80",
    "\xED\xA0\x80",
    "\xF0\x9F",
    "\xEF\xBF\xBC",
    "\xE2\x80\xA8",
    "\xC2\x85",
    "😀",
    "漢字",
    "é",
    ",",
    ";",
    "\r\n",
    "=1+1",
    "javascript:",
    "http://a.b/?",
    "c=1&copy=2",
    "]]>",
    "%",
    "@x",
    "../",
    "\xE2\x80\xAE",
    "\xD9\x85",
    "<br>",
    "\f",
    "---",
    "> ",
    "a.png",
});

bool oneIn(Choices& choices, std::uint32_t count) { return choices.below(count) == count - 1; }

std::uint32_t anyNumber(Choices& choices) {
  return choices.below(65536) << 16 | choices.below(65536);
}

template <typename Value>
Value oneOf(Choices& choices, std::uint32_t count) {
  return static_cast<Value>(choices.below(count));
}

std::vector<std::string> oddStrings(Choices& choices) {
  std::vector<std::string> strings;
  for (std::uint32_t count = choices.below(4); count > 0; --count)
    strings.push_back(oddString(choices));
  return strings;
}

double oddNumber(Choices& choices) {
  constexpr std::array<double, 7> kNumbers = {0,
                                              -0.0,
                                              1.5,
                                              1e300,
                                              5e-324,
                                              std::numeric_limits<double>::infinity(),
                                              std::numeric_limits<double>::quiet_NaN()};
  return kNumbers[choices.below(kNumbers.size())];
}

std::vector<Comment> oddComments(Choices& choices, int depth = 0) {
  std::vector<Comment> comments;
  if (depth >= kDeepest || !oneIn(choices, 5)) return comments;
  for (std::uint32_t count = 1 + choices.below(2); count > 0; --count) {
    Comment& comment = comments.emplace_back();
    comment.author = oddString(choices);
    comment.date = oddString(choices);
    comment.text = oddString(choices);
    comment.replies = oddComments(choices, depth + 1);
  }
  return comments;
}

std::optional<Change> oddChange(Choices& choices) {
  if (!oneIn(choices, 5)) return std::nullopt;
  return Change{oddString(choices), oddString(choices)};
}

std::string rareString(Choices& choices) {
  return oneIn(choices, 5) ? oddString(choices) : std::string();
}

Run oddRun(Choices& choices) {
  Run run;
  run.text = oddString(choices);
  run.bold = oneIn(choices, 3);
  run.italic = oneIn(choices, 3);
  run.underline = oneIn(choices, 5);
  run.strike = oneIn(choices, 5);
  run.baseline = oneOf<Baseline>(choices, 3);
  run.link = rareString(choices);
  run.footnote = rareString(choices);
  run.footnoteMark = rareString(choices);
  run.bookmark = rareString(choices);
  run.ruby = rareString(choices);
  if (oneIn(choices, 5)) run.field = oneOf<FieldKind>(choices, 7);
  run.comments = oddComments(choices);
  run.inserted = oddChange(choices);
  run.deleted = oddChange(choices);
  return run;
}

Paragraph oddParagraph(Choices& choices) {
  Paragraph paragraph;
  paragraph.role = oneOf<Role>(choices, 12);
  paragraph.level = choices.below(9);
  paragraph.style = rareString(choices);
  if (oneIn(choices, 3)) {
    const unsigned level = oneIn(choices, 9) ? anyNumber(choices) : choices.below(20);
    paragraph.list = ListMark{level, oneOf<ListKind>(choices, 4), oddString(choices)};
  }
  for (std::uint32_t count = choices.below(4); count > 0; --count) {
    paragraph.runs.push_back(oddRun(choices));
    if (!paragraph.runs.back().deleted) paragraph.text += paragraph.runs.back().text;
  }
  if (paragraph.runs.empty()) paragraph.text = oddString(choices);
  if (!oneIn(choices, 4)) return paragraph;
  for (Run& run : paragraph.runs) run.endsParagraph = oneIn(choices, 2);
  paragraph.original.resize(1 + choices.below(3));
  paragraph.endInserted = oneIn(choices, 2);
  return paragraph;
}

Cell oddCell(Choices& choices) {
  Cell cell;
  cell.type = oneOf<CellType>(choices, 11);
  cell.number = oddNumber(choices);
  cell.decimal = rareString(choices);
  cell.value = oddString(choices);
  cell.text = oddString(choices);
  cell.formula = rareString(choices);
  cell.formulaProblem = rareString(choices);
  cell.format = rareString(choices);
  cell.currency = rareString(choices);
  if (cell.type == CellType::kRich) {
    for (std::uint32_t count = choices.below(3); count > 0; --count)
      cell.paragraphs.push_back(oddParagraph(choices));
  }
  if (oneIn(choices, 6)) cell.control = oneOf<Control>(choices, 6);
  cell.comments = oddComments(choices);
  return cell;
}

class OddRows final : public TableRows {
 public:
  OddRows(std::uint32_t columns, std::uint32_t seed) : columns_(columns), seed_(seed) {}
  void read(std::uint32_t index, const CellParts&, std::vector<Cell>& cells) override {
    RandomChoices choices(seed_ + index);
    cells.clear();
    for (std::uint32_t column = 0; column < columns_; ++column) cells.push_back(oddCell(choices));
  }

 private:
  std::uint32_t columns_;
  std::uint32_t seed_;
};

std::vector<std::uint32_t> someOf(Choices& choices, std::uint32_t count) {
  std::vector<std::uint32_t> some;
  for (std::uint32_t number = 0; number < count; ++number)
    if (oneIn(choices, 5)) some.push_back(number);
  return some;
}

// They may lie over each other and reach over the edge.
std::vector<Merge> oddMerges(Choices& choices) {
  std::vector<Merge> merges;
  for (std::uint32_t row = 0; row < 8; ++row) {
    for (std::uint32_t column = 0; column < 7; ++column) {
      if (!oneIn(choices, 16)) continue;
      merges.push_back(
          {row, column, choices.below(5), oneIn(choices, 5) ? UINT32_MAX : choices.below(4)});
    }
  }
  return merges;
}

std::vector<ShownLine> oddLines(Choices& choices) {
  std::vector<ShownLine> lines;
  if (!oneIn(choices, 4)) return lines;
  for (std::uint32_t count = choices.below(8); count > 0; --count) {
    ShownLine& line = lines.emplace_back();
    if (oneIn(choices, 4)) {
      line.summary = oddStrings(choices);
    } else if (oneIn(choices, 4)) {
      line.group = oddString(choices);
      line.level = choices.below(4);
    } else {
      line.model = choices.below(9);
    }
  }
  return lines;
}

Chart oddChart(Choices& choices) {
  Chart chart{oddString(choices), oddString(choices), oddStrings(choices), {}, oddStrings(choices)};
  for (std::uint32_t count = choices.below(3); count > 0; --count) {
    ChartSeries& series = chart.series.emplace_back();
    series.name = oddString(choices);
    for (std::uint32_t values = choices.below(5); values > 0; --values) {
      ChartValue value;
      if (oneIn(choices, 3)) {
        value = oddString(choices);
      } else if (!oneIn(choices, 3)) {
        value = oddNumber(choices);
      }
      series.values.push_back(std::move(value));
    }
  }
  return chart;
}

Media oddMedia(Choices& choices) {
  Media media;
  media.kind = oneOf<MediaKind>(choices, 3);
  media.name = oddString(choices);
  if (oneIn(choices, 2)) {
    media.index = choices.below(3);
    media.file = std::make_shared<MediaFile>(MediaFile{oddString(choices), oddString(choices), 1});
  }
  return media;
}

Gallery oddGallery(Choices& choices) {
  Gallery gallery;
  for (std::uint32_t count = choices.below(3); count > 0; --count)
    gallery.images.push_back({oddMedia(choices), oddString(choices), oddString(choices)});
  return gallery;
}

std::vector<Block> oddBlocks(Choices& choices, int depth = 0);

Block oddBlock(Choices& choices, int depth) {
  Block block;
  block.alt = rareString(choices);
  block.title = rareString(choices);
  block.caption = rareString(choices);
  block.link = rareString(choices);
  block.comments = oddComments(choices);
  switch (choices.below(12)) {
    case 1:
      block.what = oddTable(choices);
      break;
    case 2:
      block.what = oddChart(choices);
      break;
    case 3:
      block.what = oddMedia(choices);
      break;
    case 4:
      block.what = oddGallery(choices);
      break;
    case 5:
      block.what = Equation{oddString(choices), oneOf<Notation>(choices, 2)};
      break;
    case 6:
      block.what = oneOf<Break>(choices, 3);
      break;
    case 7:
    case 8:
      block.what = Box{oneOf<BoxKind>(choices, 4), oneOf<PlaceholderKind>(choices, 5),
                       oddBlocks(choices, depth + 1)};
      break;
    default:
      block.what = oddParagraph(choices);
  }
  return block;
}

std::vector<Block> oddBlocks(Choices& choices, int depth) {
  std::vector<Block> blocks;
  if (depth > kDeepest) return blocks;
  for (std::uint32_t count = choices.below(5); count > 0; --count)
    blocks.push_back(oddBlock(choices, depth));
  return blocks;
}

Slide oddSlide(Choices& choices, unsigned number) {
  Slide slide;
  slide.number = number;
  slide.skipped = oneIn(choices, 2);
  slide.depth = 1 + choices.below(4);
  slide.layout = rareString(choices);
  if (oneIn(choices, 2)) slide.title = oddString(choices);
  slide.blocks = oddBlocks(choices);
  slide.notes = oddBlocks(choices);
  slide.comments = oddComments(choices);
  return slide;
}

Sheet oddSheet(Choices& choices) {
  return {oddString(choices), oneIn(choices, 4), oddBlocks(choices)};
}

void givePages(Choices& choices, Sink& sink) {
  std::vector<Section> sections;
  for (std::uint32_t part = choices.below(4); part > 0; --part)
    for (const Block& block : oddBlocks(choices)) sink.body(block);
  for (std::uint32_t count = choices.below(2); count > 0; --count) {
    Section section;
    section.from = choices.below(9);
    section.headers[oneOf<PageClass>(choices, 3)] = {oddString(choices), oddString(choices), ""};
    section.footers[oneOf<PageClass>(choices, 3)].center = oddString(choices);
    if (oneIn(choices, 2)) section.drawables[oneOf<PageClass>(choices, 3)] = oddBlocks(choices);
    sections.push_back(section);
    sink.beginSection(section);
    for (const Block& block : oddBlocks(choices)) sink.body(block);
  }
  for (const Section& section : sections) sink.section(section);
  for (std::uint32_t count = choices.below(2); count > 0; --count)
    sink.floating({1 + choices.below(3), oddBlocks(choices)});
  for (std::uint32_t count = choices.below(3); count > 0; --count)
    sink.footnote({oddString(choices), oddString(choices), oneIn(choices, 2), oddBlocks(choices)});
}

Metadata oddMetadata(Choices& choices) {
  Metadata metadata;
  metadata.language = rareString(choices);
  metadata.locale = rareString(choices);
  metadata.templateName = rareString(choices);
  metadata.created = rareString(choices);
  metadata.documentId = rareString(choices);
  metadata.applicationBuilds = oddStrings(choices);
  if (oneIn(choices, 2)) metadata.pageSize = {oddNumber(choices), oddNumber(choices)};
  metadata.authors = oddStrings(choices);
  return metadata;
}

Summary oddSummary(Choices& choices) {
  Summary summary;
  for (std::uint32_t count = choices.below(3); count > 0; --count)
    summary.media.push_back(
        std::make_shared<MediaFile>(MediaFile{oddString(choices), oddString(choices), 7}));
  summary.leftOut.unknownTypes[choices.below(20000)] = choices.below(100);
  summary.leftOut.dangling = anyNumber(choices);
  summary.leftOut.passedOver = choices.below(2);
  summary.leftOut.problems = oddStrings(choices);
  return summary;
}

}  // namespace

std::string oddString(Choices& choices) {
  std::string text;
  for (std::uint32_t count = choices.below(6); count > 0; --count) {
    const std::uint32_t piece = choices.below(kPieces.size() + 2);
    if (piece < kPieces.size()) {
      text += kPieces[piece];
    } else if (piece == kPieces.size()) {
      text += static_cast<char>(choices.below(256));
    } else {
      appendCharacter(text, choices.below(0x10FFFF));
    }
  }
  return text;
}

Table oddTable(Choices& choices) {
  Table table;
  table.name = oddString(choices);
  table.nameShown = oneIn(choices, 2);
  table.caption = rareString(choices);
  table.rows = choices.below(6);
  table.columns = choices.below(5);
  table.headerRows = choices.below(4);
  table.headerColumns = choices.below(3);
  table.footerRows = choices.below(3);
  table.hiddenRows = someOf(choices, 6);
  table.hiddenColumns = someOf(choices, 5);
  table.merges = oddMerges(choices);
  table.shownRows = oddLines(choices);
  table.shownColumns = oddLines(choices);
  table.cells = std::make_shared<OddRows>(table.columns, anyNumber(choices));
  return table;
}

void giveOddDocument(Choices& choices, Sink& sink) {
  const auto application = oneOf<Application>(choices, 3);
  sink.document(application, oddMetadata(choices));
  if (application == Application::kPages) givePages(choices, sink);
  const std::uint32_t parts = application == Application::kPages ? 0 : choices.below(4);
  for (unsigned number = 1; number <= parts; ++number) {
    if (application == Application::kKeynote) {
      sink.slide(oddSlide(choices, number));
    } else {
      sink.sheet(oddSheet(choices));
    }
  }
  sink.end(oddSummary(choices));
}

}  // namespace dorvex::testing
