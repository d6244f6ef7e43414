// Reads a token stream back, as a host does.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorvex::testing {

enum TokenType : unsigned char {
  kTextToken = 0x00,
  kBreakToken = 0x0E,
  kDocHeaderToken = 0x0F,
  kPageSetupToken = 0x10,
};

struct Token {
  unsigned char type;
  std::string payload;  // for a text: the text alone, without its length
};

// The tokens of a stream or of one buffer of it; nothing unless the bytes are a
// whole number of tokens of the four types, each of its right length.
std::optional<std::vector<Token>> decodeTokens(std::string_view bytes);

// The texts of some tokens: consecutive text tokens up to a break are one text.
std::vector<std::string> textsOf(const std::vector<Token>& tokens);

// The texts of a stream, which must be sound.
std::vector<std::string> textsOf(std::string_view stream);

// The 51 bytes that every stream begins with.
std::string prologue();

// The tokens that one text must come out as, in pieces of at most 4096 bytes.
std::string textTokens(std::string_view text);

}  // namespace dorvex::testing
