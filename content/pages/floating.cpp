#include "pages/floating.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "drawables/drawable.h"

namespace dorvex::content {
namespace {

using Archive = TP::FloatingDrawablesArchive;
using Group = TP::FloatingDrawablesArchive_PageGroup;
using Entry = TP::FloatingDrawablesArchive_DrawableEntry;

std::vector<Block> readGroup(Reading& reading, const Message<Group>& group) {
  std::vector<Block> blocks;
  for (const auto layer :
       {Group::background_drawables, Group::drawables, Group::foreground_drawables}) {
    for (const auto& entry : group.all(layer))
      appendDrawable(reading, entry.get(Entry::drawable), blocks);
  }
  return blocks;
}

}  // namespace

void readFloating(Reading& reading, const Message<Archive>& floating, Sink& sink) {
  constexpr std::uint32_t kLastPage = std::numeric_limits<std::uint32_t>::max() - 1;
  std::multimap<std::uint32_t, Message<Group>> groups;
  for (const auto& group : floating.all(Archive::page_groups))
    groups.emplace(std::min(group.get(Group::page_index), kLastPage), group);
  for (const auto& [index, group] : groups) {
    FloatingPage page;
    page.page = index + 1;
    page.blocks = readGroup(reading, group);
    if (!page.blocks.empty()) sink.floating(page);
  }
}

}  // namespace dorvex::content
