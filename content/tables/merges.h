// Merged cells, from what each generation of documents stores them in.
#pragma once

#include <cstdint>
#include <vector>

#include "TSTArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The merges that lie in a table of that size, by row and column.
std::vector<Merge> readMerges(Reading& reading, const Message<TST::TableModelArchive>& model,
                              std::uint32_t rows, std::uint32_t columns);

}  // namespace dorvex::content
