#include "text/toc.h"

#include <utility>
#include <vector>

#include "drawables/box_text.h"
#include "graph/plain_text.h"

namespace dorvex::content {
namespace {

using ContentsInfo = TSWP::TOCInfoArchive;

std::vector<Block> headings(Reading& reading, const Message<ContentsInfo>& info) {
  using Entry = TSWP::TOCEntryInstanceArchive;
  std::vector<Block> blocks;
  for (const auto& reference : info.all(ContentsInfo::toc_entry_data)) {
    Paragraph paragraph;
    paragraph.role = Role::kToc;
    paragraph.text = plainText(reading.get<Entry>(reference).get(Entry::heading));
    if (!paragraph.text.empty()) blocks.emplace_back().what = std::move(paragraph);
  }
  return blocks;
}

}  // namespace

std::vector<Block> readTableOfContents(Reading& reading, const Message<ContentsInfo>& contents) {
  auto blocks = readBoxText(reading, contents.get(ContentsInfo::super));
  return blocks.empty() ? headings(reading, contents) : blocks;
}

}  // namespace dorvex::content
