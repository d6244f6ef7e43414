#include "dorvex/token_stream.h"

#include <cstddef>

namespace dorvex {
namespace {

constexpr std::size_t kFrameSize = 5;  // type byte and total length
constexpr std::size_t kLengthSize = 4;

std::uint32_t readU32(std::span<const unsigned char> bytes, std::size_t offset) {
  return std::uint32_t{bytes[offset]} | std::uint32_t{bytes[offset + 1]} << 8 |
         std::uint32_t{bytes[offset + 2]} << 16 | std::uint32_t{bytes[offset + 3]} << 24;
}

template <std::size_t Count>
std::array<std::uint32_t, Count> readValues(std::span<const unsigned char> bytes) {
  std::array<std::uint32_t, Count> values{};
  for (std::size_t i = 0; i < Count; ++i) values[i] = readU32(bytes, i * kLengthSize);
  return values;
}

std::string_view asText(std::span<const unsigned char> bytes) {
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
  const std::uint32_t length = readU32(rest_, 1);
  if (length < kFrameSize || length > rest_.size()) fail("its length is wrong");
  const Token token = readToken(rest_[0], rest_.subspan(kFrameSize, length - kFrameSize));
  rest_ = rest_.subspan(length);
  position_ += length;
  return token;
}

Token TokenStreamReader::readToken(std::uint8_t type, std::span<const unsigned char> payload) {
  const bool inText = expect_ == Expect::kText || expect_ == Expect::kTextOrBreak;
  switch (static_cast<TokenType>(type)) {
    case TokenType::kDocHeader:
      allow(expect_ == Expect::kDocHeader && payload.size() == 8, "TOKEN_DOC_HEADER");
      expect_ = Expect::kPageSetup;
      return DocHeaderToken{readValues<2>(payload)};
    case TokenType::kPageSetup:
      allow(expect_ == Expect::kPageSetup && payload.size() == 33, "TOKEN_PAGE_SETUP");
      expect_ = Expect::kText;
      return PageSetupToken{payload[0], readValues<8>(payload.subspan(1))};
    case TokenType::kText:
      allow(inText && payload.size() >= kLengthSize &&
                readU32(payload, 0) == payload.size() - kLengthSize,
            "TOKEN_TEXT");
      expect_ = Expect::kTextOrBreak;
      return TextToken{asText(payload.subspan(kLengthSize))};
    case TokenType::kTextBreak:
      allow(expect_ == Expect::kTextOrBreak && payload.empty(), "TOKEN_BREAK");
      expect_ = Expect::kText;
      return BreakToken{};
  }
  fail("its type is unknown: " + std::to_string(type));
}

void TokenStreamReader::finish() const {
  if (!rest_.empty()) fail("not read to its end");
  if (expect_ != Expect::kText) fail("the stream ends too early");
}

bool TextJoiner::take(const Token& token) {
  if (ended_) text_.clear();
  if (const auto* piece = std::get_if<TextToken>(&token)) text_ += piece->text;
  ended_ = std::holds_alternative<BreakToken>(token);
  return ended_;
}

}  // namespace dorvex
