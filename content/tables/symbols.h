// Names, separators and signs of a document's locale.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "graph/reading.h"
#include "newer.h"

namespace dorvex::content {

// Stands in patterns for the sign of a currency that is named elsewhere.
inline constexpr std::string_view kCurrencySign = "\u00A4";

// Where the sign of a currency or of a percentage stands beside a number.
struct Affixes {
  std::string before;
  std::string after;
};

// A document brings the symbols that it was written with; what it lacks is ICU's for
// its locale.
class Symbols {
 public:
  explicit Symbols(Reading& reading);
  // Those that ICU knows for the name of a locale: "de_DE".
  explicit Symbols(std::string_view name);

  std::string locale;
  std::string decimal;
  std::string grouping;
  std::string minus;
  std::string exponent;
  std::string percent;
  // The digits of a group: of the last one, and of those before it.
  int lastGroup = 3;
  int otherGroups = 3;

  // From January, from Sunday, from the first quarter, before and after the epoch.
  std::array<std::string, 12> months, shortMonths, narrowMonths;
  std::array<std::string, 12> standaloneMonths, standaloneShortMonths;
  std::array<std::string, 7> weekdays, shortWeekdays, narrowWeekdays;
  std::array<std::string, 4> quarters, shortQuarters;
  std::array<std::string, 2> eras, longEras;
  std::string am, pm;
  std::string shortDatePattern, shortTimePattern;

  // Which weekday begins a week (0 for Sunday), and how many days the first week of a
  // year or month has at least.
  int firstWeekday = 0;
  int daysInFirstWeek = 1;

  // The symbol of a currency of that code; the code where none is known.
  std::string currencySymbol(std::string_view code) const;
  // What stands around an amount: the symbol in its place.
  Affixes currencyAffixes(std::string_view symbol) const;
  // What stands around a percentage: the sign, in some languages behind a space.
  Affixes percentAffixes() const;

 private:
  void readLocale();
  void readDocument(const Message<newer::TSK_FormattingSymbolsArchive>& archive);
  void readGroups(std::string_view numberPattern);

  std::string currencyPattern_, percentPattern_;
  std::vector<std::pair<std::string, std::string>> currencies_;  // code, symbol
};

}  // namespace dorvex::content
