#include "writers/display_width.h"

#include <unicode/uchar.h>

#include "graph/utf8.h"

namespace dorvex::content {
namespace {

std::size_t widthOf(char32_t code) {
  const auto character = static_cast<UChar32>(code);
  const int category = u_charType(character);
  if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR)
    return 0;
  const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE ? 2 : 1;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    width += character.code < 0x80 ? 1 : widthOf(character.code);
    text.remove_prefix(character.length);
  }
  return width;
}

std::string padded(std::string_view text, std::size_t width, bool right) {
  const std::size_t own = displayWidth(text);
  const std::string spaces(own < width ? width - own : 0, ' ');
  return right ? spaces + std::string(text) : std::string(text) + spaces;
}

}  // namespace dorvex::content
