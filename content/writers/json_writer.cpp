#include "writers/json_writer.h"

#include <array>
#include <cmath>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "writers/json_blocks.h"

namespace dorvex::content {
namespace {

constexpr int kContractVersion = 1;

constexpr std::array<std::string_view, 1> kKeynoteLists = {"slides"};
constexpr std::array<std::string_view, 4> kPagesLists = {"body", "sections", "floating",
                                                         "footnotes"};
constexpr std::array<std::string_view, 1> kNumbersLists = {"sheets"};
enum PagesList : std::size_t { kBody, kSections, kFloating, kFootnotes };

std::string_view nameOf(Application application) {
  switch (application) {
    case Application::kKeynote:
      return "keynote";
    case Application::kPages:
      return "pages";
    case Application::kNumbers:
      return "numbers";
  }
  return {};
}

std::span<const std::string_view> listsOf(Application application) {
  switch (application) {
    case Application::kKeynote:
      return kKeynoteLists;
    case Application::kPages:
      return kPagesLists;
    case Application::kNumbers:
      return kNumbersLists;
  }
  return {};
}

void putMetadata(JsonFields& fields, Application application, const Metadata& metadata) {
  JsonEmitter& json = fields.json();
  json.key("metadata");
  json.beginObject();
  fields.text("language", metadata.language);
  fields.text("locale", metadata.locale);
  fields.text("template", metadata.templateName);
  fields.text("created", metadata.created);
  fields.text("document_id", metadata.documentId);
  fields.texts("application_builds", metadata.applicationBuilds);
  if (metadata.pageSize && std::isfinite(metadata.pageSize->first) &&
      std::isfinite(metadata.pageSize->second)) {
    json.key(application == Application::kKeynote ? "slide_size" : "page_size");
    json.beginArray();
    json.number(metadata.pageSize->first);
    json.number(metadata.pageSize->second);
    json.endArray();
  }
  fields.texts("authors", metadata.authors);
  json.endObject();
}

std::string_view nameOf(PageClass pages) {
  switch (pages) {
    case PageClass::kFirst:
      return "first";
    case PageClass::kEven:
      return "even";
    case PageClass::kDefault:
      return "default";
  }
  return {};
}

void putHeaders(JsonFields& fields, std::string_view key,
                const std::map<PageClass, HeaderText>& headers) {
  if (headers.empty()) return;
  JsonEmitter& json = fields.json();
  json.key(key);
  json.beginObject();
  for (const auto& [pages, header] : headers) {
    json.key(nameOf(pages));
    json.beginObject();
    fields.text("left", header.left);
    fields.text("center", header.center);
    fields.text("right", header.right);
    json.endObject();
  }
  json.endObject();
}

void putDrawables(JsonEmitter& json, const std::map<PageClass, std::vector<Block>>& drawables) {
  if (drawables.empty()) return;
  json.key("drawables");
  json.beginObject();
  for (const auto& [pages, blocks] : drawables) JsonBlocks(json).list(nameOf(pages), blocks);
  json.endObject();
}

void putMedia(JsonFields& fields, const std::vector<std::shared_ptr<const MediaFile>>& media) {
  JsonEmitter& json = fields.json();
  json.key("media");
  json.beginArray();
  for (const auto& file : media) {
    json.breakLine();
    json.beginObject();
    fields.alwaysText("name", file->name);
    fields.alwaysText("member", file->member);
    fields.count("bytes", file->bytes);
    json.endObject();
  }
  json.endArray();
}

void putLeftOut(JsonFields& fields, const LeftOut& leftOut) {
  JsonEmitter& json = fields.json();
  json.key("left_out");
  json.beginObject();
  json.key("unknown_types");
  json.beginObject();
  for (const auto& [type, count] : leftOut.unknownTypes) fields.count(std::to_string(type), count);
  json.endObject();
  fields.count("dangling", leftOut.dangling);
  fields.count("hidden_texts", leftOut.hiddenTexts);
  json.key("problems");
  json.beginArray();
  for (const std::string& problem : leftOut.problems) json.string(problem);
  json.endArray();
  fields.count("passed_over", leftOut.passedOver);
  json.endObject();
}

}  // namespace

void JsonWriter::document(Application application, const Metadata& metadata) {
  application_ = application;
  JsonFields fields(json_);
  json_.beginObject();
  fields.count("version", kContractVersion);
  fields.alwaysText("kind", nameOf(application));
  putMetadata(fields, application, metadata);
  json_.breakLine();
  json_.key(listsOf(application_).front());
  json_.beginArray();
}

void JsonWriter::enterList(std::size_t list) {
  while (list_ < list) {
    json_.endArray();
    json_.breakLine();
    json_.key(listsOf(application_)[++list_]);
    json_.beginArray();
  }
  json_.breakLine();
}

void JsonWriter::slide(const Slide& slide) {
  JsonFields fields(json_);
  JsonBlocks blocks(json_);
  json_.breakLine();
  json_.beginObject();
  fields.count("number", slide.number);
  fields.flag("skipped", slide.skipped);
  fields.count("depth", slide.depth);
  fields.text("layout", slide.layout);
  if (slide.title) {
    fields.alwaysText("title", *slide.title);
  } else {
    json_.key("title");
    json_.null();
  }
  blocks.list("blocks", slide.blocks);
  if (!slide.notes.empty()) blocks.list("notes", slide.notes);
  blocks.comments("comments", slide.comments);
  json_.endObject();
}

void JsonWriter::sheet(const Sheet& sheet) {
  json_.breakLine();
  json_.beginObject();
  JsonFields fields(json_);
  fields.alwaysText("name", sheet.name);
  fields.mark("hidden", sheet.hidden);
  JsonBlocks(json_).list("blocks", sheet.blocks);
  json_.endObject();
}

void JsonWriter::body(const Block& block) {
  enterList(kBody);
  JsonBlocks(json_).block(block);
}

void JsonWriter::section(const Section& section) {
  enterList(kSections);
  JsonFields fields(json_);
  json_.beginObject();
  fields.count("from", section.from);
  putHeaders(fields, "headers", section.headers);
  putHeaders(fields, "footers", section.footers);
  putDrawables(json_, section.drawables);
  json_.endObject();
}

void JsonWriter::floating(const FloatingPage& page) {
  enterList(kFloating);
  json_.beginObject();
  JsonFields(json_).count("page", page.page);
  JsonBlocks(json_).list("blocks", page.blocks);
  json_.endObject();
}

void JsonWriter::footnote(const Footnote& footnote) {
  enterList(kFootnotes);
  JsonFields fields(json_);
  json_.beginObject();
  fields.alwaysText("id", footnote.id);
  fields.alwaysText("mark", footnote.mark);
  fields.alwaysText("kind", footnote.endnote ? "endnote" : "footnote");
  JsonBlocks(json_).list("blocks", footnote.blocks);
  json_.endObject();
}

void JsonWriter::end(const Summary& summary) {
  enterList(listsOf(application_).size() - 1);
  JsonFields fields(json_);
  json_.endArray();
  json_.breakLine();
  putMedia(fields, summary.media);
  json_.breakLine();
  putLeftOut(fields, summary.leftOut);
  json_.endObject();
  output_.put('\n');
  output_.flush();
}

}  // namespace dorvex::content
