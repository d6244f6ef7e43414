#include "tables/table.h"

namespace dorvex::content {

Table readTable(Reading&, const Message<TST::TableInfoArchive>&) { return {}; }

}  // namespace dorvex::content
