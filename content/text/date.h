// Dates as documents store them, as text.
#pragma once

#include <string>

namespace dorvex::content {

// The YYYY-MM-DDTHH:MM:SSZ of a number of seconds since the beginning of 2001 in UTC.
// Empty for what is no date of a year of four digits.
std::string utcDate(double seconds);

}  // namespace dorvex::content
