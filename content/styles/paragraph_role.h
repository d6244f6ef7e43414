// What a paragraph is, by the identity of its style.
#pragma once

#include <optional>
#include <string_view>

#include "dorvex/content.h"

namespace dorvex::content {

struct ParagraphRole {
  Role role = Role::kOther;
  unsigned level = 0;  // of a heading, from 1

  bool operator==(const ParagraphRole&) const = default;
};

// The role that an identifier states, which is the same in each language; nothing where
// it states none: "text-11-paragraphstyle-Heading 1" states one, "paragraph-style-33",
// which older documents have, does not.
std::optional<ParagraphRole> roleOfIdentifier(std::string_view identifier);

// The role that a style's name states, in the language of its document: "Heading 2".
std::optional<ParagraphRole> roleOfName(std::string_view name);

}  // namespace dorvex::content
