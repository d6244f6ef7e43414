#include "looking/read_types.h"

#include <algorithm>
#include <iterator>

namespace dorvex {
namespace {

// The reader's own rows, in ascending order of the type.
#define REGISTRY_ROW(type, messageClass) type,
// Arrays whose length is counted by a template go beyond what clang nests.
constexpr int kPagesTypes[] = {
#include "Tools/formats/vniwork13/registry_rows/pages.inc"
};
constexpr int kCommonTypes[] = {
#include "Tools/formats/vniwork13/registry_rows/common.inc"
};
#undef REGISTRY_ROW

}  // namespace

bool isReadType(std::uint64_t type) {
  const auto id = static_cast<int>(static_cast<std::uint32_t>(type));
  return std::binary_search(std::begin(kPagesTypes), std::end(kPagesTypes), id) ||
         std::binary_search(std::begin(kCommonTypes), std::end(kCommonTypes), id);
}

}  // namespace dorvex
