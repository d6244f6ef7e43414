#include "styles/character_marks.h"

#include "TSWPArchives.h"
#include "styles/ancestry.h"

namespace dorvex::content {
namespace {

using Properties = TSWP::CharacterStylePropertiesArchive;
using Script = TSWP::CharacterStylePropertiesArchive_SuperscriptType;

template <typename T>
void fillOne(std::optional<T>& mine, const std::optional<T>& other) {
  if (!mine) mine = other;
}

// Single, double or wavy lines are all lines.
template <typename Line>
std::optional<bool> isDrawn(const std::optional<Line>& line) {
  if (!line) return std::nullopt;
  return *line != Line{};
}

std::optional<Baseline> baselineOf(const std::optional<Script>& script) {
  if (!script) return std::nullopt;
  switch (*script) {
    case Script::kSuperscript:
      return Baseline::kSuperscript;
    case Script::kSubscript:
      return Baseline::kSubscript;
    default:
      return Baseline::kNormal;
  }
}

}  // namespace

void CharacterMarks::fill(const CharacterMarks& other) {
  fillOne(bold, other.bold);
  fillOne(italic, other.italic);
  fillOne(underline, other.underline);
  fillOne(strike, other.strike);
  fillOne(baseline, other.baseline);
}

CharacterMarks marksOf(const Message<Properties>& properties) {
  return {
      properties.find(Properties::bold),
      properties.find(Properties::italic),
      isDrawn(properties.find(Properties::underline)),
      isDrawn(properties.find(Properties::strikethru)),
      baselineOf(properties.find(Properties::superscript)),
  };
}

CharacterMarks readCharacterMarks(Reading& reading, const Object* characterStyle) {
  using Style = TSWP::CharacterStyleArchive;
  CharacterMarks marks;
  for (const auto& style : ancestry<Style>(reading, characterStyle))
    marks.fill(marksOf(style.get(Style::char_properties)));
  return marks;
}

}  // namespace dorvex::content
