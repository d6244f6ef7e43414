#include "tables/duration_format.h"

#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <string_view>

namespace dorvex::content {
namespace {

using FormatStruct = TSK::FormatStructArchive;

struct Unit {
  std::uint64_t milliseconds;
  std::string_view letters;
  std::string_view name;
};

// From the largest; in formats bit 0 stands for the first one, bit 1 for the second.
constexpr std::array<Unit, 6> kUnits{{
    {604'800'000, "w", "week"},
    {86'400'000, "d", "day"},
    {3'600'000, "h", "hour"},
    {60'000, "m", "minute"},
    {1'000, "s", "second"},
    {1, "ms", "millisecond"},
}};
constexpr std::size_t kDays = 1;
constexpr std::size_t kMinutes = 3;
constexpr std::size_t kMilliseconds = 5;

// More than a million years are not shown as units.
constexpr double kLongestDuration = 3e13;

std::size_t unitOfBit(std::uint32_t bit, std::size_t fallback) {
  const auto index = static_cast<std::size_t>(std::countr_zero(bit));
  return std::has_single_bit(bit) && index < kUnits.size() ? index : fallback;
}

icu::MeasureUnit* measureUnit(std::size_t unit, UErrorCode& error) {
  switch (unit) {
    case 0:
      return icu::MeasureUnit::createWeek(error);
    case 1:
      return icu::MeasureUnit::createDay(error);
    case 2:
      return icu::MeasureUnit::createHour(error);
    case 3:
      return icu::MeasureUnit::createMinute(error);
    case 4:
      return icu::MeasureUnit::createSecond(error);
    default:
      return icu::MeasureUnit::createMillisecond(error);
  }
}

// "2 heures", as ICU says it; nothing where it does not.
std::string localized(std::uint64_t count, std::size_t unit, const icu::MeasureFormat& format) {
  UErrorCode error = U_ZERO_ERROR;
  std::unique_ptr<icu::MeasureUnit> measured(measureUnit(unit, error));
  if (U_FAILURE(error)) return {};
  const icu::Measure measure(icu::Formattable(static_cast<std::int64_t>(count)), measured.release(),
                             error);
  icu::UnicodeString text;
  icu::FieldPosition position;
  format.formatMeasures(&measure, 1, text, position, error);
  std::string bytes;
  return U_SUCCESS(error) ? text.toUTF8String(bytes) : bytes;
}

// What says the units of a language; nothing for English, whose names stand above.
std::shared_ptr<const icu::MeasureFormat> namesOf(const std::string& locale) {
  if (locale.starts_with("en")) return nullptr;
  UErrorCode error = U_ZERO_ERROR;
  auto names = std::make_shared<const icu::MeasureFormat>(icu::Locale(locale.c_str()),
                                                          UMEASFMT_WIDTH_WIDE, error);
  return U_SUCCESS(error) ? names : nullptr;
}

}  // namespace

DurationFormat::DurationFormat(const FormatArchive& format, const Symbols& symbols)
    : DurationFormat(
          static_cast<DurationStyle>(std::min(format.get(FormatStruct::duration_style), 2U)),
          format.get(FormatStruct::duration_unit_largest),
          format.get(FormatStruct::duration_unit_smallest),
          format.get(FormatStruct::use_automatic_duration_units), symbols) {}

DurationFormat::DurationFormat(DurationStyle style, std::uint32_t largest, std::uint32_t smallest,
                               bool automatic, const Symbols& symbols)
    : style_(style),
      units_{unitOfBit(largest, 0), unitOfBit(smallest, kMilliseconds)},
      automatic_(automatic || largest == 0 || smallest == 0),
      names_(style == DurationStyle::kLong ? namesOf(symbols.locale) : nullptr) {
  units_.smallest = std::max(units_.largest, units_.smallest);
}

DurationFormat::Units DurationFormat::unitsOf(std::uint64_t milliseconds) const {
  if (!automatic_) return units_;
  if (milliseconds == 0) return {kDays, kDays};
  Units units{0, 0};
  while (milliseconds < kUnits[units.largest].milliseconds) ++units.largest;
  units.smallest = units.largest;
  while (milliseconds % kUnits[units.smallest].milliseconds != 0) ++units.smallest;
  return units;
}

void DurationFormat::append(double seconds, const Symbols& symbols, std::string& out) const {
  if (!(std::abs(seconds) < kLongestDuration)) return;
  auto rest = static_cast<std::uint64_t>(std::llround(std::abs(seconds) * 1000));
  const Units units = unitsOf(rest);
  if (seconds < 0 && rest >= kUnits[units.smallest].milliseconds) out += symbols.minus;
  for (std::size_t unit = units.largest; unit <= units.smallest; ++unit) {
    const std::uint64_t count = rest / kUnits[unit].milliseconds;
    rest %= kUnits[unit].milliseconds;
    if (style_ == DurationStyle::kCompact) {
      appendCompact(count, unit, units, out);
    } else {
      if (unit != units.largest) out += ' ';
      appendWords(count, unit, out);
    }
  }
}

// 1:0:01:01.001: minutes and what is smaller have all their digits, unless alone.
void DurationFormat::appendCompact(std::uint64_t count, std::size_t unit, const Units& units,
                                   std::string& out) const {
  const bool alone = units.largest == units.smallest;
  if (unit != units.largest) out += unit == kMilliseconds ? '.' : ':';
  const std::string digits = std::to_string(count);
  const std::size_t width = alone || unit < kMinutes ? 1 : unit == kMilliseconds ? 3 : 2;
  out.append(digits.size() < width ? width - digits.size() : 0, '0');
  out += digits;
}

void DurationFormat::appendWords(std::uint64_t count, std::size_t unit, std::string& out) const {
  if (style_ == DurationStyle::kShort) {
    out.append(std::to_string(count)).append(kUnits[unit].letters);
    return;
  }
  if (names_) {
    const std::string text = localized(count, unit, *names_);
    if (!text.empty()) {
      out += text;
      return;
    }
  }
  out.append(std::to_string(count)).append(" ").append(kUnits[unit].name);
  if (count != 1) out += 's';
}

}  // namespace dorvex::content
