#include "tables/custom_format.h"

#include <algorithm>
#include <cmath>

#include "graph/plain_text.h"
#include "tables/quoted_text.h"

namespace dorvex::content {
namespace {

using FormatStruct = TSK::FormatStructArchive;
using Custom = TSK::CustomFormatArchive;

constexpr std::string_view kFractionMark = "\uE420";
constexpr std::string_view kTextMark = "\uE421";
constexpr std::string_view kDigitCharacters = "#0,.";
constexpr std::string_view kExponent = "E+00";
// More places of one kind are damage.
constexpr int kMostDigits = 60;

constexpr unsigned kMostConditions = 32;
constexpr std::size_t kLongestPattern = 900;

int countOf(std::string_view text, char c) {
  return static_cast<int>(std::min<std::ptrdiff_t>(std::ranges::count(text, c), kMostDigits));
}

// The whole part of a number with its padding zeros.
std::string wholeDigits(const Decimal& number, int least, bool grouped, const Symbols& symbols) {
  std::string digits;
  Decimal whole = number;
  // Drop what is behind the point without rounding: it is rounded already.
  const int point = number.pointPosition();
  if (point > 0) appendMagnitude(whole, {0, false}, symbols, digits);
  if (digits.size() < static_cast<std::size_t>(least))
    digits.insert(0, static_cast<std::size_t>(least) - digits.size(), '0');
  if (!grouped) return digits;
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const int rest = static_cast<int>(digits.size() - i);
    if (i > 0 && rest >= symbols.lastGroup && (rest - symbols.lastGroup) % symbols.otherGroups == 0)
      text += symbols.grouping;
    text += digits[i];
  }
  return text;
}

// The digits behind the point, without trailing zeros.
std::string fractionDigits(const Decimal& number) {
  const auto digits = number.digits();
  if (number.isZero()) return {};
  const int point = number.pointPosition();
  if (point <= 0) return std::string(static_cast<std::size_t>(-point), '0').append(digits);
  const auto first = static_cast<std::size_t>(point);
  return first < digits.size() ? std::string(digits.substr(first)) : std::string();
}

// Turns padding zeros, and separators among them, into spaces.
void blank(std::string& text, std::size_t bytes, const Symbols& symbols) {
  std::string blanked;
  std::size_t i = 0;
  while (i < bytes && i < text.size()) {
    const bool separator =
        !symbols.grouping.empty() && std::string_view(text).substr(i).starts_with(symbols.grouping);
    i += separator ? symbols.grouping.size() : 1;
    blanked += ' ';
  }
  text.replace(0, std::min(i, text.size()), blanked);
}

}  // namespace

void DigitPattern::append(Decimal number, const Symbols& symbols, std::string& out) const {
  constexpr int kMostWhole = 400;
  number.makePositive();
  number.roundToPlaces(fractionZeros + fractionHashes);
  if (number.pointPosition() > kMostWhole) return appendPlainNumber(number, symbols, out);

  std::string fraction = fractionDigits(number);
  const auto shown = static_cast<int>(fraction.size());
  const int padding = std::max(fractionZeros - shown, 0);
  // Without places for the whole part there is always a point, and a digit behind it.
  const bool zeros = padsFractionWithZeros || !hasWhole;
  fraction.append(static_cast<std::size_t>(padding), zeros ? '0' : ' ');
  if (!hasWhole && fraction.empty() && fractionHashes > 0) fraction += '0';

  const bool wholeIsZero = number.pointPosition() <= 0 || number.isZero();
  const bool spacedFraction = fractionZeros > 0 && !padsFractionWithZeros;
  std::string whole = wholeDigits(number, wholeZeros, grouped, symbols);
  if (wholeZeros > 0 && !padsWholeWithZeros) {
    // The application replaces as many padding characters as stand before the first
    // digit, less the characters that are missing behind it: 23 in 000.## is " 023".
    const int missing = std::max(fractionHashes - std::max(shown - fractionZeros, 0), 0) +
                        (fraction.empty() && fractionHashes > 0 ? 1 : 0);
    const auto digit = wholeIsZero ? whole.size() : whole.find_first_of("123456789");
    std::size_t count = 0;  // characters before the first digit
    std::size_t bytes = 0;
    std::vector<std::size_t> ends;
    while (bytes < digit) {
      const bool separator = !symbols.grouping.empty() &&
                             std::string_view(whole).substr(bytes).starts_with(symbols.grouping);
      bytes += separator ? symbols.grouping.size() : 1;
      ends.push_back(bytes);
      ++count;
    }
    const auto blanks = count - std::min(count, static_cast<std::size_t>(missing));
    if (blanks > 0) blank(whole, ends[blanks - 1], symbols);
  } else if (whole.empty() && !spacedFraction) {
    whole += '0';
  }
  out += whole;
  if (!fraction.empty()) out.append(symbols.decimal).append(fraction);
}

// ---------------------------------------------------------------------------

CustomPattern::CustomPattern(const FormatArchive& format, const Symbols& symbols)
    : fraction_(format) {
  const double factor = format.get(FormatStruct::scale_factor, 1.0);
  const std::string_view pattern = format.get(FormatStruct::custom_format_string);
  parse(pattern, format, symbols);
  // Powers of ten keep a decimal exact.
  if (!std::isfinite(factor) || factor == 1 || factor == 0) return;
  const Decimal decimal(factor);
  if (decimal.digits() == "1" && factor > 0) {
    shift_ = decimal.pointPosition() - 1;
  } else {
    factor_ = factor;
  }
}

std::string& CustomPattern::literal() {
  if (parts_.empty() || parts_.back().kind != Kind::kLiteral) parts_.emplace_back();
  return parts_.back().literal;
}

bool CustomPattern::has(Kind kind) const {
  return std::ranges::find(parts_, kind, &Part::kind) != parts_.end();
}

void CustomPattern::parse(std::string_view pattern, const FormatArchive& format,
                          const Symbols& symbols) {
  const std::string clean = plainText(pattern.substr(0, kLongestPattern));
  const bool scaled = format.get(FormatStruct::scale_factor, 1.0) != 1;
  std::string_view rest = clean;
  while (!rest.empty()) {
    if (rest.front() == '\'') {
      takeQuoted(rest, literal());
    } else if (kDigitCharacters.find(rest.front()) != std::string_view::npos &&
               !has(Kind::kDigits) && !has(Kind::kScientific)) {
      takeDigits(rest, format);
    } else if (rest.starts_with(kCurrencySign)) {
      literal() += symbols.currencySymbol(format.get(FormatStruct::currency_code));
      rest.remove_prefix(kCurrencySign.size());
    } else if (rest.starts_with(kFractionMark)) {
      parts_.push_back({Kind::kFraction, {}});
      rest.remove_prefix(kFractionMark.size());
    } else if (rest.starts_with(kTextMark)) {
      parts_.push_back({Kind::kText, {}});
      rest.remove_prefix(kTextMark.size());
    } else if (rest.front() == '%') {
      literal() += symbols.percent;
      if (!scaled) shift_ = 2;
      rest.remove_prefix(1);
    } else {
      literal() += rest.front();
      rest.remove_prefix(1);
    }
  }
}

void CustomPattern::takeDigits(std::string_view& pattern, const FormatArchive& format) {
  const auto length = std::min(pattern.find_first_not_of(kDigitCharacters), pattern.size());
  const std::string_view run = pattern.substr(0, length);
  pattern.remove_prefix(length);
  const auto point = std::min(run.find('.'), run.size());
  const std::string_view whole = run.substr(0, point);
  const std::string_view fraction = run.substr(point);
  digits_.wholeZeros = countOf(whole, '0');
  digits_.hasWhole = digits_.wholeZeros > 0 || countOf(whole, '#') > 0;
  digits_.fractionZeros = countOf(fraction, '0');
  digits_.fractionHashes = countOf(fraction, '#');
  digits_.padsWholeWithZeros = format.get(FormatStruct::num_nonspace_integer_digits) > 0;
  digits_.padsFractionWithZeros = format.get(FormatStruct::num_nonspace_decimal_digits) > 0;
  digits_.grouped = format.get(FormatStruct::show_thousands_separator);
  const bool scientific = pattern.starts_with(kExponent);
  if (scientific) pattern.remove_prefix(kExponent.size());
  parts_.push_back({scientific ? Kind::kScientific : Kind::kDigits, {}});
}

void CustomPattern::appendNumber(Decimal number, bool showsMinus, const Symbols& symbols,
                                 std::string& out) const {
  if (factor_) {
    const double scaled = number.toDouble() * *factor_;
    if (std::isfinite(scaled)) number = Decimal(scaled);
  }
  number.shift(shift_);
  if (showsMinus && number.isNegative()) out += symbols.minus;
  number.makePositive();

  // A fraction beside places for the whole part shows the remainder.
  std::string remainder;
  Decimal whole = number;
  if (has(Kind::kFraction) && has(Kind::kDigits)) {
    const double value = number.toDouble();
    auto count = static_cast<std::uint64_t>(std::min(value, 9e15));
    remainder = fraction_.remainder(std::clamp(value - std::floor(value), 0.0, 1.0), count);
    whole = Decimal(static_cast<double>(count));
  }
  for (const Part& part : parts_) {
    switch (part.kind) {
      case Kind::kLiteral:
        out += part.literal;
        break;
      case Kind::kDigits:
        digits_.append(whole, symbols, out);
        break;
      case Kind::kScientific: {
        const int places = digits_.fractionZeros + digits_.fractionHashes;
        appendScientific(number, static_cast<unsigned>(places), symbols, out);
        break;
      }
      case Kind::kFraction:
        if (has(Kind::kDigits)) {
          out += remainder;
        } else {
          fraction_.append(number, symbols, out);
        }
        break;
      case Kind::kText:
        appendPlainNumber(number, symbols, out);
        break;
    }
  }
}

void CustomPattern::appendText(std::string_view text, std::string& out) const {
  for (const Part& part : parts_) {
    if (part.kind == Kind::kLiteral) out += part.literal;
    if (part.kind == Kind::kText) appendPlainText(text, out);
  }
}

// ---------------------------------------------------------------------------

bool CustomFormat::Condition::holds(double number) const {
  switch (type) {
    case 0:
      return number == value;
    case 1:
      return number < value;
    case 2:
      return number <= value;
    case 3:
      return number > value;
    case 4:
      return number >= value;
    default:
      return false;
  }
}

CustomFormat::CustomFormat(const Message<Custom>& format, const Symbols& symbols)
    : default_(format.get(Custom::default_format), symbols),
      date_(plainText(format.get(Custom::default_format)
                          .get(FormatStruct::custom_format_string)
                          .substr(0, kLongestPattern))) {
  for (const auto& condition : format.all(Custom::conditions)) {
    if (conditions_.size() == kMostConditions) break;
    using Stored = TSK::CustomFormatArchive_Condition;
    const double value = condition.find(Stored::condition_value_dbl)
                             .value_or(double{condition.get(Stored::condition_value)});
    conditions_.push_back({condition.get(Stored::condition_type), value,
                           CustomPattern(condition.get(Stored::condition_format), symbols)});
  }
}

void CustomFormat::appendNumber(const Decimal& number, const Symbols& symbols,
                                std::string& out) const {
  const double value = number.toDouble();
  const auto met =
      std::ranges::find_if(conditions_, [&](const Condition& c) { return c.holds(value); });
  if (met != conditions_.end()) return met->pattern.appendNumber(number, false, symbols, out);
  default_.appendNumber(number, true, symbols, out);
}

void CustomFormat::appendText(std::string_view text, std::string& out) const {
  default_.appendText(text, out);
}

void CustomFormat::appendDate(double seconds, const Symbols& symbols, std::string& out) const {
  date_.append(seconds, symbols, out);
}

}  // namespace dorvex::content
