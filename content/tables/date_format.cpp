#include "tables/date_format.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "tables/quoted_text.h"

namespace dorvex::content {
namespace {

constexpr std::int64_t kSecondsOfDay = 86'400;
constexpr std::int64_t kEpochDay = 730'791;  // 2001-01-01, counted from 0000-03-01 as 0
// Years of more digits nobody writes; a double has no seconds for them either.
constexpr double kMostSeconds = 3e12;
constexpr int kMicroseconds = 1'000'000;  // of a second
constexpr unsigned kMicrosecondDigits = 6;
// Longer runs of a letter are damage.
constexpr unsigned kLongestField = 32;

std::int64_t floorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

bool isLeapYear(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// The civil date of a day, counted from 0000-03-01: years begin with March, so that
// leap days are their last.
void setDate(std::int64_t day, CivilTime& time) {
  const std::int64_t era = floorDivide(day, 146'097);
  const std::int64_t ofEra = day - era * 146'097;
  const std::int64_t yearOfEra = (ofEra - ofEra / 1'460 + ofEra / 36'524 - ofEra / 146'096) / 365;
  const auto ofYear = static_cast<int>(ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100));
  const int month = (5 * ofYear + 2) / 153;  // from March
  time.day = ofYear - (153 * month + 2) / 5 + 1;
  time.month = month < 10 ? month + 3 : month - 9;
  time.year = yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0);
  time.weekday = static_cast<int>((day % 7 + 7 + 3) % 7);
  constexpr int kDaysBeforeMarch = 59;
  constexpr int kDaysFromMarch = 306;
  time.dayOfYear = time.month > 2 ? ofYear + kDaysBeforeMarch + (isLeapYear(time.year) ? 1 : 0) + 1
                                  : ofYear - kDaysFromMarch + 1;
}

void appendNumber(std::int64_t number, unsigned width, std::string& out) {
  const std::string digits = std::to_string(std::abs(number));
  if (number < 0) out += '-';
  out.append(digits.size() < width ? width - digits.size() : 0, '0');
  out += digits;
}

// The number of the week that a day is in: of a year or month, whose day of that number
// it is, from 1.
int weekOf(int day, int weekday, const Symbols& symbols) {
  const int sinceWeekBegan = (weekday - symbols.firstWeekday + 7) % 7;
  // The days before the first whole week.
  const int before = ((day - 1 - sinceWeekBegan) % 7 + 7) % 7;
  const int week = (day - 1 - sinceWeekBegan + 7 - before) / 7;
  return before >= symbols.daysInFirstWeek ? week + 1 : week;
}

int daysOfYear(std::int64_t year) { return isLeapYear(year) ? 366 : 365; }

struct YearWeek {
  std::int64_t year;
  int week;
};

// The first days of a year may be in the last week of the one before, the last days in
// the first week of the next one.
YearWeek yearWeek(const CivilTime& time, const Symbols& symbols) {
  const int week = weekOf(time.dayOfYear, time.weekday, symbols);
  if (week < 1) {
    const int day = time.dayOfYear + daysOfYear(time.year - 1);
    return {time.year - 1, weekOf(day, time.weekday, symbols)};
  }
  const int dayOfNext = time.dayOfYear - daysOfYear(time.year);
  const int sinceWeekBegan = (time.weekday - symbols.firstWeekday + 7) % 7;
  // How many days of this week are in the next year.
  const int inNext = dayOfNext - sinceWeekBegan + 6;
  if (dayOfNext <= 0 && inNext >= symbols.daysInFirstWeek) return {time.year + 1, 1};
  return {time.year, week};
}

std::int64_t yearOfEra(const CivilTime& time) { return time.year > 0 ? time.year : 1 - time.year; }

void appendYear(std::int64_t year, unsigned count, std::string& out) {
  if (count == 2) return appendNumber(year % 100, 2, out);
  appendNumber(year, count, out);
}

template <std::size_t Count>
void appendName(const std::array<std::string, Count>& names, int index, std::string& out) {
  out += names[static_cast<std::size_t>(index) % Count];
}

void appendMonth(const CivilTime& time, unsigned count, bool standalone, const Symbols& symbols,
                 std::string& out) {
  const int index = time.month - 1;
  if (count < 3) return appendNumber(time.month, count, out);
  if (count == 3)
    return appendName(standalone ? symbols.standaloneShortMonths : symbols.shortMonths, index, out);
  if (count == 4)
    return appendName(standalone ? symbols.standaloneMonths : symbols.months, index, out);
  appendName(symbols.narrowMonths, index, out);
}

void appendWeekday(const CivilTime& time, unsigned count, const Symbols& symbols,
                   std::string& out) {
  if (count == 4) return appendName(symbols.weekdays, time.weekday, out);
  if (count == 5) return appendName(symbols.narrowWeekdays, time.weekday, out);
  appendName(symbols.shortWeekdays, time.weekday, out);
}

void appendLocalWeekday(const CivilTime& time, unsigned count, const Symbols& symbols,
                        std::string& out) {
  if (count >= 3) return appendWeekday(time, count, symbols, out);
  appendNumber((time.weekday - symbols.firstWeekday + 7) % 7 + 1, 1, out);
}

void appendQuarter(const CivilTime& time, unsigned count, const Symbols& symbols,
                   std::string& out) {
  const int index = (time.month - 1) / 3;
  if (count < 3) return appendNumber(index + 1, count, out);
  appendName(count == 3 ? symbols.shortQuarters : symbols.quarters, index, out);
}

// Cut off behind count digits.
void appendFraction(int microsecond, unsigned count, std::string& out) {
  std::string digits;
  appendNumber(microsecond, kMicrosecondDigits, digits);
  digits.resize(count, '0');
  out += digits;
}

// Dates have no zone; they are shown as if they had this one.
std::string_view zone(char letter, unsigned count) {
  switch (letter) {
    case 'Z':
      return count == 4 ? "GMT" : count == 5 ? "Z" : "+0000";
    case 'X':
      return "Z";
    case 'x':
      return count == 1 ? "+00" : count % 2 == 0 ? "+0000" : "+00:00";
    default:
      return "GMT";
  }
}

int hourOf(const CivilTime& time, char letter) {
  switch (letter) {
    case 'h':
      return time.hour % 12 == 0 ? 12 : time.hour % 12;
    case 'K':
      return time.hour % 12;
    case 'k':
      return time.hour == 0 ? 24 : time.hour;
    default:
      return time.hour;
  }
}

// The letters of patterns, and what each stands for.
void appendField(char letter, unsigned count, const CivilTime& time, const Symbols& symbols,
                 std::string& out) {
  switch (letter) {
    case 'G':
      return appendName(count == 4 ? symbols.longEras : symbols.eras, time.year > 0 ? 1 : 0, out);
    case 'y':
      return appendYear(yearOfEra(time), count, out);
    case 'Y':
      return appendYear(yearWeek(time, symbols).year, count, out);
    case 'u':
      return appendNumber(time.year, count, out);
    case 'Q':
    case 'q':
      return appendQuarter(time, count, symbols, out);
    case 'M':
    case 'L':
      return appendMonth(time, count, letter == 'L', symbols, out);
    case 'w':
      return appendNumber(yearWeek(time, symbols).week, count, out);
    case 'W':
      return appendNumber(weekOf(time.day, time.weekday, symbols), count, out);
    case 'd':
      return appendNumber(time.day, count, out);
    case 'D':
      return appendNumber(time.dayOfYear, count, out);
    case 'F':
      return appendNumber((time.day - 1) / 7 + 1, count, out);
    case 'E':
      return appendWeekday(time, count, symbols, out);
    case 'e':
    case 'c':
      return appendLocalWeekday(time, count, symbols, out);
    case 'a':
    case 'b':
    case 'B':
      out += time.hour < 12 ? symbols.am : symbols.pm;
      return;
    case 'h':
    case 'H':
    case 'k':
    case 'K':
      return appendNumber(hourOf(time, letter), count, out);
    case 'm':
      return appendNumber(time.minute, count, out);
    case 's':
      return appendNumber(time.second, count, out);
    case 'S':
      return appendFraction(time.microsecond, count, out);
    case 'A':
      return appendNumber(
          ((time.hour * 60LL + time.minute) * 60 + time.second) * 1000 + time.microsecond / 1000,
          count, out);
    case 'z':
    case 'Z':
    case 'O':
    case 'v':
    case 'V':
    case 'X':
    case 'x':
      out += zone(letter, count);
      return;
    default:
      return;  // none of the letters of patterns
  }
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

bool civilTime(double seconds, CivilTime& time) {
  if (!(std::abs(seconds) < kMostSeconds)) return false;
  const double whole = std::floor(seconds);
  auto count = static_cast<std::int64_t>(whole);
  // A double of today's dates tells microseconds: noon that was calculated may lie that
  // little before noon.
  time.microsecond = static_cast<int>(std::lround((seconds - whole) * kMicroseconds));
  if (time.microsecond == kMicroseconds) {
    time.microsecond = 0;
    ++count;
  }
  const std::int64_t day = floorDivide(count, kSecondsOfDay);
  const auto second = static_cast<int>(count - day * kSecondsOfDay);
  setDate(day + kEpochDay, time);
  time.hour = second / 3600;
  time.minute = second / 60 % 60;
  time.second = second % 60;
  return true;
}

void appendIsoDate(double seconds, std::string& out) {
  CivilTime time;
  if (!civilTime(seconds, time)) return;
  appendNumber(time.year, 4, out);
  for (const auto& [mark, value] : {std::pair{'-', time.month},
                                    {'-', time.day},
                                    {'T', time.hour},
                                    {':', time.minute},
                                    {':', time.second}}) {
    out += mark;
    appendNumber(value, 2, out);
  }
}

DateFormat::DateFormat(std::string_view pattern) {
  constexpr std::size_t kLongest = 4000;  // no cut within a character: callers cut before
  pattern = pattern.substr(0, kLongest);
  while (!pattern.empty()) {
    const char c = pattern.front();
    if (c == '\'') {
      takeQuoted(pattern, literal());
      continue;
    }
    const auto run = std::min(pattern.find_first_not_of(c), pattern.size());
    if (isLetter(c)) {
      parts_.push_back({c, std::min(static_cast<unsigned>(run), kLongestField), {}});
    } else {
      literal() += pattern.substr(0, run);
    }
    pattern.remove_prefix(run);
  }
}

// The literal that the pattern has here, to be added to.
std::string& DateFormat::literal() {
  if (parts_.empty() || parts_.back().letter != 0) parts_.push_back({0, 0, {}});
  return parts_.back().literal;
}

void DateFormat::append(double seconds, const Symbols& symbols, std::string& out) const {
  CivilTime time;
  if (!civilTime(seconds, time)) return;
  for (const Part& part : parts_) {
    if (part.letter == 0) {
      out += part.literal;
    } else {
      appendField(part.letter, part.count, time, symbols, out);
    }
  }
}

}  // namespace dorvex::content
