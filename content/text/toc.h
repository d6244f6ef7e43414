// Tables of contents.
#pragma once

#include <optional>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The box of a table of contents, a drawable of that kind; nothing for one that is empty
// or that a walk has shown already.
std::optional<Block> readTableOfContents(Reading& reading, const Object& info);

}  // namespace dorvex::content
