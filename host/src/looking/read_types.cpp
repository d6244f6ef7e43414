#include "looking/read_types.h"

namespace dorvex {

// The reader's own rows: what it builds for Pages, and what all applications share.
bool isReadType(std::uint64_t type) {
  switch (static_cast<int>(static_cast<std::uint32_t>(type))) {
#define REGISTRY_ROW(type, messageClass) case type:
#include "Tools/formats/vniwork13/registry_rows/common.inc"
#include "Tools/formats/vniwork13/registry_rows/pages.inc"
#undef REGISTRY_ROW
    return true;
    default:
      return false;
  }
}

}  // namespace dorvex
