#include "writers/json_blocks.h"

#include <variant>

#include "writers/cell_text.h"

namespace dorvex::content {
namespace {

std::string_view nameOf(Role role) {
  switch (role) {
    case Role::kTitle:
      return "title";
    case Role::kSubtitle:
      return "subtitle";
    case Role::kHeading:
      return "heading";
    case Role::kBody:
      return "body";
    case Role::kCaption:
      return "caption";
    case Role::kLabel:
      return "label";
    case Role::kList:
      return "list";
    case Role::kHeader:
      return "header";
    case Role::kFooter:
      return "footer";
    case Role::kFootnote:
      return "footnote";
    case Role::kToc:
      return "toc";
    case Role::kOther:
      break;
  }
  return "other";
}

std::string_view nameOf(ListKind kind) {
  switch (kind) {
    case ListKind::kBullet:
      return "bullet";
    case ListKind::kNumber:
      return "number";
    case ListKind::kImage:
      return "image";
    case ListKind::kText:
      break;
  }
  return "text";
}

std::string_view nameOf(FieldKind kind) {
  switch (kind) {
    case FieldKind::kNone:
      break;
    case FieldKind::kPageNumber:
      return "page_number";
    case FieldKind::kPageCount:
      return "page_count";
    case FieldKind::kDate:
      return "date";
    case FieldKind::kFileName:
      return "file_name";
    case FieldKind::kMerge:
      return "merge";
    case FieldKind::kCitation:
      return "citation";
  }
  return {};
}

std::string_view nameOf(CellType type) {
  switch (type) {
    case CellType::kText:
      return "text";
    case CellType::kRich:
      return "rich";
    case CellType::kNumber:
      return "number";
    case CellType::kCurrency:
      return "currency";
    case CellType::kPercentage:
      return "percentage";
    case CellType::kDate:
      return "date";
    case CellType::kDuration:
      return "duration";
    case CellType::kBool:
      return "bool";
    case CellType::kError:
      return "error";
    case CellType::kNone:
    case CellType::kEmpty:
      break;
  }
  return "empty";
}

std::string_view nameOf(Control control) {
  switch (control) {
    case Control::kNone:
      break;
    case Control::kCheckbox:
      return "checkbox";
    case Control::kRating:
      return "rating";
    case Control::kSlider:
      return "slider";
    case Control::kStepper:
      return "stepper";
    case Control::kPopup:
      return "popup";
  }
  return {};
}

std::string_view nameOf(MediaKind kind) {
  switch (kind) {
    case MediaKind::kImage:
      return "image";
    case MediaKind::kMovie:
      return "movie";
    case MediaKind::kAudio:
      break;
  }
  return "audio";
}

std::string_view nameOf(BoxKind kind) {
  switch (kind) {
    case BoxKind::kTextBox:
      return "text_box";
    case BoxKind::kShape:
      return "shape";
    case BoxKind::kGroup:
      return "group";
    case BoxKind::kPlaceholder:
      break;
  }
  return "placeholder";
}

std::string_view nameOf(PlaceholderKind kind) {
  switch (kind) {
    case PlaceholderKind::kTitle:
      return "title";
    case PlaceholderKind::kBody:
      return "body";
    case PlaceholderKind::kObject:
      return "object";
    case PlaceholderKind::kSlideNumber:
      return "slide_number";
    case PlaceholderKind::kOther:
      break;
  }
  return "other";
}

std::string_view nameOf(Break kind) {
  switch (kind) {
    case Break::kPage:
      return "page_break";
    case Break::kSection:
      return "section_break";
    case Break::kColumn:
      break;
  }
  return "column_break";
}

}  // namespace

void JsonBlocks::list(std::string_view key, const std::vector<Block>& blocks) {
  json_.key(key);
  json_.beginArray();
  for (const Block& block : blocks) this->block(block);
  json_.endArray();
}

void JsonBlocks::block(const Block& block) {
  json_.beginObject();
  if (const auto* table = std::get_if<Table>(&block.what)) {
    put(*table, block);
  } else if (const auto* paragraph = std::get_if<Paragraph>(&block.what)) {
    put(*paragraph);
  } else if (const auto* chart = std::get_if<Chart>(&block.what)) {
    put(*chart);
  } else if (const auto* media = std::get_if<Media>(&block.what)) {
    put(*media);
  } else if (const auto* gallery = std::get_if<Gallery>(&block.what)) {
    put(*gallery);
  } else if (const auto* equation = std::get_if<Equation>(&block.what)) {
    put(*equation);
  } else if (const auto* box = std::get_if<Box>(&block.what)) {
    put(*box);
  } else if (const auto* kind = std::get_if<Break>(&block.what)) {
    fields_.alwaysText("type", nameOf(*kind));
  }
  drawableFields(block);
  json_.endObject();
}

// A table and a chart have titles of their own, which stand where theirs belong.
void JsonBlocks::drawableFields(const Block& block) {
  const bool isTable = std::holds_alternative<Table>(block.what);
  const bool isChart = std::holds_alternative<Chart>(block.what);
  fields_.text("alt", block.alt);
  if (!isTable) fields_.text("caption", block.caption);
  if (!isTable && !isChart) fields_.text("title", block.title);
  fields_.text("link", block.link);
  comments("comments", block.comments);
}

// --- Text ---

void JsonBlocks::put(const Paragraph& paragraph) {
  fields_.alwaysText("type", "paragraph");
  paragraphFields(paragraph);
}

void JsonBlocks::paragraphFields(const Paragraph& paragraph) {
  formFields(paragraph);
  fields_.alwaysText("text", paragraph.text);
  runs(paragraph.runs);
  if (!paragraph.original.empty()) {
    json_.key("original");
    json_.beginArray();
    for (const Paragraph& each : paragraph.original) {
      json_.beginObject();
      formFields(each);
      json_.endObject();
    }
    json_.endArray();
  }
  fields_.mark("end_inserted", paragraph.endInserted);
}

// All but the text.
void JsonBlocks::formFields(const Paragraph& paragraph) {
  fields_.alwaysText("role", nameOf(paragraph.role));
  if (paragraph.level > 0) fields_.count("level", paragraph.level);
  fields_.text("style", paragraph.style);
  if (paragraph.list) {
    json_.key("list");
    json_.beginObject();
    fields_.count("level", paragraph.list->level);
    fields_.alwaysText("kind", nameOf(paragraph.list->kind));
    fields_.text("label", paragraph.list->label);
    json_.endObject();
  }
}

void JsonBlocks::runs(const std::vector<Run>& runs) {
  if (runs.empty()) return;
  json_.key("runs");
  json_.beginArray();
  for (const Run& run : runs) {
    json_.beginObject();
    fields_.alwaysText("text", run.text);
    fields_.mark("bold", run.bold);
    fields_.mark("italic", run.italic);
    fields_.mark("underline", run.underline);
    fields_.mark("strike", run.strike);
    fields_.mark("superscript", run.baseline == Baseline::kSuperscript);
    fields_.mark("subscript", run.baseline == Baseline::kSubscript);
    fields_.text("link", run.link);
    fields_.text("footnote", run.footnote);
    comments("comment", run.comments);
    change("inserted", run.inserted);
    change("deleted", run.deleted);
    fields_.text("bookmark", run.bookmark);
    fields_.text("field", nameOf(run.field));
    fields_.text("ruby", run.ruby);
    fields_.mark("ends_paragraph", run.endsParagraph);
    json_.endObject();
  }
  json_.endArray();
}

void JsonBlocks::change(std::string_view key, const std::optional<Change>& change) {
  if (!change) return;
  json_.key(key);
  json_.beginObject();
  fields_.alwaysText("author", change->author);
  fields_.text("date", change->date);
  json_.endObject();
}

void JsonBlocks::comments(std::string_view key, const std::vector<Comment>& comments) {
  if (comments.empty()) return;
  json_.key(key);
  json_.beginArray();
  for (const Comment& each : comments) comment(each);
  json_.endArray();
}

void JsonBlocks::comment(const Comment& comment) {
  json_.beginObject();
  fields_.alwaysText("author", comment.author);
  fields_.text("date", comment.date);
  fields_.alwaysText("text", comment.text);
  comments("replies", comment.replies);
  json_.endObject();
}

// --- Tables ---

void JsonBlocks::put(const Table& table, const Block& block) {
  fields_.alwaysText("type", "table");
  fields_.alwaysText("name", table.name);
  fields_.flag("name_shown", table.nameShown);
  fields_.text("caption", table.caption.empty() ? block.caption : table.caption);
  fields_.count("rows", table.rows);
  fields_.count("columns", table.columns);
  fields_.count("header_rows", table.headerRows);
  fields_.count("header_columns", table.headerColumns);
  fields_.count("footer_rows", table.footerRows);
  fields_.counts("hidden_rows", table.hiddenRows);
  fields_.counts("hidden_columns", table.hiddenColumns);
  if (!table.merges.empty()) {
    json_.key("merges");
    json_.beginArray();
    for (const Merge& merge : table.merges) {
      json_.beginArray();
      for (const std::uint32_t number : {merge.row, merge.column, merge.rows, merge.columns})
        json_.count(number);
      json_.endArray();
    }
    json_.endArray();
  }
  cells(table);
  shownLines("shown_rows", table.shownRows);
  shownLines("shown_columns", table.shownColumns);
}

void JsonBlocks::cells(const Table& table) {
  json_.key("cells");
  json_.beginArray();
  std::vector<Cell> row;
  for (std::uint32_t index = 0; index < table.rows; ++index) {
    table.cells->read(index, {}, row);
    json_.breakLine();
    json_.beginArray();
    for (const Cell& each : row) {
      if (each.type == CellType::kNone) {
        json_.null();
      } else {
        cell(each);
      }
    }
    json_.endArray();
  }
  json_.endArray();
}

void JsonBlocks::cell(const Cell& cell) {
  json_.beginObject();
  fields_.alwaysText("type", nameOf(cell.type));
  json_.key("value");
  cellValue(cell);
  fields_.text("decimal", cell.decimal);
  fields_.alwaysText("text", cell.text);
  fields_.text("formula", cell.formula);
  fields_.text("formula_problem", cell.formulaProblem);
  cellParagraphs(cell);
  cellFormat(cell);
  fields_.text("control", nameOf(cell.control));
  comments("comment", cell.comments);
  json_.endObject();
}

void JsonBlocks::cellValue(const Cell& cell) {
  switch (cell.type) {
    case CellType::kText:
    case CellType::kDate:
      return json_.string(cell.value);
    case CellType::kRich:
      return json_.string(richValue(cell));
    case CellType::kNumber:
    case CellType::kCurrency:
    case CellType::kPercentage:
    case CellType::kDuration:
      return json_.number(cell.number);
    case CellType::kBool:
      return json_.boolean(cell.number != 0);
    case CellType::kError:
    case CellType::kEmpty:
    case CellType::kNone:
      return json_.null();
  }
}

void JsonBlocks::cellParagraphs(const Cell& cell) {
  if (cell.paragraphs.empty()) return;
  json_.key("paragraphs");
  json_.beginArray();
  for (const Paragraph& paragraph : cell.paragraphs) {
    json_.beginObject();
    put(paragraph);
    json_.endObject();
  }
  json_.endArray();
}

void JsonBlocks::cellFormat(const Cell& cell) {
  if (cell.format.empty() && cell.currency.empty()) return;
  json_.key("format");
  json_.beginObject();
  fields_.alwaysText("kind", cell.format.empty() ? "currency" : std::string_view(cell.format));
  fields_.text("currency", cell.currency);
  json_.endObject();
}

void JsonBlocks::shownLines(std::string_view key, const std::vector<ShownLine>& lines) {
  if (lines.empty()) return;
  json_.key(key);
  json_.beginArray();
  for (const ShownLine& line : lines) {
    if (line.model) {
      json_.count(*line.model);
      continue;
    }
    json_.beginObject();
    // The line of a group may have sums as well.
    if (line.summary.empty() || line.level > 0) {
      fields_.alwaysText("group", line.group);
      fields_.count("level", line.level);
    }
    if (!line.summary.empty()) fields_.alwaysTexts("summary", line.summary);
    json_.endObject();
  }
  json_.endArray();
}

// --- Other drawables ---

void JsonBlocks::put(const Chart& chart) {
  fields_.alwaysText("type", "chart");
  fields_.alwaysText("chart_type", chart.type);
  fields_.text("title", chart.title);
  fields_.alwaysTexts("categories", chart.categories);
  json_.key("series");
  json_.beginArray();
  for (const ChartSeries& series : chart.series) {
    json_.beginObject();
    fields_.alwaysText("name", series.name);
    json_.key("values");
    json_.beginArray();
    for (const ChartValue& value : series.values) {
      if (const auto* number = std::get_if<double>(&value)) {
        json_.number(*number);
      } else if (const auto* date = std::get_if<std::string>(&value)) {
        json_.string(*date);
      } else {
        json_.null();
      }
    }
    json_.endArray();
    json_.endObject();
  }
  json_.endArray();
  fields_.texts("axis_titles", chart.axisTitles);
}

void JsonBlocks::put(const Media& media) {
  fields_.alwaysText("type", nameOf(media.kind));
  mediaFields(media);
}

void JsonBlocks::mediaFields(const Media& media) {
  json_.key("media");
  if (media.index) {
    json_.count(*media.index);
  } else {
    json_.null();
  }
  fields_.text("name", media.name);
}

void JsonBlocks::put(const Gallery& gallery) {
  fields_.alwaysText("type", "gallery");
  json_.key("items");
  json_.beginArray();
  for (const GalleryImage& image : gallery.images) {
    json_.beginObject();
    mediaFields(image.media);
    fields_.text("alt", image.alt);
    fields_.text("caption", image.caption);
    json_.endObject();
  }
  json_.endArray();
}

void JsonBlocks::put(const Equation& equation) {
  fields_.alwaysText("type", "equation");
  fields_.alwaysText("source", equation.source);
  fields_.alwaysText("notation", equation.notation == Notation::kLatex ? "latex" : "mathml");
}

void JsonBlocks::put(const Box& box) {
  fields_.alwaysText("type", nameOf(box.kind));
  if (box.kind == BoxKind::kPlaceholder) fields_.alwaysText("kind", nameOf(box.placeholder));
  list("blocks", box.blocks);
}

}  // namespace dorvex::content
