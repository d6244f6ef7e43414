#include "pages/floating.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <unordered_map>
#include <vector>

#include "drawables/drawable.h"

namespace dorvex::content {
namespace {

using FloatingArchive = TP::FloatingDrawablesArchive;
using PageGroup = TP::FloatingDrawablesArchive_PageGroup;
using DrawableEntry = TP::FloatingDrawablesArchive_DrawableEntry;
using ZOrder = TP::DrawablesZOrderArchive;

// Places in the order of drawing. The pages list their drawables in any order.
class Layers {
 public:
  explicit Layers(const Message<ZOrder>& order) {
    for (const auto& reference : order.all(ZOrder::drawables))
      places_.emplace(reference.get(TSP::Reference::identifier), places_.size());
  }

  // What has no place stands in front.
  std::size_t operator()(const Message<TSP::Reference>& drawable) const {
    const auto place = places_.find(drawable.get(TSP::Reference::identifier));
    return place == places_.end() ? places_.size() : place->second;
  }

 private:
  std::unordered_map<std::uint64_t, std::size_t> places_;
};

std::vector<Block> readGroup(Reading& reading, const Message<PageGroup>& group,
                             const Layers& layers) {
  std::vector<Message<TSP::Reference>> drawables;
  for (const auto layer :
       {PageGroup::background_drawables, PageGroup::drawables, PageGroup::foreground_drawables}) {
    for (const auto& entry : group.all(layer))
      drawables.push_back(entry.get(DrawableEntry::drawable));
  }
  std::ranges::stable_sort(drawables, {}, std::cref(layers));
  std::vector<Block> blocks;
  for (const auto& drawable : drawables) appendDrawable(reading, drawable, blocks);
  return blocks;
}

}  // namespace

void readFloating(Reading& reading, const Message<FloatingArchive>& floating,
                  const Message<ZOrder>& order, Sink& sink) {
  constexpr std::uint32_t kLastPage = std::numeric_limits<std::uint32_t>::max() - 1;
  const Layers layers(order);
  std::multimap<std::uint32_t, Message<PageGroup>> groups;
  for (const auto& group : floating.all(FloatingArchive::page_groups))
    groups.emplace(std::min(group.get(PageGroup::page_index), kLastPage), group);
  for (const auto& [index, group] : groups) {
    FloatingPage page;
    page.page = index + 1;
    page.blocks = readGroup(reading, group, layers);
    if (!page.blocks.empty()) sink.floating(page);
  }
}

}  // namespace dorvex::content
