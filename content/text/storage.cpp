#include "text/storage.h"

namespace dorvex::content {

std::vector<Block> readStorage(Reading&, const Message<TSWP::StorageArchive>&) { return {}; }

}  // namespace dorvex::content
