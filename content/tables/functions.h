// The functions of formulas by their numbers.
#pragma once

#include <cstdint>
#include <string_view>

namespace dorvex::content {

// The English name of the function of that number; empty for a number that is not known.
std::string_view functionName(std::uint32_t number);

}  // namespace dorvex::content
