// The text that stands in a box: a shape, a text box, a placeholder, a caption.
#pragma once

#include <string>
#include <vector>

#include "TSWPArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The blocks of a box's text; none where all of it is empty. Text that flows through
// several linked boxes stands in the first one that is read.
std::vector<Block> readBoxText(Reading& reading, const Message<TSWP::ShapeInfoArchive>& box);

// The blocks of a storage by a reference to it, in the same way.
std::vector<Block> readText(Reading& reading, const Message<TSP::Reference>& storage);

// Whether there is nothing for a person to see in some blocks.
bool showNothing(const std::vector<Block>& blocks);

// The paragraphs of some blocks, and of the boxes among them, joined by U+000A.
std::string textOf(const std::vector<Block>& blocks);

}  // namespace dorvex::content
