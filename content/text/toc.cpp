#include "text/toc.h"

#include <utility>
#include <vector>

#include "drawables/box_text.h"
#include "graph/plain_text.h"

namespace dorvex::content {
namespace {

using Info = TSWP::TOCInfoArchive;

std::vector<Block> headings(Reading& reading, const Message<Info>& info) {
  using Entry = TSWP::TOCEntryInstanceArchive;
  std::vector<Block> blocks;
  for (const auto& reference : info.all(Info::toc_entry_data)) {
    Paragraph paragraph;
    paragraph.role = Role::kToc;
    paragraph.text = plainText(reading.get<Entry>(reference).get(Entry::heading));
    if (!paragraph.text.empty()) blocks.emplace_back().what = std::move(paragraph);
  }
  return blocks;
}

}  // namespace

std::vector<Block> readTableOfContents(Reading& reading, const Message<Info>& contents) {
  auto blocks = readBoxText(reading, contents.get(Info::super));
  return blocks.empty() ? headings(reading, contents) : blocks;
}

}  // namespace dorvex::content
