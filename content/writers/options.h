// What a person may choose of a rendering.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "dorvex/content.h"
#include "writers/output.h"

namespace dorvex::content {

enum class Format { kJson, kMarkdown, kHtml, kText, kCsv };

// Where comments go.
enum class CommentPlace { kNone, kEnd, kInline };

// Which text of tracked changes is given.
enum class ShownChanges { kFinal, kOriginal, kAll };

// What CSV gives of a cell.
enum class CellValues { kShown, kRaw, kFormula };

struct CsvOptions {
  CellValues values = CellValues::kShown;
  char delimiter = ',';
  bool header = true;       // with the header rows
  bool fillMerged = false;  // a merged value in each of its cells
  bool guard = false;       // no value that a spreadsheet takes for a formula
  // The name or the number, from 1, of a sheet, and of a table in it; empty for any.
  std::string sheet{};
  std::string table{};
  bool eachTable = false;   // every table as a file
  bool listTables = false;  // their names instead
};

struct WriterOptions {
  Format format = Format::kMarkdown;
  CommentPlace comments = CommentPlace::kNone;
  ShownChanges changes = ShownChanges::kFinal;
  bool dropSkipped = false;   // leave skipped slides and hidden sheets out
  bool htmlTables = false;    // tables of Markdown as HTML
  bool frontMatter = false;   // Markdown begins with metadata
  bool pandoc = false;        // pandoc's Markdown, not GitHub's
  bool oneLine = false;       // JSON without line feeds
  std::string mediaFolder{};  // what links to media begin with
  CsvOptions csv;
};

// What a document has does not suit the options; what() is for people.
struct NoSuchTable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Takes the rendering, and the files beside it.
struct Receiver {
  Output::Take output;
  std::function<void(std::string_view name)> beginFile;  // by its name, without a folder
  Output::Take fileBytes;
};

std::unique_ptr<Sink> makeWriter(const WriterOptions& options, const Receiver& receiver);

}  // namespace dorvex::content
