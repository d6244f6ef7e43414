// The token stream of a reader: reading tokens, and joining them to texts.
//
// A token is a type byte, its total length in four bytes, and a payload; all
// integers are little-endian. A stream begins with one TOKEN_DOC_HEADER and one
// TOKEN_PAGE_SETUP. From then on each text is one or more TOKEN_TEXT and one
// TOKEN_BREAK. A long text is cut at fixed byte counts, without regard to its
// characters, so only the joined pieces are UTF-8.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

namespace dorvex {

enum class TokenType : std::uint8_t {
  kText = 0x00,
  kTextBreak = 0x0E,
  kDocHeader = 0x0F,
  kPageSetup = 0x10,
};

// The payloads. The meaning of the numbers is the filtering host's own.
struct TextToken {
  std::string_view text;  // points into the buffer that was read
};
struct BreakToken {};
struct DocHeaderToken {
  std::array<std::uint32_t, 2> values;
};
struct PageSetupToken {
  std::uint8_t kind;
  std::array<std::uint32_t, 8> values;
};

using Token = std::variant<DocHeaderToken, PageSetupToken, TextToken, BreakToken>;

// What was read is no token stream. what() names the place and the fault.
struct TokenStreamError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads a token stream strictly, one buffer of whole tokens after the other.
class TokenStreamReader {
 public:
  // Starts on the next buffer, which must live until it is used up. The buffer
  // before must be.
  void start(std::span<const unsigned char> buffer);

  // The next token, or nothing at the end of the buffer. Throws
  // TokenStreamError for an unknown type, a wrong length, a token that the
  // buffer cuts off, and a token that may not stand where it does.
  std::optional<Token> next();

  // To be called at the end of the stream. Throws TokenStreamError when the
  // beginning is not complete or a text lacks its TOKEN_BREAK.
  void finish() const;

 private:
  enum class Expect { kDocHeader, kPageSetup, kText, kTextOrBreak };

  Token readToken(std::uint8_t type, std::span<const unsigned char> payload);
  void allow(bool allowed, const char* token);
  [[noreturn]] void fail(const std::string& fault) const;

  std::span<const unsigned char> rest_;
  std::uint64_t position_ = 0;  // in the whole stream
  Expect expect_ = Expect::kDocHeader;
};

// Joins the pieces of each text.
class TextJoiner {
 public:
  // Takes the next token. True when it ended a text, which text() then holds.
  bool take(const Token& token);

  // The text that has just ended. Free to be moved from.
  std::string& text() { return text_; }

 private:
  std::string text_;
  bool ended_ = false;
};

}  // namespace dorvex
