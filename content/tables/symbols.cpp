#include "tables/symbols.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/decimfmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/smpdtfmt.h>
#include <unicode/ucurr.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "TSKArchives.h"
#include "graph/plain_text.h"
#include "newer.h"
#include "tables/document.h"

namespace dorvex::content {
namespace {

using SymbolsArchive = newer::TSK_FormattingSymbolsArchive;

constexpr std::string_view kPercentSign = "%";
constexpr std::string_view kDefaultLocale = "en_US";

std::string utf8(const icu::UnicodeString& text) {
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

template <std::size_t Count>
void assign(std::array<std::string, Count>& names, const icu::UnicodeString* from, int count,
            int first = 0) {
  for (int i = 0; i < static_cast<int>(Count) && i + first < count; ++i)
    names[static_cast<std::size_t>(i)] = utf8(from[i + first]);
}

// Longer names and signs are damage.
bool isTooLong(std::string_view text) { return text.size() > 100; }

// Takes the names of a document if it has all of them.
template <std::size_t Count, typename Strings>
void assign(std::array<std::string, Count>& names, const Strings& from) {
  if (from.count() != Count || std::ranges::any_of(from, isTooLong)) return;
  std::size_t i = 0;
  for (const std::string_view name : from) names[i++] = plainText(name);
}

template <typename F>
void assign(std::string& text, const Message<SymbolsArchive>& archive, F field) {
  const auto stored = archive.find(field);
  if (stored && !isTooLong(*stored)) text = plainText(*stored);
}

std::string patternOf(icu::DateFormat* created) {
  const std::unique_ptr<icu::DateFormat> format(created);
  const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get());
  icu::UnicodeString pattern;
  if (simple != nullptr) simple->toPattern(pattern);
  return utf8(pattern);
}

// What a pattern has around its digits, with the sign's symbol; nothing for a pattern
// without digits.
std::optional<Affixes> around(std::string_view pattern, std::string_view sign,
                              std::string_view symbol) {
  pattern = pattern.substr(0, pattern.find(';'));
  const auto first = pattern.find_first_of("#0,.");
  if (first == std::string_view::npos) return std::nullopt;
  const auto behind = pattern.find_last_of("#0,.") + 1;
  Affixes affixes{std::string(pattern.substr(0, first)), std::string(pattern.substr(behind))};
  for (std::string* affix : {&affixes.before, &affixes.after}) {
    const auto place = affix->find(sign);
    if (place != std::string::npos) affix->replace(place, sign.size(), symbol);
  }
  return affixes;
}

}  // namespace

Symbols::Symbols(Reading& reading) {
  const auto document = sharedDocument(reading).get(TSA::DocumentArchive::super);
  locale = document.get(TSK::DocumentArchive::locale_identifier, kDefaultLocale);
  readLocale();
  readDocument(document.as<newer::TSK_DocumentArchive>().get(
      newer::TSK_DocumentArchive::formatting_symbols));
}

Symbols::Symbols(std::string_view name) : locale(name) { readLocale(); }

void Symbols::readLocale() {
  using Dates = icu::DateFormatSymbols;
  using Numbers = icu::DecimalFormatSymbols;
  locale = plainText(locale).substr(0, ULOC_FULLNAME_CAPACITY - 1);
  // ICU crashes over formats for a name that it takes for none.
  if (icu::Locale(locale.c_str()).isBogus()) locale = kDefaultLocale;
  const icu::Locale name(locale.c_str());
  UErrorCode error = U_ZERO_ERROR;
  const Dates dates(name, error);
  if (U_FAILURE(error)) return;
  int count = 0;
  const auto take = [&](auto& names, Dates::DtContextType context, Dates::DtWidthType width) {
    const icu::UnicodeString* from = names.size() == 7 ? dates.getWeekdays(count, context, width)
                                     : names.size() == 12
                                         ? dates.getMonths(count, context, width)
                                         : dates.getQuarters(count, context, width);
    assign(names, from, count, names.size() == 7 ? 1 : 0);  // ICU's weekdays begin with 1
  };
  take(months, Dates::FORMAT, Dates::WIDE);
  take(shortMonths, Dates::FORMAT, Dates::ABBREVIATED);
  take(narrowMonths, Dates::FORMAT, Dates::NARROW);
  take(standaloneMonths, Dates::STANDALONE, Dates::WIDE);
  take(standaloneShortMonths, Dates::STANDALONE, Dates::ABBREVIATED);
  take(weekdays, Dates::FORMAT, Dates::WIDE);
  take(shortWeekdays, Dates::FORMAT, Dates::ABBREVIATED);
  take(narrowWeekdays, Dates::FORMAT, Dates::NARROW);
  take(quarters, Dates::FORMAT, Dates::WIDE);
  take(shortQuarters, Dates::FORMAT, Dates::ABBREVIATED);
  const icu::UnicodeString* names = dates.getEras(count);
  assign(eras, names, count);
  names = dates.getEraNames(count);
  assign(longEras, names, count);
  names = dates.getAmPmStrings(count);
  am = count > 0 ? utf8(names[0]) : "AM";
  pm = count > 1 ? utf8(names[1]) : "PM";
  shortDatePattern = patternOf(icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, name));
  shortTimePattern = patternOf(icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, name));

  const Numbers numbers(name, error);
  if (U_FAILURE(error)) return;
  decimal = utf8(numbers.getConstSymbol(Numbers::kDecimalSeparatorSymbol));
  grouping = utf8(numbers.getConstSymbol(Numbers::kGroupingSeparatorSymbol));
  minus = utf8(numbers.getConstSymbol(Numbers::kMinusSignSymbol));
  exponent = utf8(numbers.getConstSymbol(Numbers::kExponentialSymbol));
  percent = utf8(numbers.getConstSymbol(Numbers::kPercentSymbol));

  const auto numberPattern = [&](UNumberFormatStyle style) {
    const std::unique_ptr<icu::NumberFormat> format(
        icu::NumberFormat::createInstance(name, style, error));
    const auto* decimals = dynamic_cast<const icu::DecimalFormat*>(format.get());
    icu::UnicodeString pattern;
    if (decimals != nullptr) decimals->toPattern(pattern);
    return utf8(pattern);
  };
  readGroups(numberPattern(UNUM_DECIMAL));
  currencyPattern_ = numberPattern(UNUM_CURRENCY);
  percentPattern_ = numberPattern(UNUM_PERCENT);

  const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(name, error));
  if (U_FAILURE(error)) return;
  firstWeekday = calendar->getFirstDayOfWeek(error) - UCAL_SUNDAY;
  daysInFirstWeek = calendar->getMinimalDaysInFirstWeek();
}

void Symbols::readDocument(const Message<SymbolsArchive>& archive) {
  assign(months, archive.all(SymbolsArchive::months));
  assign(standaloneMonths, archive.all(SymbolsArchive::standalone_months));
  assign(shortMonths, archive.all(SymbolsArchive::short_months));
  assign(standaloneShortMonths, archive.all(SymbolsArchive::standalone_short_months));
  assign(narrowMonths, archive.all(SymbolsArchive::narrow_months));
  assign(weekdays, archive.all(SymbolsArchive::weekdays));
  assign(shortWeekdays, archive.all(SymbolsArchive::short_weekdays));
  assign(narrowWeekdays, archive.all(SymbolsArchive::narrow_weekdays));
  assign(quarters, archive.all(SymbolsArchive::quarters));
  assign(shortQuarters, archive.all(SymbolsArchive::short_quarters));
  assign(eras, archive.all(SymbolsArchive::eras));
  assign(longEras, archive.all(SymbolsArchive::long_eras));
  assign(am, archive, SymbolsArchive::am);
  assign(pm, archive, SymbolsArchive::pm);
  assign(shortDatePattern, archive, SymbolsArchive::short_date_pattern);
  assign(shortTimePattern, archive, SymbolsArchive::short_time_pattern);
  assign(decimal, archive, SymbolsArchive::decimal_separator);
  assign(grouping, archive, SymbolsArchive::grouping_separator);
  assign(minus, archive, SymbolsArchive::minus_sign);
  assign(exponent, archive, SymbolsArchive::exponent_sign);
  assign(percent, archive, SymbolsArchive::percent_sign);
  assign(currencyPattern_, archive, SymbolsArchive::currency_pattern);
  assign(percentPattern_, archive, SymbolsArchive::percent_pattern);
  if (const auto pattern = archive.find(SymbolsArchive::number_pattern)) readGroups(*pattern);
  using Currency = newer::TSK_FormattingSymbolsArchive_CurrencySymbol;
  for (const auto& currency : archive.all(SymbolsArchive::currency_symbols)) {
    const std::string_view symbol = currency.get(Currency::symbol);
    if (!isTooLong(symbol))
      currencies_.emplace_back(currency.get(Currency::code), plainText(symbol));
  }
}

// #,##,##0.### groups the last three digits, and those before by two.
void Symbols::readGroups(std::string_view pattern) {
  pattern = pattern.substr(0, pattern.find_first_of(".;"));
  const auto isDigit = [](char c) { return c == '#' || c == '0'; };
  const auto last = pattern.rfind(',');
  if (last == std::string_view::npos) return;
  lastGroup = static_cast<int>(std::ranges::count_if(pattern.substr(last), isDigit));
  otherGroups = lastGroup;
  const auto before = pattern.substr(0, last).rfind(',');
  if (before != std::string_view::npos) otherGroups = static_cast<int>(last - before - 1);
  lastGroup = std::max(lastGroup, 1);
  otherGroups = std::max(otherGroups, 1);
}

std::string Symbols::currencySymbol(std::string_view code) const {
  constexpr std::size_t kLongestCode = 40;
  code = code.substr(0, kLongestCode);
  const auto known =
      std::ranges::find(currencies_, code, &std::pair<std::string, std::string>::first);
  if (known != currencies_.end()) return known->second;
  icu::UnicodeString wide = icu::UnicodeString::fromUTF8(std::string(code));
  if (wide.length() != 3) return plainText(code);
  UErrorCode error = U_ZERO_ERROR;
  std::int32_t length = 0;
  // Of a code that ICU does not know this is the code itself, where it lies.
  const char16_t* name = ucurr_getName(wide.getTerminatedBuffer(), locale.c_str(),
                                       UCURR_SYMBOL_NAME, nullptr, &length, &error);
  return U_SUCCESS(error) ? utf8(icu::UnicodeString(name, length)) : plainText(code);
}

Affixes Symbols::currencyAffixes(std::string_view symbol) const {
  return around(currencyPattern_, kCurrencySign, symbol).value_or(Affixes{std::string(symbol), ""});
}

Affixes Symbols::percentAffixes() const {
  return around(percentPattern_, kPercentSign, percent).value_or(Affixes{"", percent});
}

}  // namespace dorvex::content
