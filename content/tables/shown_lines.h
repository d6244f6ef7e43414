// The order in which a table with categories, or a pivot table, shows its rows and
// columns, with the lines of groups and sums among them.
#pragma once

#include <vector>

#include "TSTArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"
#include "tables/uid_map.h"

namespace dorvex::content {

// Sets shownRows and shownColumns of a table that shows other lines than its model has.
void readShownLines(Reading& reading, const Message<TST::TableInfoArchive>& info,
                    const Message<TST::TableModelArchive>& model, const UidMap& base, Table& table);

}  // namespace dorvex::content
