// Foreign names in lines for people.
#pragma once

#include <string>

namespace dorvex::cli {

// The text with ? for each control byte, so that it stays on its line and tells
// a terminal nothing, whatever a member or a file is called.
std::string printable(std::string text);

}  // namespace dorvex::cli
