// Tokens in a form for people: one line each.
#pragma once

#include <string>

#include "dorvex/token_stream.h"

namespace dorvex::cli {

// The line for a token, with its line feed. Texts stand in double quotes, with
// \n, \r, \t, \" and \\, and \x and two hex digits for other control bytes; a
// piece may end within a character.
std::string print(const Token& token);

}  // namespace dorvex::cli
