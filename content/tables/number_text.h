// Numbers in a locale's digits and separators.
#pragma once

#include <string>

#include "tables/decimal.h"
#include "tables/symbols.h"

namespace dorvex::content {

// As many decimals as a number needs, which stand in formats for this number of them.
constexpr unsigned kAutomaticPlaces = 253;
// More than this many decimals no application lets a person choose.
constexpr unsigned kMostPlaces = 30;
// The digits that an automatic format shows at most.
constexpr int kMostAutomaticDigits = 15;

struct NumberShape {
  unsigned places = kAutomaticPlaces;
  bool grouped = false;
};

// Rounds to what the shape shows.
void roundTo(const NumberShape& shape, Decimal& number);

// Appends the magnitude of a number that has been rounded to its shape.
void appendMagnitude(const Decimal& number, const NumberShape& shape, const Symbols& symbols,
                     std::string& out);

// One digit before the point, and an exponent of a sign and two digits or more.
void appendScientific(Decimal number, unsigned places, const Symbols& symbols, std::string& out);

// The number as a cell without a format shows it.
void appendPlainNumber(Decimal number, const Symbols& symbols, std::string& out);

}  // namespace dorvex::content
