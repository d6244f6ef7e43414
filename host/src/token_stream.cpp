#include "dorvex/token_stream.h"

#include <cstddef>

namespace dorvex {
namespace {

constexpr std::size_t kFrameSize = 5;  // type byte and total length
constexpr std::size_t kLengthSize = 4;

std::uint32_t read_u32(std::span<const unsigned char> bytes, std::size_t offset) {
  return std::uint32_t{bytes[offset]} | std::uint32_t{bytes[offset + 1]} << 8 |
         std::uint32_t{bytes[offset + 2]} << 16 | std::uint32_t{bytes[offset + 3]} << 24;
}

template <std::size_t Count>
std::array<std::uint32_t, Count> read_values(std::span<const unsigned char> bytes) {
  std::array<std::uint32_t, Count> values{};
  for (std::size_t i = 0; i < Count; ++i) values[i] = read_u32(bytes, i * kLengthSize);
  return values;
}

std::string_view as_text(std::span<const unsigned char> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

void TokenStreamReader::fail(const std::string& fault) const {
  throw TokenStreamError("token at byte " + std::to_string(position_) + ": " + fault);
}

void TokenStreamReader::allow(bool allowed, const char* token) {
  if (!allowed) fail(std::string(token) + " is malformed or out of place");
}

void TokenStreamReader::start(std::span<const unsigned char> buffer) {
  if (!rest_.empty()) fail("the buffer before was not used up");
  rest_ = buffer;
}

std::optional<Token> TokenStreamReader::next() {
  if (rest_.empty()) return std::nullopt;
  if (rest_.size() < kFrameSize) fail("cut off");
  const std::uint32_t length = read_u32(rest_, 1);
  if (length < kFrameSize || length > rest_.size()) fail("its length is wrong");
  const Token token = read_token(rest_[0], rest_.subspan(kFrameSize, length - kFrameSize));
  rest_ = rest_.subspan(length);
  position_ += length;
  return token;
}

Token TokenStreamReader::read_token(std::uint8_t type, std::span<const unsigned char> payload) {
  const bool in_text = expect_ == Expect::text || expect_ == Expect::text_or_break;
  switch (static_cast<TokenType>(type)) {
    case TokenType::doc_header:
      allow(expect_ == Expect::doc_header && payload.size() == 8, "TOKEN_DOC_HEADER");
      expect_ = Expect::page_setup;
      return DocHeaderToken{read_values<2>(payload)};
    case TokenType::page_setup:
      allow(expect_ == Expect::page_setup && payload.size() == 33, "TOKEN_PAGE_SETUP");
      expect_ = Expect::text;
      return PageSetupToken{payload[0], read_values<8>(payload.subspan(1))};
    case TokenType::text:
      allow(in_text && payload.size() >= kLengthSize &&
                read_u32(payload, 0) == payload.size() - kLengthSize,
            "TOKEN_TEXT");
      expect_ = Expect::text_or_break;
      return TextToken{as_text(payload.subspan(kLengthSize))};
    case TokenType::text_break:
      allow(expect_ == Expect::text_or_break && payload.empty(), "TOKEN_BREAK");
      expect_ = Expect::text;
      return BreakToken{};
  }
  fail("its type is unknown: " + std::to_string(type));
}

void TokenStreamReader::finish() const {
  if (!rest_.empty()) fail("not read to its end");
  if (expect_ != Expect::text) fail("the stream ends too early");
}

bool TextJoiner::take(const Token& token) {
  if (ended_) text_.clear();
  if (const auto* piece = std::get_if<TextToken>(&token)) text_ += piece->text;
  ended_ = std::holds_alternative<BreakToken>(token);
  return ended_;
}

}  // namespace dorvex
