#include "json_strings.h"

#include <algorithm>
#include <string>
#include <utility>

#include "utf8.h"

namespace dorvex::cli {
namespace {

using Form = FirstCharacter::Form;

// Stands in a JSON string as it is.
bool isPlainInJson(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x20 && value < 0x80 && byte != '"' && byte != '\\';
}

struct JsonEscape {
  char byte;
  std::string_view text;
};

constexpr std::array<JsonEscape, 7> kJsonEscapes = {{{'"', "\\\""},
                                                     {'\\', "\\\\"},
                                                     {'\n', "\\n"},
                                                     {'\r', "\\r"},
                                                     {'\t', "\\t"},
                                                     {'\b', "\\b"},
                                                     {'\f', "\\f"}}};

std::string byNumber(char control) {
  constexpr std::string_view digits = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(control);
  return {'\\', 'u', '0', '0', digits[value >> 4], digits[value & 0xF]};
}

std::string jsonEscaped(char byte) {
  for (const JsonEscape& row : kJsonEscapes) {
    if (row.byte == byte) return std::string(row.text);
  }
  return byNumber(byte);
}

}  // namespace

void JsonStrings::begin() {
  if (std::exchange(begun_, true)) return;
  written_.append(number_ == 0 ? "\"" : ",\"");
}

void JsonStrings::replace() {
  written_.append(kReplacement);
  if (replaced_.empty() || replaced_.back() != number_) replaced_.push_back(number_);
}

void JsonStrings::add(std::string_view piece) {
  begin();
  bytesIn_ += piece.size();
  piece = addHeld(piece);
  while (!piece.empty()) {
    const auto* const special = std::find_if_not(piece.begin(), piece.end(), isPlainInJson);
    const auto plain = static_cast<std::size_t>(special - piece.begin());
    written_.append(piece.substr(0, plain));
    piece.remove_prefix(plain);
    if (!piece.empty()) piece.remove_prefix(addFirst(piece));
  }
}

// Goes on with a character that the piece before cut. Gives what is left of this one.
std::string_view JsonStrings::addHeld(std::string_view piece) {
  while (heldCount_ > 0 && !piece.empty()) {
    held_.at(heldCount_++) = piece.front();
    const std::string_view held(held_.data(), heldCount_);
    const FirstCharacter first = firstCharacterOf(held);
    // A byte that does not belong to it may begin another one.
    if (first.form != Form::kInvalid) piece.remove_prefix(1);
    if (first.form == Form::kCut) continue;
    heldCount_ = 0;
    if (first.form == Form::kWhole) addFirst(held);
    if (first.form == Form::kInvalid) replace();
  }
  return piece;
}

// Writes what a text begins with and gives its length, or holds it back.
std::size_t JsonStrings::addFirst(std::string_view text) {
  const FirstCharacter first = firstCharacterOf(text);
  const std::string_view character = text.substr(0, first.length);
  if (first.form == Form::kCut) {
    std::copy(character.begin(), character.end(), held_.begin());
    heldCount_ = first.length;
  } else if (first.form == Form::kInvalid) {
    replace();
  } else if (first.length == 1) {
    written_.append(jsonEscaped(character.front()));
  } else if (isC1Control(character)) {
    written_.append(byNumber(character.back()));
  } else {
    written_.append(character);
  }
  return first.length;
}

void JsonStrings::end() {
  begin();
  if (std::exchange(heldCount_, 0) > 0) replace();
  written_.append("\"");
  begun_ = false;
  ++number_;
}

}  // namespace dorvex::cli
