#include "module/watch.h"

#include <algorithm>
#include <string_view>
#include <variant>

namespace dorvex::content {
namespace {

bool shows(const Block& block);

bool anyShows(const std::vector<Block>& blocks) { return std::ranges::any_of(blocks, shows); }

bool shows(const Paragraph& paragraph) {
  return paragraph.text.find_first_not_of(" \n\t") != std::string::npos;
}
bool shows(const Chart&) { return true; }
bool shows(const Media&) { return true; }
bool shows(const Gallery&) { return true; }
bool shows(const Equation& equation) { return !equation.source.empty(); }
bool shows(const Break&) { return false; }
bool shows(const Box& box) { return anyShows(box.blocks); }

bool shows(const Table& table) {
  if (table.nameShown && !table.name.empty()) return true;
  std::vector<Cell> row;
  const CellParts parts{.text = true, .formula = false, .rich = true};
  for (std::uint32_t index = 0; index < table.rows; ++index) {
    table.cells->read(index, parts, row);
    if (std::ranges::any_of(row, [](const Cell& cell) {
          return cell.type != CellType::kNone && cell.type != CellType::kEmpty;
        }))
      return true;
  }
  return false;
}

bool shows(const Block& block) {
  return std::visit([](const auto& what) { return shows(what); }, block.what);
}

}  // namespace

void Watch::document(Application application, const Metadata& metadata) {
  application_ = application;
  writer_.document(application, metadata);
}

// Only as far as the first thing that shows.
void Watch::look(const std::vector<Block>& blocks) {
  showsAnything_ = showsAnything_ || anyShows(blocks);
}

void Watch::slide(const Slide& slide) {
  look(slide.blocks);
  look(slide.notes);
  writer_.slide(slide);
}

// The name of a sheet stands on its tab.
void Watch::sheet(const Sheet& sheet) {
  showsAnything_ = showsAnything_ || !sheet.name.empty();
  look(sheet.blocks);
  writer_.sheet(sheet);
}

void Watch::beginSection(const Section& section) {
  showsAnything_ = showsAnything_ || !section.headers.empty() || !section.footers.empty();
  for (const auto& [pages, blocks] : section.drawables) look(blocks);
  writer_.beginSection(section);
}

void Watch::body(const Block& block) {
  showsAnything_ = showsAnything_ || shows(block);
  writer_.body(block);
}

void Watch::floating(const FloatingPage& page) {
  look(page.blocks);
  writer_.floating(page);
}

void Watch::end(const Summary& summary) {
  Summary whole = summary;
  for (const DamagedMember& member : damaged_)
    whole.leftOut.problems.push_back(member.name + " " + member.reason);
  const auto& damaged = summary.leftOut.damaged;
  damaged_.insert(damaged_.end(), damaged.begin(), damaged.end());
  media_ = summary.media;
  writer_.end(whole);
}

}  // namespace dorvex::content
