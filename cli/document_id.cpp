#include "document_id.h"

#include <sha2.h>
#include <sys/types.h>

#include <array>
#include <charconv>
#include <stdexcept>

namespace dorvex::cli {
namespace {

constexpr std::size_t kShardDigits = 16;

std::uint64_t numberOf(std::string_view text, int base) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::invalid_argument("not a number: " + std::string(text));
  }
  return number;
}

}  // namespace

std::string documentId(std::string_view path) {
  std::array<char, SHA256_DIGEST_STRING_LENGTH> digits{};
  SHA256Data(reinterpret_cast<const std::uint8_t*>(path.data()), path.size(), digits.data());
  return {digits.data(), kIdDigits};
}

bool Shard::holds(std::string_view id) const {
  return count == 1 || numberOf(id.substr(0, kShardDigits), 16) % count == index;
}

Shard parseShard(const std::string& text) {
  const auto slash = text.find('/');
  if (slash == std::string::npos) throw std::invalid_argument("not of the form I/N");
  const Shard shard{numberOf(std::string_view(text).substr(0, slash), 10),
                    numberOf(std::string_view(text).substr(slash + 1), 10)};
  if (shard.index >= shard.count) throw std::invalid_argument("I must be below N");
  return shard;
}

}  // namespace dorvex::cli
