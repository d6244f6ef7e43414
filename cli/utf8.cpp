#include "utf8.h"

#include <algorithm>
#include <array>

namespace dorvex::cli {
namespace {

// The characters of more than one byte: by their first byte, how long they are and
// what their second byte may be. Any further byte is a continuation.
struct Lead {
  unsigned char first;
  unsigned char last;
  std::size_t length;
  unsigned char leastSecond;
  unsigned char mostSecond;
};

constexpr std::array<Lead, 8> kLeads = {{
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},  // no surrogates
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
}};

bool isWithin(char byte, unsigned char least, unsigned char most) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= least && value <= most;
}

}  // namespace

FirstCharacter firstCharacterOf(std::string_view text) {
  using Form = FirstCharacter::Form;
  if (isWithin(text.front(), 0, 0x7F)) return {Form::kWhole, 1};
  const auto* const lead = std::find_if(kLeads.begin(), kLeads.end(), [&](const Lead& row) {
    return isWithin(text.front(), row.first, row.last);
  });
  if (lead == kLeads.end()) return {Form::kInvalid, 1};
  for (std::size_t i = 1; i < lead->length; ++i) {
    if (i == text.size()) return {Form::kCut, i};
    const bool follows = i == 1 ? isWithin(text[1], lead->leastSecond, lead->mostSecond)
                                : isWithin(text[i], 0x80, 0xBF);
    if (!follows) return {Form::kInvalid, i};
  }
  return {Form::kWhole, lead->length};
}

bool isC1Control(std::string_view character) {
  return character.size() == 2 && character[0] == '\xC2' && isWithin(character[1], 0x80, 0x9F);
}

}  // namespace dorvex::cli
