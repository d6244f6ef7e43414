#include "drawables/nesting.h"

#include "TSDArchives.h"
#include "TSPMessages.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::content {
namespace {

constexpr unsigned kDeepestDrawable = 4;

bool isDrawable(const Message<TSD::DrawableArchive>& message) {
  using Geometry = TSD::GeometryArchive;
  const auto geometry = message.get(TSD::DrawableArchive::geometry);
  const auto position = geometry.get(Geometry::position);
  const auto size = geometry.get(Geometry::size);
  return position.has(TSP::Point::x) && position.has(TSP::Point::y) && size.has(TSP::Size::width) &&
         size.has(TSP::Size::height);
}

}  // namespace

std::string_view nested(std::string_view payload, unsigned depth) {
  using Nesting = TSD::GroupArchive;  // any message whose field 1 is the one that it extends
  for (; depth > 0; --depth) payload = Message<Nesting>(payload).get(Nesting::super).bytes();
  return payload;
}

std::optional<unsigned> depthOfDrawable(std::string_view payload) {
  for (unsigned depth = 0; depth <= kDeepestDrawable; ++depth) {
    if (isDrawable(Message<TSD::DrawableArchive>(nested(payload, depth)))) return depth;
  }
  return std::nullopt;
}

}  // namespace dorvex::content
