// Tables of contents.
#pragma once

#include <vector>

#include "TSWPArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The lines of a table of contents, as the application laid them out last; where it has
// not, the headings that they are made of.
std::vector<Block> readTableOfContents(Reading& reading,
                                       const Message<TSWP::TOCInfoArchive>& contents);

}  // namespace dorvex::content
