#include "support/token_decoder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

constexpr std::size_t kFrameSize = 5;
constexpr std::size_t kTextFrameSize = 9;
constexpr std::size_t kMaxPieceSize = 4096;

std::size_t readInteger(std::string_view bytes) {
  std::size_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

bool hasRightLength(const Token& token) {
  switch (token.type) {
    case kTextToken:
      return token.payload.size() >= 4 && readInteger(token.payload) == token.payload.size() - 4;
    case kBreakToken:
      return token.payload.empty();
    case kDocHeaderToken:
      return token.payload.size() == 8;
    case kPageSetupToken:
      return token.payload.size() == 33;
    default:
      return false;
  }
}

}  // namespace

std::optional<std::vector<Token>> decodeTokens(std::string_view bytes) {
  std::vector<Token> tokens;
  while (!bytes.empty()) {
    if (bytes.size() < kFrameSize) return std::nullopt;
    const std::size_t size = readInteger(bytes.substr(1));
    if (size < kFrameSize || size > bytes.size()) return std::nullopt;
    Token token{static_cast<unsigned char>(bytes[0]),
                std::string(bytes.substr(kFrameSize, size - kFrameSize))};
    if (!hasRightLength(token)) return std::nullopt;
    if (token.type == kTextToken) token.payload.erase(0, 4);
    tokens.push_back(std::move(token));
    bytes.remove_prefix(size);
  }
  return tokens;
}

std::vector<std::string> textsOf(const std::vector<Token>& tokens) {
  std::vector<std::string> texts;
  std::string text;
  for (const Token& token : tokens) {
    if (token.type == kTextToken) text += token.payload;
    if (token.type == kBreakToken) texts.push_back(std::exchange(text, {}));
  }
  return texts;
}

std::vector<std::string> textsOf(std::string_view stream) {
  const auto tokens = decodeTokens(stream);
  if (!tokens) throw std::runtime_error("the stream is no run of whole tokens");
  return textsOf(*tokens);
}

std::string prologue() {
  std::string bytes = "\x0F" + encodeLittleEndian(13, 4);
  for (const unsigned value : {0U, 10U}) bytes += encodeLittleEndian(value, 4);
  bytes += "\x10" + encodeLittleEndian(38, 4) + "\x02";
  for (const unsigned value :
       {12240U, 15840U, 1440U, 1440U, 1440U, 1440U, 0xFFFFFFFFU, 0xFFFFFFFFU})
    bytes += encodeLittleEndian(value, 4);
  return bytes;
}

std::string textTokens(std::string_view text) {
  std::string bytes;
  if (text.empty()) return bytes;
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), kMaxPieceSize))) {
    const std::string_view piece = text.substr(0, kMaxPieceSize);
    bytes += '\0' + encodeLittleEndian(kTextFrameSize + piece.size(), 4) +
             encodeLittleEndian(piece.size(), 4) + std::string(piece);
  }
  return bytes + "\x0E" + encodeLittleEndian(kFrameSize, 4);
}

}  // namespace dorvex::testing
