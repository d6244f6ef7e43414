// How characters are marked: bold, italic and the like, by formatting and by styles of
// characters.
#pragma once

#include <optional>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// What a style says; nothing of what it leaves to others.
struct CharacterMarks {
  std::optional<bool> bold, italic, underline, strike;
  std::optional<Baseline> baseline;

  // Takes from other what this leaves open.
  void fill(const CharacterMarks& other);

  bool operator==(const CharacterMarks&) const = default;
};

CharacterMarks marksOf(const Message<TSWP::CharacterStylePropertiesArchive>& properties);

// What the character style of that object says, or null says.
CharacterMarks readCharacterMarks(Reading& reading, const Object* characterStyle);

}  // namespace dorvex::content
