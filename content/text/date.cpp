#include "text/date.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>

namespace dorvex::content {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days kEpoch = year(2001) / 1 / 1;
constexpr auto kFirst = seconds(sys_days(year(0) / 1 / 1) - kEpoch).count();
constexpr auto kBehindLast = seconds(sys_days(year(10000) / 1 / 1) - kEpoch).count();

}  // namespace

std::string utcDate(double secondsSinceEpoch) {
  // Written so that it refuses what is not a number, too.
  if (!(secondsSinceEpoch >= static_cast<double>(kFirst) &&
        secondsSinceEpoch < static_cast<double>(kBehindLast)))
    return {};
  const auto time =
      kEpoch + std::chrono::floor<seconds>(std::chrono::duration<double>(secondsSinceEpoch));
  const auto day = std::chrono::floor<days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

}  // namespace dorvex::content
