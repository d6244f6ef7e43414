// Tables: the same in all three applications, which differ in the way to them only.
#pragma once

#include "TSTArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The table of a table info, its cells still to be read. The reading must outlive them.
Table readTable(Reading& reading, const Message<TST::TableInfoArchive>& info);

}  // namespace dorvex::content
