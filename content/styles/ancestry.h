// Styles and what they are derived from. A style says only what it changes; the rest
// its parent says, or the parent's parent.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "TSPMessages.h"
#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

// The message of a style's object, one without fields where it is none of that kind.
template <typename S>
Message<S> styleOf(const Object& object) {
  return Types<S>::hold(object.type) ? Message<S>(object.payload) : Message<S>();
}

// The style of an entry in a table of contents is a paragraph style with an addition.
template <>
inline Message<TSWP::ParagraphStyleArchive> styleOf(const Object& object) {
  using Entry = TSWP::TOCEntryStyleArchive;
  if (Types<Entry>::hold(object.type)) return Message<Entry>(object.payload).get(Entry::super);
  using Style = TSWP::ParagraphStyleArchive;
  return Types<Style>::hold(object.type) ? Message<Style>(object.payload) : Message<Style>();
}

// A style, its parent, and so on. Styles that derive from each other end somewhere.
template <typename S>
std::vector<Message<S>> ancestry(Reading& reading, const Object* style) {
  constexpr std::size_t kDeepest = 32;
  std::vector<Message<S>> styles;
  while (style != nullptr && styles.size() < kDeepest) {
    styles.push_back(styleOf<S>(*style));
    style = reading.follow(styles.back().get(S::super).get(TSS::StyleArchive::parent));
  }
  return styles;
}

// Whether a style is one that the application lists, not one made by formatting.
inline bool isNamed(const Message<TSS::StyleArchive>& style) {
  return !style.get(TSS::StyleArchive::name).empty() ||
         !style.get(TSS::StyleArchive::style_identifier).empty();
}

}  // namespace dorvex::content
