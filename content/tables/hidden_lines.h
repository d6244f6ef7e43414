// Rows and columns that are not shown: hidden by a person, or by a filter.
#pragma once

#include <cstdint>
#include <vector>

#include "TSTArchives.h"
#include "graph/reading.h"
#include "tables/uid_map.h"

namespace dorvex::content {

struct HiddenLines {
  std::vector<std::uint32_t> rows, columns;  // ascending
};

HiddenLines readHiddenLines(Reading& reading, const Message<TST::TableInfoArchive>& info,
                            const Message<TST::TableModelArchive>& model, const UidMap& uids);

}  // namespace dorvex::content
