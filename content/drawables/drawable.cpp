#include "drawables/drawable.h"

namespace dorvex::content {

std::optional<Block> readDrawable(Reading&, const Object&) { return std::nullopt; }

}  // namespace dorvex::content
