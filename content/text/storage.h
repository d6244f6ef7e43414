// Text storages: from a storage's text and its tables of runs to paragraphs, with what
// is drawn in line between them.
#pragma once

#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The blocks of a storage: its paragraphs, breaks and inline drawables, in order.
std::vector<Block> readStorage(Reading& reading, const Message<TSWP::StorageArchive>& storage);

}  // namespace dorvex::content
