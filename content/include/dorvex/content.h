// What a document says, in the order in which a person reads it.
//
//   class Titles : public dorvex::content::Sink {
//     void slide(const Slide& slide) override { std::cout << slide.title.value_or("") << '\n'; }
//   };
//   Titles titles;
//   dorvex::content::read(package, titles);
//
// A document comes to the Sink in parts, one slide, sheet or paragraph after the other;
// nothing holds all of it. All text is valid UTF-8, without control and attachment
// characters; U+000A is a line break inside a paragraph. Lengths are in points.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace dorvex::content {

// ---------------------------------------------------------------------------
// Text

struct Comment {
  std::string author;
  std::string date;  // YYYY-MM-DDTHH:MM:SSZ; empty when it is not known
  std::string text;  // paragraphs joined by U+000A
  std::vector<Comment> replies;
};

// Who inserted or deleted a text, and when.
struct Change {
  std::string author;
  std::string date;  // as that of a comment

  bool operator==(const Change&) const = default;
};

enum class Baseline { kNormal, kSuperscript, kSubscript };

// What a field that the application fills stands for.
enum class FieldKind { kNone, kPageNumber, kPageCount, kDate, kFileName, kMerge, kCitation };

// A stretch of a paragraph whose marks are the same.
struct Run {
  std::string text;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  Baseline baseline = Baseline::kNormal;
  std::string link;          // a URL; empty for none
  std::string footnote;      // the id of a footnote whose mark stands here; the text is empty then
  std::string footnoteMark;  // that mark, as it is shown
  std::string bookmark;      // a name; empty for none
  std::string ruby;          // the reading of the text; empty for none
  FieldKind field = FieldKind::kNone;
  std::vector<Comment> comments;
  std::optional<Change> inserted;
  std::optional<Change> deleted;  // the text is not part of Paragraph::text then
  bool endsParagraph = false;     // the text is the end of a paragraph, and is deleted
};

enum class Role {
  kTitle,
  kSubtitle,
  kHeading,
  kBody,
  kCaption,
  kLabel,
  kList,
  kHeader,
  kFooter,
  kFootnote,
  kToc,
  kOther,
};

enum class ListKind { kBullet, kNumber, kImage, kText };

// The mark before a paragraph of a list.
struct ListMark {
  unsigned level = 0;  // from 0
  ListKind kind = ListKind::kBullet;
  std::string label;  // as it is shown: "•", "3.", "(iv)"; empty for an image
};

struct Paragraph {
  Role role = Role::kOther;
  unsigned level = 0;  // of a heading, from 1
  std::string style;   // the name that the application shows; empty for none
  std::optional<ListMark> list;
  std::string text;  // what a person sees: without deleted text
  // Empty where nothing is marked. The texts joined give text and what was deleted.
  std::vector<Run> runs;
  // The paragraphs that it was before their ends were deleted, without their texts; the
  // runs with endsParagraph part these. Empty where it always was one.
  std::vector<Paragraph> original;
  bool endInserted = false;  // before that was inserted, it and the next one were one
};

// ---------------------------------------------------------------------------
// Tables

enum class CellType {
  kNone,  // no cell, or one that a merge covers
  kText,
  kRich,
  kNumber,
  kCurrency,
  kPercentage,
  kDate,
  kDuration,
  kBool,
  kError,
  kEmpty,  // without a value, but with a control, a comment or a merge
};

enum class Control { kNone, kCheckbox, kRating, kSlider, kStepper, kPopup };

struct Cell {
  CellType type = CellType::kNone;
  double number = 0;    // of a number, currency, percentage; of a duration, in seconds; of a bool
  std::string decimal;  // the number's exact text where a double does not hold it; else empty
  std::string value;    // of a text; of a date, YYYY-MM-DDTHH:MM:SS
  std::string text;     // what the application shows
  std::string formula;  // without the equals sign; empty for none
  std::string formulaProblem;  // why the formula cannot be told; empty for none
  std::string format;    // the kind of its format: "number", "currency", "custom"; empty for none
  std::string currency;  // a currency's code; empty for none
  std::vector<Paragraph> paragraphs;  // of rich text
  Control control = Control::kNone;
  std::vector<Comment> comments;
};

// What of a cell is wanted, since each part costs its time.
struct CellParts {
  bool text = true;  // what is shown
  bool formula = true;
  bool rich = true;  // paragraphs, and comments
};

// The cells of a table, a row at a time, read from the document as they are asked for.
class TableRows {
 public:
  virtual ~TableRows() = default;
  // Sets cells to one for each column of row index, counted from 0 in the order of
  // the table's model. An index out of range gives none.
  virtual void read(std::uint32_t index, const CellParts& parts, std::vector<Cell>& cells) = 0;
};

struct Merge {
  std::uint32_t row = 0, column = 0, rows = 1, columns = 1;

  bool operator==(const Merge&) const = default;
};

// A row or column in the order that is shown.
struct ShownLine {
  std::optional<std::uint32_t> model;  // its number in the model; nothing for those that follow
  std::string group;                   // the label of a group line
  unsigned level = 0;                  // of a group, from 1
  std::vector<std::string> summary;    // the texts of a summary line, one for each column
};

struct Table {
  std::string name;
  bool nameShown = false;
  std::string caption;  // empty when it is hidden
  std::uint32_t rows = 0, columns = 0;
  std::uint32_t headerRows = 0, headerColumns = 0, footerRows = 0;
  std::vector<std::uint32_t> hiddenRows, hiddenColumns;  // ascending, those of filters included
  std::vector<Merge> merges;                             // by row, then by column
  // Empty where what is shown is the model, in its order.
  std::vector<ShownLine> shownRows, shownColumns;
  std::shared_ptr<TableRows> cells;  // never null
};

// ---------------------------------------------------------------------------
// What stands among paragraphs

using ChartValue = std::variant<std::monostate, double, std::string>;  // a gap, a number, a date

struct ChartSeries {
  std::string name;
  std::vector<ChartValue> values;
};

struct Chart {
  std::string type;   // "column_2d", "pie_2d", ...
  std::string title;  // empty when it is not shown
  std::vector<std::string> categories;
  std::vector<ChartSeries> series;
  std::vector<std::string> axisTitles;  // those that are shown
};

// A media file of the package.
struct MediaFile {
  std::string name;    // as the person named it, in NFC
  std::string member;  // its name in the package, as it is stored there
  std::uint64_t bytes = 0;
};

enum class MediaKind { kImage, kMovie, kAudio };

struct Media {
  MediaKind kind = MediaKind::kImage;
  // Its number in Summary::media; nothing where the package holds no file.
  std::optional<std::size_t> index;
  std::shared_ptr<const MediaFile> file;  // null together with index
  std::string name;
};

struct GalleryImage {
  Media media;
  std::string alt;      // its description for those who do not see it
  std::string caption;  // empty when it is not shown
};

// Images of which one is seen at a time.
struct Gallery {
  std::vector<GalleryImage> images;
};

enum class Notation { kLatex, kMathml };

struct Equation {
  std::string source;
  Notation notation = Notation::kLatex;
};

enum class BoxKind { kTextBox, kShape, kGroup, kPlaceholder };
enum class PlaceholderKind { kTitle, kBody, kObject, kSlideNumber, kOther };

struct Block;

struct Box {
  BoxKind kind = BoxKind::kTextBox;
  PlaceholderKind placeholder = PlaceholderKind::kOther;  // of a placeholder
  std::vector<Block> blocks;
};

enum class Break { kPage, kSection, kColumn };

// One thing among others, in reading order. The fields beside what belong to a drawable.
struct Block {
  std::variant<Paragraph, Table, Chart, Media, Gallery, Equation, Box, Break> what;
  std::string alt;      // its description for those who do not see it
  std::string title;    // shown beside it; empty when it is hidden
  std::string caption;  // likewise
  std::string link;     // where a click on it leads
  std::vector<Comment> comments;
};

// ---------------------------------------------------------------------------
// Documents

enum class Application { kKeynote, kPages, kNumbers };

struct Metadata {
  std::string language;
  std::string locale;
  std::string templateName;
  std::string created;  // as the document stores it
  std::string documentId;
  std::vector<std::string> applicationBuilds;
  std::optional<std::pair<double, double>> pageSize;  // of a page or slide: width, height
  std::vector<std::string> authors;                   // of comments and changes
};

struct Slide {
  unsigned number = 0;  // from 1
  bool skipped = false;
  unsigned depth = 1;
  std::string layout;
  std::optional<std::string> title;
  std::vector<Block> blocks;  // title and body first, then as they are drawn
  std::vector<Block> notes;
  std::vector<Comment> comments;
};

struct Sheet {
  std::string name;
  bool hidden = false;
  std::vector<Block> blocks;
};

// A line of a header or footer; parts that are empty are not there.
struct HeaderText {
  std::string left, center, right;
  // These parts with the numbers of pages, which only the layout knows, named in their
  // place: "Page [page number]". Empty for a part without such a number, or with nothing else.
  std::array<std::string, 3> withPages{};

  bool operator==(const HeaderText&) const = default;
};

// The pages that a header or footer is for.
enum class PageClass { kFirst, kEven, kDefault };

struct Section {
  std::size_t from = 0;  // the number of its first block in the body
  std::map<PageClass, HeaderText> headers, footers;
  std::map<PageClass, std::vector<Block>> drawables;  // that each of those pages shows
};

struct FloatingPage {
  unsigned page = 1;  // from 1
  std::vector<Block> blocks;
};

struct Footnote {
  std::string id;
  std::string mark;  // as it is shown
  bool endnote = false;
  std::vector<Block> blocks;
};

// A member of the package that could not be read, or not whole.
struct DamagedMember {
  std::string name;
  std::string reason;  // a phrase for people: "is damaged"
};

// What the view does not show of what the document holds.
struct LeftOut {
  std::map<std::uint32_t, std::uint64_t> unknownTypes;  // type id, and how many objects met
  std::uint64_t dangling = 0;                           // references to nothing
  std::uint64_t hiddenTexts = 0;      // texts that are not shown: switched off, hidden
  std::uint64_t passedOver = 0;       // members that hold no objects, or not readable ones
  std::vector<std::string> problems;  // what could not be decoded, and where
  // Those of the problems that are damage to the package itself.
  std::vector<DamagedMember> damaged;
};

// What is known once all has been read.
struct Summary {
  std::vector<std::shared_ptr<const MediaFile>> media;  // in order of their first use
  LeftOut leftOut;
};

// Takes a document in parts. The calls come in this order: document; then slide for
// each slide, or sheet for each sheet, or for Pages body for each block of the body, with
// beginSection before the first one of a section; then section, floating and footnote for
// all of them; then end. A part is valid during its call, and what its tables read until
// end returns.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual void document(Application application, const Metadata& metadata) = 0;
  virtual void slide(const Slide&) {}
  virtual void sheet(const Sheet&) {}
  virtual void beginSection(const Section&) {}
  virtual void body(const Block&) {}
  virtual void section(const Section&) {}
  virtual void floating(const FloatingPage&) {}
  virtual void footnote(const Footnote&) {}
  virtual void end(const Summary& summary) = 0;
};

// ---------------------------------------------------------------------------
// Reading

// The files of a package. Names are paths within it, with forward slashes.
class Package {
 public:
  struct Member {
    std::string name;
    std::uint64_t bytes = 0;  // unpacked
  };

  virtual ~Package() = default;
  // All files, those of nested zips included, in the order in which they are stored.
  virtual const std::vector<Member>& members() const = 0;
  // The contents of the member of that number; nothing where it cannot be read.
  virtual std::optional<std::string> read(std::size_t member) = 0;
};

enum class Outcome {
  kRead,           // all parts went to the sink
  kNothingToRead,  // no document of the three applications; the sink was not called
};

// Reads a document. What is damaged costs the object, never the document: it is
// counted in Summary::leftOut. Throws what the sink and the package throw, and
// std::bad_alloc.
Outcome read(Package& package, Sink& sink);

}  // namespace dorvex::content
