// Documents with values that no walk gives: a writer's output is valid whatever it gets.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::testing {

// Strings that are markup of some kind, no UTF-8, or not to be seen.
inline std::string oddString(std::mt19937& random) {
  static const std::vector<std::string> kPieces = {"a",
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
                                                   "\xF0\x9F\x98",
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
                                                   std::string(1, '\0'),
                                                   "javascript:alert(1)",
                                                   "http://a.b/?c=1&copy=2",
                                                   "]]>",
                                                   "%",
                                                   "@x"};
  std::string text;
  for (std::size_t count = random() % 6; count > 0; --count)
    text += kPieces[random() % kPieces.size()];
  return text;
}

inline content::Comment oddComment(std::mt19937& random) {
  content::Comment comment{oddString(random), oddString(random), oddString(random), {}};
  if (random() % 3 == 0) comment.replies.push_back({oddString(random), "", oddString(random), {}});
  return comment;
}

inline content::Paragraph oddParagraph(std::mt19937& random) {
  using namespace content;
  Paragraph paragraph;
  paragraph.role = static_cast<Role>(random() % 12);
  paragraph.level = static_cast<unsigned>(random() % 9);
  paragraph.style = oddString(random);
  if (random() % 3 == 0) {
    paragraph.list = ListMark{static_cast<unsigned>(random() % 20),
                              static_cast<ListKind>(random() % 4), oddString(random)};
    if (random() % 9 == 0) paragraph.list->level = std::numeric_limits<unsigned>::max();
  }
  for (std::size_t count = random() % 4; count > 0; --count) {
    Run run;
    run.text = oddString(random);
    run.bold = random() % 3 == 0;
    run.italic = random() % 3 == 0;
    run.underline = random() % 5 == 0;
    run.strike = random() % 5 == 0;
    run.baseline = static_cast<Baseline>(random() % 3);
    if (random() % 4 == 0) run.link = oddString(random);
    if (random() % 5 == 0) run.footnote = oddString(random);
    if (random() % 5 == 0) run.ruby = oddString(random);
    if (random() % 5 == 0) run.comments.push_back(oddComment(random));
    if (random() % 5 == 0) run.inserted = Change{oddString(random), oddString(random)};
    if (random() % 5 == 0) run.deleted = Change{oddString(random), ""};
    if (!run.deleted) paragraph.text += run.text;
    paragraph.runs.push_back(std::move(run));
  }
  if (paragraph.runs.empty()) paragraph.text = oddString(random);
  return paragraph;
}

class OddRows final : public content::TableRows {
 public:
  OddRows(std::uint32_t columns, std::uint32_t seed) : columns_(columns), seed_(seed) {}
  void read(std::uint32_t index, const content::CellParts&,
            std::vector<content::Cell>& cells) override {
    std::mt19937 random(seed_ + index);
    cells.assign(columns_, {});
    for (content::Cell& cell : cells) fill(cell, random);
  }

 private:
  static void fill(content::Cell& cell, std::mt19937& random) {
    static const double kNumbers[] = {0,
                                      -0.0,
                                      1.5,
                                      1e300,
                                      std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::quiet_NaN()};
    cell.type = static_cast<content::CellType>(random() % 11);
    cell.number = kNumbers[random() % 6];
    cell.value = oddString(random);
    cell.text = oddString(random);
    if (random() % 4 == 0) cell.formula = oddString(random);
    if (cell.type == content::CellType::kRich && random() % 2 == 0) {
      cell.paragraphs = {oddParagraph(random), oddParagraph(random)};
    }
    if (random() % 6 == 0) cell.comments.push_back(oddComment(random));
  }

  std::uint32_t columns_;
  std::uint32_t seed_;
};

inline content::Table oddTable(std::mt19937& random) {
  using namespace content;
  Table table;
  table.name = oddString(random);
  table.nameShown = random() % 2 == 0;
  table.caption = oddString(random);
  table.rows = static_cast<std::uint32_t>(random() % 6);
  table.columns = static_cast<std::uint32_t>(random() % 5);
  table.headerRows = static_cast<std::uint32_t>(random() % 4);
  table.headerColumns = static_cast<std::uint32_t>(random() % 3);
  table.footerRows = static_cast<std::uint32_t>(random() % 3);
  for (std::uint32_t row = 0; row < 6; ++row)
    if (random() % 5 == 0) table.hiddenRows.push_back(row);
  for (std::uint32_t column = 0; column < 5; ++column)
    if (random() % 6 == 0) table.hiddenColumns.push_back(column);
  for (std::uint32_t row = 0; row < 8; ++row) {
    if (random() % 4 != 0) continue;
    table.merges.push_back({row, static_cast<std::uint32_t>(random() % 7),
                            static_cast<std::uint32_t>(1 + random() % 4),
                            random() % 5 == 0 ? UINT32_MAX : 2});
  }
  if (random() % 4 == 0) {
    for (std::uint32_t row = 0; row < 7; ++row) {
      ShownLine line;
      if (random() % 3 != 0) {
        line.model = static_cast<std::uint32_t>(random() % 9);
      } else if (random() % 2 == 0) {
        line.summary = {oddString(random), oddString(random)};
      } else {
        line.group = oddString(random);
      }
      table.shownRows.push_back(line);
    }
  }
  table.cells = std::make_shared<OddRows>(table.columns, static_cast<std::uint32_t>(random()));
  return table;
}

inline content::Block oddBlock(std::mt19937& random, int depth = 0);

inline std::vector<content::Block> oddBlocks(std::mt19937& random, int depth) {
  std::vector<content::Block> blocks;
  for (std::size_t count = random() % 5; count > 0; --count)
    blocks.push_back(oddBlock(random, depth));
  return blocks;
}

inline content::Block oddBlock(std::mt19937& random, int depth) {
  using namespace content;
  Block block;
  if (random() % 5 == 0) block.alt = oddString(random);
  if (random() % 5 == 0) block.caption = oddString(random);
  if (random() % 5 == 0) block.title = oddString(random);
  if (random() % 5 == 0) block.comments.push_back(oddComment(random));
  switch (random() % 10) {
    case 0:
      block.what = oddTable(random);
      break;
    case 1:
      block.what = Chart{oddString(random),
                         oddString(random),
                         {oddString(random), oddString(random)},
                         {{oddString(random), {1.0, std::monostate{}, oddString(random)}}},
                         {oddString(random)}};
      break;
    case 2: {
      Media media;
      media.kind = static_cast<MediaKind>(random() % 3);
      media.name = oddString(random);
      if (random() % 2 == 0) {
        media.index = 0;
        media.file =
            std::make_shared<MediaFile>(MediaFile{oddString(random), oddString(random), 1});
      }
      block.what = media;
      break;
    }
    case 3:
      block.what = Equation{oddString(random), static_cast<Notation>(random() % 2)};
      break;
    case 4:
      block.what = static_cast<Break>(random() % 3);
      break;
    case 5:
      if (depth < 3) {
        block.what = Box{static_cast<BoxKind>(random() % 4),
                         static_cast<PlaceholderKind>(random() % 5), oddBlocks(random, depth + 1)};
        break;
      }
      [[fallthrough]];
    default:
      block.what = oddParagraph(random);
  }
  return block;
}

// A whole document into a sink.
inline void giveOddDocument(std::uint32_t seed, content::Sink& sink) {
  using namespace content;
  std::mt19937 random(seed);
  const auto application = static_cast<Application>(random() % 3);
  Metadata metadata;
  metadata.language = oddString(random);
  metadata.authors = {oddString(random)};
  sink.document(application, metadata);
  for (std::size_t part = random() % 3; part > 0; --part) {
    if (application == Application::kKeynote) {
      Slide slide;
      slide.number = static_cast<unsigned>(part);
      slide.skipped = random() % 2 == 0;
      if (random() % 2 == 0) slide.title = oddString(random);
      slide.blocks = oddBlocks(random, 0);
      slide.notes = oddBlocks(random, 0);
      sink.slide(slide);
    } else if (application == Application::kNumbers) {
      Sheet sheet;
      sheet.name = oddString(random);
      sheet.blocks = oddBlocks(random, 0);
      sink.sheet(sheet);
    } else {
      for (const Block& block : oddBlocks(random, 0)) sink.body(block);
    }
  }
  if (application == Application::kPages) {
    Section section;
    section.headers[PageClass::kEven].left = oddString(random);
    sink.section(section);
    FloatingPage page;
    page.blocks = oddBlocks(random, 0);
    sink.floating(page);
    Footnote footnote;
    footnote.id = oddString(random);
    footnote.mark = oddString(random);
    footnote.blocks = oddBlocks(random, 0);
    sink.footnote(footnote);
  }
  Summary summary;
  summary.leftOut.problems = {oddString(random)};
  sink.end(summary);
}

}  // namespace dorvex::testing
