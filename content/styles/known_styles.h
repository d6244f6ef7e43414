// The styles of a document, each read once: a table has the same few for all its cells.
#pragma once

#include <unordered_map>

#include "graph/reading.h"
#include "styles/character_marks.h"
#include "styles/list_style.h"
#include "styles/paragraph_style.h"

namespace dorvex::content {

// Kept by the reading. Null stands for no style; what is given lives as long as this.
class KnownStyles {
 public:
  explicit KnownStyles(Reading& reading) : reading_(reading) {}

  const ParagraphStyle& paragraphStyle(const Object* style) {
    return find(paragraphStyles_, readParagraphStyle, style);
  }
  const ListStyle& listStyle(const Object* style) {
    return find(listStyles_, readListStyle, style);
  }
  const CharacterMarks& characterMarks(const Object* style) {
    return find(characterMarks_, readCharacterMarks, style);
  }

 private:
  template <typename Style>
  using Known = std::unordered_map<const Object*, Style>;

  template <typename Style>
  const Style& find(Known<Style>& known, Style (*read)(Reading&, const Object*),
                    const Object* style) {
    const auto [found, isNew] = known.try_emplace(style);
    if (isNew) found->second = read(reading_, style);
    return found->second;
  }

  Reading& reading_;
  Known<ParagraphStyle> paragraphStyles_;
  Known<ListStyle> listStyles_;
  Known<CharacterMarks> characterMarks_;
};

}  // namespace dorvex::content
