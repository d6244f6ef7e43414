#include "tables/number_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace dorvex::content {
namespace {

using FormatStruct = TSK::FormatStructArchive;

// Integers that a double tells from their neighbours; beyond them there are neither
// fractions nor other bases.
constexpr double kLargestInteger = 9007199254740992;  // 2^53

constexpr int kMostStars = 5;

NegativeStyle negativeStyle(const FormatArchive& format) {
  constexpr auto kLast = static_cast<std::uint32_t>(NegativeStyle::kRedParentheses);
  return static_cast<NegativeStyle>(std::min(format.get(FormatStruct::negative_style), kLast));
}

bool hasParentheses(NegativeStyle style) {
  return style == NegativeStyle::kParentheses || style == NegativeStyle::kRedParentheses;
}

}  // namespace

DecimalFormat::DecimalFormat(const FormatArchive& format)
    : shape_{format.get(FormatStruct::decimal_places, kAutomaticPlaces),
             format.get(FormatStruct::show_thousands_separator)},
      negative_(negativeStyle(format)) {}

DecimalFormat DecimalFormat::number(const FormatArchive& format) { return DecimalFormat(format); }

DecimalFormat DecimalFormat::percentage(const FormatArchive& format, const Symbols& symbols) {
  DecimalFormat percentage(format);
  percentage.shift_ = 2;
  percentage.affixes_ = symbols.percentAffixes();
  return percentage;
}

DecimalFormat DecimalFormat::currency(const FormatArchive& format, const Symbols& symbols) {
  DecimalFormat currency(format);
  const std::string symbol = symbols.currencySymbol(format.get(FormatStruct::currency_code));
  currency.accounting_ = format.get(FormatStruct::use_accounting_style);
  // A cell in accounting style has the symbol at its left edge.
  currency.affixes_ =
      currency.accounting_ ? Affixes{symbol + '\t', ""} : symbols.currencyAffixes(symbol);
  return currency;
}

void DecimalFormat::append(Decimal number, const Symbols& symbols, std::string& out) const {
  const bool negative = number.isNegative();  // whatever its digits that are shown: -0
  number.shift(shift_);
  roundTo(shape_, number);
  const bool parentheses = negative && (accounting_ || hasParentheses(negative_));
  if (negative && !parentheses && negative_ == NegativeStyle::kMinus) out += symbols.minus;
  if (parentheses && !accounting_) out += '(';
  out += affixes_.before;
  if (parentheses && accounting_) out += '(';
  appendMagnitude(number, shape_, symbols, out);
  out += affixes_.after;
  if (parentheses) out += ')';
}

ScientificFormat::ScientificFormat(const FormatArchive& format)
    : places_(format.get(FormatStruct::decimal_places, kAutomaticPlaces)) {}

void ScientificFormat::append(const Decimal& number, const Symbols& symbols,
                              std::string& out) const {
  appendScientific(number, places_, symbols, out);
}

// ---------------------------------------------------------------------------

FractionFormat::FractionFormat(const FormatArchive& format)
    : accuracy_(format.get(FormatStruct::fraction_accuracy, 0xFFFFFFFDU)) {}

// The accuracy is a denominator, or as a negative number how many digits that of the
// best fraction may have.
FractionFormat::Fraction FractionFormat::nearest(double rest) const {
  constexpr std::uint32_t kFirstDigits = 0xFF000000;
  static constexpr std::array<std::uint32_t, 4> kLargest{9, 9, 99, 999};
  const auto rounded = [&](std::uint32_t denominator) {
    return static_cast<std::uint64_t>(std::llround(rest * denominator));
  };
  if (accuracy_ < kFirstDigits) {
    const std::uint32_t denominator = std::max(accuracy_, 1U);
    return {rounded(denominator), denominator};
  }
  const std::uint32_t largest = kLargest[std::min<std::uint32_t>(~accuracy_ + 1, 3)];
  Fraction best{rounded(1), 1};
  double error = std::abs(rest - static_cast<double>(best.numerator));
  for (std::uint32_t denominator = 2; denominator <= largest && error > 0; ++denominator) {
    const std::uint64_t numerator = rounded(denominator);
    const double distance = std::abs(rest - static_cast<double>(numerator) / denominator);
    if (distance >= error) continue;
    best = {numerator, denominator};
    error = distance;
  }
  return best;
}

std::string FractionFormat::remainder(double rest, std::uint64_t& whole) const {
  const Fraction fraction = nearest(rest);
  if (fraction.numerator == 0) return {};
  if (fraction.numerator == fraction.denominator) {
    ++whole;
    return {};
  }
  return std::to_string(fraction.numerator) + '/' + std::to_string(fraction.denominator);
}

void FractionFormat::append(const Decimal& number, const Symbols& symbols, std::string& out) const {
  const double magnitude = std::abs(number.toDouble());
  if (magnitude >= kLargestInteger) return appendPlainNumber(number, symbols, out);
  auto whole = static_cast<std::uint64_t>(magnitude);
  const std::string rest = remainder(magnitude - static_cast<double>(whole), whole);
  if (number.isNegative() && (whole != 0 || !rest.empty())) out += symbols.minus;
  if (whole != 0 || rest.empty()) out += std::to_string(whole);
  if (whole != 0 && !rest.empty()) out += ' ';
  out += rest;
}

// ---------------------------------------------------------------------------

BaseFormat::BaseFormat(const FormatArchive& format)
    : base_(std::clamp(format.get(FormatStruct::base, 10U), 2U, 36U)),
      places_(std::min(format.get(FormatStruct::base_places), 64U)),
      minusSign_(format.get(FormatStruct::base_use_minus_sign)) {}

void BaseFormat::append(const Decimal& number, const Symbols& symbols, std::string& out) const {
  Decimal integer = number;
  integer.roundToPlaces(0);
  const double value = integer.toDouble();
  if (std::abs(value) >= kLargestInteger) return appendPlainNumber(number, symbols, out);

  auto bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  const bool complement = !minusSign_ && (base_ == 2 || base_ == 8 || base_ == 16);
  if (value < 0 && complement) {
    if (value >= -2147483648.0) bits &= 0xFFFFFFFF;
  } else if (value < 0) {
    out += symbols.minus;
    bits = ~bits + 1;
  }
  std::array<char, 64> digits{};
  char* const end = std::to_chars(digits.begin(), digits.end(), bits, static_cast<int>(base_)).ptr;
  std::transform(digits.data(), end, digits.data(),
                 [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
  const auto count = static_cast<std::size_t>(end - digits.data());
  out.append(count < places_ ? places_ - count : 0, '0');
  out.append(digits.data(), count);
}

void RatingFormat::append(const Decimal& number, const Symbols&, std::string& out) const {
  const double stars = std::clamp(std::round(number.toDouble()), 0.0, double{kMostStars});
  for (int i = 0; i < static_cast<int>(stars); ++i) out += "\u2605";
}

}  // namespace dorvex::content
