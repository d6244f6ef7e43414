// Whatever can be drawn on a slide, sheet or page, as a block.
#pragma once

#include <optional>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The block of a drawable; nothing for what shows nothing of its own (a line, an empty
// shape) or is of an unknown type, which is counted.
std::optional<Block> readDrawable(Reading& reading, const Object& drawable);

}  // namespace dorvex::content
