#include "styles/paragraph_style.h"

#include <cstdint>
#include <optional>

#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "graph/plain_text.h"
#include "styles/ancestry.h"

namespace dorvex::content {
namespace {

using ParagraphStyleArchive = TSWP::ParagraphStyleArchive;

// Older documents say in their styles at which level of an outline a heading stands.
// In newer ones, whose identifiers state the role, it says nothing: captions have one.
std::optional<ParagraphRole> roleOfOutline(const Message<ParagraphStyleArchive>& style) {
  using Properties = TSWP::ParagraphStylePropertiesArchive;
  constexpr std::uint32_t kDeepest = 8;
  const auto level =
      style.get(ParagraphStyleArchive::para_properties).find(Properties::outline_level);
  if (!level || *level > kDeepest) return std::nullopt;
  return ParagraphRole{Role::kHeading, *level + 1};
}

std::optional<ParagraphRole> roleOf(const Message<ParagraphStyleArchive>& style,
                                    const Message<TSS::StyleArchive>& identity) {
  constexpr std::string_view kOlder = "paragraph-style-";
  const auto identifier = identity.get(TSS::StyleArchive::style_identifier);
  if (auto role = roleOfIdentifier(identifier)) return role;
  if (auto role = roleOfName(plainText(identity.get(TSS::StyleArchive::name)))) return role;
  return identifier.starts_with(kOlder) ? roleOfOutline(style) : std::nullopt;
}

}  // namespace

ParagraphStyle readParagraphStyle(Reading& reading, const Object* object) {
  ParagraphStyle result;
  bool formatting = true;
  for (const auto& style : ancestry<ParagraphStyleArchive>(reading, object)) {
    const auto identity = style.get(ParagraphStyleArchive::super);
    formatting = formatting && !isNamed(identity);
    if (formatting) {
      result.marks.fill(marksOf(style.get(ParagraphStyleArchive::char_properties)));
      continue;
    }
    if (result.name.empty()) result.name = plainText(identity.get(TSS::StyleArchive::name));
    if (const auto role = roleOf(style, identity)) {
      result.role = *role;
      if (!result.name.empty()) break;
    }
  }
  return result;
}

}  // namespace dorvex::content
