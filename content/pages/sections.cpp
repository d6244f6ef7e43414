#include "pages/sections.h"

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "TSWPArchives.h"
#include "drawables/box_text.h"
#include "drawables/drawable.h"
#include "text/storage.h"

namespace dorvex::content {
namespace {

using SectionArchive = TP::SectionArchive;
using Master = TP::PageMasterArchive;
using Settings = TP::SettingsArchive;
using Texts = std::map<PageClass, HeaderText>;
using ReferenceList = Values<Message<TSP::Reference>, Encoding::kMessage>;

// What stands for a field that the layout fills; nothing for any other run.
std::string_view nameOfField(const Run& run) {
  if (!run.text.empty()) return {};
  if (run.field == FieldKind::kPageNumber) return "[page number]";
  return run.field == FieldKind::kPageCount ? "[page count]" : "";
}

// The text of some blocks with the numbers of pages named; empty where there are none, or
// where nothing but a number stands there, as on the pages of most documents.
std::string withPages(const std::vector<Block>& blocks) {
  bool named = false;
  bool words = false;
  std::string text;
  for (const Block& block : blocks) {
    const auto* paragraph = std::get_if<Paragraph>(&block.what);
    if (paragraph == nullptr) continue;
    if (!text.empty()) text += '\n';
    words = words || paragraph->text.find_first_not_of(" \t\n") != std::string::npos;
    if (paragraph->runs.empty()) text += paragraph->text;
    for (const Run& run : paragraph->runs) {
      if (run.deleted) continue;
      const std::string_view name = nameOfField(run);
      named = named || !name.empty();
      text.append(run.text).append(name);
    }
  }
  return named && words ? text : std::string();
}

// The texts of three storages: left, center, right. A line in one piece has one
// storage, for all of its width.
HeaderText readLine(Reading& reading, const ReferenceList& storages) {
  std::array<std::string, 3> texts;
  std::array<std::string, 3> shown;
  std::size_t count = 0;
  for (const auto& reference : storages) {
    if (count == texts.size()) break;
    const auto blocks = readStorage(reading, reading.get<TSWP::StorageArchive>(reference));
    texts[count] = textOf(blocks);
    shown[count++] = withPages(blocks);
  }
  if (count == 1) {
    std::swap(texts[0], texts[1]);
    std::swap(shown[0], shown[1]);
  }
  return {std::move(texts[0]), std::move(texts[1]), std::move(texts[2]), std::move(shown)};
}

void addLine(PageClass page, HeaderText&& line, Texts& texts) {
  if (line != HeaderText{}) texts[page] = std::move(line);
}

void addDrawables(Reading& reading, PageClass page, const ReferenceList& drawables,
                  Section& section) {
  std::vector<Block> blocks;
  for (const auto& reference : drawables) appendDrawable(reading, reference, blocks);
  if (!blocks.empty()) section.drawables[page] = std::move(blocks);
}

// What a section repeats need not be said again.
void dropRepeated(bool repeats, Texts& texts, Texts& before) {
  if (repeats && (texts.empty() || texts == before)) {
    texts.clear();
  } else {
    before = texts;
  }
}

}  // namespace

Sections::Sections(Reading& reading, const Message<Settings>& settings)
    : reading_(reading),
      headersShown_(settings.get(Settings::headers, true)),
      footersShown_(settings.get(Settings::footers, true)) {}

// The masters of all three classes of pages are there, whether the section uses them or
// not.
Section Sections::read(const Object& object, std::size_t from) {
  Section section;
  section.from = from;
  if (!Types<SectionArchive>::hold(object.type)) return section;
  const Message<SectionArchive> archive(object.payload);
  if (archive.get(SectionArchive::page_master_first_page_different))
    add(PageClass::kFirst, archive.get(SectionArchive::first_page_master),
        !archive.get(SectionArchive::page_master_first_page_hides_header_footer), section);
  if (archive.get(SectionArchive::page_master_even_odd_pages_different))
    add(PageClass::kEven, archive.get(SectionArchive::even_page_master), true, section);
  if (archive.has(SectionArchive::odd_page_master)) {
    add(PageClass::kDefault, archive.get(SectionArchive::odd_page_master), true, section);
  } else {
    addOlder(archive, section);
  }
  const bool repeats = archive.get(SectionArchive::inherit_previous_header_footer);
  dropRepeated(repeats, section.headers, headers_);
  dropRepeated(repeats, section.footers, footers_);
  return section;
}

// withLines: not only what is drawn, but the header and the footer too.
void Sections::add(PageClass page, const Message<TSP::Reference>& reference, bool withLines,
                   Section& section) {
  const auto master = reading_.get<Master>(reference);
  if (withLines && headersShown_)
    addLine(page, readLine(reading_, master.all(Master::headers)), section.headers);
  if (withLines && footersShown_)
    addLine(page, readLine(reading_, master.all(Master::footers)), section.footers);
  addDrawables(reading_, page, master.all(Master::master_drawables), section);
}

// Before there were masters, a section had its lines itself.
void Sections::addOlder(const Message<SectionArchive>& archive, Section& section) {
  if (headersShown_)
    addLine(PageClass::kDefault, readLine(reading_, archive.all(SectionArchive::OBSOLETE_headers)),
            section.headers);
  if (footersShown_)
    addLine(PageClass::kDefault, readLine(reading_, archive.all(SectionArchive::OBSOLETE_footers)),
            section.footers);
  addDrawables(reading_, PageClass::kDefault,
               archive.all(SectionArchive::OBSOLETE_master_drawables), section);
}

}  // namespace dorvex::content
