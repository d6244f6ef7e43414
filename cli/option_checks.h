// What the values of options may be.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dorvex::cli {

// Each of these gives what is wrong with a value, a phrase for people, or an
// empty text. Some put the value into the form that is read further on.

// A number of seconds: 0, or one millisecond to kLongestTimeout.
std::string secondsFault(const std::string& value);
// A size in bytes with a unit of 1024 or none: 512MB, 4g, 4 GiB. Becomes its
// digits.
std::string sizeFault(std::string& value);
// The size again, in the largest unit that gives a whole number: 512MB.
std::string sizeText(std::uint64_t bytes);
// A whole number within bounds.
std::string numberFault(const std::string& value, std::uint64_t least, std::uint64_t most);
// The same, or "all", which becomes the given number.
std::string numberOrAllFault(std::string& value, std::uint64_t least, std::uint64_t most,
                             std::uint64_t all);
// One of some words.
std::string wordFault(const std::string& value, const std::vector<std::string>& words);
// Some of them, with commas between.
std::string wordsFault(const std::string& value, const std::vector<std::string>& words);

constexpr double kLongestTimeout = 1e6;

// The parts of "a,b".
std::vector<std::string> splitAtCommas(const std::string& value);

// "a, b or c".
std::string inWords(const std::vector<std::string>& words);

}  // namespace dorvex::cli
