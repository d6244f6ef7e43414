// What a document says, rendered: as JSON, Markdown, HTML, text or CSV. docs/convert.md
// shows each.
//
//   dorvex::Host host({.module = "/usr/lib/dorvex/dorvexsr.so",
//                      .rendering = dorvex::Rendering{.format = dorvex::RenderFormat::kHtml}});
//   dorvex::Document document = host.open(dorvex::Input::path("Letter.pages"));
//   while (const auto piece = document.nextPiece())
//     if (piece->type == dorvex::PieceType::kOutput) std::cout << piece->bytes;
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dorvex {

enum class RenderFormat { kJson, kMarkdown, kHtml, kText, kCsv };

// Where comments go.
enum class RenderComments { kNone, kEnd, kInline };

// Which text of tracked changes is given.
enum class RenderChanges { kFinal, kOriginal, kAll };

// What CSV gives of a cell: what is shown, its value, or its formula where it has one.
enum class RenderValues { kShown, kRaw, kFormula };

struct Rendering {
  RenderFormat format = RenderFormat::kMarkdown;
  RenderComments comments = RenderComments::kNone;
  RenderChanges changes = RenderChanges::kFinal;
  bool dropSkipped = false;  // leave skipped slides out
  bool htmlTables = false;   // tables of Markdown as HTML
  bool frontMatter = false;  // Markdown begins with metadata
  bool pandoc = false;       // pandoc's Markdown, not GitHub's
  bool oneLine = false;      // JSON without line feeds, but for the one at its end
  // The media that the document uses come as files beside the rendering, and links to
  // them begin with mediaFolder.
  bool media = false;
  std::string mediaFolder{};

  // CSV. A sheet is its name or its number, from 1, and so is a table in it; empty for
  // any. A document of several tables needs a choice, or gives each as a file.
  std::string sheet{};
  std::string table{};
  RenderValues values = RenderValues::kShown;
  char delimiter = ',';
  bool header = true;       // with the header rows
  bool fillMerged = false;  // a merged value in each of its cells
  bool guard = false;       // no value that a spreadsheet takes for a formula
  bool eachTable = false;
  bool listTables = false;  // names and sizes of the tables instead
};

enum class PieceType : std::uint8_t {
  kOutput,     // the next bytes of the rendering
  kFileName,   // a file beside it begins: a name, which may be anything a document makes of it
  kFileBytes,  // the next bytes of that file
};

struct Piece {
  PieceType type = PieceType::kOutput;
  std::string_view bytes;  // valid until the next piece
};

}  // namespace dorvex
