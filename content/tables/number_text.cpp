#include "tables/number_text.h"

#include <algorithm>
#include <cstdlib>

namespace dorvex::content {
namespace {

// Numbers with more zeros than these are shown with an exponent: no text grows longer.
constexpr int kMostZeros = 400;

void appendZeros(int count, std::string& out) {
  if (count > 0) out.append(static_cast<std::size_t>(count), '0');
}

// Whether a separator stands before the last count digits.
bool endsGroup(int count, const Symbols& symbols) {
  if (count < symbols.lastGroup) return false;
  return (count - symbols.lastGroup) % symbols.otherGroups == 0;
}

void appendWhole(const Decimal& number, bool grouped, const Symbols& symbols, std::string& out) {
  const int length = number.pointPosition();
  const auto digits = number.digits();
  if (length <= 0) {
    out += '0';
    return;
  }
  for (int i = 0; i < length; ++i) {
    if (grouped && i > 0 && endsGroup(length - i, symbols)) out += symbols.grouping;
    const auto index = static_cast<std::size_t>(i);
    out += index < digits.size() ? digits[index] : '0';
  }
}

void appendFraction(const Decimal& number, int places, std::string& out) {
  const int point = number.pointPosition();
  const int zeros = std::clamp(-point, 0, places);
  appendZeros(zeros, out);
  const auto first = static_cast<std::size_t>(std::max(point, 0));
  const auto digits = number.digits();
  std::string_view rest = first < digits.size() ? digits.substr(first) : std::string_view();
  rest = rest.substr(0, static_cast<std::size_t>(places - zeros));
  out += rest;
  appendZeros(places - zeros - static_cast<int>(rest.size()), out);
}

// The decimals that are shown.
int placesOf(const Decimal& number, unsigned places) {
  if (places != kAutomaticPlaces) return static_cast<int>(std::min(places, kMostPlaces));
  const int digits = static_cast<int>(number.digits().size());
  return number.isZero() ? 0 : std::max(digits - number.pointPosition(), 0);
}

}  // namespace

void roundTo(const NumberShape& shape, Decimal& number) {
  if (shape.places == kAutomaticPlaces) {
    number.roundToDigits(kMostAutomaticDigits);
  } else {
    number.roundToPlaces(static_cast<int>(std::min(shape.places, kMostPlaces)));
  }
}

void appendMagnitude(const Decimal& number, const NumberShape& shape, const Symbols& symbols,
                     std::string& out) {
  if (!number.isZero() && std::abs(number.pointPosition()) > kMostZeros) {
    Decimal magnitude = number;
    magnitude.makePositive();
    return appendScientific(magnitude, kAutomaticPlaces, symbols, out);
  }
  appendWhole(number, shape.grouped, symbols, out);
  const int places = placesOf(number, shape.places);
  if (places == 0) return;
  out += symbols.decimal;
  appendFraction(number, places, out);
}

void appendScientific(Decimal number, unsigned places, const Symbols& symbols, std::string& out) {
  const bool automatic = places == kAutomaticPlaces;
  number.roundToDigits(automatic ? kMostAutomaticDigits
                                 : static_cast<int>(std::min(places, kMostPlaces)) + 1);
  const int exponent = number.isZero() ? 0 : number.pointPosition() - 1;
  if (number.isNegative()) out += symbols.minus;
  number.shift(-exponent);
  appendMagnitude(number, {places, false}, symbols, out);
  out += symbols.exponent;
  out += exponent < 0 ? '-' : '+';
  const std::string digits = std::to_string(std::abs(exponent));
  if (digits.size() < 2) out += '0';
  out += digits;
}

void appendPlainNumber(Decimal number, const Symbols& symbols, std::string& out) {
  const NumberShape shape;
  roundTo(shape, number);
  if (number.isNegative()) out += symbols.minus;
  appendMagnitude(number, shape, symbols, out);
}

}  // namespace dorvex::content
