// Dates by patterns of letters: "EEEE, d MMMM y".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tables/symbols.h"

namespace dorvex::content {

// A moment as a calendar shows it, without a time zone.
struct CivilTime {
  std::int64_t year = 2001;
  int month = 1, day = 1;  // from 1
  int weekday = 1;         // 0 is Sunday
  int dayOfYear = 1;       // from 1
  int hour = 0, minute = 0, second = 0;
  int microsecond = 0;
};

// The civil time of a number of seconds since the beginning of 2001; whether it is one
// of the years that the calendar shows.
bool civilTime(double seconds, CivilTime& time);

// YYYY-MM-DDTHH:MM:SS, or nothing for what is no civil time.
void appendIsoDate(double seconds, std::string& out);

class DateFormat {
 public:
  explicit DateFormat(std::string_view pattern);

  void append(double seconds, const Symbols& symbols, std::string& out) const;

 private:
  struct Part {
    char letter;  // 0 for a literal
    unsigned count;
    std::string literal;
  };

  std::string& literal();

  std::vector<Part> parts_;
};

}  // namespace dorvex::content
