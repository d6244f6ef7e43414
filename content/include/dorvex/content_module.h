/// @file
/// The contract between a host and dorvexcontent.so, which renders what a document
/// says: as JSON, Markdown, HTML, text or CSV.
///
/// The module exports one function, dorvexRenderContent. It opens the document through
/// the services that a reader gets (Readers/hostapi/host_records.h): LoadDll,
/// GetDllSymbol and FreeDll for the container module unzip.so, OpenFile for scratch
/// streams and the files of a package directory.
///
/// Rules of the boundary:
///
///  1. All records are the host's and are only read. They, and what they point at, stay
///     valid during the call.
///  2. Output comes as it is made, in pieces, through the host's Take. Nothing is held
///     until the end.
///  3. No exception of the module's own leaves it, and none of the host's: one that a
///     slot or Take throws ends the rendering (DORVEX_CONTENT_STOPPED), and what it said
///     is the host's to remember.
///  4. The module keeps nothing from one call to the next, and several threads may call
///     at once with records of their own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Readers/hostapi/host_records.h"

extern "C" {

enum DorvexContentFormat : std::int32_t {
  DORVEX_CONTENT_JSON = 0,
  DORVEX_CONTENT_MARKDOWN = 1,
  DORVEX_CONTENT_HTML = 2,
  DORVEX_CONTENT_TEXT = 3,
  DORVEX_CONTENT_CSV = 4,
};

/// Flags of DorvexContentOptions.
enum DorvexContentFlags : std::uint32_t {
  DORVEX_CONTENT_DROP_SKIPPED = 1U << 0,  ///< leave skipped slides and hidden sheets out
  DORVEX_CONTENT_HTML_TABLES = 1U << 1,   ///< tables of Markdown as HTML
  DORVEX_CONTENT_FRONT_MATTER = 1U << 2,  ///< Markdown begins with metadata
  DORVEX_CONTENT_PANDOC = 1U << 3,        ///< pandoc's Markdown, not GitHub's
  DORVEX_CONTENT_ONE_LINE = 1U << 4,      ///< JSON without line feeds
  DORVEX_CONTENT_MEDIA = 1U << 5,         ///< give the media files that blocks use
  DORVEX_CONTENT_EACH_TABLE = 1U << 6,    ///< CSV: each table as a file
  DORVEX_CONTENT_LIST_TABLES = 1U << 7,   ///< CSV: the names of the tables instead
  DORVEX_CONTENT_NO_HEADER = 1U << 8,     ///< CSV: without the header rows
  DORVEX_CONTENT_FILL_MERGED = 1U << 9,   ///< CSV: a merged value in each of its cells
  DORVEX_CONTENT_GUARD = 1U << 10,        ///< CSV: no value that looks like a formula
};

/// Where comments go.
enum DorvexContentComments : std::int32_t {
  DORVEX_CONTENT_COMMENTS_NONE = 0,
  DORVEX_CONTENT_COMMENTS_END = 1,
  DORVEX_CONTENT_COMMENTS_INLINE = 2,
};

/// Which text of tracked changes is given.
enum DorvexContentChanges : std::int32_t {
  DORVEX_CONTENT_CHANGES_FINAL = 0,
  DORVEX_CONTENT_CHANGES_ORIGINAL = 1,
  DORVEX_CONTENT_CHANGES_ALL = 2,
};

/// What CSV gives of a cell.
enum DorvexContentValues : std::int32_t {
  DORVEX_CONTENT_VALUES_SHOWN = 0,
  DORVEX_CONTENT_VALUES_RAW = 1,
  DORVEX_CONTENT_VALUES_FORMULA = 2,
};

struct DorvexContentOptions {
  std::uint32_t size;  ///< of this record, in bytes; another size is refused
  DorvexContentFormat format;
  std::uint32_t flags;  ///< DorvexContentFlags
  DorvexContentComments comments;
  DorvexContentChanges changes;
  DorvexContentValues values;
  std::int32_t delimiter;  ///< CSV: an ASCII character
  std::int32_t reserved;   ///< 0
  /// CSV: the name or the number, from 1, of a sheet, and of a table in it; null for any.
  const char* sheet;
  const char* table;
  /// What links to media begin with; null for none. UTF-8, as it is to be written.
  const char* mediaFolder;
};
static_assert(offsetof(DorvexContentOptions, format) == 4);
static_assert(offsetof(DorvexContentOptions, delimiter) == 24);
static_assert(offsetof(DorvexContentOptions, sheet) == 32);
static_assert(sizeof(DorvexContentOptions) == 56);

/// What a piece is.
enum DorvexContentPiece : std::int32_t {
  DORVEX_CONTENT_OUTPUT = 0,      ///< the next bytes of the rendering
  DORVEX_CONTENT_FILE_NAME = 1,   ///< a file beside it begins: its name, without a folder
  DORVEX_CONTENT_FILE_BYTES = 2,  ///< the next bytes of that file
  DORVEX_CONTENT_DAMAGED = 3,     ///< a member not read whole: name, a NUL, a phrase why
  DORVEX_CONTENT_MESSAGE = 4,     ///< why nothing was rendered: a sentence
};

/// Takes a piece of at most DORVEX_CONTENT_LARGEST_PIECE bytes, not NUL-terminated.
/// Non-zero to go on.
using DorvexContentTake = int (*)(void* receiver, DorvexContentPiece piece, const char* bytes,
                                  std::size_t count);

enum : std::size_t { DORVEX_CONTENT_LARGEST_PIECE = 65536 };

enum DorvexContentOutcome : std::int32_t {
  DORVEX_CONTENT_RENDERED = 0,       ///< whole, but for what DAMAGED pieces told
  DORVEX_CONTENT_NO_PACKAGE = 1,     ///< neither a container nor a package directory
  DORVEX_CONTENT_NO_DOCUMENT = 2,    ///< a package, but without a document of the three kinds
  DORVEX_CONTENT_NO_TABLE = 3,       ///< CSV: the tables do not suit the options; MESSAGE tells
  DORVEX_CONTENT_STOPPED = 4,        ///< Take asked for it, or a slot or Take threw
  DORVEX_CONTENT_OUT_OF_MEMORY = 5,  ///< no memory
  DORVEX_CONTENT_BAD_OPTIONS = 6,    ///< a record or a value that the module does not know
};

/// The applications; the same numbers as in the answer's record.
enum DorvexContentApplication : std::int32_t {
  DORVEX_CONTENT_UNKNOWN = 0,
  DORVEX_CONTENT_KEYNOTE = 1,
  DORVEX_CONTENT_PAGES = 2,
  DORVEX_CONTENT_NUMBERS = 3,
};

struct DorvexContentRequest {
  const DorvexContentOptions* options;
  tag_TPVAPIServices* services;
  _VPTPIOobj* document;  ///< the file; not looked at where root is given
  const char* root;      ///< the path of a package directory, or null
  DorvexContentTake take;
  void* receiver;  ///< what take gets
};
static_assert(sizeof(DorvexContentRequest) == 6 * sizeof(void*));

/// Written by the module.
struct DorvexContentAnswer {
  DorvexContentApplication application;
  /// 1 when a text, a number or a picture went to the rendering; 0 when all of it is
  /// empty.
  std::int32_t showsAnything;
};
static_assert(sizeof(DorvexContentAnswer) == 8);

/// Renders a document. The answer is written whatever the outcome.
using DorvexRenderContentFunction = DorvexContentOutcome (*)(const DorvexContentRequest* request,
                                                             DorvexContentAnswer* answer);

}  // extern "C"

/// The name under which the module exports it.
inline constexpr char kDorvexRenderContent[] = "dorvexRenderContent";
