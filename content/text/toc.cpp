#include "text/toc.h"

#include <string>
#include <utility>
#include <vector>

#include "TSWPArchives.h"
#include "text/characters.h"
#include "text/storage.h"

namespace dorvex::content {
namespace {

using Info = TSWP::TOCInfoArchive;

// What the application laid out last, with the numbers of the pages.
std::vector<Block> laidOut(Reading& reading, const Message<Info>& info) {
  using Shape = TSWP::ShapeInfoArchive;
  const auto shape = info.get(Info::super);
  for (const auto field : {Shape::owned_storage, Shape::deprecated_storage}) {
    auto blocks = readStorage(reading, reading.get<TSWP::StorageArchive>(shape.get(field)));
    if (!blocks.empty()) return blocks;
  }
  return {};
}

// The headings that it is made of, where it has not been laid out.
std::vector<Block> headings(Reading& reading, const Message<Info>& info) {
  using Entry = TSWP::TOCEntryInstanceArchive;
  std::vector<Block> blocks;
  for (const auto& reference : info.all(Info::toc_entry_data)) {
    Paragraph paragraph;
    paragraph.role = Role::kToc;
    paragraph.text = shownText(reading.get<Entry>(reference).get(Entry::heading));
    if (!paragraph.text.empty()) blocks.emplace_back().what = std::move(paragraph);
  }
  return blocks;
}

}  // namespace

std::optional<Block> readTableOfContents(Reading& reading, const Object& object) {
  const Descent descent(reading);
  if (descent.tooDeep() || !reading.claim(object)) return std::nullopt;
  const Message<Info> info(object.payload);
  Box box;
  box.blocks = laidOut(reading, info);
  if (box.blocks.empty()) box.blocks = headings(reading, info);
  if (box.blocks.empty()) return std::nullopt;
  Block block;
  block.what = std::move(box);
  return block;
}

}  // namespace dorvex::content
