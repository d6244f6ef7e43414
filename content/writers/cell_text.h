// What writers ask of cells.
#pragma once

#include <string>

#include "dorvex/content.h"

namespace dorvex::content {

// The value of a cell of rich text: its paragraphs joined by U+000A.
std::string richValue(const Cell& cell);

}  // namespace dorvex::content
