#include "Tools/formats/vniwork13/member_kind.h"

#include <algorithm>

#include "Tools/vnstring/vnstring.h"

namespace vn::iwork13 {
namespace {

// Object streams that carry document content. The long forms stand in a zip
// that holds the Index folder, the short forms at the top level of a nested zip.
constexpr const char* kStreamPrefixes[] = {
    "Index/Document", "Document", "Index/CalculationEngine", "CalculationEngine",
    "Index/Slide",    "Slide",    "Index/Tables/",           "Tables/",
};

}  // namespace

MemberKind classifyMember(const char* name) {
  if (string::endsWith(name, "Index.zip")) return MemberKind::kNestedContainer;
  if (!string::endsWith(name, ".iwa")) return MemberKind::kIgnored;
  const bool selected = std::ranges::any_of(
      kStreamPrefixes, [name](const char* prefix) { return string::startsWith(name, prefix); });
  return selected ? MemberKind::kObjectStream : MemberKind::kIgnored;
}

}  // namespace vn::iwork13
